#include "blocks/median_filter/SortedBuffer.h"
#include "blocks/median_filter/median_filter.h"
#include "blocks/v_data_d/v_data_d.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

using V = std::vector<double>;
const double kNaN = NAN, kInf = INFINITY;

// The median of the last ten values (fewer at first): NaN if one is NaN; of a middle pair a <= b,
// a + (b - a)/2, which cannot overflow, but (a + b)/2 when they differ in sign or a is infinite.
// Every digit, zeros without sign (the order of 0 and -0 in a window is free).
static std::string slowMedian(const V& x) {
  std::ostringstream y;
  y.precision(17);
  for (size_t k = 0; k < x.size(); ++k) {
    V w(x.begin() + long(k >= 9 ? k - 9 : 0), x.begin() + long(k) + 1);
    const bool has_nan = std::any_of(w.begin(), w.end(), [](double v) { return std::isnan(v); });
    std::sort(w.begin(), w.end());
    const double a = w[(w.size() - 1) / 2], b = w[w.size() / 2];
    const double m = has_nan                               ? kNaN
                     : (a < 0) != (b < 0) || std::isinf(a) ? (a + b) / 2
                                                           : a + (b - a) / 2;
    y << m + 0.0 << " ";
  }
  return y.str();
}

TEST(Blocks, MedianOfEveryWindowAndPressureOfACount) {
  // middle pairs of mixed sign, near overflow, infinite; repeated values leaving and entering;
  // random runs of ties, infinities, negative zeros and NaN around the window of ten; the buffer
  // grows past 256 in order and keeps an absent value, and an empty one has no median
  // clang-format off
  std::vector<V> series = {{}, {4.25}, {-3, 5}, {1.5e308, 1.7e308}, {-1e308, 1e308}, {kInf, kInf},
                           {-kInf, kInf}, {-kInf, 1, 2}, {5, 5, 5, 5, 900, 5, 5, 5, 5, 5, 5}};
  // clang-format on
  std::mt19937 gen(99U);
  std::uniform_int_distribution<int> pick(0, 11);
  for (int trial = 0; trial < 300; ++trial) {
    series.emplace_back(size_t(1 + trial % 37 + (trial % 50 == 0 ? 500 : 0)));
    for (double& v : series.back()) {
      const int p = pick(gen);
      v = p == 0 ? kNaN : p == 1 ? kInf : p == 2 ? -kInf : p == 3 ? -0.0 : p % 5;
    }
  }
  for (V& x : series) {
    coder::array<double, 2> in, out;
    in.set(x.data(), 1, int(x.size()));
    median_filter_ns::median_filter(in, out);
    std::ostringstream got;
    got.precision(17);
    for (int k = 0; k < out.numel(); ++k)
      got << out[k] + 0.0 << " ";
    EXPECT_EQ(std::to_string(out.size(0)) + "x" + got.str(), "1x" + slowMedian(x));
  }
  median_filter_ns::SortedBuffer b;
  for (int k = 600; k > 0; --k)
    b.insert(k % 97);
  b.remove(200.5);
  EXPECT_EQ(std::vector<int>({std::is_sorted(b.data(), b.data() + b.size()), b.size(),
                              b.locateElement(2.0),
                              std::isnan(median_filter_ns::SortedBuffer().median())}),
            std::vector<int>({1, 600, 20, 1}));
  // 0.5 .. 4.5 over -1200 .. 1200: counts 0 and 16777215 (the complement's base) read -0.5 / 0.4;
  // 8388607, the largest, a step under full scale (3.97 * 1.2 - 0.5) / 0.4; 8388608 the lowest.
  constexpr double kPressureTol = 1e-14; // a few roundings of values near 10
  const double full = 3.97 * 1.2 / 0.4, step = full / 8388608.0;
  const V counts = {0, 16777215, 8388607, 8388608, 1000, 16777214};
  const V want = {-1.25,       -1.25, full - 1.25 - step, -full - 1.25 + step, -1.25 + 1000 * step,
                  -1.25 - step};
  for (size_t k = 0; k < counts.size(); ++k)
    EXPECT_NEAR(v_data_d_ns::v_data_d(counts[k]), want[k], kPressureTol) << counts[k];
}
