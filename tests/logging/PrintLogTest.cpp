#include "logging/PrintLog.h"
#include "logging/time_helpers.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

TEST(Logging, LinesGoWhereTheirFlagsSayAndClockTextsAreUnpadded) {
  const std::string path = ::testing::TempDir() + "printlog_" + std::to_string(getpid()) + ".log";
  const auto file = [](auto n) { return (std::ostringstream() << std::ifstream(n).rdbuf()).str(); };
  std::remove(path.c_str());
  PrintLog both(true, true, path), quiet(false, false, path);
  ::testing::internal::CaptureStdout();
  both.print("");
  const bool before = std::ifstream(path).is_open();
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
  const bool opened = std::ifstream(path).is_open();
  both.print(false, true, "after rotation\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout() + std::to_string(before) +
                std::to_string(opened) + file(path) + "|" + file(path + ".1"),
            "first\nresult line\nconsole only again\n01after rotation\n|first\nreading data: ID = "
            "7\nplain\n");
  EXPECT_EQ(std::remove((path + ".1").c_str()) + std::remove(path.c_str()), 0);
  // The host seven hours east of UTC by a POSIX rule (no zone database); texts read as local time.
  setenv("TZ", "XYZ-7", 1);
  tzset();
  const char* format = "%Y-%m-%d %H:%M:%S";
  // The statement form (flag 2) through sec_to_string; a text cut after the date keeps the date,
  // an empty one is the zeroed fields (31 Dec 1899); the file-name form (flag 1) by its shape.
  std::string texts =
      sec_to_string(1688461501L) + "," + sec_to_string(0L) + "," + sec_to_string(1703980799L);
  for (const char* text : {"2023-7-4 9:5:1", "2023-07-04 09:05:01", "2023-7-4", ""})
    texts += "," + std::to_string(stringToSec(text, format));
  EXPECT_EQ(texts, "2023-7-4 9:5:1,1970-1-1 0:0:0,2023-12-30 23:59:59,1688436301,1688436301,"
                   "1688403600,-2209100400");
  EXPECT_EQ(std::chrono::system_clock::to_time_t(stringToDateTime("2023-07-04 09:05:01")),
            1688436301); // the trend's start date read as local time
  std::string forms;
  for (const std::string offset : {"", "+0:00", "-2:15"})
    forms += time_now(1, offset) + "|" + time_now(0, offset) + "|" + time_now(7, offset) + "|";
  const std::string n = "(0|[1-9]\\d?)", d = "\\d{4}-[1-9]\\d?-[1-9]\\d?",
                    f = d + "-" + n + "-" + n + "-" + n;
  EXPECT_TRUE(std::regex_match(forms + time_now(1),
                               std::regex("(" + f + "\\|" + d + "\\|" + d + "\\|){3}" + f)))
      << forms;
  // Shifts in minutes, as texts taken a moment apart may straddle a second.
  const long now = static_cast<long>(std::time(nullptr));
  const long utc = stringToSec(sec_to_string(now), format);
  std::string shifts;
  for (const long shift :
       {stringToSec(time_now(2, ""), format) - now, stringToSec(time_now(2, "+0:00"), format) - utc,
        stringToSec(time_now(2), format) - utc, stringToSec(time_now(1), "%Y-%m-%d-%H-%M-%S") - utc,
        stringToSec(time_now(2, "+3:30"), format) - utc,
        stringToSec(time_now(2, "-2:15"), format) - utc, now - utc})
    shifts += std::to_string(std::lround(shift / 60.0)) + ",";
  EXPECT_EQ(shifts, "0,0,0,0,210,-135,420,");
}

// The history's reader against stringToSec itself: zones with daylight saving, with changes of
// standard time (Moscow, 2011 and 2014), with half-hour offsets; days on both sides of each
// change, dates past a month's end, and the shapes that only strptime reads (one is empty).
TEST(TimeHelpers, HistoryReaderGivesWhatStringToSecGives) {
  const std::string table =
      "2023-03-26 01:30:00|2023-03-26 03:30:00|2023-03-26 23:59:59|2023-10-29 01:00:00|"
      "2023-10-29 12:00:00.25|2011-03-27 00:30:00|2011-03-27 12:00:00|2011-03-26 23:00:00|"
      "2014-10-26 00:30:00|2014-10-26 12:00:00+03|2024-02-30 10:00:00|2024-2-29 9:5:1|"
      "2023-07-04 09:05:60| 2023-07-04 09:05:01|2023-07-04  09:05:01|999-01-01 00:00:00|"
      "2023-7-4||2023-13-01 00:00:00|20231-01-01 00:00:00|1969-12-31 23:59:59";
  std::vector<std::string> texts;
  std::stringstream cells(table);
  for (std::string text; std::getline(cells, text, '|');)
    texts.push_back(text);
  for (const char* zone : {"XYZ-7", "CET-1CEST,M3.5.0,M10.5.0/3", ":Europe/Moscow",
                           ":Australia/Lord_Howe", ":America/St_Johns"}) {
    setenv("TZ", zone, 1);
    tzset();
    std::string expected;
    for (const std::string& text : texts)
      expected += std::to_string(stringToSec(text, "%Y-%m-%d %H:%M:%S")) + ",";
    LocalDateReader reader;
    std::string read;
    for (const std::string& text : texts)
      read += std::to_string(reader.seconds(text)) + ",";
    EXPECT_EQ(read, expected) << zone;
  }
}
