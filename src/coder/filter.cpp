#include "coder/filter.h"

#include "coder/FftPlanCache.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace coder {

namespace internal {

// Both kernels run in the generated code's axpy form: each input sample adds its products
// with all taps to the outputs it reaches. Every output therefore sums its terms from the
// oldest input sample on, as a per-output loop would, but the inner loop runs over
// independent outputs and vectorises without reordering any sum.
void firFilterDirect(const double* b, int nb, const double* x, int nx, double* y) {
  std::fill(y, y + nx, 0.0);
  for (int i = 0; i < nx; ++i) {
    const double xi = x[i];
    const int reach = std::min(nb, nx - i);
    double* yi = y + i;
    for (int j = 0; j < reach; ++j)
      yi[j] += xi * b[j];
  }
}

void firFilterDirect(const double* b, int nb, const creal_T* x, int nx, creal_T* y) {
  for (int k = 0; k < nx; ++k)
    y[k] = creal_T{0.0, 0.0};
  for (int i = 0; i < nx; ++i) {
    const double re = x[i].re;
    const double im = x[i].im;
    const int reach = std::min(nb, nx - i);
    creal_T* yi = y + i;
    for (int j = 0; j < reach; ++j) {
      yi[j].re += re * b[j];
      yi[j].im += im * b[j];
    }
  }
}

namespace {

bool finite(const double* v, int count) {
  double zero = 0.0;
  for (int k = 0; k < count; ++k)
    zero += v[k] * 0.0; // NaN for a NaN or an infinity
  return zero == 0.0;
}

double real(double v) {
  return v;
}
double real(const creal_T& v) {
  return v.re;
}
double imag(double) {
  return 0.0;
}
double imag(const creal_T& v) {
  return v.im;
}
void add(double& y, double re, double) {
  y += re;
}
void add(creal_T& y, double re, double im) {
  y.re += re;
  y.im += im;
}

// Overlap-add: blocks of the signal, each zero-padded to a transform of `size` points (a power
// of two of at least four times the taps, so that most of each transform is new signal), are
// multiplied by the taps' spectrum and their convolutions added where they overlap. A real
// signal takes the same complex transforms, its imaginary parts zero.
int transformSize(int nb) {
  int size = 64;
  while (size < 4 * nb)
    size *= 2;
  return size;
}

// The cost rule, in estimated nanoseconds: a product of the direct form against the
// transforms of each block (and of the taps) and a fixed price for planning and buffers.
bool prefersTransforms(int nb, int nx, bool complex) {
  if (nb < kFirFftTaps || nx < nb)
    return false;
  const double size = transformSize(nb), blocks = std::ceil(double(nx) / (size - nb + 1));
  const double direct = (complex ? 0.5 : 0.25) * nb * double(nx);
  return 15000.0 + (blocks + 1.0) * 2.0 * 0.45 * size * std::log2(size) < direct;
}

template <typename T> void overlapAdd(const double* b, int nb, const T* x, int nx, T* y) {
  const int size = transformSize(nb);
  const int block = size - nb + 1;
  const size_t count = static_cast<size_t>(size);
  FftBuffer<fftw_complex> taps(count), work(count), spectrum(count);
  FftPlanCache& plans = FftPlanCache::instance();
  const auto forward = plans.plan(FftPlanCache::Kind::ComplexForward, size);
  const auto backward = plans.plan(FftPlanCache::Kind::ComplexBackward, size);
  for (size_t k = 0; k < count; ++k) {
    work[k][0] = k < static_cast<size_t>(nb) ? b[k] : 0.0;
    work[k][1] = 0.0;
  }
  fftw_execute_dft(forward.get(), work.get(), taps.get());
  for (int k = 0; k < nx; ++k)
    y[k] = T{};
  const double scale = static_cast<double>(size);
  for (int start = 0; start < nx; start += block) {
    const int used = std::min(block, nx - start);
    for (int k = 0; k < size; ++k) {
      work[static_cast<size_t>(k)][0] = k < used ? real(x[start + k]) : 0.0;
      work[static_cast<size_t>(k)][1] = k < used ? imag(x[start + k]) : 0.0;
    }
    fftw_execute_dft(forward.get(), work.get(), spectrum.get());
    for (size_t k = 0; k < count; ++k) {
      const double re = spectrum[k][0] * taps[k][0] - spectrum[k][1] * taps[k][1];
      work[k][1] = spectrum[k][0] * taps[k][1] + spectrum[k][1] * taps[k][0];
      work[k][0] = re;
    }
    fftw_execute_dft(backward.get(), work.get(), spectrum.get());
    const int reach = std::min(used + nb - 1, nx - start);
    for (int k = 0; k < reach; ++k)
      add(y[start + k], spectrum[static_cast<size_t>(k)][0] / scale,
          spectrum[static_cast<size_t>(k)][1] / scale);
  }
}

template <typename T> void filterEither(const double* b, int nb, const T* x, int nx, T* y) {
  constexpr int kValues = int(sizeof(T) / sizeof(double));
  if (prefersTransforms(nb, nx, kValues == 2) && finite(b, nb) &&
      finite(reinterpret_cast<const double*>(x), kValues * nx)) {
    overlapAdd(b, nb, x, nx, y);
  } else {
    firFilterDirect(b, nb, x, nx, y);
  }
}

} // namespace

void firFilter(const double* b, int nb, const double* x, int nx, double* y) {
  filterEither(b, nb, x, nx, y);
}

void firFilter(const double* b, int nb, const creal_T* x, int nx, creal_T* y) {
  filterEither(b, nb, x, nx, y);
}

} // namespace internal

namespace {

template <typename T, int N> void sizeAs(const array<T, N>& x, array<T, N>& y) {
  if constexpr (N == 1) {
    y.set_size(x.size(0));
  } else {
    y.set_size(x.size(0), x.size(1));
  }
}

template <typename T, int NB, int N>
void filterAny(const array<double, NB>& b, const array<T, N>& x, array<T, N>& y) {
  const int nx = x.numel();
  const int nb = b.numel();
  std::vector<T> result(static_cast<size_t>(nx));
  if (nb > 0) {
    internal::firFilter(b.data(), nb, x.data(), nx, result.data());
  } else {
    // No taps: nothing passes.
    for (T& v : result)
      v = T{};
  }
  sizeAs(x, y);
  std::copy(result.begin(), result.end(), y.data());
}

} // namespace

template <int NB, int N>
void filter(const array<double, NB>& b, const array<double, N>& x, array<double, N>& y) {
  filterAny(b, x, y);
}

template <int NB, int N>
void filter(const array<double, NB>& b, const array<creal_T, N>& x, array<creal_T, N>& y) {
  filterAny(b, x, y);
}

template void filter<1, 1>(const array<double, 1>&, const array<double, 1>&, array<double, 1>&);
template void filter<1, 2>(const array<double, 1>&, const array<double, 2>&, array<double, 2>&);
template void filter<2, 1>(const array<double, 2>&, const array<double, 1>&, array<double, 1>&);
template void filter<2, 2>(const array<double, 2>&, const array<double, 2>&, array<double, 2>&);
template void filter<1, 1>(const array<double, 1>&, const array<creal_T, 1>&, array<creal_T, 1>&);
template void filter<1, 2>(const array<double, 1>&, const array<creal_T, 2>&, array<creal_T, 2>&);
template void filter<2, 1>(const array<double, 2>&, const array<creal_T, 1>&, array<creal_T, 1>&);
template void filter<2, 2>(const array<double, 2>&, const array<creal_T, 2>&, array<creal_T, 2>&);

} // namespace coder
