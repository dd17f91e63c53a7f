#include "coder/envspectrum.h"

#include "coder/FftPlanCache.h"
#include "coder/fft.h"
#include "coder/firls.h"
#include "coder/hilbert.h"
#include "coder/rt_snf.h"
#include "coder/sum.h"

#include <vector>

namespace coder {

template <int N>
void envspectrum(const array<double, N>& x, double fs, array<double, 1>& es, array<double, 1>& f,
                 array<double, 1>& env, array<double, 1>& t) {
  const int n = x.numel();
  if (n < 4) {
    es.set_size(0);
    f.set_size(0);
    env.set_size(0);
    t.set_size(0);
    return;
  }
  const size_t count = static_cast<size_t>(n);
  std::vector<double> centred(x.data(), x.data() + n);
  const double mean_x = coder::mean(centred.data(), n);
  for (double& v : centred)
    v -= mean_x;

  // The default band is fs/4 .. 3fs/8, handed to fir1 as fractions of Nyquist.
  array<double, 2> taps;
  fir1(50, (fs / 4.0) / (fs / 2.0), (3.0 * fs / 8.0) / (fs / 2.0), taps);
  const int nb = taps.numel();
  const int delay = (nb - 1) / 2;

  // Zero-phase "same" convolution: output sample k is sample k + delay of the full
  // convolution, the input taken as zero beyond its ends.
  array<double, 2> band;
  band.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    const int full = k + delay;
    const int first = full - (nb - 1) > 0 ? full - (nb - 1) : 0;
    const int last = full < n - 1 ? full : n - 1;
    double acc = 0.0;
    for (int j = first; j <= last; ++j)
      acc += centred[static_cast<size_t>(j)] * taps[full - j];
    band[k] = acc;
  }

  // Envelope: modulus of the analytic signal, without its mean.
  array<creal_T, 2> analytic;
  hilbert(band, analytic);
  env.set_size(n);
  for (int k = 0; k < n; ++k)
    env[k] = rt_hypotd_snf(analytic[k].re, analytic[k].im);
  const double mean_env = coder::mean(env.data(), n);
  for (int k = 0; k < n; ++k)
    env[k] -= mean_env;

  // One-sided peak-amplitude spectrum of the envelope.
  internal::FftBuffer<creal_T> spectrum(count);
  internal::fftReal(env.data(), n, n, spectrum.get());
  const int kept = (n % 2 == 0) ? n / 2 + 1 : (n + 1) / 2;
  const double inv_n = 1.0 / static_cast<double>(n);
  es.set_size(kept);
  f.set_size(kept);
  for (int k = 0; k < kept; ++k) {
    double a =
        rt_hypotd_snf(spectrum[static_cast<size_t>(k)].re, spectrum[static_cast<size_t>(k)].im) *
        inv_n;
    const bool single = k == 0 || (n % 2 == 0 && k == n / 2);
    if (!single)
      a *= 2.0;
    es[k] = a;
    f[k] = (static_cast<double>(k) / static_cast<double>(n)) * fs;
  }
  t.set_size(n);
  for (int k = 0; k < n; ++k)
    t[k] = static_cast<double>(k) / fs;
}

template void envspectrum<1>(const array<double, 1>&, double, array<double, 1>&, array<double, 1>&,
                             array<double, 1>&, array<double, 1>&);
template void envspectrum<2>(const array<double, 2>&, double, array<double, 1>&, array<double, 1>&,
                             array<double, 1>&, array<double, 1>&);

} // namespace coder
