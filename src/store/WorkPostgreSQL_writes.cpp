// The result writes. A measurement can be computed twice (a replay, a recalculation job, a
// retry after a lost connection), so most writes look for what is there first and choose
// between an update and an insert; a clash on the results' unique index becomes message
// "27" instead of an error.
#include "store/WorkPostgreSQL.h"

#include <cmath>
#include <string>

#include <pqxx/pqxx>

#include "logging/time_helpers.h"

namespace {

// The unique index on (VISUALIZATION_ID, RECEIPT_DATE) of the result tables. A violation
// that names it means that another writer stored the same parameter at the same time first.
const char* const kResultIndex = "result_visualization_id_index";

bool isDuplicateResult(const pqxx::sql_error& error) {
  return std::string(error.what()).find(kResultIndex) != std::string::npos;
}

// The answer to a parameter stored twice at the same time: a log line and message "27" at
// the result's place.
void reportDuplicate(DataBase& store, PrintLog& log, const std::string& organization_alias,
                     const calc_result& r) {
  log.print("error duplicate data\n");
  store.notificationSystemSave("27", r.source, r.receipt_date, 0, 0, "", 2, organization_alias,
                               r.channel_id, r.control_point_id);
}

} // namespace

void WorkPostgreSQL::writeResult(std::string organization_alias, calc_result r) {
  const std::string id = numberText(r.param_info_id);
  const std::string date = timestampText(r.receipt_date);
  const std::string has_raw = boolText(r.has_raw_data);
  const std::string columns =
      "INSERT INTO RESULT (ID, PARAM_INFO_ID, RECEIPT_DATE, SOURCE, NAME_PARAM, VALUE, "
      "STATUS_CALC, STATUS_VECTOR, VISUALIZATION_ID, HAS_RAW_DATA) VALUES ";
  auto row = [&](const result_param& p) {
    return "( nextval('id_result'), " + id + ", " + date + ", " + numberText(r.source) + ", " +
           sql::quoted(p.name) + ", " + floatText(p.value) + ", " + numberText(r.status_calc) +
           ", " + numberText(r.status_vector) + ", " + numberText(p.visualization_id) + ", " +
           has_raw + "), ";
  };
  try {
    if (getValueInt("SELECT COUNT(*) FROM RESULT WHERE PARAM_INFO_ID = " + id) != 0) {
      // The measurement was written before: refresh what is there, add what is missing.
      for (const result_param& p : r.result_params) {
        const std::string where = " WHERE PARAM_INFO_ID = " + id +
                                  " AND VISUALIZATION_ID = " + numberText(p.visualization_id) +
                                  " AND RECEIPT_DATE = " + date;
        if (getValueInt("SELECT COUNT(*) FROM RESULT" + where) != 0) {
          execute("UPDATE RESULT SET VALUE = " + floatText(p.value) +
                  ", STATUS_CALC = " + numberText(r.status_calc) +
                  ", STATUS_VECTOR = " + numberText(r.status_vector) + where);
        } else {
          std::string statement = columns + row(p);
          statement.erase(statement.size() - 2);
          execute(statement);
        }
      }
    } else if (!r.result_params.empty()) {
      std::string statement = columns;
      bool any_row = false;
      for (const result_param& p : r.result_params) {
        if (getValueInt("SELECT COUNT(*) FROM RESULT WHERE VISUALIZATION_ID = " +
                        numberText(p.visualization_id) + " AND RECEIPT_DATE = " + date) != 0) {
          // Another measurement already holds this parameter at this time.
          reportDuplicate(*this, *log, organization_alias, r);
          continue;
        }
        statement += row(p);
        any_row = true;
      }
      statement.erase(statement.size() - 2);
      // A lone duplicate leaves nothing to insert. Several duplicates leave a statement
      // without rows, which the server rejects and which passes to the caller below.
      if (any_row || r.result_params.size() != 1) {
        execute(statement);
      }
    }
    if (r.result_params.empty()) {
      log->print("result not recorded\n");
    } else {
      log->print("write result: " + std::to_string(r.result_params.size()) + " param\n");
    }
  } catch (const pqxx::sql_error& error) {
    if (!isDuplicateResult(error)) {
      throw;
    }
    reportDuplicate(*this, *log, organization_alias, r);
  }
}

void WorkPostgreSQL::writeResultBase(std::string organization_alias, calc_result r, bool check) {
  const std::string id = numberText(r.param_info_id);
  const std::string date = timestampText(r.receipt_date);
  for (const result_param& p : r.result_params) {
    const std::string vid = numberText(p.visualization_id);
    try {
      // A replay or a recalculation job looks for the row first; the live path goes
      // straight to the insert, where a repeat after a lost connection meets the index.
      int found = 0;
      if (check) {
        found = getValueInt("SELECT COUNT(*) FROM RESULT_" + vid +
                            " WHERE VISUALIZATION_ID = " + vid + " AND RECEIPT_DATE = " + date);
      }
      if (found != 0) {
        execute("UPDATE RESULT_" + vid + " SET VALUE = " + floatText(p.value) +
                ", STATUS_CALC = " + numberText(r.status_calc) + " WHERE RECEIPT_DATE = " + date);
      } else {
        execute("INSERT INTO RESULT_BASE (ID, PARAM_INFO_ID, RECEIPT_DATE, SOURCE, VALUE, "
                "STATUS_CALC, VISUALIZATION_ID, HAS_RAW_DATA) VALUES "
                "(nextval('result_base_id_seq'), " +
                id + ", " + date + ", " + numberText(r.source) + ", " + floatText(p.value) + ", " +
                numberText(r.status_calc) + ", " + vid + ", " + boolText(r.has_raw_data) + ")");
      }
    } catch (const pqxx::sql_error& error) {
      if (!isDuplicateResult(error)) {
        throw;
      }
      reportDuplicate(*this, *log, organization_alias, r);
      return;
    }
  }
  if (!r.result_params.empty()) {
    log->print("write result_base: " + std::to_string(r.result_params.size()) + " param\n");
  }
}

void WorkPostgreSQL::writeResultMathHistory([[maybe_unused]] std::string organization_alias,
                                            calc_result r) {
  const std::string now = time_now(2, "+0:00");
  const std::string id = numberText(r.param_info_id);
  std::string statement;
  if (getValueInt("SELECT COUNT(*) FROM MATH_HISTORY WHERE PARAM_INFO_ID = " + id) != 0) {
    statement = "UPDATE MATH_HISTORY SET STATUS_CALC = " + numberText(r.status_calc) +
                ", CALCULATED_AT = TO_TIMESTAMP(" + sql::quoted(now) +
                ", 'yyyy-mm-dd hh24:mi:ss'), STATUS_VECTOR = " + numberText(r.status_vector) +
                ", HAS_RAW_DATA = " + boolText(r.has_raw_data) + " WHERE PARAM_INFO_ID = " + id;
  } else if (!r.result_params.empty()) {
    statement = "INSERT INTO MATH_HISTORY (PARAM_INFO_ID, CALCULATED_AT, STATUS_CALC, "
                "STATUS_VECTOR, HAS_RAW_DATA) VALUES (" +
                id + ", TO_TIMESTAMP(" + sql::quoted(now) + ", 'yyyy-mm-dd hh24:mi:ss'), " +
                numberText(r.status_calc) + ", " + numberText(r.status_vector) + ", " +
                boolText(r.has_raw_data) + ")";
  }
  // A first run without parameters leaves no mark: the empty statement changes nothing.
  execute(statement);
}

void WorkPostgreSQL::writeLatestData(calc_result r) {
  std::string time_clause;
  if (!r.receipt_date.empty()) {
    time_clause = " VALUE_AT = TO_TIMESTAMP(" + sql::quoted(r.receipt_date) +
                  ", 'yyyy-mm-dd hh24:mi:ss.ff6')";
  }
  for (const result_param& p : r.result_params) {
    std::string statement = "UPDATE VISUALIZATION SET";
    // A parameter without a value keeps the last value on display, only its time moves.
    if (std::isfinite(p.value)) {
      statement += " LATEST_RAW_VALUE = " + floatText(p.value);
      if (std::isfinite(p.middle)) {
        statement += ", LATEST_MIDDLE_VALUE = " + floatText(p.middle);
      }
      if (std::isfinite(p.trend)) {
        statement += ", LATEST_TREND_VALUE = " + floatText(p.trend);
      }
      if (std::isfinite(p.monotone)) {
        statement += ", LATEST_MONOTONE_VALUE = " + floatText(p.monotone);
      }
      statement += ", ";
    }
    execute(statement + time_clause + " WHERE ID = " + numberText(p.visualization_id));
  }
}

std::string WorkPostgreSQL::writeResultTmp(const std::vector<result_temp>& items) {
  // Nothing to stage: an insert without rows would only fail.
  if (items.empty()) {
    return "";
  }
  // A history of thousands of rows: appended piece by piece into room taken once.
  std::string statement = "INSERT INTO result_temp (V_ID, RECEIPT_DATE, VALUE) VALUES ";
  statement.reserve(statement.size() + items.size() * 96);
  std::string ids;
  ids.reserve(items.size() * 10);
  for (const result_temp& item : items) {
    const std::string vid = numberText(item.v_id);
    statement += " (";
    statement += vid;
    statement += ", ";
    statement += timestampText(item.receipt_date);
    statement += ", ";
    statement += floatText(item.value);
    statement += "), ";
    ids += vid;
    ids += ", ";
  }
  statement.erase(statement.size() - 2);
  ids.erase(ids.size() - 2);
  execute(statement);
  return ids;
}

void WorkPostgreSQL::writeStatusStatusElement(long source, float status, int param_info_id,
                                              int channel_id, int control_point_id) {
  const std::string where = " WHERE SOURCE = " + numberText(source) +
                            " AND PARAM_INFO_ID = " + numberText(param_info_id) +
                            " AND CHANNEL_ID " + optionalIdCondition(channel_id) +
                            " AND CONTROL_POINT_ID " + optionalIdCondition(control_point_id);
  if (getValueInt("SELECT COUNT(*) FROM STATUS_ELEMENT" + where) != 0) {
    execute("UPDATE STATUS_ELEMENT SET STATUS = " + floatText(status) + where);
  } else {
    execute("INSERT INTO STATUS_ELEMENT (ID, SOURCE, STATUS, PARAM_INFO_ID, CHANNEL_ID, "
            "CONTROL_POINT_ID) VALUES ( nextval('status_element_id_seq'), " +
            numberText(source) + ", " + floatText(status) + ", " + numberText(param_info_id) +
            ", " + optionalId(channel_id) + ", " + optionalId(control_point_id) + ")");
  }
}

void WorkPostgreSQL::writeStatusStatusAggregate(float status, int aggregate_id, std::string date) {
  const std::string where = " WHERE AGGREGATE_ID = " + numberText(aggregate_id) +
                            " AND CALCULATED_AT = " + timestampText(date);
  if (getValueInt("SELECT COUNT(*) FROM STATUS_AGGREGATE" + where) != 0) {
    execute("UPDATE STATUS_AGGREGATE SET STATUS = " + floatText(status) + where);
  } else {
    execute("INSERT INTO STATUS_AGGREGATE (ID, AGGREGATE_ID, STATUS, CALCULATED_AT) VALUES ( "
            "nextval('status_aggregate_id_seq'), " +
            numberText(aggregate_id) + ", " + floatText(status) + ", " + timestampText(date) +
            ");");
  }
}

void WorkPostgreSQL::writeStatusControlPoint(float status, float status_max, int id,
                                             std::string date) {
  execute("UPDATE CONTROL_POINT SET STATUS = " + floatText(status) +
          ", STATUS_MAX = " + floatText(status_max) + ", STATUS_AT = " + timestampText(date) +
          " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::writeStatusAggregate(float status, float status_max, int id,
                                          std::string date) {
  execute("UPDATE AGGREGATE SET STATUS = " + floatText(status) +
          ", STATUS_MAX = " + floatText(status_max) + ", STATUS_AT = " + timestampText(date) +
          " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::setHardwareStatusModule(long source, unsigned int bit) {
  // The hardware status only ever gains bits here; the operators clear them.
  const unsigned int mask = 1u << (bit % 32u);
  execute("UPDATE module SET hardware_status = (hardware_status | " + numberText(mask) +
          ") WHERE source = " + numberText(source));
}

void WorkPostgreSQL::writeAggregateMode(int id, int mode) {
  execute("UPDATE AGGREGATE SET MODE = " + numberText(mode) + " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::writeRulVisualization(int id, std::string literal) {
  // The curve's literal is built by the program, quotes and escapes included.
  execute("UPDATE visualization SET rul_data = E" + literal + " WHERE id = " + numberText(id));
}

void WorkPostgreSQL::writeRecalculation(int id, int state, std::string time_calculation) {
  execute("UPDATE RECALCULATION SET STATE = " + numberText(state) +
          ", TIME_CALCULATION=" + sql::quoted(time_calculation) + " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::setConnectionStatus(std::string table, int id, int status) {
  execute("UPDATE " + table + " SET CONNECTION_STATUS = " + numberText(status) +
          " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::setConnectionStatusOrganization(std::string alias, int status) {
  execute("UPDATE ORGANIZATION_OBJECT SET CONNECTION_STATUS = " + numberText(status) +
          " WHERE ALIAS_NAME = " + sql::quoted(alias));
}

void WorkPostgreSQL::writeCalculation(int id, std::string ip, int lag) {
  execute("INSERT INTO VEK_CALCULATION (ID, IP, LAG) VALUES (" + numberText(id) + ", " +
          sql::quoted(ip) + ", " + numberText(lag) + ")");
}

void WorkPostgreSQL::updateCalculation(int id, int lag, int last_calculated,
                                       std::string sync_time) {
  execute("UPDATE VEK_CALCULATION SET SYNC_TIME = TO_TIMESTAMP(" + sql::quoted(sync_time) +
          ",'yyyy-mm-dd hh24:mi:ss'), LAG = " + numberText(lag) +
          ", LAST_CALCULATED = " + numberText(last_calculated) + " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::updateCalculation(int id, std::string ip) {
  execute("UPDATE VEK_CALCULATION SET IP = " + sql::quoted(ip) + " WHERE ID = " + numberText(id));
}

void WorkPostgreSQL::writeVersion(int id, std::string version) {
  writeData("UPDATE VEK_CALCULATION SET VERSION =" + sql::quoted(version) +
            " WHERE ID = " + numberText(id));
}
