// The connection, the one road to the server, the value texts, the generic queries and the
// read of one measurement row, on which the main loop rests.
#include "store/WorkPostgreSQL.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <pqxx/pqxx>
#include <thread>
#include <utility>

WorkPostgreSQL::WorkPostgreSQL(std::string host_, std::string name_, std::string user_,
                               std::string password_, PrintLog* log_,
                               std::chrono::milliseconds reconnect_pause_)
    : log(log_), host(std::move(host_)), name(std::move(name_)), user(std::move(user_)),
      password(std::move(password_)), reconnect_pause(reconnect_pause_) {
  openConnect();
}

WorkPostgreSQL::~WorkPostgreSQL() {
  closeConnect();
}

void WorkPostgreSQL::closeConnect() {
  if (connection) {
    connection->disconnect();
  }
}

void WorkPostgreSQL::openConnect() {
  // No quoting of the values: the credentials come from the command line as they are.
  const std::string options =
      "host=" + host + " dbname=" + name + " user=" + user + " password=" + password;
  for (;;) {
    try {
      auto fresh = std::make_unique<pqxx::connection>(options);
      // A lost session is reported to the caller, whose catch block waits and calls
      // openConnect; libpqxx must not reconnect behind its back in the middle of a row.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
      fresh->inhibit_reactivation(true);
#pragma GCC diagnostic pop
      // The session replaced after a loss is released rather than kept open on the server.
      connection = std::move(fresh);
      log->print("connect to database: " + host + " " + name + " " + user + "\n");
      return;
    } catch (const pqxx::broken_connection& e) {
      // The server is down or refuses us: the service has nothing to do without it, so it
      // waits for as long as it takes.
      log->print(e.what());
      log->print("reconnect pause 30c\n");
      std::this_thread::sleep_for(reconnect_pause);
    }
  }
}

pqxx::result WorkPostgreSQL::execute(const std::string& sql) {
  pqxx::work transaction(*connection);
  pqxx::result rows = transaction.exec(sql);
  transaction.commit();
  return rows;
}

std::string WorkPostgreSQL::numberText(int value) {
  return pqxx::to_string(value);
}
std::string WorkPostgreSQL::numberText(long value) {
  return pqxx::to_string(value);
}
std::string WorkPostgreSQL::numberText(unsigned int value) {
  return pqxx::to_string(value);
}

namespace {
template <typename T> std::string finiteText(T value) {
  if (!std::isfinite(value)) {
    return "NULL";
  }
  // The client library's text of a number, max_digits10 significant digits as printf's %g
  // writes them in the C locale, so always with a point; written straight from the digits and
  // not through a stream, as the rewrite of a history prints thousands at a time.
  char digits[32];
  char* end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general,
                            std::numeric_limits<T>::max_digits10)
                  .ptr;
  return std::string(digits, end);
}
} // namespace

std::string WorkPostgreSQL::floatText(float value) {
  return finiteText(value);
}
std::string WorkPostgreSQL::floatText(double value) {
  return finiteText(value);
}

std::string WorkPostgreSQL::boolText(bool value) {
  return value ? "true" : "false";
}

std::string WorkPostgreSQL::optionalId(long id) {
  return id == 0 ? "NULL" : numberText(id);
}

std::string WorkPostgreSQL::optionalIdCondition(long id) {
  return id == 0 ? "IS NULL" : "= " + numberText(id);
}

std::string WorkPostgreSQL::timestampText(const std::string& date) {
  return "TO_TIMESTAMP(" + sql::quoted(date) + ",'yyyy-mm-dd hh24:mi:ss.ff6')";
}

std::string WorkPostgreSQL::optionalQuoted(const std::string& text) {
  return text.empty() ? "NULL" : sql::quoted(text);
}

std::string WorkPostgreSQL::optionalQuotedCondition(const std::string& text) {
  return text.empty() ? "IS NULL" : "= " + sql::quoted(text);
}

namespace {
// Feeding appends to what an earlier extraction left unread; a NULL feeds nothing, and the
// extraction of nothing leaves the target untouched. The server prints numbers with a point
// whatever the locale of the process, so the stream reads them in the classic locale.
template <typename T> void extract(std::stringstream& stream, const pqxx::field& field, T& target) {
  // Nearly every field is a plain number read whole while nothing is left unread: that is read
  // straight from its digits, to the same value and leaving the stream as reading it would (all
  // read); a history of thousands of rows spends more on the stream than on the digits.
  const char* begin = field.c_str();
  const char* end = begin + field.size();
  T value{};
  if (!field.is_null() && begin != end && stream.rdbuf()->in_avail() == 0) {
    const std::from_chars_result read = std::from_chars(begin, end, value);
    if (read.ec == std::errc() && read.ptr == end) {
      target = value;
      return;
    }
  }
  if (stream.getloc() != std::locale::classic()) {
    stream.imbue(std::locale::classic());
  }
  stream.clear();
  stream << field.c_str();
  stream >> target;
}
} // namespace

void WorkPostgreSQL::readField(std::stringstream& stream, const pqxx::field& field, int& target) {
  extract(stream, field, target);
}
void WorkPostgreSQL::readField(std::stringstream& stream, const pqxx::field& field, long& target) {
  extract(stream, field, target);
}
void WorkPostgreSQL::readField(std::stringstream& stream, const pqxx::field& field,
                               unsigned int& target) {
  extract(stream, field, target);
}
void WorkPostgreSQL::readField(std::stringstream& stream, const pqxx::field& field, float& target) {
  extract(stream, field, target);
}
void WorkPostgreSQL::readField(std::stringstream& stream, const pqxx::field& field,
                               double& target) {
  extract(stream, field, target);
}

std::string WorkPostgreSQL::textField(const pqxx::field& field) {
  return field.is_null() ? std::string() : std::string(field.c_str(), field.size());
}

int WorkPostgreSQL::getValueInt(std::string sql) {
  const pqxx::result rows = execute(sql);
  int value = 0;
  std::stringstream stream;
  for (const auto& row : rows) {
    for (const auto& field : row) {
      readField(stream, field, value);
    }
  }
  return value;
}

std::string WorkPostgreSQL::getValueString(std::string sql) {
  const pqxx::result rows = execute(sql);
  std::string value;
  for (const auto& row : rows) {
    // A statement may return rows without columns; they read as the empty text.
    value = row.empty() ? std::string() : textField(row[0]);
  }
  return value;
}

template <typename T>
void WorkPostgreSQL::appendNumberRows(const pqxx::result& rows,
                                      std::vector<std::vector<T>>& table) {
  std::stringstream stream;
  for (const auto& row : rows) {
    std::vector<T> line;
    line.reserve(row.size());
    for (const auto& field : row) {
      T value = 0;
      readField(stream, field, value);
      line.push_back(value);
    }
    table.push_back(std::move(line));
  }
}

void WorkPostgreSQL::getValue(std::string sql, std::vector<std::vector<int>>& values) {
  appendNumberRows(execute(sql), values);
}

void WorkPostgreSQL::getValue(std::string sql, std::vector<std::string>& values) {
  const pqxx::result rows = execute(sql);
  for (const auto& row : rows) {
    values.push_back(row.empty() ? std::string() : textField(row[0]));
  }
}

void WorkPostgreSQL::readDataTable(std::string sql, std::vector<std::vector<double>>& table) {
  appendNumberRows(execute(sql), table);
}

void WorkPostgreSQL::writeData(std::string sql) {
  execute(sql);
}

void WorkPostgreSQL::readParamInfo(int id, param_info& info) {
  log->print(false, true, "reading data: ID = " + numberText(id) + "\n");
  const pqxx::result rows =
      execute("SELECT SOURCE, TYPE_MOD, TYPE_PARAM, RECEIPT_DATE, TU_ERROR, "
              "PARAM_SETTINGS, MODULE_CONFIG, KIND FROM PARAM_INFO WHERE ID=" +
              numberText(id));
  std::stringstream stream;
  for (const auto& row : rows) {
    readParamInfoColumns(stream, row, 0, info);
    // Only an existing row gets its id: the loop takes id 0 for a gap and moves on.
    info.id = id;
  }
}

void WorkPostgreSQL::readParamInfoColumns(std::stringstream& stream, const pqxx::row& row,
                                          int first, param_info& info) {
  readField(stream, row[first], info.source);
  readField(stream, row[first + 1], info.type_mod);
  readField(stream, row[first + 2], info.type_param);
  info.receipt_date = textField(row[first + 3]);
  info.tu_error = textField(row[first + 4]);
  info.param_settings = textField(row[first + 5]);
  info.module_config = textField(row[first + 6]);
  readField(stream, row[first + 7], info.kind);
}
