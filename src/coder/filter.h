// FIR filtering, MATLAB's filter with the denominator 1.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

namespace coder {

// MATLAB y = filter(b, 1, x): direct form with zero initial state,
// y(k) = sum_{j=0}^{min(k, nb-1)} b(j) x(k-j), output of the length and shape of x. No delay
// is compensated: a symmetric design of nb taps delays by (nb-1)/2 samples. The terms of
// each output are added from the oldest input sample on, as MATLAB's generated code does.
// A complex x is filtered in its real and imaginary parts alike.
template <int NB, int N>
void filter(const array<double, NB>& b, const array<double, N>& x, array<double, N>& y);

template <int NB, int N>
void filter(const array<double, NB>& b, const array<creal_T, N>& x, array<creal_T, N>& y);

namespace internal {
// The kernel on raw buffers; y must not overlap x. Long tap sets over finite signals are
// convolved by FFT (overlap-add) instead of term by term: the result then differs from the
// direct form's by rounding only, at most kFirFftTolerance * sum|b| * max|x| per output,
// while 501 taps cost some 10 times less. A signal or tap set with a NaN or an infinity
// keeps the direct form, in which it reaches only the outputs after it.
void firFilter(const double* b, int nb, const double* x, int nx, double* y);
void firFilter(const double* b, int nb, const creal_T* x, int nx, creal_T* y);

// The direct form alone: the reference the FFT convolution is held against.
void firFilterDirect(const double* b, int nb, const double* x, int nx, double* y);
void firFilterDirect(const double* b, int nb, const creal_T* x, int nx, creal_T* y);

// From this many taps on, over signals at least as long, the FFT convolution is used where its
// estimated time is below the direct form's.
constexpr int kFirFftTaps = 64;
// Its rounding against the direct form, relative to sum|b| * max|x|: a unit of 1e-16 per
// stage of transforms of up to 4096 points (1.4e-16 measured, 64 to 1001 taps).
constexpr double kFirFftTolerance = 1e-15;
} // namespace internal

} // namespace coder
