// Run and dispatch over real tables: the axis maps from the channels' axis texts, the guard for
// a row without data, pairs that pass verify but compute nothing, and one wireless temperature
// row from the store to RESULT_BASE in the order the main loop takes.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "PipelineFixture.h"

namespace {

using namespace vek_test;

using AxisMap = std::map<std::string, std::string>;
const AxisMap kXyz = {{"x", "x"}, {"y", "y"}, {"z", "z"}};
const AxisMap kAbc = {{"a", "a"}, {"b", "b"}, {"c", "c"}};

class DataParsingDispatch : public PipelineTest {
protected:
  // Row 1 of module 42: a wireless temperature (type 103) of 23 degrees.
  static MeasurementRow temperatureRow() {
    return MeasurementRow(1, 42)
        .module(103, 1)
        .at("2024-05-01 10:00:00")
        .raw(RawRow(4, 2).samples({23.0}));
  }
};

TEST_F(DataParsingDispatch, AxisMapsSayWhichLetterStandsInEachPlace) {
  PlantBuilder plant = machine(42, 103);
  // Upper case works as lower case. The first triple is mounted z, x, y; the second c, a, b.
  plant.statement("UPDATE channel SET axis_order = 'ZXYcab' WHERE id = 100;").add(temperatureRow());
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  EXPECT_EQ(m->axes_xyz_first, (AxisMap{{"x", "z"}, {"y", "x"}, {"z", "y"}}));
  EXPECT_EQ(m->axes_xyz_second, kXyz);
  EXPECT_EQ(m->axes_abc_first, kAbc);
  EXPECT_EQ(m->axes_abc_second, (AxisMap{{"a", "c"}, {"b", "a"}, {"c", "b"}}));

  // A later point with a shorter text changes only the places its text reaches.
  m->channels.at(0).axis_order = "y";
  m->run(true);
  EXPECT_EQ(m->axes_xyz_first, (AxisMap{{"x", "y"}, {"y", "x"}, {"z", "y"}}));

  // From the seventh letter on nothing counts; an empty text changes nothing.
  Measurement fresh = load(1);
  fresh->readData();
  fresh->setControlPoint(fresh.aggregate->control_points.at(0));
  fresh->channels.at(0).axis_order = "xyzzyxa";
  fresh->run(true);
  EXPECT_EQ(fresh->axes_xyz_first, kXyz);
  EXPECT_EQ(fresh->axes_xyz_second, (AxisMap{{"x", "z"}, {"y", "y"}, {"z", "x"}}));
  EXPECT_EQ(fresh->axes_abc_first, kAbc);
  fresh->channels.at(0).axis_order = "";
  fresh->run(true);
  EXPECT_EQ(fresh->axes_xyz_second, (AxisMap{{"x", "z"}, {"y", "y"}, {"z", "x"}}));
}

TEST_F(DataParsingDispatch, MachineWithoutPointsTakesTheFallbackChannel) {
  PlantBuilder plant;
  plant.add(ModuleRow(7, 42, 103))
      .add(ChannelRow(100, 42).rawParam("").axisOrder("yzx"))
      .add(temperatureRow());
  plant.insert(sql());

  Measurement m = load(1);
  runAll(m);
  EXPECT_EQ(m->axes_xyz_first, (AxisMap{{"x", "y"}, {"y", "z"}, {"z", "x"}}));
  ASSERT_EQ(m->results.size(), 1u);
  EXPECT_EQ(m->results[0].channel_id, 100);
  EXPECT_EQ(m->results[0].control_point_id, 0);
}

TEST_F(DataParsingDispatch, RowWithoutDataAndUnlistedPairsComputeNothing) {
  PlantBuilder plant = machine(42, 103);
  plant.add(MeasurementRow(1, 42).module(103, 1).at("2024-05-01 10:00:00"))
      .add(MeasurementRow(2, 42)
               .module(12, 2)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 2).samples({1.0})))
      .add(MeasurementRow(3, 42)
               .module(5, 3)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 2).samples({1.0})))
      .add(MeasurementRow(4, 42)
               .module(3, 12)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 2).samples({1.0})));
  plant.insert(sql());

  Measurement empty = load(1);
  runAll(empty);
  EXPECT_TRUE(empty->no_data);
  EXPECT_FALSE(empty->computed);
  EXPECT_TRUE(empty->results.empty());
  EXPECT_NE(logText().find("no data in fu_raw\n"), std::string::npos);

  for (int id : {2, 3, 4}) {
    SCOPED_TRACE(id);
    Measurement m = load(id);
    EXPECT_TRUE(m->verify());
    const std::string before = logText();
    runAll(m);
    EXPECT_FALSE(m->computed);
    EXPECT_TRUE(m->results.empty());
    EXPECT_EQ(logText(), before) << "an unlisted pair passes in silence";
  }
}

TEST_F(DataParsingDispatch, WirelessTemperatureRowFromTheStoreToItsResult) {
  PlantBuilder plant = machine(42, 103);
  plant
      .add(VisualizationRow(501, 42, "TEMPERATURE")
               .channel(100)
               .controlPoint(11)
               .thresholds(40, 60, 80))
      .add(temperatureRow());
  plant.insert(sql());

  // The loop's order: print, verify, readData, setControlPoint and run per point, then for
  // each result updateLatest with the visualizations of its place, print_result and write.
  Measurement m = load(1);
  EXPECT_EQ(m->print(), " 2024-05-01 10:00:00 source: 42, mod: 103, param: 1\n");
  ASSERT_TRUE(m->verify());
  runAll(m);
  EXPECT_TRUE(m->computed);
  ASSERT_EQ(m->results.size(), 1u);
  m->updateLatest(0, m.shown->getData({1, 2, 3}, 100, 11));
  EXPECT_EQ(m->print_result(m->results[0]),
            "channel: 100, control_point: 11, status_calc: 0, status_vector: 0\n"
            "TEMPERATURE: 23.000000\n");
  m->write(m->results[0]);

  EXPECT_EQ(scalar("SELECT param_info_id || '|' || receipt_date || '|' || source || '|' || value "
                   "|| '|' || status_calc || '|' || has_raw_data FROM result_501"),
            "1|2024-05-01 10:00:00|42|23|0|false");
  EXPECT_EQ(scalar("SELECT status_calc || '|' || status_vector || '|' || has_raw_data "
                   "FROM math_history WHERE param_info_id = 1"),
            "0|0|false");
}

} // namespace
