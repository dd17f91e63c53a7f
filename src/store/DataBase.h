#pragma once

#include <map>
#include <string>
#include <vector>

#include "records/types.h"

// The abstract store: every read and write of the service's tables. The rest of the system
// holds a DataBase* and never sees a connection or a transaction.
//
// Rules for every operation unless its comment says otherwise:
// - each statement runs in a read-committed transaction of its own, committed before its rows
//   are read, so what an operation wrote before a failure stays written;
// - failures of the database pass through as pqxx::sql_error (a rejected statement) or
//   pqxx::broken_connection (the server is gone); the caller's catch decides;
// - output vectors are appended to, and an out parameter keeps its value when no row or a NULL
//   is found;
// - an id of 0 means "none" and becomes NULL (or "IS NULL" in a condition).
class DataBase {
public:
  virtual ~DataBase() = default;

  // Disconnects the session; the object stays and further operations fail as a lost connection.
  virtual void closeConnect() = 0;
  // Connects, retrying every 30 seconds for as long as the server refuses; returns connected.
  virtual void openConnect() = 0;
  // Runs sql; every readable field of every row, read as an int, replaces the result (0 first).
  virtual int getValueInt(std::string sql) = 0;
  // Runs sql; the first column of the last row, "" for NULL or no row.
  virtual std::string getValueString(std::string sql) = 0;
  // Runs sql; appends one vector per row with one int per field, 0 for NULL.
  virtual void getValue(std::string sql, std::vector<std::vector<int>>& values) = 0;
  // Runs sql; appends the first column of each row, "" for NULL.
  virtual void getValue(std::string sql, std::vector<std::string>& values) = 0;
  // Fills alias -> CONNECTION_STATUS for every organization.
  virtual void getOrganization(std::map<std::string, int>& organizations) = 0;
  // Appends the gateways whose CONNECTION_STATUS_CONTROL equals control.
  virtual void getGateway(int control, std::vector<gateway>& gateways) = 0;
  // Reads PARAM_INFO row id; info.id is set to id only when the row exists (0 marks a gap).
  virtual void readParamInfo(int id, param_info& info) = 0;
  // Appends the non-telemetry rows of source (0: all modules) strictly between from and to.
  virtual void readParamInfo(long source, std::string from, std::string to,
                             std::vector<param_info>& infos) = 0;
  // Reads MOTOR row id; swallows every failure with a log line, keeping what was read.
  virtual void readMotor(int id, int& power, int& speed, int& i, int& u, int& p2,
                         int& class_vibro) = 0;
  // Reads BEARING row id; swallows every failure with a log line, keeping what was read.
  virtual void readBearing(int id, double& ball_diameter, int& count_balls, int& type_bearing,
                           double& inner_diameter, double& external_diameter, double& angle) = 0;
  // Reads the module of source and its machine and organization; swallows failures.
  virtual void readModule(long source, unsigned int& config, int& type_module, int& gateway_id,
                          int& revision, int& broadcasting_period, bool& multichannel,
                          int& aggregate_id, std::string& utc_value,
                          std::string& organization_alias, int& id) = 0;
  // Replaces modules with every MODULE row for the connectivity watch.
  virtual void readModule(std::vector<module_data>& modules) = 0;
  // Sets bit (modulo 32) in MODULE.HARDWARE_STATUS of source; bits are never cleared here.
  virtual void setHardwareStatusModule(long source, unsigned int bit) = 0;
  // Replaces modules with the modules of gateway_id that have a broadcasting period.
  virtual void getModulesGateway(int gateway_id, std::vector<module_data>& modules) = 0;
  // Appends the channels of source, one record per control-point binding.
  virtual void readChannel(long source, std::vector<channel>& channels) = 0;
  // Inserts control point id -> significance coefficient for the points of aggregate_id.
  virtual void readControlPoint(int aggregate_id, std::map<int, float>& coefficients) = 0;
  // Appends the MODULE_PARAM defaults of a module type and revision.
  virtual void readModuleParam(int type_module, int revision,
                               std::vector<module_param>& params) = 0;
  // Reads the machine that control_point_id belongs to.
  virtual void readAggregate(int control_point_id, int& id, int& node_id, int& type_aggregate_id,
                             int& type_equipment_id, int& status_type, int& rul_days,
                             std::string& trend_start, std::string& name,
                             std::string& organization_alias) = 0;
  // Runs sql; appends one vector per row with one double per field, 0.0 for NULL.
  virtual void readDataTable(std::string sql, std::vector<std::vector<double>>& table) = 0;
  // Reads CONTROL_POINT.STATUS of control_point_id into status.
  virtual void readStatusElement(int control_point_id, float& status) = 0;
  // RESULT_BASE rows of clause: ID, RECEIPT_DATE and column; values is cleared first.
  virtual void getArrayResult(std::string clause, std::string column,
                              std::vector<std::string>& dates, std::vector<long>& ids,
                              std::vector<double>& values) = 0;
  // RESULT_BASE rows of clause whose column is not NULL; values is cleared first.
  virtual void getArrayResultId(std::string clause, std::string column,
                                std::vector<int>& param_info_ids, std::vector<std::string>& dates,
                                std::vector<long>& ids, std::vector<double>& values) = 0;
  // RESULT_BASE PARAM_INFO_ID and VALUE of clause; values is cleared first.
  virtual void getArrayResultFRM(std::string clause, std::vector<int>& param_info_ids,
                                 std::vector<double>& values) = 0;
  // Appends the visualizations of source joined to their observed parameter.
  virtual void readVisualization(long source, std::vector<visualization>& list) = 0;
  // Appends the fu_raw pieces of a measurement, in the server's order.
  virtual void readRaw(int param_info_id, std::vector<raw>& raws) = 0;
  // RESULT_BASE rows of clause, all five columns; values is cleared first.
  virtual void readResult(std::string clause, std::vector<int>& visualization_ids,
                          std::vector<int>& param_info_ids, std::vector<std::string>& dates,
                          std::vector<int>& ids, std::vector<double>& values) = 0;
  // Reads the oldest waiting recalculation job; time_start stays empty when there is none.
  virtual void readRecalculation(int& id, long& source, std::string& time_start,
                                 std::string& time_stop, std::string& time_calculation) = 0;
  // Reads state and control of recalculation job id.
  virtual void getStateRecalculation(int id, int& state, int& control) = 0;
  // Gives the open notifications of code at this place the new status; date is not used.
  virtual void setNotificationStatus(std::string code, long source, std::string date, int status,
                                     int gateway_id, int type_message_id,
                                     std::string organization_alias, int channel_id,
                                     int control_point_id) = 0;
  // Writes a notification unless the same one was written within a day of date.
  virtual void notificationSave(std::string code, long source, std::string date, int status,
                                int gateway_id, std::string additional_info, int type_message_id,
                                std::string organization_alias, int recommendation_id,
                                int channel_id, int control_point_id, bool diagnostic_mode,
                                int visualization_id) = 0;
  // notificationSave for the system's own codes, dropped when the code is switched off.
  virtual void notificationSystemSave(std::string code, long source, std::string date, int status,
                                      int gateway_id, std::string additional_info,
                                      int type_message_id, std::string organization_alias,
                                      int channel_id, int control_point_id) = 0;
  // Runs sql and commits; whatever it returns is ignored.
  virtual void writeData(std::string sql) = 0;
  // Replaces the DEFECTS row of id with the entry of defects that has the smallest key.
  virtual void writeDefects(int id, std::map<int, int> defects) = 0;
  // Stores the version document of instance id.
  virtual void writeVersion(int id, std::string version) = 0;
  // Inserts items into result_temp; returns their visualization ids joined by ", ".
  virtual std::string writeResultTmp(const std::vector<result_temp>& items) = 0;
  // Writes the parameters of result into RESULT; a duplicate becomes message "27".
  virtual void writeResult(std::string organization_alias, calc_result result) = 0;
  // Writes the parameters of result into RESULT_BASE, updating first when check is set;
  // a duplicate becomes message "27".
  virtual void writeResultBase(std::string organization_alias, calc_result result, bool check) = 0;
  // Records in MATH_HISTORY that the measurement of result was calculated.
  virtual void writeResultMathHistory(std::string organization_alias, calc_result result) = 0;
  // Updates or inserts the STATUS_ELEMENT row of a measurement, channel and control point.
  virtual void writeStatusStatusElement(long source, float status, int param_info_id,
                                        int channel_id, int control_point_id) = 0;
  // Updates or inserts the STATUS_AGGREGATE row of a machine at date.
  virtual void writeStatusStatusAggregate(float status, int aggregate_id, std::string date) = 0;
  // Sets STATUS, STATUS_MAX and STATUS_AT of control point id.
  virtual void writeStatusControlPoint(float status, float status_max, int id,
                                       std::string date) = 0;
  // Sets STATUS, STATUS_MAX and STATUS_AT of machine id.
  virtual void writeStatusAggregate(float status, float status_max, int id, std::string date) = 0;
  // Puts the newest values of each parameter of result into its VISUALIZATION row.
  virtual void writeLatestData(calc_result result) = 0;
  // Sets AGGREGATE.MODE of machine id.
  virtual void writeAggregateMode(int id, int mode) = 0;
  // Sets VISUALIZATION.RUL_DATA of id from a prepared string literal body.
  virtual void writeRulVisualization(int id, std::string literal) = 0;
  // Sets state and progress time of recalculation job id.
  virtual void writeRecalculation(int id, int state, std::string time_calculation) = 0;
  // Appends the ids of all instances; smallest_last_calculated comes out 0.
  virtual void readCalculation(std::vector<int>& ids, int& smallest_last_calculated) = 0;
  // Reads the settings text of instance id.
  virtual void readVekCalculation(int id, std::string& settings) = 0;
  // Registers instance id with its address and lag.
  virtual void writeCalculation(int id, std::string ip, int lag) = 0;
  // Reports the progress of instance id.
  virtual void updateCalculation(int id, int lag, int last_calculated, std::string sync_time) = 0;
  // Replaces the address of instance id.
  virtual void updateCalculation(int id, std::string ip) = 0;
  // Sets CONNECTION_STATUS of row id of table ("MODULE" or "GATEWAY").
  virtual void setConnectionStatus(std::string table, int id, int status) = 0;
  // Sets CONNECTION_STATUS of the organization alias.
  virtual void setConnectionStatusOrganization(std::string alias, int status) = 0;
  // True when message code is visible in LIST_OF_MESSAGES.
  virtual bool isMessageActive(std::string code) = 0;
  // True when recommendation id is enabled for type_message_id (0: any type).
  virtual bool isRecommendationActive(int id, int type_message_id) = 0;
  // Id of the enabled recommendation for code and type (0: any type); 0 when there is none.
  virtual int getRecommendationCode(std::string code, int type_message_id) = 0;
};
