// Telemetry values against the corridors of their displays, and the defects of a vibration
// computation, turned into notifications over real tables: module 42 on pump 1 (control point
// 11, channel 100). Which codes and recommendations a corridor raises is the data of each
// display's message settings.
#include <string>

#include <gtest/gtest.h>

#include "TelemetryRoad.h"

namespace {

using namespace vek_test;

class ThresholdControl : public TelemetryTest {
protected:
  // Battery (low is bad: green 30, yellow 20, orange 10 %) raising 1201 with recommendations
  // 41 (orange) and 42 (yellow); signal strength in dBm (low is bad: -80, -90, -100) raising
  // 1202 with recommendation 43 for any level; temperature (high is bad) raising 1203, but
  // with its corridor switched off; the reset counter with no messages.
  static PlantBuilder plant(double rssi_yellow = -90, double rssi_orange = -100) {
    PlantBuilder rows = machine(42, 10);
    rows.add(telemetryShown(501, "TEMP")
                 .thresholds(40, 60, 80)
                 .corridorActive(false)
                 .messageSettings(messageSettings({{"corridorActive", {{"1203", {}}}}})))
        .add(telemetryShown(502, "RSSI")
                 .thresholds(-80, rssi_yellow, rssi_orange)
                 .corridorActive(true)
                 .messageSettings(messageSettings({{"corridorActive", {{"1202", {43}}}}})))
        .add(telemetryShown(503, "RESET_COUNT").thresholds(100, 200, 300).corridorActive(true))
        .add(telemetryShown(504, "U_BATTERY")
                 .thresholds(30, 20, 10)
                 .corridorActive(true)
                 .messageSettings(messageSettings({{"corridorActive", {{"1201", {41, 42}}}}})))
        .add(MessageRow("1201"))
        .add(MessageRow("1202"))
        .add(MessageRow("1203"))
        .add(RecommendationRow(41, "1201").typeMessage(3))
        .add(RecommendationRow(42, "1201").typeMessage(2))
        .add(RecommendationRow(43, "1202"));
    return rows;
  }

  // A believed block: temperature 90 (past its orange 80), the counter steady at 5.
  static MeasurementRow block(int id, const std::string& date, int rssi, int battery) {
    return MeasurementRow(id, 42).module(10, 0).at(date).telemetry(90, rssi, 5, battery);
  }

  void road(int id, bool replay = false) {
    Measurement m = load(id, replay);
    ASSERT_TRUE(telemetryRow(m));
  }
};

TEST_F(ThresholdControl, BatteryCorridorRaisesItsCodeWithTheRecommendationOfTheLevel) {
  PlantBuilder rows = plant();
  rows.add(block(1001, "2024-05-01 10:00:00", -70, 15))
      .add(block(1002, "2024-05-02 10:00:00", -70, 7))
      .add(block(1003, "2024-05-03 10:00:00", -70, 20));
  rows.insert(sql());

  // 15 % is below yellow 20: level 2, recommendation 42, the charge as the text.
  road(1001);
  // 7 % is below orange 10 as well: level 3, recommendation 41.
  road(1002);
  // 20 % lies on yellow and crosses nothing.
  road(1003);
  EXPECT_EQ(notes("1201"), "2024-05-01 10:00:00|0|2|42|100|11|15 %|42|NULL|f\n"
                           "2024-05-02 10:00:00|0|3|42|100|11|7 %|41|NULL|f\n");
  EXPECT_NE(logText().find("recommendation for U_BATTERY: 15 error: 1201\n"), std::string::npos);
  // The temperature of 90 is past its orange 80 every time, but its corridor is switched off.
  EXPECT_EQ(notes("1203"), "");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification"), "2");
}

TEST_F(ThresholdControl, HighValuesAreBadUnlessYellowLiesAboveOrange) {
  // Module temperature rising through yellow 10 and orange 20: high is bad. One row a day, so
  // that the store's once-a-day rule for a code keeps none of them out.
  PlantBuilder rows = machine(42, 10);
  rows.add(telemetryShown(501, "TEMP")
               .thresholds(0, 10, 20)
               .corridorActive(true)
               .messageSettings(messageSettings({{"corridorActive", {{"1203", {}}}}})))
      .add(MessageRow("1203"));
  const int temperatures[] = {15, 25, 10, 11, 10};
  for (int day = 1; day <= 5; ++day) {
    rows.add(MeasurementRow(1000 + day, 42)
                 .module(10, 0)
                 .at("2024-05-0" + std::to_string(day) + " 10:00:00")
                 .telemetry(temperatures[day - 1], -70, 5, 90));
  }
  rows.insert(sql());
  // 15 is above yellow 10: level 2. 25 is above orange 20 as well: level 3. 10 lies on yellow
  // and crosses nothing.
  road(1001);
  road(1002);
  road(1003);
  // Yellow equal to orange keeps the high-is-bad order: 11 crosses both, level 3; 10 neither.
  exec("UPDATE visualization SET yellow = 10, orange = 10 WHERE id = 501");
  road(1004);
  road(1005);
  EXPECT_EQ(notes("1203"), "2024-05-01 10:00:00|0|2|42|100|11|NULL|NULL|NULL|f\n"
                           "2024-05-02 10:00:00|0|3|42|100|11|NULL|NULL|NULL|f\n"
                           "2024-05-04 10:00:00|0|3|42|100|11|NULL|NULL|NULL|f\n");
  EXPECT_NE(logText().find("recommendation for TEMP: 25 error: 1203\n"), std::string::npos);
}

TEST_F(ThresholdControl, WeakSignalMustLastThreeReadings) {
  PlantBuilder rows = plant();
  rows.add(block(1001, "2024-05-01 10:00:00", -95, 90))
      .add(block(1002, "2024-05-01 11:00:00", -96, 90))
      .add(block(1003, "2024-05-01 12:00:00", -97, 90))
      .add(block(1004, "2024-05-02 10:00:00", -85, 90))
      .add(block(1005, "2024-05-02 11:00:00", -95, 90))
      .add(block(1006, "2024-05-03 10:00:00", -105, 90))
      .add(block(1007, "2024-05-03 11:00:00", -106, 90))
      .add(block(1008, "2024-05-03 12:00:00", -107, 90));
  rows.insert(sql());
  for (int id = 1001; id <= 1008; ++id) {
    SCOPED_TRACE(id);
    road(id);
  }
  // 1001 has no stored reading before it, 1002 only one: nothing. 1003 (-97 after -96, -95)
  // stayed below yellow -90 three times: level 2. 1005 follows -85 and raises nothing. 1006
  // follows -85 as well. 1007 (-106 after -105, -95) stayed below yellow but -95 is not below
  // orange: level 2. 1008 (-107 after -106, -105) stayed below orange -100: level 3.
  EXPECT_EQ(notes("1202"), "2024-05-01 12:00:00|0|2|42|100|11|NULL|43|NULL|f\n"
                           "2024-05-03 11:00:00|0|2|42|100|11|NULL|43|NULL|f\n"
                           "2024-05-03 12:00:00|0|3|42|100|11|NULL|43|NULL|f\n");
}

TEST_F(ThresholdControl, SignalLookBackJudgesLowBadWhateverTheThresholdOrder) {
  // Thresholds that rise (yellow -100 below orange -90) make the first test one for high
  // values: -95 crosses yellow upward and starts the look-back, which then asks whether the
  // three readings stayed below orange -90; they did, so level 3.
  PlantBuilder rows = plant(-100, -90);
  rows.add(block(1001, "2024-05-01 10:00:00", -93, 90))
      .add(block(1002, "2024-05-01 11:00:00", -94, 90))
      .add(block(1003, "2024-05-01 12:00:00", -95, 90));
  rows.insert(sql());
  road(1001);
  road(1002);
  road(1003);
  EXPECT_EQ(notes("1202"), "2024-05-01 12:00:00|0|3|42|100|11|NULL|43|NULL|f\n");
}

TEST_F(ThresholdControl, SwitchedOffCodesAndReplaysRaiseNothing) {
  PlantBuilder rows = plant();
  rows.statement("UPDATE list_of_messages SET visible = false WHERE code = '1201';")
      .add(block(1001, "2024-05-01 10:00:00", -70, 7));
  rows.insert(sql());
  road(1001);
  EXPECT_EQ(notes("1201"), "");
  EXPECT_EQ(logText().find("recommendation for"), std::string::npos);

  exec("UPDATE list_of_messages SET visible = true WHERE code = '1201'");
  road(1001, true);
  EXPECT_EQ(notes("1201"), "");
}

TEST_F(ThresholdControl, DefectsOfAPointBecomeMessagesAboveTwoThousand) {
  PlantBuilder rows = machine(42, 10);
  rows.add(MessageRow("2003"))
      .add(MessageRow("2005").visible(false))
      .add(MessageRow("2007"))
      .add(RecommendationRow(51, "2003").typeMessage(2))
      .add(MeasurementRow(1001, 42).module(10, 1).at("2024-05-01 10:00:00"));
  rows.insert(sql());

  Measurement m = load(1001);
  ASSERT_EQ(m.aggregate->control_points.size(), 1u);
  m->setControlPoint(m.aggregate->control_points.front());
  // Defect 3 at level 1, defect 5 (its message switched off) and defect 7 at level 0.
  m->defects = {{3, 1}, {5, 2}, {7, 0}};
  m->control_defects();
  // The level plus one is the message type; 2003 finds its recommendation for type 2.
  EXPECT_EQ(notes("2003"), "2024-05-01 10:00:00|0|2|42|100|11|NULL|51|NULL|f\n");
  EXPECT_EQ(notes("2005"), "");
  EXPECT_EQ(notes("2007"), "2024-05-01 10:00:00|0|1|42|100|11|NULL|NULL|NULL|f\n");
}

} // namespace
