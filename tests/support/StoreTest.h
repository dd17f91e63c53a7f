#pragma once

// Test support for everything that talks to PostgreSQL: derive a fixture from StoreTest.
//
//   #include "support/StoreTest.h"
//
//   class ReadChannelTest : public vek_test::StoreTest {};
//
//   TEST_F(ReadChannelTest, ChannelWithoutBindingIsInactive) {
//     exec("INSERT INTO channel (id, source, raw_param, axis_order) VALUES (7, 42, '', '')");
//     std::vector<channel> channels;
//     store().readChannel(42, channels);
//     ...
//     EXPECT_EQ(scalar("SELECT COUNT(*) FROM channel"), "1");
//   }
//
// Link the test with vek_test_support (it brings vek_store, libpqxx and GoogleTest):
//   vek_test(store_tests SOURCES ... DEPENDS vek_test_support)
// and run it under the throwaway server: scripts/with-postgres ctest --test-dir <build> ...
//
// What the fixture gives:
// - one fresh database per test suite, copied from the schema template (VEK_PGTEMPLATE) and
//   dropped after the suite. Under ctest every test runs in a process of its own, so each test
//   starts from the bare schema; run directly, the tests of a suite share the database and
//   should use ids of their own;
// - store(): a WorkPostgreSQL connected to that database, new for every test, logging to a
//   file of its own whose whole text logText() returns (file lines only, nothing on the
//   console);
// - sql(), exec(), query(), scalar(): a plain libpqxx connection to the same database, for
//   setting up rows and looking at tables after the store has run;
// - makeStore(): further stores with the same credentials (a recalculation job's own store,
//   a short reconnect pause for tests of a lost server).
//
// Without VEK_PGHOST (not started under scripts/with-postgres) every test of the suite FAILS
// with the reason: database tests never skip.

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <pqxx/pqxx>
#include <string>
#include <vector>

#include "logging/PrintLog.h"
#include "store/WorkPostgreSQL.h"
#include "support/ThrowawayDatabase.h"

namespace vek_test {

class StoreTest : public ::testing::Test {
protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  // The store under test.
  WorkPostgreSQL& store() { return *store_; }
  // The log file the store writes to.
  PrintLog& log() { return *log_; }
  // Everything written to the store's log so far.
  std::string logText() const;
  // The whole text of a file, "" when it does not exist.
  static std::string fileText(const std::string& path);

  // The plain connection to the suite's database.
  pqxx::connection& sql() { return *sql_; }
  // Runs one or more statements in one transaction and commits.
  void exec(const std::string& statements);
  // Runs a query in its own transaction and returns its rows.
  pqxx::result query(const std::string& statement);
  // The first column of the first row as text; "" for no row or NULL.
  std::string scalar(const std::string& statement);

  // Another store connected to the suite's database, logging to log (borrowed).
  std::unique_ptr<WorkPostgreSQL>
  makeStore(PrintLog* other_log,
            std::chrono::milliseconds reconnect_pause = WorkPostgreSQL::kReconnectPause) const;

  // The suite's database (host, name, user); valid between SetUp and TearDown.
  static const ThrowawayDatabase& database() { return *database_; }

  // A file name in the temporary directory, unique in this process, removed in TearDown.
  std::string temporaryFile(const std::string& stem);

private:
  static std::unique_ptr<ThrowawayDatabase> database_;
  static std::string setup_error_;

  std::vector<std::string> temporary_files_;
  std::string log_path_;
  std::unique_ptr<PrintLog> log_;
  std::unique_ptr<pqxx::connection> sql_;
  std::unique_ptr<WorkPostgreSQL> store_;
};

} // namespace vek_test
