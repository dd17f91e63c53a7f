// What the measurement hands to the store: the parameters of each result that the display has
// a place for, with the values it can show, and the announcement of each written result.
#include "pipeline/DataParsing.h"

#include <iostream>
#include <limits>
#include <string>

#include "logging/PrintLog.h"
#include "store/DataBase.h"

namespace {

// Values beyond this magnitude are artefacts of a failed computation, not readings: they are
// stored as no value.
constexpr double kLargestValue = 1e6;

bool beyondRange(double value) {
  return value > kLargestValue || value < -kLargestValue;
}

} // namespace

void DataParsing::updateLatest(int index, std::vector<visualization> list) {
  if (index < 0 || static_cast<std::size_t>(index) >= results.size()) {
    return;
  }
  calc_result& result = results[static_cast<std::size_t>(index)];
  std::map<std::string, int> shown;
  for (const visualization& v : list) {
    if (v.channel_id == result.channel_id && v.control_point_id == result.control_point_id) {
      shown[v.name_param] = v.id;
    }
  }
  // A parameter that the display has no place for is not written at all.
  for (const auto& [name, value] : result.params) {
    const auto place = shown.find(name);
    if (place == shown.end()) {
      continue;
    }
    result_param parameter;
    parameter.name = name;
    parameter.value =
        beyondRange(static_cast<double>(value)) ? std::numeric_limits<float>::quiet_NaN() : value;
    parameter.visualization_id = place->second;
    result.result_params.push_back(parameter);
  }
}

void DataParsing::updateLatest(std::string kind, int index,
                               std::map<std::string, double>& computed_values) {
  if (index < 0 || static_cast<std::size_t>(index) >= results.size()) {
    return;
  }
  float result_param::*field = nullptr;
  if (kind == "middle") {
    field = &result_param::middle;
  } else if (kind == "trend") {
    field = &result_param::trend;
  } else if (kind == "monotone") {
    field = &result_param::monotone;
  } else {
    return;
  }
  for (result_param& parameter : results[static_cast<std::size_t>(index)].result_params) {
    const auto found = computed_values.find(parameter.name);
    if (found == computed_values.end()) {
      continue;
    }
    // The range is judged on the computed double, before it is narrowed for storage.
    parameter.*field = beyondRange(found->second) ? std::numeric_limits<float>::quiet_NaN()
                                                  : static_cast<float>(found->second);
  }
}

void DataParsing::updateRul(int index, std::map<std::string, std::string> rul_texts) {
  if (index < 0 || static_cast<std::size_t>(index) >= results.size()) {
    return;
  }
  for (result_param& parameter : results[static_cast<std::size_t>(index)].result_params) {
    const auto found = rul_texts.find(parameter.name);
    if (found != rul_texts.end()) {
      parameter.rul = found->second;
    }
  }
}

std::string DataParsing::print_result(calc_result result) {
  std::string text = "channel: " + std::to_string(result.channel_id) +
                     ", control_point: " + std::to_string(result.control_point_id) +
                     ", status_calc: " + std::to_string(result.status_calc) +
                     ", status_vector: " + std::to_string(result.status_vector) + "\n";
  for (const result_param& parameter : result.result_params) {
    text += parameter.name + ": " + std::to_string(parameter.value) + "\n";
  }
  return text;
}

void DataParsing::write(calc_result result) {
  db->writeResultBase(organization_alias, result, recalculation);
  db->writeResultMathHistory(organization_alias, result);
  // The defects belong to the measurement, so every result of the row writes them again.
  if (!defects.empty()) {
    db->writeDefects(param_info_id, defects);
  }
}

void DataParsing::write_kafka(calc_result, std::string topic, int id) {
  std::cout << "write_kafka: topic: " << topic << ", id: " << id << "\n" << std::flush;
}
