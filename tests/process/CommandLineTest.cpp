#include "process/CommandLine.h"

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <string>
#include <vector>

#include "process/process_state.h"

namespace {

// Runs the option loop over a command line given without the program name.
CommandLine read(std::initializer_list<const char*> arguments) {
  std::vector<const char*> argv{"vek"};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return readCommandLine(static_cast<int>(argv.size()), argv.data());
}

} // namespace

TEST(CommandLine, NoArgumentsGiveTheDefaults) {
  const CommandLine options = read({});
  EXPECT_EQ(options.id_start, 0);
  EXPECT_EQ(options.id_stop, 0);
  EXPECT_EQ(options.source, 0L);
  EXPECT_FALSE(options.print_file);
  EXPECT_EQ(options.middle, 100);
  EXPECT_EQ(options.middlecounter, 0);
  EXPECT_EQ(options.pause, 30);
  EXPECT_EQ(options.vek_id, 1u);
  EXPECT_EQ(options.db_host, "");
  EXPECT_EQ(options.db_name, "");
  EXPECT_EQ(options.user, "postgres");
  EXPECT_EQ(options.passwd, "K_rm41T");
}

TEST(CommandLine, AnyStartOptionWithAValueMeansAReplayFromAtLeastRowOne) {
  struct Case {
    const char* value;
    int id_start;
  };
  for (const Case c : {Case{"17", 17}, Case{"0", 1}, Case{"-5", 1}, Case{"abc", 1},
                       Case{"12abc", 12}, Case{" 8", 8}, Case{"", 1}}) {
    SCOPED_TRACE(std::string("-s '") + c.value + "'");
    EXPECT_EQ(read({"-s", c.value}).id_start, c.id_start);
  }
}

TEST(CommandLine, StopIdTakesOnlyPositiveValues) {
  EXPECT_EQ(read({"-stop", "40"}).id_stop, 40);
  EXPECT_EQ(read({"-stop", "0"}).id_stop, 0);
  EXPECT_EQ(read({"-stop", "-5"}).id_stop, 0);
  EXPECT_EQ(read({"-stop", "none"}).id_stop, 0);
  // A refused value keeps what an earlier occurrence set.
  EXPECT_EQ(read({"-stop", "40", "-stop", "-5"}).id_stop, 40);
}

TEST(CommandLine, MiddleIsClampedInItsOrder) {
  struct Case {
    const char* value;
    int middle;
  };
  for (const Case c : {Case{"3", 5}, Case{"1", 5}, Case{"4", 5}, Case{"5", 5}, Case{"0", 0},
                       Case{"-1", 100}, Case{"-20000", 100}, Case{"20000", 10000},
                       Case{"10000", 10000}, Case{"250", 250}, Case{"x", 0}}) {
    SCOPED_TRACE(std::string("-middle '") + c.value + "'");
    EXPECT_EQ(read({"-middle", c.value}).middle, c.middle);
  }
}

TEST(CommandLine, NumbersAreReadWithAtoiAndLeftUnchecked) {
  EXPECT_EQ(read({"-middlecounter", "-3"}).middlecounter, -3);
  EXPECT_EQ(read({"-middlecounter", "2x"}).middlecounter, 2);
  EXPECT_EQ(read({"-id", "7"}).vek_id, 7u);
  EXPECT_EQ(read({"-id", "-1"}).vek_id, UINT_MAX);
  EXPECT_EQ(read({"-id", "abc"}).vek_id, 0u);
  EXPECT_EQ(read({"-source", "4660"}).source, 4660L);
  EXPECT_EQ(read({"-source", "0"}).source, 0L);
  EXPECT_EQ(read({"-source", "-9"}).source, -9L);
}

TEST(CommandLine, ValueTokensAreScannedAgainAsOptions) {
  const CommandLine host_name = read({"-host", "-name", "db"});
  EXPECT_EQ(host_name.db_host, "-name");
  EXPECT_EQ(host_name.db_name, "db");

  // "-p" as the value of -s is no number, so the start is row 1, and it also turns the log on.
  const CommandLine start_print = read({"-s", "-p"});
  EXPECT_EQ(start_print.id_start, 1);
  EXPECT_TRUE(start_print.print_file);

  // "-stop" read as a password, then as an option taking "25".
  const CommandLine pass_stop = read({"-pass", "-stop", "25"});
  EXPECT_EQ(pass_stop.passwd, "-stop");
  EXPECT_EQ(pass_stop.id_stop, 25);

  // A value that spells an option at the end of the line acts as that option with no value.
  const CommandLine user_source = read({"-user", "-source"});
  EXPECT_EQ(user_source.user, "-source");
  EXPECT_EQ(user_source.source, 0L);
}

TEST(CommandLine, TrailingOptionsUnknownWordsAndRepeats) {
  EXPECT_EQ(read({"-source"}).source, 0L);
  EXPECT_EQ(read({"-s"}).id_start, 0); // no value: the start stays "continue"
  EXPECT_EQ(read({"-name"}).db_name, "");
  EXPECT_EQ(read({"-id"}).vek_id, 1u);
  EXPECT_EQ(read({"-middle"}).middle, 100);

  const CommandLine unknown = read({"--help", "-x", "5", "-P", "-S", "3"});
  EXPECT_EQ(unknown.id_start, 0);
  EXPECT_FALSE(unknown.print_file);

  const CommandLine repeated = read({"-id", "3", "-name", "a", "-id", "4", "-name", "b"});
  EXPECT_EQ(repeated.vek_id, 4u);
  EXPECT_EQ(repeated.db_name, "b");
  EXPECT_EQ(read({"-source", "12", "-source", "0"}).source, 0L);

  const CommandLine everything = read(
      {"-s",    "10",    "-stop", "20",  "-p",    "-source", "99",      "-host", "/run/pg",
       "-name", "plant", "-user", "vek", "-pass", "secret",  "-middle", "50",    "-middlecounter",
       "2",     "-id",   "3"});
  EXPECT_EQ(everything.id_start, 10);
  EXPECT_EQ(everything.id_stop, 20);
  EXPECT_TRUE(everything.print_file);
  EXPECT_EQ(everything.source, 99L);
  EXPECT_EQ(everything.db_host, "/run/pg");
  EXPECT_EQ(everything.db_name, "plant");
  EXPECT_EQ(everything.user, "vek");
  EXPECT_EQ(everything.passwd, "secret");
  EXPECT_EQ(everything.middle, 50);
  EXPECT_EQ(everything.middlecounter, 2);
  EXPECT_EQ(everything.vek_id, 3u);
}

TEST(CommandLine, ApplyingSetsTheProcessWideConnectionValues) {
  applyCommandLine(read({"-host", "h", "-name", "n", "-user", "u", "-pass", "p", "-id", "9"}));
  EXPECT_EQ(process::db_host, "h");
  EXPECT_EQ(process::db_name, "n");
  EXPECT_EQ(process::user, "u");
  EXPECT_EQ(process::passwd, "p");
  EXPECT_EQ(process::vek_id, 9u);
}
