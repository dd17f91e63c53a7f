// The rotor frequency found in the vibration, and the amplitudes of the lines at and around
// it: the harmonics of the shaft speed, the imbalance line and the oil whirl of a journal
// bearing. All of them scan the analytic velocity z = hilbert(vel) of one axis.
#pragma once

#include "blocks/vibration/scans.h"
#include "coder/rtwtypes.h"

#include <cmath>

namespace vibration {

// The frequency mode of the option word: the supply fixed near 50 Hz ("frequency_fixed")
// or followed by a frequency converter ("frequency_control").
enum class FrequencyMode { fixed, control };

// The lines are scanned in the units of the integrated acceleration, g times seconds; the
// blocks report them as velocity in mm/s (and a displacement in g*s^2 as mm). Two multiplications, not one by 9800: the rounding
// of the stored values follows that order.
inline double toMillimetres(double v) {
  return v * 9.8 * 1000.0;
}

// A line or a band seen on several axes is reported as one figure for the machine: the root
// of the sum of the axes' squares.
inline double rootSumSquares(const double* v, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += v[i] * v[i];
  }
  return std::sqrt(sum);
}

struct RotorLine {
  double frequency = 0.0; // Hz
  double amplitude = 0.0; // |S(best)| / n, in the units of the scanned signal
  double level = 0.0;     // dB of the line over the signal's RMS
  double flag = 0.0;      // Scan::lineFlag of the search, where it is judged
};

// The first-generation search on one axis at the full rate fs: the analytic velocity y is
// band-filtered around where the rotor of a P-pole-pair motor on 50 Hz turns (a 501-tap
// least-squares band-pass for P 1 and 2, 299 taps for P 3 and 4, no delay compensation) and
// scanned at 0.01 Hz steps over the band. P outside 1..4 gives zeros.
RotorLine search_rotor_frequency_fixed(double fs, double P, const creal_T* y, int n);

// The search on three axes with the supply frequency FREAL known from the magnetic channel:
// in "frequency_control" each axis is first turned by (50 - FREAL) / P so that the windows
// made for 50 Hz follow the supply, and the shift is taken off the found frequency.
// Amplitudes leave in mm/s (times 9.8 then 1000). z[a] holds Lv samples of each axis.
void search_rotor_frequency_vibro_Freal(double FREAL, double fv, double Lv, double P,
                                        const creal_T* const z[3], FrequencyMode mode,
                                        RotorLine out[3]);

// The imbalance line: the scan of fr +- half_width at `step` (0.1 and 0.001 in the first
// generation, 0.2 and 0.002 in the second); fr moves to the best point; returns |S| / n.
double find_rotor_freq(double dt, int n, const creal_T* z, double& fr, double half_width = 0.1,
                       double step = 0.001);

struct Harmonic {
  double amplitude = 0.0; // |S(best)| / n
  double frequency = 0.0;
  double flag = 0.0; // Scan::lineFlag
};

// The first three harmonics of fr: windows +-0.2, +-0.5, +-1.5 Hz around fr, 2 fr, 3 fr at
// steps 0.002, 0.005, 0.015.
void find_rotor_freq_all(double fr, double dt, int n, const creal_T* z, Harmonic out[3]);

// The oil whirl of a journal bearing: the scan of 0.4 fr to 0.48 fr at 0.01 Hz; fr becomes
// the found frequency; flag as for the harmonics; returns |S| / n.
double find_oil_whirl_instability_freq(double dt, int n, const creal_T* z, double& fr,
                                       double& flag);

// ---- Modules without a magnetic channel ------------------------------------------------

// The search on one axis, on the analytic velocity y (g s) of n samples at fs that the harmonic
// scans take as well; its amplitude leaves in mm/s. The signal is averaged down by 8, band-filtered by a 299-tap least-squares design for fs / 8 with its delay
// of 149 samples taken off, and scanned at 0.01 Hz, over the same window as the first
// generation in "frequency_fixed" and over the whole range the rotor of a converter-fed motor
// can take in "frequency_control". A line whose scan holds no peak of its own (flag 1) is no
// line: frequency and amplitude are then 0. P outside 1..4 gives zeros.
RotorLine find_rotor_freq_base(double fs, double P, const creal_T* y, int n, FrequencyMode mode);

// Whether the rotor frequencies of the axes agree: 0.0 when the largest and the smallest
// (NaN skipped) differ by at most 0.5 percent of the largest over three axes, 1 percent over
// two; 1.0 otherwise, also when no axis found a line.
double error_froot_fun_703_3(double a, double b, double c);
double error_froot_fun_703_2(double a, double b);

// The amplitudes |S(best)| / n of the first ten harmonics of fr: windows of +-0.2, +-0.4 and
// from the third on +-0.6 Hz, each scanned in 100 steps either side.
void find_rotor_freq_all_10(double fr, double dt, int n, const creal_T* z, double out[10]);

// The amplitudes of the supply line near 50 Hz and of its second harmonic near 100 Hz, which
// a loose or soft-footed machine shows in its vibration.
void find_Freal_freq_all(double dt, int n, const creal_T* z, double out[2]);

} // namespace vibration
