#pragma once

#include <string>
#include <vector>

#include "store/DataBase.h"

// This instance's row of VEK_CALCULATION: registration at start, progress on every pass of
// the loop, the service settings re-read from the row's JSON document, and the rule that
// divides the modules among several instances working on one database.
//
// A settings key that disappears from the document keeps its last value until the process
// restarts: the defaults hold only until a key has once been seen. Only the main loop's
// thread uses the object.
class Calculation {
public:
  // Stores the store (borrowed, outlives the object) and the instance id; no database access.
  Calculation(DataBase* db, int id);

  // Registers the instance: a known id gets its address replaced and its settings read; an
  // unknown one gets a new row with lag 0 and NULL settings, read later by the loop. Always
  // returns true. Store failures pass through.
  bool initCalculation(std::string ip);
  // Stores the version document of this instance.
  void setVersion(std::string version);
  // Re-reads the settings document and takes every key that it holds. A document that is not
  // a JSON object, or holds no usable key, changes nothing.
  void readVekSettings();
  // Reports the progress of the loop: rows still to do, the next row, the time of the report.
  void updateCalc(int lag, int last_calculated, std::string time);
  // Whether this instance computes the measurements of the module source:
  // - calc_source 0: every module;
  // - calc_source 1: the modules of the list "source", no other;
  // - calc_source 2 or more: the modules whose source modulo calc_source equals remainder
  //   (the remainder of truncating division, so it has the sign of source);
  // - a negative calc_source: none.
  bool enableCalcSource(long source) const;

  // Run log on or off ("log").
  bool getLog() const { return log; }
  // Number of values of the middle; 0 when the setting was never given ("middle").
  int getMiddle() const { return middle; }
  // Period of the connectivity analysis in milliseconds ("analyze_module" seconds).
  int getIntervalAnalyzeModule() const { return analyze_module; }
  // Period of the recalculation check in milliseconds ("control_task" seconds).
  int getIntervalControlTask() const { return control_task; }
  // Whether each result goes to write_kafka as well ("kafka_enable").
  bool getKafkaEnable() const { return kafka_enable; }
  // The client id handed to write_kafka: the setting "kafka_client_id" times 1000, as stored.
  int getKafkaClientId() const { return kafka_client_id; }
  // The topic handed to write_kafka ("kafka_topic").
  const std::string& getKafkaTopic() const { return kafka_topic; }

private:
  DataBase* db;
  int id;
  int last_calculated = 0; // the last row reported; kept for a debugger, nothing reads it
  std::string settings;    // the last text read from VEK_CALCULATION.SETTINGS
  long calc_source = 0;
  int remainder = 0;
  bool log = false;
  std::vector<long> source;
  int middle = 0;
  int analyze_module = 1200000;
  int control_task = 300000;
  bool kafka_enable = false;
  int kafka_client_id = 0;
  std::string kafka_topic;
};
