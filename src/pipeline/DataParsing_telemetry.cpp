// The simple sensor modules: pressure transmitter (2), up to four temperature sensors (8),
// temperature with timed records (11) and the wireless temperature, humidity, pressure and
// valve modules (103 to 106), and the wireless vibration modules (101, 102) when they send
// parameters they computed themselves. Their rows carry values, not signals: each value goes into
// `values` under its parameter name and leaves as a result without a math block. A sensor that
// reports a value it cannot measure gives a result all the same, with NaN and the failed
// status, so that the display shows the failure at its time.
#include "pipeline/DataParsing.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "blocks/v_data_d/v_data_d.h"
#include "logging/PrintLog.h"
#include "pipeline/hex_text.h"
#include "pipeline/sql_text.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"
#include "store/sql_quote.h"

namespace {

// Readings a temperature sensor cannot give: below -200 degrees, and the converter's mark of
// a sensor that does not answer.
constexpr double kColdestTemperature = -200.0;
constexpr double kNoSensorMark = -32767.0;
// The wireless temperature module measures up to 300 degrees.
constexpr double kHottestWirelessTemperature = 300.0;
// A battery charge is a percentage.
constexpr double kBatteryEmpty = 0.0;
constexpr double kBatteryFull = 100.0;
// A wireless vibration module whose own velocity RMS exceeds this (mm/s) on an axis reports a
// failed measurement rather than a machine that shakes so.
constexpr double kMostVelocity = 20.0;

// A stored forecast curve: "\x", then records of a 64-bit time and a 32-bit float value.
constexpr std::size_t kCurvePrefix = 2;
constexpr std::size_t kCurveTimeWidth = 16;
constexpr std::size_t kCurveValueWidth = 8;
constexpr std::size_t kCurveRecordWidth = kCurveTimeWidth + kCurveValueWidth;
// Starting points of the search for the curve's first and last time.
constexpr std::int64_t kCurveEarliestStart = 3000000000000LL;
constexpr std::int64_t kCurveLatestStart = 0;
// The curve's times are seconds; the span is divided as if they were milliseconds, and the
// figure that the users' tools show is this one.
constexpr std::int64_t kCurveSpanDivisor = 3600000;
// type_message of a forecast notification.
constexpr int kForecastMessage = 6;

// type_param of the rows that carry named values instead of a measurement.
bool isNamedRow(int type_param) {
  return type_param == 200 || type_param == 201;
}

} // namespace

int DataParsing::kindStatusBase() const {
  return param.kind == 1 ? 2 : 0;
}

calc_result DataParsing::newResult(int status_base) const {
  calc_result result;
  result.source = source;
  result.status_calc = status_base;
  result.status_vector = 0;
  if (!channels.empty()) {
    result.channel_id = point.channel_ids.empty() ? 0 : point.channel_ids.front();
    result.control_point_id = point.id;
  } else {
    result.channel_id = channel_id;
    result.control_point_id = 0;
  }
  return result;
}

void DataParsing::finishResult(calc_result& result) {
  result.param_info_id = param_info_id;
  result.params = values;
  result.has_raw_data = false;
  results.push_back(result);
}

void DataParsing::sensorFailure(calc_result& result, const std::string& name, int status_base,
                                bool notify) {
  values[name] = std::numeric_limits<float>::quiet_NaN();
  result.status_calc = status_base + 1;
  result.status_vector = kSensorOutOfRange;
  if (!recalculation && notify) {
    db->notificationSystemSave("28", source, receipt_date, 1, 0, "", 2, organization_alias,
                               result.channel_id, result.control_point_id);
    db->setHardwareStatusModule(source, 1);
  }
}

void DataParsing::namedValues(calc_result& result) {
  for (const raw& piece : raws) {
    // After decoding, data holds the parameter's name.
    if (piece.data.empty() || piece.values.empty()) {
      continue;
    }
    double value = piece.values.front();
    if (piece.data == "U_BATTERY") {
      value = std::min(std::max(value, kBatteryEmpty), kBatteryFull);
    }
    values[piece.data] = static_cast<float>(value);
  }
  result.has_raw_data = false;
  log->print("parameters from fu_raw\n");
}

bool DataParsing::precomputedValues(const std::vector<std::string>& velocity_names) {
  calc_result result = newResult(kindStatusBase());
  result.receipt_date = param.receipt_date;
  const bool turned = std::any_of(channels.begin(), channels.end(),
                                  [](const channel& c) { return !c.axis_order.empty(); });
  for (const raw& piece : raws) {
    if (piece.sub_channel.empty() || piece.values.empty()) {
      continue;
    }
    double value = piece.values.front();
    std::string name = piece.sub_channel;
    if (name == "U_BATTERY") {
      value = std::min(std::max(value, kBatteryEmpty), kBatteryFull);
    } else if (turned) {
      // The module names its axes as it is mounted; the machine's axes are those of the
      // channel's axis order.
      const char last = static_cast<char>(std::tolower(static_cast<unsigned char>(name.back())));
      const auto axis = axes_xyz_first.find(std::string(1, last));
      if (axis != axes_xyz_first.end() && !axis->second.empty()) {
        name.back() = axis->second[0];
      }
      for (char& c : name) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      }
    }
    values[name] = static_cast<float>(value);
  }
  result.has_raw_data = false;
  log->print("parameters from fu_raw\n");
  if (implausibleVelocity(velocity_names)) {
    result.status_calc = 1;
  }
  finishResult(result);
  return true;
}

bool DataParsing::implausibleVelocity(const std::vector<std::string>& names) {
  const auto present = [&](const std::string& n) { return values.count(n) != 0; };
  const auto implausible = [&](const std::string& n) { return double(values[n]) > kMostVelocity; };
  return std::all_of(names.begin(), names.end(), present) &&
         std::any_of(names.begin(), names.end(), implausible);
}

const visualization* DataParsing::shownHere(const std::string& name,
                                            const calc_result& result) const {
  const auto found =
      std::find_if(visualizations.begin(), visualizations.end(), [&](const visualization& v) {
        return v.name_param == name && v.active == 1 && v.channel_id == result.channel_id &&
               v.control_point_id == result.control_point_id;
      });
  return found == visualizations.end() ? nullptr : &*found;
}

bool DataParsing::computeModule2() {
  if (raws.empty()) {
    return false;
  }
  for (const auto& [stamp, count] : raws.front().timed_values) {
    calc_result result = newResult(kindStatusBase());
    result.receipt_date = stamp;
    values["PRESSURE"] = static_cast<float>(v_data_d_ns::v_data_d(count));
    finishResult(result);
  }
  return true;
}

bool DataParsing::computeModule8() {
  const int base = kindStatusBase();
  calc_result result = newResult(base);
  for (const raw& piece : raws) {
    if (piece.param_type_id != 4) {
      continue;
    }
    for (std::size_t k = 0; k < piece.values.size() && k < 4; ++k) {
      const std::string name = "SENSOR_T" + std::to_string(k + 1);
      const double value = piece.values[k];
      // Only a sensor that the display shows at this place is judged and kept.
      for (const visualization& shown : visualizations) {
        if (shown.name_param != name || shown.active != 1 ||
            shown.channel_id != result.channel_id ||
            shown.control_point_id != result.control_point_id) {
          continue;
        }
        if (value == kNoSensorMark || value < kColdestTemperature) {
          sensorFailure(result, name, base, true);
        } else {
          values[name] = static_cast<float>(value);
        }
      }
    }
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  return true;
}

bool DataParsing::computeModule11() {
  if (raws.empty()) {
    return false;
  }
  const int base = kindStatusBase();
  for (const auto& [stamp, temperature] : raws.front().timed_values) {
    calc_result result = newResult(base);
    // Without a TEMPERATURE shown at this place the record still gives a result, undated.
    if (const visualization* shown = shownHere("TEMPERATURE", result)) {
      if (shown->rul_active != 0) {
        analyzeRul(*shown);
      }
      if (temperature < kColdestTemperature) {
        sensorFailure(result, "TEMPERATURE", base, true);
      } else {
        values["TEMPERATURE"] = static_cast<float>(temperature);
      }
      result.receipt_date = stamp;
    }
    finishResult(result);
  }
  return true;
}

bool DataParsing::computeModule103() {
  // The wireless modules have no kind of their own: their status starts from 0.
  calc_result result = newResult(0);
  if (isNamedRow(type_param)) {
    namedValues(result);
  } else {
    const auto piece = std::find_if(raws.begin(), raws.end(), [](const raw& r) {
      return r.param_type_id == 4 && !r.values.empty();
    });
    if (piece != raws.end()) {
      const double temperature = piece->values.front();
      if (temperature > kHottestWirelessTemperature) {
        // Without a bound channel there is no place to raise the failure at.
        sensorFailure(result, "TEMPERATURE", 0, !channels.empty());
      } else {
        values["TEMPERATURE"] = static_cast<float>(temperature);
      }
    }
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  return true;
}

bool DataParsing::computeModule104() {
  calc_result result = newResult(0);
  if (isNamedRow(type_param)) {
    namedValues(result);
  } else {
    // Humidity and pressure take no range test; the last piece of a kind wins.
    for (const raw& piece : raws) {
      if (piece.values.empty()) {
        continue;
      }
      if (piece.param_type_id == 13) {
        values["HUMIDITY"] = static_cast<float>(piece.values.front());
      } else if (piece.param_type_id == 3) {
        values["PRESSURE"] = static_cast<float>(piece.values.front());
      }
    }
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  return true;
}

bool DataParsing::computeModule105() {
  return computeModule104();
}

bool DataParsing::computeModule106() {
  calc_result result = newResult(0);
  for (const raw& piece : raws) {
    // A valve piece without a sample reports no position.
    if (piece.param_type_id == 14 && !piece.values.empty()) {
      values["VALVE_STATUS"] = static_cast<float>(piece.values.front());
    }
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  return true;
}

void DataParsing::analyzeRul(visualization row) {
  const std::string& curve = row.rul_data;
  if (curve.empty()) {
    return;
  }
  std::int64_t earliest = kCurveEarliestStart;
  std::int64_t latest = kCurveLatestStart;
  bool reaches_orange = false;
  for (std::size_t at = kCurvePrefix; at < curve.size(); at += kCurveRecordWidth) {
    if (at + kCurveRecordWidth > curve.size()) {
      throw std::invalid_argument("incomplete record in the forecast curve of visualization " +
                                  std::to_string(row.id));
    }
    const auto time = static_cast<std::int64_t>(
        hex_text::parseHex(hex_text::mostSignificantFirst(curve, at, kCurveTimeWidth)));
    const double value = string_to_double(
        hex_text::mostSignificantFirst(curve, at + kCurveTimeWidth, kCurveValueWidth), 7);
    earliest = std::min(earliest, time);
    latest = std::max(latest, time);
    if (value > static_cast<double>(row.orange)) {
      reaches_orange = true;
    }
  }
  // Subtracted with wrap-around: a curve with times far apart must not overflow.
  const auto span = static_cast<std::int64_t>(static_cast<std::uint64_t>(latest) -
                                              static_cast<std::uint64_t>(earliest));
  const auto hours = static_cast<float>(span / kCurveSpanDivisor);

  if (row.message_settings.empty()) {
    return;
  }
  const std::map<std::string, std::vector<int>> codes =
      json_parse_message_settings(row.message_settings, "rulActive");
  if (codes.empty() || !reaches_orange) {
    return;
  }
  const std::string text = sql_text::floatText(hours);
  const std::string id = std::to_string(row.id);
  for (const auto& [code, recommendations] : codes) {
    if (!db->isMessageActive(code)) {
      continue;
    }
    const int recommendation = activeRecommendation(recommendations, kForecastMessage);
    // The stored value at the latest time is looked up though nothing uses it: a parameter
    // whose result table cannot be read raises no forecast.
    db->getValueInt("SELECT ID FROM RESULT_" + id + " WHERE RECEIPT_DATE = TO_TIMESTAMP(" +
                    sql::quoted(row.value_at) +
                    ",'yyyy-mm-dd hh24:mi:ss.ff6') AND VISUALIZATION_ID = " + id);
    db->notificationSave(code, source, row.value_at, 0, 0, text, kForecastMessage,
                         organization_alias, recommendation, row.channel_id, row.control_point_id,
                         false, row.id);
  }
}
