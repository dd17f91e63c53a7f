// The option loop and the start-up names, as a table of command lines and what they set.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "process/CommandLine.h"
#include "process/process_state.h"
#include "process/start_up.h"

namespace {

// Every field: start, stop, source, -p, middle, middlecounter, pause, id, then the texts.
std::string fields(const std::vector<const char*>& arguments) {
  std::vector<const char*> argv{"vek"};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  const CommandLine o = readCommandLine(static_cast<int>(argv.size()), argv.data());
  std::ostringstream text;
  text << o.id_start << " " << o.id_stop << " " << o.source << " " << o.print_file << " "
       << o.middle << " " << o.middlecounter << " " << o.pause << " " << o.vek_id << " ["
       << o.db_host << "][" << o.db_name << "][" << o.user << "][" << o.passwd << "]";
  return text.str();
}

} // namespace

TEST(CommandLine, EachLineSetsItsFields) {
  const std::string texts = " [][][postgres][K_rm41T]";
  const std::vector<std::pair<std::vector<const char*>, std::string>> cases = {
      {{}, "0 0 0 0 100 0 30 1" + texts},
      // Any -s is a replay from at least row 1; -stop takes only positive values; -middle is
      // clamped in its order; the other numbers are atoi's, unchecked.
      {{"-s", "17", "-stop", "40", "-middle", "3", "-middlecounter", "-3", "-id", "7", "-source",
        "4660"},
       "17 40 4660 0 5 -3 30 7" + texts},
      {{"-s", "0", "-stop", "0", "-middle", "1", "-middlecounter", "2x", "-id", "-1", "-source",
        "-9"},
       "1 0 -9 0 5 2 30 4294967295" + texts},
      {{"-s", "-5", "-stop", "-5", "-middle", "4", "-id", "abc"}, "1 0 0 0 5 0 30 0" + texts},
      {{"-s", "abc", "-stop", "none", "-middle", "5"}, "1 0 0 0 5 0 30 1" + texts},
      {{"-s", "12abc", "-middle", "0"}, "12 0 0 0 0 0 30 1" + texts},
      {{"-s", " 8", "-middle", "-1"}, "8 0 0 0 100 0 30 1" + texts},
      {{"-s", "", "-middle", "-20000"}, "1 0 0 0 100 0 30 1" + texts},
      {{"-stop", "40", "-stop", "-5", "-middle", "20000"}, "0 40 0 0 10000 0 30 1" + texts},
      {{"-middle", "10000"}, "0 0 0 0 10000 0 30 1" + texts},
      {{"-middle", "250"}, "0 0 0 0 250 0 30 1" + texts},
      {{"-middle", "x"}, "0 0 0 0 0 0 30 1" + texts},
      // A value token is scanned again as an option.
      {{"-host", "-name", "db"}, "0 0 0 0 100 0 30 1 [-name][db][postgres][K_rm41T]"},
      {{"-s", "-p"}, "1 0 0 1 100 0 30 1" + texts},
      {{"-pass", "-stop", "25"}, "0 25 0 0 100 0 30 1 [][][postgres][-stop]"},
      {{"-user", "-source"}, "0 0 0 0 100 0 30 1 [][][-source][K_rm41T]"},
      // An option without its value at the end is ignored, as are unknown words.
      {{"-source"}, "0 0 0 0 100 0 30 1" + texts},
      {{"-s"}, "0 0 0 0 100 0 30 1" + texts},
      {{"-name"}, "0 0 0 0 100 0 30 1" + texts},
      {{"-id"}, "0 0 0 0 100 0 30 1" + texts},
      {{"-middle"}, "0 0 0 0 100 0 30 1" + texts},
      {{"--help", "-x", "5", "-P", "-S", "3"}, "0 0 0 0 100 0 30 1" + texts},
      // A later occurrence overrides an earlier one.
      {{"-id", "3", "-name", "a", "-id", "4", "-name", "b", "-source", "12", "-source", "0"},
       "0 0 0 0 100 0 30 4 [][b][postgres][K_rm41T]"},
      {{"-s",    "10",    "-stop", "20",  "-p",    "-source", "99",      "-host", "/run/pg",
        "-name", "plant", "-user", "vek", "-pass", "secret",  "-middle", "50",    "-middlecounter",
        "2",     "-id",   "3"},
       "10 20 99 1 50 2 30 3 [/run/pg][plant][vek][secret]"}};
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(fields(cases[i].first), cases[i].second) << "line " << i;
  }
}

TEST(CommandLine, ApplyingSetsTheProcessWideValuesAndTheLogNames) {
  // Named before main runs, so that a signal before the options are read has a file.
  const std::string time = R"(\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3})";
  EXPECT_TRUE(std::regex_match(process::file_name_error, std::regex(time + "_error\\.log")));
  const char* argv[] = {"vek", "-host", "h", "-name", "n", "-user", "u", "-pass", "p", "-id", "9"};
  applyCommandLine(readCommandLine(11, argv));
  EXPECT_EQ(process::db_host + process::db_name + process::user + process::passwd +
                std::to_string(process::vek_id),
            "hnup9");
  // Database, instance and unpadded local time.
  EXPECT_TRUE(std::regex_match(runLogName("plant", 3), std::regex("plant_c3_" + time + "\\.log")));
  EXPECT_TRUE(std::regex_match(errorLogName("", 3), std::regex("_c3_" + time + "_error\\.log")));
}
