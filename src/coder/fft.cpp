#include "coder/fft.h"

#include "coder/FftPlanCache.h"
#include "coder/chirp_z.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace coder {
namespace internal {

namespace {

// A transform of a vector keeps a row a row; every other vector becomes a column.
template <typename T, int N> void shapeLike(const array<T, N>& x, int n, array<creal_T, N>& y) {
  if constexpr (N == 1) {
    y.set_size(n);
  } else {
    if (x.size(0) == 1) {
      y.set_size(1, n);
    } else {
      y.set_size(n, 1);
    }
  }
}

} // namespace

void fftRealHalf(const double* x, int len, int n, creal_T* y) {
  if (n <= 0)
    return;
  const int half = n / 2;
  FftBuffer<double> in(static_cast<size_t>(n));
  FftBuffer<fftw_complex> out(static_cast<size_t>(half) + 1);
  const int used = std::min(len, n);
  std::copy(x, x + std::max(used, 0), in.get());
  std::fill(in.get() + std::max(used, 0), in.get() + n, 0.0);
  fftw_execute_dft_r2c(FftPlanCache::instance().plan(FftPlanCache::Kind::RealForward, n).get(),
                       in.get(), out.get());
  for (int k = 0; k <= half; ++k) {
    y[k].re = out[static_cast<size_t>(k)][0];
    y[k].im = out[static_cast<size_t>(k)][1];
  }
}

void fftRealBins(const double* x, int len, int n, int first, int count, creal_T* y) {
  if (n <= 0 || count <= 0)
    return;
  const int used = std::max(std::min(len, n), 0);
  // The real transform costs about as much as a complex one of half the points.
  constexpr double kTransformNs = 0.6;
  const double half = n / 2.0, whole = kTransformNs * half * std::log2(std::max(half, 2.0));
  double finite = 0.0;
  for (int k = 0; k < used; ++k)
    finite += x[k] * 0.0; // NaN for a NaN or an infinity, which the chirp-z would spread
  if (used > 0 && double(used) + count < kChirpZMaxLength && finite == 0.0 &&
      chirpZCost(used, count) < whole) {
    chirpZ(x, used, cyclesOfBin(first, n), cyclesOfBin(1, n), 0, count, y);
    return;
  }
  FftBuffer<creal_T> all(static_cast<size_t>(n / 2 + 1));
  fftRealHalf(x, len, n, all.get());
  std::copy(all.get() + first, all.get() + first + count, y);
}

void fftReal(const double* x, int len, int n, creal_T* y) {
  fftRealHalf(x, len, n, y);
  // The rest of the spectrum of a real signal is the conjugate mirror of the first half.
  for (int k = n / 2 + 1; k < n; ++k) {
    y[k].re = y[n - k].re;
    y[k].im = -y[n - k].im;
  }
}

void fftComplex(const creal_T* x, int len, int n, bool inverse, creal_T* y) {
  if (n <= 0)
    return;
  const size_t count = static_cast<size_t>(n);
  FftBuffer<fftw_complex> in(count);
  FftBuffer<fftw_complex> out(count);
  const int used = std::max(std::min(len, n), 0);
  for (int k = 0; k < used; ++k) {
    in[static_cast<size_t>(k)][0] = x[k].re;
    in[static_cast<size_t>(k)][1] = x[k].im;
  }
  for (int k = used; k < n; ++k) {
    in[static_cast<size_t>(k)][0] = 0.0;
    in[static_cast<size_t>(k)][1] = 0.0;
  }
  const auto kind =
      inverse ? FftPlanCache::Kind::ComplexBackward : FftPlanCache::Kind::ComplexForward;
  fftw_execute_dft(FftPlanCache::instance().plan(kind, n).get(), in.get(), out.get());
  if (inverse) {
    const double scale = static_cast<double>(n);
    for (int k = 0; k < n; ++k) {
      y[k].re = out[static_cast<size_t>(k)][0] / scale;
      y[k].im = out[static_cast<size_t>(k)][1] / scale;
    }
  } else {
    for (int k = 0; k < n; ++k) {
      y[k].re = out[static_cast<size_t>(k)][0];
      y[k].im = out[static_cast<size_t>(k)][1];
    }
  }
}

} // namespace internal

template <int N> void fft(const array<double, N>& x, int n, array<creal_T, N>& y) {
  if (n < 0)
    n = 0;
  // The input is read before y is sized, so that fft(x, n, y) never sees y's old buffer.
  internal::FftBuffer<creal_T> result(static_cast<size_t>(n));
  internal::fftReal(x.data(), x.numel(), n, result.get());
  internal::shapeLike(x, n, y);
  std::copy(result.get(), result.get() + n, y.data());
}

template <int N> void fft(const array<creal_T, N>& x, int n, array<creal_T, N>& y) {
  if (n < 0)
    n = 0;
  internal::FftBuffer<creal_T> result(static_cast<size_t>(n));
  internal::fftComplex(x.data(), x.numel(), n, false, result.get());
  internal::shapeLike(x, n, y);
  std::copy(result.get(), result.get() + n, y.data());
}

template <int N> void ifft(const array<creal_T, N>& x, array<creal_T, N>& y) {
  const int n = x.numel();
  internal::FftBuffer<creal_T> result(static_cast<size_t>(n));
  internal::fftComplex(x.data(), n, n, true, result.get());
  internal::shapeLike(x, n, y);
  std::copy(result.get(), result.get() + n, y.data());
}

template void fft<1>(const array<double, 1>&, int, array<creal_T, 1>&);
template void fft<2>(const array<double, 2>&, int, array<creal_T, 2>&);
template void fft<1>(const array<creal_T, 1>&, int, array<creal_T, 1>&);
template void fft<2>(const array<creal_T, 2>&, int, array<creal_T, 2>&);
template void ifft<1>(const array<creal_T, 1>&, array<creal_T, 1>&);
template void ifft<2>(const array<creal_T, 2>&, array<creal_T, 2>&);

} // namespace coder
