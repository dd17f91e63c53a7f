// The instance record against real VEK_CALCULATION rows: registration, version and progress,
// and a sequence of settings documents read into one instance.
#include <sstream>
#include <string>

#include "process/Calculation.h"
#include "support/StoreTest.h"

class CalculationTest : public vek_test::StoreTest {};

TEST_F(CalculationTest, RegistrationAndProgressTouchOnlyTheOwnRow) {
  exec("INSERT INTO vek_calculation (id, ip, lag, settings) VALUES (1, '10.0.0.1', 12, "
       "'{\"middle\": 100}'), (3, NULL, NULL, NULL)");
  Calculation known(&store(), 1), fresh(&store(), 2), third(&store(), 3);
  EXPECT_EQ(known.getMiddle(), 0) << "the constructor does not touch the database";
  EXPECT_TRUE(known.initCalculation("10.0.0.9"));
  EXPECT_TRUE(fresh.initCalculation("10.0.0.2"));
  EXPECT_EQ(known.getMiddle() + fresh.getMiddle(), 100) << "a new row's settings wait";
  third.setVersion("{\"vek\": \"1.2.3\"}");
  third.updateCalc(-1, 501, "2024-5-1 9:7:3");
  EXPECT_EQ(
      scalar("SELECT string_agg(format('%s|%s|%s|%s|%s|%s|%s', id, ip, lag, settings, version, "
             "last_calculated, sync_time), ' / ' ORDER BY id) FROM vek_calculation"),
      "1|10.0.0.9|12|{\"middle\": 100}||| / 2|10.0.0.2|0|||| / "
      "3||-1||{\"vek\": \"1.2.3\"}|501|2024-05-01 09:07:03");
}

TEST_F(CalculationTest, SettingsAreTakenInTurnAndKeptWhenDropped) {
  // A settings document (NULL: none; -: no row at all) => log, middle, analysis and control
  // periods (ms), Kafka on, client id, topic, and which of the sources -8, -7, 1..9 and
  // 3000000026 the instance computes; read in turn into one instance.
  std::istringstream table(R"(
-                                                                      => 0 0 1200000 300000 0 0  [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"source": [5, 9], "calc_source": 1, "remainder": 0, "middle": 10, "log": true, "analyze_module": 600, "control_task": 60, "kafka_client_id": 7, "kafka_topic": "vibration", "kafka_enable": true} => 1 10 600000 60000 1 7000 vibration [5,9,]
# A key dropped keeps its value until the process restarts; a text that is no object, holds
# no usable key, or is missing changes nothing.
{"control_task": 30}                                                   => 1 10 600000 30000 1 7000 vibration [5,9,]
not json                                                               => 1 10 600000 30000 1 7000 vibration [5,9,]
[1, 2]                                                                 => 1 10 600000 30000 1 7000 vibration [5,9,]
{}                                                                     => 1 10 600000 30000 1 7000 vibration [5,9,]
{"calc_source": null}                                                  => 1 10 600000 30000 1 7000 vibration [5,9,]
{"x": {}}                                                              => 1 10 600000 30000 1 7000 vibration [5,9,]
NULL                                                                   => 1 10 600000 30000 1 7000 vibration [5,9,]
-                                                                      => 1 10 600000 30000 1 7000 vibration [5,9,]
# Empty arrays keep a number but empty the list; a single-valued key takes an array's first.
{"calc_source": 2, "remainder": 1, "middle": 5, "analyze_module": 10, "source": [4]} => 1 5 10000 30000 1 7000 vibration [1,3,5,7,9,]
{"calc_source": [], "remainder": [], "middle": [], "analyze_module": [], "source": []} => 1 5 10000 30000 1 7000 vibration [1,3,5,7,9,]
{"calc_source": 1}                                                     => 1 5 10000 30000 1 7000 vibration []
{"calc_source": [3, 5], "remainder": [2]}                              => 1 5 10000 30000 1 7000 vibration [2,5,8,3000000026,]
# The division rules; the remainder has the sign of the source; sources are 64-bit.
{"calc_source": 3, "remainder": 1}                                     => 1 5 10000 30000 1 7000 vibration [1,4,7,]
{"calc_source": 3, "remainder": -1}                                    => 1 5 10000 30000 1 7000 vibration [-7,]
{"calc_source": 0, "source": [2]}                                      => 1 5 10000 30000 1 7000 vibration [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"calc_source": 1, "source": [2, 8, 100]}                              => 1 5 10000 30000 1 7000 vibration [2,8,]
{"calc_source": 1, "source": 5}                                        => 1 5 10000 30000 1 7000 vibration [5,]
{"calc_source": -2}                                                    => 1 5 10000 30000 1 7000 vibration []
{"calc_source": 4, "remainder": 4}                                     => 1 5 10000 30000 1 7000 vibration []
{"calc_source": 2, "remainder": 0}                                     => 1 5 10000 30000 1 7000 vibration [-8,2,4,6,8,3000000026,]
{"calc_source": 1000000007, "remainder": 5}                            => 1 5 10000 30000 1 7000 vibration [5,3000000026,]
# "middle" 0 is taken (the loop then keeps its command line's); periods beyond the
# millisecond range wrap as the 32-bit timer does, even beyond 64 bits.
{"middle": 0, "log": false, "kafka_enable": false, "kafka_topic": "t", "calc_source": 0} => 0 0 10000 30000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"analyze_module": 3000000, "control_task": 2147483, "middle": 4294967297} => 0 1 -1294967296 2147483000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
{"analyze_module": 10000000000000000}                                  => 0 1 -1981284352 2147483000 0 7000 t [-8,-7,1,2,3,4,5,6,7,8,9,3000000026,]
)");
  exec("DELETE FROM vek_calculation");
  Calculation calculation(&store(), 1);
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line[0] == '#') {
      continue;
    }
    std::string document = line.substr(0, line.find(" =>"));
    document.erase(document.find_last_not_of(' ') + 1);
    if (document == "-") {
      exec("DELETE FROM vek_calculation");
    } else {
      exec("INSERT INTO vek_calculation (id, settings) VALUES (1, " +
           (document == "NULL" ? document : sql().quote(document)) +
           ") ON CONFLICT (id) DO UPDATE SET settings = excluded.settings");
    }
    calculation.readVekSettings();
    const Calculation& c = calculation;
    std::string sources = " [";
    for (const long source : {-8L, -7L, 1L, 2L, 3L, 4L, 5L, 6L, 7L, 8L, 9L, 3000000026L}) {
      sources += c.enableCalcSource(source) ? std::to_string(source) + "," : "";
    }
    std::ostringstream settings;
    settings << c.getLog() << " " << c.getMiddle() << " " << c.getIntervalAnalyzeModule() << " "
             << c.getIntervalControlTask() << " " << c.getKafkaEnable() << " "
             << c.getKafkaClientId() << " " << c.getKafkaTopic() << sources << "]";
    EXPECT_EQ(settings.str(), line.substr(line.find("=> ") + 3)) << document;
  }
}
