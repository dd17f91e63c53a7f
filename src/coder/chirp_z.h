// The chirp-z transform (Bluestein): the sums of a signal against a uniform grid of
// frequencies, as one FFT convolution instead of one pass over the signal per grid point.
// The correlation scans of long records and the few bins of a heavily zero-padded spectrum
// that the band values read are evaluated this way; its cost grows as (n + m) log(n + m)
// where the direct sums grow as n * m.
#pragma once

#include "coder/rtwtypes.h"

namespace coder {
namespace internal {

// A frequency in cycles per sample, held as the unevaluated sum hi + lo of two doubles: a
// phase of a million cycles then keeps its fraction of a cycle to about 1e-16.
struct Cycles {
  double hi = 0.0;
  double lo = 0.0;
};

// f * dt exactly (f in Hz, dt in seconds).
Cycles cyclesPerSample(double f, double dt);
// k / n to twice double precision: bin k of an n-point DFT.
Cycles cyclesOfBin(double k, double n);

// out[i] = sum over k in 0..n-1 of y[k] * exp(-j 2 pi (a + i s)(k + p)), i = 0..m-1.
// Every phase is reduced to a fraction of a cycle in double-double arithmetic before its
// sine and cosine are taken, so the result is exact but for the rounding of the FFT
// convolution: about 1e-16 * log2(L) * sqrt(sum |y|^2) per sum (L the transform length).
// The signal must be finite (one NaN would spread over every sum; the callers keep the
// direct sums for such signals), and n + m below 2^24.
// With `shift` (m values, or null for none), point i lies shift[i] cycles per sample off the
// grid, |shift[i]| * 2 pi * (n + p) at most 1e-8: the sums are taken there, to first order
// in the shift (the second order is below 1e-16 of sum|y|), by a second transform of
// (k + p) * y[k] that shares the first's kernel.
void chirpZ(const creal_T* y, int n, Cycles a, Cycles s, int p, int m, creal_T* out,
            const double* shift = nullptr);
void chirpZ(const double* y, int n, Cycles a, Cycles s, int p, int m, creal_T* out,
            const double* shift = nullptr);

// The correlation scan (see correlation_scan.h) over frequencies freqs[0..m) that lie on a
// uniform grid to rounding, as MATLAB builds its ranges: the chirp-z transform on the grid
// through the first and last point, shifted onto each point as it is. Returns false and
// leaves out alone where it does not apply: a signal or frequency that is not finite, points
// off the grid by more than rounding, or n + m of kChirpZMaxLength and more.
bool chirpZScan(const creal_T* y, int n, double dt, int first_phase, const double* freqs, int m,
                creal_T* out);
bool chirpZScan(const double* y, int n, double dt, int first_phase, const double* freqs, int m,
                creal_T* out);

// The transform length, at least n + m - 1, with no prime factor above 7 (where FFTW is
// fastest), and the estimated time of the whole transform in nanoseconds (its kernel, shared
// by the transforms at one step, counted in part), for cost rules that choose between the
// chirp-z and a direct evaluation.
int chirpZLength(int n, int m);
double chirpZCost(int n, int m);

// The largest n + m the chirp-z takes: its squared indices must stay exact doubles.
constexpr int kChirpZMaxLength = 1 << 24;

} // namespace internal
} // namespace coder
