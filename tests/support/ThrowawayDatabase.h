#pragma once

#include <string>

namespace vek_test {

// A database of its own for one test process, copied from the schema template of
// scripts/with-postgres and dropped again when the object goes. The name is unique over
// processes and over time, so tests that run side by side never see each other's rows.
//
// Connection values come from the environment that scripts/with-postgres sets:
// VEK_PGHOST (the socket directory), VEK_PGUSER, VEK_PGTEMPLATE.
class ThrowawayDatabase {
public:
  // Creates the database. Throws std::runtime_error with a readable reason when VEK_PGHOST is
  // not set (the test was not started under scripts/with-postgres) or the server refuses.
  // label goes into the name to tell the databases apart when looking at a live server.
  explicit ThrowawayDatabase(const std::string& label);
  // Drops the database, ending any session still connected to it. Never throws.
  ~ThrowawayDatabase();

  ThrowawayDatabase(const ThrowawayDatabase&) = delete;
  ThrowawayDatabase& operator=(const ThrowawayDatabase&) = delete;

  const std::string& name() const { return name_; }
  const std::string& host() const { return host_; }
  const std::string& user() const { return user_; }
  // A libpq connection string for this database.
  std::string connectionString() const;

private:
  std::string host_;
  std::string user_;
  std::string name_;
};

// The value of an environment variable, or the empty text.
std::string environment(const char* variable);

} // namespace vek_test
