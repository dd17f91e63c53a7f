// Discrete Fourier transforms with MATLAB's fft/ifft conventions, computed by FFTW.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

namespace coder {
namespace internal {

// y(k) = sum_{j<min(len,n)} x(j) exp(-2 pi i j k / n) for k = 0..n-1: the input is cut or
// padded with zeros to n, unscaled. y holds n values.
void fftReal(const double* x, int len, int n, creal_T* y);
// The first n / 2 + 1 values of the same transform, the half that determines the rest (y(n-k)
// is the conjugate of y(k)): half the memory and time, for spectra read by magnitude.
void fftRealHalf(const double* x, int len, int n, creal_T* y);

// Bins first .. first + count - 1 of the same transform, 0 <= first, first + count <= n / 2 + 1:
// the few bins that band values read of a heavily padded record. Taken from the real
// transform of all n points, or by the chirp-z transform of the len samples alone where that
// is estimated to be faster (a 16-fold padded record of 16384 samples read to a twelfth of
// its band: about a third of the time, a tenth of the memory). Either agrees with MATLAB's
// fft to rounding.
void fftRealBins(const double* x, int len, int n, int first, int count, creal_T* y);

// The complex transform of the same shape; inverse = true uses exp(+2 pi i j k / n) and
// divides by n (MATLAB ifft).
void fftComplex(const creal_T* x, int len, int n, bool inverse, creal_T* y);

} // namespace internal

// MATLAB y = fft(x, n) of a real vector: zero padding (or cutting) to n points, no scaling,
// y(k+1) = sum_j x(j+1) exp(-2 pi i j k / n), k = 0..n-1. A row gives a row of n, a column
// a column of n; n <= 0 gives an empty result. MATLAB computes radix-2 for powers of two
// and Bluestein otherwise; FFTW agrees with both to rounding (about 1e-15 relative to the
// largest bin).
template <int N> void fft(const array<double, N>& x, int n, array<creal_T, N>& y);

// MATLAB y = fft(x): n = numel(x).
template <int N> void fft(const array<double, N>& x, array<creal_T, N>& y) {
  fft(x, x.numel(), y);
}

// MATLAB y = fft(x, n) of a complex vector, same conventions.
template <int N> void fft(const array<creal_T, N>& x, int n, array<creal_T, N>& y);

// MATLAB y = ifft(x) of a complex vector: y(j+1) = (1/n) sum_k x(k+1) exp(+2 pi i j k / n),
// n = numel(x), complex result of the shape of x (no symmetry test: a conjugate-symmetric
// input gives imaginary parts at rounding level instead of exact zeros).
template <int N> void ifft(const array<creal_T, N>& x, array<creal_T, N>& y);

} // namespace coder
