// Construction of the measurement object, the row's telemetry block, and the two small reports
// on the row: whether it is processed at all and its log line.
#include "pipeline/DataParsing.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "equipment/Aggregate.h"
#include "equipment/Module.h"
#include "logging/PrintLog.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"

namespace {

// The names of the JSON form of TU_ERROR and the telemetry keys they fill, in the order in
// which the block is read.
const std::pair<const char*, const char*> kJsonTelemetry[] = {{"temperature", "TEMP"},
                                                              {"rssi", "RSSI"},
                                                              {"count0", "RESET_COUNT"},
                                                              {"battery", "U_BATTERY"},
                                                              {"state", "STATE"}};

// The keys of the semicolon form, in field order. The module state has no field there.
const char* const kSemicolonTelemetry[] = {"TEMP", "RSSI", "RESET_COUNT", "U_BATTERY"};

// Whether a JSON number can be truncated to an int: a NaN or a number beyond int is a broken
// block, and the key is left out as if the module had not sent it.
bool fitsInt(double value) {
  return std::isfinite(value) &&
         value > static_cast<double>(std::numeric_limits<int>::min()) - 1.0 &&
         value < static_cast<double>(std::numeric_limits<int>::max()) + 1.0;
}

} // namespace

DataParsing::DataParsing(DataBase* db_, Module* module_, param_info param_, PrintLog* log_,
                         bool recalculation_, Aggregate* aggregate_,
                         std::vector<visualization> visualizations_, DataCache* cache_)
    : recalculation(recalculation_), db(db_), module(module_), param(std::move(param_)),
      cache(cache_), log(log_), aggregate(aggregate_), visualizations(std::move(visualizations_)) {
  organization_alias = aggregate->organization_alias;
  param_info_id = param.id;

  if (!aggregate->control_points.empty()) {
    // The channels of the points in point order; a channel that the machine lists once per
    // binding is taken once per binding, and the computations rely on that order.
    for (const control_point& cp : aggregate->control_points) {
      for (int id : cp.channel_ids) {
        for (const channel& ch : aggregate->channels) {
          if (ch.id == id) {
            channels.push_back(ch);
          }
        }
      }
    }
  } else {
    // A machine without control points: the channel that stands for the whole module (no
    // sub-channels) carries the results; the last such channel wins.
    for (const channel& ch : aggregate->channels) {
      if (ch.raw_param.empty()) {
        channel_id = ch.id;
        axis_order = ch.axis_order;
      }
    }
  }

  receipt_date = param.receipt_date;
  type_param = param.type_param;
  type_mod = param.type_mod;
  source = param.source;

  if (!param.tu_error.empty()) {
    if (param.tu_error.find('{') != std::string::npos) {
      const std::map<std::string, double> block = json_parse_settings_raw(param.tu_error);
      for (const auto& [name, key] : kJsonTelemetry) {
        const auto found = block.find(name);
        if (found != block.end() && fitsInt(found->second)) {
          tu_values[key] = static_cast<int>(found->second);
        }
      }
    } else {
      std::vector<std::string> fields;
      parsing_tu(param.tu_error, fields);
      if (fields.size() > 3) {
        for (std::size_t k = 0; k < 4; ++k) {
          tu_values[kSemicolonTelemetry[k]] = std::stoi(fields[k]);
        }
      }
    }
  }

  db->readModuleParam(type_mod, module->revision, module_params);
}

void DataParsing::parsing_tu(std::string text, std::vector<std::string>& out) {
  for (;;) {
    const std::size_t cut = text.find(';');
    if (cut == std::string::npos) {
      // Modules end the block without a ";" after the battery, so an unterminated tail is
      // taken only in the battery's place.
      if (out.size() == 3) {
        out.push_back(text);
      }
      return;
    }
    out.push_back(text.substr(0, cut));
    text.erase(0, cut + 1);
  }
}

bool DataParsing::verify() {
  const int m = type_mod;
  const int p = type_param;
  const bool processed =
      ((m == 1 || m == 2 || m == 8 || m == 9) && p >= 0 && p <= 8) ||
      (m == 3 && p >= 0 && p <= 21) || ((m == 5 || m == 6 || m == 7) && p >= 0 && p <= 6) ||
      (m == 10 && p >= 0 && p <= 10) || (m == 11 && (p == 0 || p == 1)) ||
      ((m == 101 || m == 102) && p == 4) ||
      ((m == 103 || m == 104 || m == 105 || m == 106) && p == 1) || p == 200 || p == 201 || m == 12;
  if (!processed && p != 0) {
    log->print("type_mod/type_param  will not be processed\n");
  }
  return processed;
}

std::string DataParsing::print() {
  std::string text = " " + receipt_date + " source: " + std::to_string(source) +
                     ", mod: " + std::to_string(type_mod) +
                     ", param: " + std::to_string(type_param);
  if (type_param == 0) {
    bool complete = true;
    std::string tail = " tu:";
    for (const char* key : kSemicolonTelemetry) {
      const auto found = tu_values.find(key);
      if (found == tu_values.end()) {
        complete = false;
        break;
      }
      tail += " " + std::to_string(found->second);
    }
    if (complete) {
      text += tail;
    }
  }
  return text + "\n";
}

void DataParsing::setControlPoint(control_point point_) {
  point = std::move(point_);
}
