#include "logging/time_helpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <stdexcept>
#include <string>

namespace {

// Texts taken a moment apart may straddle a second; allow one tick.
constexpr long kClockTickSec = 1;

const char* kStatementFormat = "%Y-%m-%d %H:%M:%S";

// Seconds between two statement-form texts.
long secondsBetween(const std::string& later, const std::string& earlier) {
  return stringToSec(later, kStatementFormat) - stringToSec(earlier, kStatementFormat);
}

} // namespace

TEST(SecToString, GivesUtcWithoutLeadingZeros) {
  EXPECT_EQ(sec_to_string(1688461501L), "2023-7-4 9:5:1"); // 2023-07-04 09:05:01 UTC
  EXPECT_EQ(sec_to_string(0L), "1970-1-1 0:0:0");
  EXPECT_EQ(sec_to_string(1703980799L), "2023-12-30 23:59:59");
}

TEST(TimeNow, FlagsChooseFileNameStatementOrDateForm) {
  const std::regex file_form(R"(\d{4}-[1-9]\d?-[1-9]\d?-(0|[1-9]\d?)-(0|[1-9]\d?)-(0|[1-9]\d?))");
  const std::regex statement_form(
      R"(\d{4}-[1-9]\d?-[1-9]\d? (0|[1-9]\d?):(0|[1-9]\d?):(0|[1-9]\d?))");
  const std::regex date_form(R"(\d{4}-[1-9]\d?-[1-9]\d?)");
  for (const std::string offset : {"", "+0:00", "+3:30", "-2:15"}) {
    SCOPED_TRACE("offset '" + offset + "'");
    EXPECT_TRUE(std::regex_match(time_now(1, offset), file_form)) << time_now(1, offset);
    EXPECT_TRUE(std::regex_match(time_now(2, offset), statement_form)) << time_now(2, offset);
    EXPECT_TRUE(std::regex_match(time_now(0, offset), date_form)) << time_now(0, offset);
    EXPECT_TRUE(std::regex_match(time_now(7, offset), date_form)) << time_now(7, offset);
  }
  EXPECT_TRUE(std::regex_match(time_now(1), file_form));
  EXPECT_TRUE(std::regex_match(time_now(2), statement_form));
}

TEST(TimeNow, EmptyOffsetIsTheHostZoneAndZeroOffsetIsUtc) {
  // A host seven hours east of UTC, set by a POSIX zone rule that needs no zone database, so
  // that local and UTC texts differ whatever zone the test machine has.
  const char* saved = std::getenv("TZ");
  const std::string saved_zone = saved != nullptr ? saved : "";
  setenv("TZ", "XYZ-7", 1);
  tzset();
  // Read back through the parser, which takes every text as local time: the local text gives
  // the clock itself, and the UTC texts match the UTC breakdown of the same second.
  const std::time_t before = std::time(nullptr);
  const long local = stringToSec(time_now(2, ""), kStatementFormat);
  const long utc = stringToSec(time_now(2, "+0:00"), kStatementFormat);
  const long utc_plain = stringToSec(time_now(2), kStatementFormat);
  const long utc_file_form = stringToSec(time_now(1), "%Y-%m-%d-%H-%M-%S");
  const long utc_reference = stringToSec(sec_to_string(before), kStatementFormat);
  if (saved != nullptr) {
    setenv("TZ", saved_zone.c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
  EXPECT_NEAR(local, static_cast<long>(before), kClockTickSec);
  EXPECT_NEAR(local - utc, 7 * 3600, kClockTickSec);
  EXPECT_NEAR(utc, utc_reference, kClockTickSec);
  EXPECT_NEAR(utc_plain, utc_reference, kClockTickSec);
  EXPECT_NEAR(utc_file_form, utc_reference, kClockTickSec);
}

TEST(TimeNow, OffsetShiftsUtcAndMinutesFollowTheSignOfTheHours) {
  const std::string utc = time_now(2, "+0:00");
  const long plus_three = secondsBetween(time_now(2, "+3:00"), utc);
  const long plus_three_half = secondsBetween(time_now(2, "+3:30"), utc);
  const long minus_two_quarter = secondsBetween(time_now(2, "-2:15"), utc);
  EXPECT_NEAR(plus_three, 3 * 3600, kClockTickSec);
  EXPECT_NEAR(plus_three_half, 3 * 3600 + 30 * 60, kClockTickSec);
  EXPECT_NEAR(minus_two_quarter, -(2 * 3600 + 15 * 60), kClockTickSec);
}

TEST(TimeNow, OffsetThatIsNoNumberThrowsInvalidArgument) {
  EXPECT_THROW(time_now(2, "UTC"), std::invalid_argument);
  EXPECT_THROW(time_now(2, "+x:00"), std::invalid_argument);
}

TEST(StringToSec, ReadsUnpaddedAndPaddedFieldsAlikeAndKeepsPartialParses) {
  EXPECT_EQ(stringToSec("2023-7-4 9:5:1", kStatementFormat),
            stringToSec("2023-07-04 09:05:01", kStatementFormat));
  EXPECT_EQ(secondsBetween("2023-7-5 9:5:1", "2023-7-4 9:5:0"), 86401);
  // A text cut after the date keeps the date with a midnight time.
  EXPECT_EQ(stringToSec("2023-7-4", kStatementFormat),
            stringToSec("2023-7-4 0:0:0", kStatementFormat));
  // An empty text is the zeroed fields: a date far in the past, so any age looks absurd.
  std::tm zeroed{};
  EXPECT_EQ(stringToSec("", kStatementFormat), static_cast<long>(std::mktime(&zeroed)));
  EXPECT_GT(stringToSec("2023-7-4 9:5:1", kStatementFormat) - stringToSec("", kStatementFormat),
            946000000L);
}

TEST(StringToDateTime, IgnoresFractionsAndFallsBackToZeroedFields) {
  const auto whole = stringToDateTime("2024-02-29 23:59:58");
  const auto fraction = stringToDateTime("2024-02-29 23:59:58.987654");
  EXPECT_EQ(whole, fraction);
  EXPECT_EQ(std::chrono::system_clock::to_time_t(whole),
            static_cast<std::time_t>(stringToSec("2024-2-29 23:59:58", kStatementFormat)));
  EXPECT_LT(stringToDateTime("2024-02-29 23:59:58"), stringToDateTime("2024-03-01 00:00:00"));
  std::tm zeroed{};
  EXPECT_EQ(std::chrono::system_clock::to_time_t(stringToDateTime("not a date")),
            std::mktime(&zeroed));
}
