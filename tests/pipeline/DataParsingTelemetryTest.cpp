// The simple sensor modules over real tables: a machine with one control point (11) whose
// channel 100 stands for the whole module, measurements written as the modules encode them,
// and the results, notifications and hardware bits that the computations leave.
#include <cmath>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "TelemetryRoad.h"

namespace {

using namespace vek_test;

constexpr int kOutOfRange = 0x20000000;

class DataParsingTelemetry : public TelemetryTest {
protected:
  // A visualization of name at channel 100 and control point 11.
  static VisualizationRow shown(int id, const std::string& name) {
    return VisualizationRow(id, 42, name).channel(100).controlPoint(11).thresholds(1, 2, 3);
  }
};

TEST_F(DataParsingTelemetry, PressureTransmitterGivesOneResultPerTimedRecord) {
  PlantBuilder plant = machine(42, 2);
  // Counts of the 24-bit converter, format 4: 0 is no pressure, 8388607 the largest positive
  // count, 16777215 the complement's zero.
  plant.add(MeasurementRow(1, 42)
                .module(2, 1)
                .kind(1)
                .at("2024-05-01 10:00:00")
                .raw(RawRow(9, 4).timed(
                    {{1700000000, 0.0}, {1700000060, 8388607.0}, {1700000120, 16777215.0}})));
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  EXPECT_TRUE(m->computed);
  ASSERT_EQ(m->results.size(), 3u);
  // A count of 0 gives c = 0, so the pressure is (0 - 0.5) / 0.4 = -1.25; 16777215 is above
  // 8388607, so c = 1200 * (16777215 - 16777215) = 0 as well.
  // 8388607 gives c / 8388608 = 1200 - 1200 / 8388608 = 1199.99985694885, times 3.97 / 1000
  // = 4.76399943208694, minus 0.5, over 0.4: 10.6599985802174.
  const float expected[] = {-1.25f, 10.6599985802174f, -1.25f};
  const char* dates[] = {"2023-11-14 22:13:20", "2023-11-14 22:14:20", "2023-11-14 22:15:20"};
  for (std::size_t k = 0; k < 3; ++k) {
    SCOPED_TRACE(k);
    const calc_result& r = m->results[k];
    EXPECT_EQ(r.receipt_date, dates[k]);
    EXPECT_FLOAT_EQ(r.params.at("PRESSURE"), expected[k]);
    EXPECT_EQ(r.status_calc, 2) << "a row of kind 1 starts from status 2";
    EXPECT_EQ(r.channel_id, 100);
    EXPECT_EQ(r.control_point_id, 11);
    EXPECT_EQ(r.param_info_id, 1);
    EXPECT_FALSE(r.has_raw_data);
  }
}

TEST_F(DataParsingTelemetry, FourTemperatureSensorsAreJudgedWhereTheyAreShown) {
  PlantBuilder plant = machine(42, 8);
  plant.add(MessageRow("28"))
      .add(shown(501, "SENSOR_T1"))
      .add(shown(502, "SENSOR_T2"))
      .add(shown(503, "SENSOR_T3").active(false))
      .add(shown(504, "SENSOR_T4"))
      // Single floats: T1 21.5 is a reading; T2 -32767 is the converter's mark of a missing
      // sensor; T3 is not shown; T4 -200.1 is colder than any sensor measures; the fifth value
      // has no sensor name.
      .add(MeasurementRow(1, 42)
               .module(8, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 7).samples({21.5, -32767.0, -200.0, -200.1, 55.0})))
      // -200.0 itself is still a reading; kind 1 moves the failed status from 1 to 3.
      .add(MeasurementRow(2, 42)
               .module(8, 1)
               .kind(1)
               .at("2024-05-01 11:00:00")
               .raw(RawRow(4, 7).samples({-200.0, -32767.0})));
  plant.insert(sql());

  Measurement first = load(1);
  runAll(first);
  ASSERT_EQ(first->results.size(), 1u);
  const calc_result& r = first->results[0];
  EXPECT_EQ(r.params.size(), 3u) << "the hidden T3 and the fifth value are dropped";
  EXPECT_EQ(r.params.at("SENSOR_T1"), 21.5f);
  EXPECT_TRUE(std::isnan(r.params.at("SENSOR_T2")));
  EXPECT_TRUE(std::isnan(r.params.at("SENSOR_T4")));
  EXPECT_EQ(r.status_calc, 1);
  EXPECT_EQ(r.status_vector, kOutOfRange);
  EXPECT_EQ(r.receipt_date, "2024-05-01 10:00:00");
  // Both failures are raised at the result's place; the store keeps one per day.
  EXPECT_EQ(notes("28"), "2024-05-01 10:00:00|1|2|42|100|11|NULL|NULL|NULL|f\n");
  EXPECT_EQ(hardwareStatus(), "2") << "bit 1: a sensor out of range";

  Measurement second = load(2);
  runAll(second);
  const calc_result& s = second->results.at(0);
  EXPECT_EQ(s.params.at("SENSOR_T1"), -200.0f);
  EXPECT_TRUE(std::isnan(s.params.at("SENSOR_T2")));
  EXPECT_EQ(s.status_calc, 3);
}

TEST_F(DataParsingTelemetry, TimedTemperatureKeepsTheRecordTimeOfAFailedSensor) {
  PlantBuilder plant = machine(42, 11);
  plant.add(MessageRow("28"))
      .add(shown(501, "TEMPERATURE"))
      .add(MeasurementRow(1, 42)
               .module(11, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(9, 2).timed({{1700000000, 21.0}, {1700000060, -250.0}})));
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  ASSERT_EQ(m->results.size(), 2u);
  EXPECT_EQ(m->results[0].receipt_date, "2023-11-14 22:13:20");
  EXPECT_EQ(m->results[0].params.at("TEMPERATURE"), 21.0f);
  EXPECT_EQ(m->results[0].status_calc, 0);
  EXPECT_EQ(m->results[1].receipt_date, "2023-11-14 22:14:20");
  EXPECT_TRUE(std::isnan(m->results[1].params.at("TEMPERATURE")));
  EXPECT_EQ(m->results[1].status_calc, 1);
  EXPECT_EQ(m->results[1].status_vector, kOutOfRange);
  // The failure is raised at the row's own time, not the record's.
  EXPECT_EQ(notes("28"), "2024-05-01 10:00:00|1|2|42|100|11|NULL|NULL|NULL|f\n");
}

TEST_F(DataParsingTelemetry, TimedTemperatureWithoutAShownParameterGivesUndatedResults) {
  PlantBuilder plant = machine(42, 11);
  plant.add(shown(501, "TEMPERATURE").active(false))
      .add(MeasurementRow(1, 42)
               .module(11, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(9, 2).timed({{1700000000, 21.0}})))
      .add(MeasurementRow(2, 42).module(11, 1).at("2024-05-01 10:00:00"));
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  ASSERT_EQ(m->results.size(), 1u);
  EXPECT_EQ(m->results[0].receipt_date, "");
  EXPECT_TRUE(m->results[0].params.empty());

  Measurement without_raw = load(2);
  without_raw->readData();
  EXPECT_FALSE(without_raw->computeModule11()) << "no piece: nothing computed";
  EXPECT_FALSE(without_raw->computeModule2());
}

TEST_F(DataParsingTelemetry, WirelessTemperatureUpTo300IsAReading) {
  PlantBuilder plant = machine(42, 103);
  plant.add(MessageRow("28"))
      .add(MeasurementRow(1, 42)
               .module(103, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 7).samples({300.0})))
      .add(MeasurementRow(2, 42)
               .module(103, 1)
               .kind(1)
               .at("2024-05-01 10:01:00")
               .raw(RawRow(4, 7).samples({300.5})))
      .add(MeasurementRow(3, 42)
               .module(103, 1)
               .at("2024-05-01 10:02:00")
               .raw(RawRow(13, 1).samples({40.0})));
  plant.insert(sql());

  Measurement valid = load(1);
  runAll(valid);
  EXPECT_EQ(valid->results.at(0).params.at("TEMPERATURE"), 300.0f);
  EXPECT_EQ(valid->results.at(0).status_calc, 0);

  // Above 300 the sensor has failed; the wireless modules ignore the kind: status 1, not 3.
  Measurement hot = load(2);
  runAll(hot);
  const calc_result& r = hot->results.at(0);
  EXPECT_TRUE(std::isnan(r.params.at("TEMPERATURE")));
  EXPECT_EQ(r.status_calc, 1);
  EXPECT_EQ(r.status_vector, kOutOfRange);
  EXPECT_EQ(notes("28"), "2024-05-01 10:01:00|1|2|42|100|11|NULL|NULL|NULL|f\n");
  EXPECT_EQ(hardwareStatus(), "2");

  // No temperature piece: a result with nothing in it.
  Measurement none = load(3);
  runAll(none);
  ASSERT_EQ(none->results.size(), 1u);
  EXPECT_TRUE(none->results[0].params.empty());
  EXPECT_EQ(none->results[0].receipt_date, "2024-05-01 10:02:00");
}

TEST_F(DataParsingTelemetry, RecalculationSetsTheFailureButRaisesNothing) {
  PlantBuilder plant = machine(42, 103);
  plant.add(MessageRow("28"))
      .add(MeasurementRow(1, 42)
               .module(103, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 7).samples({301.0})));
  plant.insert(sql());

  Measurement m = load(1, true);
  runAll(m);
  EXPECT_EQ(m->results.at(0).status_calc, 1);
  EXPECT_EQ(m->results.at(0).status_vector, kOutOfRange);
  EXPECT_EQ(notes("28"), "");
  EXPECT_EQ(hardwareStatus(), "0");
}

TEST_F(DataParsingTelemetry, NamedValuesClampTheBattery) {
  PlantBuilder plant = machine(42, 104);
  plant
      .add(MeasurementRow(1, 42)
               .module(104, 200)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(15, 5).named("U_BATTERY", 120.0))
               .raw(RawRow(15, 7).named("HUMIDITY", 41.5)))
      .add(MeasurementRow(2, 42)
               .module(103, 201)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(15, 6).named("U_BATTERY", -3.0)));
  plant.insert(sql());

  Measurement high = load(1);
  runAll(high);
  const std::map<std::string, float> clamped = {{"HUMIDITY", 41.5f}, {"U_BATTERY", 100.0f}};
  EXPECT_EQ(high->results.at(0).params, clamped);
  EXPECT_FALSE(high->results.at(0).has_raw_data);
  EXPECT_NE(logText().find("parameters from fu_raw\n"), std::string::npos);

  Measurement low = load(2);
  runAll(low);
  EXPECT_EQ(low->results.at(0).params.at("U_BATTERY"), 0.0f);
}

TEST_F(DataParsingTelemetry, HumidityPressureAndValveTakeTheLastPiece) {
  PlantBuilder plant = machine(42, 105);
  plant
      .add(MeasurementRow(1, 42)
               .module(105, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(13, 1).samples({40.0}))
               .raw(RawRow(3, 2).samples({-2.0}))
               .raw(RawRow(13, 1).samples({45.0, 46.0}))
               .raw(RawRow(13, 1).data("0x")))
      .add(MeasurementRow(2, 42)
               .module(106, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(14, 8).samples({1.0}))
               .raw(RawRow(14, 8).data("0x"))
               .raw(RawRow(14, 8).samples({0.0})));
  plant.insert(sql());

  Measurement humidity = load(1);
  runAll(humidity);
  // The empty last humidity piece carries no value and changes nothing.
  const std::map<std::string, float> expected = {{"HUMIDITY", 45.0f}, {"PRESSURE", -2.0f}};
  EXPECT_EQ(humidity->results.at(0).params, expected);

  Measurement valve = load(2);
  runAll(valve);
  EXPECT_EQ(valve->results.at(0).params.at("VALVE_STATUS"), 0.0f);
}

// Forecast curves: records of a little-endian 64-bit time and a 32-bit float, as stored in
// VISUALIZATION.RUL_DATA.
// t 0 at 70.0, t 7200000 at 90.0: reaches above an orange of 80; span 7200000 / 3600000 = 2.
const char* const kRisingCurve = "000000000000000000008c4200dd6d00000000000000b442";
// t 0 at 70.0, t 7200000 at 80.0: reaches the orange of 80 but not above it.
const char* const kFlatCurve = "000000000000000000008c4200dd6d00000000000000a042";
// t -3600000 at 81.0, t 18000000 at 20.0: two's complement time; span 21600000 gives 6.
const char* const kEarlyCurve = "8011c9ffffffffff0000a24280a81201000000000000a041";

TEST_F(DataParsingTelemetry, StoredForecastAboveOrangeRaisesItsMessages) {
  PlantBuilder plant = machine(42, 11);
  const std::string settings = messageSettings(
      {{"rulActive", {{"R1", {5, 6}}, {"R2", {7}}}}, {"corridorActive", {{"C1", {8}}}}});
  plant.add(MessageRow("R1"))
      .add(MessageRow("R2").visible(false))
      .add(MessageRow("C1"))
      .add(RecommendationRow(5, "R1").typeMessage(6).enabled(false))
      .add(RecommendationRow(6, "R1").typeMessage(6))
      .add(shown(501, "TEMPERATURE")
               .thresholds(40, 60, 80)
               .rulActive(true)
               .messageSettings(settings)
               .valueAt("2024-05-01 09:00:00")
               .setLiteral("rul_data", std::string("'\\x") + kRisingCurve + "'::bytea"))
      .add(MeasurementRow(1, 42)
               .module(11, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(9, 2).timed({{1700000000, 21.0}})));
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  // R1 with its first recommendation enabled for forecasts; R2 is switched off, C1 belongs to
  // another situation.
  EXPECT_EQ(notes("R1"), "2024-05-01 09:00:00|0|6|42|100|11|2|6|501|f\n");
  EXPECT_EQ(notes("R2"), "");
  EXPECT_EQ(notes("C1"), "");

  visualization row = m.shown->getData({1}).at(0);
  exec("TRUNCATE notification");
  row.rul_data = std::string("\\x") + kFlatCurve;
  m->analyzeRul(row);
  EXPECT_EQ(notes("R1"), "") << "a curve that stays at orange raises nothing";

  row.rul_data = std::string("\\x") + kEarlyCurve;
  m->analyzeRul(row);
  EXPECT_EQ(notes("R1"), "2024-05-01 09:00:00|0|6|42|100|11|6|6|501|f\n");

  exec("TRUNCATE notification");
  row.rul_data = std::string("\\x") + kRisingCurve;
  row.message_settings = "";
  m->analyzeRul(row);
  EXPECT_EQ(notes("R1"), "") << "no message settings, no forecast message";

  row.rul_data = std::string("\\x") + kRisingCurve + "00";
  EXPECT_THROW(m->analyzeRul(row), std::invalid_argument) << "an incomplete record";
  row.rul_data = std::string("\\x") + std::string(kRisingCurve).replace(3, 1, "g");
  EXPECT_THROW(m->analyzeRul(row), std::invalid_argument) << "a digit that is not hexadecimal";
}

} // namespace
