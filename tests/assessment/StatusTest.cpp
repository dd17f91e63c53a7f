// The colours of a control point's parameters and their reduction to the point's status, with
// visualization records as the store delivers them; the reads of a recalculation against real
// history rows.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "assessment/Status.h"
#include "support/PlantBuilder.h"
#include "support/StoreTest.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// An active, assessed parameter of point 11 on channel 100 with thresholds green, yellow,
// orange, weight kz and latest raw value.
visualization parameter(int id, const std::string& name, float green, float yellow, float orange,
                        float kz, double value) {
  visualization row;
  row.id = id;
  row.source = 42;
  row.type_param = 1;
  row.channel_id = 100;
  row.control_point_id = 11;
  row.name_param = name;
  row.green = green;
  row.yellow = yellow;
  row.orange = orange;
  row.kz = kz;
  row.active = 1;
  row.corridor_active = 1;
  row.latest_raw_value = value;
  return row;
}

Status assess(const std::vector<visualization>& rows, int control_point_id = 11) {
  Status status(nullptr, 42, 1001, 100, control_point_id, false);
  status.readData(rows);
  status.calculateStatus();
  return status;
}

} // namespace

TEST(StatusColour, ThresholdsBelongToTheBetterColour) {
  // Vibration velocity in mm/s: smaller is better, a value on a threshold is still within it.
  EXPECT_EQ(Status::color(2.8f, 2.8f, 4.5f, 7.1f), 1);
  EXPECT_EQ(Status::color(2.81f, 2.8f, 4.5f, 7.1f), 2);
  EXPECT_EQ(Status::color(4.5f, 2.8f, 4.5f, 7.1f), 2);
  EXPECT_EQ(Status::color(7.1f, 2.8f, 4.5f, 7.1f), 3);
  EXPECT_EQ(Status::color(7.2f, 2.8f, 4.5f, 7.1f), 4);
  // Battery charge in %: larger is better.
  EXPECT_EQ(Status::color_invers(50.0f, 50.0f, 30.0f, 20.0f), 1);
  EXPECT_EQ(Status::color_invers(49.0f, 50.0f, 30.0f, 20.0f), 2);
  EXPECT_EQ(Status::color_invers(25.0f, 50.0f, 30.0f, 20.0f), 3);
  EXPECT_EQ(Status::color_invers(20.0f, 50.0f, 30.0f, 20.0f), 3);
  EXPECT_EQ(Status::color_invers(19.0f, 50.0f, 30.0f, 20.0f), 4);
  // A reading that is no number is beyond every limit, so a dead sensor shows red.
  EXPECT_EQ(Status::color(kNaN, 2.8f, 4.5f, 7.1f), 4);
  EXPECT_EQ(Status::color_invers(kNaN, 50.0f, 30.0f, 20.0f), 4);
  EXPECT_EQ(Status::color_corridor(kNaN, 2.5f, 5.0f, 10.0f, 100.0f), 4);
}

TEST(StatusColour, CorridorBoundsAreCutTowardZero) {
  // Supply frequency around 100: green 2.5 % gives 97.5 .. 102.5, cut to 97 .. 102; yellow 5 %
  // gives 95 .. 105; orange 10 % gives 90 .. 110.
  EXPECT_EQ(Status::color_corridor(102.0f, 2.5f, 5.0f, 10.0f, 100.0f), 1);
  EXPECT_EQ(Status::color_corridor(97.0f, 2.5f, 5.0f, 10.0f, 100.0f), 1);
  EXPECT_EQ(Status::color_corridor(102.2f, 2.5f, 5.0f, 10.0f, 100.0f), 2);
  EXPECT_EQ(Status::color_corridor(96.9f, 2.5f, 5.0f, 10.0f, 100.0f), 2);
  EXPECT_EQ(Status::color_corridor(109.5f, 2.5f, 5.0f, 10.0f, 100.0f), 3);
  EXPECT_EQ(Status::color_corridor(89.0f, 2.5f, 5.0f, 10.0f, 100.0f), 4);
  // Centre 10 with orange 1075 %: -97.5 .. 117.5, cut toward zero to -97 .. 117.
  EXPECT_EQ(Status::color_corridor(-97.0f, 10.0f, 20.0f, 1075.0f, 10.0f), 3);
  EXPECT_EQ(Status::color_corridor(-97.2f, 10.0f, 20.0f, 1075.0f, 10.0f), 4);
  EXPECT_EQ(Status::color_corridor(117.9f, 10.0f, 20.0f, 1075.0f, 10.0f), 4);
  // A corridor wider than a 32-bit count (centre 1000000 with 1e9 %) is held at the ends of
  // that range: 1e9 lies inside, 3e9 beyond.
  EXPECT_EQ(Status::color_corridor(1e9f, 1e9f, 2e9f, 3e9f, 1000000.0f), 1);
  EXPECT_EQ(Status::color_corridor(3e9f, 1e9f, 2e9f, 3e9f, 1000000.0f), 4);
  EXPECT_EQ(Status::color_corridor(-3e9f, 1e9f, 2e9f, 3e9f, 1000000.0f), 4);
}

TEST(StatusCalculate, MeanOfWeightedColoursThatCount) {
  std::vector<visualization> rows = {
      // Velocity 5.0 mm/s lies within orange: colour 3, weight 1.
      parameter(501, "V_RMS", 2.8f, 4.5f, 7.1f, 1.0f, 5.0),
      // Bearing temperature 70 within yellow: colour 2, weight 2, so 4.
      parameter(502, "TEMP", 60.0f, 80.0f, 95.0f, 2.0f, 70.0),
      // Kurtosis 10 beyond orange but weight 0: colour 4 that does not move the point.
      parameter(503, "KURTOSIS", 3.0f, 4.0f, 5.0f, 0.0f, 10.0),
      // Peak acceleration of an inactive row and a battery with its corridor switched off:
      // not assessed.
      parameter(504, "A_PEAK", 1.0f, 2.0f, 3.0f, 1.0f, 100.0),
      parameter(505, "U_BATTERY", 50.0f, 30.0f, 20.0f, 1.0f, 5.0)};
  rows[3].active = 0;
  rows[4].corridor_active = 0;
  const Status status = assess(rows);
  ASSERT_TRUE(status.has_data);
  ASSERT_EQ(status.parameters.size(), 5u);
  EXPECT_EQ(status.parameters.at("V_RMS").color, 3);
  EXPECT_EQ(status.parameters.at("TEMP").color, 2);
  EXPECT_EQ(status.parameters.at("TEMP").weighted, 4.0f);
  EXPECT_EQ(status.parameters.at("KURTOSIS").color, 4);
  EXPECT_EQ(status.parameters.at("KURTOSIS").weighted, 0.0f);
  EXPECT_EQ(status.parameters.at("A_PEAK").color, 0);
  EXPECT_EQ(status.parameters.at("U_BATTERY").color, 0);
  // (3 + 4) / 2: the not assessed and the weightless parameters leave the mean.
  EXPECT_EQ(status.status, 3.5f);
  EXPECT_EQ(status.status_max, 4.0f);
  EXPECT_NE(status.print().find("final status: 3.5\n"), std::string::npos);
}

TEST(StatusCalculate, NothingToAssessIsOneAndNothingAtAllIsNoStatus) {
  // One orange parameter among not assessed ones is the point's whole status.
  std::vector<visualization> rows;
  rows.push_back(parameter(501, "V_RMS", 2.8f, 4.5f, 7.1f, 1.0f, 6.0));
  for (int k = 0; k < 9; ++k) {
    rows.push_back(parameter(510 + k, "P" + std::to_string(k), 1.0f, 2.0f, 3.0f, 1.0f, 9.0));
    rows.back().corridor_active = 0;
  }
  EXPECT_EQ(assess(rows).status, 3.0f);

  // Everything switched off: the point is good (1.0) and is still written.
  rows.erase(rows.begin());
  const Status idle = assess(rows);
  EXPECT_TRUE(idle.has_data);
  EXPECT_EQ(idle.status, 1.0f);
  EXPECT_EQ(idle.status_max, 1.0f);

  // A weight of 0.01 makes a green colour of 0.01, which does not count.
  const Status light = assess({parameter(501, "V_RMS", 2.8f, 4.5f, 7.1f, 0.01f, 1.0)});
  EXPECT_EQ(light.parameters.at("V_RMS").color, 1);
  EXPECT_EQ(light.status, 1.0f);

  // No visualization at the point: no status at all.
  const Status empty = assess({});
  EXPECT_FALSE(empty.has_data);
  EXPECT_EQ(empty.status, 0.0f);
  EXPECT_TRUE(empty.parameters.empty());
}

TEST(StatusCalculate, RuleChosenByThresholdOrderAndCorridorCentre) {
  // Yellow equal to orange reads the scale as larger-is-better: 7 is below green 10 and at or
  // above yellow 5, so yellow (the smaller-is-better rule would call it green).
  EXPECT_EQ(
      assess({parameter(501, "FLOW", 10.0f, 5.0f, 5.0f, 1.0f, 7.0)}).parameters.at("FLOW").color,
      2);
  // A corridor centre turns the thresholds into percentages even when the parameter's
  // corridor type is the plain one: 104 lies within 95 .. 105, so yellow (against the plain
  // thresholds it would be beyond orange 10).
  visualization frequency = parameter(502, "FREQ", 2.5f, 5.0f, 10.0f, 1.0f, 104.0);
  frequency.corridor_zero = 100;
  const Status corridor = assess({frequency});
  EXPECT_EQ(corridor.parameters.at("FREQ").type_corridor, 2);
  EXPECT_EQ(corridor.parameters.at("FREQ").color, 2);
  // Corridor type 2 without a centre compares with a corridor around 0: only 0 is green.
  visualization zero = parameter(503, "OFFSET", 2.5f, 5.0f, 10.0f, 1.0f, 0.5);
  zero.type_corridor = 2;
  EXPECT_EQ(assess({zero}).parameters.at("OFFSET").color, 4);
}

TEST(StatusRead, FirstRowOfANameAndTheSmoothedValueOfAPoint) {
  visualization first = parameter(501, "V_RMS", 2.8f, 4.5f, 7.1f, 1.0f, 5.0);
  first.middle = 1;
  first.latest_middle_value = 3.0;
  visualization second = parameter(502, "V_RMS", 10.0f, 20.0f, 30.0f, 1.0f, 25.0);
  const Status status = assess({first, second});
  ASSERT_EQ(status.parameters.size(), 1u);
  const Status::data_status& kept = status.parameters.at("V_RMS");
  EXPECT_EQ(kept.visualization_id, 501);
  EXPECT_EQ(kept.orange, 7.1f);
  // The point asks for a middle: the smoothed 3.0 is judged, yellow.
  EXPECT_EQ(kept.value, 3.0f);
  EXPECT_EQ(kept.color, 2);
  // Without a control point the raw reading is judged even where a middle is kept.
  EXPECT_EQ(assess({first}, 0).parameters.at("V_RMS").value, 5.0f);
}

namespace {

class StatusRecalculationTest : public vek_test::StoreTest {};

} // namespace

TEST_F(StatusRecalculationTest, JudgesTheLastGoodStoredValueUpToTheMeasurement) {
  using namespace vek_test;
  PlantBuilder plant;
  plant.add(VisualizationRow(500, 42, "V_RMS").channel(100).controlPoint(11).middle(true))
      .add(VisualizationRow(501, 42, "TEMP").channel(100).controlPoint(11));
  // Velocity history: measurement 1005 good (value 3.0, middle 2.5), 1006 failed, 1008 after
  // the measurement under recalculation (1007). Temperature has only a later row.
  plant.statement("INSERT INTO result_base (param_info_id, visualization_id, receipt_date, value, "
                  "middle, status_calc) VALUES "
                  "(1005, 500, '2024-05-01 10:00:00', 3.0, 2.5, 0), "
                  "(1006, 500, '2024-05-01 11:00:00', 9.0, 9.0, 1), "
                  "(1008, 500, '2024-05-01 13:00:00', 7.0, 7.0, 0), "
                  "(1009, 501, '2024-05-01 14:00:00', 80.0, 80.0, 0)");
  plant.insert(sql());

  visualization velocity = parameter(500, "V_RMS", 2.8f, 4.5f, 7.1f, 1.0f, 99.0);
  velocity.middle = 1;
  visualization temperature = parameter(501, "TEMP", 60.0f, 80.0f, 95.0f, 1.0f, 99.0);
  Status status(&store(), 42, 1007, 100, 11, true);
  status.readData({velocity, temperature});
  // The display's latest values (99) belong to the present; the stretch is judged on the
  // middle of 1005, the last good row at or before 1007, and the temperature had no row yet.
  EXPECT_EQ(status.parameters.at("V_RMS").value, 2.5f);
  EXPECT_EQ(status.parameters.at("TEMP").value, 0.0f);
  status.calculateStatus();
  EXPECT_EQ(status.status, 1.0f); // both green
}
