#pragma once

#include <map>
#include <string>
#include <vector>

#include "logging/PrintLog.h"
#include "records/types.h"
#include "store/DataBase.h"

class DataCache;

// The monitored machine of one sensor module: the module's channels, the control points they
// are bound to, the machine those points belong to with the significance of each of its
// points, and the motor and bearings of each point. Made for one measurement and dropped with
// it; the measurement object reads the channels and control points, middle and trend take
// trend_start and rul_days.
//
// The status of the machine (status, status_max) is reduced from its control points' statuses
// by the operations of the machine assessment, which belong to this class as well and live in
// a source file of their own.
class Aggregate {
public:
  // Stores the arguments and reads the machine (readAggregate). db, log and cache are borrowed
  // and outlive the object; date is the measurement's receipt date, the time of its status.
  Aggregate(DataBase* db, long source, PrintLog* log, std::string date, DataCache* cache);

  // Reads the channels of the module and, through its first active bound channel, the machine,
  // the weights of all its control points and the control points of the module's active
  // channels. A module without channels logs "no channels for module <source>" and sets
  // no_channels; a channel without a machine leaves id 0. Store failures pass through.
  void readAggregate();

  // Reduces the statuses of every control point of the machine, weighted by significance, to
  // status (the mean) and status_max (the largest), and raises message "30" when the decisive
  // one reaches 1.5 (type 2) or 2.5 (type 3). Store failures pass through.
  void calculateStatus();
  // Stores status in STATUS_AGGREGATE at the measurement's date and logs it.
  void writeStatus();

  long source = 0;
  bool no_channels = false;  // the module has no channels: the caller skips the measurement
  bool no_aggregate = false; // reserved; stays false
  int id = 0;                // 0: no machine was found
  int type_aggregate_id = 0;
  int type_equipment_id = 0;
  int status_type = 0; // 2: the largest weighted point status decides, else the mean
  int rul_days = 0;    // forecast horizon in days
  std::map<int, float> control_points_weight; // every point of the machine to its significance
  std::string organization_alias;
  std::string trend_start;
  std::string date; // the measurement's receipt date, stamped on the machine's status
  std::string name;
  std::vector<channel> channels;             // the module's channels, one per binding
  std::vector<control_point> control_points; // distinct points of the active channels
  double status = 0.0;                       // mean weighted status of the points
  double status_max = 1.0;                   // largest weighted status of a point

private:
  // Motor and bearings of a control point, for equipment that has them.
  void readDrive(control_point& point);

  DataBase* db;
  PrintLog* log;
  DataCache* cache;
};
