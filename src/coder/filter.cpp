#include "coder/filter.h"

#include <algorithm>
#include <vector>

namespace coder {

namespace internal {

// Both kernels run in the generated code's axpy form: each input sample adds its products
// with all taps to the outputs it reaches. Every output therefore sums its terms from the
// oldest input sample on, as a per-output loop would, but the inner loop runs over
// independent outputs and vectorises without reordering any sum.
void firFilter(const double* b, int nb, const double* x, int nx, double* y) {
  std::fill(y, y + nx, 0.0);
  for (int i = 0; i < nx; ++i) {
    const double xi = x[i];
    const int reach = std::min(nb, nx - i);
    double* yi = y + i;
    for (int j = 0; j < reach; ++j)
      yi[j] += xi * b[j];
  }
}

void firFilter(const double* b, int nb, const creal_T* x, int nx, creal_T* y) {
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
