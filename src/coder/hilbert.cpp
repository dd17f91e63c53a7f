#include "coder/hilbert.h"

#include "coder/FftPlanCache.h"

#include <algorithm>

namespace coder {

template <int N> void hilbert(const array<double, N>& x, array<creal_T, N>& z) {
  const int n = x.numel();
  const size_t count = static_cast<size_t>(n);
  if (n > 0) {
    using internal::FftBuffer;
    using internal::FftPlanCache;
    // Forward transform of the real signal gives the non-negative half of the spectrum;
    // the one-sided weights are applied while it is copied into the inverse's input.
    FftBuffer<double> in(count);
    std::copy(x.data(), x.data() + n, in.get());
    const size_t half = count / 2 + 1;
    FftBuffer<fftw_complex> spectrum(half);
    fftw_execute_dft_r2c(FftPlanCache::instance().plan(FftPlanCache::Kind::RealForward, n).get(),
                         in.get(), spectrum.get());
    FftBuffer<fftw_complex> weighted(count);
    FftBuffer<fftw_complex> analytic(count);
    // Positive frequencies doubled, DC and the Nyquist bin of an even length kept once,
    // negative frequencies removed.
    const size_t doubled_end = (count + 1) / 2;
    for (size_t k = 0; k < count; ++k) {
      double scale = 0.0;
      if (k == 0 || (count % 2 == 0 && k == count / 2)) {
        scale = 1.0;
      } else if (k < doubled_end) {
        scale = 2.0;
      }
      if (scale == 0.0) {
        weighted[k][0] = 0.0;
        weighted[k][1] = 0.0;
      } else {
        weighted[k][0] = spectrum[k][0] * scale;
        weighted[k][1] = spectrum[k][1] * scale;
      }
    }
    fftw_execute_dft(FftPlanCache::instance().plan(FftPlanCache::Kind::ComplexBackward, n).get(),
                     weighted.get(), analytic.get());
    if constexpr (N == 1) {
      z.set_size(n);
    } else {
      z.set_size(x.size(0), x.size(1));
    }
    const double scale = static_cast<double>(n);
    for (size_t k = 0; k < count; ++k) {
      z[static_cast<int>(k)].re = analytic[k][0] / scale;
      z[static_cast<int>(k)].im = analytic[k][1] / scale;
    }
    return;
  }
  if constexpr (N == 1) {
    z.set_size(0);
  } else {
    z.set_size(x.size(0), x.size(1));
  }
}

template void hilbert<1>(const array<double, 1>&, array<creal_T, 1>&);
template void hilbert<2>(const array<double, 2>&, array<creal_T, 2>&);

} // namespace coder
