#include "coder/rtGetInf.h"
#include "coder/rtGetNaN.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(NonFinite, GlobalsAndGettersAreTheIeeeValues) {
  rt_InitInfAndNaN();
  EXPECT_TRUE(std::isnan(rtNaN));
  EXPECT_TRUE(std::isnan(rtGetNaN()));
  EXPECT_TRUE(std::isnan(rtNaNF));
  EXPECT_TRUE(std::isnan(rtGetNaNF()));
  EXPECT_TRUE(std::isinf(rtInf) && rtInf > 0.0);
  EXPECT_TRUE(std::isinf(rtMinusInf) && rtMinusInf < 0.0);
  EXPECT_EQ(rtGetInf(), rtInf);
  EXPECT_EQ(rtGetMinusInf(), rtMinusInf);
  EXPECT_EQ(rtGetInfF(), rtInfF);
  EXPECT_EQ(rtGetMinusInfF(), rtMinusInfF);
  EXPECT_TRUE(rtIsNaN(rtNaN));
  EXPECT_FALSE(rtIsNaN(rtInf));
  EXPECT_TRUE(rtIsInf(rtMinusInf));
  EXPECT_TRUE(rtIsInfF(rtInfF));
  EXPECT_TRUE(rtIsNaNF(rtNaNF));
}

TEST(RtHypotdSnf, ScaledFormAndEqualMagnitudes) {
  EXPECT_TRUE(std::isnan(rt_hypotd_snf(rtNaN, 0.0)));
  EXPECT_TRUE(std::isnan(rt_hypotd_snf(0.0, rtNaN)));
  // Equal magnitudes use the constant, not sqrt(18).
  EXPECT_EQ(rt_hypotd_snf(3.0, 3.0), 3.0 * 1.4142135623730951);
  EXPECT_EQ(rt_hypotd_snf(-3.0, 3.0), 3.0 * 1.4142135623730951);
  EXPECT_EQ(rt_hypotd_snf(3.0, 4.0), 5.0);
  EXPECT_EQ(rt_hypotd_snf(0.0, 0.0), 0.0);
  EXPECT_EQ(rt_hypotd_snf(rtInf, 1.0), rtInf);
  // No overflow of the squares near the top of the range.
  EXPECT_EQ(rt_hypotd_snf(1e300, 1e300), 1e300 * 1.4142135623730951);
  EXPECT_DOUBLE_EQ(rt_hypotd_snf(3e300, 4e300), 5e300);
}

TEST(RtAtan2dSnf, TableOfSpecialInputs) {
  EXPECT_TRUE(std::isnan(rt_atan2d_snf(rtNaN, 1.0)));
  EXPECT_TRUE(std::isnan(rt_atan2d_snf(1.0, rtNaN)));
  EXPECT_EQ(rt_atan2d_snf(0.0, 0.0), 0.0);
  EXPECT_EQ(rt_atan2d_snf(1.0, 0.0), 1.5707963267948966);
  EXPECT_EQ(rt_atan2d_snf(-2.0, 0.0), -1.5707963267948966);
  EXPECT_EQ(rt_atan2d_snf(-0.0, -0.0), 0.0);
  EXPECT_EQ(rt_atan2d_snf(rtInf, rtInf), std::atan2(1.0, 1.0));
  EXPECT_EQ(rt_atan2d_snf(rtMinusInf, rtInf), std::atan2(-1.0, 1.0));
  EXPECT_EQ(rt_atan2d_snf(rtInf, rtMinusInf), std::atan2(1.0, -1.0));
  EXPECT_EQ(rt_atan2d_snf(1.0, -1.0), std::atan2(1.0, -1.0));
}

TEST(RtPowdSnf, MatlabPowerRules) {
  EXPECT_TRUE(std::isnan(rt_powd_snf(rtNaN, 0.0)));
  EXPECT_TRUE(std::isnan(rt_powd_snf(1.0, rtNaN)));
  EXPECT_EQ(rt_powd_snf(1.0, rtInf), 1.0);
  EXPECT_EQ(rt_powd_snf(-1.0, rtMinusInf), 1.0);
  EXPECT_EQ(rt_powd_snf(2.0, rtInf), rtInf);
  EXPECT_EQ(rt_powd_snf(2.0, rtMinusInf), 0.0);
  EXPECT_EQ(rt_powd_snf(0.5, rtInf), 0.0);
  EXPECT_EQ(rt_powd_snf(0.5, rtMinusInf), rtInf);
  EXPECT_EQ(rt_powd_snf(rtNaN == rtNaN ? 0.0 : 7.0, 0.0), 1.0);
  EXPECT_EQ(rt_powd_snf(-8.0, 1.0), -8.0);
  EXPECT_EQ(rt_powd_snf(4.0, -1.0), 0.25);
  EXPECT_EQ(rt_powd_snf(-3.0, 2.0), 9.0);
  EXPECT_EQ(rt_powd_snf(2.0, 0.5), std::sqrt(2.0));
  EXPECT_TRUE(std::isnan(rt_powd_snf(-8.0, 1.0 / 3.0)));
  EXPECT_EQ(rt_powd_snf(-2.0, 3.0), -8.0);
  EXPECT_EQ(rt_powd_snf(10.0, 0.05), std::pow(10.0, 0.05));
}

TEST(RtRemdSnf, MatlabRemainderRules) {
  EXPECT_TRUE(std::isnan(rt_remd_snf(rtNaN, 2.0)));
  EXPECT_TRUE(std::isnan(rt_remd_snf(2.0, rtNaN)));
  EXPECT_TRUE(std::isnan(rt_remd_snf(rtInf, 2.0)));
  EXPECT_EQ(rt_remd_snf(5.0, rtInf), 5.0);
  EXPECT_EQ(rt_remd_snf(5.0, 0.0), 0.0);
  EXPECT_EQ(rt_remd_snf(7.0, 3.0), 1.0);
  EXPECT_EQ(rt_remd_snf(-7.0, 3.0), -1.0);
  // 0.3 / 0.1 is 2.9999999999999996: whole to within eps of the quotient, so 0, where
  // fmod would give 0.09999999999999998.
  EXPECT_EQ(rt_remd_snf(0.3, 0.1), 0.0);
  EXPECT_EQ(rt_remd_snf(0.35, 0.1), std::fmod(0.35, 0.1));
}

} // namespace
