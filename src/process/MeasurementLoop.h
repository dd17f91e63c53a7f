#pragma once

#include <chrono>
#include <map>

#include "assessment/DataCache.h"
#include "connectivity/ModuleWork.h"
#include "logging/PrintLog.h"
#include "process/Calculation.h"
#include "process/CommandLine.h"
#include "records/types.h"
#include "store/DataBase.h"

class Aggregate;
class DataParsing;
class Module;
class Visualization;

// The spine of the service: walks PARAM_INFO by rising id, one measurement row per pass,
// and sleeps when it has caught up. Polling by id is the whole input. A row below the
// highest id already in MATH_HISTORY at start is a replay: recomputed, rewritten, silent.
//
// A pass never lets a database fault end the process: a rejected statement skips the row, a
// lost connection waits, reconnects and repeats the row, any other fault skips the row after
// a second. Each fault leaves one line in the error log.
class MeasurementLoop {
public:
  // `db`, `log`, `calculation`, `cache` and `module_work` are borrowed and outlive the loop.
  // `middle` is the number of values of the middle as start-up left it. `id_history` is
  // MAX(param_info_id) of MATH_HISTORY at start, `id_current` the first row to do.
  MeasurementLoop(DataBase* db, PrintLog* log, Calculation* calculation, DataCache* cache,
                  ModuleWork* module_work, const CommandLine& options, int middle, int id_history,
                  int id_current);

  // Runs passes until the stop id is reached; with no stop id it never returns.
  void run();

  // Advances the timer of a periodic action by the duration of the last pass. A period of 0
  // stops the timer where it stands; a timer past its period holds its value until its action
  // resets it, and the sum never leaves the range of an int.
  static void advanceTimer(int& timer, int period, int elapsed_ms);

  // Whether a machine's status pass is due at `clock`, given the clock value of each machine's
  // last pass: never passed, more than ten seconds ago, or an entry above the clock, which
  // means that the clock has wrapped since.
  static bool aggregateStatusDue(const std::map<int, int>& written_at, int aggregate_id, int clock);

private:
  // One pass: timers, the newest id, at most one row, the pause. Returns true when the
  // stop id has been reached.
  bool pass();
  // Steps of the pass up to the stop test; exceptions pass to the guard in pass().
  bool guardedPass();
  void processRowGuarded(std::chrono::steady_clock::time_point pass_start);
  // The recalculation check: hands the oldest waiting job to a thread of its own, unless a
  // job of any instance is running. A job without rows in its range is finished at once.
  void controlTask();
  // The row's filters, objects and time check; then one of the two paths below.
  void processRow();
  // A row of telemetry alone (type_param 0): plausibility, values, thresholds.
  void processTelemetry(DataParsing& parsing, const Aggregate& aggregate,
                        const Visualization& visualization);
  // A measurement: decoding, one run per control point, output, statuses.
  void processMeasurement(const param_info& info, const Module& module, Aggregate& aggregate,
                          Visualization& visualization, DataParsing& parsing);
  // Middle and trend over the history of the point of result `index`, its last in the row.
  void smoothHistory(const param_info& info, const Aggregate& aggregate,
                     const Visualization& visualization, DataParsing& parsing, int index);

  DataBase* db;
  PrintLog* log;
  Calculation* calculation;
  DataCache* cache;
  ModuleWork* module_work;

  const int id_stop;
  const int pause;
  const int middlecounter;
  const long source; // the -source filter; 0 leaves the division of modules to the settings
  const int id_history;

  int middle; // a non-zero setting "middle" overrides the command line at each settings read

  int id_current;
  int id_last = 0;
  bool replay = false;

  // Milliseconds. The timers advance by the duration of the previous pass, so they have the
  // grain of a pass: during a long row nothing else runs.
  int elapsed_ms = 0;
  int settings_timer = 60001;
  int control_task_timer;
  int analyze_module_timer;
  int aggregate_clock = 0;
  int middle_tick = 0;
  // Aggregate id to the aggregate_clock value of its last status pass: a machine whose modules
  // report every few seconds gets its status reduced at most once in ten seconds.
  std::map<int, int> aggregate_written_at;

  // Counted per kind of fault for a debugger or a core file; nothing reads them.
  int sql_errors = 0;
  int connection_errors = 0;
  int exceptions = 0;
  int unknown_errors = 0;
};
