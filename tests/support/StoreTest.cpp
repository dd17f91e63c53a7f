#include "support/StoreTest.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace vek_test {

std::unique_ptr<ThrowawayDatabase> StoreTest::database_;
std::string StoreTest::setup_error_;

void StoreTest::SetUpTestSuite() {
  setup_error_.clear();
  const auto* suite = ::testing::UnitTest::GetInstance()->current_test_suite();
  try {
    database_ = std::make_unique<ThrowawayDatabase>(suite != nullptr ? suite->name() : "suite");
  } catch (const std::exception& e) {
    setup_error_ = e.what();
  }
}

void StoreTest::SetUp() {
  ASSERT_TRUE(database_) << "no test database: " << setup_error_;
  log_path_ = temporaryFile("store-log");
  log_ = std::make_unique<PrintLog>(false, true, log_path_);
  sql_ = std::make_unique<pqxx::connection>(database_->connectionString());
  store_ = std::make_unique<WorkPostgreSQL>(database_->host(), database_->name(), database_->user(),
                                            "", log_.get());
}

void StoreTest::TearDown() {
  store_.reset();
  sql_.reset();
  log_.reset();
  for (const auto& path : temporary_files_) {
    std::remove(path.c_str());
  }
  temporary_files_.clear();
}

std::string StoreTest::fileText(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void StoreTest::exec(const std::string& statements) {
  pqxx::work work(*sql_);
  work.exec(statements);
  work.commit();
}

pqxx::result StoreTest::query(const std::string& statement) {
  return pqxx::nontransaction(*sql_).exec(statement);
}

std::string StoreTest::scalar(const std::string& statement) {
  const pqxx::result rows = query(statement);
  return rows.empty() || rows[0].empty() || rows[0][0].is_null() ? "" : rows[0][0].c_str();
}

std::string StoreTest::temporaryFile(const std::string& stem) {
  static int counter = 0;
  const auto path =
      std::filesystem::temp_directory_path() /
      ("vek-" + stem + "-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".log");
  std::remove(path.c_str());
  temporary_files_.push_back(path.string());
  return path.string();
}

} // namespace vek_test
