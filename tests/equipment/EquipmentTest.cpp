// The equipment objects read from real rows, printed as fields joined by "|" and compared whole.
// Ids rise in insertion order, so rows come back in that order however the server joins.
#include "assessment/Status.h"
#include "equipment/Aggregate.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "support/StoreTest.h"
#include <algorithm>
#include <sstream>

template <typename T> std::ostream& operator<<(std::ostream& out, const std::vector<T>& items) {
  for (const auto& item : items)
    out << item << ",";
  return out;
}
static std::ostream& operator<<(std::ostream& out, const visualization& v) {
  return out << v.id;
}

template <typename... T> std::string line(const T&... fields) {
  std::ostringstream out;
  ((out.precision(10), out << fields << '|'), ...);
  return out.str() + " ";
}

class EquipmentTest : public vek_test::StoreTest {};

TEST_F(EquipmentTest, ObjectsAndTheMachineStatusReadFromThePlant) {
  exec(R"(INSERT INTO organization_object VALUES ('plant','UTC+3:00',0);
    INSERT INTO observed_node VALUES (1,'plant'); INSERT INTO list_of_messages VALUES ('30',true);
    INSERT INTO aggregate VALUES (3,1,4,1,2,30,'2024-01-01','pump'),(4,1,0,8,0,0,NULL,'valve'),
      (5,1,0,11,0,0,NULL,'tank'),(6,77,0,1,0,0,NULL,'at no node');
    INSERT INTO control_point VALUES (11,3,1.5),(12,3,0.5),(14,3,2),(15,3,NULL),(21,99,1),(22,6,1),
      (31,4,1),(41,5,1); INSERT INTO control_point_motor VALUES (11,1),(12,2),(31,1),(41,1);
    INSERT INTO control_point_bearing VALUES (11,1),(11,2),(31,1),(41,1);
    INSERT INTO motor VALUES (1,55,1480,98,380,4,2),(2,1,1480,98,380,4,2),(3,55,1,98,380,4,2),
      (4,55,1480,98,380,0,2),(5,2,2,NULL,NULL,1,NULL);
    INSERT INTO bearing VALUES (1,7.9,9,1,25,52,15),(2,0,0,3,0,0,0),(3,7.9,4,1,25,52,0),
      (4,0,9,1,25,52,0),(5,7.9,9,1,0,0,0),(6,7.9,5,1,25,52,0);
    INSERT INTO module VALUES (7,40,1,5,6,'0x8000001F',true,2); INSERT INTO channel VALUES (98,40),
      (99,42),(100,42),(101,42),(102,42),(103,42),(104,42),(120,44),(130,45),(140,46),(150,47);
    INSERT INTO channel_contol_point VALUES (98,11,true),(99,0,true),(100,11,true),(101,11,true),
      (102,12,true),(103,13,false),(104,23,true),(120,31,true),(130,41,true),(140,21,true),
      (150,22,true); INSERT INTO observed_param (name) VALUES ('A'),('B'),('C'),('D'),('E'),('F'),
      ('V'),('W');
    INSERT INTO visualization (id,source,name_param,type_param,channel_id,control_point_id,active)
      VALUES (1,42,'A',1,100,11,true),(2,42,'B',2,100,11,true),(3,42,'C',3,100,11,true),
      (4,42,'D',1,100,11,false),(5,42,'E',1,101,12,true),(6,42,'F',3,100,11,NULL),
      (7,42,'X',1,100,11,true);
    INSERT INTO visualization (id,source,name_param,channel_id,control_point_id,active,green,yellow,
      orange,kz,middle,corridor_active) VALUES (9,42,'V',100,11,true,2.8,4.5,7.1,1,true,true),
      (10,42,'W',100,11,true,60,80,95,1,false,true);
    INSERT INTO result_base (param_info_id,visualization_id,receipt_date,value,middle,status_calc)
      VALUES (1005,9,'2024-05-01 10:00',3,2.5,0),(1006,9,'2024-05-01 11:00',9,9,1),
      (1008,9,'2024-05-01 13:00',7.5,7,0),(1009,10,'2024-05-01 14:00',80,85,0);)");
  std::string text;
  for (const long source : {40, 77}) {
    Module m(&store(), source);
    const bool judged_before = m.valid, read = m.readData();
    text += line(m.id, m.type_module, m.revision, m.config, m.broadcasting_period, m.gateway_id,
                 m.multichannel, m.aggregate_id, m.utc_value, m.organization_alias, judged_before,
                 read, m.valid, m.message, m.print());
  }
  for (const int id : {1, 2, 3, 4, 5, 6}) {
    const DataMotor m(&store(), id);
    const DataBearing b(&store(), id);
    text += line(m.id, m.power, m.speed, m.i, m.u, m.p2, m.class_vibro, m.valid) +
            line(b.ball_diameter, b.count_balls, b.type_bearing, b.inner_diameter,
                 b.external_diameter, b.angle, b.angle_rad, b.mean_diameter, b.valid);
  }
  text += line(DataMotor(&store(), 1).print(), DataBearing(&store(), 1).print());
  for (const long source : {42, 44, 45, 46, 47, 49}) {
    const Aggregate a(&store(), source, &log(), "2024-05-01 10:00:00", nullptr);
    text += line(a.id, a.type_aggregate_id, a.type_equipment_id, a.status_type, a.rul_days,
                 a.trend_start, a.name, a.organization_alias, a.no_channels, a.no_aggregate);
    for (const auto& [id, weight] : a.control_points_weight)
      text += std::to_string(id) + ":" + line(weight);
    for (const auto& p : a.control_points)
      text += line(p.id, p.channel_ids, p.motor_id, p.bearing_ids);
  }
  Visualization shown(&store(), 42);
  text += line(logText().substr(logText().find('\n') + 1), shown.getData({3, 1}),
               shown.getData({2, 2}), shown.getData({3, 1}, 100, 11), shown.getData({1}, 101, 12),
               shown.getData({1}, 100, 12), shown.getData({1}, 101, 11));
  // A recalculation judges the last good value stored up to its measurement, smoothed for V.
  shown.readData(); // replaces the rows
  text += line(shown.visualizations, shown.verify());
  for (const int param_info_id : {1007, 1009}) {
    Status status(&store(), 42, param_info_id, 100, 11, true);
    status.readData(shown.getData({0}, 100, 11));
    status.calculateStatus();
    text += line(status.print());
  }
  // {module, (point, machine, significance, status)}: the valve's status the mean, the pump's the
  // max.
  for (const auto& [source, points] : std::initializer_list<std::pair<long, std::string>>{
           {44, "(31,4,1.5,2),(32,4,0.5,3),(33,4,1,1.1),(34,4,2,NULL),(35,4,100,0.005)"},
           {42, "(11,3,2.5,1),(12,3,1,2.5),(13,3,0.25,1)"},
           {44, "(31,4,1,1.5)"},
           {44, "(31,4,1,NULL),(32,4,3,0)"}}) {
    exec("TRUNCATE control_point, notification, status_aggregate; INSERT INTO control_point "
         "VALUES " +
         points);
    Aggregate machine(&store(), source, &log(), "2024-05-01 10:00:00", nullptr);
    machine.calculateStatus();
    machine.writeStatus();
    text += line(machine.status, machine.status_max,
                 scalar("SELECT concat_ws('|', (SELECT concat_ws('|', type_message_id, "
                        "control_point_id, additional_info, organization_alias, source, "
                        "channel_id, gateway_id, status, date_of_creation = '2024-05-01 10:00') "
                        "FROM notification), COUNT(*), MAX(status), MAX(aggregate_id), "
                        "MAX(calculated_at) = '2024-05-01 10:00') FROM status_aggregate"),
                 logText().substr(logText().rfind("aggregate: ") + 11));
  }
  // Modules known and not; motors of power, speed, poles 2, 2, 1 and less; bearings: pi 3.14159265,
  // plain, 4 and 5 elements, no ball, no pitch; a shared point kept by its first channel; no drive
  // for valves and static equipment; points of no machine, at no node, no channel. Machines: points
  // never assessed (34) or tiny (35) left out; yellow at the heaviest; orange from 2.5, yellow 1.5.
  std::string expected = R"(7|1|2|2147483679|5|6|1|3|+3:00|plant|0|1|1||40 : 1 2 |
0|0|0|2147483648|0|0|0|0|||0|0|0|data of module: 77 is incorrect |77 : 0 0 | 1|55|1480|98|380|4|2|1|
7.9|9|1|25|52|15|0.2617993875|38.5|1| 2|1|1480|98|380|4|2|0| 0|0|3|0|0|0|0|0|1| 3|55|1|98|380|4|2|0|
7.9|4|1|25|52|0|0|38.5|0| 4|55|1480|98|380|0|2|0| 0|9|1|25|52|0|0|38.5|0| 5|2|2|0|0|1|0|1|
7.9|9|1|0|0|0|0|0|0| 6|0|0|0|0|0|0|0| 7.9|5|1|25|52|0|0|38.5|1| 1 55 1480 |7.900000 9 38.500000|
3|4|1|2|30|2024-01-01 00:00:00|pump|plant|0|0| 11:1.5| 12:0.5| 14:2| 15:0| 11|100,|1|1,2,|
12|102,|2|| 23|104,|0|| 4|0|8|0|0||valve|plant|0|0| 31:1| 31|120,|0|| 5|0|11|0|0||tank|plant|0|0|
41:1| 41|130,|0|| 0|0|0|0|0||||0|0| 0|0|0|0|0||||0|0| 0|0|0|0|0||||1|0| no channels for module 49
|3,6,1,4,5,|2,2,|3,1,|5,||| 1,2,3,4,5,6,9,10,|1| calculate status: V : 2.79999995/4.5/7.0999999 :
2.5 : 1*1*1 status: 1 W : 60/80/95 : 0 : 1*1*1 status: 1 final status: 1 | calculate status: V :
2.79999995/4.5/7.0999999 : 7 : 1*1*3 status: 3 W : 60/80/95 : 80 : 1*1*2 status: 2 final status: 2.5
| 1.866666675|3|2|31|valve|plant|0|t|1|1.8666667|4|t|1.86666667 |
1.75|2.5|3|11|pump|plant|0|t|1|1.75|3|t|1.75 | 1.5|1.5|2|31|valve|plant|0|t|1|1.5|4|t|1.5 |
1|1|1|1|4|t|1 | )";
  std::replace(expected.begin(), expected.end(), '\n', ' ');
  std::replace(text.begin(), text.end(), '\n', ' ');
  EXPECT_EQ(text, expected);
}
