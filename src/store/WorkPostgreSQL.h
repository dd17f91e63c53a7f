#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "logging/PrintLog.h"
#include "records/types.h"
#include "store/DataBase.h"
#include "store/sql_quote.h"

// Declared as libpqxx 6.4 declares them, so that users of the store need not see libpqxx.
namespace pqxx {
class connect_direct;
template <typename CONNECTPOLICY> class basic_connection_base;
using connection = basic_connection_base<connect_direct>;
class field;
class result;
class row;
} // namespace pqxx

// The PostgreSQL store: one libpq session, one short read-committed transaction per
// statement. The object exists only with a connection: the constructor waits for the server.
// One object serves one thread; a recalculation job makes its own.
//
// The operations are spread over four sources by concern: the connection, the generic
// queries and the read of one measurement row (WorkPostgreSQL.cpp), the reference reads
// (WorkPostgreSQL_reads.cpp), the result writes (WorkPostgreSQL_writes.cpp) and the
// notifications and defects (WorkPostgreSQL_notifications.cpp).
class WorkPostgreSQL : public DataBase {
public:
  // The pause between two attempts to reach a server that refuses the connection.
  static constexpr std::chrono::milliseconds kReconnectPause{30000};

  // Stores the credentials and connects (openConnect), waiting for as long as the server is
  // down. reconnect_pause exists so that tests need not wait half a minute per attempt; the
  // log line keeps its text whatever the pause. log is borrowed and must outlive the store.
  WorkPostgreSQL(std::string host, std::string name, std::string user, std::string password,
                 PrintLog* log, std::chrono::milliseconds reconnect_pause = kReconnectPause);
  // Disconnects (closeConnect). Never throws.
  ~WorkPostgreSQL() override;

  WorkPostgreSQL(const WorkPostgreSQL&) = delete;
  WorkPostgreSQL& operator=(const WorkPostgreSQL&) = delete;

  void closeConnect() override;
  void openConnect() override;
  int getValueInt(std::string sql) override;
  std::string getValueString(std::string sql) override;
  void getValue(std::string sql, std::vector<std::vector<int>>& values) override;
  void getValue(std::string sql, std::vector<std::string>& values) override;
  void getOrganization(std::map<std::string, int>& organizations) override;
  void getGateway(int control, std::vector<gateway>& gateways) override;
  void readParamInfo(int id, param_info& info) override;
  void readParamInfo(long source, std::string from, std::string to,
                     std::vector<param_info>& infos) override;
  void readMotor(int id, int& power, int& speed, int& i, int& u, int& p2,
                 int& class_vibro) override;
  void readBearing(int id, double& ball_diameter, int& count_balls, int& type_bearing,
                   double& inner_diameter, double& external_diameter, double& angle) override;
  void readModule(long source, unsigned int& config, int& type_module, int& gateway_id,
                  int& revision, int& broadcasting_period, bool& multichannel, int& aggregate_id,
                  std::string& utc_value, std::string& organization_alias, int& id) override;
  void readModule(std::vector<module_data>& modules) override;
  void setHardwareStatusModule(long source, unsigned int bit) override;
  void getModulesGateway(int gateway_id, std::vector<module_data>& modules) override;
  void readChannel(long source, std::vector<channel>& channels) override;
  void readControlPoint(int aggregate_id, std::map<int, float>& coefficients) override;
  void readModuleParam(int type_module, int revision, std::vector<module_param>& params) override;
  void readAggregate(int control_point_id, int& id, int& node_id, int& type_aggregate_id,
                     int& type_equipment_id, int& status_type, int& rul_days,
                     std::string& trend_start, std::string& name,
                     std::string& organization_alias) override;
  void readDataTable(std::string sql, std::vector<std::vector<double>>& table) override;
  void readStatusElement(int control_point_id, float& status) override;
  void getArrayResult(std::string clause, std::string column, std::vector<std::string>& dates,
                      std::vector<long>& ids, std::vector<double>& values) override;
  void getArrayResultId(std::string clause, std::string column, std::vector<int>& param_info_ids,
                        std::vector<std::string>& dates, std::vector<long>& ids,
                        std::vector<double>& values) override;
  void getArrayResultFRM(std::string clause, std::vector<int>& param_info_ids,
                         std::vector<double>& values) override;
  void readVisualization(long source, std::vector<visualization>& list) override;
  void readRaw(int param_info_id, std::vector<raw>& raws) override;
  void readResult(std::string clause, std::vector<int>& visualization_ids,
                  std::vector<int>& param_info_ids, std::vector<std::string>& dates,
                  std::vector<int>& ids, std::vector<double>& values) override;
  void readRecalculation(int& id, long& source, std::string& time_start, std::string& time_stop,
                         std::string& time_calculation) override;
  void getStateRecalculation(int id, int& state, int& control) override;
  void setNotificationStatus(std::string code, long source, std::string date, int status,
                             int gateway_id, int type_message_id, std::string organization_alias,
                             int channel_id, int control_point_id) override;
  void notificationSave(std::string code, long source, std::string date, int status, int gateway_id,
                        std::string additional_info, int type_message_id,
                        std::string organization_alias, int recommendation_id, int channel_id,
                        int control_point_id, bool diagnostic_mode, int visualization_id) override;
  void notificationSystemSave(std::string code, long source, std::string date, int status,
                              int gateway_id, std::string additional_info, int type_message_id,
                              std::string organization_alias, int channel_id,
                              int control_point_id) override;
  void writeData(std::string sql) override;
  void writeDefects(int id, std::map<int, int> defects) override;
  void writeVersion(int id, std::string version) override;
  std::string writeResultTmp(const std::vector<result_temp>& items) override;
  void writeResult(std::string organization_alias, calc_result result) override;
  void writeResultBase(std::string organization_alias, calc_result result, bool check) override;
  void writeResultMathHistory(std::string organization_alias, calc_result result) override;
  void writeStatusStatusElement(long source, float status, int param_info_id, int channel_id,
                                int control_point_id) override;
  void writeStatusStatusAggregate(float status, int aggregate_id, std::string date) override;
  void writeStatusControlPoint(float status, float status_max, int id, std::string date) override;
  void writeStatusAggregate(float status, float status_max, int id, std::string date) override;
  void writeLatestData(calc_result result) override;
  void writeAggregateMode(int id, int mode) override;
  void writeRulVisualization(int id, std::string literal) override;
  void writeRecalculation(int id, int state, std::string time_calculation) override;
  void readCalculation(std::vector<int>& ids, int& smallest_last_calculated) override;
  void readVekCalculation(int id, std::string& settings) override;
  void writeCalculation(int id, std::string ip, int lag) override;
  void updateCalculation(int id, int lag, int last_calculated, std::string sync_time) override;
  void updateCalculation(int id, std::string ip) override;
  void setConnectionStatus(std::string table, int id, int status) override;
  void setConnectionStatusOrganization(std::string alias, int status) override;
  bool isMessageActive(std::string code) override;
  bool isRecommendationActive(int id, int type_message_id) override;
  int getRecommendationCode(std::string code, int type_message_id) override;

private:
  // ---- The one road to the server ------------------------------------------------------
  //
  // Every statement of every operation goes through execute: a block-local pqxx::work
  // (read committed, read-write) on the one connection, exec, commit (reads commit too),
  // and the rows come back held in memory, to be walked after the commit. A statement that
  // the server rejects raises pqxx::sql_error, a lost server pqxx::broken_connection; the
  // transaction is rolled back by its destructor on the way out. An operation with several
  // statements calls execute once per statement, so the earlier ones stay committed.
  pqxx::result execute(const std::string& sql);

  // ---- Value texts for statements -------------------------------------------------------

  // A whole number as pqxx::to_string writes it.
  static std::string numberText(int value);
  static std::string numberText(long value);
  static std::string numberText(unsigned int value);
  // A floating value: the word NULL for NaN or an infinity, otherwise pqxx::to_string of the
  // value in its own width (a float keeps float digits) with every "," turned into ".", so
  // the statement does not depend on the locale.
  static std::string floatText(float value);
  static std::string floatText(double value);
  // "true" or "false".
  static std::string boolText(bool value);
  // An optional key in an inserted row: NULL for 0, otherwise the number.
  static std::string optionalId(long id);
  // An optional key in a condition: "IS NULL" for 0, otherwise "= " + the number, to follow
  // the column name and a blank ("CHANNEL_ID " + optionalIdCondition(id)).
  static std::string optionalIdCondition(long id);
  // A time stamp given as text, read by the server at microsecond precision:
  // TO_TIMESTAMP(sql::quoted(date),'yyyy-mm-dd hh24:mi:ss.ff6').
  static std::string timestampText(const std::string& date);
  // An optional text in an inserted row: NULL for the empty text, otherwise sql::quoted(text).
  static std::string optionalQuoted(const std::string& text);
  // An optional text in a condition: "IS NULL" for the empty text, otherwise "= " +
  // sql::quoted(text).
  static std::string optionalQuotedCondition(const std::string& text);

  // ---- Reading fields -------------------------------------------------------------------

  // The numeric reading rule: clear the state of the operation's one stream, feed it the
  // field's text, extract into target. A NULL (empty text) leaves target as it was; a text
  // that is no number sets it to 0; "12.5" read into an int gives 12. What an extraction
  // leaves unread stays in the stream in front of the next field, as it always has: use a
  // fresh stream where rows must not affect each other.
  static void readField(std::stringstream& stream, const pqxx::field& field, int& target);
  static void readField(std::stringstream& stream, const pqxx::field& field, long& target);
  static void readField(std::stringstream& stream, const pqxx::field& field, unsigned int& target);
  static void readField(std::stringstream& stream, const pqxx::field& field, float& target);
  static void readField(std::stringstream& stream, const pqxx::field& field, double& target);
  // The text rule: the field's text, the empty text for NULL.
  static std::string textField(const pqxx::field& field);

  // ---- Rows that several operations read alike -------------------------------------------

  // Appends one vector per row with one number per field, read by the numeric rule through
  // one stream for all rows: a NULL gives 0.
  template <typename T>
  static void appendNumberRows(const pqxx::result& rows, std::vector<std::vector<T>>& table);
  // Fills a measurement row's SOURCE, TYPE_MOD, TYPE_PARAM, RECEIPT_DATE, TU_ERROR,
  // PARAM_SETTINGS, MODULE_CONFIG and KIND, which stand in this order from column first on.
  static void readParamInfoColumns(std::stringstream& stream, const pqxx::row& row, int first,
                                   param_info& info);
  // A module of the connectivity watch from SOURCE, BROADCASTING_PERIOD, [GATEWAY_ID,]
  // ORGANIZATION_ALIAS, UTC_VALUE, TYPE_MODULE, MODULE.CONNECTION_STATUS, MODULE.ID and
  // DATA_IN_UTC_0 in this order; GATEWAY_ID only where with_gateway says the row has it.
  static module_data readModuleData(std::stringstream& stream, const pqxx::row& row,
                                    bool with_gateway);

  std::unique_ptr<pqxx::connection> connection; // owned; replaced on reconnect
  PrintLog* log;
  std::string host;
  std::string name;
  std::string user;
  std::string password;
  std::chrono::milliseconds reconnect_pause;
};
