#include "equipment/Aggregate.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

// Equipment types without a motor or rolling bearings of their own (valves, static
// equipment): their points are assessed without drive data whatever the link tables hold.
bool hasDrive(int type_equipment_id) {
  return type_equipment_id != 8 && type_equipment_id != 11;
}

} // namespace

Aggregate::Aggregate(DataBase* db_, long source_, PrintLog* log_, std::string date_,
                     DataCache* cache_)
    : source(source_), date(std::move(date_)), db(db_), log(log_), cache(cache_) {
  readAggregate();
}

void Aggregate::readAggregate() {
  db->readChannel(source, channels);
  if (channels.empty()) {
    log->print("no channels for module " + std::to_string(source) + "\n");
    no_channels = true;
    return;
  }

  // The module's first active binding says which machine the module sits on.
  int first_point = 0;
  for (const auto& item : channels) {
    if (item.control_point_id != 0 && item.active) {
      first_point = item.control_point_id;
      break;
    }
  }
  int node_id = 0;
  db->readAggregate(first_point, id, node_id, type_aggregate_id, type_equipment_id, status_type,
                    rul_days, trend_start, name, organization_alias);
  if (id == 0) {
    return;
  }
  db->readControlPoint(id, control_points_weight);

  for (const auto& item : channels) {
    if (!item.active || item.control_point_id == 0) {
      continue;
    }
    // A point shared by several channels keeps only the channel that created it: results of
    // the point are filed under that one channel, and the measurement object relies on it.
    const bool known =
        std::any_of(control_points.begin(), control_points.end(),
                    [&](const control_point& point) { return point.id == item.control_point_id; });
    if (known) {
      continue;
    }
    control_point point;
    point.id = item.control_point_id;
    if (hasDrive(type_equipment_id)) {
      readDrive(point);
    }
    point.channel_ids.push_back(item.id);
    control_points.push_back(point);
  }
}

void Aggregate::readDrive(control_point& point) {
  const std::string id_text = std::to_string(point.id);
  std::vector<std::vector<int>> motors;
  db->getValue("SELECT motor_id FROM control_point_motor WHERE control_point_id = " + id_text,
               motors);
  if (!motors.empty() && !motors.front().empty()) {
    point.motor_id = motors.front().front();
  }
  std::vector<std::vector<int>> bearings;
  db->getValue("SELECT bearing_id FROM control_point_bearing WHERE control_point_id = " + id_text,
               bearings);
  for (const auto& row : bearings) {
    if (!row.empty()) {
      point.bearing_ids.push_back(row.front());
    }
  }
}
