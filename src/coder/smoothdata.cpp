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

// Powers of a member's offset that the running sums keep: the tricube's u^9 times u^4 for the
// weights, times u^2 for the values.
constexpr int kPowers = 14;
constexpr int kValuePowers = 12;
constexpr int kSums = kPowers + kValuePowers;
// C(k, q): the shift of the sums from a block's first point onto each of its points.
constexpr double kBinomial[kPowers][kPowers] = {
    {1},
    {1, 1},
    {1, 2, 1},
    {1, 3, 3, 1},
    {1, 4, 6, 4, 1},
    {1, 5, 10, 10, 5, 1},
    {1, 6, 15, 20, 15, 6, 1},
    {1, 7, 21, 35, 35, 21, 7, 1},
    {1, 8, 28, 56, 70, 56, 28, 8, 1},
    {1, 9, 36, 84, 126, 126, 84, 36, 9, 1},
    {1, 10, 45, 120, 210, 252, 210, 120, 45, 10, 1},
    {1, 11, 55, 165, 330, 462, 462, 330, 165, 55, 11, 1},
    {1, 12, 66, 220, 495, 792, 924, 792, 495, 220, 66, 12, 1},
    {1, 13, 78, 286, 715, 1287, 1716, 1716, 1287, 715, 286, 78, 13, 1}};
// Windows of at most this many rows are summed member by member; wider ones go through the
// running sums of a block of neighbouring points.
constexpr int kDirectRows = 48;
// A block's points lie within kBlockSpread of its smallest weight scale from its first point,
// and its members within kBlockReach of it: the powers of the offsets then stay within a few
// times the sums each point needs, so the running sums round like the direct ones.
constexpr double kBlockSpread = 1.0 / 8.0;
constexpr double kBlockReach = 1.25;

// The quadratic's value at the point from the normal equations of the weighted fit: m holds
// sum w u^k (k = 0..4), r sum w u^k a (k = 0..2), u = offset / weight scale. Positive definite
// when three distinct stamps carry weight, so elimination needs no pivoting.
double solveMoments(const double* m, const double* r) {
  const double l10 = m[1] / m[0];
  const double l20 = m[2] / m[0];
  const double d1 = m[2] - l10 * m[1];
  const double e12 = m[3] - l20 * m[1];
  const double l21 = e12 / d1;
  const double d2 = m[4] - l20 * m[2] - l21 * e12;
  const double z1 = r[1] - l10 * r[0];
  const double z2 = r[2] - l20 * r[0] - l21 * z1;
  const double c2 = z2 / d2;
  const double c1 = (z1 - e12 * c2) / d1;
  return (r[0] - m[1] * c1 - m[2] * c2) / m[0];
}

// One point's fit summed member by member over rows lo..hi (NaN rows skipped). The values are
// taken relative to `level`, a value of the window, so that the sums round with the spread of
// the history rather than with its level.
double fitDirect(const double* a, const double* t, int lo, int hi, double t0, double scale,
                 double level) {
  double m[5] = {0.0, 0.0, 0.0, 0.0, 0.0};
  double r[3] = {0.0, 0.0, 0.0};
  for (int j = lo; j <= hi; ++j) {
    if (std::isnan(a[j]))
      continue;
    const double u = (t[j] - t0) / scale;
    const double c = 1.0 - std::fabs(u) * std::fabs(u) * std::fabs(u);
    const double w = c * c * c;
    const double v = a[j] - level;
    const double wu = w * u;
    const double wu2 = wu * u;
    m[0] += w;
    m[1] += wu;
    m[2] += wu2;
    m[3] += wu2 * u;
    m[4] += wu2 * u * u;
    r[0] += w * v;
    r[1] += wu * v;
    r[2] += wu2 * v;
  }
  return level + solveMoments(m, r);
}

// Adds one side of a point to its moments: rows lo..hi of the block's prefix sums, all on one
// side of the point, where the tricube (1 - |u|^3)^3 is the polynomial 1 + 3su^3 + 3u^6 + su^9
// (s = 1 before the point, -1 after it). The block's sums are powers of y = (t - c) / reach;
// the point needs powers of u = (y - delta) / sigma, a binomial shift.
void addSide(const std::vector<double>& prefix, int lo, int hi, double delta, double sigma,
             double s, double* m, double* r) {
  if (lo > hi)
    return;
  const double* top = &prefix[static_cast<size_t>(hi + 1) * kSums];
  const double* bottom = &prefix[static_cast<size_t>(lo) * kSums];
  double sums[kSums];
  for (int k = 0; k < kSums; ++k)
    sums[k] = top[k] - bottom[k];
  double shift[kPowers];
  shift[0] = 1.0;
  for (int q = 1; q < kPowers; ++q)
    shift[q] = shift[q - 1] * -delta;
  double u[kSums];
  double scale = 1.0;
  for (int k = 0; k < kPowers; ++k) {
    double x = 0.0;
    double xa = 0.0;
    for (int q = 0; q <= k; ++q) {
      const double c = kBinomial[k][q] * shift[k - q];
      x += c * sums[q];
      xa += k < kValuePowers ? c * sums[kPowers + q] : 0.0;
    }
    u[k] = x * scale;
    if (k < kValuePowers)
      u[kPowers + k] = xa * scale;
    scale /= sigma;
  }
  for (int k = 0; k < 5; ++k)
    m[k] += u[k] + s * 3.0 * u[k + 3] + 3.0 * u[k + 6] + s * u[k + 9];
  for (int k = 0; k < 3; ++k) {
    const double* v = u + kPowers + k;
    r[k] += v[0] + s * 3.0 * v[3] + 3.0 * v[6] + s * v[9];
  }
}

// Where each point's fit comes from: its weighted rows lo..hi (the ends at the full weight
// scale, which weigh nothing, left out), the scale, and whether it is still to be fitted.
struct PointWindow {
  int lo = 0;
  int hi = -1;
  double scale = 0.0;
  bool open = false;
};

// Fits the points first..last, whose windows lie within rows ulo..uhi, from one set of prefix
// sums about t(first).
void fitBlock(const double* a, const double* t, const std::vector<PointWindow>& windows, int first,
              int last, int ulo, int uhi, double* s) {
  const double c = t[first];
  const double reach = std::max(c - t[ulo], t[uhi] - c);
  const PointWindow& own = windows[static_cast<size_t>(first)];
  const double level = std::isnan(a[first]) ? a[own.lo] : a[first];
  std::vector<double> prefix(static_cast<size_t>(uhi - ulo + 2) * kSums, 0.0);
  for (int j = ulo; j <= uhi; ++j) {
    const double* before = &prefix[static_cast<size_t>(j - ulo) * kSums];
    double* row = &prefix[static_cast<size_t>(j - ulo + 1) * kSums];
    const bool valid = !std::isnan(a[j]);
    const double y = (t[j] - c) / reach;
    const double v = valid ? a[j] - level : 0.0;
    double power = valid ? 1.0 : 0.0;
    for (int k = 0; k < kPowers; ++k) {
      row[k] = before[k] + power;
      if (k < kValuePowers)
        row[kPowers + k] = before[kPowers + k] + power * v;
      power *= y;
    }
  }
  for (int i = first; i <= last; ++i) {
    const PointWindow& w = windows[static_cast<size_t>(i)];
    const double delta = (t[i] - c) / reach;
    const double sigma = w.scale / reach;
    double m[5] = {0.0, 0.0, 0.0, 0.0, 0.0};
    double r[3] = {0.0, 0.0, 0.0};
    addSide(prefix, w.lo - ulo, std::min(i - 1, w.hi) - ulo, delta, sigma, 1.0, m, r);
    addSide(prefix, std::max(i, w.lo) - ulo, w.hi - ulo, delta, sigma, -1.0, m, r);
    s[i] = level + solveMoments(m, r);
  }
}

// The fits of all points from their windows of rows lo[i]..hi[i] (NaN rows taking no part),
// t finite and non-decreasing. The rules of fitAt, decided from counts: no weighted member
// gives NaN, three or fewer with the point itself give the point, fewer than three distinct
// weighted stamps (a fit that is not unique) go to fitAt; the rest from the moments.
void fitWindows(const double* a, const double* t, int n, const std::vector<int>& lo,
                const std::vector<int>& hi, double* s) {
  // valid rows counted, stamps counted where they change, and each row's nearest valid row
  std::vector<int> count(static_cast<size_t>(n) + 1U, 0);
  std::vector<int> stamps(static_cast<size_t>(n) + 1U, 0);
  std::vector<int> next(static_cast<size_t>(n) + 1U, n);
  std::vector<int> prev(static_cast<size_t>(n) + 1U, -1); // prev[j + 1]: last valid row <= j
  std::vector<bool> starts(static_cast<size_t>(n), false);
  int last_valid = -1;
  for (int j = 0; j < n; ++j) {
    const size_t k = static_cast<size_t>(j);
    const bool valid = !std::isnan(a[j]);
    starts[k] = valid && (last_valid < 0 || t[j] != t[last_valid]);
    last_valid = valid ? j : last_valid;
    count[k + 1] = count[k] + (valid ? 1 : 0);
    stamps[k + 1] = stamps[k] + (starts[k] ? 1 : 0);
    prev[k + 1] = last_valid;
  }
  for (int j = n - 1; j >= 0; --j)
    next[static_cast<size_t>(j)] = std::isnan(a[j]) ? next[static_cast<size_t>(j) + 1U] : j;

  std::vector<PointWindow> windows(static_cast<size_t>(n));
  std::vector<int> members;
  for (int i = 0; i < n; ++i) {
    const size_t ii = static_cast<size_t>(i);
    int b = lo[ii] <= hi[ii] ? next[static_cast<size_t>(lo[ii])] : n;
    int e = lo[ii] <= hi[ii] ? prev[static_cast<size_t>(hi[ii]) + 1U] : -1;
    s[i] = std::numeric_limits<double>::quiet_NaN();
    if (b > e)
      continue;
    const double t0 = t[i];
    const double scale = std::max(std::fabs(t[b] - t0), std::fabs(t[e] - t0));
    if (scale > 0.0) {
      while (b <= e && std::fabs(t[b] - t0) == scale)
        b = next[static_cast<size_t>(b) + 1U];
      while (e >= b && std::fabs(t[e] - t0) == scale)
        e = prev[static_cast<size_t>(e)];
    }
    const int weighted =
        b <= e ? count[static_cast<size_t>(e) + 1U] - count[static_cast<size_t>(b)] : 0;
    const bool self = lo[ii] <= i && i <= hi[ii] && !std::isnan(a[i]);
    if (weighted == 0)
      continue;
    if (weighted <= 3 && self) {
      s[i] = a[i];
      continue;
    }
    const size_t bb = static_cast<size_t>(b);
    const int distinct = stamps[static_cast<size_t>(e) + 1U] - stamps[bb] + (starts[bb] ? 0 : 1);
    if (distinct < 3) {
      members.clear();
      for (int j = lo[ii]; j <= hi[ii]; ++j) {
        if (!std::isnan(a[j]))
          members.push_back(j);
      }
      s[i] = fitAt(a, t, members, i, t0);
      continue;
    }
    const double level = std::isnan(a[i]) ? a[b] : a[i];
    if (e - b < kDirectRows) {
      s[i] = fitDirect(a, t, b, e, t0, scale, level);
      continue;
    }
    windows[ii] = PointWindow{b, e, scale, true};
  }

  for (int first = 0; first < n;) {
    const PointWindow& own = windows[static_cast<size_t>(first)];
    if (!own.open) {
      ++first;
      continue;
    }
    const double c = t[first];
    int ulo = own.lo;
    int uhi = own.hi;
    double smallest = own.scale;
    int last = first;
    while (last + 1 < n && windows[static_cast<size_t>(last) + 1U].open) {
      const PointWindow& w = windows[static_cast<size_t>(last) + 1U];
      const double least = std::min(smallest, w.scale);
      const int l = std::min(ulo, w.lo);
      const int h = std::max(uhi, w.hi);
      if (t[last + 1] - c > kBlockSpread * least ||
          std::max(c - t[l], t[h] - c) > kBlockReach * least)
        break;
      smallest = least;
      ulo = l;
      uhi = h;
      ++last;
    }
    if (last == first) {
      const double level = std::isnan(a[first]) ? a[own.lo] : a[first];
      s[first] = fitDirect(a, t, own.lo, own.hi, c, own.scale, level);
    } else {
      fitBlock(a, t, windows, first, last, ulo, uhi, s);
    }
    first = last + 1;
  }
}

// Rows per window on evenly spaced stamps; below 2 (a NaN window too) the data stands as it is.
int uniformRows(double window, double dt, int n) {
  const double samples = std::trunc(window / dt);
  return !(samples >= 2.0) ? 0 : samples >= n ? n : static_cast<int>(samples);
}

// Point i's window of w rows on evenly spaced stamps: centred, or shifted whole onto the first
// or last w rows near the ends.
void uniformSpan(int i, int n, int w, int& first, int& last) {
  const int h = w / 2;
  const int edge = (w + 1) / 2;
  first = i < edge ? 0 : i >= n - edge ? n - w : i - h;
  last = i < edge ? w - 1 : i >= n - edge ? n - 1 : i + h;
}

// Whether a window under twice the smallest step leaves every point alone with itself.
bool singleRowWindows(const double* t, int n, double window) {
  double min_step = std::numeric_limits<double>::infinity();
  for (int k = 1; k < n; ++k)
    min_step = std::min(min_step, t[k] - t[k - 1]);
  return 2.0 * min_step > window;
}

bool finiteNonDecreasing(const double* t, int n) {
  for (int k = 0; k < n; ++k) {
    if (!std::isfinite(t[k]) || (k > 0 && t[k] < t[k - 1]))
      return false;
  }
  return true;
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

void localRegressionDirect(const double* a, const double* t, int n, double window, double* s) {
  if (n <= 0)
    return;
  bool has_nan = false;
  for (int k = 0; k < n; ++k)
    has_nan = has_nan || std::isnan(a[k]);
  std::vector<int> members;
  if (n >= 2 && !has_nan && exactlyUniform(t, n)) {
    const int w = uniformRows(window, t[1] - t[0], n);
    if (w < 2) {
      std::copy(a, a + n, s);
      return;
    }
    for (int i = 0; i < n; ++i) {
      int first = 0;
      int last = -1;
      uniformSpan(i, n, w, first, last);
      members.clear();
      for (int j = first; j <= last; ++j)
        members.push_back(j);
      s[i] = fitAt(a, t, members, i, t[i]);
    }
    return;
  }
  if (singleRowWindows(t, n, window)) {
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

void localRegression(const double* a, const double* t, int n, double window, double* s) {
  bool plain = n >= 2 && !std::isnan(window) && finiteNonDecreasing(t, n);
  bool has_nan = false;
  for (int k = 0; k < n; ++k) {
    has_nan = has_nan || std::isnan(a[k]);
    plain = plain && !std::isinf(a[k]);
  }
  // stamps out of order or not finite, infinite values: the solve per point, whose rules for
  // such input stand
  if (!plain) {
    localRegressionDirect(a, t, n, window, s);
    return;
  }
  std::vector<int> lo(static_cast<size_t>(n));
  std::vector<int> hi(static_cast<size_t>(n));
  if (!has_nan && exactlyUniform(t, n)) {
    const int w = uniformRows(window, t[1] - t[0], n);
    if (w < 2) {
      std::copy(a, a + n, s);
      return;
    }
    for (int i = 0; i < n; ++i)
      uniformSpan(i, n, w, lo[static_cast<size_t>(i)], hi[static_cast<size_t>(i)]);
  } else {
    if (singleRowWindows(t, n, window)) {
      std::copy(a, a + n, s);
      return;
    }
    const double half = window / 2.0;
    // first row at or after x, first row after x
    auto from = [&](double x) { return static_cast<int>(std::lower_bound(t, t + n, x) - t); };
    auto after = [&](double x) { return static_cast<int>(std::upper_bound(t, t + n, x) - t); };
    for (int i = 0; i < n; ++i) {
      const size_t k = static_cast<size_t>(i);
      if (t[i] - half < t[0]) {
        lo[k] = 0;
        hi[k] = from(t[0] + window) - 1;
      } else if (t[i] + half > t[n - 1]) {
        lo[k] = after(t[n - 1] - window);
        hi[k] = n - 1;
      } else {
        lo[k] = from(t[i] - half);
        hi[k] = from(t[i] + half) - 1;
      }
    }
  }
  fitWindows(a, t, n, lo, hi, s);
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
