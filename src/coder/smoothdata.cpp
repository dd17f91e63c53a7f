#include "coder/smoothdata.h"

#include "coder/correlation_scan.h"
#include "coder/mldivide.h"
#include "coder/pchip.h"
#include "coder/sum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace coder {
namespace internal {
namespace {

constexpr double kRealMin = 2.2250738585072014e-308;
constexpr double kRealMax = 1.7976931348623157e308;

// The spectral heuristic on a column without NaN, in samples.
double uniformWindow(const std::vector<double>& column) {
  const int n = static_cast<int>(column.size());
  std::vector<double> a(column);
  const double m = mean(a.data(), n);
  for (double& v : a)
    v -= m;
  // bins 0..n-1 of a 2n-point DFT: the correlation scan at frequencies k/(2n) with unit step
  std::vector<double> freqs(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k)
    freqs[static_cast<size_t>(k)] = static_cast<double>(k);
  std::vector<creal_T> bins(static_cast<size_t>(n));
  correlation_scan(a.data(), n, 1.0 / (2.0 * n), 0, freqs.data(), n, bins.data());
  std::vector<double> power(static_cast<size_t>(n));
  for (size_t k = 0; k < power.size(); ++k) {
    power[k] = (bins[k].re * bins[k].re + bins[k].im * bins[k].im) / (2.0 * n);
  }
  const double total = sum(power.data(), n);
  double cumulative = 0.0;
  int rho = 0;
  for (int k = 0; k < n; ++k) {
    const double share = power[static_cast<size_t>(k)] / total;
    cumulative += std::isnan(share) ? 0.0 : share;
    if (cumulative > 0.75) {
      rho = k + 1;
      break;
    }
  }
  if (rho == 0)
    return 1.0;
  const double spread = 0.44294 * 2.0 * n / std::max(rho - 1, 1);
  return std::ceil(std::sqrt(spread * spread + 1.0));
}

bool exactlyUniform(const double* t, int n) {
  const double step = t[1] - t[0];
  for (int k = 2; k < n; ++k) {
    if (t[k] - t[k - 1] != step)
      return false;
  }
  return true;
}

bool strictlyIncreasing(const double* t, int n) {
  for (int k = 1; k < n; ++k) {
    if (!(t[k] > t[k - 1]))
      return false;
  }
  return true;
}

double clipWindow(double w) {
  if (w == 0.0)
    return kRealMin;
  if (!std::isfinite(w))
    return kRealMax;
  return w;
}

// Weighted quadratic least squares over the members of one window, evaluated at t0. Offsets
// are divided by the weight scale, which changes nothing in the fitted value but keeps the
// columns of the small system equally scaled.
double fitAt(const double* a, const double* t, const std::vector<int>& members, int self,
             double t0) {
  double scale = 0.0;
  for (int j : members)
    scale = std::max(scale, std::fabs(t[j] - t0));
  std::vector<double> rows;
  std::vector<double> rhs;
  std::vector<double> u;
  std::vector<double> root_w;
  bool self_weighted = false;
  for (int j : members) {
    const double d = scale > 0.0 ? (t[j] - t0) / scale : 0.0;
    const double r = 1.0 - std::fabs(d) * std::fabs(d) * std::fabs(d);
    const double w = r * r * r;
    if (!(w > 0.0))
      continue;
    self_weighted = self_weighted || j == self;
    u.push_back(d);
    root_w.push_back(std::sqrt(w));
    rhs.push_back(std::sqrt(w) * a[j]);
  }
  const int m = static_cast<int>(u.size());
  if (m == 0)
    return std::numeric_limits<double>::quiet_NaN();
  // three weighted samples or fewer, the point among them: the quadratic passes through
  // them, so the point keeps its own value exactly
  if (m <= 3 && self_weighted)
    return a[self];
  rows.resize(static_cast<size_t>(m) * 3U);
  for (int k = 0; k < m; ++k) {
    const size_t kk = static_cast<size_t>(k);
    rows[kk] = root_w[kk];
    rows[kk + static_cast<size_t>(m)] = root_w[kk] * u[kk];
    rows[kk + 2U * static_cast<size_t>(m)] = root_w[kk] * u[kk] * u[kk];
  }
  double c[3] = {0.0, 0.0, 0.0};
  qrsolve(rows.data(), m, 3, rhs.data(), c, nullptr);
  return c[0];
}

} // namespace

double chooseWindowSize(const double* a, const double* t, int n) {
  if (n < 2)
    return clipWindow(1.0);
  std::vector<double> column(a, a + n);
  bool has_nan = false;
  for (double v : column)
    has_nan = has_nan || std::isnan(v);
  if (!has_nan && exactlyUniform(t, n)) {
    return clipWindow(uniformWindow(column) * (t[1] - t[0]));
  }
  const double span = (t[n - 1] - t[0]) / (n - 1);
  if (!strictlyIncreasing(t, n)) {
    if (has_nan) {
      // without distinct stamps there is nothing to interpolate over: NaN counts as 0
      for (double& v : column)
        v = std::isnan(v) ? 0.0 : v;
    }
    return clipWindow(uniformWindow(column) * span);
  }
  std::vector<double> tv;
  std::vector<double> av;
  for (int k = 0; k < n; ++k) {
    if (!std::isnan(a[k])) {
      tv.push_back(t[k]);
      av.push_back(a[k]);
    }
  }
  if (av.size() < 2)
    return clipWindow(1.0 * span);
  std::vector<double> filled(static_cast<size_t>(n));
  pchip(tv.data(), av.data(), static_cast<int>(tv.size()), t, n, filled.data());
  // linspace(t(1), t(n), n): the last point exactly t(n)
  std::vector<double> grid(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k)
    grid[static_cast<size_t>(k)] = t[0] + k * ((t[n - 1] - t[0]) / (n - 1));
  grid[static_cast<size_t>(n - 1)] = t[n - 1];
  std::vector<double> resampled(static_cast<size_t>(n));
  pchip(t, filled.data(), n, grid.data(), n, resampled.data());
  return clipWindow(uniformWindow(resampled) * span);
}

void localRegression(const double* a, const double* t, int n, double window, double* s) {
  if (n <= 0)
    return;
  bool has_nan = false;
  for (int k = 0; k < n; ++k)
    has_nan = has_nan || std::isnan(a[k]);
  std::vector<int> members;
  if (n >= 2 && !has_nan && exactlyUniform(t, n)) {
    const double dt = t[1] - t[0];
    const double samples = std::trunc(window / dt);
    const int w = samples >= n ? n : static_cast<int>(samples);
    if (w < 2) {
      std::copy(a, a + n, s);
      return;
    }
    const int h = w / 2;
    const int edge = (w + 1) / 2;
    for (int i = 0; i < n; ++i) {
      int first;
      int last;
      if (i < edge) {
        first = 0;
        last = w - 1;
      } else if (i >= n - edge) {
        first = n - w;
        last = n - 1;
      } else {
        first = i - h;
        last = i + h;
      }
      members.clear();
      for (int j = first; j <= last; ++j)
        members.push_back(j);
      s[i] = fitAt(a, t, members, i, t[i]);
    }
    return;
  }
  double min_step = std::numeric_limits<double>::infinity();
  for (int k = 1; k < n; ++k)
    min_step = std::min(min_step, t[k] - t[k - 1]);
  if (2.0 * min_step > window) {
    std::copy(a, a + n, s);
    return;
  }
  const double half = window / 2.0;
  for (int i = 0; i < n; ++i) {
    members.clear();
    if (t[i] - half < t[0]) {
      for (int j = 0; j < n && t[j] < t[0] + window; ++j) {
        if (!std::isnan(a[j]))
          members.push_back(j);
      }
    } else if (t[i] + half > t[n - 1]) {
      for (int j = 0; j < n; ++j) {
        if (t[j] > t[n - 1] - window && !std::isnan(a[j]))
          members.push_back(j);
      }
    } else {
      for (int j = 0; j < n; ++j) {
        if (t[j] >= t[i] - half && t[j] < t[i] + half && !std::isnan(a[j]))
          members.push_back(j);
      }
    }
    s[i] = fitAt(a, t, members, i, t[i]);
  }
}

} // namespace internal

void smoothdata(const double* a, const double* t, int n, double* s) {
  if (n < 2) {
    std::copy(a, a + (n > 0 ? n : 0), s);
    return;
  }
  internal::localRegression(a, t, n, internal::chooseWindowSize(a, t, n), s);
}

} // namespace coder
