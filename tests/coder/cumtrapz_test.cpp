#include "coder/cumtrapz.h"

#include "array_convert.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// The same sums in the same order as Octave: bit-identical, so the tolerance only admits
// a different contraction of multiply and add.
constexpr double kCumtrapzTol = 1e-15;

TEST(Cumtrapz, MatchesOctaveOnUniformAndJitteredTimes) {
  const GoldenFile golden("tests/coder/golden/cumtrapz.txt");
  WorstError worst("cumtrapz against Octave");
  for (int n : {1, 2, 3, 7, 64, 1000, 4096}) {
    const std::string s = std::to_string(n);
    SCOPED_TRACE(s);
    const auto y = toColumn(golden["y_" + s]);
    coder::array<double, 1> z;
    coder::cumtrapz(toColumn(golden["t_" + s]), y, z);
    worst.expect(closeRelative(toVector(z), golden["z_" + s], kCumtrapzTol));
    coder::cumtrapz(toColumn(golden["tj_" + s]), y, z);
    worst.expect(closeRelative(toVector(z), golden["zj_" + s], kCumtrapzTol));
  }
}

TEST(Cumtrapz, HandWorkedStepsAndShortTimes) {
  // y = 1, 3, 2 at t = 0, 0.5, 2: steps 0.5 * 2 = 1 and 0.75 * 5 = 3.75.
  coder::array<double, 2> t = toRow({0.0, 0.5, 2.0});
  coder::array<double, 2> y = toRow({1.0, 3.0, 2.0});
  coder::array<double, 2> z;
  coder::cumtrapz(t, y, z);
  ASSERT_EQ(z.size(0), 1);
  ASSERT_EQ(z.size(1), 3);
  EXPECT_EQ(z[0], 0.0);
  EXPECT_EQ(z[1], 1.0);
  EXPECT_EQ(z[2], 4.75);
  // Fewer times than samples: the steps without a time are NaN, nothing is read beyond t.
  coder::cumtrapz(toRow({0.0, 1.0}), y, z);
  EXPECT_EQ(z[1], 2.0);
  EXPECT_TRUE(std::isnan(z[2]));
}

} // namespace
