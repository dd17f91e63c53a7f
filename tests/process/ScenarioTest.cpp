// Whole measurements through the real vek process: a plant built row by row, the service run
// over its rows as a registered instance, and the tables it wrote compared whole with rows
// worked out by hand.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include <pqxx/pqxx>

#include "support/ServiceRun.h"
#include "support/PlantBuilder.h"
#include "support/ThrowawayDatabase.h"

namespace {

using namespace vek_test;
using Rows = std::vector<std::string>;

// A run over a handful of rows involves no pause; a skipped row costs one second.
constexpr int kRunSec = 30;

// Status vector bit of a sensor value beyond what the sensor can report.
constexpr int kSensorOutOfRange = 0x20000000;

// A receipt date an hour ago by this host's clock, as the receiver stores it: the service's
// time check compares the row's date with local time and lets an hour-old row pass.
std::string hourAgo(int minutes_later = 0) {
  const std::time_t at = std::time(nullptr) - 3600 + 60L * minutes_later;
  std::tm parts{};
  localtime_r(&at, &parts);
  char text[32];
  std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

class Scenario : public ::testing::Test {
protected:
  Scenario() : db(::testing::UnitTest::GetInstance()->current_test_info()->name()) {}

  void insert(const PlantBuilder& plant) {
    pqxx::connection connection(db.connectionString());
    plant.insert(connection);
  }

  void execute(const std::string& sql) {
    pqxx::connection connection(db.connectionString());
    pqxx::work work(connection);
    work.exec(sql);
    work.commit();
  }

  // Every row of the query as its fields joined by " | ", NULL written as NULL.
  Rows rows(const std::string& sql) {
    pqxx::connection connection(db.connectionString());
    pqxx::work work(connection);
    Rows out;
    for (const auto& row : work.exec(sql)) {
      std::string line;
      for (const auto& field : row) {
        line += (line.empty() ? "" : " | ") + std::string(field.is_null() ? "NULL" : field.c_str());
      }
      out.push_back(line);
    }
    return out;
  }

  // Runs vek with the extra arguments until it ends by itself; its standard output.
  std::string runVek(const std::vector<std::string>& extra) {
    std::vector<std::string> arguments = {"-host",   db.host(), "-name",
                                          db.name(), "-user",   db.user()};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    ServiceRun run(arguments);
    int status = -1;
    EXPECT_TRUE(run.waitForExit(kRunSec, status)) << run.standardOutput();
    EXPECT_EQ(status, 0);
    return run.standardOutput();
  }

  // Parameters written: row, visualization, value, status.
  Rows results() {
    return rows("SELECT param_info_id, visualization_id, value, status_calc FROM result_base "
                "ORDER BY param_info_id, visualization_id");
  }
  Rows history() {
    return rows("SELECT param_info_id, status_calc, status_vector FROM math_history "
                "ORDER BY param_info_id, status_calc");
  }
  Rows notifications() {
    return rows("SELECT message_code, source, type_message_id, additional_info, "
                "recommendation_id, channel_id, control_point_id FROM notification ORDER BY id");
  }
  Rows hardware() { return rows("SELECT source, hardware_status FROM module ORDER BY source"); }

  ThrowawayDatabase db;
};

// One machine (aggregate 1, "pump 1", mean of its points) at node 1 of organization "plant".
void addSite(PlantBuilder& plant) {
  plant.add(OrganizationRow("plant").utc("UTC+3:00"))
      .add(NodeRow(1, "plant"))
      .add(GatewayRow(1, 1))
      .add(AggregateRow(1, 1).equipmentType(8).statusType(1).name("pump 1"));
  for (const char* code : {"4", "11", "13", "26", "28", "29", "30", "101", "102"}) {
    plant.add(MessageRow(code));
  }
}

// Module `source` of type_module with channel `channel` bound to control point `point` of
// machine 1 with the given weight.
void addModule(PlantBuilder& plant, int id, long source, int type_module, int channel, int point,
               double weight) {
  plant.add(ControlPointRow(point, 1).weight(weight))
      .add(ModuleRow(id, source, type_module).revision(1).config(0).period(10).gateway(1))
      .add(ChannelRow(channel, source).rawParam("").axisOrder(""))
      .add(BindingRow(channel, point));
}

// A display of name at the module's channel and point, coloured by its thresholds.
VisualizationRow display(int id, long source, const std::string& name, int channel, int point,
                         double green, double yellow, double orange, int type_param = 1) {
  return VisualizationRow(id, source, name)
      .typeParam(type_param)
      .channel(channel)
      .controlPoint(point)
      .thresholds(green, yellow, orange)
      .kz(1.0)
      .middle(false)
      .trend(false)
      .corridorActive(true);
}

// A wireless temperature module: one value of param_type 4 in signed 16-bit counts.
MeasurementRow temperature(int id, long source, double degrees, const std::string& at) {
  return MeasurementRow(id, source)
      .module(103, 1)
      .at(at)
      .kind(0)
      .raw(RawRow(4, 2).samples({degrees}));
}

} // namespace

TEST_F(Scenario, WirelessTemperatureRowIsComputedColouredAndReducedToTheMachine) {
  // A temperature module on the only point of a machine sends 23 degrees: one TEMPERATURE
  // parameter, green against 60/75/90.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90));
  const std::string at = hourAgo();
  plant.add(temperature(1, 3001, 23.0, at));
  plant.add(temperature(2, 3001, 24.0, hourAgo(10)));
  insert(plant);

  runVek({"-stop", "2"});

  // The value goes to its display's partition of RESULT_BASE, good (status 0); the row is
  // marked calculated.
  EXPECT_EQ(results(), (Rows{"1 | 3011 | 23 | 0"}));
  EXPECT_EQ(history(), (Rows{"1 | 0 | 0"}));
  // The display shows the new value; the point's only parameter is green (1), so its status
  // and maximum are 1; the machine's one point gives it 1 as well, at the row's date.
  EXPECT_EQ(rows("SELECT latest_raw_value FROM visualization"), (Rows{"23"}));
  EXPECT_EQ(rows("SELECT id, status, status_max FROM control_point"), (Rows{"11 | 1 | 1"}));
  EXPECT_EQ(rows("SELECT id, status, status_max, status_at = '" + at + "' FROM aggregate"),
            (Rows{"1 | 1 | 1 | t"}));
  EXPECT_EQ(rows("SELECT aggregate_id, status, calculated_at = '" + at + "' FROM status_aggregate"),
            (Rows{"1 | 1 | t"}));
  // Nothing is amiss: no message, no hardware bit, no defect.
  EXPECT_EQ(notifications(), Rows{});
  EXPECT_EQ(hardware(), (Rows{"3001 | 0"}));
  EXPECT_EQ(rows("SELECT count(*) FROM defects"), (Rows{"0"}));
  // The instance registered itself and reported that row 2, the stop, is next.
  EXPECT_EQ(rows("SELECT id, lag, last_calculated, version IS NOT NULL FROM vek_calculation"),
            (Rows{"1 | 1 | 1 | t"}));
}

TEST_F(Scenario, SensorBeyondItsRangeIsFlaggedNotShown) {
  // 350 degrees is beyond what the wireless sensor reports (300): the parameter is NaN, the
  // result failed with the out-of-range bit, message "28" and hardware bit 1 are raised, and
  // neither the display nor the point's status takes the failed value. Message "26" (data the
  // math could not take) is not raised for a sensor out of range. Row 2 after it is good.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90).latestRaw(20.0));
  plant.add(temperature(1, 3001, 350.0, hourAgo()));
  plant.add(temperature(2, 3001, 70.0, hourAgo(10)));
  plant.add(temperature(3, 3001, 71.0, hourAgo(20)));
  insert(plant);

  runVek({"-stop", "3"});

  EXPECT_EQ(results(), (Rows{"1 | 3011 | NULL | 1", "2 | 3011 | 70 | 0"}));
  EXPECT_EQ(history(), (Rows{"1 | 1 | " + std::to_string(kSensorOutOfRange), "2 | 0 | 0"}));
  EXPECT_EQ(notifications(), (Rows{"28 | 3001 | 2 | NULL | NULL | 301 | 11"}));
  EXPECT_EQ(hardware(), (Rows{"3001 | 2"}));
  // 70 lies above green 60 and within yellow 75: colour 2.
  EXPECT_EQ(rows("SELECT latest_raw_value FROM visualization"), (Rows{"70"}));
  EXPECT_EQ(rows("SELECT id, status, status_max FROM control_point"), (Rows{"11 | 2 | 2"}));
}

TEST_F(Scenario, TelemetryBlockIsBelievedOrRejected) {
  // A wired temperature module (type 8) sends its telemetry block in rows of their own.
  // Row 1: 21 degrees, signal -70, three restarts, battery 88: believed, written as four
  // parameters and shown. Row 2: the same with an empty battery (0): not believed, nothing
  // written, message "29" and hardware bit 6. Row 3: a believable block again.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 8, 301, 11, 1.0);
  plant.add(display(3013, 3001, "TEMP", 301, 11, 60, 75, 90, 2))
      .add(display(3014, 3001, "RSSI", 301, 11, -90, -100, -110, 2))
      .add(display(3015, 3001, "U_BATTERY", 301, 11, 30, 20, 10, 2))
      .add(display(3016, 3001, "RESET_COUNT", 301, 11, 0, 0, 0, 2).corridorActive(false));
  plant.add(MeasurementRow(1, 3001).module(8, 0).at(hourAgo()).kind(0).telemetry(21, -70, 3, 88))
      .add(MeasurementRow(2, 3001).module(8, 0).at(hourAgo(10)).kind(0).telemetry(22, -71, 3, 0))
      .add(MeasurementRow(3, 3001).module(8, 0).at(hourAgo(20)).kind(0).telemetry(23, -72, 3, 87))
      .add(MeasurementRow(4, 3001).module(8, 0).at(hourAgo(30)).kind(0).telemetry(23, -72, 3, 87));
  insert(plant);

  runVek({"-stop", "4"});

  EXPECT_EQ(results(), (Rows{"1 | 3013 | 21 | 0", "1 | 3014 | -70 | 0", "1 | 3015 | 88 | 0",
                             "1 | 3016 | 3 | 0", "3 | 3013 | 23 | 0", "3 | 3014 | -72 | 0",
                             "3 | 3015 | 87 | 0", "3 | 3016 | 3 | 0"}));
  EXPECT_EQ(notifications(), (Rows{"29 | 3001 | 2 | NULL | NULL | 301 | 11"}));
  EXPECT_EQ(hardware(), (Rows{"3001 | 64"}));
  EXPECT_EQ(rows("SELECT name_param, latest_raw_value FROM visualization ORDER BY id"),
            (Rows{"TEMP | 23", "RSSI | -72", "U_BATTERY | 87", "RESET_COUNT | 3"}));
}

TEST_F(Scenario, TelemetryThresholdsCrossedHighAndLowRaiseTheirMessages) {
  // The module's case temperature runs high (yellow 40 below orange 50, so high is bad) and
  // its battery runs low (yellow 20 above orange 10, so low is bad). Each display names its
  // message for a crossed corridor with a recommendation per level.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 8, 301, 11, 1.0);
  plant.add(RecommendationRow(501, "101").typeMessage(2))
      .add(RecommendationRow(502, "101").typeMessage(3))
      .add(RecommendationRow(503, "102").typeMessage(2))
      .add(RecommendationRow(504, "102").typeMessage(3));
  plant
      .add(display(3013, 3001, "TEMP", 301, 11, 30, 40, 50, 2)
               .messageSettings(messageSettings({{"corridorActive", {{"101", {501, 502}}}}})))
      .add(display(3015, 3001, "U_BATTERY", 301, 11, 30, 20, 10, 2)
               .messageSettings(messageSettings({{"corridorActive", {{"102", {503, 504}}}}})));
  // Row 1: 45 degrees (above yellow 40: level 2), battery 50 (fine).
  // Row 2: 35 degrees (fine), battery 8 (below orange 10: level 3, "8 %").
  // Row 3: 20 degrees and battery 25: both within their corridors.
  plant.add(MeasurementRow(1, 3001).module(8, 0).at(hourAgo()).kind(0).telemetry(45, -70, 3, 50))
      .add(MeasurementRow(2, 3001).module(8, 0).at(hourAgo(10)).kind(0).telemetry(35, -70, 3, 8))
      .add(MeasurementRow(3, 3001).module(8, 0).at(hourAgo(20)).kind(0).telemetry(20, -70, 3, 25))
      .add(MeasurementRow(4, 3001).module(8, 0).at(hourAgo(30)).kind(0).telemetry(20, -70, 3, 25));
  insert(plant);

  runVek({"-stop", "4"});

  // Corridor messages are the plant's own (status 0, open); the recommendation is the first
  // enabled one for the level. A message without a text stores NULL.
  EXPECT_EQ(rows("SELECT message_code, source, type_message_id, status, additional_info, "
                 "recommendation_id, channel_id, control_point_id FROM notification ORDER BY id"),
            (Rows{"101 | 3001 | 2 | 0 | NULL | 501 | 301 | 11",
                  "102 | 3001 | 3 | 0 | 8 % | 504 | 301 | 11"}));
  EXPECT_EQ(results(), (Rows{"1 | 3013 | 45 | 0", "1 | 3015 | 50 | 0", "2 | 3013 | 35 | 0",
                             "2 | 3015 | 8 | 0", "3 | 3013 | 20 | 0", "3 | 3015 | 25 | 0"}));
}

TEST_F(Scenario, MachineStatusWeighsItsPointsAtMostOnceInTenSeconds) {
  // Machine 1 has point 11 (weight 1.0, a temperature module) and point 12 (weight 0.5),
  // whose stored status is 4 (red) from its own module. Row 1 makes point 11 green (1): the
  // machine is the mean of 1 * 1.0 and 4 * 0.5, that is 1.5, its maximum 2.0 at point 12,
  // and 1.5 reaches yellow: message "30" of type 2 at point 12, with the machine's name.
  // Row 2 comes within the same ten seconds: point 11 turns orange (82 degrees, colour 3),
  // yet the machine is not reckoned again.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(ControlPointRow(12, 1).weight(0.5).status(4.0));
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90));
  const std::string at = hourAgo();
  plant.add(temperature(1, 3001, 23.0, at));
  plant.add(temperature(2, 3001, 82.0, hourAgo(10)));
  plant.add(temperature(3, 3001, 25.0, hourAgo(20)));
  insert(plant);

  runVek({"-stop", "3"});

  EXPECT_EQ(rows("SELECT id, status, status_max FROM control_point ORDER BY id"),
            (Rows{"11 | 3 | 3", "12 | 4 | NULL"}));
  EXPECT_EQ(rows("SELECT status, status_max, status_at = '" + at + "' FROM aggregate"),
            (Rows{"1.5 | 2 | t"}));
  EXPECT_EQ(rows("SELECT aggregate_id, status, calculated_at = '" + at + "' FROM status_aggregate"),
            (Rows{"1 | 1.5 | t"}));
  EXPECT_EQ(notifications(), (Rows{"30 | NULL | 2 | pump 1 | NULL | NULL | 12"}));
}

TEST_F(Scenario, ReplayRewritesResultsAndRaisesNothing) {
  // First the rows are computed live: row 1 is a sensor failure (message "28", bit 1), row 2
  // a good 70 degrees. Then the operator clears messages and bits, moves the display and the
  // point to marker values and replays rows 1 and 2 with -s: the results are written again
  // in place, and nothing else moves.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90));
  plant.add(temperature(1, 3001, 350.0, hourAgo()));
  plant.add(temperature(2, 3001, 70.0, hourAgo(10)));
  plant.add(temperature(3, 3001, 71.0, hourAgo(20)));
  insert(plant);
  runVek({"-stop", "3"});
  ASSERT_EQ(results(), (Rows{"1 | 3011 | NULL | 1", "2 | 3011 | 70 | 0"}));
  ASSERT_EQ(notifications().size(), 1u);

  execute("DELETE FROM notification; UPDATE module SET hardware_status = 0;"
          "UPDATE visualization SET latest_raw_value = -1;"
          "UPDATE control_point SET status = 9, status_max = 9;"
          "UPDATE aggregate SET status = 9, status_max = 9; DELETE FROM status_aggregate;"
          "UPDATE result_base SET value = -5; UPDATE vek_calculation SET ip = 'elsewhere'");
  runVek({"-s", "1", "-stop", "3"});

  // The values are rewritten (the failed one stays NULL); each row keeps one result and one
  // mark in MATH_HISTORY.
  EXPECT_EQ(results(), (Rows{"1 | 3011 | NULL | 1", "2 | 3011 | 70 | 0"}));
  EXPECT_EQ(rows("SELECT param_info_id, count(*) FROM math_history GROUP BY 1 ORDER BY 1"),
            (Rows{"1 | 1", "2 | 1"}));
  EXPECT_EQ(notifications(), Rows{});
  EXPECT_EQ(hardware(), (Rows{"3001 | 0"}));
  EXPECT_EQ(rows("SELECT latest_raw_value FROM visualization"), (Rows{"-1"}));
  EXPECT_EQ(rows("SELECT status, status_max FROM control_point"), (Rows{"9 | 9"}));
  EXPECT_EQ(rows("SELECT status, status_max FROM aggregate"), (Rows{"9 | 9"}));
  EXPECT_EQ(rows("SELECT count(*) FROM status_aggregate"), (Rows{"0"}));
  // A replay with -s leaves the instance's registration alone.
  EXPECT_EQ(rows("SELECT ip FROM vek_calculation"), (Rows{"elsewhere"}));
}

TEST_F(Scenario, SecondInstanceTakesOnlyItsShareOfModules) {
  // Two instances divide the modules by source modulo 2: instance 2 holds the odd sources.
  // Run as instance 2, it computes module 3001 and logs a skip for module 3002 (module id 2).
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  addModule(plant, 2, 3002, 103, 302, 12, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90))
      .add(display(3021, 3002, "TEMPERATURE", 302, 12, 60, 75, 90));
  plant.add(InstanceRow(1).settings(R"({"calc_source": 2, "remainder": 0})"))
      .add(InstanceRow(2).settings(R"({"calc_source": 2, "remainder": 1})"));
  plant.add(temperature(1, 3001, 23.0, hourAgo()))
      .add(temperature(2, 3002, 24.0, hourAgo()))
      .add(temperature(3, 3001, 25.0, hourAgo(10)))
      .add(temperature(4, 3002, 26.0, hourAgo(10)))
      .add(temperature(5, 3001, 27.0, hourAgo(20)));
  insert(plant);

  const std::string output = runVek({"-id", "2", "-stop", "5"});

  EXPECT_EQ(results(), (Rows{"1 | 3011 | 23 | 0", "3 | 3011 | 25 | 0"}));
  EXPECT_NE(output.find("module : 3002 : 2 skip\n"), std::string::npos) << output;
  EXPECT_EQ(rows("SELECT id, lag, last_calculated FROM vek_calculation ORDER BY id"),
            (Rows{"1 | NULL | NULL", "2 | 1 | 4"}));

  // The other instance takes the even module from where the first left off.
  execute("DELETE FROM math_history");
  runVek({"-id", "1", "-stop", "5"});
  EXPECT_EQ(results(), (Rows{"1 | 3011 | 23 | 0", "2 | 3021 | 24 | 0", "3 | 3011 | 25 | 0",
                             "4 | 3021 | 26 | 0"}));
}

TEST_F(Scenario, BadRowsAreHandledAndTheServiceGoesOn) {
  // Each bad row is followed by a good one of the same module, which must be computed.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  addModule(plant, 2, 3002, 8, 302, 12, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90))
      .add(display(3021, 3002, "SENSOR_T1", 302, 12, 60, 75, 90))
      .add(display(3023, 3002, "TEMP", 302, 12, 60, 75, 90, 2));
  // Row 1: a sample with a character that is no hexadecimal digit: the row is given up.
  plant.add(MeasurementRow(1, 3001).module(103, 1).at(hourAgo()).kind(0).raw(
      RawRow(4, 2).data("0x1g00")));
  // Row 2: a piece of the whole module that ends in half a value: the whole value (23) is
  // taken, the stray digit is not.
  plant.add(MeasurementRow(2, 3001)
                .module(103, 1)
                .at(hourAgo(1))
                .kind(0)
                .raw(RawRow(4, 2).data("0x1700a")));
  // Row 3: a sub-channel's data that is not a whole number of values (three digits of a
  // four-digit value): no data, nothing computed.
  plant.add(MeasurementRow(3, 3002)
                .module(8, 1)
                .at(hourAgo(2))
                .kind(0)
                .raw(RawRow(4, 2).subChannel("t").data("0x170")));
  plant.add(MeasurementRow(4, 3002)
                .module(8, 1)
                .at(hourAgo(3))
                .kind(0)
                .raw(RawRow(4, 2).samples({24.0})));
  // Row 5: a telemetry block with a field that is no number: the row is given up.
  plant.add(MeasurementRow(5, 3002).module(8, 0).at(hourAgo(4)).kind(0).tuError("21;x;3;88"));
  plant.add(MeasurementRow(6, 3002).module(8, 0).at(hourAgo(5)).kind(0).telemetry(21, -70, 3, 88));
  // Row 7: a module that has no MODULE row and no channels: nothing to compute for.
  plant.add(temperature(7, 3099, 30.0, hourAgo(6)));
  plant.add(temperature(8, 3001, 25.0, hourAgo(7)));
  // Row 9: module 3007 is wired to point 17 and displayed, but its MODULE row is missing: the
  // module counts as of unknown type, yet the row names its type and is computed.
  plant.add(ControlPointRow(17, 1).weight(1.0))
      .add(ChannelRow(307, 3007).rawParam("").axisOrder(""))
      .add(BindingRow(307, 17))
      .add(display(3071, 3007, "TEMPERATURE", 307, 17, 60, 75, 90));
  plant.add(temperature(9, 3007, 31.0, hourAgo(8)));
  plant.add(temperature(10, 3001, 26.0, hourAgo(9)));
  // Module 3001's CONFIG is not hexadecimal: a wireless temperature module does not use it.
  plant.statement("UPDATE module SET config = 'not hex' WHERE source = 3001;");
  insert(plant);

  runVek({"-stop", "10"});

  EXPECT_EQ(results(), (Rows{"2 | 3011 | 23 | 0", "4 | 3021 | 24 | 0", "6 | 3023 | 21 | 0",
                             "8 | 3011 | 25 | 0", "9 | 3071 | 31 | 0"}));
  EXPECT_EQ(history(), (Rows{"2 | 0 | 0", "4 | 0 | 0", "6 | 0 | 0", "8 | 0 | 0", "9 | 0 | 0"}));
  EXPECT_EQ(notifications(), Rows{});
}

TEST_F(Scenario, RowFromAClockRunAheadIsRefusedLiveAndComputedInReplay) {
  // Row 1 is dated two days ahead of this host's clock: the module's clock has run away. The
  // live service raises "13" (type 4) at the module, sets hardware bit 2 and computes nothing;
  // row 2, an hour old, passes. A replay of the same rows takes the dates as they stand.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90));
  plant.add(temperature(1, 3001, 23.0, hourAgo(49 * 60)));
  plant.add(temperature(2, 3001, 24.0, hourAgo()));
  plant.add(temperature(3, 3001, 25.0, hourAgo(10)));
  insert(plant);

  runVek({"-stop", "3"});
  EXPECT_EQ(results(), (Rows{"2 | 3011 | 24 | 0"}));
  EXPECT_EQ(notifications(), (Rows{"13 | 3001 | 4 | NULL | NULL | NULL | NULL"}));
  EXPECT_EQ(hardware(), (Rows{"3001 | 4"}));

  runVek({"-s", "1", "-stop", "3"});
  EXPECT_EQ(results(), (Rows{"1 | 3011 | 23 | 0", "2 | 3011 | 24 | 0"}));
  EXPECT_EQ(notifications().size(), 1u);
}

TEST_F(Scenario, SourceOptionComputesAModuleTheSettingsGiveToAnotherInstance) {
  // The settings give this instance only the listed module 3002, and Kafka announcements are
  // on. Run with -source 3001, the instance computes exactly module 3001: its rows are logged
  // as skipped by the settings and computed all the same, each result announced once.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  addModule(plant, 2, 3002, 103, 302, 12, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90))
      .add(display(3021, 3002, "TEMPERATURE", 302, 12, 60, 75, 90));
  plant.add(InstanceRow(1).settings(R"({"calc_source": 1, "source": [3002], )"
                                    R"("kafka_enable": true, "kafka_topic": "vek", )"
                                    R"("kafka_client_id": 7})"));
  plant.add(temperature(1, 3001, 23.0, hourAgo()))
      .add(temperature(2, 3002, 24.0, hourAgo()))
      .add(temperature(3, 3001, 25.0, hourAgo(10)));
  insert(plant);

  const std::string output = runVek({"-source", "3001", "-stop", "3"});

  EXPECT_EQ(results(), (Rows{"1 | 3011 | 23 | 0"}));
  EXPECT_NE(output.find("module : 3001 : 1 skip\n"), std::string::npos) << output;
  // The client id is stored in thousands, as the settings reader keeps it.
  const std::string announcement = "write_kafka: topic: vek, id: 7000\n";
  const auto first = output.find(announcement);
  EXPECT_NE(first, std::string::npos) << output;
  EXPECT_EQ(output.find(announcement, first + 1), std::string::npos) << output;
}

TEST_F(Scenario, TelemetryTellsARestartedModuleAndAReportedState) {
  // The module's restart counter stood at 10 an hour ago (row 1, in the block's JSON form),
  // then 11 (row 2) and 12 (row 3): more than one restart within a day, confirmed by the
  // previous block, which already said 11: message "11" and hardware bit 5. Row 4 reports a
  // module state of 1: message "4" with the source as its text; its counter 12 is no new
  // restart.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 8, 301, 11, 1.0);
  plant.add(display(3013, 3001, "TEMP", 301, 11, 60, 75, 90, 2))
      .add(display(3016, 3001, "RESET_COUNT", 301, 11, 0, 0, 0, 2).corridorActive(false));
  plant
      .add(MeasurementRow(1, 3001).module(8, 0).at(hourAgo()).kind(0).telemetryJson(
          {{"temperature", 21}, {"rssi", -70}, {"count0", 10}, {"battery", 88}}))
      .add(MeasurementRow(2, 3001).module(8, 0).at(hourAgo(10)).kind(0).telemetry(22, -70, 11, 88))
      .add(MeasurementRow(3, 3001).module(8, 0).at(hourAgo(20)).kind(0).telemetry(23, -70, 12, 88))
      .add(MeasurementRow(4, 3001)
               .module(8, 0)
               .at(hourAgo(30))
               .kind(0)
               .telemetryJson({{"temperature", 24},
                               {"rssi", -70},
                               {"count0", 12},
                               {"battery", 88},
                               {"state", 1}}))
      .add(MeasurementRow(5, 3001).module(8, 0).at(hourAgo(40)).kind(0).telemetry(24, -70, 12, 88));
  insert(plant);

  runVek({"-stop", "5"});

  EXPECT_EQ(notifications(), (Rows{"11 | 3001 | 2 | NULL | NULL | 301 | 11",
                                   "4 | 3001 | 2 | 3001 | NULL | 301 | 11"}));
  EXPECT_EQ(hardware(), (Rows{"3001 | 32"}));
  // All four blocks were believed and written.
  EXPECT_EQ(results(), (Rows{"1 | 3013 | 21 | 0", "1 | 3016 | 10 | 0", "2 | 3013 | 22 | 0",
                             "2 | 3016 | 11 | 0", "3 | 3013 | 23 | 0", "3 | 3016 | 12 | 0",
                             "4 | 3013 | 24 | 0", "4 | 3016 | 12 | 0"}));
}

TEST_F(Scenario, SimpleModulesOfEveryKindAreComputed) {
  // One machine with a point per module: humidity (104), pressure (105), valve (106), a
  // pressure transmitter with timed records (2) and a wired two-sensor temperature module (8).
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 2, 3002, 104, 302, 12, 1.0);
  addModule(plant, 3, 3003, 105, 303, 13, 1.0);
  addModule(plant, 4, 3004, 106, 304, 14, 1.0);
  addModule(plant, 5, 3005, 2, 305, 15, 1.0);
  addModule(plant, 6, 3006, 8, 306, 16, 1.0);
  plant.add(display(3021, 3002, "HUMIDITY", 302, 12, 60, 70, 80))
      .add(display(3031, 3003, "PRESSURE", 303, 13, 6, 7, 8))
      .add(display(3041, 3004, "VALVE_STATUS", 304, 14, 1, 2, 3))
      .add(display(3051, 3005, "PRESSURE", 305, 15, 6, 7, 8))
      .add(display(3061, 3006, "SENSOR_T1", 306, 16, 60, 75, 90))
      .add(display(3062, 3006, "SENSOR_T2", 306, 16, 60, 75, 90));
  const std::string at = hourAgo();
  // The transmitter's two records, two and one and a half hours ago in UTC seconds.
  const auto now = static_cast<unsigned long long>(std::time(nullptr));
  const unsigned long long first = now - 7200;
  const unsigned long long second = now - 5400;
  plant.add(MeasurementRow(1, 3002).module(104, 1).at(at).kind(0).raw(RawRow(13, 2).samples({55})))
      .add(MeasurementRow(2, 3003).module(105, 1).at(at).kind(0).raw(RawRow(3, 2).samples({5})))
      .add(MeasurementRow(3, 3004).module(106, 1).at(at).kind(0).raw(RawRow(14, 2).samples({1})))
      .add(MeasurementRow(4, 3005).module(2, 1).at(at).kind(0).raw(
          RawRow(7, 3).timed({{first, 4194304.0}, {second, 0.0}})))
      .add(MeasurementRow(5, 3006).module(8, 1).at(at).kind(0).raw(RawRow(4, 2).samples({23, 24})))
      .add(MeasurementRow(6, 3006).module(8, 1).at(at).kind(0).raw(RawRow(4, 2).samples({1})));
  insert(plant);

  runVek({"-stop", "6"});

  // The transmitter's counts become bar: 4194304 is half of the positive range, so
  // c = 1200 * 4194304, c / 8388608 = 600, (3.97 * 600 / 1000 - 0.5) / 0.4 = 4.705; a count
  // of 0 gives (0 - 0.5) / 0.4 = -1.25. Each record is a result at its own time.
  EXPECT_EQ(results(), (Rows{"1 | 3021 | 55 | 0", "2 | 3031 | 5 | 0", "3 | 3041 | 1 | 0",
                             "4 | 3051 | 4.705 | 0", "4 | 3051 | -1.25 | 0", "5 | 3061 | 23 | 0",
                             "5 | 3062 | 24 | 0"}));
  auto utc = [](unsigned long long seconds) {
    const auto at_time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&at_time, &parts);
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    return std::string(text);
  };
  EXPECT_EQ(rows("SELECT receipt_date, value FROM result_base WHERE param_info_id = 4 "
                 "ORDER BY receipt_date"),
            (Rows{utc(first) + " | 4.705", utc(second) + " | -1.25"}));
  // Displays show the newest value of each; the transmitter's is its last record. Colours:
  // humidity 55 green, 5 bar green, valve 1 green, -1.25 bar green, 23 and 24 degrees green.
  EXPECT_EQ(rows("SELECT id, latest_raw_value FROM visualization ORDER BY id"),
            (Rows{"3021 | 55", "3031 | 5", "3041 | 1", "3051 | -1.25", "3061 | 23", "3062 | 24"}));
  EXPECT_EQ(rows("SELECT id, status FROM control_point ORDER BY id"),
            (Rows{"12 | 1", "13 | 1", "14 | 1", "15 | 1", "16 | 1"}));
}

TEST_F(Scenario, RowOfKindOneIsStoredButNeitherShownNorAssessed) {
  // Row 1 of the wired temperature module is of kind 1 (a measurement taken on request): its
  // results are stored with status 2 (good, of kind 1), but the displays keep what they
  // showed, the point is not assessed and the machine's status pass is spent without a write.
  // Row 2, of kind 0 and within the same ten seconds, is shown and assessed; the machine
  // waits for its next turn.
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 8, 301, 11, 1.0);
  plant.add(display(3011, 3001, "SENSOR_T1", 301, 11, 60, 75, 90).latestRaw(20.0))
      .add(display(3012, 3001, "SENSOR_T2", 301, 11, 60, 75, 90).latestRaw(20.0));
  plant
      .add(MeasurementRow(1, 3001).module(8, 1).at(hourAgo()).kind(1).raw(
          RawRow(4, 2).samples({80, 81})))
      .add(MeasurementRow(2, 3001)
               .module(8, 1)
               .at(hourAgo(10))
               .kind(0)
               .raw(RawRow(4, 2).samples({25, 26})))
      .add(MeasurementRow(3, 3001)
               .module(8, 1)
               .at(hourAgo(20))
               .kind(0)
               .raw(RawRow(4, 2).samples({27, 28})));
  insert(plant);

  runVek({"-stop", "3"});

  EXPECT_EQ(results(), (Rows{"1 | 3011 | 80 | 2", "1 | 3012 | 81 | 2", "2 | 3011 | 25 | 0",
                             "2 | 3012 | 26 | 0"}));
  EXPECT_EQ(rows("SELECT latest_raw_value FROM visualization ORDER BY id"), (Rows{"25", "26"}));
  EXPECT_EQ(rows("SELECT status, status_max FROM control_point"), (Rows{"1 | 1"}));
  EXPECT_EQ(rows("SELECT status FROM aggregate"), (Rows{"NULL"}));
  EXPECT_EQ(rows("SELECT count(*) FROM status_aggregate"), (Rows{"0"}));
}

TEST_F(Scenario, MachineStatusIsReckonedAgainOnceTenSecondsHavePassed) {
  // Rows 1 and 2 come at once: the machine's status is reckoned for row 1 only. The service
  // then waits 30 seconds for new rows, which advances its clock; row 3, arriving meanwhile,
  // finds the machine due again and its status is reckoned at row 3's date. Row 1 leaves point
  // 11 green (1); row 3, 70 degrees, leaves it yellow (2).
  PlantBuilder plant;
  addSite(plant);
  addModule(plant, 1, 3001, 103, 301, 11, 1.0);
  plant.add(display(3011, 3001, "TEMPERATURE", 301, 11, 60, 75, 90));
  const std::string first = hourAgo();
  const std::string third = hourAgo(20);
  plant.add(temperature(1, 3001, 23.0, first)).add(temperature(2, 3001, 82.0, hourAgo(10)));
  insert(plant);

  ServiceRun run({"-host", db.host(), "-name", db.name(), "-user", db.user()});
  ASSERT_TRUE(run.waitForOutput("pause: 30\n", kRunSec)) << run.standardOutput();
  PlantBuilder later;
  later.add(temperature(3, 3001, 70.0, third));
  insert(later);
  // The wait ends within half a minute; allow for a loaded machine.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(90);
  while (rows("SELECT count(*) FROM status_aggregate") != Rows{"2"} &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  run.sendSignal(SIGTERM);
  int status = -1;
  EXPECT_TRUE(run.waitForExit(kRunSec, status));

  EXPECT_EQ(rows("SELECT status, calculated_at = '" + first + "', calculated_at = '" + third +
                 "' FROM status_aggregate ORDER BY id"),
            (Rows{"1 | t | f", "2 | f | t"}))
      << run.standardOutput();
  EXPECT_EQ(rows("SELECT status, status_max FROM aggregate"), (Rows{"2 | 2"}));
}
