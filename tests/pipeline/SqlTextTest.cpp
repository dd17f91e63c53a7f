// Floats in the measurement object's own statements, as the store's driver prints them (the
// texts below are what libpqxx 6.4 prints for the same floats).
#include "pipeline/sql_text.h"

#include <limits>
#include <utility>

#include <gtest/gtest.h>

namespace {

TEST(SqlText, FloatsReadLikeTheDriversText) {
  // Nine significant digits show a float's own value, beyond them the exponent form; the
  // values that are not finite are named as the driver names them, whatever their sign bit.
  const float inf = std::numeric_limits<float>::infinity(),
              nan = std::numeric_limits<float>::quiet_NaN();
  const std::pair<float, const char*> cases[] = {{2.0f, "2"},
                                                 {-3.0f, "-3"},
                                                 {0.0f, "0"},
                                                 {0.1f, "0.100000001"},
                                                 {16777217.0f, "16777216"},
                                                 {1234567.0f, "1234567"},
                                                 {2562047788015.0f, "2.56204787e+12"},
                                                 {inf, "infinity"},
                                                 {-inf, "-infinity"},
                                                 {nan, "nan"},
                                                 {-nan, "nan"}};
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(sql_text::floatText(value), text);
  }
}

} // namespace
