// The process's own parts: the option table, the instance's settings and the loop's timers.
#include <functional>
#include <limits>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "process/Calculation.h"
#include "process/CommandLine.h"
#include "process/MeasurementLoop.h"
#include "process/process_state.h"
#include "process/start_up.h"
#include "support/StoreTest.h"

namespace {
// Each line "input => expected" of table (blank and "#" lines skipped) against run(input).
void eachCase(const char* table, const std::function<std::string(std::string)>& run) {
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t arrow = line.find(" => ");
    if (line.empty() || line[0] == '#')
      continue;
    EXPECT_EQ(run(line.substr(0, arrow)), line.substr(arrow + 4)) << line;
  }
}

} // namespace
TEST(CommandLine, EachLineSetsItsFields) {
  // Arguments => start, stop, source, -p, middle, middlecounter, pause, id,
  // [host][name][user][password]. Any -s is a replay from
  // at least row 1; -stop takes only positive values; -middle is clamped in its order; the
  // other numbers are atoi's, unchecked. A value token is scanned again as an option; an
  // option without its value at the end is ignored, as are unknown words; a later occurrence
  // overrides an earlier one.
  eachCase(R"(
--help -x 5 -P -S 3 => 0 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-s 17 -stop 40 -middle 4 -middlecounter -3 -id 7 -source 4660 => 17 40 4660 0 5 -3 30 7 [][][postgres][K_rm41T]
-s 0 -stop 0 -middle -20000 -middlecounter 2x -id -1 -source -9 => 1 0 -9 0 100 2 30 4294967295 [][][postgres][K_rm41T]
-s -5 -stop -5 -middle 1 -id abc => 1 0 0 0 5 0 30 0 [][][postgres][K_rm41T]
-s abc -stop none -middle 5 -source => 1 0 0 0 5 0 30 1 [][][postgres][K_rm41T]
-s 12abc -middle 0 -name => 12 0 0 0 0 0 30 1 [][][postgres][K_rm41T]
-s 8 -middle -1 -id => 8 0 0 0 100 0 30 1 [][][postgres][K_rm41T]
-stop 40 -stop -5 -middle 20000 -s => 0 40 0 0 10000 0 30 1 [][][postgres][K_rm41T]
-middle 10000 -host -name db => 0 0 0 0 10000 0 30 1 [-name][db][postgres][K_rm41T]
-middle 250 -pass -stop 25 => 0 25 0 0 250 0 30 1 [][][postgres][-stop]
-s -p -middle x -user -source => 1 0 0 1 0 0 30 1 [][][-source][K_rm41T]
-id 3 -name a -id 4 -name b -source 12 -source 0 -middle => 0 0 0 0 100 0 30 4 [][b][postgres][K_rm41T]
-s 10 -stop 20 -p -source 99 -host /run/pg -name plant -user vek -pass secret -middle 50 -middlecounter 2 -id 3 => 10 20 99 1 50 2 30 3 [/run/pg][plant][vek][secret]
)",
           [](const std::string& arguments) {
             std::istringstream words(arguments);
             std::vector<std::string> texts{"vek"};
             for (std::string word; words >> word;)
               texts.push_back(word);
             std::vector<const char*> argv;
             for (const std::string& text : texts)
               argv.push_back(text.c_str());
             const CommandLine o = readCommandLine(static_cast<int>(argv.size()), argv.data());
             std::ostringstream f;
             f << o.id_start << " " << o.id_stop << " " << o.source << " " << o.print_file << " "
               << o.middle << " " << o.middlecounter << " " << o.pause << " " << o.vek_id << " ["
               << o.db_host << "][" << o.db_name << "][" << o.user << "][" << o.passwd << "]";
             return f.str();
           });
  // The error log is named before main runs, for a signal before the options are read; the
  // logs name database, instance and unpadded local time.
  const std::string time = R"(\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3})";
  EXPECT_TRUE(std::regex_match(
      process::file_name_error + " " + runLogName("plant", 3) + " " + errorLogName("", 3),
      std::regex(time + "_error\\.log plant_c3_" + time + "\\.log _c3_" + time + "_error\\.log")));
  const char* argv[] = {"vek", "-host", "h", "-name", "n", "-user", "u", "-pass", "p", "-id", "9"};
  applyCommandLine(readCommandLine(11, argv));
  EXPECT_EQ(process::db_host + process::db_name + process::user + process::passwd +
                std::to_string(process::vek_id),
            "hnup9");
}

class CalculationTest : public vek_test::StoreTest {};

TEST_F(CalculationTest, SettingsAreTakenInTurnAndKeptWhenDropped) {
  // A settings document (NULL: none; -: no row at all) => log, middle, analysis and control
  // periods (ms), Kafka on, client id, topic, and which of the sources -8, -7, 1..9 and
  // 3000000026 the instance computes; read in turn into one instance. Empty arrays keep a
  // number but empty the list; a single-valued key takes an array's first; the remainder has
  // the sign of the source; "middle" 0 is taken (the loop then keeps its command line's);
  // periods beyond the millisecond range wrap as the 32-bit timer does, even beyond 64 bits.
  // Registration and progress touch only the instance's own row; a new row's settings wait.
  exec("INSERT INTO vek_calculation (id, ip, lag, settings) VALUES (1, '10.0.0.1', 12, "
       "'{\"middle\": 100}'), (3, NULL, NULL, NULL)");
  Calculation known(&store(), 1), fresh(&store(), 2), third(&store(), 3);
  const int before = known.getMiddle(); // the constructor does not touch the database
  EXPECT_TRUE(known.initCalculation("10.0.0.9") && fresh.initCalculation("10.0.0.2"));
  third.setVersion("{\"vek\": \"1.2.3\"}");
  third.updateCalc(-1, 501, "2024-5-1 9:7:3");
  EXPECT_EQ(
      scalar("SELECT string_agg(format('%s|%s|%s|%s|%s|%s|%s', id, ip, lag, settings, "
             "version, last_calculated, sync_time), ' / ' ORDER BY id) FROM vek_calculation") +
          " " + std::to_string(before) + " " +
          std::to_string(known.getMiddle() + fresh.getMiddle()),
      "1|10.0.0.9|12|{\"middle\": 100}||| / 2|10.0.0.2|0|||| / "
      "3||-1||{\"vek\": \"1.2.3\"}|501|2024-05-01 09:07:03 0 100");
  exec("DELETE FROM vek_calculation");
  Calculation calculation(&store(), 1);
  eachCase(R"(
- => 0 0 1200000 300000 0 0  [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"source": [5, 9], "calc_source": 1, "remainder": 0, "middle": 10, "log": true, "analyze_module": 600, "control_task": 60, "kafka_client_id": 7, "kafka_topic": "vibration", "kafka_enable": true} => 1 10 600000 60000 1 7000 vibration [5,9,]
# A key dropped keeps its value until a restart; no object, NULL or no row changes nothing.
{"control_task": 30} => 1 10 600000 30000 1 7000 vibration [5,9,]
not json => 1 10 600000 30000 1 7000 vibration [5,9,]
NULL => 1 10 600000 30000 1 7000 vibration [5,9,]
- => 1 10 600000 30000 1 7000 vibration [5,9,]
{"calc_source": 2, "remainder": 1, "middle": 5, "analyze_module": 10, "source": [4]} => 1 5 10000 30000 1 7000 vibration [1,3,5,7,9,]
{"calc_source": [], "remainder": [], "middle": [], "analyze_module": [], "source": []} => 1 5 10000 30000 1 7000 vibration [1,3,5,7,9,]
{"calc_source": 1} => 1 5 10000 30000 1 7000 vibration []
{"calc_source": [3, 5], "remainder": [2]} => 1 5 10000 30000 1 7000 vibration [2,5,8,3000000026,]
{"calc_source": 3, "remainder": 1} => 1 5 10000 30000 1 7000 vibration [1,4,7,]
{"calc_source": 3, "remainder": -1} => 1 5 10000 30000 1 7000 vibration [-7,]
{"calc_source": 1, "source": [2, 8, 100]} => 1 5 10000 30000 1 7000 vibration [2,8,]
{"calc_source": -2} => 1 5 10000 30000 1 7000 vibration []
{"calc_source": 4, "remainder": 4} => 1 5 10000 30000 1 7000 vibration []
{"calc_source": 2, "remainder": 0} => 1 5 10000 30000 1 7000 vibration [-8,2,4,6,8,3000000026,]
{"calc_source": 1000000007, "remainder": 5} => 1 5 10000 30000 1 7000 vibration [5,3000000026,]
{"middle": 0, "log": false, "kafka_enable": false, "kafka_topic": "t", "calc_source": 0} => 0 0 10000 30000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"analyze_module": 3000000, "control_task": 2147483, "middle": 4294967297} => 0 1 -1294967296 2147483000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"analyze_module": 10000000000000000} => 0 1 -1981284352 2147483000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
)",
           [&](const std::string& document) {
             if (document == "-")
               exec("DELETE FROM vek_calculation");
             else
               exec("INSERT INTO vek_calculation (id, settings) VALUES (1, " +
                    (document == "NULL" ? document : sql().quote(document)) +
                    ") ON CONFLICT (id) DO UPDATE SET settings = excluded.settings");
             calculation.readVekSettings();
             const Calculation& c = calculation;
             std::ostringstream s;
             s << c.getLog() << " " << c.getMiddle() << " " << c.getIntervalAnalyzeModule() << " "
               << c.getIntervalControlTask() << " " << c.getKafkaEnable() << " "
               << c.getKafkaClientId() << " " << c.getKafkaTopic() << " [";
             for (const long source : {-8L, -7L, 1L, 2L, 3L, 4L, 5L, 6L, 7L, 8L, 9L, 3000000026L})
               s << (c.enableCalcSource(source) ? std::to_string(source) + "," : "");
             return s.str() + "]";
           });
}

TEST(MeasurementLoop, TimerPastItsPeriodHoldsAndNeverLeavesTheIntRange) {
  // Below its period a timer takes every pass's duration, up to the first pass beyond it; then it
  // holds, runs on under a longer period, stops under 0, and never passes the int range.
  int timer = 290000, top = 2147483000;
  for (int pass = 0; pass < 100000; ++pass)
    MeasurementLoop::advanceTimer(timer, 300000, 30000);
  EXPECT_EQ(timer, 320000);
  MeasurementLoop::advanceTimer(timer, 1200000, 30000);
  MeasurementLoop::advanceTimer(timer, 0, 30000);
  EXPECT_EQ(timer, 350000);
  MeasurementLoop::advanceTimer(top, 2147483000, 30000);
  MeasurementLoop::advanceTimer(top, 2147483000, 30000);
  EXPECT_EQ(top, std::numeric_limits<int>::max());
  // Machine 7 last reckoned at 120 s, 8 never; a clock below the last pass has wrapped: due.
  std::string due;
  for (const auto& [machine, clock] : std::vector<std::pair<int, int>>{
           {7, 120000}, {7, 130000}, {7, 130001}, {8, 120000}, {8, 0}, {7, 0}, {7, 119999}})
    due += MeasurementLoop::aggregateStatusDue({{7, 120000}}, machine, clock) ? "1" : "0";
  EXPECT_EQ(due, "0011111");
}
