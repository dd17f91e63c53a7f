#include "coder/eml_float_colon.h"

#include "coder/rt_nonfinite.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(EmlFloatColon, CountAndEndsOfTheScanRanges) {
  coder::array<double, 2> y;
  // fr - 0.1 : 0.001 : fr + 0.1 around a rotor frequency: 201 points, the last exactly b.
  const double fr = 24.73;
  coder::eml_float_colon(fr - 0.1, 0.001, fr + 0.1, y);
  ASSERT_EQ(y.size(0), 1);
  ASSERT_EQ(y.size(1), 201);
  EXPECT_EQ(y[0], fr - 0.1);
  EXPECT_EQ(y[200], fr + 0.1);
  // Built from both ends: the second half counts back from the last point.
  EXPECT_EQ(y[150], (fr + 0.1) - 50 * 0.001);
  EXPECT_EQ(y[10], (fr - 0.1) + 10 * 0.001);
  // Odd count: the centre is the midpoint of the ends.
  EXPECT_EQ(y[100], ((fr - 0.1) + (fr + 0.1)) / 2.0);

  // 0:0.015:0.1 overshoots at the rounded count: 0 .. 0.09 in 7 points.
  coder::eml_float_colon(0.0, 0.015, 0.1, y);
  ASSERT_EQ(y.size(1), 7);
  EXPECT_DOUBLE_EQ(y[6], 0.09);
  // Even count: the two middle points come one from each end.
  coder::eml_float_colon(1.0, 0.5, 2.5, y);
  ASSERT_EQ(y.size(1), 4);
  EXPECT_EQ(y[1], 1.5);
  EXPECT_EQ(y[2], 2.0);
  EXPECT_EQ(y[3], 2.5);
  // 0.1 steps: 0 : 0.1 : 0.3 reaches 0.3 exactly though 3 * 0.1 does not.
  coder::eml_float_colon(0.0, 0.1, 0.3, y);
  ASSERT_EQ(y.size(1), 4);
  EXPECT_EQ(y[3], 0.3);
  EXPECT_NE(3 * 0.1, 0.3);
  // Single points and a negative step.
  coder::eml_float_colon(5.0, 0.002, 5.0, y);
  ASSERT_EQ(y.size(1), 1);
  EXPECT_EQ(y[0], 5.0);
  coder::eml_float_colon(3.0, -1.0, 1.0, y);
  ASSERT_EQ(y.size(1), 3);
  EXPECT_EQ(y[2], 1.0);
}

TEST(EmlFloatColon, BlockStepsOverWholeSpansReachTheirEndExactly) {
  // The scans' ranges span whole numbers of steps between rounded frequencies: the count
  // must be that number plus one and the last point the upper bound itself, whatever the
  // rounding of the bounds; every point lies within a few ulp of a + k d.
  coder::array<double, 2> y;
  for (double d : {0.001, 0.002, 0.005, 0.01, 0.015, 0.1}) {
    for (int steps : {1, 2, 3, 50, 101, 400, 5400}) {
      for (double a : {0.0, 0.4 * 24.37, 3.0, 47.0, 49.6, 117.31}) {
        SCOPED_TRACE(testing::Message() << a << ":" << d << ":" << steps);
        const double b = a + steps * d;
        coder::eml_float_colon(a, d, b, y);
        ASSERT_EQ(y.size(1), steps + 1);
        EXPECT_EQ(y[0], a);
        EXPECT_EQ(y[steps], b);
        for (int k = 0; k <= steps; ++k) {
          ASSERT_NEAR(y[k], a + k * d,
                      8.0 * 2.220446049250313e-16 * std::fmax(std::fabs(a), std::fabs(b)) + 1e-300);
        }
      }
    }
  }
}

TEST(EmlFloatColon, NaNEmptyAndInfiniteRanges) {
  coder::array<double, 2> y;
  coder::eml_float_colon(rtNaN, 0.01, 1.0, y);
  ASSERT_EQ(y.size(1), 1);
  EXPECT_TRUE(std::isnan(y[0]));
  coder::eml_float_colon(0.0, rtNaN, 1.0, y);
  ASSERT_EQ(y.size(1), 1);
  EXPECT_TRUE(std::isnan(y[0]));
  coder::eml_float_colon(0.0, 0.01, rtNaN, y);
  ASSERT_EQ(y.size(1), 1);
  EXPECT_TRUE(std::isnan(y[0]));
  // b below a, and a zero step: no element.
  coder::eml_float_colon(2.0, 0.01, 1.0, y);
  EXPECT_EQ(y.size(0), 1);
  EXPECT_EQ(y.size(1), 0);
  coder::eml_float_colon(0.0, 0.0, 1.0, y);
  EXPECT_EQ(y.size(1), 0);
  // Equal infinities: one NaN. An endless range: nothing rather than an endless array.
  coder::eml_float_colon(rtInf, 1.0, rtInf, y);
  ASSERT_EQ(y.size(1), 1);
  EXPECT_TRUE(std::isnan(y[0]));
  coder::eml_float_colon(0.0, 1.0, rtInf, y);
  EXPECT_EQ(y.size(1), 0);
  coder::eml_float_colon(0.0, 1e-300, 1.0, y);
  EXPECT_EQ(y.size(1), 0);
}

} // namespace
