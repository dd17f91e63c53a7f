// The statement texts of the measurement object: numbers as the store's driver prints them
// (the figures below are what libpqxx 6.4 prints for the same floats) and quoted texts.
#include "pipeline/sql_text.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(SqlText, FloatsReadLikeTheDriversText) {
  EXPECT_EQ(sql_text::floatText(2.0f), "2");
  EXPECT_EQ(sql_text::floatText(-3.0f), "-3");
  EXPECT_EQ(sql_text::floatText(0.0f), "0");
  // Nine significant digits show the float's own value of 0.1.
  EXPECT_EQ(sql_text::floatText(0.1f), "0.100000001");
  // 16777217 is no float; it is stored as 16777216.
  EXPECT_EQ(sql_text::floatText(16777217.0f), "16777216");
  EXPECT_EQ(sql_text::floatText(1234567.0f), "1234567");
  // A span of hours too long for nine digits goes to the exponent form.
  EXPECT_EQ(sql_text::floatText(2562047788015.0f), "2.56204787e+12");
  // Values that are not finite are named by the driver, not by the stream: a stream would
  // print "inf" and, for a NaN with its sign bit set, "-nan".
  EXPECT_EQ(sql_text::floatText(std::numeric_limits<float>::infinity()), "infinity");
  EXPECT_EQ(sql_text::floatText(-std::numeric_limits<float>::infinity()), "-infinity");
  EXPECT_EQ(sql_text::floatText(std::numeric_limits<float>::quiet_NaN()), "nan");
  EXPECT_EQ(sql_text::floatText(-std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(SqlText, QuotesInsideATextAreDoubled) {
  EXPECT_EQ(sql_text::quoted("2024-05-01 09:00:00"), "'2024-05-01 09:00:00'");
  EXPECT_EQ(sql_text::quoted("it's"), "'it''s'");
  EXPECT_EQ(sql_text::quoted("'); DROP TABLE x; --"), "'''); DROP TABLE x; --'");
  EXPECT_EQ(sql_text::quoted(""), "''");
}

} // namespace
