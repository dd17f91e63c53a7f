#include "blocks/vibration/conditioning.h"

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
#include <vector>

namespace vibration {
namespace {

// g*s to mm/s (and g*s^2 to mm): the literal of the method, as two multiplications.
double toMillimetres(double v) {
  return v * 9.8 * 1000.0;
}

// The amplitude spectrum of x cut to round(Lv) samples and zero-padded to `padding` times that
// length, kept as the half that determines it: bin k above nfft / 2 is the mirror of nfft - k.
struct Spectrum {
  std::vector<creal_T> half;
  int nfft = 0;
  double magnitude(long k) const {
    const creal_T& v = half[size_t(k <= nfft / 2 ? k : nfft - k)];
    return rt_hypotd_snf(v.re, v.im);
  }
};

Spectrum spectrum(const double* x, int length, double Lv, int padding) {
  const double wanted = std::round(Lv);
  const int n = wanted < 0.0 || std::isnan(wanted) ? 0 : int(std::min(wanted, double(length)));
  Spectrum s;
  s.nfft = padding * n;
  s.half.resize(size_t(s.nfft / 2 + 1));
  if (s.nfft > 0) {
    coder::internal::fftRealHalf(x, n, s.nfft, s.half.data());
  }
  return s;
}

// Sum of the squared amplitudes 2 |Y(i)| / Lv over the 1-based bins round(M f1 / rate) ..
// round(M f2 / rate), M = nfft + 2. Bins outside the spectrum are not there to add: a band
// reaching past the record's spectrum sums what exists.
double bandSum(const Spectrum& Y, double Lv, double rate, double f1, double f2) {
  const double M = double(Y.nfft) + 2.0;
  const long i1 = std::max(1L, long(std::round(M * f1 / rate)));
  const long i2 = std::min(long(Y.nfft), long(std::round(M * f2 / rate)));
  std::vector<double> squares;
  for (long i = i1; i <= i2; ++i) {
    const double a = 2.0 * Y.magnitude(i - 1) / Lv;
    squares.push_back(a * a);
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
  if (form.acc_padding > 0) {
    const Spectrum A = spectrum(acc.data(), na, Lv, form.acc_padding);
    const double divisor = 2.0 * form.acc_padding;
    if (nyquist >= 2500.0) {
      out.acc[7] = std::sqrt(bandSum(A, Lv, rate, 500.0, 2500.0) / divisor);
    }
    if (nyquist >= 5000.0) {
      out.acc[8] = std::sqrt(bandSum(A, Lv, rate, 2500.0, 5000.0) / divisor);
    }
  }

  std::vector<double> w(vel.data(), vel.data() + nv);
  for (double& v : w) {
    v = toMillimetres(v);
  }
  moments(w.data(), nv, out.vel);
  out.vel[5] = peak2rms(w.data(), nv);
  out.vel[6] = rms(w.data(), nv);
  const Spectrum V = spectrum(w.data(), nv, Lv, 16);
  out.vel[7] = std::sqrt(bandSum(V, Lv, rate, 10.0, 990.0) / 32.0);
  out.vel[8] = std::sqrt(bandSum(V, Lv, rate, 2.0, 65.0) / 32.0);
  out.vel[9] = std::sqrt(bandSum(V, Lv, rate, 65.0, 300.0) / 32.0);

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
