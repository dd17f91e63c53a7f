// The correlation scan: the amplitude and phase of a signal at each point of a frequency
// grid, as the rotor-frequency searches, the spectral correction and the current signature
// analysis evaluate it. This is the dominant cost of every vibration and electrical block,
// so all of their scans share the one fast kernel below.
#pragma once

#include "coder/rtwtypes.h"

namespace coder {

// For i in 0..m-1:
//   out[i] = sum over k in 0..n-1 of y[k] * exp(-j * 2 * pi * freqs[i] * (k + first_phase) * dt)
// which is the MATLAB loop
//   for i = 1:m, out(i) = sum(y .* exp(-1j*2*pi*freqs(i)*((1:n) - 1 + first_phase)*dt)); end
// first_phase is 1 for the scans whose phase counts from the first sample as k = 1 (the
// rotor searches, cor_left_and_right, cal_param_ad) and 0 for those that count from k = 0
// (cor_for of the current analysis); it only turns every sum by the same unit factor.
// Frequencies in Hz, dt in seconds. n <= 0 gives sums of 0. A NaN in y or in a frequency
// makes the affected sums NaN, as the direct sum would.
//
// Accuracy: for every i, |out[i] - exact[i]| <= 5e-14 * sum|y[k]| on the grids the blocks
// use (1 to 20000 samples, up to 5401 points, phases up to 1e4 radians; 6.7e-15 measured),
// proven by the test against a direct sum in extended precision. The direct double form is
// less exact than that: rounding 2*pi*f*k*dt costs it up to 1.3e-13 * sum|y| on a signal
// with a line in the band, where the phase errors add up coherently.
// Cost: about 0.5 ns per sample and grid point, 30 times less than the direct form.
// Frequencies on a uniform grid (to rounding, as MATLAB's ranges lie) are evaluated instead by
// the chirp-z transform (coder/chirp_z.h) wherever its estimated time, about
// 3 (n + m) log2(n + m) ns, is the lower: the bound above holds for both, so the choice shows
// only in the last digits. A signal or frequency that is not finite always takes the kernel,
// which keeps a NaN or an infinity to the sums it enters.
void correlation_scan(const creal_T* y, int n, double dt, int first_phase, const double* freqs,
                      int m, creal_T* out);
// The same for a real signal (imaginary parts 0), with half the multiplications per term.
void correlation_scan(const double* y, int n, double dt, int first_phase, const double* freqs,
                      int m, creal_T* out);

// The scan over the grid freqs[i] = f0 + i * step, i = 0..m-1 (step may be negative, as for
// the right-hand line of cor_left_and_right that moves down while the left one moves up).
void correlation_scan_grid(const creal_T* y, int n, double dt, int first_phase, double f0,
                           double step, int m, creal_T* out);
void correlation_scan_grid(const double* y, int n, double dt, int first_phase, double f0,
                           double step, int m, creal_T* out);

// The direct form, one cosine and one sine per term, summed in double precision in the
// order k = 0..n-1; the phase is 2 * pi * f * (k + first_phase) * dt as written. Kept as
// the reference that tests and the benchmark hold the kernel against.
void correlation_scan_direct(const creal_T* y, int n, double dt, int first_phase,
                             const double* freqs, int m, creal_T* out);

namespace internal {
// The phasor kernel alone, whatever the grid: the fallback, and the reference that the
// chirp-z transform is held against.
void correlation_scan_phasor(const creal_T* y, int n, double dt, int first_phase,
                             const double* freqs, int m, creal_T* out);
} // namespace internal

} // namespace coder
