// The bearing's own lines: the fault frequencies of a rolling-element bearing from its
// geometry and the shaft speed, and their amplitudes in the acceleration.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

#include <cmath>

namespace vibration {

// The bearing as every block takes it (struct0_T): pitch diameter (mean of the inner and
// outer diameters), ball diameter, contact angle in radians, number of rolling elements.
struct BearingGeometry {
  double pitch = 0.0, ball = 0.0, angle = 0.0, balls = 0.0;
};

// Hz at the shaft frequency fr, with c = cos(angle) and r = ball / pitch:
// BPFI (1 + r c) balls/2 fr, BPFO (1 - r c) balls/2 fr, FTF (1 - r c) fr / 2, and BSF
// (1 - c^2 r) pitch/ball fr: the installed evaluation's ball-spin line, with r to the first
// power and no factor one half, which the thresholds of the plants are set against.
struct FaultFrequencies {
  double bpfi, bpfo, ftf, bsf;
};
FaultFrequencies faultFrequencies(const BearingGeometry& bearing, double fr);

// How the amplitudes are measured, by the option word: a correlation scan of the analytic
// acceleration ("mode_bpf_filter_cor") or the envelope spectrum ("mode_bpf_envspectrum").
enum class BearingMode { filter_cor, envspectrum };

// Amplitudes (g) and found frequencies (Hz), in the block's output order. NaN where the
// measurement found no bin.
struct BearingLines {
  double bpfo = NAN, bpfi = NAN, f_bpfo = NAN, f_bpfi = NAN;
  double ftf = NAN, f_ftf = NAN, bsf = NAN, f_bsf = NAN;
};

// vibro_rms_bpfio_1 on one axis x (acceleration in g, mean removed, n samples at fs):
// filter_cor scans z = hilbert(x) over f - 1 .. f + 1 Hz at 0.01 Hz for each fault line
// (the modulus of the best sum, not divided by n); envspectrum takes envspectrum(x,
// envelope_rate), with the block's fixed rate, and the highest bin strictly within five bins
// of each line; its frequency is read one bin above that bin, as the plants' history has it.
// The filter_cor lines from the n samples of an analytic signal z at fs that the caller holds
// for more than the bearing.
BearingLines bearingScans(const creal_T* z, int n, double fs, const FaultFrequencies& f);

BearingLines vibro_rms_bpfio_1(double fs, int n, double fr, const BearingGeometry& bearing,
                               const coder::array<double, 2>& x, BearingMode mode,
                               double envelope_rate);

} // namespace vibration
