#include "support/PlantBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <locale>
#include <pqxx/pqxx>
#include <sstream>

namespace vek_test {

namespace {

// Hexadecimal text of the low `width` hex digits of bits, most significant first.
std::string hexDigits(std::uint64_t bits, int width) {
  static const char digits[] = "0123456789abcdef";
  std::string text(static_cast<std::size_t>(width), '0');
  for (int i = width - 1; i >= 0; --i) {
    text[static_cast<std::size_t>(i)] = digits[bits & 0xfu];
    bits >>= 4;
  }
  return text;
}

// The byte pairs of a hexadecimal text from last to first: how the modules lay out a value.
std::string littleEndian(const std::string& hex) {
  std::string text;
  text.reserve(hex.size());
  for (std::size_t pair = hex.size(); pair >= 2; pair -= 2) {
    text += hex.substr(pair - 2, 2);
  }
  return text;
}

// The bits of value as the module's integer of c_type: rounded, then cut to the width.
std::uint64_t integerBits(double value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(std::llround(value)));
}

std::string jsonNumber(double value) {
  return std::isfinite(value) ? sqlNumber(value) : "null";
}

std::string jsonString(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + "\"";
}

} // namespace

std::string sqlQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    quoted += c;
    if (c == '\'') {
      quoted += '\'';
    }
  }
  return quoted + "'";
}

std::string sqlNumber(double value) {
  if (!std::isfinite(value)) {
    return "NULL";
  }
  // Fifteen figures when they read back exactly, so 0.1 stays 0.1; seventeen otherwise.
  for (const int precision : {15, 17}) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(precision);
    text << value;
    std::istringstream back(text.str());
    back.imbue(std::locale::classic());
    double read = 0.0;
    back >> read;
    if (read == value || precision == 17) {
      return text.str();
    }
  }
  return "NULL";
}

int sampleWidth(int c_type) {
  switch (c_type) {
  case 1:
  case 2:
    return 4;
  case 3:
  case 4:
    return 6;
  case 5:
  case 6:
  case 7:
    return 8;
  default:
    return 2;
  }
}

std::string encodeValue(double value, int c_type) {
  const int width = sampleWidth(c_type);
  std::uint64_t bits = 0;
  if (c_type == 7) {
    const float single = static_cast<float>(value);
    std::uint32_t word = 0;
    std::memcpy(&word, &single, sizeof word);
    bits = word;
  } else if (c_type >= 1 && c_type <= 8) {
    bits = integerBits(value);
  }
  return littleEndian(hexDigits(bits, width));
}

std::string encodeSamples(const std::vector<double>& values, int c_type,
                          const std::string& prefix) {
  std::string text = prefix;
  for (const double value : values) {
    text += encodeValue(value, c_type);
  }
  return text;
}

std::string encodeTimedSamples(const std::vector<TimedSample>& samples, int c_type,
                               const std::string& prefix) {
  std::string text = prefix;
  for (const auto& sample : samples) {
    text += littleEndian(hexDigits(sample.stamp, 16));
    text += encodeValue(sample.value, c_type);
  }
  return text;
}

std::string encodeNamedValue(const std::string& name, double value, int c_type,
                             const std::string& prefix) {
  std::string text = prefix;
  for (const char c : name) {
    text += hexDigits(static_cast<unsigned char>(c), 2);
  }
  return text + encodeValue(value, c_type);
}

std::string telemetrySemicolons(int temperature, int rssi, int reset_count, int battery) {
  return std::to_string(temperature) + ";" + std::to_string(rssi) + ";" +
         std::to_string(reset_count) + ";" + std::to_string(battery);
}

std::string settingsRaw(const std::vector<std::pair<std::string, double>>& values) {
  std::string text = "[";
  for (const auto& [name, value] : values) {
    if (text.size() > 1) {
      text += ", ";
    }
    text += "{\"name_param\": " + jsonString(name) + ", \"value\": " + jsonNumber(value) + "}";
  }
  return text + "]";
}

std::string paramSettings(const std::vector<param_setting>& settings) {
  std::string text = "[";
  for (const auto& setting : settings) {
    if (text.size() > 1) {
      text += ",";
    }
    text += "{\"name_param\": \"" + setting.name + "\"";
    if (!setting.sub_1_packet.empty()) {
      text += ", \"sub_1_packet\": \"" + setting.sub_1_packet + "\"";
    }
    text += ", \"value\": " + jsonNumber(setting.value) + "}";
  }
  return text + "]";
}

std::string messageSettings(const std::map<std::string, std::vector<MessageRule>>& situations) {
  std::string text = "{";
  for (const auto& [situation, rules] : situations) {
    if (text.size() > 1) {
      text += ", ";
    }
    text += jsonString(situation) + ": [";
    for (std::size_t r = 0; r < rules.size(); ++r) {
      text += r == 0 ? "" : ", ";
      text += "{\"codeMessage\": " + jsonString(rules[r].code) + ", \"recommendations\": [";
      for (std::size_t i = 0; i < rules[r].recommendations.size(); ++i) {
        text += (i == 0 ? "" : ", ") + std::to_string(rules[r].recommendations[i]);
      }
      text += "]}";
    }
    text += "]";
  }
  return text + "}";
}

TableRow::TableRow(std::string table) : table_(std::move(table)) {}

std::string TableRow::literal(const std::string& column) const {
  for (const auto& [name, value] : columns_) {
    if (name == column) {
      return value;
    }
  }
  return "";
}

std::string TableRow::insertStatement() const {
  std::string names;
  std::string values;
  for (const auto& [name, value] : columns_) {
    names += (names.empty() ? "" : ", ") + name;
    values += (values.empty() ? "" : ", ") + value;
  }
  return "INSERT INTO " + table_ + " (" + names + ") VALUES (" + values + ");";
}

void TableRow::put(const std::string& column, std::string value) {
  for (auto& [name, old] : columns_) {
    if (name == column) {
      old = std::move(value);
      return;
    }
  }
  columns_.emplace_back(column, std::move(value));
}

OrganizationRow::OrganizationRow(const std::string& alias) : Row("organization_object") {
  setText("alias_name", alias);
}

NodeRow::NodeRow(int id, const std::string& organization_alias) : Row("observed_node") {
  setInt("id", id);
  setText("organization_alias", organization_alias);
}

GatewayRow::GatewayRow(int id, int node_id) : Row("gateway") {
  setInt("id", id);
  setInt("node_id", node_id);
  control(1);
}

ModuleRow::ModuleRow(int id, long source, int type_module) : Row("module") {
  setInt("id", id);
  setInt("source", source);
  setInt("type_module", type_module);
}

ModuleRow& ModuleRow::config(unsigned int word) {
  std::ostringstream text;
  text << "0x" << std::uppercase << std::hex << word;
  return setText("config", text.str());
}

ModuleParamRow::ModuleParamRow(int type_module, int revision, int type_param,
                               const std::string& name, double value)
    : Row("module_param") {
  setText("name", name);
  setReal("value", value);
  setInt("type_module", type_module);
  setInt("type_param", type_param);
  setInt("module_revision", revision);
}

ChannelRow::ChannelRow(int id, long source) : Row("channel") {
  setInt("id", id);
  setInt("source", source);
}

BindingRow::BindingRow(int channel_id, int control_point_id) : Row("channel_contol_point") {
  setInt("channel_id", channel_id);
  setInt("control_point_id", control_point_id);
  active(true);
}

AggregateRow::AggregateRow(int id, int node_id) : Row("aggregate") {
  setInt("id", id);
  setInt("node_id", node_id);
}

ControlPointRow::ControlPointRow(int id, int aggregate_id) : Row("control_point") {
  setInt("id", id);
  setInt("aggregate_id", aggregate_id);
}

MotorRow::MotorRow(int id) : Row("motor") {
  setInt("id", id);
}

MotorRow& MotorRow::nameplate(int power_, int speed_, int i, int u, int p2, int class_vibro) {
  power(std::to_string(power_));
  speed(std::to_string(speed_));
  current(std::to_string(i));
  voltage(std::to_string(u));
  poles(std::to_string(p2));
  return classVibro(std::to_string(class_vibro));
}

ControlPointMotorRow::ControlPointMotorRow(int control_point_id, int motor_id)
    : Row("control_point_motor") {
  setInt("control_point_id", control_point_id);
  setInt("motor_id", motor_id);
}

BearingRow::BearingRow(int id) : Row("bearing") {
  setInt("id", id);
}

BearingRow& BearingRow::geometry(double ball_diameter, int count_balls, int type_bearing,
                                 double inner_diameter, double external_diameter, double angle_) {
  ballDiameter(ball_diameter);
  countBalls(count_balls);
  typeBearing(type_bearing);
  innerDiameter(inner_diameter);
  externalDiameter(external_diameter);
  return angle(angle_);
}

ControlPointBearingRow::ControlPointBearingRow(int control_point_id, int bearing_id)
    : Row("control_point_bearing") {
  setInt("control_point_id", control_point_id);
  setInt("bearing_id", bearing_id);
}

ObservedParamRow::ObservedParamRow(const std::string& name, int type_corridor)
    : Row("observed_param") {
  setText("name", name);
  setInt("type_corridor", type_corridor);
}

VisualizationRow::VisualizationRow(int id, long source, const std::string& name_param)
    : Row("visualization"), name_param_(name_param) {
  setInt("id", id);
  setInt("source", source);
  setText("name_param", name_param);
  typeParam(1);
  active(true);
}

VisualizationRow& VisualizationRow::thresholds(double green, double yellow, double orange) {
  setReal("green", green);
  setReal("yellow", yellow);
  return setReal("orange", orange);
}

VisualizationRow& VisualizationRow::corridorType(int type_corridor) {
  type_corridor_ = type_corridor;
  return *this;
}

VisualizationRow& VisualizationRow::withoutObservedParam() {
  adds_observed_param_ = false;
  return *this;
}

MessageRow::MessageRow(const std::string& code) : Row("list_of_messages") {
  setText("code", code);
  visible(true);
}

RecommendationRow::RecommendationRow(int id, const std::string& message_code)
    : Row("recommendation") {
  setInt("id", id);
  setText("message_code", message_code);
  enabled(true);
}

InstanceRow::InstanceRow(int id) : Row("vek_calculation") {
  setInt("id", id);
}

RecalculationRow::RecalculationRow(int id, long source, const std::string& time_start,
                                   const std::string& time_stop)
    : Row("recalculation") {
  setInt("id", id);
  setInt("source", source);
  setText("time_start", time_start);
  setText("time_stop", time_stop);
  state(1);
  control(1);
}

RawRow::RawRow(int param_type_id, int c_type) : Row("fu_raw"), c_type_(c_type) {
  setInt("param_type_id", param_type_id);
  setInt("c_type", c_type);
}

MeasurementRow::MeasurementRow(int id, long source) : Row("param_info"), id_(id) {
  setInt("id", id);
  setInt("source", source);
}

MeasurementRow& MeasurementRow::module(int type_mod, int type_param) {
  setInt("type_mod", type_mod);
  return setInt("type_param", type_param);
}

MeasurementRow& MeasurementRow::raw(RawRow piece) {
  piece.measurement(id_);
  raws_.push_back(std::move(piece));
  return *this;
}

PlantBuilder& PlantBuilder::add(const TableRow& row) {
  if (row.table() == "observed_param") {
    observed_params_.push_back(row.literal("name"));
  }
  return statement(row.insertStatement());
}

PlantBuilder& PlantBuilder::add(const VisualizationRow& row) {
  const std::string name = sqlQuoted(row.nameParam());
  if (row.addsObservedParam() &&
      std::find(observed_params_.begin(), observed_params_.end(), name) == observed_params_.end()) {
    // A batch described after an earlier insert may name the parameter again.
    const std::string insert =
        ObservedParamRow(row.nameParam(), row.typeCorridor()).insertStatement();
    statement(insert.substr(0, insert.size() - 1) + " ON CONFLICT (name) DO NOTHING;");
    observed_params_.push_back(name);
  }
  return statement(row.insertStatement());
}

PlantBuilder& PlantBuilder::add(const MeasurementRow& row) {
  statement(row.insertStatement());
  for (const auto& piece : row.raws()) {
    statement(piece.insertStatement());
  }
  return *this;
}

PlantBuilder& PlantBuilder::statement(const std::string& sql) {
  statements_.push_back(sql);
  return *this;
}

std::string PlantBuilder::sql() const {
  std::string text;
  for (const auto& line : statements_) {
    text += line + "\n";
  }
  return text;
}

void PlantBuilder::insert(pqxx::connection& connection) const {
  pqxx::work work(connection);
  work.exec(sql());
  work.commit();
}

void PlantBuilder::emptyTables(pqxx::connection& connection) {
  pqxx::work work(connection);
  work.exec("TRUNCATE organization_object, observed_node, gateway, module, module_param, channel, "
            "channel_contol_point, control_point, control_point_motor, control_point_bearing, "
            "motor, bearing, aggregate, observed_param, visualization, list_of_messages, "
            "recommendation, vek_calculation, recalculation, param_info, fu_raw");
  work.commit();
}

void PlantBuilder::clear() {
  statements_.clear();
  observed_params_.clear();
}

} // namespace vek_test
