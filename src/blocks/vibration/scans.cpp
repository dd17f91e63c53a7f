#include "blocks/vibration/scans.h"

#include "coder/correlation_scan.h"
#include "coder/eml_float_colon.h"
#include "coder/findpeaks.h"
#include "coder/relop.h"
#include "coder/rt_snf.h"
#include "coder/sum.h"

#include <cmath>

namespace vibration {
namespace {

// The phase of every scan counts from the first sample as k = 1.
constexpr int kFirstPhase = 1;

void pickBest(Scan& s, const std::vector<double>& freqs) {
  s.best = 0;
  for (int i = 1; i < int(s.sums.size()); ++i) {
    if (coder::internal::relop(s.sums[size_t(s.best)], s.sums[size_t(i)])) {
      s.best = i;
    }
  }
  if (!s.sums.empty()) {
    const creal_T& b = s.sums[size_t(s.best)];
    s.frequency = freqs[size_t(s.best)];
    s.modulus = rt_hypotd_snf(b.re, b.im);
  }
}

std::vector<double> colon(double lo, double step, double hi) {
  coder::array<double, 2> range;
  coder::eml_float_colon(lo, step, hi, range);
  return std::vector<double>(range.data(), range.data() + range.numel());
}

Scan scanOver(const creal_T* y, int n, double dt, const std::vector<double>& freqs) {
  Scan s;
  s.sums.resize(freqs.size());
  coder::correlation_scan(y, n, dt, kFirstPhase, freqs.data(), int(freqs.size()), s.sums.data());
  pickBest(s, freqs);
  return s;
}

} // namespace

double Scan::lineFlag() const {
  std::vector<double> moduli, peaks, locations;
  for (const creal_T& v : sums) {
    moduli.push_back(rt_hypotd_snf(v.re, v.im));
  }
  coder::findpeaks(moduli.data(), int(moduli.size()), peaks, locations);
  return peaks.empty() || locations[0] != double(best + 1) ? 1.0 : 0.0;
}

double Scan::level(const creal_T* y, int n) const {
  std::vector<double> power(size_t(n > 0 ? n : 0));
  for (int k = 0; k < n; ++k) {
    const double a = rt_hypotd_snf(y[k].re, y[k].im);
    power[size_t(k)] = a * a;
  }
  return 20.0 * std::log10(modulus / std::sqrt(coder::mean(power.data(), n)));
}

Scan scanGrid(const creal_T* y, int n, double dt, double f0, double step, int m) {
  std::vector<double> freqs(size_t(m > 0 ? m : 0));
  for (int i = 0; i < m; ++i) {
    freqs[size_t(i)] = f0 + i * step;
  }
  return scanOver(y, n, dt, freqs);
}

Scan scanRange(const creal_T* y, int n, double dt, double lo, double step, double hi) {
  return scanOver(y, n, dt, colon(lo, step, hi));
}

} // namespace vibration
