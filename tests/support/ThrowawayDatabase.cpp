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

std::string environment(const char* variable) {
  const char* value = std::getenv(variable);
  return value == nullptr ? std::string() : std::string(value);
}

namespace {

std::string adminConnectionString(const std::string& host, const std::string& user) {
  return "host=" + host + " dbname=postgres user=" + user;
}

// Lower-case letters, digits and underscores only, short enough that the whole name stays
// within PostgreSQL's 63 characters.
std::string cleanLabel(const std::string& label) {
  std::string out;
  for (const char c : label) {
    if (out.size() == 24) {
      break;
    }
    const auto u = static_cast<unsigned char>(c);
    out += std::isalnum(u) != 0 ? static_cast<char>(std::tolower(u)) : '_';
  }
  return out;
}

std::string uniqueName(const std::string& label) {
  static std::atomic<int> counter{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return "vek_test_" + cleanLabel(label) + "_" + std::to_string(getpid()) + "_" +
         std::to_string(counter++) + "_" +
         std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count() %
                        1000000000);
}

} // namespace

ThrowawayDatabase::ThrowawayDatabase(const std::string& label)
    : host_(environment("VEK_PGHOST")), user_(environment("VEK_PGUSER")), name_(uniqueName(label)) {
  if (host_.empty()) {
    throw std::runtime_error("VEK_PGHOST is not set: database tests must run under "
                             "scripts/with-postgres (e.g. scripts/with-postgres ctest ...)");
  }
  if (user_.empty()) {
    user_ = "postgres";
  }
  std::string template_name = environment("VEK_PGTEMPLATE");
  if (template_name.empty()) {
    template_name = "vek_template";
  }
  pqxx::connection admin(adminConnectionString(host_, user_));
  // CREATE DATABASE refuses to copy a template that another session has open at that
  // moment; such a session is short, so try a few times.
  for (int attempt = 0;; ++attempt) {
    try {
      pqxx::nontransaction work(admin);
      work.exec("CREATE DATABASE " + name_ + " TEMPLATE " + template_name);
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
    pqxx::connection admin(adminConnectionString(host_, user_));
    pqxx::nontransaction work(admin);
    work.exec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
  } catch (const std::exception&) {
    // The whole cluster is thrown away when the test command ends; a database left behind
    // here costs nothing.
  }
}

std::string ThrowawayDatabase::connectionString() const {
  return "host=" + host_ + " dbname=" + name_ + " user=" + user_;
}

} // namespace vek_test
