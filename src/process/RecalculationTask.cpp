#include "process/RecalculationTask.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <thread>

#include "assessment/DataCache.h"
#include "equipment/Aggregate.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "logging/PrintLog.h"
#include "logging/time_helpers.h"
#include "pipeline/DataParsing.h"
#include "records/settings_parsers.h"
#include "store/StoreErrors.h"
#include "store/WorkPostgreSQL.h"

namespace {

constexpr int kReconnectPauseSec = 30;
constexpr int kRunning = 2;
constexpr int kWaiting = 1;
constexpr int kFinished = 3;
constexpr int kPause = 2;
constexpr int kStop = 3;
constexpr int kJobMiddle = 10;

// Lines of the job that operators follow on the console of the service, beside its own.
void announce(PrintLog& log, const std::string& text, bool logged) {
  std::cout << text << std::flush;
  if (logged) {
    log.print(text);
  }
}

// One row computed again and written as a replay writes it: looked for first and updated,
// with its middle, and no notification, status, trend, defect or Kafka line. A module without
// channels or a row the module check refuses passes with no effect.
void recompute(DataBase* db, PrintLog& log, DataCache& cache, param_info info) {
  if (!info.param_settings.empty()) {
    info.settings = parse_param_settings(info.param_settings);
  }
  Aggregate aggregate(db, info.source, &log, info.receipt_date, &cache);
  Visualization visualization(db, info.source);
  Module module(db, info.source);
  DataParsing parsing(db, &module, info, &log, true, &aggregate, visualization.getData({1, 2, 3}),
                      &cache);
  if (!parsing.verify() || aggregate.channels.empty()) {
    return;
  }
  parsing.readData();
  log.print(parsing.log_text);
  if (parsing.no_data) {
    return;
  }
  if (!aggregate.control_points.empty()) {
    for (const control_point& point : aggregate.control_points) {
      parsing.setControlPoint(point);
      parsing.run(true);
    }
  } else {
    parsing.run(false);
  }
  for (std::size_t i = 0; i < parsing.results.size(); ++i) {
    const calc_result& result = parsing.results[i];
    parsing.updateLatest(static_cast<int>(i), visualization.getData({1, 2, 3}, result.channel_id,
                                                                    result.control_point_id));
    parsing.write(result);
    // A job rewrites old stretches: the short window of the middle is enough there.
    if (!aggregate.control_points.empty()) {
      parsing.computeMiddle(
          visualization.getData({1, 3}, result.channel_id, result.control_point_id), kJobMiddle,
          static_cast<int>(i));
    }
  }
  visualization.readData();
}

} // namespace

void task(std::string db_host, std::string db_name, std::string passwd, std::string user,
          std::vector<param_info> rows, int /*unused*/, int id) {
  if (rows.empty()) {
    return;
  }
  const std::string first = rows.front().receipt_date;
  const std::string last = rows.back().receipt_date;
  // A file per job, named by its range and start so that operators find it; blanks and colons
  // of the dates would trouble the shells and tools that handle log files.
  std::string name = db_name + "_" + first + "_" + last + "_" + time_now(1, "") + ".log";
  std::replace(name.begin(), name.end(), ' ', '-');
  std::replace(name.begin(), name.end(), ':', '-');
  PrintLog log(false, true, name);
  DataCache cache;
  WorkPostgreSQL store(db_host, db_name, user, passwd, &log);
  DataBase* db = &store;
  const std::string job = std::to_string(id);

  db->writeRecalculation(id, kRunning, first);
  while (!rows.empty()) {
    try {
      announce(log, "task: " + job + ", param_info_id: " + std::to_string(rows.front().id) + "\n",
               true);
      const param_info info = rows.front();
      recompute(db, log, cache, info);

      // The operator's orders are asked after every row, so a pause or a stop takes effect
      // with the row in work finished and marked.
      int state = 0;
      int control = 0;
      db->getStateRecalculation(id, state, control);
      int next_state = kRunning;
      if (control == kPause) {
        next_state = kWaiting;
      } else if (control == kStop) {
        next_state = kFinished;
      }
      db->writeRecalculation(id, next_state, info.receipt_date);
      if (control == kPause || control == kStop) {
        return;
      }
      rows.erase(rows.begin());
    } catch (const pqxx::sql_error& e) {
      log.print(std::string("error sql: ") + e.what() + "\nskip current id\n");
      rows.erase(rows.begin());
    } catch (const pqxx::broken_connection& e) {
      // The row was not marked: it is done again once the server takes connections.
      log.print(std::string("error: broken_connection\n") + e.what() + "\n");
      std::this_thread::sleep_for(std::chrono::seconds(kReconnectPauseSec));
      db->openConnect();
    } catch (const std::exception& e) {
      log.print(std::string("error: exception: ") + e.what() + "\nskip current id\n");
      rows.erase(rows.begin());
    } catch (...) {
      log.print("error: unknown error, skip current id\n");
      rows.erase(rows.begin());
    }
  }
  announce(log, "task: " + job + ", finish\n", false);
  db->writeRecalculation(id, kFinished, last);
}
