// The supply frequency and the slip from the motor's stray magnetic field alone. The field
// holds the supply line F and, beside it, two lines of the turning rotor at F - fr and F + fr;
// the chain finds F coarsely and judges the signal, refines F by heterodyning it onto a fixed
// band, isolates the two rotor lines through fixed FIR sets and reads the slip from them. The
// chain presumes what the sensor sends: 4096 samples at 500 Hz (the step 0.002 s).
#pragma once

#include "blocks/vibration/rotor.h"
#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

namespace vibration {

// The filter mode of the option word: how a weak or crowded field is told from a good one
// ("filter_Amp_1", "filter_Amp_2").
enum class FieldFilter { amp1, amp2 };

struct SupplyAndSlip {
  double F = 0.0;         // supply frequency, Hz
  double amplitude = 0.0; // modulus of the refined supply line's scan sum
  double fr = 0.0;        // rotor frequency, Hz
  double s = 0.0;         // slip
  double speed = 0.0;     // rpm, (1 - s) F / P * 60
  double error = 0.0;     // 1 when the field is too weak or too crowded to trust
};

// cal_param_ad_par on the first N samples of the repaired field x, for a motor of P pole
// pairs: the coarse scan at 0.1 Hz (49.6 to 50.4 Hz for a fixed supply, 10 to 60 Hz for a
// frequency converter), the judgement of its two highest peaks against the field's RMS
// (amp1: peak-to-peak of at most 500 counts, or under 55 dB with a second peak within 3 dB;
// amp2: under 35 dB), then cal_param_ad. P outside 1..4 gives zeros but the judgement.
SupplyAndSlip cal_param_ad_par(double P, double N, const coder::array<double, 2>& x,
                               FrequencyMode mode, FieldFilter filter);

// cal_param_ad: from the coarse supply F0, the refined F, the rotor lines' windows and the
// slip. F, s and fr are 0 when the refined line is weaker than the field by more than -30 dB
// (level above -30), and when F is below 10 Hz.
SupplyAndSlip cal_param_ad(double F0, double P, int N, const double* x);

// cor_left_and_right: the slip from the two rotor lines in y (the isolated field, N samples
// at 0.002 s): for one pole pair the stronger of the two windows [l0, l1] and [r0, r1] decides;
// otherwise the Hann-windowed sum of both lines, moving towards each other from l0 and r1,
// peaks where they sit. fr = (1 - s) F / P.
// `filled` says how many of the first samples of y may be non-zero (a record longer than the
// 4096 that the isolation keeps is zero beyond them): the sums skip the zeros; -1 is all N.
void cor_left_and_right(double F, double P, double l0, double l1, double r0, double r1, int N,
                        const creal_T* y, double& s, double& fr, int filled = -1);

} // namespace vibration
