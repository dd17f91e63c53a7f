#include "coder/moments.h"

#include "coder/sum.h"

#include <cmath>
#include <limits>
#include <vector>

namespace coder {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Central moments of order 2 and p over the non-NaN elements, each as the mean of the
// powered deviations (MATLAB forms x0 = x - nanmean(x), then nanmean(x0.^p)).
void centralMoments(const double* x, int n, int p, double* m2, double* mp) {
  const double m = nanmean(x, n);
  std::vector<double> d2;
  std::vector<double> dp;
  for (int k = 0; k < n; ++k) {
    if (std::isnan(x[k]))
      continue;
    const double d = x[k] - m;
    d2.push_back(d * d);
    dp.push_back(p == 3 ? d * d * d : d * d * d * d);
  }
  *m2 = nanmean(d2.data(), static_cast<int>(d2.size()));
  *mp = nanmean(dp.data(), static_cast<int>(dp.size()));
}

} // namespace

double b_std(const double* x, int n) {
  if (n <= 0)
    return kNaN;
  if (n == 1)
    return std::isfinite(x[0]) ? 0.0 : kNaN;
  const double mu = sum(x, n) / static_cast<double>(n);
  // Scaled sum of squares: no overflow or underflow for any finite data.
  double scale = 3.3121686421112381e-170;
  double ssq = 0.0;
  for (int k = 0; k < n; ++k) {
    const double absxk = std::fabs(x[k] - mu);
    if (absxk > scale) {
      const double t = scale / absxk;
      ssq = 1.0 + ssq * t * t;
      scale = absxk;
    } else {
      const double t = absxk / scale;
      ssq += t * t;
    }
  }
  return scale * std::sqrt(ssq) / std::sqrt(static_cast<double>(n - 1));
}

double skewness(const double* x, int n) {
  double m2 = 0.0;
  double m3 = 0.0;
  centralMoments(x, n, 3, &m2, &m3);
  return m3 / std::pow(m2, 1.5);
}

double kurtosis(const double* x, int n) {
  double m2 = 0.0;
  double m4 = 0.0;
  centralMoments(x, n, 4, &m2, &m4);
  return m4 / (m2 * m2);
}

double peak2peak(const double* x, int n) {
  double hi = kNaN;
  double lo = kNaN;
  for (int k = 0; k < n; ++k) {
    if (std::isnan(x[k]))
      continue;
    if (std::isnan(hi) || x[k] > hi)
      hi = x[k];
    if (std::isnan(lo) || x[k] < lo)
      lo = x[k];
  }
  return hi - lo;
}

} // namespace coder
