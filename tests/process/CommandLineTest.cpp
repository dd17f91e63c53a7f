// The option loop and the start-up names, as a table of command lines and what they set.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "process/CommandLine.h"
#include "process/process_state.h"
#include "process/start_up.h"

TEST(CommandLine, EachLineSetsItsFields) {
  // Arguments ("_" stands for a blank, '' for an empty argument) => start, stop, source, -p,
  // middle, middlecounter, pause, id, [host][name][user][password].
  std::istringstream table(R"(
=> 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
# Any -s is a replay from at least row 1; -stop takes only positive values; -middle is
# clamped in its order; the other numbers are atoi's, unchecked.
-s 17 -stop 40 -middle 3 -middlecounter -3 -id 7 -source 4660 => 17 40 4660 0 5 -3 30 7 [][][postgres][K_rm41T]
-s 0 -stop 0 -middle 1 -middlecounter 2x -id -1 -source -9 => 1 0 -9 0 5 2 30 4294967295 [][][postgres][K_rm41T]
-s -5 -stop -5 -middle 4 -id abc => 1 0 0 0 5 0 30 0 [][][postgres][K_rm41T]
-s abc -stop none -middle 5 => 1 0 0 0 5 0 30 1 [][][postgres][K_rm41T]
-s 12abc -middle 0 => 12 0 0 0 0 0 30 1 [][][postgres][K_rm41T]
-s _8 -middle -1 => 8 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-s '' -middle -20000 => 1 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-stop 40 -stop -5 -middle 20000 => 0 40 0 0 10000 0 30 1 [][][postgres][K_rm41T]
-middle 10000 => 0 0 0 0 10000 0 30 1 [][][postgres][K_rm41T]
-middle 250 => 0 0 0 0 250 0 30 1 [][][postgres][K_rm41T]
-middle x => 0 0 0 0 0 0 30 1 [][][postgres][K_rm41T]
# A value token is scanned again as an option.
-host -name db => 0 0 0 0 100 0 30 1 [-name][db][postgres][K_rm41T]
-s -p => 1 0 0 1 100 0 30 1 [][][postgres][K_rm41T]
-pass -stop 25 => 0 25 0 0 100 0 30 1 [][][postgres][-stop]
-user -source => 0 0 0 0 100 0 30 1 [][][-source][K_rm41T]
# An option without its value at the end is ignored, as are unknown words.
-source => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-s => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-name => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-id => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-middle => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
--help -x 5 -P -S 3 => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
# A later occurrence overrides an earlier one.
-id 3 -name a -id 4 -name b -source 12 -source 0 => 0 0 0 0 100 0 30 4 [][b][postgres][K_rm41T]
-s 10 -stop 20 -p -source 99 -host /run/pg -name plant -user vek -pass secret -middle 50 -middlecounter 2 -id 3 => 10 20 99 1 50 2 30 3 [/run/pg][plant][vek][secret]
)");
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line[0] == '#') {
      continue;
    }
    std::istringstream words(line.substr(0, line.find("=>")));
    std::vector<std::string> texts{"vek"};
    for (std::string word; words >> word;) {
      std::replace(word.begin(), word.end(), '_', ' ');
      texts.push_back(word == "''" ? "" : word);
    }
    std::vector<const char*> argv;
    for (const std::string& text : texts) {
      argv.push_back(text.c_str());
    }
    const CommandLine o = readCommandLine(static_cast<int>(argv.size()), argv.data());
    std::ostringstream fields;
    fields << o.id_start << " " << o.id_stop << " " << o.source << " " << o.print_file << " "
           << o.middle << " " << o.middlecounter << " " << o.pause << " " << o.vek_id << " ["
           << o.db_host << "][" << o.db_name << "][" << o.user << "][" << o.passwd << "]";
    EXPECT_EQ(fields.str(), line.substr(line.find("=>") + 3)) << line;
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
