// Whether a module's telemetry block is believed, and what it writes, over real tables: module
// 42 on pump 1 (control point 11, channel 100) sends temperature, signal strength, reset counter
// and battery in rows without a measurement; the history that judges a block is what earlier
// rows wrote through the same road.
#include <string>

#include <gtest/gtest.h>

#include "store/StoreErrors.h"

#include "TelemetryRoad.h"

namespace {

using namespace vek_test;

class TelemetryControl : public TelemetryTest {
protected:
  // Module 42 of type 10 with the four telemetry displays and the module's three messages.
  static PlantBuilder plant() {
    PlantBuilder rows = machine(42, 10);
    rows.add(telemetryShown(501, "TEMP"))
        .add(telemetryShown(502, "RSSI"))
        .add(telemetryShown(503, "RESET_COUNT"))
        .add(telemetryShown(504, "U_BATTERY"))
        .add(MessageRow("11"))
        .add(MessageRow("29"))
        .add(MessageRow("4"))
        .statement("UPDATE module SET hardware_status = 0;");
    return rows;
  }

  static MeasurementRow block(int id, const std::string& date, int rssi, int reset_count,
                              int battery, int type_mod = 10) {
    return MeasurementRow(id, 42)
        .module(type_mod, 0)
        .at(date)
        .telemetry(21, rssi, reset_count, battery);
  }

  bool road(int id, bool replay = false) {
    Measurement m = load(id, replay);
    return telemetryRow(m);
  }
};

TEST_F(TelemetryControl, RebootsWithinADayAreConfirmedByThePreviousBlock) {
  PlantBuilder rows = plant();
  // Counter 10 in the evening, 11 in the morning, 12 at ten: two restarts within a day.
  rows.add(block(999, "2024-04-30 20:00:00", -70, 10, 90))
      .add(block(1000, "2024-05-01 06:00:00", -71, 11, 90))
      .add(block(1001, "2024-05-01 10:00:00", -72, 12, 89));
  rows.insert(sql());

  EXPECT_TRUE(road(999));
  // 11 is one restart above the day's oldest 10: a module may restart once a day.
  EXPECT_TRUE(road(1000));
  EXPECT_EQ(notes("11"), "");
  // 12 is more than one above 10, and the previous block (11) confirms the counter moved.
  EXPECT_TRUE(road(1001));
  EXPECT_EQ(notes("11"), "2024-05-01 10:00:00|1|2|42|100|11|NULL|NULL|NULL|f\n");
  EXPECT_EQ(hardwareStatus(), "32"); // bit 5
  EXPECT_EQ(notes("29"), "");

  // The block of each row is the history of the next: the counter display holds every value.
  EXPECT_EQ(scalar("SELECT string_agg(value::text, ',' ORDER BY param_info_id) FROM result_base "
                   "WHERE visualization_id = 503"),
            "10,11,12");
  EXPECT_EQ(scalar("SELECT latest_raw_value || ' at ' || value_at FROM visualization "
                   "WHERE id = 504"),
            "89 at 2024-05-01 10:00:00");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM math_history WHERE param_info_id = 1001"), "1");
}

TEST_F(TelemetryControl, CounterWithoutHistoryWithinADayRaisesNothing) {
  PlantBuilder rows = plant();
  // The last counter was stored three days ago: a jump from 10 to 12 since is no evidence.
  rows.add(block(998, "2024-04-28 10:00:00", -70, 10, 90))
      .add(block(1001, "2024-05-01 10:00:00", -70, 12, 90));
  rows.insert(sql());
  EXPECT_TRUE(road(998));
  EXPECT_TRUE(road(1001));
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification"), "0");
  EXPECT_EQ(hardwareStatus(), "0");
}

TEST_F(TelemetryControl, ZeroSignalIsBelievedOnlyAfterARestart) {
  PlantBuilder rows = plant();
  rows.add(block(1000, "2024-05-01 06:00:00", -70, 12, 90))
      // Signal 0 with the counter still at 12: garbage.
      .add(block(1001, "2024-05-01 10:00:00", 0, 12, 90))
      // Signal 0 with the counter one up: what a module sends right after a restart.
      .add(block(1002, "2024-05-01 11:00:00", 0, 13, 90));
  rows.insert(sql());

  EXPECT_TRUE(road(1000));
  EXPECT_FALSE(road(1001));
  EXPECT_NE(logText().find("RSSI=0 error, RESET_COUNT did not change\n"), std::string::npos);
  EXPECT_EQ(notes("29"), "2024-05-01 10:00:00|1|2|42|100|11|NULL|NULL|NULL|f\n");
  EXPECT_EQ(hardwareStatus(), "64"); // bit 6
  // A block that is not believed is not written.
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_base WHERE param_info_id = 1001"), "0");

  EXPECT_TRUE(road(1002));
  EXPECT_NE(logText().find("RSSI=0 not error, RESET_COUNT +1\n"), std::string::npos);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_base WHERE param_info_id = 1002"), "4");
}

TEST_F(TelemetryControl, BatteryOfZeroOrBelowIsNotBelieved) {
  PlantBuilder rows = plant();
  // The wired vibration module (type 3) has no battery: its 0 is no fault.
  rows.add(block(1001, "2024-05-01 10:00:00", -70, 5, 0, 3))
      // A wireless temperature module (type 103) reporting an empty battery is garbled.
      .add(block(1002, "2024-05-01 10:10:00", -70, 5, 0, 103))
      // A negative charge is garbled on any module.
      .add(block(1003, "2024-05-01 10:20:00", -70, 5, -1, 3))
      // Without a reset counter the block is believed whatever the rest says.
      .add(MeasurementRow(1004, 42)
               .module(103, 0)
               .at("2024-05-01 10:30:00")
               .telemetryJson({{"temperature", 21}, {"rssi", 0}, {"battery", 0}}));
  rows.insert(sql());

  EXPECT_TRUE(road(1001));
  EXPECT_FALSE(road(1002));
  EXPECT_NE(logText().find("error: TU param U_BATTERY= 0\n"), std::string::npos);
  EXPECT_EQ(logText().find("error: TU < 0\n"), std::string::npos);
  EXPECT_FALSE(road(1003));
  EXPECT_NE(logText().find("error: TU < 0\n"), std::string::npos);
  // Judged alone: the road would go on to write the block, whose counter display has no
  // reading here.
  Measurement without_counter = load(1004);
  EXPECT_TRUE(without_counter->control_tu(without_counter.shown->getData({2}, 100, 11)));
  // One "29" for the module within the day: the store keeps the repeat of 10:20 out.
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification WHERE message_code = '29'"), "1");
  EXPECT_EQ(hardwareStatus(), "64");
}

TEST_F(TelemetryControl, ReplayJudgesAlikeButRaisesOnlyTheModulesOwnState) {
  PlantBuilder rows = plant();
  rows.add(block(1000, "2024-05-01 06:00:00", -70, 12, 90))
      .add(block(1001, "2024-05-01 10:00:00", 0, 12, 90))
      .add(MeasurementRow(1002, 42)
               .module(103, 0)
               .at("2024-05-01 11:00:00")
               .telemetryJson({{"temperature", 21},
                               {"rssi", -70},
                               {"count0", 13},
                               {"battery", 90},
                               {"state", 3}}));
  rows.insert(sql());

  EXPECT_TRUE(road(1000, true));
  EXPECT_FALSE(road(1001, true));
  EXPECT_EQ(notes("29"), "");
  EXPECT_EQ(hardwareStatus(), "0");
  // The module's own fault state is its word, not this service's conclusion: noted in replay
  // too, with the module's address as the text.
  EXPECT_TRUE(road(1002, true));
  EXPECT_EQ(notes("4"), "2024-05-01 11:00:00|1|2|42|100|11|42|NULL|NULL|f\n");
}

TEST_F(TelemetryControl, CounterShownUpToFourDigitsAndJudgedInFull) {
  PlantBuilder rows = plant();
  rows.add(block(1000, "2024-05-01 06:00:00", -70, 9998, 90))
      .add(block(1001, "2024-05-01 10:00:00", -70, 10000, 90));
  rows.insert(sql());

  EXPECT_TRUE(road(1000));
  EXPECT_TRUE(road(1001));
  EXPECT_EQ(scalar("SELECT value FROM result_base WHERE visualization_id = 503 AND "
                   "param_info_id = 1001"),
            "9999");
  // Judged on the true 10000: more than one above the day's 9998 (the shown 9999 would not
  // be), confirmed by the previous block's 9998.
  EXPECT_EQ(notes("11").substr(0, 20), "2024-05-01 10:00:00|");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_base WHERE param_info_id = 1001"), "4");
}

TEST_F(TelemetryControl, DisplayWithoutAReadingGivesTheRowUpAfterTheParametersBeforeIt) {
  PlantBuilder rows = plant();
  // A STATE display, but the semicolon block carries no state: its parameter has no name, no
  // value and visualization 0, for which RESULT_BASE holds no history.
  rows.add(telemetryShown(505, "STATE"))
      .add(block(1000, "2024-05-01 06:00:00", -70, 5, 90))
      .add(block(1001, "2024-05-01 10:00:00", -70, 5, 89));
  rows.insert(sql());

  Measurement m = load(1001);
  const std::vector<visualization> shown = m.shown->getData({2}, 100, 11);
  ASSERT_EQ(shown.size(), 5u);
  std::size_t before_state = 0;
  while (before_state < shown.size() && shown[before_state].name_param != "STATE") {
    ++before_state;
  }
  ASSERT_TRUE(m->control_tu(shown));
  // The refusal passes to the loop, which skips the row: the displays listed before the state
  // keep their rows, the rest of the row (history mark, latest values) is not written.
  EXPECT_THROW(m->write_tu_msg(shown), pqxx::sql_error);
  EXPECT_EQ(count("SELECT COUNT(*) FROM result_base WHERE param_info_id = 1001"),
            static_cast<int>(before_state));
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM math_history WHERE param_info_id = 1001"), "0");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM visualization WHERE value_at IS NOT NULL"), "0");

  // A replay looks for the row in the display's own history first, and there is none for
  // visualization 0 either.
  Measurement replay = load(1000, true);
  EXPECT_THROW(replay->write_tu_msg(shown), pqxx::sql_error);
}

TEST_F(TelemetryControl, PreviousBlockWithoutACounterFieldConfirmsNothing) {
  PlantBuilder rows = plant();
  // The day's oldest counter is 10 and the module now reports 12, but its previous block came
  // in the JSON form, which has no third field to confirm the jump with.
  rows.add(block(999, "2024-04-30 20:00:00", -70, 10, 90))
      .add(
          MeasurementRow(1000, 42)
              .module(103, 0)
              .at("2024-05-01 06:00:00")
              .telemetryJson({{"temperature", 21}, {"rssi", -70}, {"count0", 11}, {"battery", 90}}))
      .add(block(1001, "2024-05-01 10:00:00", -70, 12, 90))
      // A previous block whose counter field is no number confirms nothing either.
      .add(MeasurementRow(1002, 42).module(10, 0).at("2024-05-01 11:00:00").tuError("21;-70;x;90"))
      .add(block(1003, "2024-05-01 12:00:00", -70, 13, 90));
  rows.insert(sql());
  EXPECT_TRUE(road(999));
  EXPECT_TRUE(road(1000));
  EXPECT_TRUE(road(1001));
  EXPECT_TRUE(road(1003));
  EXPECT_EQ(notes("11"), "");
  EXPECT_EQ(hardwareStatus(), "0");
}

TEST_F(TelemetryControl, ModuleStateOfAModuleWithoutBoundChannelsIsFiledAtNoPlace) {
  PlantBuilder rows = plant();
  // The module's only binding is switched off: its machine has no control point for it.
  rows.statement("UPDATE channel_contol_point SET active = false;")
      .add(MeasurementRow(1001, 42)
               .module(103, 0)
               .at("2024-05-01 10:00:00")
               .telemetryJson({{"rssi", -70}, {"count0", 5}, {"battery", 90}, {"state", 1}}));
  rows.insert(sql());
  Measurement m = load(1001);
  ASSERT_TRUE(m->channels.empty());
  EXPECT_TRUE(m->control_tu(m.shown->getData({2})));
  EXPECT_EQ(notes("4"), "2024-05-01 10:00:00|1|2|42|NULL|NULL|42|NULL|NULL|f\n");
}

} // namespace
