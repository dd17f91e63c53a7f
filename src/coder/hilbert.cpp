#include "coder/hilbert.h"

#include "coder/FftPlanCache.h"
#include "coder/fft.h"

namespace coder {

template <int N>
void hilbert(const array<double, N>& x, array<creal_T, N>& z) {
  const int n = x.numel();
  internal::FftBuffer<creal_T> spectrum(static_cast<size_t>(n));
  internal::fftReal(x.data(), n, n, spectrum.get());
  // One-sided weights: the positive frequencies doubled, the negative ones removed, DC and
  // the Nyquist bin of an even length kept once.
  const int doubled_end = (n % 2 == 0) ? n / 2 : (n + 1) / 2;
  for (int k = 1; k < doubled_end; ++k) {
    spectrum[static_cast<size_t>(k)].re *= 2.0;
    spectrum[static_cast<size_t>(k)].im *= 2.0;
  }
  const int zero_from = (n % 2 == 0) ? n / 2 + 1 : (n + 1) / 2;
  for (int k = zero_from; k < n; ++k) {
    spectrum[static_cast<size_t>(k)].re = 0.0;
    spectrum[static_cast<size_t>(k)].im = 0.0;
  }
  if constexpr (N == 1) {
    z.set_size(n);
  } else {
    z.set_size(x.size(0), x.size(1));
  }
  internal::fftComplex(spectrum.get(), n, n, true, z.data());
}

template void hilbert<1>(const array<double, 1>&, array<creal_T, 1>&);
template void hilbert<2>(const array<double, 2>&, array<creal_T, 2>&);

} // namespace coder
