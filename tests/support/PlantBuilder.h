#pragma once

// A small language for describing an installation and its measurements as table rows, for
// tests, the demo and the benchmarks.
//
//   using namespace vek_test;
//   PlantBuilder plant;
//   plant.add(OrganizationRow("plant").utc("UTC+3:00"))
//       .add(NodeRow(1, "plant"))
//       .add(GatewayRow(5, 1))
//       .add(ModuleRow(7, 42, 10).revision(2).config(0x10).period(5).gateway(5))
//       .add(ChannelRow(100, 42).axisOrder("xyzxyz"))
//       .add(BindingRow(100, 11))
//       .add(AggregateRow(3, 1).equipmentType(1).name("pump 1"))
//       .add(ControlPointRow(11, 3).weight(1.0f))
//       .add(VisualizationRow(500, 42, "V_RMS").channel(100).controlPoint(11)
//                .thresholds(2.8f, 4.5f, 7.1f))
//       .add(MeasurementRow(1001, 42).module(10, 3).at("2024-05-01 10:00:00")
//                .raw(RawRow(1, 2).subChannel("x").samples({1.0, -1.0, 0.5})));
//   plant.insert(sql());         // all rows in one transaction
//   std::string text = plant.sql(); // or the same rows as INSERT statements for psql
//
// Each row class writes exactly the columns it was given; a column never set is NULL, so a
// test of NULL handling just leaves it out (or calls setNull). Texts are quoted with their
// quotes doubled. A row is turned into its statement when it is added: changing the row
// object afterwards changes nothing in the builder.
//
// The encoders below write fu_raw.data the way the sensor modules do: two prefix characters,
// then the values as hexadecimal byte pairs, least significant byte first.

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "records/types.h"

namespace pqxx {
class connect_direct;
template <typename CONNECTPOLICY> class basic_connection_base;
using connection = basic_connection_base<connect_direct>;
} // namespace pqxx

namespace vek_test {

// ---------------------------------------------------------------------------------------------
// Texts of columns
// ---------------------------------------------------------------------------------------------

// 'text' with every quote doubled: an SQL string literal.
std::string sqlQuoted(const std::string& text);
// The shortest decimal text that reads back as value (classic locale), "NULL" when the value
// is not finite.
std::string sqlNumber(double value);

// Hexadecimal characters of one value of c_type in fu_raw.data: 4 for 1 and 2, 6 for 3 and
// 4, 8 for 5, 6 and 7, 2 for 8 and for every unknown type. Written out here rather than
// taken from the decoder, so that a round trip through both would catch a wrong width there.
int sampleWidth(int c_type);
// One value of c_type as hexadecimal text, least significant byte first, lower case:
// 1 unsigned 16 bits, 2 signed 16 bits, 3 and 4 24 bits (4 reads back as unsigned too),
// 5 unsigned 32 bits, 6 signed 32 bits, 7 an IEEE single float, 8 unsigned 8 bits. Integer
// types take the value rounded to the nearest integer and cut to their width (two's
// complement), so -1 with c_type 1 reads back as 65535. An unknown c_type gives "00", which
// reads back as NaN.
std::string encodeValue(double value, int c_type);
// A plain sequence (param_type_id below 7, 13 or 14): prefix, then each value.
std::string encodeSamples(const std::vector<double>& values, int c_type,
                          const std::string& prefix = "0x");

// One timed record: stamp is the module's 64-bit time key, read as seconds up to 3000000000
// and as milliseconds above.
struct TimedSample {
  unsigned long long stamp = 0;
  double value = 0.0;
};
// Timed records (param_type_id 7 to 12, 17, 18): prefix, then per record the stamp as 8 bytes
// and the value, both least significant byte first.
std::string encodeTimedSamples(const std::vector<TimedSample>& samples, int c_type,
                               const std::string& prefix = "0x");
// A named value (param_type_id 15): prefix, the bytes of name in order, then the value, which
// must be of a c_type 8 characters wide (5, 6 or 7).
std::string encodeNamedValue(const std::string& name, double value, int c_type,
                             const std::string& prefix = "0x");

// The telemetry block of PARAM_INFO.TU_ERROR in its semicolon form: "21;-70;5;88".
std::string telemetrySemicolons(int temperature, int rssi, int reset_count, int battery);
// An array of {"name_param": name, "value": number} objects in the given order: the JSON form
// of TU_ERROR (names "temperature", "rssi", "count0", "battery", "state") and fu_raw.settings.
std::string settingsRaw(const std::vector<std::pair<std::string, double>>& values);
// PARAM_INFO.PARAM_SETTINGS in the modules' own layout, one blank after each colon; a NaN
// value is written as null, an empty sub_1_packet is left out.
std::string paramSettings(const std::vector<param_setting>& settings);

// One rule of VISUALIZATION.MESSAGE_SETTINGS: a notification code and its recommendations.
struct MessageRule {
  std::string code;
  std::vector<int> recommendations;
};
// VISUALIZATION.MESSAGE_SETTINGS: situation ("corridorActive", "rulActive") to its rules.
std::string messageSettings(const std::map<std::string, std::vector<MessageRule>>& situations);

// ---------------------------------------------------------------------------------------------
// Rows
// ---------------------------------------------------------------------------------------------

// One row of one table: the columns given so far, in the order of first mention.
class TableRow {
public:
  explicit TableRow(std::string table);
  virtual ~TableRow() = default;

  const std::string& table() const { return table_; }
  // The SQL literal of column, "" when the column was not given.
  std::string literal(const std::string& column) const;
  // "INSERT INTO <table> (<columns>) VALUES (<literals>);"
  std::string insertStatement() const;

protected:
  void put(const std::string& column, std::string literal);

private:
  std::string table_;
  std::vector<std::pair<std::string, std::string>> columns_;
};

// The generic setters, returning the concrete row so that calls chain.
template <class Self> class Row : public TableRow {
public:
  using TableRow::TableRow;

  Self& setInt(const std::string& column, long long value) {
    put(column, std::to_string(value));
    return self();
  }
  Self& setReal(const std::string& column, double value) {
    put(column, sqlNumber(value));
    return self();
  }
  Self& setText(const std::string& column, const std::string& value) {
    put(column, sqlQuoted(value));
    return self();
  }
  Self& setFlag(const std::string& column, bool value) {
    put(column, value ? "TRUE" : "FALSE");
    return self();
  }
  Self& setNull(const std::string& column) {
    put(column, "NULL");
    return self();
  }
  // Any SQL expression as it stands, e.g. a bytea literal or now().
  Self& setLiteral(const std::string& column, const std::string& literal) {
    put(column, literal);
    return self();
  }

protected:
  Self& self() { return static_cast<Self&>(*this); }
};

// organization_object: an organization and its UTC offset ("UTC+3:00": three prefix
// characters, then the offset).
class OrganizationRow : public Row<OrganizationRow> {
public:
  explicit OrganizationRow(const std::string& alias);
  OrganizationRow& utc(const std::string& utc_value) { return setText("utc_value", utc_value); }
  OrganizationRow& connectionStatus(int status) { return setInt("connection_status", status); }
};

// observed_node: a site of an organization.
class NodeRow : public Row<NodeRow> {
public:
  NodeRow(int id, const std::string& organization_alias);
};

// gateway: watched by the connectivity analysis when control is 1 or 2 (default 1).
class GatewayRow : public Row<GatewayRow> {
public:
  GatewayRow(int id, int node_id);
  GatewayRow& syncTime(const std::string& time) { return setText("sync_time", time); }
  GatewayRow& control(int value) { return setInt("connection_status_control", value); }
  GatewayRow& connectionStatus(int status) { return setInt("connection_status", status); }
};

// MODULE: a sensor module of a type at an address.
class ModuleRow : public Row<ModuleRow> {
public:
  ModuleRow(int id, long source, int type_module);
  ModuleRow& revision(int value) { return setInt("revision", value); }
  // The option word, written as "0x" and upper-case hexadecimal digits.
  ModuleRow& config(unsigned int word);
  // The CONFIG text as it stands, for texts the receiver should never write.
  ModuleRow& configText(const std::string& text) { return setText("config", text); }
  // Minutes between two expected measurements.
  ModuleRow& period(int minutes) { return setInt("broadcasting_period", minutes); }
  ModuleRow& gateway(int gateway_id) { return setInt("gateway_id", gateway_id); }
  ModuleRow& multichannel(bool value) { return setFlag("multichannel", value); }
  ModuleRow& connectionStatus(int status) { return setInt("connection_status", status); }
  ModuleRow& dataInUtc0(bool value) { return setFlag("data_in_utc_0", value); }
  ModuleRow& hardwareStatus(long long bits) { return setInt("hardware_status", bits); }
};

// MODULE_PARAM: a default setting of a module type and revision.
class ModuleParamRow : public Row<ModuleParamRow> {
public:
  ModuleParamRow(int type_module, int revision, int type_param, const std::string& name,
                 double value);
  ModuleParamRow& typeSettings(int value) { return setInt("type_settings", value); }
  ModuleParamRow& sub1Packet(const std::string& text) { return setText("sub_1_packet", text); }
};

// CHANNEL: a channel of the module at source; raw_param names the sub-channels it takes.
class ChannelRow : public Row<ChannelRow> {
public:
  ChannelRow(int id, long source);
  ChannelRow& rawParam(const std::string& text) { return setText("raw_param", text); }
  ChannelRow& axisOrder(const std::string& text) { return setText("axis_order", text); }
};

// CHANNEL_CONTOL_POINT: binds a channel to a control point, active unless told otherwise.
class BindingRow : public Row<BindingRow> {
public:
  BindingRow(int channel_id, int control_point_id);
  BindingRow& active(bool value) { return setFlag("active", value); }
};

// AGGREGATE: a monitored machine at a node.
class AggregateRow : public Row<AggregateRow> {
public:
  AggregateRow(int id, int node_id);
  AggregateRow& typeAggregate(int value) { return setInt("type_aggregate_id", value); }
  // 8 and 11 are equipment without motor or rolling bearings.
  AggregateRow& equipmentType(int value) { return setInt("type_equipment_id", value); }
  // 2: the largest weighted point status decides the machine's status.
  AggregateRow& statusType(int value) { return setInt("status_type", value); }
  AggregateRow& rulDays(int days) { return setInt("rul_days", days); }
  AggregateRow& trendStart(const std::string& time) { return setText("trend_start", time); }
  AggregateRow& name(const std::string& text) { return setText("name", text); }
  AggregateRow& mode(int value) { return setInt("mode", value); }
};

// CONTROL_POINT: a monitored point of a machine with its significance.
class ControlPointRow : public Row<ControlPointRow> {
public:
  ControlPointRow(int id, int aggregate_id);
  ControlPointRow& weight(double coefficient) {
    return setReal("significance_coefficient", coefficient);
  }
  ControlPointRow& status(double value) { return setReal("status", value); }
};

// MOTOR: the nameplate, kept as text as the operators type it.
class MotorRow : public Row<MotorRow> {
public:
  explicit MotorRow(int id);
  // All six fields as numbers.
  MotorRow& nameplate(int power, int speed, int i, int u, int p2, int class_vibro);
  MotorRow& power(const std::string& text) { return setText("power", text); }
  MotorRow& speed(const std::string& text) { return setText("speed", text); }
  MotorRow& current(const std::string& text) { return setText("i", text); }
  MotorRow& voltage(const std::string& text) { return setText("u", text); }
  MotorRow& poles(const std::string& text) { return setText("p2", text); }
  MotorRow& classVibro(const std::string& text) { return setText("class_vibro", text); }
};

// control_point_motor: the motor of a control point.
class ControlPointMotorRow : public Row<ControlPointMotorRow> {
public:
  ControlPointMotorRow(int control_point_id, int motor_id);
};

// BEARING: the geometry of a bearing; type 3 has no rolling elements.
class BearingRow : public Row<BearingRow> {
public:
  explicit BearingRow(int id);
  BearingRow& geometry(double ball_diameter, int count_balls, int type_bearing,
                       double inner_diameter, double external_diameter, double angle);
  BearingRow& ballDiameter(double value) { return setReal("ball_diameter", value); }
  BearingRow& countBalls(int value) { return setInt("count_balls", value); }
  BearingRow& typeBearing(int value) { return setInt("type_bearing", value); }
  BearingRow& innerDiameter(double value) { return setReal("inner_diameter", value); }
  BearingRow& externalDiameter(double value) { return setReal("external_diameter", value); }
  BearingRow& angle(double degrees) { return setReal("angle", degrees); }
};

// control_point_bearing: a bearing of a control point.
class ControlPointBearingRow : public Row<ControlPointBearingRow> {
public:
  ControlPointBearingRow(int control_point_id, int bearing_id);
};

// observed_param: a parameter name and its corridor type.
class ObservedParamRow : public Row<ObservedParamRow> {
public:
  ObservedParamRow(const std::string& name, int type_corridor);
};

// VISUALIZATION: a displayed parameter of a module's channel and control point, active and of
// class 1 unless told otherwise. Adding it to a PlantBuilder also adds its observed_param row
// (corridor type 1 unless corridorType says otherwise) unless a row of that name is already
// there or withoutObservedParam was called. Add an ObservedParamRow of your own before the
// first visualization of that name.
class VisualizationRow : public Row<VisualizationRow> {
public:
  VisualizationRow(int id, long source, const std::string& name_param);
  // 1, 2 (telemetry) or 3.
  VisualizationRow& typeParam(int value) { return setInt("type_param", value); }
  VisualizationRow& channel(int id) { return setInt("channel_id", id); }
  VisualizationRow& controlPoint(int id) { return setInt("control_point_id", id); }
  VisualizationRow& thresholds(double green, double yellow, double orange);
  VisualizationRow& kz(double value) { return setReal("kz", value); }
  VisualizationRow& active(bool value) { return setFlag("active", value); }
  VisualizationRow& middle(bool value) { return setFlag("middle", value); }
  VisualizationRow& trend(bool value) { return setFlag("trend", value); }
  VisualizationRow& rulActive(bool value) { return setFlag("rul_active", value); }
  VisualizationRow& corridorActive(bool value) { return setFlag("corridor_active", value); }
  VisualizationRow& corridorZero(int value) { return setInt("corridor_zero", value); }
  VisualizationRow& latestRaw(double value) { return setReal("latest_raw_value", value); }
  VisualizationRow& latestMiddle(double value) { return setReal("latest_middle_value", value); }
  VisualizationRow& valueAt(const std::string& time) { return setText("value_at", time); }
  VisualizationRow& messageSettings(const std::string& text) {
    return setText("message_settings", text);
  }
  // The corridor type of the parameter's observed_param row.
  VisualizationRow& corridorType(int type_corridor);
  // Leaves observed_param alone: the visualization then joins no parameter and is not read.
  VisualizationRow& withoutObservedParam();

  const std::string& nameParam() const { return name_param_; }
  int typeCorridor() const { return type_corridor_; }
  bool addsObservedParam() const { return adds_observed_param_; }

private:
  std::string name_param_;
  int type_corridor_ = 1;
  bool adds_observed_param_ = true;
};

// LIST_OF_MESSAGES: a notification code, visible unless told otherwise.
class MessageRow : public Row<MessageRow> {
public:
  explicit MessageRow(const std::string& code);
  MessageRow& visible(bool value) { return setFlag("visible", value); }
};

// RECOMMENDATION: a recommendation for a message code, enabled unless told otherwise.
class RecommendationRow : public Row<RecommendationRow> {
public:
  RecommendationRow(int id, const std::string& message_code);
  RecommendationRow& typeMessage(int id) { return setInt("type_message_id", id); }
  RecommendationRow& enabled(bool value) { return setFlag("enabled", value); }
};

// VEK_CALCULATION: an instance of the service with its settings document.
class InstanceRow : public Row<InstanceRow> {
public:
  explicit InstanceRow(int id);
  InstanceRow& ip(const std::string& text) { return setText("ip", text); }
  InstanceRow& settings(const std::string& json) { return setText("settings", json); }
  InstanceRow& version(const std::string& json) { return setText("version", json); }
  InstanceRow& lag(int value) { return setInt("lag", value); }
  InstanceRow& lastCalculated(int id) { return setInt("last_calculated", id); }
};

// recalculation: a request to compute a stretch again, waiting and to be run unless told.
class RecalculationRow : public Row<RecalculationRow> {
public:
  RecalculationRow(int id, long source, const std::string& time_start,
                   const std::string& time_stop);
  RecalculationRow& state(int value) { return setInt("state", value); }
  RecalculationRow& control(int value) { return setInt("control", value); }
  RecalculationRow& timeCalculation(const std::string& time) {
    return setText("time_calculation", time);
  }
  RecalculationRow& createdAt(const std::string& time) { return setText("created_at", time); }
};

// fu_raw: one raw piece of a measurement. The data setters encode with the piece's c_type.
class RawRow : public Row<RawRow> {
public:
  RawRow(int param_type_id, int c_type);
  // The measurement it belongs to; MeasurementRow::raw sets it.
  RawRow& measurement(int param_info_id) { return setInt("param_info_id", param_info_id); }
  RawRow& subChannel(const std::string& text) { return setText("sub_channel", text); }
  RawRow& settings(const std::string& json) { return setText("settings", json); }
  // data as it stands, for texts no module would send.
  RawRow& data(const std::string& text) { return setText("data", text); }
  RawRow& samples(const std::vector<double>& values) {
    return data(encodeSamples(values, c_type_));
  }
  RawRow& timed(const std::vector<TimedSample>& values) {
    return data(encodeTimedSamples(values, c_type_));
  }
  RawRow& named(const std::string& name, double value) {
    return data(encodeNamedValue(name, value, c_type_));
  }

private:
  int c_type_;
};

// PARAM_INFO with its fu_raw pieces: one measurement of a module.
class MeasurementRow : public Row<MeasurementRow> {
public:
  MeasurementRow(int id, long source);
  // TYPE_MOD and TYPE_PARAM; type_param 0 is a telemetry-only row.
  MeasurementRow& module(int type_mod, int type_param);
  MeasurementRow& at(const std::string& receipt_date) {
    return setText("receipt_date", receipt_date);
  }
  MeasurementRow& kind(int value) { return setInt("kind", value); }
  MeasurementRow& tuError(const std::string& text) { return setText("tu_error", text); }
  // The telemetry block in its semicolon form.
  MeasurementRow& telemetry(int temperature, int rssi, int reset_count, int battery) {
    return tuError(telemetrySemicolons(temperature, rssi, reset_count, battery));
  }
  // The telemetry block in its JSON form.
  MeasurementRow& telemetryJson(const std::vector<std::pair<std::string, double>>& values) {
    return tuError(settingsRaw(values));
  }
  MeasurementRow& paramSettings(const std::string& text) { return setText("param_settings", text); }
  MeasurementRow& moduleConfig(const std::string& text) { return setText("module_config", text); }
  // Appends a raw piece, bound to this measurement.
  MeasurementRow& raw(RawRow piece);

  const std::vector<RawRow>& raws() const { return raws_; }

private:
  int id_;
  std::vector<RawRow> raws_;
};

// ---------------------------------------------------------------------------------------------
// The builder
// ---------------------------------------------------------------------------------------------

// Collects rows as INSERT statements in the order they are added.
class PlantBuilder {
public:
  PlantBuilder& add(const TableRow& row);
  // The observed parameter (unless already added or switched off), then the visualization.
  PlantBuilder& add(const VisualizationRow& row);
  // The PARAM_INFO row, then its fu_raw pieces.
  PlantBuilder& add(const MeasurementRow& row);
  // Any statement as it stands, e.g. an UPDATE of a row added before.
  PlantBuilder& statement(const std::string& sql);

  // The statements, one per line, ready for psql.
  std::string sql() const;
  // Runs all statements in one transaction on connection and commits. Throws what libpqxx
  // throws; nothing is written then.
  void insert(pqxx::connection& connection) const;
  // Forgets the statements (after an insert, to describe the next stretch).
  void clear();
  // Empties every table that the builder writes, so that tests sharing one database (a
  // suite run in one process) each start from a bare plant.
  static void emptyTables(pqxx::connection& connection);
  std::size_t size() const { return statements_.size(); }

private:
  std::vector<std::string> statements_;
  std::vector<std::string> observed_params_;
};

} // namespace vek_test
