#pragma once

#include <string>

#include "store/DataBase.h"

// A bearing's geometry from BEARING, read when the object is made, with the two derived
// values the math blocks take: the contact angle in radians and the pitch diameter. A missing
// row leaves everything at 0 and the bearing invalid. `message` is never filled.
class DataBearing {
public:
  // Reads BEARING row id and sets `valid`. db is borrowed and outlives the object.
  DataBearing(DataBase* db, int id);

  // Reads the row and derives angle_rad and mean_diameter.
  void readData();
  // A plain bearing (type 3) is always usable; a rolling bearing needs a pitch diameter and a
  // ball diameter above 0 and at least 5 rolling elements.
  bool verify() const;
  // "<ball_diameter> <count_balls> <mean_diameter>", without a line end.
  std::string print() const;

  int id = 0;
  bool valid = false;
  std::string message;
  double ball_diameter = 0.0;
  int count_balls = 0;
  int type_bearing = 0;
  double inner_diameter = 0.0;
  double external_diameter = 0.0;
  double angle = 0.0; // degrees
  double angle_rad = 0.0;
  double mean_diameter = 0.0;

private:
  DataBase* db;
};
