#pragma once

#include <string>

namespace vek_test {

// A database of its own, copied from the schema template of scripts/with-postgres (VEK_PGHOST,
// VEK_PGUSER, VEK_PGTEMPLATE) and dropped with the object. The name is unique over processes
// and time, so tests side by side never see each other's rows; label goes into it. Throws
// std::runtime_error with the reason when not under scripts/with-postgres or refused.
class ThrowawayDatabase {
public:
  explicit ThrowawayDatabase(const std::string& label);
  ~ThrowawayDatabase();
  ThrowawayDatabase(const ThrowawayDatabase&) = delete;
  ThrowawayDatabase& operator=(const ThrowawayDatabase&) = delete;

  const std::string& name() const { return name_; }
  const std::string& host() const { return host_; }
  const std::string& user() const { return user_; }
  std::string connectionString() const {
    return "host=" + host_ + " dbname=" + name_ + " user=" + user_;
  }

private:
  std::string host_, user_, name_;
};

} // namespace vek_test
