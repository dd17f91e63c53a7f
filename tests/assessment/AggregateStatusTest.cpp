// The machine's status reduced from the stored statuses of all its control points, against real
// CONTROL_POINT, STATUS_AGGREGATE and NOTIFICATION rows.
#include <string>

#include <gtest/gtest.h>

#include "equipment/Aggregate.h"
#include "support/PlantBuilder.h"
#include "support/StoreTest.h"

namespace {

using namespace vek_test;

constexpr char kDate[] = "2024-05-01 10:00:00";

class AggregateStatusTest : public StoreTest {
protected:
  // Each test starts from a bare plant, also when the suite shares one database.
  void SetUp() override {
    StoreTest::SetUp();
    PlantBuilder::emptyTables(sql());
    exec("TRUNCATE notification, status_aggregate");
  }

  // Machine `id` named name at node 1 of "plant", seen by module `source` through channel
  // `channel` bound to the machine's first point `first_point`.
  static PlantBuilder& machine(PlantBuilder& plant, int id, int status_type, long source,
                               int channel, int first_point) {
    return plant
        .add(AggregateRow(id, 1)
                 .equipmentType(8)
                 .statusType(status_type)
                 .name("pump " + std::to_string(id)))
        .add(ModuleRow(id, source, 10))
        .add(ChannelRow(channel, source))
        .add(BindingRow(channel, first_point));
  }

  static PlantBuilder site() {
    PlantBuilder plant;
    plant.add(OrganizationRow("plant")).add(NodeRow(1, "plant")).add(MessageRow("30"));
    return plant;
  }

  Aggregate read(long source) { return Aggregate(&store(), source, &log(), kDate, nullptr); }

  // The machine notifications ("30") filed at control point `point`: "type/info/alias", or ""
  // when there is none.
  std::string machineNote(int point) {
    return scalar("SELECT type_message_id || '/' || additional_info || '/' || "
                  "organization_alias || '/' || status || '/' || (source IS NULL) || '/' || "
                  "(channel_id IS NULL) || '/' || date_of_creation FROM notification "
                  "WHERE message_code = '30' AND control_point_id " +
                  (point == 0 ? std::string("IS NULL") : "= " + std::to_string(point)));
  }
};

} // namespace

TEST_F(AggregateStatusTest, WeightedMeanOverEveryPointOfTheMachine) {
  PlantBuilder plant = site();
  machine(plant, 3, 0, 42, 100, 11)
      // Drive end 2.0 with significance 1.5 weighs 3.0; non-drive end 3.0 with 0.5 weighs 1.5.
      .add(ControlPointRow(11, 3).weight(1.5).status(2.0))
      .add(ControlPointRow(12, 3).weight(0.5).status(3.0))
      // A point of another module that was never assessed, and one whose tiny status is
      // lifted to 0.5 by its weight of 100: neither is a reckoned status, both stay out.
      .add(ControlPointRow(14, 3).weight(2.0))
      .add(ControlPointRow(15, 3).weight(100.0).status(0.005));
  plant.insert(sql());

  Aggregate pump = read(42);
  ASSERT_EQ(pump.id, 3);
  pump.calculateStatus();
  EXPECT_DOUBLE_EQ(pump.status, 2.25); // (3.0 + 1.5) / 2
  EXPECT_DOUBLE_EQ(pump.status_max, 3.0);
  // The mean 2.25 reaches yellow (1.5) but not orange (2.5): type 2, filed at the point that
  // weighs most, with the machine's name; the machine's message has no module and no channel.
  EXPECT_EQ(machineNote(11), "2/pump 3/plant/0/true/true/2024-05-01 10:00:00");

  pump.writeStatus();
  pump.writeStatus(); // a second status at the same time replaces the first
  EXPECT_EQ(scalar("SELECT COUNT(*) || '/' || MAX(status) FROM status_aggregate WHERE "
                   "aggregate_id = 3 AND calculated_at = '2024-05-01 10:00:00'"),
            "1/2.25");
  EXPECT_NE(logText().find("write status aggregate: 2.25\n"), std::string::npos);
}

TEST_F(AggregateStatusTest, MaximumDecidesWhereTheMachineSaysSo) {
  // Two identical machines: points of status 1.0 weighted 2.5, 0.25 and 0.25 give a mean of
  // 1.0 and a maximum of 2.5. Machine 3 is judged on its maximum, machine 4 on its mean.
  PlantBuilder plant = site();
  machine(plant, 3, 2, 42, 100, 11)
      .add(ControlPointRow(11, 3).weight(0.25).status(1.0))
      .add(ControlPointRow(12, 3).weight(2.5).status(1.0))
      .add(ControlPointRow(13, 3).weight(0.25).status(1.0));
  machine(plant, 4, 0, 43, 200, 21)
      .add(ControlPointRow(21, 4).weight(0.25).status(1.0))
      .add(ControlPointRow(22, 4).weight(2.5).status(1.0))
      .add(ControlPointRow(23, 4).weight(0.25).status(1.0));
  plant.insert(sql());

  Aggregate by_maximum = read(42);
  by_maximum.calculateStatus();
  EXPECT_DOUBLE_EQ(by_maximum.status, 1.0);
  EXPECT_DOUBLE_EQ(by_maximum.status_max, 2.5);
  EXPECT_EQ(machineNote(12).substr(0, 9), "3/pump 3/");

  Aggregate by_mean = read(43);
  by_mean.calculateStatus();
  EXPECT_DOUBLE_EQ(by_mean.status, 1.0);
  EXPECT_EQ(machineNote(22), "");
}

TEST_F(AggregateStatusTest, YellowAndOrangeBoundsAndMachinesWithNothingReckoned) {
  PlantBuilder plant = site();
  // Exactly 1.5 is yellow, exactly 2.5 orange.
  machine(plant, 3, 0, 42, 100, 11).add(ControlPointRow(11, 3).weight(1.0).status(1.5));
  machine(plant, 4, 0, 43, 200, 21).add(ControlPointRow(21, 4).weight(1.0).status(2.5));
  // A new machine whose points were never assessed.
  machine(plant, 5, 0, 44, 300, 31)
      .add(ControlPointRow(31, 5).weight(1.0))
      .add(ControlPointRow(32, 5).weight(3.0).status(0.0))
      // A module whose channel is bound to no machine.
      .add(ModuleRow(6, 45, 10))
      .add(ChannelRow(400, 45));
  plant.insert(sql());

  Aggregate yellow = read(42);
  yellow.calculateStatus();
  EXPECT_EQ(machineNote(11).substr(0, 2), "2/");
  Aggregate orange = read(43);
  orange.calculateStatus();
  EXPECT_EQ(machineNote(21).substr(0, 2), "3/");

  Aggregate idle = read(44);
  idle.calculateStatus();
  EXPECT_DOUBLE_EQ(idle.status, 1.0);
  EXPECT_DOUBLE_EQ(idle.status_max, 1.0);
  Aggregate unbound = read(45);
  ASSERT_EQ(unbound.id, 0);
  unbound.calculateStatus();
  EXPECT_DOUBLE_EQ(unbound.status, 1.0);
  // Only the yellow and the orange machine raised anything.
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification"), "2");
}
