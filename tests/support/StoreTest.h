#pragma once

// The fixture of tests that talk to PostgreSQL: derive from vek_test::StoreTest, link
// vek_test_support and run under scripts/with-postgres. Each suite gets a fresh database from
// the schema template (under ctest every test runs in a process of its own, so each test
// starts from the bare schema); each test gets a store logging to a file of its own and a
// plain connection beside it. Without the server every test FAILS with the reason.

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
  static void TearDownTestSuite() { database_.reset(); }
  void SetUp() override;
  void TearDown() override;

  WorkPostgreSQL& store() { return *store_; }
  // The store's log and everything written to it so far (file lines only).
  PrintLog& log() { return *log_; }
  std::string logText() const { return fileText(log_path_); }
  // The whole text of a file, "" when it does not exist.
  static std::string fileText(const std::string& path);

  // The plain connection; exec() runs statements in one committed transaction, query() one
  // query, scalar() its first field as text ("" for no row or NULL).
  pqxx::connection& sql() { return *sql_; }
  void exec(const std::string& statements);
  pqxx::result query(const std::string& statement);
  std::string scalar(const std::string& statement);

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
