// The median block: its sorted buffer's rules, the edge cases of the running median, and
// agreement with Octave's movmedian(x, [9 0]) and with the library's direct movmedian.
#include "blocks/median_filter/SortedBuffer.h"
#include "blocks/median_filter/median_filter.h"
#include "coder/movfun.h"

#include "../coder/support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
// The block averages two middle values as a + (b - a)/2, Octave and the library as
// b + (a - b)/2: the two differ in the last bit at most.
constexpr double kAverageTol = 4.5e-16;

std::vector<double> filter(const std::vector<double>& x) {
  coder::array<double, 2> in;
  in.set_size(1, static_cast<int>(x.size()));
  for (size_t k = 0; k < x.size(); ++k)
    in[static_cast<int>(k)] = x[k];
  coder::array<double, 2> out;
  median_filter_ns::median_filter(in, out);
  EXPECT_EQ(out.size(0), 1);
  EXPECT_EQ(out.size(1), static_cast<int>(x.size()));
  return std::vector<double>(out.data(), out.data() + out.numel());
}

TEST(MedianFilter, EdgeCasesOfTheRunningMedian) {
  EXPECT_EQ(filter({4.25}), (std::vector<double>{4.25}));
  EXPECT_TRUE(filter({}).empty());
  // ten values 1..10: the window holds all of them, the median is 5.5
  const std::vector<double> ten = filter({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(ten.back(), 5.5);
  EXPECT_EQ(ten, (std::vector<double>{1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5, 5, 5.5}));
  // from the eleventh value on the oldest leaves: 2..11 -> 6.5
  EXPECT_EQ(filter({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}).back(), 6.5);
  // a single outlier never shows
  const std::vector<double> spike = filter({5, 5, 5, 5, 900, 5, 5, 5, 5, 5, 5, 5});
  for (double v : spike)
    EXPECT_EQ(v, 5.0);
  // a NaN makes every output NaN for the ten steps it is inside the window
  std::vector<double> x(25, 1.0);
  x[3] = kNaN;
  const std::vector<double> y = filter(x);
  for (size_t k = 0; k < y.size(); ++k) {
    SCOPED_TRACE("k = " + std::to_string(k));
    EXPECT_EQ(std::isnan(y[k]), k >= 3 && k <= 12);
  }
  // infinities: two +Inf give +Inf; -Inf and +Inf in the middle give NaN, as MATLAB's median
  EXPECT_EQ(filter({kInf, kInf}).back(), kInf);
  EXPECT_TRUE(std::isnan(filter({-kInf, kInf}).back()));
  EXPECT_EQ(filter({-kInf, 1, 2}).back(), 1.0);
}

TEST(MedianFilter, MatchesOctaveMovmedian) {
  const vek_test::GoldenFile g("tests/coder/golden/movfun.txt");
  for (int n : {1, 2, 5, 6, 7, 10, 11, 13, 64, 1000}) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    EXPECT_TRUE(
        vek_test::closeElementwise(filter(g["x" + s]), g["movmedian" + s], kAverageTol, 1.0));
  }
}

TEST(MedianFilter, SlidingBufferEqualsDirectWindowsOnHardSeries) {
  // ties, repeated values leaving and entering, infinities, negative zeros and NaN runs:
  // the buffer's shifting must give what a fresh median of each window gives
  std::mt19937 gen(99U);
  std::uniform_int_distribution<int> pick(0, 11);
  for (int trial = 0; trial < 200; ++trial) {
    SCOPED_TRACE("seed 99, trial " + std::to_string(trial));
    const int n = 1 + trial % 37;
    std::vector<double> x(static_cast<size_t>(n));
    for (double& v : x) {
      const int p = pick(gen);
      v = p == 0   ? kNaN
          : p == 1 ? kInf
          : p == 2 ? -kInf
          : p == 3 ? -0.0
                   : static_cast<double>(p % 5);
    }
    std::vector<double> want(x.size());
    coder::movmedian(x.data(), n, 9, want.data());
    EXPECT_TRUE(vek_test::closeRelative(filter(x), want, 0.0));
  }
}

TEST(SortedBuffer, InsertRemoveReplaceRules) {
  median_filter_ns::SortedBuffer b;
  for (double v : {3.0, 1.0, 2.0, 2.0, 5.0})
    b.insert(v);
  EXPECT_EQ(b.size(), 5);
  EXPECT_EQ(b.locateElement(2.0), 3); // elements not greater than 2
  EXPECT_EQ(b.locateElement(0.5), 0);
  EXPECT_EQ(b.median(), 2.0);
  b.remove(4.0); // absent: nothing happens
  EXPECT_EQ(b.size(), 5);
  b.replace(1.0, 9.0); // 2 2 3 5 9
  b.replace(9.0, 0.0); // 0 2 2 3 5
  const std::vector<double> want = {0, 2, 2, 3, 5};
  EXPECT_EQ(std::vector<double>(b.data(), b.data() + b.size()), want);
  b.replace(3.0, kNaN); // 0 2 2 5 and one NaN
  EXPECT_EQ(b.size(), 4);
  EXPECT_EQ(b.nanCount(), 1);
  EXPECT_TRUE(std::isnan(b.median()));
  b.replace(kNaN, 4.0); // 0 2 2 4 5
  EXPECT_EQ(b.nanCount(), 0);
  EXPECT_EQ(b.median(), 2.0);
  b.remove(kNaN); // NaN count stays at 0
  EXPECT_EQ(b.nanCount(), 0);
  // growth past the first 256 elements keeps the order
  for (int k = 600; k > 0; --k)
    b.insert(static_cast<double>(k % 97));
  for (int k = 1; k < b.size(); ++k)
    EXPECT_LE(b.data()[k - 1], b.data()[k]);
  EXPECT_EQ(b.size(), 605);
  // even size: a + (b - a)/2 for same signs, (a + b)/2 across zero
  median_filter_ns::SortedBuffer c;
  c.insert(-3.0);
  c.insert(5.0);
  EXPECT_EQ(c.median(), 1.0);
  median_filter_ns::SortedBuffer d;
  d.insert(1.5e308);
  d.insert(1.7e308);
  EXPECT_EQ(d.median(), 1.6e308); // (a + b)/2 would overflow
  median_filter_ns::SortedBuffer empty;
  EXPECT_TRUE(std::isnan(empty.median()));
}

} // namespace
