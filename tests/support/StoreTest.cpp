#include "support/StoreTest.h"

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace vek_test {

static std::string environment(const char* variable, const char* fallback) {
  const char* value = std::getenv(variable);
  return value == nullptr || *value == '\0' ? fallback : value;
}

ThrowawayDatabase::ThrowawayDatabase(const std::string& label)
    : host_(environment("VEK_PGHOST", "")), user_(environment("VEK_PGUSER", "postgres")) {
  if (host_.empty())
    throw std::runtime_error("VEK_PGHOST is not set: run the tests under scripts/with-postgres");
  // Lower-case letters, digits and underscores, within PostgreSQL's 63 characters; the process
  // and a count keep tests side by side apart, the time of a leftover of an earlier process.
  for (const unsigned char c : label.substr(0, 24))
    name_ += std::isalnum(c) != 0 ? static_cast<char>(std::tolower(c)) : '_';
  static int count = 0;
  name_ = "vek_test_" + name_ + "_" + std::to_string(getpid()) + "_" + std::to_string(count++) +
          "_" + std::to_string(std::time(nullptr) % 1000000);
  pqxx::connection admin("host=" + host_ + " dbname=postgres user=" + user_);
  // CREATE DATABASE refuses a template that another session has open at that moment; such a
  // session is short, so try a few times.
  for (int attempt = 0;; ++attempt) {
    try {
      pqxx::nontransaction(admin).exec("CREATE DATABASE " + name_ + " TEMPLATE " +
                                       environment("VEK_PGTEMPLATE", "vek_template"));
      return;
    } catch (const pqxx::sql_error& e) {
      if (attempt == 20 || std::string(e.what()).find("being accessed") == std::string::npos)
        throw std::runtime_error("cannot create test database " + name_ + ": " + e.what());
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

ThrowawayDatabase::~ThrowawayDatabase() {
  try { // the whole cluster goes when the test command ends; a database left costs nothing
    pqxx::connection admin("host=" + host_ + " dbname=postgres user=" + user_);
    pqxx::nontransaction(admin).exec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
  } catch (const std::exception&) {
  }
}

std::unique_ptr<ThrowawayDatabase> StoreTest::database_;

void StoreTest::SetUp() {
  if (!database_) // a failure to create it fails the test with the reason
    database_ = std::make_unique<ThrowawayDatabase>(
        ::testing::UnitTest::GetInstance()->current_test_info()->test_suite_name());
  log_path_ = temporaryFile("store-log");
  log_ = std::make_unique<PrintLog>(false, true, log_path_);
  sql_ = std::make_unique<pqxx::connection>(database_->connectionString());
  store_ = std::make_unique<WorkPostgreSQL>(database_->host(), database_->name(), database_->user(),
                                            "", log_.get());
}

StoreTest::~StoreTest() {
  for (const auto& path : temporary_files_)
    std::remove(path.c_str());
}

std::string StoreTest::fileText(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
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
  static int count = 0;
  const auto name = "vek-" + stem + "-" + std::to_string(getpid()) + "-" + std::to_string(count++);
  temporary_files_.push_back((std::filesystem::temp_directory_path() / name).string());
  std::remove(temporary_files_.back().c_str());
  return temporary_files_.back();
}

} // namespace vek_test
