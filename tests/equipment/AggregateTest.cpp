// The machine of a module read from real rows: which channel leads to the machine, which
// control points the module has, the channel each point keeps, and motor and bearings.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "BarePlantTest.h"
#include "equipment/Aggregate.h"

namespace {

using namespace vek_test;

constexpr char kDate[] = "2024-05-01 10:00:00";

class AggregateTest : public BarePlantTest {
protected:
  // Pump 3 at node 1 of "plant": points 11 and 12 on module 42, point 14 on another module.
  // Point 11 has motor 5 and bearings 6 and 7; point 12 has motor 8.
  static PlantBuilder pump(int equipment_type) {
    PlantBuilder plant;
    plant.add(OrganizationRow("plant").utc("UTC+3:00"))
        .add(NodeRow(1, "plant"))
        .add(AggregateRow(3, 1)
                 .typeAggregate(4)
                 .equipmentType(equipment_type)
                 .statusType(2)
                 .rulDays(30)
                 .trendStart("2024-01-01 00:00:00")
                 .name("pump 3"))
        .add(ControlPointRow(11, 3).weight(1.5))
        .add(ControlPointRow(12, 3).weight(0.5))
        .add(ControlPointRow(14, 3).weight(2.0))
        .add(ControlPointRow(15, 3))
        .add(ModuleRow(7, 42, 10))
        .add(MotorRow(5).nameplate(55, 1480, 98, 380, 4, 2))
        .add(ControlPointMotorRow(11, 5))
        .add(ControlPointBearingRow(11, 6))
        .add(ControlPointBearingRow(11, 7))
        .add(MotorRow(8).nameplate(30, 2950, 50, 380, 2, 2))
        .add(ControlPointMotorRow(12, 8));
    return plant;
  }

  Aggregate read(long source) { return Aggregate(&store(), source, &log(), kDate, nullptr); }

  static std::vector<int> sorted(std::vector<int> ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
  }

  static const control_point* find(const Aggregate& aggregate, int id) {
    for (const auto& point : aggregate.control_points) {
      if (point.id == id) {
        return &point;
      }
    }
    return nullptr;
  }
};

TEST_F(AggregateTest, ReadsTheMachineItsWeightsAndTheModulesPoints) {
  PlantBuilder plant = pump(1);
  plant.add(ChannelRow(100, 42).axisOrder("xyz"))
      .add(BindingRow(100, 11))
      .add(ChannelRow(102, 42).rawParam("b"))
      .add(BindingRow(102, 12))
      .add(ChannelRow(103, 42))
      .add(BindingRow(103, 13).active(false))
      .add(ChannelRow(104, 42));
  plant.insert(sql());

  const Aggregate aggregate = read(42);
  EXPECT_FALSE(aggregate.no_channels);
  EXPECT_FALSE(aggregate.no_aggregate);
  EXPECT_EQ(aggregate.source, 42);
  EXPECT_EQ(aggregate.date, kDate);
  EXPECT_EQ(aggregate.id, 3);
  EXPECT_EQ(aggregate.type_aggregate_id, 4);
  EXPECT_EQ(aggregate.type_equipment_id, 1);
  EXPECT_EQ(aggregate.status_type, 2);
  EXPECT_EQ(aggregate.rul_days, 30);
  EXPECT_EQ(aggregate.trend_start, "2024-01-01 00:00:00");
  EXPECT_EQ(aggregate.name, "pump 3");
  EXPECT_EQ(aggregate.organization_alias, "plant");
  EXPECT_EQ(aggregate.status, 0.0);
  EXPECT_EQ(aggregate.status_max, 1.0);
  // Every point of the machine weighs in, also those of other modules; a NULL weight is 0.
  EXPECT_EQ(aggregate.control_points_weight,
            (std::map<int, float>{{11, 1.5f}, {12, 0.5f}, {14, 2.0f}, {15, 0.0f}}));

  EXPECT_EQ(aggregate.channels.size(), 4u) << "one record per channel and binding";
  ASSERT_EQ(aggregate.control_points.size(), 2u)
      << "an inactive binding and an unbound channel add no point";
  const control_point* first = find(aggregate, 11);
  const control_point* second = find(aggregate, 12);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->channel_ids, std::vector<int>{100});
  EXPECT_EQ(first->motor_id, 5);
  EXPECT_EQ(sorted(first->bearing_ids), (std::vector<int>{6, 7})) << "the server's order";
  EXPECT_EQ(second->channel_ids, std::vector<int>{102});
  EXPECT_EQ(second->motor_id, 8);
  EXPECT_TRUE(second->bearing_ids.empty());
  // The points follow the order of the module's channels.
  const auto position = [&](int channel_id) {
    return std::find_if(aggregate.channels.begin(), aggregate.channels.end(),
                        [&](const channel& item) { return item.id == channel_id; }) -
           aggregate.channels.begin();
  };
  EXPECT_EQ(aggregate.control_points.front().id, position(100) < position(102) ? 11 : 12);
}

TEST_F(AggregateTest, SharedPointKeepsOnlyTheChannelThatCreatedIt) {
  PlantBuilder plant = pump(1);
  plant.add(ChannelRow(100, 42))
      .add(BindingRow(100, 11))
      .add(ChannelRow(101, 42))
      .add(BindingRow(101, 11))
      .add(ChannelRow(105, 42))
      .add(BindingRow(105, 11).active(false))
      .add(BindingRow(105, 12));
  plant.insert(sql());

  const Aggregate aggregate = read(42);
  ASSERT_EQ(aggregate.channels.size(), 4u) << "channel 105 has two bindings";
  // The first active channel of point 11 in the order the store gave them.
  int creator = 0;
  for (const auto& item : aggregate.channels) {
    if (item.active && item.control_point_id == 11) {
      creator = item.id;
      break;
    }
  }
  ASSERT_NE(creator, 0);
  const control_point* shared = find(aggregate, 11);
  ASSERT_NE(shared, nullptr);
  EXPECT_EQ(shared->channel_ids, std::vector<int>{creator})
      << "however many channels share the point, one channel id stands for it";
  // The drive of a shared point is read once, for the channel that created it; the other
  // channels would read the same rows.
  EXPECT_EQ(shared->motor_id, 5);
  EXPECT_EQ(sorted(shared->bearing_ids), (std::vector<int>{6, 7}));
  const control_point* other = find(aggregate, 12);
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(other->channel_ids, std::vector<int>{105})
      << "a channel's active binding counts even when its other binding is inactive";
  EXPECT_EQ(aggregate.control_points.size(), 2u);
}

TEST_F(AggregateTest, EquipmentWithoutDriveHasNoMotorOrBearings) {
  for (const int equipment_type : {8, 11}) {
    SCOPED_TRACE(equipment_type);
    PlantBuilder::emptyTables(sql());
    PlantBuilder plant = pump(equipment_type);
    plant.add(ChannelRow(100, 42)).add(BindingRow(100, 11));
    plant.insert(sql());

    const Aggregate aggregate = read(42);
    ASSERT_EQ(aggregate.control_points.size(), 1u);
    EXPECT_EQ(aggregate.control_points[0].motor_id, 0);
    EXPECT_TRUE(aggregate.control_points[0].bearing_ids.empty());
    EXPECT_EQ(aggregate.control_points[0].channel_ids, std::vector<int>{100});
  }
}

TEST_F(AggregateTest, ModuleWithoutChannelsIsFlaggedAndLogged) {
  pump(1).insert(sql());
  const Aggregate aggregate = read(42);
  EXPECT_TRUE(aggregate.no_channels);
  EXPECT_EQ(aggregate.id, 0);
  EXPECT_TRUE(aggregate.control_points_weight.empty());
  EXPECT_TRUE(aggregate.control_points.empty());
  EXPECT_NE(logText().find("no channels for module 42\n"), std::string::npos);
}

TEST_F(AggregateTest, ChannelsWithoutAMachineGiveNoPoints) {
  PlantBuilder plant = pump(1);
  // Point 0 and an inactive binding cannot lead to a machine; point 21 has no machine row,
  // and point 22 belongs to a machine at a node that does not exist.
  plant.add(ChannelRow(200, 50))
      .add(BindingRow(200, 0))
      .add(ChannelRow(201, 50))
      .add(BindingRow(201, 11).active(false))
      .add(ChannelRow(210, 51))
      .add(BindingRow(210, 21))
      .add(ControlPointRow(21, 99))
      .add(ChannelRow(220, 52))
      .add(BindingRow(220, 22))
      .add(AggregateRow(4, 77))
      .add(ControlPointRow(22, 4))
      .add(ChannelRow(230, 53))
      .add(BindingRow(230, 11).setNull("active"));
  plant.insert(sql());

  for (const long source : {50L, 51L, 52L, 53L}) {
    SCOPED_TRACE(source);
    const Aggregate aggregate = read(source);
    EXPECT_FALSE(aggregate.no_channels);
    EXPECT_EQ(aggregate.id, 0);
    EXPECT_TRUE(aggregate.control_points_weight.empty());
    EXPECT_TRUE(aggregate.control_points.empty());
    EXPECT_EQ(aggregate.name, "");
    EXPECT_EQ(aggregate.organization_alias, "");
  }
  EXPECT_EQ(logText().find("no channels"), std::string::npos);
}

TEST_F(AggregateTest, PointZeroIsSkippedWhenLookingForTheMachine) {
  PlantBuilder plant = pump(1);
  plant.add(ChannelRow(300, 42))
      .add(BindingRow(300, 0))
      .add(ChannelRow(301, 42))
      .add(BindingRow(301, 12));
  plant.insert(sql());
  const Aggregate aggregate = read(42);
  EXPECT_EQ(aggregate.id, 3);
  ASSERT_EQ(aggregate.control_points.size(), 1u) << "a binding to point 0 adds no point";
  EXPECT_EQ(aggregate.control_points[0].id, 12);
  EXPECT_EQ(aggregate.control_points[0].channel_ids, std::vector<int>{301});
}

} // namespace
