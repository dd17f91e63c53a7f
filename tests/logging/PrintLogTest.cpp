// The log writer and the clock texts.
#include "logging/PrintLog.h"
#include "logging/time_helpers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

TEST(PrintLog, RoutesTextByItsFlagsAndOpensTheFileForEveryLine) {
  const std::string path = ::testing::TempDir() + "printlog_" + std::to_string(getpid()) + ".log";
  const auto file = [&](const std::string& name) {
    std::ifstream in(name);
    std::stringstream all;
    all << in.rdbuf();
    return in ? all.str() : "none";
  };
  std::remove(path.c_str());
  PrintLog both(true, true, path), quiet(false, false, path);
  ::testing::internal::CaptureStdout();
  both.print("");
  const std::string before = file(path);
  both.print("first\n");
  quiet.print("nowhere\n");
  quiet.print(true, false, "result line\n");
  quiet.print(false, true, "not while file output is off\n");
  quiet.setPrintFile(true);
  quiet.print(false, true, "reading data: ID = 7\n");
  quiet.print("plain\n");
  quiet.setPrintFile(false);
  quiet.print(true, true, "console only again\n");
  // An operator moves the file away: the next line lands in a fresh file by the name, which the
  // two-flag form opens even for no text.
  ASSERT_EQ(std::rename(path.c_str(), (path + ".1").c_str()), 0);
  both.print(false, true, "");
  const std::string opened = file(path);
  both.print(false, true, "after rotation\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "first\nresult line\nconsole only again\n");
  EXPECT_EQ(before + "|" + opened + "|" + file(path) + "|" + file(path + ".1"),
            "none||after rotation\n|first\nreading data: ID = 7\nplain\n");
  std::remove((path + ".1").c_str());
  std::remove(path.c_str());
  PrintLog lost(false, true, "/nonexistent-directory/vek.log");
  EXPECT_NO_THROW(lost.print("lost\n"));
}

TEST(TimeHelpers, UnpaddedTextsOfTheClockAndOfSeconds) {
  const char* format = "%Y-%m-%d %H:%M:%S";
  EXPECT_EQ(sec_to_string(1688461501L) + "," + sec_to_string(0L) + "," + sec_to_string(1703980799L),
            "2023-7-4 9:5:1,1970-1-1 0:0:0,2023-12-30 23:59:59");
  const std::regex file_form(R"(\d{4}-[1-9]\d?-[1-9]\d?-(0|[1-9]\d?)-(0|[1-9]\d?)-(0|[1-9]\d?))");
  const std::regex statement_form(
      R"(\d{4}-[1-9]\d?-[1-9]\d? (0|[1-9]\d?):(0|[1-9]\d?):(0|[1-9]\d?))");
  const std::regex date_form(R"(\d{4}-[1-9]\d?-[1-9]\d?)");
  for (const std::string offset : {"", "+0:00", "-2:15"}) {
    EXPECT_TRUE(std::regex_match(time_now(1, offset), file_form)) << time_now(1, offset);
    EXPECT_TRUE(std::regex_match(time_now(2, offset), statement_form)) << time_now(2, offset);
    EXPECT_TRUE(std::regex_match(time_now(0, offset), date_form) &&
                std::regex_match(time_now(7, offset), date_form));
  }
  EXPECT_TRUE(std::regex_match(time_now(1), file_form) &&
              std::regex_match(time_now(2), statement_form));
  EXPECT_EQ(stringToSec("2023-7-4 9:5:1", format), stringToSec("2023-07-04 09:05:01", format));
  EXPECT_EQ(stringToSec("2023-7-5 9:5:1", format) - stringToSec("2023-7-4 9:5:0", format), 86401);
  // A text cut after the date keeps the date; an empty one is the zeroed fields.
  EXPECT_EQ(stringToSec("2023-7-4", format), stringToSec("2023-7-4 0:0:0", format));
  std::tm zeroed{};
  const std::time_t zero = std::mktime(&zeroed);
  EXPECT_EQ(stringToSec("", format), static_cast<long>(zero));
  const auto whole = stringToDateTime("2024-02-29 23:59:58");
  EXPECT_EQ(whole, stringToDateTime("2024-02-29 23:59:58.987654"));
  EXPECT_EQ(std::chrono::system_clock::to_time_t(whole),
            static_cast<std::time_t>(stringToSec("2024-2-29 23:59:58", format)));
  EXPECT_EQ(std::chrono::system_clock::to_time_t(stringToDateTime("not a date")), zero);
  EXPECT_THROW(time_now(2, "UTC"), std::invalid_argument);
  EXPECT_THROW(time_now(2, "+x:00"), std::invalid_argument);
}

TEST(TimeHelpers, OffsetsShiftUtcAndTheEmptyOffsetIsTheHostZone) {
  // A host seven hours east of UTC, by a POSIX rule that needs no zone database. The texts are
  // read back through stringToSec, which takes every text as local time; texts taken a moment
  // apart may straddle a second.
  constexpr long kClockTickSec = 1;
  const char* format = "%Y-%m-%d %H:%M:%S";
  const char* saved = std::getenv("TZ");
  const std::string saved_zone = saved != nullptr ? saved : "";
  setenv("TZ", "XYZ-7", 1);
  tzset();
  const long now = static_cast<long>(std::time(nullptr));
  const long utc = stringToSec(sec_to_string(now), format);
  const long shifts[] = {stringToSec(time_now(2, ""), format) - now,
                         stringToSec(time_now(2, "+0:00"), format) - utc,
                         stringToSec(time_now(2), format) - utc,
                         stringToSec(time_now(1), "%Y-%m-%d-%H-%M-%S") - utc,
                         stringToSec(time_now(2, "+3:30"), format) - utc,
                         stringToSec(time_now(2, "-2:15"), format) - utc};
  saved != nullptr ? setenv("TZ", saved_zone.c_str(), 1) : unsetenv("TZ");
  tzset();
  const long expected[] = {0, 0, 0, 0, 3 * 3600 + 30 * 60, -(2 * 3600 + 15 * 60)};
  for (int k = 0; k < 6; ++k) {
    EXPECT_NEAR(shifts[k], expected[k], kClockTickSec) << k;
  }
  EXPECT_NEAR(now - utc, 7 * 3600, kClockTickSec);
}

} // namespace
