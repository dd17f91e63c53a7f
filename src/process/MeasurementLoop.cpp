#include "process/MeasurementLoop.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "equipment/Aggregate.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "logging/time_helpers.h"
#include "pipeline/DataParsing.h"
#include "process/RecalculationTask.h"
#include "process/process_state.h"
#include "records/settings_parsers.h"
#include "records/types.h"
// The store lets its two failure classes through on purpose: a rejected statement and a lost
// server call for different handling here, and only the loop decides.
#include "store/StoreErrors.h"

namespace {

constexpr int kSettingsPeriodMs = 60000;
constexpr int kAggregateClockWrapMs = 600000;
constexpr int kReconnectPauseSec = 30;
constexpr int kFaultPauseSec = 1;
constexpr int kAggregateStatusPeriodMs = 10000;
// The window of the middle that the command line gives by default, and the one a replay
// takes instead.
constexpr int kDefaultMiddle = 100;
constexpr int kReplayMiddle = 10;
// A receipt date more than a day ahead of this host's clock, or older than about thirty
// years, comes from a module whose clock was never set or has run away.
constexpr long kLatestFutureSec = -86400;
constexpr long kOldestPastSec = 946000000;
const char* const kTimeFormat = "%Y-%m-%d %H:%M:%S";

} // namespace

void MeasurementLoop::advanceTimer(int& timer, int period, int elapsed_ms) {
  // A timer already past its period is due and stays due until its action resets it, so it
  // need not grow further: a long replay, in which the actions do not run, or a period near
  // the end of the int range cannot carry it beyond that range.
  if (period == 0 || timer > period) {
    return;
  }
  timer = static_cast<int>(std::min<long long>(std::numeric_limits<int>::max(),
                                               static_cast<long long>(timer) + elapsed_ms));
}

bool MeasurementLoop::aggregateStatusDue(const std::map<int, int>& written_at, int aggregate_id,
                                         int clock) {
  const auto written = written_at.find(aggregate_id);
  return written == written_at.end() || clock - written->second > kAggregateStatusPeriodMs ||
         clock < written->second;
}

MeasurementLoop::MeasurementLoop(DataBase* db_, PrintLog* log_, Calculation* calculation_,
                                 DataCache* cache_, ModuleWork* module_work_,
                                 const CommandLine& options, int middle_, int id_history_,
                                 int id_current_)
    : db(db_), log(log_), calculation(calculation_), cache(cache_), module_work(module_work_),
      id_stop(options.id_stop), pause(options.pause), middlecounter(options.middlecounter),
      source(options.source), id_history(id_history_), middle(middle_), id_current(id_current_),
      control_task_timer(calculation_->getIntervalControlTask()),
      analyze_module_timer(calculation_->getIntervalAnalyzeModule()) {}

void MeasurementLoop::run() {
  while (!pass()) {
  }
}

bool MeasurementLoop::pass() {
  try {
    return guardedPass();
  } catch (const pqxx::broken_connection& e) {
    // The row was not done: it is tried again once the server takes connections.
    ++connection_errors;
    log->print("error connect, pause: 30c\n");
    process::appendErrorLog(time_now(1, "") + "  error: broken_connection\n" + e.what() + "\n");
    std::this_thread::sleep_for(std::chrono::seconds(kReconnectPauseSec));
    db->openConnect();
  } catch (const std::exception& e) {
    ++exceptions;
    log->print("error: exception, pause: 1c\n");
    process::appendErrorLog(time_now(1, "") + " : id= " + std::to_string(id_current) +
                            "  error: exception\n" + e.what() + "\n" + "skip current id\n");
    std::this_thread::sleep_for(std::chrono::seconds(kFaultPauseSec));
    log->print("skip current id\n");
    ++id_current;
  } catch (...) {
    ++unknown_errors;
    log->print("error: unknown error, pause: 1c\n");
    process::appendErrorLog(time_now(1, "") + " : id= " + std::to_string(id_current) +
                            "  error: unknown error, skip current id\n");
    std::this_thread::sleep_for(std::chrono::seconds(kFaultPauseSec));
    log->print("skip current id\n");
    ++id_current;
  }
  // A pass that ended in a fault goes straight to the next pass, without the stop test.
  return false;
}

bool MeasurementLoop::guardedPass() {
  if (settings_timer > kSettingsPeriodMs) {
    settings_timer = 0;
    calculation->readVekSettings();
    if (calculation->getMiddle() != 0) {
      middle = calculation->getMiddle();
    }
    log->setPrintFile(calculation->getLog());
  }
  // The periods are read anew on every pass, so a changed setting takes effect at once.
  advanceTimer(control_task_timer, calculation->getIntervalControlTask(), elapsed_ms);
  advanceTimer(analyze_module_timer, calculation->getIntervalAnalyzeModule(), elapsed_ms);
  aggregate_clock += elapsed_ms;
  settings_timer += elapsed_ms;

  // The middle stride counts passes, not rows: a pass that only waits takes a turn too.
  if (middlecounter != 0 && middle_tick != middlecounter) {
    ++middle_tick;
  } else {
    middle_tick = 0;
  }

  const auto pass_start = std::chrono::steady_clock::now();
  replay = id_history >= id_current;

  id_last = db->getValueInt("SELECT ID FROM PARAM_INFO ORDER BY ID DESC LIMIT 1");
  // LAG is the number of rows still to do; -1 says that the instance has caught up and waits.
  calculation->updateCalc(id_last - id_current, id_current, time_now(1, "+0:00"));

  if (aggregate_clock > kAggregateClockWrapMs) {
    aggregate_clock = 0;
  }

  // A replay walks old rows: whether modules deliver now is not its business. The gateways
  // are judged first, since a module's verdict depends on its gateway's.
  if (!replay && analyze_module_timer > calculation->getIntervalAnalyzeModule()) {
    analyze_module_timer = 0;
    module_work->analyze_gateway();
    module_work->analyze();
    log->print("control object, module, gateway\n");
  }
  if (!replay && control_task_timer > calculation->getIntervalControlTask()) {
    control_task_timer = 0;
    controlTask();
  }

  if (id_current <= id_last) {
    processRowGuarded(pass_start);
  }

  // Tested after the row, so the pass that catches up pauses at once and that row's own
  // duration is not counted in the timers.
  if (id_last - id_current < 0) {
    log->print("pause: " + std::to_string(pause) + "\n");
    elapsed_ms = pause * 1000;
    std::this_thread::sleep_for(std::chrono::seconds(pause));
  }

  // The stop id is exclusive and tested at the end of the pass, so a start at or above it
  // still does one row.
  return id_stop != 0 && id_stop - id_current <= 0;
}

void MeasurementLoop::controlTask() {
  // One job at a time over all instances: two jobs would share the scratch table of the
  // middle with the loop and with each other.
  if (db->getValueInt("SELECT count(*) FROM recalculation WHERE state=2") != 0) {
    return;
  }
  int id = 0;
  long job_source = 0;
  std::string time_start;
  std::string time_stop;
  std::string time_calculation;
  db->readRecalculation(id, job_source, time_start, time_stop, time_calculation);
  if (time_start.empty()) {
    return;
  }
  // A paused job goes on after its last done row; the bounds are strict, so that row is not
  // computed twice.
  const std::string from = time_calculation.empty() ? time_start : time_calculation;
  std::vector<param_info> rows;
  // A range without an end holds no row: it is finished at once like an empty one, instead of
  // sending the server a bound it refuses at every check, each time at the cost of a live row.
  if (!time_stop.empty()) {
    db->readParamInfo(job_source, from, time_stop, rows);
  }
  log->print("task " + std::to_string(id) + "/" + std::to_string(job_source) + "/" + from + " | " +
             time_stop + " : " + std::to_string(rows.size()) + "\n");
  if (rows.empty()) {
    db->writeRecalculation(id, 3, time_stop.empty() ? from : time_stop);
    return;
  }
  // The job's state stays 1 until its thread marks it running; the period of the check keeps
  // a second check from finding it waiting meanwhile.
  std::thread(task, process::db_host, process::db_name, process::passwd, process::user,
              std::move(rows), 10, id)
      .detach();
}

void MeasurementLoop::processRowGuarded(std::chrono::steady_clock::time_point pass_start) {
  try {
    log->print("id_current: " + std::to_string(id_current) + "\n");
    processRow();
  } catch (const pqxx::sql_error& e) {
    // A statement the server rejects will be rejected again: skip the row at once, keep
    // what it had already written.
    ++sql_errors;
    log->print(std::string("error sql\n") + e.what() + "\n");
    process::appendErrorLog(time_now(1, "") + " : id= " + std::to_string(id_current) +
                            "  error: sql_error\n" + e.what() + "\n");
  }
  ++id_current;
  elapsed_ms = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                    std::chrono::steady_clock::now() - pass_start)
                                    .count());
  log->print("time spent processing: " + std::to_string(elapsed_ms) + "ms\n");
}

void MeasurementLoop::processRow() {
  param_info info;
  db->readParamInfo(id_current, info);
  // Any row of a module counted as lost means that it is back. This comes before every filter:
  // the watch covers all modules, whichever instance computes their rows.
  if (const int lost = module_work->connectionStatus(info.source); lost > 0) {
    module_work->setConnectionStatusModule(info.source, lost);
  }
  // A gap in the ids (a measurement row rolled back or deleted) costs one quick pass: no
  // objects are built and no pause is taken.
  if (info.id == 0) {
    return;
  }
  if (!info.param_settings.empty()) {
    info.settings = parse_param_settings(info.param_settings);
  }

  Module module(db, info.source);
  const bool enable = calculation->enableCalcSource(info.source);
  if (!enable) {
    log->print("module : " + std::to_string(module.source) + " : " + std::to_string(module.id) +
               " skip\n");
  }
  // -source names the one module this run computes, whichever instance holds it by the
  // settings; the skip line above still tells that the settings give it to another.
  const bool taken = source != 0 ? info.source == source : enable;
  if (!taken) {
    return;
  }

  Aggregate aggregate(db, info.source, log, info.receipt_date, cache);
  Visualization visualization(db, info.source);
  DataParsing parsing(db, &module, info, log, replay, &aggregate, visualization.getData({1, 2, 3}),
                      cache);
  log->print(parsing.print());
  if (!parsing.verify() || aggregate.no_channels) {
    return;
  }

  // A replay recomputes old rows whose dates are far behind the clock by nature.
  if (info.source != 0 && !replay) {
    const long ahead =
        stringToSec(time_now(2, ""), kTimeFormat) - stringToSec(info.receipt_date, kTimeFormat);
    if (ahead < kLatestFutureSec || ahead > kOldestPastSec) {
      db->notificationSystemSave("13", info.source, time_now(2, ""), 1, 0, "", 4,
                                 aggregate.organization_alias, 0, 0);
      db->setHardwareStatusModule(info.source, 2);
      log->print("time is not correct\n");
      return;
    }
  }

  if (info.type_param == 0) {
    processTelemetry(parsing, aggregate, visualization);
    return;
  }
  processMeasurement(info, module, aggregate, visualization, parsing);
}

void MeasurementLoop::processTelemetry(DataParsing& parsing, const Aggregate& aggregate,
                                       const Visualization& visualization) {
  if (aggregate.channels.empty() || aggregate.control_points.empty()) {
    return;
  }
  // The telemetry block belongs to the module as a whole; its values are shown at the first
  // active channel that is bound to a control point.
  int channel_id = 0;
  int control_point_id = 0;
  for (const channel& c : aggregate.channels) {
    if (c.control_point_id != 0 && c.active) {
      channel_id = c.id;
      control_point_id = c.control_point_id;
      break;
    }
  }
  if (!parsing.control_tu(visualization.getData({2}, channel_id, control_point_id))) {
    return;
  }
  parsing.write_tu_msg(visualization.getData({2}, channel_id, control_point_id));
  if (!aggregate.control_points.empty()) {
    parsing.tu_threshold_control(visualization.getData({2}, channel_id, control_point_id));
  }
}

void MeasurementLoop::processMeasurement(const param_info& info, const Module& module,
                                         Aggregate& aggregate, Visualization& visualization,
                                         DataParsing& parsing) {
  parsing.readData();
  log->print(parsing.log_text);
  if (parsing.no_data) {
    return;
  }

  const bool has_points = !aggregate.control_points.empty();
  if (has_points) {
    for (const control_point& point : aggregate.control_points) {
      parsing.setControlPoint(point);
      parsing.run(true);
      // A multichannel module measures several machines' points in one row: its defects
      // cannot be told apart by point, so none are raised.
      if (!replay && !module.multichannel) {
        parsing.control_defects();
      }
    }
  } else {
    parsing.run(false);
  }

  const int n = static_cast<int>(parsing.results.size());
  std::map<int, int> last_of_point;
  for (int i = 0; i < n; ++i) {
    last_of_point[parsing.results[static_cast<std::size_t>(i)].control_point_id] = i;
  }

  for (int i = 0; i < n; ++i) {
    const calc_result& result = parsing.results[static_cast<std::size_t>(i)];
    parsing.updateLatest(
        i, visualization.getData({1, 2, 3}, result.channel_id, result.control_point_id));
    log->print(true, false, parsing.print_result(result));
    parsing.write(result);
    if (calculation->getKafkaEnable() && !replay) {
      parsing.write_kafka(result, calculation->getKafkaTopic(), calculation->getKafkaClientId());
    }
    const bool last_of_its_point = last_of_point[result.control_point_id] == i;
    if (has_points && last_of_its_point) {
      smoothHistory(info, aggregate, visualization, parsing, i);
    }
    // The displayed latest values follow the newest good measurement of each point; a
    // replayed row is older than what they already show.
    if (last_of_its_point && !replay && result.status_calc == 0) {
      db->writeLatestData(result);
    }
  }

  visualization.readData();
  if (info.kind == 0 && !replay) {
    parsing.computeStatus(visualization.getData({1, 2, 3}));
  }

  // The machine's status is reduced from all its points, which other modules also feed; once
  // in ten seconds per machine is enough. An entry above the clock means that the clock has
  // wrapped, and counts as due so that no machine stays silent after a wrap.
  if (aggregateStatusDue(aggregate_written_at, aggregate.id, aggregate_clock)) {
    aggregate_written_at[aggregate.id] = aggregate_clock;
    if (!replay && has_points && info.kind == 0) {
      aggregate.calculateStatus();
      aggregate.writeStatus();
      db->writeStatusAggregate(static_cast<float>(aggregate.status),
                               static_cast<float>(aggregate.status_max), aggregate.id,
                               aggregate.date);
    }
  }

  // A failed calculation that is not a sensor out of range means data the math block could
  // not take: the module is flagged for the operator. Only the first result tells.
  if (n != 0 && !replay) {
    const calc_result& first = parsing.results.front();
    if ((first.status_calc == 1 || first.status_calc == 3) &&
        first.status_vector != DataParsing::kSensorOutOfRange) {
      db->notificationSystemSave("26", info.source, info.receipt_date, 1, 0, "", 2,
                                 aggregate.organization_alias, first.channel_id,
                                 first.control_point_id);
      db->setHardwareStatusModule(info.source, 0);
      log->print(std::to_string(info.source) + " : data error for math block\n");
    }
  }
}

void MeasurementLoop::smoothHistory(const param_info& info, const Aggregate& aggregate,
                                    const Visualization& visualization, DataParsing& parsing,
                                    int index) {
  const calc_result& result = parsing.results[static_cast<std::size_t>(index)];
  // With a stride the middle runs on every (middlecounter + 1)-th pass only, whichever rows
  // those are. A replay rewrites old stretches, where the short window is enough.
  if (middle != 0 && (middlecounter == 0 || middle_tick == 0)) {
    const int limit = replay && middle == kDefaultMiddle ? kReplayMiddle : middle;
    parsing.computeMiddle(visualization.getData({1, 3}, result.channel_id, result.control_point_id),
                          limit, index);
  }
  // The forecast is about now: a replayed row is not, nor a row from before the machine's
  // trend was (re)started.
  if (!replay && stringToDateTime(aggregate.trend_start) < stringToDateTime(info.receipt_date)) {
    parsing.computeTrend(aggregate.trend_start, aggregate.rul_days,
                         visualization.getData({1, 3}, result.channel_id, result.control_point_id),
                         index);
  }
}
