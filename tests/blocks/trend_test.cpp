#include "blocks/trend/detrend_filter_group_mon_rul.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace tr = detrend_filter_group_mon_rul_ns;
using Fn = std::function<double(int i, double day)>;
const double kNaN = NAN;

// Histories of a bearing's velocity with 2-hour steps (uneven: 1 to 3 hours) and noise of
// +-noise (kNoise uniform, else a coin); the value depends on the day, the speed on the row.
// Trend 'f': the rows at speed `chosen` carry the value within kFitTol (2e-3 without noise),
// the others NaN; 'a': any finite value there; 'n': all NaN. Monotone within [lo, hi] (NaN: NaN);
// the crossing of orange (days since the first row) within kDayTol.
TEST(TrendBlock, SpeedGroupsMonotoneAndDaysToOrange) {
  constexpr double kNoise = 0.02;
  // A cubic least-squares fit's value has variance at most 16 sigma^2 / N at the ends (N >= 100
  // rows, sigma of a uniform noise kNoise / sqrt(3)); five of those standard deviations.
  constexpr double kFitTol = 5 * 4 * kNoise / 1.7320508075688772 / 10;
  constexpr double kDayTol = 1.0; // the crossing to the day, as the notification reports it
  const Fn cubic = [](int, double d) { return 2 + 0.3 * d - 0.02 * d * d + 0.0004 * d * d * d; };
  const Fn rise = [](int, double d) { return 1 + 0.01 * d * d; }; // orange 9 at sqrt(800) days
  const Fn fifty = [](int, double) { return 50.3; }, thirty = [](int i, double) {
    return i % 3 == 0 ? 30.0 : i % 2 ? 50.9 : 49.1; // every third row, the first among them, at 30
  };
  struct Case {
    const char* name;
    int n;
    bool uneven;
    Fn value, speed;
    int options;
    double noise, lo, hi;
    char trend;
    double days, chosen = 50, step = 7200; // chosen: the speed the trend is about
  };
  // clang-format off
  const std::vector<Case> cases = {
    {"cubic, other speed mixed in", 300, false, cubic, thirty, 0, kNoise, -1, 1, 'f', kNaN},
    {"cubic, uneven stamps", 200, true, cubic, fifty, 0, kNoise, -1, 1, 'f', kNaN},
    {"rising to orange", 240, false, rise, fifty, 1, 0, 0.95, 1, 'f', 28.284271247461902},
    {"rising, uneven, to orange", 240, true, rise, fifty, 1, 0, 0.95, 1, 'f', 28.284271247461902},
    {"rising to orange, first row at 30 Hz", 240, false, rise, thirty, 1, 0, 0.95, 1, 'f', 28.284271247461902},
    {"rising, no forecast asked", 240, false, rise, fifty, 0, 0, 0.95, 1, 'f', kNaN},
    {"falling", 100, false, [](int, double d) { return 9 - d; }, fifty, 1, 0, -1, -1, 'n', kNaN},
    {"flat", 100, false, [](int, double) { return 3.0; }, fifty, 0, 0, 0, 0, 'f', kNaN},
    {"noise only, forecast", 300, false, [](int, double) { return 3.0; }, fifty, 1, 1, -0.3, 0.3, 'n', kNaN},
    {"noise only, plain", 300, false, [](int, double) { return 3.0; }, fifty, 0, 1, -0.3, 0.3, 'a', kNaN},
    {"speed changes at the last row", 50, false, cubic, [](int i, double) { return i == 49 ? 30.0 : 50.0; }, 0, 0, kNaN, kNaN, 'n', kNaN},
    {"never ran", 50, false, cubic, [](int, double) { return 4.9; }, 0, 0, kNaN, kNaN, 'n', kNaN},
    {"forecast over 5 minutes", 6, false, [](int i, double) { return double(i); }, fifty, 1, 0, 1, 1, 'n', kNaN, 50, 60},
    {"two rows", 2, false, cubic, fifty, 0, 0, kNaN, kNaN, 'n', kNaN},
    {"missing speed of old rows", 100, false, cubic, [](int i, double) { return i % 7 == 3 ? kNaN : 50.0; }, 0, 0, 0.9, 1, 'f', kNaN},
    {"missing value", 100, false, [](int i, double d) { return i == 40 ? kNaN : d; }, fifty, 0, 0, 1, 1, 'n', kNaN},
    // Standing now after running at 30 and 50 Hz: the highest speed when the last row's group has
    // the largest median value (here the standing one), else the group of the largest median.
    {"stands, values highest standing", 90, false, [](int i, double) { return i >= 60 ? 9.0 : i % 2 ? 1.0 : 2.0; },
     [](int i, double) { return i >= 60 ? 0.0 : i % 2 ? 30.0 : 50.0; }, 0, 0, 0, 0, 'f', kNaN},
    {"stands, values highest at 30 Hz", 90, false, [](int i, double) { return i >= 60 ? 0.5 : i % 2 ? 7.0 : 2.0; },
     [](int i, double) { return i >= 60 ? 0.0 : i % 2 ? 30.0 : 50.0; }, 0, 0, 0, 0, 'f', kNaN, 30},
  };
  // clang-format on
  std::mt19937 gen(12U);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  const double thresholds[3] = {5, 7, 9};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    coder::array<double, 1> x, frm, t;
    x.set_size(c.n), frm.set_size(c.n), t.set_size(c.n);
    std::vector<double> truth(size_t(c.n));
    for (int i = 0; i < c.n; ++i) {
      t[i] = i == 0 ? 0 : t[i - 1] + c.step * (c.uneven ? 1 + unit(gen) / 2 : 1);
      truth[size_t(i)] = c.value(i, t[i] / 86400);
      x[i] = truth[size_t(i)] + c.noise * (c.noise == kNoise ? unit(gen) : unit(gen) > 0);
      frm[i] = c.speed(i, t[i] / 86400);
    }
    coder::array<double, 2> trend;
    double mono = 0, days = 0;
    int size[2];
    tr::struct0_T curve;
    tr::detrend_filter_group_mon_rul(x, frm, t, 28 * 86400.0, thresholds, c.options, trend, &mono,
                                     size, &days, &curve);
    ASSERT_EQ(trend.numel(), c.n);
    EXPECT_TRUE(std::isnan(c.lo) ? std::isnan(mono) : mono >= c.lo - 1e-12 && mono <= c.hi + 1e-12)
        << mono;
    const double tol = c.trend == 'a' ? 1e300 : c.noise == kNoise ? kFitTol : 2e-3;
    for (int i = 0; i < c.n; ++i) {
      const bool chosen = c.trend != 'n' && std::fabs(frm[i] - c.chosen) < 1;
      const double want = !chosen ? kNaN : truth[size_t(i)];
      EXPECT_TRUE(std::isnan(want) ? std::isnan(trend[i]) : std::fabs(trend[i] - want) <= tol)
          << i << ": " << trend[i] << " for " << want;
    }
    EXPECT_EQ(std::isnan(days), std::isnan(c.days));
    if (std::isnan(c.days))
      continue;
    const double newest_day = t[c.n - 1] / 86400;
    EXPECT_NEAR(days + newest_day, c.days, kDayTol);
    // The curve runs from after the newest row to ten 10-minute steps past the crossing.
    // Its times count from the first row at the speed of now.
    const double origin = frm[0] == 30.0 ? t[1] : 0.0;
    EXPECT_GT(curve.x[0] + origin, t[c.n - 1]);
    EXPECT_NEAR(curve.x[curve.x.numel() - 1] + origin - 86400 * (days + newest_day), 6000, 1e-6);
    EXPECT_GT(curve.y[curve.y.numel() - 1], thresholds[2]);
  }
}
