// The motor as its supply current shows it: the exact mains frequency and the slip, the lines
// of the rolling bearings, and the slip sidebands at (1 +- 2s) f that broken rotor bars raise
// beside the mains line.
#pragma once

#include "blocks/electrical/calc_modul_7R_full.h"
#include "blocks/electrical/parameters.h"
#include "coder/rtwtypes.h"

namespace calc_modul_7R_full_ns {

// cor_for, d_cor_for: the strongest of the sums z over f = f_low, f_low + 0.002, ... (count
// floor((f_high - f_low + 0.002) / 0.002)), phases counted from the first sample as 0 at the
// stream's step dt. A NaN limit or N below 1 gives NaN.
creal_T cor_for(const Stream& stream, const creal_T* z, double f_low, double f_high, int N);

struct RotorSidebands {
  double low = NAN, high = NAN; // 10 log10 |c0 / c1|, 10 log10 |c0 / c2|
  unsigned level = 0;           // of defect 4: 2 below 30, 1 below 45, else none
};

// The rotor analysis on z = hilbert(x) of N samples with the supply F and slip s: the mains
// line c0 within F +- 0.2 Hz against the sidebands within (1 -+ 2s) F +- 0.2 Hz. The factor
// 10 of the distances is the method's: the limits 30 and 45 are set against it.
RotorSidebands rotorSidebands(const Stream& stream, const creal_T* z, int N, double F, double s);

// mcsa_bpfio, b_mcsa_bpfio: the four bearing lines in the current x for a shaft at the fixed
// 25 Hz, as vibro_rms_bpfio_1 measures them at the stream's rate (the envelope spectrum at
// the same rate); out in the order BPFO, BPFI, FTF, BSF. z = hilbert(x), which the rotor
// analysis needs as well, is scanned for them, N samples of it.
void mcsa_bpfio(const Stream& stream, const coder::array<double, 2>& x, const creal_T* z, int N,
                vibration::BearingMode mode, const vibration::BearingGeometry& bearing,
                double out[4]);

} // namespace calc_modul_7R_full_ns
