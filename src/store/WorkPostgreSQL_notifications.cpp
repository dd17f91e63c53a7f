// Notifications, their lookups, and the defect record of a measurement. A condition that
// persists is detected again with every measurement; the repeat rules here keep it from
// flooding the operators' list.
#include "store/WorkPostgreSQL.h"

#include <string>

#include <pqxx/pqxx>

void WorkPostgreSQL::notificationSave(std::string code, long source, std::string date, int status,
                                      int gateway_id, std::string additional_info,
                                      int type_message_id, std::string organization_alias,
                                      int recommendation_id, int channel_id, int control_point_id,
                                      bool diagnostic_mode, int visualization_id) {
  const std::string same_place =
      "SELECT COUNT(*) FROM NOTIFICATION WHERE SOURCE " + optionalIdCondition(source) +
      " AND GATEWAY_ID " + optionalIdCondition(gateway_id) + " AND CHANNEL_ID " +
      optionalIdCondition(channel_id) + " AND CONTROL_POINT_ID " +
      optionalIdCondition(control_point_id) + " AND MESSAGE_CODE = " + sql::quoted(code) +
      " AND TYPE_MESSAGE_ID = " + numberText(type_message_id);
  const std::string same_target = " AND ORGANIZATION_ALIAS " +
                                  optionalQuotedCondition(organization_alias) +
                                  " AND VISUALIZATION_ID " + optionalIdCondition(visualization_id);
  const std::string last_day =
      " AND DATE_OF_CREATION >= (" + timestampText(date) + " - INTERVAL '01' DAY)";

  // Most codes are written at most once a day for the same place. Data errors, restored
  // connections and messages of type 1 are written every time; a lost connection is raised
  // again as soon as the earlier one has been closed. The day is counted back from the
  // notification's own time, so a replay of old rows makes the decisions of the live run.
  const bool always_written = type_message_id == 1 || code == "26" || code == "8";
  if (!always_written) {
    std::string repeat = same_place;
    if (code == "1" || code == "1025" || code == "1061") {
      repeat += " AND STATUS = 0";
    }
    if (getValueInt(repeat + same_target + last_day) != 0) {
      return;
    }
  }

  // ACTIVE_DAYS counts the rows of the same place still open when the new one arrives.
  const int open = getValueInt(same_place + " AND STATUS = 0" + same_target);
  const std::string active_days = open != 0 ? numberText(open) : "NULL";
  execute("INSERT INTO NOTIFICATION (ID, SOURCE, GATEWAY_ID, DATE_OF_CREATION, "
          "ADDITIONAL_INFO, TYPE_MESSAGE_ID, STATUS, ACTIVE_DAYS, ORGANIZATION_ALIAS, "
          "RECOMMENDATION_ID, CHANNEL_ID, CONTROL_POINT_ID, VISUALIZATION_ID, MESSAGE_CODE, "
          "DIAGNOSTIC_MODE) VALUES (nextval('id_seq_rec'), " +
          optionalId(source) + ", " + optionalId(gateway_id) + ", " + timestampText(date) + ", " +
          optionalQuoted(additional_info) + ", " + numberText(type_message_id) + ", " +
          numberText(status) + ", " + active_days + ", " + optionalQuoted(organization_alias) +
          ", " + optionalId(recommendation_id) + ", " + optionalId(channel_id) + ", " +
          optionalId(control_point_id) + ", " + optionalId(visualization_id) + ", " +
          sql::quoted(code) + ", " + boolText(diagnostic_mode) + ")");
  log->print("write table notification, " + organization_alias + ", error: " + code + "\n");
}

void WorkPostgreSQL::notificationSystemSave(std::string code, long source, std::string date,
                                            int status, int gateway_id, std::string additional_info,
                                            int type_message_id, std::string organization_alias,
                                            int channel_id, int control_point_id) {
  // A code switched off in LIST_OF_MESSAGES is dropped here, so raisers need no test.
  if (!isMessageActive(code)) {
    return;
  }
  const int recommendation_id = getRecommendationCode(code, type_message_id);
  notificationSave(code, source, date, status, gateway_id, additional_info, type_message_id,
                   organization_alias, recommendation_id, channel_id, control_point_id, false, 0);
}

void WorkPostgreSQL::setNotificationStatus(std::string code, long source,
                                           [[maybe_unused]] std::string date, int status,
                                           int gateway_id, int type_message_id,
                                           std::string organization_alias, int channel_id,
                                           int control_point_id) {
  // The alias is compared as a text even when empty: rows without an organization are
  // closed by other means.
  execute("UPDATE NOTIFICATION SET STATUS = " + numberText(status) +
          " WHERE MESSAGE_CODE = " + sql::quoted(code) + " AND SOURCE " +
          optionalIdCondition(source) + " AND GATEWAY_ID " + optionalIdCondition(gateway_id) +
          " AND TYPE_MESSAGE_ID = " + numberText(type_message_id) + " AND STATUS = 0" +
          " AND ORGANIZATION_ALIAS = " + sql::quoted(organization_alias) + " AND CHANNEL_ID " +
          optionalIdCondition(channel_id) + " AND CONTROL_POINT_ID " +
          optionalIdCondition(control_point_id));
  log->print("set status notification, " + numberText(source) + ", message_code: " + code + "\n");
}

bool WorkPostgreSQL::isMessageActive(std::string code) {
  return getValueInt("SELECT COUNT(*) FROM LIST_OF_MESSAGES WHERE CODE = " + sql::quoted(code) +
                     " AND VISIBLE=true") != 0;
}

bool WorkPostgreSQL::isRecommendationActive(int id, int type_message_id) {
  std::string type;
  if (type_message_id != 0) {
    // A recommendation without a type applies to messages of every type.
    type =
        " AND (type_message_id = " + numberText(type_message_id) + " OR type_message_id IS NULL)";
  }
  return getValueInt("SELECT COUNT(*) FROM RECOMMENDATION WHERE id = " + numberText(id) + type +
                     " AND enabled=true") != 0;
}

int WorkPostgreSQL::getRecommendationCode(std::string code, int type_message_id) {
  std::string type;
  if (type_message_id != 0) {
    type = " AND type_message_id = " + numberText(type_message_id);
  }
  return getValueInt("SELECT id FROM RECOMMENDATION WHERE message_code =" + sql::quoted(code) +
                     type + " AND enabled=true");
}

void WorkPostgreSQL::writeDefects(int id, std::map<int, int> defects) {
  const std::string key = numberText(id);
  // A recalculated measurement replaces its defect record.
  if (getValueInt("SELECT COUNT(*) FROM DEFECTS WHERE id = " + key) != 0) {
    writeData("DELETE FROM defects WHERE id = " + key);
  }
  if (defects.empty()) {
    return;
  }
  // One row per measurement: the defect with the smallest number stands for all of them.
  const auto& first = *defects.begin();
  execute("INSERT INTO DEFECTS (ID, DEFECT_CODE, DEFECT_TYPE) VALUES (" + key + ", " +
          numberText(first.first) + ", " + numberText(first.second) + ")");
  log->print("write defect\n");
}
