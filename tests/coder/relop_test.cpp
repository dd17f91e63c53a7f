#include "coder/relop.h"

#include "coder/rt_nonfinite.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using coder::internal::iseq;
using coder::internal::relop;

// The frequency scans keep the maximum this way: replace only when the new value is larger.
size_t argmax(const std::vector<creal_T>& v) {
  size_t best = 0;
  for (size_t k = 1; k < v.size(); ++k) {
    if (relop(v[best], v[k]))
      best = k;
  }
  return best;
}

TEST(Iseq, SpacingAtHalfTheReference) {
  EXPECT_TRUE(iseq(1.0, 1.0));
  // At |y|/2 = 0.5 the spacing is 2^-53: one ulp of 1.0 (2^-52) is not below it.
  EXPECT_FALSE(iseq(1.0 + 2.220446049250313e-16, 1.0));
  EXPECT_FALSE(iseq(1.0 - 1.1102230246251565e-16, 1.0));
  EXPECT_TRUE(iseq(0.0, 0.0));
  EXPECT_TRUE(iseq(-0.0, 0.0));
  // Below the smallest normal the spacing is that of the subnormals.
  EXPECT_FALSE(iseq(4.9406564584124654e-324, 0.0));
  EXPECT_TRUE(iseq(rtInf, rtInf));
  EXPECT_FALSE(iseq(rtInf, rtMinusInf));
  EXPECT_FALSE(iseq(rtNaN, rtNaN));
  EXPECT_FALSE(iseq(1.0, rtNaN));
}

TEST(Relop, ModulusThenAngleThenFirstWins) {
  // Moduli decide first.
  EXPECT_TRUE(relop({3.0, 4.0}, {0.0, 6.0}));
  EXPECT_FALSE(relop({0.0, 6.0}, {3.0, 4.0}));
  // Equal moduli (5): the larger angle is the larger value.
  EXPECT_TRUE(relop({5.0, 0.0}, {3.0, 4.0}));
  EXPECT_FALSE(relop({3.0, 4.0}, {5.0, 0.0}));
  EXPECT_TRUE(relop({3.0, -4.0}, {5.0, 0.0}));
  // Identical values: not less, so a scan keeps the first.
  EXPECT_FALSE(relop({1.0, 2.0}, {1.0, 2.0}));
  EXPECT_EQ(argmax({{1.0, 1.0}, {1.0, 1.0}, {0.5, 0.5}}), 0u);
  // Values near the top of the range are compared halved, without overflow.
  EXPECT_TRUE(relop({1.5e308, 1.5e308}, {-1.6e308, 1.6e308}));
}

TEST(Relop, NaNNeverWinsAndAlwaysLoses) {
  const creal_T nan_value = {rtNaN, 0.0};
  EXPECT_FALSE(relop({1.0, 0.0}, nan_value));
  EXPECT_TRUE(relop(nan_value, {1.0, 0.0}));
  EXPECT_FALSE(relop(nan_value, nan_value));
  // A NaN in the scan never replaces the running maximum; a NaN start is always replaced.
  EXPECT_EQ(argmax({{1.0, 0.0}, nan_value, {0.5, 0.0}}), 0u);
  EXPECT_EQ(argmax({nan_value, {0.1, 0.0}, {0.05, 0.0}}), 1u);
  EXPECT_EQ(argmax({{0.0, rtNaN}, nan_value}), 0u);
}

TEST(Relop, TiesToRoundingFollowTheDirectionOfGrowingAngle) {
  // Moduli are both exactly 1 and both angles round to pi/2, yet the values differ: the
  // one further counter-clockwise (the smaller real part near pi/2) is the larger.
  EXPECT_FALSE(relop({1e-20, 1.0}, {2e-20, 1.0}));
  EXPECT_TRUE(relop({2e-20, 1.0}, {1e-20, 1.0}));
  // Near -pi/2 the real part grows with the angle.
  EXPECT_TRUE(relop({1e-20, -1.0}, {2e-20, -1.0}));
  // Near pi (from above the axis) the imaginary part shrinks as the angle grows.
  // (pi - 2e-20 is below pi - 1e-20, though both angles round to pi).
  EXPECT_TRUE(relop({-1.0, 2e-20}, {-1.0, 1e-20}));
  EXPECT_FALSE(relop({-1.0, 1e-20}, {-1.0, 2e-20}));
}

} // namespace
