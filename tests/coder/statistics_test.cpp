// Sums, means, std, median, skewness, kurtosis and peak2peak against Octave's values, and
// hand-worked cases where MATLAB and Octave part (NaN in the moments).
#include "coder/median.h"
#include "coder/moments.h"
#include "coder/sum.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

// Blocked against Octave's plain summation order, lengths up to 16384: rounding only.
constexpr double kSumTol = 1e-13;
// Scaled 2-norm against Octave's two-pass formula: rounding only.
constexpr double kStdTol = 1e-13;
// Third and fourth powers amplify rounding of the centred data by up to 4x.
constexpr double kMomentTol = 1e-12;
// The even-count average may differ from Octave's in the last bit.
constexpr double kMedianTol = 4e-16;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const int kSizes[] = {1, 2, 3, 5, 7, 8, 13, 16, 64, 127, 1024, 1025, 2048, 3001, 16384};

const vek_test::GoldenFile& golden() {
  static const vek_test::GoldenFile file("tests/coder/golden/statistics.txt");
  return file;
}

TEST(Statistics, MatchOctaveOverSizes) {
  const vek_test::GoldenFile& g = golden();
  for (int n : kSizes) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    const std::vector<double>& x = g["x" + s];
    ASSERT_EQ(static_cast<int>(x.size()), n);
    EXPECT_TRUE(vek_test::closeRelative({coder::sum(x.data(), n)}, g["sum" + s], kSumTol));
    EXPECT_TRUE(vek_test::closeRelative({coder::mean(x.data(), n)}, g["mean" + s], kSumTol));
    EXPECT_TRUE(vek_test::closeRelative({coder::b_std(x.data(), n)}, g["std" + s], kStdTol));
    EXPECT_TRUE(vek_test::closeRelative({coder::median(x.data(), n)}, g["median" + s], kMedianTol));
    // max - min of the same elements: exact
    EXPECT_EQ(coder::peak2peak(x.data(), n), g["peak2peak" + s][0]);
    if (n >= 2) {
      EXPECT_TRUE(
          vek_test::closeRelative({coder::kurtosis(x.data(), n)}, g["kurtosis" + s], kMomentTol));
      EXPECT_TRUE(
          vek_test::closeRelative({coder::skewness(x.data(), n)}, g["skewness" + s], kMomentTol));
    }
    const std::vector<double>& xn = g["xnan" + s];
    EXPECT_TRUE(vek_test::closeRelative({coder::nanmean(xn.data(), n)}, g["nanmean" + s], kSumTol));
    EXPECT_TRUE(
        vek_test::closeRelative({coder::peak2peak(xn.data(), n)}, g["peak2peaknan" + s], 0.0));
    // 'includenan' routines: one NaN spoils the result
    EXPECT_TRUE(std::isnan(coder::b_std(xn.data(), n)));
    EXPECT_TRUE(std::isnan(coder::median(xn.data(), n)));
  }
  const std::vector<double>& m = g["xmedianmix"];
  EXPECT_EQ(coder::median(m.data(), 4), g["medianmix"][0]);
}

TEST(Statistics, MomentsSkipNaNAsMatlabDoes) {
  // Octave propagates NaN here; MATLAB removes it. Hand-worked for x = [1 2 3 4 10 NaN]:
  // mean 4, deviations -3 -2 -1 0 6; m2 = 50/5 = 10, m3 = (-27-8-1+0+216)/5 = 36,
  // m4 = (81+16+1+0+1296)/5 = 278.8; skewness = 36/10^1.5, kurtosis = 278.8/100.
  const std::vector<double> x = {1, 2, 3, 4, 10, kNaN};
  EXPECT_NEAR(coder::skewness(x.data(), 6), 36.0 / std::pow(10.0, 1.5), 1e-15);
  EXPECT_NEAR(coder::kurtosis(x.data(), 6), 2.788, 1e-15);
  EXPECT_DOUBLE_EQ(coder::nanmean(x.data(), 6), 4.0);
  EXPECT_EQ(coder::peak2peak(x.data(), 6), 9.0);
  // constant data: 0/0; all NaN: NaN
  const std::vector<double> c = {2.5, 2.5, 2.5};
  EXPECT_TRUE(std::isnan(coder::skewness(c.data(), 3)));
  EXPECT_TRUE(std::isnan(coder::kurtosis(c.data(), 3)));
  EXPECT_EQ(coder::peak2peak(c.data(), 3), 0.0);
  const std::vector<double> all_nan = {kNaN, kNaN};
  EXPECT_TRUE(std::isnan(coder::kurtosis(all_nan.data(), 2)));
  EXPECT_TRUE(std::isnan(coder::nanmean(all_nan.data(), 2)));
  EXPECT_TRUE(std::isnan(coder::peak2peak(all_nan.data(), 2)));
}

TEST(Statistics, EdgeCountsAndNonFinite) {
  const double one = 7.0;
  EXPECT_EQ(coder::b_std(&one, 1), 0.0);
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(coder::b_std(&inf, 1)));
  EXPECT_TRUE(std::isnan(coder::b_std(nullptr, 0)));
  EXPECT_TRUE(std::isnan(coder::mean(nullptr, 0)));
  EXPECT_EQ(coder::sum(static_cast<const double*>(nullptr), 0), 0.0);
  EXPECT_TRUE(std::isnan(coder::median(nullptr, 0)));
  // std of huge values stays finite thanks to the scaling
  const std::vector<double> big = {1e300, -1e300};
  EXPECT_DOUBLE_EQ(coder::b_std(big.data(), 2), 1e300 * std::sqrt(2.0));
  // median: values of opposite sign are averaged directly, same sign through the difference
  EXPECT_EQ(coder::medianOfPair(-1.0, 3.0), 1.0);
  EXPECT_EQ(coder::medianOfPair(1e308, 1.7e308), 1.35e308);
  EXPECT_EQ(coder::medianOfPair(1.0, inf), inf);
}

TEST(Statistics, ComplexSumIsBlockedLikeTheRealOne) {
  std::vector<creal_T> z(3001);
  std::vector<double> re(z.size());
  std::vector<double> im(z.size());
  for (size_t k = 0; k < z.size(); ++k) {
    re[k] = std::sin(0.37 * static_cast<double>(k)) * 1e3 + 0.1;
    im[k] = std::cos(0.11 * static_cast<double>(k)) - 0.3;
    z[k] = creal_T{re[k], im[k]};
  }
  const creal_T s = coder::sum(z.data(), static_cast<int>(z.size()));
  // same additions in the same order: exactly the real sums of each part
  EXPECT_EQ(s.re, coder::sum(re.data(), static_cast<int>(re.size())));
  EXPECT_EQ(s.im, coder::sum(im.data(), static_cast<int>(im.size())));
  // and the blocked order itself: sum of 1024-blocks, hand-checked on a sequence where the
  // plain order loses the small terms and the blocked one keeps part of them
  std::vector<double> x(2048, 1.0);
  x[0] = 1e16;
  x[1024] = -1e16;
  // block 1: 1e16 + 1023 ones, each lost to rounding (1e16 + 1 rounds back to 1e16) -> 1e16;
  // block 2: -1e16 + 1023 ones -> -1e16; total 0. A plain left-to-right sum gives 1023.
  EXPECT_EQ(coder::sum(x.data(), 2048), 0.0);
}

} // namespace
