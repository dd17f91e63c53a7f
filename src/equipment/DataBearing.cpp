#include "equipment/DataBearing.h"

namespace {

// The bearing frequencies of the installed base were computed with pi to these nine figures;
// more figures would move every defect frequency by a hair.
constexpr double kPi = 3.14159265;
// The bearing type without rolling elements: it has no bearing frequencies to check.
constexpr int kPlainBearing = 3;
constexpr int kFewestRollingElements = 5;

} // namespace

DataBearing::DataBearing(DataBase* db_, int id_) : id(id_), db(db_) {
  readData();
  valid = verify();
}

void DataBearing::readData() {
  db->readBearing(id, ball_diameter, count_balls, type_bearing, inner_diameter, external_diameter,
                  angle);
  angle_rad = kPi * angle / 180.0;
  mean_diameter = (external_diameter + inner_diameter) / 2.0;
}

bool DataBearing::verify() const {
  if (type_bearing == kPlainBearing) {
    return true;
  }
  return mean_diameter > 0.0 && count_balls >= kFewestRollingElements && ball_diameter > 0.0;
}

std::string DataBearing::print() const {
  return std::to_string(ball_diameter) + " " + std::to_string(count_balls) + " " +
         std::to_string(mean_diameter);
}
