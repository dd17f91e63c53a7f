// The vek executable end to end, as a process against the throwaway PostgreSQL server.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <unistd.h>
#include <vector>

#include <pqxx/pqxx>

#include "support/ServiceRun.h"
#include "support/ThrowawayDatabase.h"

namespace {

// Generous bounds for a run that involves no pause: far below the 30 seconds of a pause, so
// a run that ends within them proves that it did not wait.
constexpr int kQuickRunSec = 20;
// A run with one 30-second wait, with room for a loaded machine.
constexpr int kOneWaitRunSec = 90;
// The loop's own pause before it looks for new rows or reconnects.
constexpr int kPauseSec = 30;

const char* const kTimeText = R"(\d{4}-[1-9]\d?-[1-9]\d?(-(0|[1-9]\d?)){3})";

// The version document, written out from its table of keys, values and spacing.
std::string expectedVersionDocument() {
  std::string doc = R"({ "vek" : "130b" ,  "calc_modul_7R_full" : "16.06.2023" ,  )";
  const std::vector<std::pair<std::string, std::string>> blocks = {
      {"vibro_tk701_2_ve", "16.03.2023"},
      {"vibro_tk701_3_ve", "23.08.2024"},
      {"vibro_tk703_2_ve", "24.11.2022"},
      {"vibro_tk703_2_single_ve", "24.11.2022"},
      {"vibro_tk703_3_ve", "24.11.2022"},
      {"vibro_tk703_4_ve", "24.11.2022"},
      {"vibro_rs893_4_ve", "24.11.2022"},
      {"vibro_rs893_2_ve", "24.11.2022"},
      {"detrend_filter_group_mon_rul", "08.08.2023"},
      {"median_filter", "15.03.2022"},
      {"v_data_d", "05.08.2021"},
      {"coder_array", "matlabR2022a"}};
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    doc += "\"" + blocks[i].first + "\": \"" + blocks[i].second + "\"";
    doc += i + 1 < blocks.size() ? ",  " : "}";
  }
  return doc;
}

// Measurement rows with the given ids, all of one module, received now.
std::string insertRows(const std::vector<int>& ids) {
  std::string sql;
  for (const int id : ids) {
    sql += "INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error, "
           "param_settings, module_config, kind) VALUES (" +
           std::to_string(id) + ", 4660, 10, 1, now(), '', '', '', 0);";
  }
  return sql;
}

using vek_test::ServiceRun;
using vek_test::ThrowawayDatabase;

// The argument list as the service joins it in the first line of its run log.
std::string joined(const std::vector<std::string>& arguments) {
  std::string text = VEK_EXECUTABLE;
  for (const std::string& argument : arguments) {
    text += argument;
  }
  return text;
}

// The instance row with the run log switched on: the loop reads the settings on its first
// pass, and the setting, not -p, decides whether the run log is written from then on.
std::string instanceWithLog(int id) {
  return "INSERT INTO vek_calculation (id, settings) VALUES (" + std::to_string(id) +
         ", '{\"log\": true}');";
}

// Runs statements on the test's database in one committed transaction.
void execute(const ThrowawayDatabase& db, const std::string& sql) {
  pqxx::connection connection(db.connectionString());
  pqxx::work work(connection);
  work.exec(sql);
  work.commit();
}

std::vector<std::string> connectionArguments(const ThrowawayDatabase& db) {
  return {"-host", db.host(), "-name", db.name(), "-user", db.user()};
}

std::vector<std::string> withArguments(std::vector<std::string> base,
                                       const std::vector<std::string>& more) {
  base.insert(base.end(), more.begin(), more.end());
  return base;
}

// The row ids that the loop announced with "id_current: N", in order.
std::vector<int> walkedIds(const std::string& output) {
  std::vector<int> ids;
  const std::regex line(R"(id_current: (\d+)\n)");
  for (auto it = std::sregex_iterator(output.begin(), output.end(), line);
       it != std::sregex_iterator(); ++it) {
    ids.push_back(std::stoi((*it)[1]));
  }
  return ids;
}

std::string findLog(const ServiceRun& run, const std::string& suffix) {
  for (const std::string& name : run.logFiles()) {
    if (name.size() >= suffix.size() &&
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0 &&
        (suffix != ".log" || name.find("_error.log") == std::string::npos)) {
      return name;
    }
  }
  return "";
}

// A view in place of the table, so that reading one row's measurement fails on the server
// the way a damaged row or a dying session does, while every other row reads normally.
// Row `damaged` raises an SQL error; the first read of row `lost` kills its own session.
void replaceRowTableWithFaultyView(const ThrowawayDatabase& db, int damaged, int lost) {
  execute(db, R"(
    CREATE SEQUENCE lost_once;
    CREATE FUNCTION damaged_row(row_id integer) RETURNS text LANGUAGE plpgsql IMMUTABLE AS $$
    BEGIN
      IF row_id = )" +
                  std::to_string(damaged) + R"( THEN
        RAISE EXCEPTION 'row % is damaged', row_id;
      END IF;
      RETURN NULL;
    END $$;
    -- Declared stable so that the planner prunes it from queries that do not read the column.
    CREATE FUNCTION session_lost_once(row_id integer) RETURNS text LANGUAGE plpgsql STABLE AS $$
    BEGIN
      IF row_id = )" +
                  std::to_string(lost) + R"( AND nextval('lost_once') = 1 THEN
        PERFORM pg_terminate_backend(pg_backend_pid());
        PERFORM pg_sleep(10);
      END IF;
      RETURN NULL;
    END $$;
    ALTER TABLE param_info RENAME TO param_info_rows;
    CREATE VIEW param_info AS
      SELECT id, source, type_mod, type_param, receipt_date,
             COALESCE(damaged_row(id), session_lost_once(id), tu_error) AS tu_error,
             param_settings, module_config, kind
      FROM param_info_rows;
  )");
}

} // namespace

TEST(Service, ReplayWalksItsRangeAcrossAGapAndEndsBeforeTheStopId) {
  ThrowawayDatabase db("vek_process_replay");
  execute(db, insertRows({1, 2, 4, 5, 6, 7}) +
                  "INSERT INTO math_history (param_info_id, calculated_at) VALUES (9, now());");

  ServiceRun run(withArguments(connectionArguments(db), {"-s", "2", "-stop", "6"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  const std::string output = run.standardOutput();
  // Row 3 is a gap: announced, read, found missing, passed without a pause. Row 6 is the
  // stop id and not done.
  EXPECT_EQ(walkedIds(output), (std::vector<int>{2, 3, 4, 5})) << output;
  EXPECT_NE(output.find("start id: 2\nstop id: 6\n"), std::string::npos) << output;
  EXPECT_EQ(output.find("pause:"), std::string::npos) << output;
  // Without -p there is no log file at all.
  EXPECT_TRUE(run.logFiles().empty());

  // A start at or above the stop id still does its one row.
  ServiceRun above(withArguments(connectionArguments(db), {"-s", "6", "-stop", "3"}));
  ASSERT_TRUE(above.waitForExit(kQuickRunSec, status)) << above.standardOutput();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(walkedIds(above.standardOutput()), (std::vector<int>{6}));
}

TEST(Service, ContinuesAfterTheLastCalculatedRowAndWaitsWhenCaughtUp) {
  ThrowawayDatabase db("vek_process_continue");
  execute(db, insertRows({1, 2, 3, 4, 5, 6}) +
                  "INSERT INTO math_history (param_info_id, calculated_at) VALUES (2, now()), "
                  "(4, now()), (3, now());");

  // No -s: the first row is MAX(param_info_id) + 1, and the stop id ends the run.
  ServiceRun run(withArguments(connectionArguments(db), {"-stop", "6"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(walkedIds(run.standardOutput()), (std::vector<int>{5}));
  EXPECT_NE(run.standardOutput().find("start id: 5\n"), std::string::npos);

  // Caught up with the newest row: the pass that does row 6 ends in the pause.
  ServiceRun waiting(withArguments(connectionArguments(db), {"-s", "6"}));
  ASSERT_TRUE(waiting.waitForOutput("pause: 30\n", kQuickRunSec)) << waiting.standardOutput();
  EXPECT_EQ(walkedIds(waiting.standardOutput()), (std::vector<int>{6}));
  EXPECT_NE(waiting.standardOutput().find("id_current: 6\n"), std::string::npos);
}

TEST(Service, PrintOptionWritesTheRunLogNamedAfterDatabaseAndInstance) {
  ThrowawayDatabase db("vek_process_logs");
  execute(db, insertRows({1, 2, 3}) + instanceWithLog(7));

  const std::vector<std::string> arguments = withArguments(
      connectionArguments(db), {"-id", "7", "-s", "1", "-stop", "3", "-p", "-middle", "3"});
  ServiceRun run(arguments);
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);

  // The version line is the first line on standard output, whole.
  const std::string version_line = "vek 7 version: " + expectedVersionDocument() + "\n";
  EXPECT_EQ(run.standardOutput().substr(0, version_line.size()), version_line);

  const std::vector<std::string> logs = run.logFiles();
  ASSERT_EQ(logs.size(), 1u) << "no error, so no error log";
  EXPECT_TRUE(std::regex_match(logs[0], std::regex(db.name() + "_c7_" + kTimeText + R"(\.log)")))
      << logs[0];

  const std::string log = run.fileContent(logs[0]);
  // The first line is the command line joined without separators; it reaches the file only.
  const std::string first_line =
      joined(arguments) + ", vek 7 version: " + expectedVersionDocument() + "\n";
  EXPECT_EQ(log.substr(0, first_line.size()), first_line);
  EXPECT_EQ(run.standardOutput().find(joined(arguments)), std::string::npos);
  // The row read is announced in the file only, between the loop's own lines.
  EXPECT_NE(log.find("start id: 1\nstop id: 3\nmiddle: 5\nid_current: 1\nreading data: ID = 1\n"),
            std::string::npos)
      << log;
  EXPECT_EQ(run.standardOutput().find("reading data"), std::string::npos);
  EXPECT_NE(log.find("id_current: 2\nreading data: ID = 2\n"), std::string::npos) << log;
}

TEST(Service, SignalsEndWithTheirLineInTheErrorLogAndStatusZero) {
  ThrowawayDatabase db("vek_process_signals");
  struct Case {
    int signal_number;
    std::string line;
  };
  const std::vector<Case> cases = {
      {SIGTERM, "| signal: 15 : SIGTERM: ОС завершает процесс\n"},
      {SIGINT, "| signal: 2 : SIGINT: команда прервать процесс Ctrl-C\n"},
      {SIGHUP, "| signal: 1 : SIGHUP: завершение работы\n"}};
  // All wait side by side on an empty table, so the signals meet them in the pause.
  std::vector<std::unique_ptr<ServiceRun>> runs;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    runs.push_back(std::make_unique<ServiceRun>(
        withArguments(connectionArguments(db), {"-id", std::to_string(i + 2)})));
  }
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE("signal " + std::to_string(cases[i].signal_number));
    ASSERT_TRUE(runs[i]->waitForOutput("pause: 30\n", kQuickRunSec)) << runs[i]->standardOutput();
    runs[i]->sendSignal(cases[i].signal_number);
    int status = -1;
    ASSERT_TRUE(runs[i]->waitForExit(kQuickRunSec, status));
    EXPECT_EQ(status, 0);
    const std::string error_log = findLog(*runs[i], "_error.log");
    EXPECT_TRUE(std::regex_match(error_log, std::regex(db.name() + "_c" + std::to_string(i + 2) +
                                                       "_" + kTimeText + "_error\\.log")))
        << error_log;
    EXPECT_EQ(runs[i]->fileContent(error_log), cases[i].line);
  }
}

TEST(Service, FaultBeforeTheLoopEndsThroughTheAbortLineWithStatusZero) {
  ThrowawayDatabase db("vek_process_start_fault");
  // Without MATH_HISTORY the start position cannot be read; nothing catches that before the
  // loop, so the runtime aborts and the handler leaves its line.
  execute(db, "DROP TABLE math_history;");
  ServiceRun run(withArguments(connectionArguments(db), {"-id", "5"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(walkedIds(run.standardOutput()), std::vector<int>{});
  EXPECT_EQ(run.fileContent(findLog(run, "_error.log")),
            "| signal: 6 : SIGABRT: завершение программы\n");
}

TEST(Service, RejectedStatementSkipsTheRowAtOnce) {
  ThrowawayDatabase db("vek_process_sql_error");
  execute(db, insertRows({1, 2, 3, 4, 5}) + instanceWithLog(1));
  replaceRowTableWithFaultyView(db, 2, 0);

  ServiceRun run(withArguments(connectionArguments(db), {"-s", "1", "-stop", "5", "-p"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  const std::string output = run.standardOutput();
  EXPECT_EQ(walkedIds(output), (std::vector<int>{1, 2, 3, 4}));
  // Console and run log: the two-line notice, then the row ends the normal way. The file
  // also holds the read's own line.
  const std::regex notice(R"(id_current: 2\n(reading data: ID = 2\n)?error sql\n)"
                          R"(ERROR:  row 2 is damaged\n[^]*?\n)"
                          R"(time spent processing: \d+ms\nid_current: 3\n)");
  EXPECT_TRUE(std::regex_search(output, notice)) << output;
  EXPECT_TRUE(std::regex_search(run.fileContent(findLog(run, ".log")), notice));
  const std::string error_log = run.fileContent(findLog(run, "_error.log"));
  EXPECT_TRUE(std::regex_search(
      error_log, std::regex(std::string("^") + kTimeText +
                            R"( : id= 2  error: sql_error\nERROR:  row 2 is damaged\n)")))
      << error_log;
  EXPECT_EQ(error_log.find("id= 3"), std::string::npos);
}

TEST(Service, FaultBeforeTheRowSkipsItsIdAfterASecond) {
  ThrowawayDatabase db("vek_process_exception");
  execute(db, insertRows({1, 2, 3, 4}) + instanceWithLog(1));
  // The very first statement on the ids, the loop's look for the newest row, is rejected
  // once. Outside the row's own guard that counts as a general fault: row 1 is skipped
  // untouched.
  execute(db, R"(
    CREATE SEQUENCE first_read;
    CREATE FUNCTION rejected_once(row_id integer) RETURNS integer LANGUAGE plpgsql STABLE AS $$
    BEGIN
      IF nextval('first_read') = 1 THEN
        RAISE EXCEPTION 'ids unreadable for a moment';
      END IF;
      RETURN row_id;
    END $$;
    ALTER TABLE param_info RENAME TO param_info_rows;
    CREATE VIEW param_info AS
      SELECT rejected_once(id) AS id, source, type_mod, type_param, receipt_date, tu_error,
             param_settings, module_config, kind
      FROM param_info_rows;
  )");

  ServiceRun run(withArguments(connectionArguments(db), {"-s", "1", "-stop", "3", "-p"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kQuickRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  const std::string output = run.standardOutput();
  EXPECT_EQ(walkedIds(output), (std::vector<int>{2}));
  EXPECT_NE(output.find("stop id: 3\nerror: exception, pause: 1c\nskip current id\n"
                        "id_current: 2\n"),
            std::string::npos)
      << output;
  const std::string error_log = run.fileContent(findLog(run, "_error.log"));
  EXPECT_TRUE(std::regex_match(
      error_log, std::regex(std::string(kTimeText) +
                            " : id= 1  error: exception\nERROR:  ids unreadable for a moment\n"
                            "[^]*\nskip current id\n")))
      << error_log;
}

TEST(Service, LostConnectionWaitsReconnectsAndRepeatsTheRow) {
  ThrowawayDatabase db("vek_process_lost");
  execute(db, insertRows({1, 2, 3, 4}) + instanceWithLog(1));
  replaceRowTableWithFaultyView(db, 0, 2);

  const auto started = std::chrono::steady_clock::now();
  ServiceRun run(withArguments(connectionArguments(db), {"-s", "1", "-stop", "4", "-p"}));
  int status = -1;
  ASSERT_TRUE(run.waitForExit(kOneWaitRunSec, status)) << run.standardOutput();
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started)
          .count();
  EXPECT_EQ(status, 0);
  EXPECT_GE(seconds, kPauseSec - 1) << "the reconnect comes after the pause";
  const std::string output = run.standardOutput();
  // Row 2 is never skipped: it is announced again after the reconnect and done.
  EXPECT_EQ(walkedIds(output), (std::vector<int>{1, 2, 2, 3}));
  const std::string connected =
      "connect to database: " + db.host() + " " + db.name() + " " + db.user() + "\n";
  EXPECT_NE(
      output.find("id_current: 2\nerror connect, pause: 30c\n" + connected + "id_current: 2\n"),
      std::string::npos)
      << output;
  const std::string error_log = run.fileContent(findLog(run, "_error.log"));
  EXPECT_TRUE(std::regex_search(
      error_log, std::regex(std::string("^") + kTimeText + "  error: broken_connection\n")))
      << error_log;
}

TEST(Service, ServerDownAtStartIsWaitedFor) {
  ThrowawayDatabase db("vek_process_late_server");
  execute(db, insertRows({1, 2}));
  // A socket directory where no server listens yet; the server "comes up" when its socket
  // appears there, without disturbing the other tests on the shared server.
  const std::string late_host = std::filesystem::temp_directory_path().string() +
                                "/vek-late-server-" + std::to_string(getpid());
  std::filesystem::remove_all(late_host);
  std::filesystem::create_directory(late_host);

  ServiceRun run(
      {"-host", late_host, "-name", db.name(), "-user", db.user(), "-s", "1", "-stop", "2", "-p"});
  ASSERT_TRUE(run.waitForOutput("reconnect pause 30c\n", kQuickRunSec)) << run.standardOutput();
  EXPECT_EQ(run.standardOutput().find("id_current:"), std::string::npos);
  std::filesystem::create_symlink(db.host() + "/.s.PGSQL.5432", late_host + "/.s.PGSQL.5432");

  int status = -1;
  ASSERT_TRUE(run.waitForExit(kOneWaitRunSec, status)) << run.standardOutput();
  EXPECT_EQ(status, 0);
  const std::string output = run.standardOutput();
  EXPECT_NE(output.find("connect to database: " + late_host + " " + db.name()), std::string::npos)
      << output;
  EXPECT_EQ(walkedIds(output), (std::vector<int>{1}));
  std::filesystem::remove_all(late_host);
}
