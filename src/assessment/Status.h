#pragma once

#include <map>
#include <string>
#include <vector>

#include "records/types.h"
#include "store/DataBase.h"

// The status of one control point after one measurement: each parameter of the point that has a
// visualization is compared with its thresholds and gets a colour, 1 (within GREEN), 2 (within
// YELLOW), 3 (within ORANGE) or 4 (beyond ORANGE), or 0 when it is not assessed; the colours,
// weighted by each parameter's coefficient, are averaged into the point's status and the
// largest weighted colour is its maximum. 1.0 stands for a point with nothing to assess.
//
// Made by the measurement object for one point and dropped after it; db is borrowed.
class Status {
public:
  // One parameter of the point: its value, its thresholds and weight, and its colour.
  struct data_status {
    float value = 0.0f;    // the value compared, 0 until read
    float green = 0.0f;    // visualization.green
    float yellow = 0.0f;   // visualization.yellow
    float orange = 0.0f;   // visualization.orange
    float kz = 0.0f;       // visualization.kz, the weight
    float active = 0.0f;   // visualization.active as 1.0 or 0.0
    int color = 0;         // the colour
    float weighted = 0.0f; // color * (kz * active)
    int visualization_id = 0;
    int type_corridor = 1; // 2 compares with a corridor around corridor_zero
    int corridor_zero = 0; // centre of the corridor
    bool corridor_active = false;
    std::string message_settings;
  };

  // Stores the arguments; nothing is read here. With recalculation the values are read from
  // the stored history up to param_info_id instead of the visualizations' latest values.
  Status(DataBase* db, long source, int param_info_id, int channel_id, int control_point_id,
         bool recalculation);

  // Takes one parameter per name from list (the first row of a name wins) with its value:
  // the latest middle when the point asks for a middle, else the latest raw value. An empty
  // list clears has_data. Store failures pass through.
  void readData(std::vector<visualization> list);
  // Colours every parameter and reduces them to status and status_max. Does nothing when
  // has_data is false.
  void calculateStatus();
  // The report of the colours for diagnosis; the measurement flow does not log it.
  std::string print() const;

  // Smaller is better: 1 if v <= g, 2 if v <= y, 3 if v <= o, else 4 (also for NaN).
  static int color(float v, float g, float y, float o);
  // Larger is better: 1 if v >= g, 2 if v >= y, 3 if v >= o, else 4 (also for NaN).
  static int color_invers(float v, float g, float y, float o);
  // g, y and o are percentages of the centre z; each bound is cut to a whole number toward
  // zero. 1 within the green band, 2 within yellow, 3 within orange, else 4 (also for NaN).
  static int color_corridor(float v, float g, float y, float o, float z);

  // The text of a status as the store's driver writes a float: nine significant digits at
  // most, classic locale, "." as the decimal point.
  static std::string statusText(float value);

  int param_info_id = 0;
  long source = 0;
  int channel_id = 0;
  int control_point_id = 0;
  bool recalculation = false;
  std::string report;      // logged by the measurement object after reading; nothing fills it
  bool has_data = true;    // false after readData of an empty list
  float status = 0.0f;     // the mean of the weighted colours that count
  float status_max = 1.0f; // the largest weighted colour, never below 1.0
  std::map<std::string, data_status> parameters; // by visualization.name_param

private:
  DataBase* db;
};
