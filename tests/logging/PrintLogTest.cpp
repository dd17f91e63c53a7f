#include "logging/PrintLog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

// A log file name unique to this test process, removed before and after use.
class LogFile {
public:
  explicit LogFile(const std::string& tag)
      : path(::testing::TempDir() + "printlog_" + tag + "_" + std::to_string(getpid()) + ".log") {
    std::remove(path.c_str());
  }
  ~LogFile() { std::remove(path.c_str()); }
  bool exists() const { return std::ifstream(path).good(); }
  std::string content() const {
    std::ifstream in(path);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
  }
  const std::string path;
};

} // namespace

TEST(PrintLog, SingleFormFollowsObjectFlagsAndSkipsEmptyText) {
  LogFile file("single");
  PrintLog both(true, true, file.path);
  ::testing::internal::CaptureStdout();
  both.print("first\n");
  both.print("");
  both.print("second\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "first\nsecond\n");
  EXPECT_EQ(file.content(), "first\nsecond\n");

  PrintLog quiet(false, false, file.path);
  ::testing::internal::CaptureStdout();
  quiet.print("nowhere\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(file.content(), "first\nsecond\n");
}

TEST(PrintLog, EmptyTextCreatesNoFileInSingleFormButTwoFlagFormOpensIt) {
  LogFile file("empty");
  PrintLog log(false, true, file.path);
  log.print("");
  EXPECT_FALSE(file.exists());
  log.print(true, true, "");
  EXPECT_TRUE(file.exists());
  EXPECT_EQ(file.content(), "");
}

TEST(PrintLog, TwoFlagFormChoosesConsoleAloneButFileOnlyWhenAllowed) {
  LogFile file("two_flags");
  PrintLog log(false, false, file.path);
  ::testing::internal::CaptureStdout();
  log.print(true, false, "result line\n");
  log.print(false, true, "file only while file output is off\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "result line\n");
  EXPECT_FALSE(file.exists());

  log.setPrintFile(true);
  ::testing::internal::CaptureStdout();
  log.print(false, true, "reading data: ID = 7\n");
  log.print("plain line goes to file, console off\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(file.content(), "reading data: ID = 7\nplain line goes to file, console off\n");

  log.setPrintFile(false);
  log.print(true, true, "console only again\n");
  EXPECT_EQ(file.content(), "reading data: ID = 7\nplain line goes to file, console off\n");
}

TEST(PrintLog, FileIsReleasedBetweenWritesSoRotationLosesNothingLater) {
  LogFile file("rotate");
  PrintLog log(false, true, file.path);
  log.print("before rotation\n");
  // An operator moves the file away: the next line must land in a fresh file by the name.
  const std::string rotated = file.path + ".1";
  ASSERT_EQ(std::rename(file.path.c_str(), rotated.c_str()), 0);
  log.print("after rotation\n");
  EXPECT_EQ(file.content(), "after rotation\n");
  std::remove(rotated.c_str());
}

TEST(PrintLog, UnwritableFileLosesTextSilently) {
  PrintLog log(false, true, "/nonexistent-directory/vek.log");
  EXPECT_NO_THROW(log.print("lost\n"));
  EXPECT_NO_THROW(log.print(false, true, "lost too\n"));
}
