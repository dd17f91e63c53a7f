// The status of a control point after a measurement, over real tables, on the loop's road:
// compute, write the results and the latest values, reload the displays, colour the point, and
// reduce the machine. Pump 1 (machine 3) has one control point, 11, fed through channel 100.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "TelemetryRoad.h"
#include "assessment/DataCache.h"

namespace {

using namespace vek_test;

constexpr char kDate[] = "2024-05-01 10:00:00";

class ComputeStatus : public TelemetryTest {
protected:
  // The loop's steps for a row with data, without middle and trend: every result is filed
  // under its displays and written, the last good result of each point updates the displays,
  // and the reloaded displays colour the points.
  void measurementRow(Measurement& m, bool replay = false) {
    m->cache = &cache;
    runAll(m);
    std::map<int, std::size_t> last_of_point;
    for (std::size_t i = 0; i < m->results.size(); ++i) {
      last_of_point[m->results[i].control_point_id] = i;
    }
    for (std::size_t i = 0; i < m->results.size(); ++i) {
      const int index = static_cast<int>(i);
      m->updateLatest(index, m.shown->getData({1, 2, 3}, m->results[i].channel_id,
                                              m->results[i].control_point_id));
      m->write(m->results[i]);
      if (last_of_point[m->results[i].control_point_id] == i && !replay &&
          m->results[i].status_calc == 0) {
        store().writeLatestData(m->results[i]);
      }
    }
    m.shown->readData();
    m->computeStatus(m.shown->getData({1, 2, 3}));
  }

  // Humidity and pressure of one wireless module at point 11, each with its own weight and
  // messages: humidity (high is bad, 60/70/80 %) raises 1401 with recommendation 31 for orange
  // and 32 for yellow; pressure (low is bad, 5/4/3 bar, weight 0.5) raises 1402 with 33.
  static PlantBuilder humidityAndPressure() {
    PlantBuilder rows = machine(42, 104);
    rows.add(VisualizationRow(601, 42, "HUMIDITY")
                 .channel(100)
                 .controlPoint(11)
                 .thresholds(60, 70, 80)
                 .kz(1.0)
                 .corridorActive(true)
                 .messageSettings(messageSettings({{"corridorActive", {{"1401", {31, 32}}}}})))
        .add(VisualizationRow(602, 42, "PRESSURE")
                 .channel(100)
                 .controlPoint(11)
                 .thresholds(5, 4, 3)
                 .kz(0.5)
                 .corridorActive(true)
                 .messageSettings(messageSettings({{"corridorActive", {{"1402", {33}}}}})))
        .add(MessageRow("1401"))
        .add(MessageRow("1402"))
        .add(MessageRow("30"))
        .add(RecommendationRow(31, "1401").typeMessage(3))
        .add(RecommendationRow(32, "1401").typeMessage(2))
        .add(RecommendationRow(33, "1402").typeMessage(3))
        .add(MeasurementRow(1001, 42)
                 .module(104, 1)
                 .at(kDate)
                 .raw(RawRow(13, 7).samples({75.0}))
                 .raw(RawRow(3, 7).samples({2.0})));
    return rows;
  }

  std::string pointStatus() {
    return scalar("SELECT COALESCE(status::text, 'NULL') || '|' || COALESCE(status_max::text, "
                  "'NULL') || '|' || COALESCE(status_at::text, 'NULL') FROM control_point "
                  "WHERE id = 11");
  }

  DataCache cache;
};

TEST_F(ComputeStatus, WeightedPointStatusItsMessagesAndTheMachine) {
  humidityAndPressure().insert(sql());
  Measurement m = load(1001);
  measurementRow(m);

  // Humidity 75 % lies within orange 80: colour 3, weight 1, so 3. Pressure 2 bar is below
  // orange 3 on a falling scale: colour 4, weight 0.5, so 2. The point: (3 + 2) / 2 = 2.5,
  // its largest weighted colour 3.
  EXPECT_EQ(pointStatus(), "2.5|3|2024-05-01 10:00:00");
  EXPECT_EQ(cache.getCpStatus(11), 2.5f);
  EXPECT_NE(logText().find("write status element: 2.5\n"), std::string::npos);
  // Colour 3 raises the yellow message (type 2), colour 4 the orange one (type 3), each with
  // the recommendation enabled for its type, filed at the display that raised it. Wireless
  // rows carry no signal, so they are not in diagnostic mode.
  EXPECT_EQ(notes("1401"), "2024-05-01 10:00:00|0|2|42|100|11|NULL|32|601|f\n");
  EXPECT_EQ(notes("1402"), "2024-05-01 10:00:00|0|3|42|100|11|NULL|33|602|f\n");

  // The machine: its one point of weight 1 at 2.5 is orange.
  Aggregate pump(&store(), 42, &log(), kDate, &cache);
  pump.calculateStatus();
  pump.writeStatus();
  store().writeStatusAggregate(static_cast<float>(pump.status), static_cast<float>(pump.status_max),
                               pump.id, pump.date);
  EXPECT_EQ(scalar("SELECT status || '|' || status_max || '|' || status_at FROM aggregate "
                   "WHERE id = 3"),
            "2.5|2.5|2024-05-01 10:00:00");
  EXPECT_EQ(scalar("SELECT status FROM status_aggregate WHERE aggregate_id = 3"), "2.5");
  EXPECT_EQ(notes("30"), "2024-05-01 10:00:00|0|3|NULL|NULL|11|pump 1|NULL|NULL|f\n");
}

TEST_F(ComputeStatus, ReplayColoursFromHistoryButWritesAndRaisesNothing) {
  humidityAndPressure().insert(sql());
  Measurement m = load(1001, true);
  measurementRow(m, true);
  // Judged on the stored values of the row itself: the same 2.5, kept in the cache only.
  EXPECT_EQ(cache.getCpStatus(11), 2.5f);
  EXPECT_EQ(pointStatus(), "NULL|NULL|NULL");
  EXPECT_NE(logText().find("write status element: 2.5\n"), std::string::npos);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification"), "0");
}

TEST_F(ComputeStatus, SensorFailureLeavesThePointAsItWas) {
  PlantBuilder rows = machine(42, 103);
  rows.add(VisualizationRow(701, 42, "TEMPERATURE")
               .channel(100)
               .controlPoint(11)
               .thresholds(80, 100, 110)
               .kz(1.0)
               .corridorActive(true))
      .statement("UPDATE control_point SET status = 1.7, status_max = 2, "
                 "status_at = '2024-04-30 10:00:00' WHERE id = 11;")
      // 350 degrees is beyond what the wireless sensor measures: a failed sensor.
      .add(MeasurementRow(1001, 42).module(103, 1).at(kDate).raw(RawRow(4, 7).samples({350.0})))
      // An hour later a real 120 degrees: beyond orange 110.
      .add(MeasurementRow(1002, 42)
               .module(103, 1)
               .at("2024-05-01 11:00:00")
               .raw(RawRow(4, 7).samples({120.0})));
  rows.insert(sql());

  Measurement failed = load(1001);
  measurementRow(failed);
  ASSERT_EQ(failed->results.size(), 1u);
  ASSERT_EQ(failed->results[0].status_calc, 1);
  // A failed result says nothing about the machine: the point keeps yesterday's status.
  EXPECT_EQ(pointStatus(), "1.7|2|2024-04-30 10:00:00");
  EXPECT_EQ(cache.getCpStatus(11), 0.0f);
  EXPECT_EQ(logText().find("write status element"), std::string::npos);

  Measurement hot = load(1002);
  measurementRow(hot);
  EXPECT_EQ(pointStatus(), "4|4|2024-05-01 11:00:00");
  EXPECT_EQ(cache.getCpStatus(11), 4.0f);
}

} // namespace
