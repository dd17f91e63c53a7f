// The pressure conversion of the transmitter's 24-bit count.
#include "blocks/v_data_d/v_data_d.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using v_data_d_ns::v_data_d;

TEST(VDataD, CountsToPressure) {
  // zero count: the offset of the 0.5 .. 4.5 scale, -0.5 / 0.4
  EXPECT_EQ(v_data_d(0.0), -1.25);
  // 8388607 is the largest positive count: 1200 * 8388607 / 8388608 just under 1200,
  // (3.97 * 1.2 - 0.5) / 0.4 = 10.66 at full scale
  EXPECT_NEAR(v_data_d(8388607.0), (3.97 * 1.2 - 0.5) / 0.4, 1e-5);
  EXPECT_LT(v_data_d(8388607.0), (3.97 * 1.2 - 0.5) / 0.4);
  // 8388608 takes the negative branch: just over -1200
  EXPECT_NEAR(v_data_d(8388608.0), (-3.97 * 1.2 - 0.5) / 0.4, 1e-5);
  EXPECT_GT(v_data_d(8388608.0), (-3.97 * 1.2 - 0.5) / 0.4);
  // the complement is taken against 16777215: that count reads as zero, not as -1 step
  EXPECT_EQ(v_data_d(16777215.0), -1.25);
  // the two branches mirror each other around the zero reading: k and 16777215 - k give
  // c and -c, so the pressures add up to 2 * -1.25
  for (double k : {1.0, 1000.0, 123456.0, 4194304.0, 8388607.0}) {
    SCOPED_TRACE(k);
    EXPECT_NEAR(v_data_d(k) + v_data_d(16777215.0 - k), -2.5, 1e-14);
  }
  // linear inside a branch: equal steps of count give equal steps of pressure
  const double step = v_data_d(2000.0) - v_data_d(1000.0);
  EXPECT_NEAR(v_data_d(3000.0) - v_data_d(2000.0), step, 1e-14);
  EXPECT_NEAR(step, 3.97 * 1200.0 * 1000.0 / 8388608.0 / 1000.0 / 0.4, 1e-15);
  EXPECT_TRUE(std::isnan(v_data_d(std::nan(""))));
}

} // namespace
