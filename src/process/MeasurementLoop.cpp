#include "process/MeasurementLoop.h"

#include <exception>
#include <string>
#include <thread>

// The store lets libpqxx's two failure classes through on purpose: a rejected statement and a
// lost server call for different handling here, and only the loop decides.
#include <pqxx/except>

#include "logging/time_helpers.h"
#include "process/process_state.h"
#include "records/types.h"

namespace {

constexpr int kSettingsPeriodMs = 60000;
constexpr int kAggregateClockWrapMs = 600000;
constexpr int kReconnectPauseSec = 30;
constexpr int kFaultPauseSec = 1;

} // namespace

MeasurementLoop::MeasurementLoop(DataBase* db_, PrintLog* log_, const CommandLine& options,
                                 int id_history_, int id_current_)
    : db(db_), log(log_), id_stop(options.id_stop), pause(options.pause),
      middlecounter(options.middlecounter), id_history(id_history_), id_current(id_current_) {}

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
  }
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

  if (aggregate_clock > kAggregateClockWrapMs) {
    aggregate_clock = 0;
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
  // A gap in the ids (a measurement row rolled back or deleted) costs one quick pass: no
  // objects are built and no pause is taken.
  if (info.id == 0) {
    return;
  }
}
