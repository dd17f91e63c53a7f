#pragma once

// Tests against the throwaway PostgreSQL of scripts/with-postgres derive from StoreTest: a fresh
// database from the schema template (ctest runs each test in a process of its own), a store
// logging to a file of its own and a plain connection. Without the server every test FAILS.
#include <gtest/gtest.h>
#include <memory>
#include <pqxx/pqxx>
#include <string>
#include <vector>

#include "logging/PrintLog.h"
#include "store/WorkPostgreSQL.h"

namespace vek_test {

// A database of its own, copied from the template (VEK_PGHOST, VEK_PGUSER, VEK_PGTEMPLATE) and
// dropped with the object; its name, unique over processes and time, holds label. Throws with
// the reason when not under scripts/with-postgres or refused.
class ThrowawayDatabase {
public:
  explicit ThrowawayDatabase(const std::string& label);
  ~ThrowawayDatabase();
  const std::string& name() const { return name_; }
  const std::string& host() const { return host_; }
  const std::string& user() const { return user_; }
  std::string connectionString() const {
    return "host=" + host_ + " dbname=" + name_ + " user=" + user_;
  }

private:
  std::string host_, user_, name_;
};

class StoreTest : public ::testing::Test {
public:
  static std::string fileText(const std::string& path); // the whole file, "" when there is none

protected:
  ~StoreTest() override;
  static void TearDownTestSuite() { database_.reset(); }
  void SetUp() override;
  WorkPostgreSQL& store() { return *store_; }
  PrintLog& log() { return *log_; }
  std::string logText() const { return fileText(log_path_); } // the store's log file so far
  // The plain connection; exec() runs statements in one committed transaction, query() one
  // query, scalar() its first field as text ("" for no row or NULL).
  pqxx::connection& sql() { return *sql_; }
  void exec(const std::string& statements);
  pqxx::result query(const std::string& statement);
  std::string scalar(const std::string& statement);
  static const ThrowawayDatabase& database() { return *database_; }
  // A file name in the temporary directory, unique in this process, removed with the test.
  std::string temporaryFile(const std::string& stem);

private:
  static std::unique_ptr<ThrowawayDatabase> database_;
  std::vector<std::string> temporary_files_;
  std::string log_path_;
  std::unique_ptr<PrintLog> log_;
  std::unique_ptr<pqxx::connection> sql_;
  std::unique_ptr<WorkPostgreSQL> store_;
};

} // namespace vek_test
