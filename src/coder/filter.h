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
// The kernel on raw buffers; y must not overlap x.
void firFilter(const double* b, int nb, const double* x, int nx, double* y);
void firFilter(const double* b, int nb, const creal_T* x, int nx, creal_T* y);
} // namespace internal

} // namespace coder
