#include "blocks/vibration/conditioning.h"

#include "blocks/vibration/rotor.h"
#include "coder/cumtrapz.h"
#include "coder/detrend.h"
#include "coder/fft.h"
#include "coder/minmax.h"
#include "coder/moments.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"
#include "coder/sum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace vibration {
namespace {

// A band of the statistics, Hz.
struct Band {
  double f1, f2;
};

// The 1-based bins round(M f1 / rate) .. round(M f2 / rate) of a band, M = nfft + 2, within
// the spectrum's 1 .. nfft: a band reaching past the record's spectrum has what exists.
void bandBins(int nfft, double rate, const Band& band, long* i1, long* i2) {
  const double M = double(nfft) + 2.0;
  *i1 = std::max(1L, long(std::round(M * band.f1 / rate)));
  *i2 = std::min(long(nfft), long(std::round(M * band.f2 / rate)));
}

// The amplitude spectrum of x cut to round(Lv) samples and zero-padded to `padding` times that
// length, where the bands read it: of the half that determines it (bin k above nfft / 2 is the
// mirror of nfft - k) only the span from `first` that holds every band's bins is computed.
struct Spectrum {
  std::vector<creal_T> bins;
  int nfft = 0;
  long first = 0;
  double magnitude(long k) const {
    const creal_T& v = bins[size_t((k <= nfft / 2 ? k : nfft - k) - first)];
    return rt_hypotd_snf(v.re, v.im);
  }
};

Spectrum spectrum(const double* x, int length, double Lv, int padding, double rate,
                  std::initializer_list<Band> bands) {
  const double wanted = std::round(Lv);
  const int n = wanted < 0.0 || std::isnan(wanted) ? 0 : int(std::min(wanted, double(length)));
  Spectrum s;
  s.nfft = padding * n;
  const long half = s.nfft / 2;
  long lo = half + 1, hi = -1;
  for (const Band& band : bands) {
    long i1, i2;
    bandBins(s.nfft, rate, band, &i1, &i2);
    if (i1 > i2) {
      continue;
    }
    // 0-based bins i1 - 1 .. i2 - 1, folded onto the half
    const long b1 = i1 - 1, b2 = i2 - 1;
    lo = std::min(lo, b2 <= half ? b1 : b1 >= half ? s.nfft - b2 : std::min(b1, s.nfft - b2));
    hi = std::max(hi, b2 <= half ? b2 : b1 >= half ? s.nfft - b1 : half);
  }
  if (hi >= lo) {
    s.first = lo;
    s.bins.resize(size_t(hi - lo + 1));
    coder::internal::fftRealBins(x, n, s.nfft, int(lo), int(hi - lo + 1), s.bins.data());
  }
  return s;
}

// Sum of the squared amplitudes 2 |Y(i)| / Lv over the band's bins.
double bandSum(const Spectrum& Y, double Lv, double rate, const Band& band) {
  long i1, i2;
  bandBins(Y.nfft, rate, band, &i1, &i2);
  std::vector<double> squares(size_t(std::max(i2 - i1 + 1, 0L)));
  for (long i = i1; i <= i2; ++i) {
    const double a = 2.0 * Y.magnitude(i - 1) / Lv;
    squares[size_t(i - i1)] = a * a;
  }
  return coder::sum(squares.data(), int(squares.size()));
}

double rms(const double* x, int n) {
  std::vector<double> squares(x, x + n);
  for (double& v : squares) {
    v *= v;
  }
  return std::sqrt(coder::sum(squares.data(), n) / double(n));
}

double peak2rms(const double* x, int n) {
  std::vector<double> magnitudes(x, x + n);
  for (double& v : magnitudes) {
    v = std::fabs(v);
  }
  int where = 0;
  return coder::internal::maximum(magnitudes.data(), n, &where) / rms(x, n);
}

// mean, std, skewness, kurtosis, peak2peak: the first rows of every table.
void moments(const double* x, int n, double* row) {
  row[0] = coder::mean(x, n);
  row[1] = coder::b_std(x, n);
  row[2] = coder::skewness(x, n);
  row[3] = coder::kurtosis(x, n);
  row[4] = coder::peak2peak(x, n);
}

} // namespace

void ACC_VEL_DSP(const coder::array<double, 2>& x, double fs, coder::array<double, 2>& acc,
                 coder::array<double, 2>& vel, coder::array<double, 2>& dsp) {
  const int n = x.numel();
  coder::array<double, 2> t;
  t.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    t[k] = double(static_cast<std::uint16_t>(k)) / fs;
  }
  // tukeywin with ratio 0 is all ones: the taper stage multiplies by 1 and is left out.
  coder::detrend(x, acc);
  coder::cumtrapz(t, acc, vel);
  coder::detrend(vel, vel);
  coder::cumtrapz(t, vel, dsp);
  coder::detrend(dsp, dsp);
}

void paramData_v(double Lv, double fs, const coder::array<double, 2>& acc,
                 const coder::array<double, 2>& vel, const coder::array<double, 2>& dsp,
                 const StatisticsForm& form, AxisStatistics& out) {
  const double rate = form.band_rate > 0.0 ? form.band_rate : fs;
  const double nyquist = std::floor(fs / 2.0);
  const int na = acc.numel(), nv = vel.numel(), nd = dsp.numel();

  moments(acc.data(), na, out.acc);
  out.acc[5] = peak2rms(acc.data(), na);
  out.acc[6] = rms(acc.data(), na);
  out.acc[7] = out.acc[8] = rtNaN;
  const Band low_acc{500.0, 2500.0}, high_acc{2500.0, 5000.0};
  if (form.acc_padding > 0 && nyquist >= 2500.0) {
    const double divisor = 2.0 * form.acc_padding;
    const bool high = nyquist >= 5000.0;
    const Spectrum A =
        high ? spectrum(acc.data(), na, Lv, form.acc_padding, rate, {low_acc, high_acc})
             : spectrum(acc.data(), na, Lv, form.acc_padding, rate, {low_acc});
    out.acc[7] = std::sqrt(bandSum(A, Lv, rate, low_acc) / divisor);
    if (high) {
      out.acc[8] = std::sqrt(bandSum(A, Lv, rate, high_acc) / divisor);
    }
  }

  std::vector<double> w(vel.data(), vel.data() + nv);
  for (double& v : w) {
    v = toMillimetres(v);
  }
  moments(w.data(), nv, out.vel);
  out.vel[5] = peak2rms(w.data(), nv);
  out.vel[6] = rms(w.data(), nv);
  const Band cf4{10.0, 990.0}, cf5{2.0, 65.0}, cf6{65.0, 300.0};
  const Spectrum V = spectrum(w.data(), nv, Lv, 16, rate, {cf4, cf5, cf6});
  out.vel[7] = std::sqrt(bandSum(V, Lv, rate, cf4) / 32.0);
  out.vel[8] = std::sqrt(bandSum(V, Lv, rate, cf5) / 32.0);
  out.vel[9] = std::sqrt(bandSum(V, Lv, rate, cf6) / 32.0);

  std::vector<double> d(dsp.data(), dsp.data() + nd);
  for (double& v : d) {
    v = toMillimetres(v);
  }
  moments(d.data(), nd, out.dsp);
}

double signal_ndec(double fs, coder::array<creal_T, 2>& z) {
  const int m = z.numel() / 8;
  for (int j = 0; j < m; ++j) {
    creal_T s{0.0, 0.0};
    for (int k = 8 * j; k < 8 * j + 8; ++k) {
      s.re += z[k].re;
      s.im += z[k].im;
    }
    z[j] = {s.re / 8.0, s.im / 8.0};
  }
  z.set_size(1, m);
  return fs / 8.0;
}

} // namespace vibration
