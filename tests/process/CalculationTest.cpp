// The instance record against real VEK_CALCULATION rows: registration, version and progress,
// the settings document and how two instances divide the modules between them.
#include <string>
#include <vector>

#include "process/Calculation.h"
#include "support/PlantBuilder.h"
#include "support/StoreTest.h"

namespace {

using namespace vek_test;

class CalculationTest : public StoreTest {
protected:
  void SetUp() override {
    StoreTest::SetUp();
    PlantBuilder::emptyTables(sql());
  }

  void setSettings(int id, const std::string& json) {
    exec("UPDATE vek_calculation SET settings = " + sqlQuoted(json) +
         " WHERE id = " + std::to_string(id));
  }

  // Instance 1 with the settings document json, read once.
  Calculation instanceWith(const std::string& json) {
    PlantBuilder plant;
    plant.add(InstanceRow(1).settings(json));
    plant.insert(sql());
    Calculation calculation(&store(), 1);
    calculation.readVekSettings();
    return calculation;
  }

  // The sources among 1..n that the instance computes.
  static std::vector<long> enabled(const Calculation& calculation, long n) {
    std::vector<long> sources;
    for (long source = 1; source <= n; ++source) {
      if (calculation.enableCalcSource(source)) {
        sources.push_back(source);
      }
    }
    return sources;
  }
};

TEST_F(CalculationTest, NewInstanceIsRegisteredWithoutSettings) {
  PlantBuilder plant;
  plant.add(InstanceRow(1).ip("10.0.0.1").settings("{\"log\": true}"));
  plant.insert(sql());

  Calculation calculation(&store(), 2);
  EXPECT_TRUE(calculation.initCalculation("10.0.0.2"));
  EXPECT_EQ(scalar("SELECT ip || ' ' || lag FROM vek_calculation WHERE id = 2"), "10.0.0.2 0");
  EXPECT_EQ(scalar("SELECT settings IS NULL FROM vek_calculation WHERE id = 2"), "t");
  EXPECT_EQ(scalar("SELECT ip FROM vek_calculation WHERE id = 1"), "10.0.0.1")
      << "the other instance's row is untouched";
  EXPECT_FALSE(calculation.getLog()) << "a new instance reads no settings at registration";

  // The loop's first read finds the NULL settings and keeps the defaults.
  calculation.readVekSettings();
  EXPECT_FALSE(calculation.getLog());
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), 1200000);
  EXPECT_EQ(calculation.getIntervalControlTask(), 300000);
  EXPECT_EQ(calculation.getMiddle(), 0);
  EXPECT_FALSE(calculation.getKafkaEnable());
  EXPECT_EQ(calculation.getKafkaClientId(), 0);
  EXPECT_EQ(calculation.getKafkaTopic(), "");
}

TEST_F(CalculationTest, KnownInstanceGetsItsAddressReplacedAndItsSettingsRead) {
  PlantBuilder plant;
  plant.add(
      InstanceRow(3)
          .ip("10.0.0.1")
          .lag(12)
          .settings("{\"log\": true, \"middle\": 100, \"calc_source\": 2, \"remainder\": 1}"));
  plant.insert(sql());

  Calculation calculation(&store(), 3);
  EXPECT_FALSE(calculation.getLog()) << "the constructor does not touch the database";
  EXPECT_TRUE(calculation.initCalculation("10.0.0.9"));
  EXPECT_EQ(scalar("SELECT ip || ' ' || lag FROM vek_calculation WHERE id = 3"), "10.0.0.9 12");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM vek_calculation"), "1");
  EXPECT_TRUE(calculation.getLog());
  EXPECT_EQ(calculation.getMiddle(), 100);
  EXPECT_EQ(enabled(calculation, 6), (std::vector<long>{1, 3, 5}));
}

TEST_F(CalculationTest, VersionAndProgressAreWrittenToTheOwnRow) {
  PlantBuilder plant;
  plant.add(InstanceRow(1)).add(InstanceRow(2));
  plant.insert(sql());

  Calculation calculation(&store(), 2);
  calculation.setVersion("{\"vek\": \"1.2.3\"}");
  calculation.updateCalc(-1, 501, "2024-5-1 9:7:3");
  EXPECT_EQ(scalar("SELECT version FROM vek_calculation WHERE id = 2"), "{\"vek\": \"1.2.3\"}");
  EXPECT_EQ(scalar("SELECT lag || ' ' || last_calculated || ' ' || sync_time FROM "
                   "vek_calculation WHERE id = 2"),
            "-1 501 2024-05-01 09:07:03");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM vek_calculation WHERE id = 1 AND version IS NULL AND "
                   "lag IS NULL"),
            "1");
}

TEST_F(CalculationTest, EverySettingIsTakenWithItsConversion) {
  const Calculation calculation = instanceWith(
      "{\"source\": [5, 9], \"calc_source\": 1, \"remainder\": 0, \"middle\": 10, \"log\": true, "
      "\"analyze_module\": 600, \"control_task\": 60, \"kafka_client_id\": 7, "
      "\"kafka_topic\": \"vibration\", \"kafka_enable\": true}");
  EXPECT_TRUE(calculation.getLog());
  EXPECT_EQ(calculation.getMiddle(), 10);
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), 600000);
  EXPECT_EQ(calculation.getIntervalControlTask(), 60000);
  EXPECT_TRUE(calculation.getKafkaEnable());
  EXPECT_EQ(calculation.getKafkaClientId(), 7000) << "scaled like the periods";
  EXPECT_EQ(calculation.getKafkaTopic(), "vibration");
  EXPECT_EQ(enabled(calculation, 12), (std::vector<long>{5, 9}));
}

TEST_F(CalculationTest, RemovedOrUnreadableSettingsKeepTheirLastValues) {
  Calculation calculation =
      instanceWith("{\"log\": true, \"middle\": 10, \"analyze_module\": "
                   "600, \"calc_source\": 3, \"remainder\": 1, \"source\": 4}");
  EXPECT_EQ(enabled(calculation, 9), (std::vector<long>{1, 4, 7}));

  // A key dropped from the document keeps its value until the process restarts.
  setSettings(1, "{\"control_task\": 30}");
  calculation.readVekSettings();
  EXPECT_TRUE(calculation.getLog());
  EXPECT_EQ(calculation.getMiddle(), 10);
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), 600000);
  EXPECT_EQ(calculation.getIntervalControlTask(), 30000);
  EXPECT_EQ(enabled(calculation, 9), (std::vector<long>{1, 4, 7}));

  // Not a document, not an object, an empty one, NULL, no row at all: nothing changes.
  for (const char* text : {"not json", "[1, 2]", "{}", "{\"calc_source\": null}", "{\"x\": {}}"}) {
    SCOPED_TRACE(text);
    setSettings(1, text);
    calculation.readVekSettings();
    EXPECT_TRUE(calculation.getLog());
    EXPECT_EQ(calculation.getMiddle(), 10);
    EXPECT_EQ(calculation.getIntervalControlTask(), 30000);
    EXPECT_EQ(enabled(calculation, 9), (std::vector<long>{1, 4, 7}));
  }
  exec("UPDATE vek_calculation SET settings = NULL");
  calculation.readVekSettings();
  EXPECT_EQ(calculation.getMiddle(), 10);
  exec("DELETE FROM vek_calculation");
  calculation.readVekSettings();
  EXPECT_EQ(calculation.getMiddle(), 10);
  EXPECT_EQ(enabled(calculation, 9), (std::vector<long>{1, 4, 7}));

  // "middle" 0 is taken; the loop then keeps the middle of its command line.
  PlantBuilder plant;
  plant.add(InstanceRow(1).settings("{\"middle\": 0, \"log\": false}"));
  plant.insert(sql());
  calculation.readVekSettings();
  EXPECT_EQ(calculation.getMiddle(), 0);
  EXPECT_FALSE(calculation.getLog());
}

TEST_F(CalculationTest, EmptyArrayKeepsANumericSetting) {
  Calculation calculation = instanceWith("{\"calc_source\": 2, \"remainder\": 1, \"middle\": 5, "
                                         "\"analyze_module\": 10, \"source\": [4, 6]}");
  EXPECT_EQ(enabled(calculation, 6), (std::vector<long>{1, 3, 5}));

  setSettings(1, "{\"calc_source\": [], \"remainder\": [], \"middle\": [], \"analyze_module\": "
                 "[], \"source\": []}");
  calculation.readVekSettings();
  EXPECT_EQ(calculation.getMiddle(), 5);
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), 10000);
  EXPECT_EQ(enabled(calculation, 6), (std::vector<long>{1, 3, 5}));

  // The list itself may be emptied: with calc_source 1 the instance then computes nothing.
  setSettings(1, "{\"calc_source\": 1}");
  calculation.readVekSettings();
  EXPECT_TRUE(enabled(calculation, 6).empty());
  // An array's first element is the value of a single-valued key.
  setSettings(1, "{\"calc_source\": [3, 5], \"remainder\": [2]}");
  calculation.readVekSettings();
  EXPECT_EQ(enabled(calculation, 9), (std::vector<long>{2, 5, 8}));
}

TEST_F(CalculationTest, PeriodsBeyondTheMillisecondRangeWrapAsThe32BitTimerDoes) {
  Calculation calculation = instanceWith(
      "{\"analyze_module\": 3000000, \"control_task\": 2147483, \"middle\": 4294967297}");
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), -1294967296) << "3e9 modulo 2^32";
  EXPECT_EQ(calculation.getIntervalControlTask(), 2147483000) << "the largest period that fits";
  EXPECT_EQ(calculation.getMiddle(), 1);
  setSettings(1, "{\"analyze_module\": 10000000000000000}");
  calculation.readVekSettings();
  EXPECT_EQ(calculation.getIntervalAnalyzeModule(), -1981284352)
      << "the product beyond 64 bits wraps too, instead of being undefined";
}

TEST_F(CalculationTest, DivisionRules) {
  Calculation calculation(&store(), 1);
  EXPECT_EQ(enabled(calculation, 5).size(), 5u) << "before any settings every module is held";

  PlantBuilder plant;
  plant.add(InstanceRow(1));
  plant.insert(sql());
  struct Case {
    const char* settings;
    std::vector<long> sources; // of 1..9
  };
  const Case cases[] = {
      {"{\"calc_source\": 3, \"remainder\": 1}", {1, 4, 7}},
      {"{\"calc_source\": 0, \"source\": [2]}", {1, 2, 3, 4, 5, 6, 7, 8, 9}},
      {"{\"calc_source\": 1, \"source\": [2, 8, 100]}", {2, 8}},
      {"{\"calc_source\": 1, \"source\": 5}", {5}},
      {"{\"calc_source\": -2}", {}},
      {"{\"calc_source\": 4, \"remainder\": 4}", {}},
      {"{\"calc_source\": 2, \"remainder\": 0}", {2, 4, 6, 8}},
  };
  for (const auto& item : cases) {
    SCOPED_TRACE(item.settings);
    setSettings(1, item.settings);
    calculation.readVekSettings();
    EXPECT_EQ(enabled(calculation, 9), item.sources);
  }
  // The remainder of truncating division has the sign of the source.
  setSettings(1, "{\"calc_source\": 3, \"remainder\": -1, \"source\": []}");
  calculation.readVekSettings();
  EXPECT_TRUE(calculation.enableCalcSource(-7));
  EXPECT_FALSE(calculation.enableCalcSource(-8));
  EXPECT_FALSE(calculation.enableCalcSource(2));
  // Module addresses are 64-bit.
  setSettings(1, "{\"calc_source\": 1000000007, \"remainder\": 5}");
  calculation.readVekSettings();
  EXPECT_TRUE(calculation.enableCalcSource(3000000026L));
}

TEST_F(CalculationTest, TwoInstancesShareTheModulesExactlyOnce) {
  PlantBuilder plant;
  plant.add(InstanceRow(1).settings("{\"calc_source\": 2, \"remainder\": 0}"))
      .add(InstanceRow(2).settings("{\"calc_source\": 2, \"remainder\": 1}"));
  for (long source = 1001; source <= 1010; ++source) {
    plant.add(ModuleRow(static_cast<int>(source), source, 10));
  }
  plant.insert(sql());

  Calculation first(&store(), 1);
  Calculation second(&store(), 2);
  ASSERT_TRUE(first.initCalculation("10.0.0.1"));
  ASSERT_TRUE(second.initCalculation("10.0.0.2"));
  const pqxx::result modules = query("SELECT source FROM module ORDER BY source");
  ASSERT_EQ(modules.size(), 10u);
  int held_by_first = 0;
  for (const auto& row : modules) {
    const long source = row[0].as<long>();
    SCOPED_TRACE(source);
    EXPECT_NE(first.enableCalcSource(source), second.enableCalcSource(source));
    held_by_first += first.enableCalcSource(source) ? 1 : 0;
  }
  EXPECT_EQ(held_by_first, 5);

  // Each row's settings stand alone: a fixed list for one instance does not take its modules
  // from the other, so an overlap is the operators' to avoid.
  setSettings(1, "{\"calc_source\": 1, \"source\": [1001, 1003]}");
  first.readVekSettings();
  EXPECT_TRUE(first.enableCalcSource(1001));
  EXPECT_TRUE(first.enableCalcSource(1003));
  EXPECT_FALSE(first.enableCalcSource(1002));
  EXPECT_TRUE(second.enableCalcSource(1003));
}

} // namespace
