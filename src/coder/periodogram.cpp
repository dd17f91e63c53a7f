#include "coder/periodogram.h"

#include "coder/FftPlanCache.h"
#include "coder/fft.h"

#include <vector>

namespace coder {

namespace {

void onesided(const double* x, const double* w, int n, int nfft, double fs, array<double, 1>& Pxx,
              array<double, 1>& F) {
  std::vector<double> windowed(static_cast<size_t>(n));
  double energy = 0.0;
  for (int k = 0; k < n; ++k) {
    windowed[static_cast<size_t>(k)] = x[k] * w[k];
    energy += w[k] * w[k];
  }
  internal::FftBuffer<creal_T> spectrum(static_cast<size_t>(nfft));
  internal::fftReal(windowed.data(), n, nfft, spectrum.get());
  const int kept = nfft / 2 + 1;
  Pxx.set_size(kept);
  F.set_size(kept);
  const double resolution = fs / static_cast<double>(nfft);
  for (int k = 0; k < kept; ++k) {
    const creal_T& v = spectrum[static_cast<size_t>(k)];
    double p = (v.re * v.re + v.im * v.im) / energy;
    const bool single = k == 0 || (nfft % 2 == 0 && k == nfft / 2);
    if (!single)
      p = 2.0 * p;
    Pxx[k] = p / fs;
    F[k] = resolution * static_cast<double>(k);
  }
  // The last point of the grid is pinned to the exact Nyquist value (or half a bin below
  // it for odd lengths) instead of accumulating the product's rounding.
  if (nfft % 2 == 0) {
    F[kept - 1] = fs / 2.0;
  } else {
    F[kept - 1] = fs / 2.0 - resolution / 2.0;
  }
}

} // namespace

template <int N>
void periodogram(const array<double, N>& x, const array<double, 1>& w, int nfft, double fs,
                 array<double, 1>& Pxx, array<double, 1>& F) {
  if (w.numel() != x.numel() || nfft <= 0) {
    Pxx.set_size(0);
    F.set_size(0);
    return;
  }
  onesided(x.data(), w.data(), x.numel(), nfft, fs, Pxx, F);
}

template <int N>
void periodogram(const array<double, N>& x, array<double, 1>& Pxx, array<double, 1>& w) {
  const int n = x.numel();
  int nfft = 1;
  while (nfft < n)
    nfft *= 2;
  if (nfft < 256)
    nfft = 256;
  std::vector<double> ones(static_cast<size_t>(n), 1.0);
  onesided(x.data(), ones.data(), n, nfft, 6.283185307179586, Pxx, w);
}

template void periodogram<1>(const array<double, 1>&, const array<double, 1>&, int, double,
                             array<double, 1>&, array<double, 1>&);
template void periodogram<2>(const array<double, 2>&, const array<double, 1>&, int, double,
                             array<double, 1>&, array<double, 1>&);
template void periodogram<1>(const array<double, 1>&, array<double, 1>&, array<double, 1>&);
template void periodogram<2>(const array<double, 2>&, array<double, 1>&, array<double, 1>&);

} // namespace coder
