// MATLAB max and min over real and complex vectors against Octave's values.
#include "coder/minmax.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(MinMax, ComplexAndRealMatchOctave) {
  const vek_test::GoldenFile g("tests/coder/golden/minmax.txt");
  std::vector<std::string> suffixes = {"_ties"};
  for (int n : {1, 2, 3, 5, 8, 17, 401, 5401})
    suffixes.push_back("_" + std::to_string(n));
  for (const std::string& s : suffixes) {
    SCOPED_TRACE("case" + s);
    const std::vector<double>& re = g["re" + s];
    const std::vector<double>& im = g["im" + s];
    std::vector<creal_T> z(re.size());
    for (size_t k = 0; k < z.size(); ++k)
      z[k] = creal_T{re[k], im[k]};
    const int n = static_cast<int>(z.size());
    int index = 0;
    // the chosen element is one of the inputs: value and index exact
    const creal_T mx = coder::internal::maximum(z.data(), n, &index);
    EXPECT_EQ(mx.re, g["max" + s][0]);
    EXPECT_EQ(mx.im, g["max" + s][1]);
    EXPECT_EQ(index, g["max" + s][2]);
    const creal_T mn = coder::internal::minimum(z.data(), n, &index);
    EXPECT_EQ(mn.re, g["min" + s][0]);
    EXPECT_EQ(mn.im, g["min" + s][1]);
    EXPECT_EQ(index, g["min" + s][2]);
    if (s == "_ties")
      continue;
    EXPECT_EQ(coder::internal::maximum(re.data(), n, &index), g["maxreal" + s][0]);
    EXPECT_EQ(index, g["maxreal" + s][1]);
    EXPECT_EQ(coder::internal::minimum(re.data(), n, &index), g["minreal" + s][0]);
    EXPECT_EQ(index, g["minreal" + s][1]);
  }
}

TEST(MinMax, NaNSkippedFirstOfEqualWins) {
  int index = 0;
  const std::vector<double> x = {kNaN, 2.0, 5.0, 5.0, kNaN, -1.0, -1.0};
  EXPECT_EQ(coder::internal::maximum(x.data(), 7, &index), 5.0);
  EXPECT_EQ(index, 3);
  EXPECT_EQ(coder::internal::minimum(x.data(), 7, &index), -1.0);
  EXPECT_EQ(index, 6);
  const std::vector<double> all_nan = {kNaN, kNaN, kNaN};
  EXPECT_TRUE(std::isnan(coder::internal::maximum(all_nan.data(), 3, &index)));
  EXPECT_EQ(index, 1);
  // a running maximum that is NaN is always replaced; a NaN never replaces a number
  const std::vector<creal_T> z = {{kNaN, 0.0}, {1.0, 1.0}, {0.0, kNaN}, {-1.0, -1.0}};
  const creal_T m = coder::internal::maximum(z.data(), 4, &index);
  EXPECT_EQ(index, 2); // equal moduli: angle pi/4 beats -3pi/4
  EXPECT_EQ(m.re, 1.0);
  coder::internal::minimum(z.data(), 4, &index);
  EXPECT_EQ(index, 4);
  // identical values: the first stays
  const std::vector<creal_T> same = {{3.0, 4.0}, {3.0, 4.0}};
  coder::internal::maximum(same.data(), 2, &index);
  EXPECT_EQ(index, 1);
  coder::internal::minimum(same.data(), 2, &index);
  EXPECT_EQ(index, 1);
}

} // namespace
