#include "blocks/trend/detrend_filter_group_mon_rul.h"

#include <cmath>
#include <vector>

#include "coder/eml_float_colon.h"
#include "coder/grp2idx.h"
#include "coder/interp1.h"
#include "coder/median.h"
#include "coder/minmax.h"
#include "coder/movfun.h"
#include "coder/polyfit.h"
#include "coder/rt_nonfinite.h"
#include "coder/smoothdata.h"
#include "coder/sum.h"

namespace detrend_filter_group_mon_rul_ns {

namespace {

// Rotor frequencies within 2 Hz are one operating speed; a rounded speed of 5 Hz or less is a
// machine that stands (or creeps while it starts or stops).
constexpr double kSpeedUnit = 2.0;
constexpr double kStandingLimit = 5.0;
// The last three speeds tell whether the machine runs steadily now.
constexpr int kStabilityRows = 3;
// The trailing mean that quiets single readings before the smoothing: itself and five before.
constexpr int kMeanBack = 5;
// A history must rise at least this steadily before a crossing is worth announcing.
constexpr double kLeastMonotone = 0.3;
constexpr int kDegree = 3;
// The forecast works on a regular 10-minute grid, whatever the spacing of the measurements.
constexpr double kResampleStep = 600.0;
// The stored curve goes this many grid steps beyond the crossing, so that the display shows
// the threshold being passed.
constexpr int kStepsBeyondCrossing = 10;
// Capacity of the chosen rows: the store delivers at most a thousand.
constexpr int kRowCapacity = 10000;

void fillNaN(coder::array<double, 2>& a, int n) {
  a.set_size(1, n);
  for (int i = 0; i < n; ++i) {
    a[i] = rtNaN;
  }
}

// The median of the last three rounded speeds, NaN when one of them is unknown.
double recentSpeed(const std::vector<double>& g) {
  const double* last = g.data() + g.size() - kStabilityRows;
  for (int i = 0; i < kStabilityRows; ++i) {
    if (std::isnan(last[i])) {
      return rtNaN;
    }
  }
  return coder::median(last, kStabilityRows);
}

bool strictlyRising(const std::vector<double>& t) {
  for (std::size_t i = 1; i < t.size(); ++i) {
    if (!(t[i] > t[i - 1])) {
      return false;
    }
  }
  return true;
}

// The forecast of the chosen rows (times ts from 0, values xs) against orange. Fills the
// cubic's coefficients and axis (p, mu) for the trend; false when the stamps cannot be
// resampled, and then nothing is filled.
bool forecast(const std::vector<double>& ts, const std::vector<double>& xs, double horizon,
              double orange, std::vector<double>& p, double mu[2], double* rul_days,
              struct0_T* curve) {
  const int c = static_cast<int>(ts.size());
  if (!strictlyRising(ts)) {
    return false;
  }
  coder::array<double, 2> tg;
  coder::eml_float_colon(ts[0], kResampleStep, ts[static_cast<std::size_t>(c - 1)], tg);
  const int ng = tg.numel();
  if (ng < 2) {
    // Less than one grid step of history: no step to extend by.
    return false;
  }
  std::vector<double> xg(static_cast<std::size_t>(ng));
  coder::interp1(ts.data(), xs.data(), c, tg.data(), ng, xg.data());

  const double step = tg[ng - 1] - tg[ng - 2];
  coder::array<double, 2> tf;
  coder::eml_float_colon(tg[0], step, tg[ng - 1] + horizon, tf);
  const int nf = tf.numel();
  coder::polyfit(tg.data(), xg.data(), ng, kDegree, p, nullptr, mu);
  std::vector<double> yf(static_cast<std::size_t>(nf));
  coder::polyval(p, tf.data(), nf, mu, yf.data());

  std::vector<double> distance(static_cast<std::size_t>(nf));
  for (int i = 0; i < nf; ++i) {
    distance[static_cast<std::size_t>(i)] = std::fabs(yf[static_cast<std::size_t>(i)] - orange);
  }
  int k = 0; // 1-based, as the nearest point is numbered in the method
  coder::internal::minimum(distance.data(), nf, &k);
  // A nearest point at either end of the curve has no neighbour to show a crossing.
  if (k <= 1 || k >= nf) {
    return true;
  }
  const double below = yf[static_cast<std::size_t>(k - 2)] - orange;
  const double above = yf[static_cast<std::size_t>(k)] - orange;
  if (!(below < 0.0 && above > 0.0)) {
    return true;
  }
  const double newest = ts[static_cast<std::size_t>(c - 1)];
  *rul_days = (tf[k - 1] - newest) / 3600.0 / 24.0;
  int first = 0;
  while (first < nf && !(tf[first] > newest)) {
    ++first;
  }
  const int last = k - 1 + kStepsBeyondCrossing < nf ? k - 1 + kStepsBeyondCrossing : nf - 1;
  const int count = first <= last ? last - first + 1 : 0;
  curve->x.set_size(1, count);
  curve->y.set_size(1, count);
  for (int j = 0; j < count; ++j) {
    curve->x[j] = tf[first + j];
    curve->y[j] = yf[static_cast<std::size_t>(first + j)];
  }
  return true;
}

} // namespace

void splitapply_my(const coder::array<double, 1>& x, const coder::array<double, 1>& groups,
                   int group_count, coder::array<double, 2>& result) {
  result.set_size(1, group_count);
  std::vector<double> members;
  for (int j = 0; j < group_count; ++j) {
    members.clear();
    for (int i = 0; i < x.numel() && i < groups.numel(); ++i) {
      if (groups[i] == static_cast<double>(j + 1)) {
        members.push_back(x[i]);
      }
    }
    result[j] = coder::median(members.data(), static_cast<int>(members.size()));
  }
}

void detrend_filter_group_mon_rul(const coder::array<double, 1>& x,
                                  const coder::array<double, 1>& frm,
                                  const coder::array<double, 1>& t, double horizon,
                                  const double thresholds[3], int options,
                                  coder::array<double, 2>& trend, double* monotone,
                                  int monotone_size[2], double* rul_days, struct0_T* curve) {
  const int n = x.numel();
  fillNaN(trend, n);
  *monotone = rtNaN;
  monotone_size[0] = 1;
  monotone_size[1] = 1;
  *rul_days = rtNaN;
  fillNaN(curve->x, 1);
  fillNaN(curve->y, 1);
  // Fewer rows than the stability window tell nothing about the speed of now.
  if (n < kStabilityRows || frm.numel() != n || t.numel() != n) {
    return;
  }

  // Step 1: speed groups, numbered by rising speed.
  std::vector<double> g(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    g[static_cast<std::size_t>(i)] = kSpeedUnit * std::round(frm[i] / kSpeedUnit);
  }
  std::vector<double> idx;
  std::vector<double> labels;
  coder::grp2idx(g.data(), n, idx, labels);
  const int m = static_cast<int>(labels.size());
  coder::array<double, 1> groups;
  groups.set(idx.data(), n);
  coder::array<double, 2> medians;
  splitapply_my(x, groups, m, medians);
  int best = 0;
  coder::internal::maximum(medians.data(), m, &best);
  const double m3 = recentSpeed(g);

  // Step 2: which speed the trend is about. A speed that still changes at the last row, or a
  // machine that never ran, gives nothing.
  const double last_speed = g[static_cast<std::size_t>(n - 1)];
  const double last_group = idx[static_cast<std::size_t>(n - 1)];
  double group = 0.0;
  if (last_speed == m3) {
    if (m3 > kStandingLimit) {
      group = last_group;
    } else if (m > 1) {
      group = last_group == static_cast<double>(best) ? static_cast<double>(m)
                                                      : static_cast<double>(best);
    }
  }
  if (group == 0.0) {
    return;
  }
  std::vector<int> chosen;
  for (int i = 0; i < n && static_cast<int>(chosen.size()) < kRowCapacity; ++i) {
    if (idx[static_cast<std::size_t>(i)] == group) {
      chosen.push_back(i);
    }
  }

  // Step 3: the chosen series on its own time axis.
  const int c = static_cast<int>(chosen.size());
  std::vector<double> xs(static_cast<std::size_t>(c));
  std::vector<double> ts(static_cast<std::size_t>(c));
  for (int k = 0; k < c; ++k) {
    xs[static_cast<std::size_t>(k)] = x[chosen[static_cast<std::size_t>(k)]];
    ts[static_cast<std::size_t>(k)] = t[chosen[static_cast<std::size_t>(k)]] - t[chosen[0]];
  }

  // Step 4: monotone of the smoothed trailing mean.
  std::vector<double> mean(static_cast<std::size_t>(c));
  std::vector<double> smooth(static_cast<std::size_t>(c));
  coder::movmean(xs.data(), c, kMeanBack, mean.data());
  coder::smoothdata(mean.data(), ts.data(), c, smooth.data());
  std::vector<double> signs(static_cast<std::size_t>(c - 1));
  for (int k = 0; k + 1 < c; ++k) {
    const double d = smooth[static_cast<std::size_t>(k + 1)] - smooth[static_cast<std::size_t>(k)];
    signs[static_cast<std::size_t>(k)] = std::isnan(d) ? rtNaN : (d > 0.0) - (d < 0.0);
  }
  *monotone = coder::sum(signs.data(), c - 1) / static_cast<double>(c - 1);

  // Steps 5 to 7: the cubic, through the resampled history when a forecast is wanted.
  std::vector<double> p;
  double mu[2] = {0.0, 0.0};
  if ((options & 1) != 0 && m3 > kStandingLimit) {
    // A history that does not rise steadily is not forecast, and shows no trend either.
    if (!(*monotone >= kLeastMonotone)) {
      return;
    }
    if (!forecast(ts, xs, horizon, thresholds[2], p, mu, rul_days, curve)) {
      return;
    }
  } else {
    coder::polyfit(ts.data(), xs.data(), c, kDegree, p, nullptr, mu);
  }
  // Step 8: the cubic at the chosen rows, NaN elsewhere.
  std::vector<double> fitted(static_cast<std::size_t>(c));
  coder::polyval(p, ts.data(), c, mu, fitted.data());
  for (int k = 0; k < c; ++k) {
    trend[chosen[static_cast<std::size_t>(k)]] = fitted[static_cast<std::size_t>(k)];
  }
}

} // namespace detrend_filter_group_mon_rul_ns
