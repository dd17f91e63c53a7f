#include "support/ThrowawayDatabase.h"

#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <pqxx/pqxx>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace vek_test {

namespace {

std::string environment(const char* variable, const char* fallback) {
  const char* value = std::getenv(variable);
  return value == nullptr || *value == '\0' ? fallback : value;
}

// Lower-case letters, digits and underscores, short enough for PostgreSQL's 63 characters.
std::string uniqueName(const std::string& label) {
  static std::atomic<int> counter{0};
  std::string name = "vek_test_";
  for (std::size_t i = 0; i < label.size() && i < 24; ++i) {
    const auto c = static_cast<unsigned char>(label[i]);
    name += std::isalnum(c) != 0 ? static_cast<char>(std::tolower(c)) : '_';
  }
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return name + "_" + std::to_string(getpid()) + "_" + std::to_string(counter++) + "_" +
         std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count() %
                        1000000000);
}

} // namespace

ThrowawayDatabase::ThrowawayDatabase(const std::string& label)
    : host_(environment("VEK_PGHOST", "")), user_(environment("VEK_PGUSER", "postgres")),
      name_(uniqueName(label)) {
  if (host_.empty()) {
    throw std::runtime_error("VEK_PGHOST is not set: database tests must run under "
                             "scripts/with-postgres (e.g. scripts/with-postgres ctest ...)");
  }
  pqxx::connection admin("host=" + host_ + " dbname=postgres user=" + user_);
  // CREATE DATABASE refuses a template that another session has open at that moment; such a
  // session is short, so try a few times.
  for (int attempt = 0;; ++attempt) {
    try {
      pqxx::nontransaction(admin).exec("CREATE DATABASE " + name_ + " TEMPLATE " +
                                       environment("VEK_PGTEMPLATE", "vek_template"));
      return;
    } catch (const pqxx::sql_error& e) {
      if (attempt == 20 || std::string(e.what()).find("being accessed") == std::string::npos) {
        throw std::runtime_error("cannot create test database " + name_ + ": " + e.what());
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

ThrowawayDatabase::~ThrowawayDatabase() {
  try {
    pqxx::connection admin("host=" + host_ + " dbname=postgres user=" + user_);
    pqxx::nontransaction(admin).exec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
  } catch (const std::exception&) {
    // The whole cluster goes when the test command ends; a database left here costs nothing.
  }
}

} // namespace vek_test
