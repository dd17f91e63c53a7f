// Module, motor, bearing and the visualizations of a module, read from real rows.
#include <algorithm>
#include <string>
#include <vector>

#include "BarePlantTest.h"
#include "equipment/Aggregate.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "support/TypicalPlant.h"

namespace {

using namespace vek_test;

// An organization three hours east of UTC, with one site, one gateway and one machine.
PlantBuilder site() {
  PlantBuilder plant;
  plant.add(OrganizationRow("plant-east").utc("UTC+3:00"))
      .add(NodeRow(1, "plant-east"))
      .add(GatewayRow(5, 1))
      .add(AggregateRow(3, 1).equipmentType(1).name("pump 1"))
      .add(ControlPointRow(11, 3).weight(1.0));
  return plant;
}

class ModuleTest : public BarePlantTest {};

TEST_F(ModuleTest, ReadsTheRowTheMachineAndTheOrganization) {
  PlantBuilder plant = site();
  plant
      .add(ModuleRow(7, 42, 10)
               .revision(2)
               .config(0x8000001F)
               .period(5)
               .gateway(5)
               .multichannel(true))
      .add(ChannelRow(100, 42).axisOrder("xyz"))
      .add(BindingRow(100, 11));
  plant.insert(sql());

  Module module(&store(), 42);
  EXPECT_EQ(module.source, 42);
  EXPECT_EQ(module.id, 7);
  EXPECT_EQ(module.type_module, 10);
  EXPECT_EQ(module.revision, 2);
  EXPECT_EQ(module.config, 0x8000001Fu);
  EXPECT_EQ(module.broadcasting_period, 5);
  EXPECT_EQ(module.gateway_id, 5);
  EXPECT_TRUE(module.multichannel);
  EXPECT_EQ(module.aggregate_id, 3);
  EXPECT_EQ(module.utc_value, "+3:00");
  EXPECT_EQ(module.organization_alias, "plant-east");
  // The loop uses the fields as the constructor left them; only readData judges them.
  EXPECT_FALSE(module.valid);
  EXPECT_EQ(module.message, "");
  EXPECT_TRUE(module.readData());
  EXPECT_TRUE(module.valid);
  EXPECT_EQ(module.message, "");
  EXPECT_EQ(module.print(), "42 : 10 2\n");
}

TEST_F(ModuleTest, UnknownModuleIsRejectedWithItsNumber) {
  Module module(&store(), 77);
  EXPECT_EQ(module.type_module, 0);
  EXPECT_EQ(module.config, 0x80000000u) << "the word of a module without configuration";
  EXPECT_FALSE(module.readData());
  EXPECT_FALSE(module.valid);
  EXPECT_EQ(module.message, "data of module: 77 is incorrect\n");
  EXPECT_EQ(module.print(), "77 : 0 0\n");
}

TEST_F(ModuleTest, NullColumnsAndNoActiveBindingLeaveDefaults) {
  PlantBuilder plant = site();
  plant.add(ModuleRow(8, 43, 3)).add(ChannelRow(101, 43)).add(BindingRow(101, 11).active(false));
  plant.insert(sql());

  Module module(&store(), 43);
  EXPECT_EQ(module.type_module, 3);
  EXPECT_EQ(module.id, 8);
  EXPECT_EQ(module.config, 0u) << "a NULL configuration text is not converted";
  EXPECT_EQ(module.revision, 0);
  EXPECT_EQ(module.broadcasting_period, 0);
  EXPECT_EQ(module.gateway_id, 0);
  EXPECT_FALSE(module.multichannel);
  EXPECT_EQ(module.aggregate_id, 0) << "an inactive binding leads to no machine";
  EXPECT_EQ(module.utc_value, "");
  EXPECT_EQ(module.organization_alias, "");
  EXPECT_TRUE(module.readData());
}

class DataMotorTest : public BarePlantTest {};

TEST_F(DataMotorTest, NameplateDecidesValidity) {
  PlantBuilder plant;
  plant.add(MotorRow(1).nameplate(55, 1480, 98, 380, 4, 2))
      .add(MotorRow(2).nameplate(1, 1480, 98, 380, 4, 2))
      .add(MotorRow(3).nameplate(55, 1, 98, 380, 4, 2))
      .add(MotorRow(4).nameplate(55, 1480, 98, 380, 0, 2))
      .add(MotorRow(5).power("2").speed("2").poles("1"))
      .add(MotorRow(6).power("55").poles("4"));
  plant.insert(sql());

  const DataMotor motor(&store(), 1);
  EXPECT_TRUE(motor.valid);
  EXPECT_EQ(motor.power, 55);
  EXPECT_EQ(motor.speed, 1480);
  EXPECT_EQ(motor.i, 98);
  EXPECT_EQ(motor.u, 380);
  EXPECT_EQ(motor.p2, 4);
  EXPECT_EQ(motor.class_vibro, 2);
  EXPECT_EQ(motor.print(), "1 55 1480\n");
  EXPECT_EQ(motor.message, "") << "an invalid motor's log line is empty, so is a valid one's";

  EXPECT_FALSE(DataMotor(&store(), 2).valid) << "power 1";
  EXPECT_FALSE(DataMotor(&store(), 3).valid) << "speed 1";
  EXPECT_FALSE(DataMotor(&store(), 4).valid) << "no poles";
  EXPECT_TRUE(DataMotor(&store(), 5).valid) << "the smallest usable nameplate";
  const DataMotor without_speed(&store(), 6);
  EXPECT_FALSE(without_speed.valid) << "a NULL speed stays 0";
  EXPECT_EQ(without_speed.speed, 0);
  EXPECT_EQ(without_speed.p2, 4);

  const DataMotor missing(&store(), 0);
  EXPECT_FALSE(missing.valid);
  EXPECT_EQ(missing.power, 0);
  EXPECT_EQ(missing.message, "");
}

TEST_F(DataMotorTest, UnreadableColumnKeepsWhatWasReadBeforeIt) {
  PlantBuilder plant;
  plant.add(MotorRow(9).power("55").speed("abc").poles("4"));
  plant.insert(sql());
  const DataMotor motor(&store(), 9);
  EXPECT_FALSE(motor.valid);
  EXPECT_EQ(motor.power, 55);
  EXPECT_EQ(motor.p2, 0) << "columns after the bad one are not read";
  EXPECT_NE(logText().find("Invalid data in the table MOTOR\n"), std::string::npos);
}

class DataBearingTest : public BarePlantTest {};

TEST_F(DataBearingTest, GeometryDerivedValuesAndValidity) {
  PlantBuilder plant;
  plant.add(BearingRow(1).geometry(7.9, 9, 1, 25.0, 52.0, 15.0))
      .add(BearingRow(2).geometry(0.0, 0, 3, 0.0, 0.0, 0.0))
      .add(BearingRow(3).geometry(7.9, 4, 1, 25.0, 52.0, 0.0))
      .add(BearingRow(4).geometry(0.0, 9, 1, 25.0, 52.0, 0.0))
      .add(BearingRow(5).countBalls(9).typeBearing(1));
  plant.insert(sql());

  const DataBearing bearing(&store(), 1);
  EXPECT_TRUE(bearing.valid);
  EXPECT_EQ(bearing.count_balls, 9);
  EXPECT_EQ(bearing.type_bearing, 1);
  EXPECT_DOUBLE_EQ(bearing.ball_diameter, 7.9);
  EXPECT_DOUBLE_EQ(bearing.mean_diameter, 38.5);
  // 3.14159265 / 12 by hand; pi to full precision would give 0.26179938779914941.
  EXPECT_DOUBLE_EQ(bearing.angle_rad, 0.2617993875);
  EXPECT_EQ(bearing.print(), "7.900000 9 38.500000");

  EXPECT_TRUE(DataBearing(&store(), 2).valid) << "a plain bearing needs no geometry";
  EXPECT_FALSE(DataBearing(&store(), 3).valid) << "four rolling elements";
  EXPECT_FALSE(DataBearing(&store(), 4).valid) << "no ball diameter";
  const DataBearing without_diameters(&store(), 5);
  EXPECT_FALSE(without_diameters.valid) << "NULL diameters stay 0";
  EXPECT_EQ(without_diameters.mean_diameter, 0.0);
  EXPECT_FALSE(DataBearing(&store(), 0).valid) << "no bearing";
}

class VisualizationTest : public BarePlantTest {
protected:
  // Module 42: channel 100 on point 11 and channel 101 on point 12, with parameters of the
  // three classes, one inactive and one with ACTIVE NULL.
  void SetUp() override {
    BarePlantTest::SetUp();
    PlantBuilder plant;
    plant
        .add(VisualizationRow(1, 42, "V_RMS")
                 .typeParam(1)
                 .channel(100)
                 .controlPoint(11)
                 .thresholds(2.8, 4.5, 7.1))
        .add(VisualizationRow(2, 42, "TEMP").typeParam(2).channel(100).controlPoint(11))
        .add(VisualizationRow(3, 42, "DEFECT").typeParam(3).channel(100).controlPoint(11))
        .add(VisualizationRow(4, 42, "A_RMS")
                 .typeParam(1)
                 .channel(100)
                 .controlPoint(11)
                 .active(false))
        .add(VisualizationRow(5, 42, "V_PEAK").typeParam(1).channel(101).controlPoint(12))
        .add(VisualizationRow(6, 42, "KURT")
                 .typeParam(3)
                 .channel(100)
                 .controlPoint(11)
                 .setNull("active"))
        .add(VisualizationRow(7, 42, "HIDDEN")
                 .typeParam(1)
                 .channel(100)
                 .controlPoint(11)
                 .withoutObservedParam())
        .add(VisualizationRow(8, 43, "V_RMS").typeParam(1).channel(100).controlPoint(11));
    plant.insert(sql());
  }

  static std::vector<int> ids(const std::vector<visualization>& list) {
    std::vector<int> result;
    for (const auto& item : list) {
      result.push_back(item.id);
    }
    return result;
  }

  // The ids of the stored rows of the given types, type by type, each in stored order. The
  // server returns the rows in an order of its choosing (no ORDER BY); the filters must keep
  // it within a type.
  static std::vector<int> storedIds(const Visualization& visualization,
                                    const std::vector<int>& types,
                                    const std::vector<int>& allowed = {}) {
    std::vector<int> result;
    for (const int type : types) {
      for (const auto& item : visualization.visualizations) {
        const bool listed =
            allowed.empty() || std::find(allowed.begin(), allowed.end(), item.id) != allowed.end();
        if (item.type_param == type && listed) {
          result.push_back(item.id);
        }
      }
    }
    return result;
  }
};

TEST_F(VisualizationTest, TypesGroupInTheGivenOrderAndKeepInactiveRows) {
  const Visualization visualization(&store(), 42);
  EXPECT_TRUE(visualization.verify());
  ASSERT_EQ(visualization.visualizations.size(), 6u)
      << "another module's rows and a parameter without observed_param are not read";
  EXPECT_EQ(visualization.source, 42);

  const auto class_3_then_1 = ids(visualization.getData({3, 1}));
  EXPECT_EQ(class_3_then_1, storedIds(visualization, {3, 1}));
  ASSERT_EQ(class_3_then_1.size(), 5u) << "inactive rows are kept";
  EXPECT_TRUE((class_3_then_1[0] == 3 && class_3_then_1[1] == 6) ||
              (class_3_then_1[0] == 6 && class_3_then_1[1] == 3))
      << "class 3 comes first";
  EXPECT_EQ(ids(visualization.getData({1, 2, 3})), storedIds(visualization, {1, 2, 3}));
  EXPECT_EQ(ids(visualization.getData({2, 2})), (std::vector<int>{2, 2}))
      << "a type given twice gives its rows twice";
  EXPECT_TRUE(visualization.getData({4}).empty());
  EXPECT_TRUE(visualization.getData({}).empty());
}

TEST_F(VisualizationTest, ChannelFormKeepsOnlyActiveRowsOfThatChannelAndPoint) {
  const Visualization visualization(&store(), 42);
  EXPECT_EQ(ids(visualization.getData({1, 2, 3}, 100, 11)), (std::vector<int>{1, 2, 3}))
      << "inactive and NULL-active rows are left out";
  EXPECT_EQ(ids(visualization.getData({3, 1}, 100, 11)), (std::vector<int>{3, 1}));
  EXPECT_EQ(ids(visualization.getData({1, 1}, 100, 11)), (std::vector<int>{1, 1}));
  EXPECT_EQ(ids(visualization.getData({1}, 101, 12)), (std::vector<int>{5}));
  EXPECT_TRUE(visualization.getData({1}, 100, 12).empty()) << "channel and point must both match";
  EXPECT_TRUE(visualization.getData({1}, 101, 11).empty());
}

TEST_F(VisualizationTest, ReadDataReplacesTheRowsWithWhatIsStoredNow) {
  Visualization visualization(&store(), 42);
  exec("UPDATE visualization SET latest_raw_value = 3.25 WHERE id = 1");
  exec("UPDATE visualization SET active = TRUE WHERE id = 4");
  visualization.readData();
  ASSERT_EQ(visualization.visualizations.size(), 6u) << "rows are not appended twice";
  const auto v_rms = visualization.getData({1}, 100, 11);
  EXPECT_EQ(ids(v_rms), storedIds(visualization, {1}, {1, 4}));
  ASSERT_EQ(v_rms.size(), 2u) << "the row made active is taken now";
  const auto& first = v_rms[0].id == 1 ? v_rms[0] : v_rms[1];
  EXPECT_DOUBLE_EQ(first.latest_raw_value, 3.25);
  EXPECT_FLOAT_EQ(first.green, 2.8f);
  EXPECT_FLOAT_EQ(first.yellow, 4.5f);
  EXPECT_FLOAT_EQ(first.orange, 7.1f);

  const Visualization empty(&store(), 99);
  EXPECT_TRUE(empty.visualizations.empty());
  EXPECT_TRUE(empty.verify());
}

class TypicalPlantTest : public BarePlantTest {};

TEST_F(TypicalPlantTest, EveryModuleReadsAsAValidModuleOnItsOwnMachine) {
  PlantBuilder builder;
  TypicalPlant shape;
  shape.machines = 3;
  shape.measurements = 1;
  shape.samples = 16;
  addTypicalPlant(builder, shape);
  builder.insert(sql());

  for (int m = 1; m <= shape.machines; ++m) {
    SCOPED_TRACE(m);
    const long source = 1000 + m;
    Module module(&store(), source);
    EXPECT_TRUE(module.readData());
    EXPECT_EQ(module.aggregate_id, m);
    EXPECT_EQ(module.organization_alias, "plant");
    EXPECT_EQ(module.utc_value, "+3:00");

    const Aggregate aggregate(&store(), source, &log(), shape.start, nullptr);
    EXPECT_EQ(aggregate.id, m);
    ASSERT_EQ(aggregate.control_points.size(), 1u);
    const control_point& point = aggregate.control_points[0];
    EXPECT_EQ(point.id, 10 * m + 1);
    EXPECT_EQ(point.channel_ids, std::vector<int>{100 * m});
    EXPECT_TRUE(DataMotor(&store(), point.motor_id).valid);
    ASSERT_EQ(point.bearing_ids.size(), 1u);
    EXPECT_TRUE(DataBearing(&store(), point.bearing_ids[0]).valid);

    const Visualization visualization(&store(), source);
    EXPECT_EQ(visualization.getData({1}, 100 * m, 10 * m + 1).size(), 8u);
    EXPECT_EQ(visualization.getData({2}, 100 * m, 10 * m + 1).size(), 3u);
  }
}

} // namespace
