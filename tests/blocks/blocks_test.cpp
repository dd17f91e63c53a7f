// The median block against a slow direct median of every window, and the pressure
// conversion of the transmitter's 24-bit count.
#include "blocks/median_filter/SortedBuffer.h"
#include "blocks/median_filter/median_filter.h"
#include "blocks/v_data_d/v_data_d.h"

#include "../coder/support/numeric_compare.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace {

using V = std::vector<double>;
const double kNaN = NAN, kInf = INFINITY;
// Octave averages the two middle values as b + (a - b)/2, the block as a + (b - a)/2.
constexpr double kAverageTol = 4.5e-16;

// The median of the last ten values (fewer at the start): NaN if one is NaN; of an even
// count a + (b - a)/2 of the middle pair a <= b, which cannot overflow, but (a + b)/2 when
// they differ in sign or a is infinite.
V slowMedian(const V& x) {
  V y;
  for (size_t k = 0; k < x.size(); ++k) {
    V w(x.begin() + long(k >= 9 ? k - 9 : 0), x.begin() + long(k) + 1);
    std::sort(w.begin(), w.end());
    const double a = w[(w.size() - 1) / 2], b = w[w.size() / 2];
    y.push_back(std::any_of(w.begin(), w.end(), [](double v) { return std::isnan(v); }) ? kNaN
                : (a < 0) != (b < 0) || std::isinf(a) ? (a + b) / 2
                                                      : a + (b - a) / 2);
  }
  return y;
}

TEST(MedianFilter, EqualsTheDirectMedianOfEveryWindow) {
  // lengths around the window of ten; middle pairs of mixed sign, near overflow, infinite;
  // ties, repeated values leaving and entering, infinities, negative zeros and NaN runs
  std::vector<V> series = {{},
                           {4.25},
                           {-3, 5},
                           {1.5e308, 1.7e308},
                           {-1e308, 1e308},
                           {kInf, kInf},
                           {-kInf, kInf},
                           {-kInf, 1, 2},
                           {5, 5, 5, 5, 900, 5, 5, 5, 5, 5, 5}};
  std::mt19937 gen(99U);
  std::uniform_int_distribution<int> pick(0, 11);
  for (int trial = 0; trial < 200; ++trial) {
    series.emplace_back(size_t(1 + trial % 37));
    for (double& v : series.back()) {
      const int p = pick(gen);
      v = p == 0 ? kNaN : p == 1 ? kInf : p == 2 ? -kInf : p == 3 ? -0.0 : p % 5;
    }
  }
  const vek_test::GoldenFile g("tests/coder/golden/movfun.txt"); // Octave's movmedian(x, [9 0])
  const std::vector<std::string> golden = {"1", "2", "5", "6", "7", "10", "11", "13", "64", "1000"};
  for (const std::string& n : golden)
    series.push_back(g["x_" + n]);
  for (size_t i = 0; i < series.size(); ++i) {
    const V& x = series[i];
    coder::array<double, 2> out;
    median_filter_ns::median_filter(vek_test::toRow(x), out);
    ASSERT_EQ(out.size(0) * 100000 + out.size(1), 100000 + int(x.size()));
    EXPECT_TRUE(vek_test::closeRelative(vek_test::toVector(out), slowMedian(x), 0.0)) << i;
    const size_t j = i + golden.size() - series.size();
    if (j < golden.size()) {
      EXPECT_TRUE(vek_test::closeElementwise(vek_test::toVector(out), g["movmedian_" + golden[j]],
                                             kAverageTol, 1.0));
    }
  }
  // the buffer itself: its storage grows past 256 elements in order, an absent value is not
  // removed, the NaN count stays at zero, an empty buffer has no median
  median_filter_ns::SortedBuffer b;
  for (int k = 600; k > 0; --k)
    b.insert(k % 97);
  b.remove(200.5);
  b.remove(kNaN);
  EXPECT_TRUE(std::is_sorted(b.data(), b.data() + b.size()));
  EXPECT_EQ(std::vector<int>({b.size(), b.nanCount(), b.locateElement(2.0), b.locateElement(-1)}),
            std::vector<int>({600, 0, 20, 0}));
  EXPECT_TRUE(std::isnan(median_filter_ns::SortedBuffer().median()));
}

TEST(VDataD, CountsToPressure) {
  using v_data_d_ns::v_data_d;
  // 0.5 .. 4.5 over -1200 .. 1200: a zero count reads -0.5 / 0.4, and so does 16777215 (the
  // complement is taken against it); 8388607 is the largest positive count, just under full
  // scale (3.97 * 1.2 - 0.5) / 0.4, and 8388608 the most negative, just over -full scale
  const double full = 3.97 * 1.2 / 0.4, step = 3.97 * 1200.0 / 8388608.0 / 1000.0 / 0.4;
  const V counts = {0, 16777215, 8388607, 8388608, 1000, 2000, 3000, kNaN};
  const V want = {-1.25,
                  -1.25,
                  full - 1.25 - step,
                  -full - 1.25 + step,
                  -1.25 + 1000 * step,
                  -1.25 + 2000 * step,
                  -1.25 + 3000 * step,
                  kNaN};
  V got;
  for (double c : counts)
    got.push_back(v_data_d(c));
  EXPECT_TRUE(vek_test::closeElementwise(got, want, 1e-14, 1.0));
  // the two branches mirror each other around the zero reading
  for (double k : {1.0, 1000.0, 123456.0, 4194304.0, 8388607.0})
    EXPECT_NEAR(v_data_d(k) + v_data_d(16777215.0 - k), -2.5, 1e-14) << k;
}

} // namespace
