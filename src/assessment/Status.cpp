#include "assessment/Status.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace {

// A weighted colour at or below this adds nothing to the point's mean: a parameter whose
// weight is (near) zero is shown in its colour but does not move the point.
constexpr double kLeastWeightedColor = 0.01;

// A corridor bound as the operators' tools draw it: cut to a whole number toward zero. A bound
// beyond the range of a 32-bit integer (a centre or percentage no plant has) is held at the
// end of that range instead of being undefined; a NaN bound stays NaN and so admits nothing.
float wholeBound(float bound) {
  constexpr float kAboveLargest = 2147483648.0f; // 2^31, exactly representable
  if (std::isnan(bound)) {
    return bound;
  }
  if (bound >= kAboveLargest) {
    return static_cast<float>(std::numeric_limits<std::int32_t>::max());
  }
  if (bound < -kAboveLargest) {
    return static_cast<float>(std::numeric_limits<std::int32_t>::min());
  }
  return static_cast<float>(static_cast<std::int32_t>(bound));
}

// Whether v lies within the corridor of percent around centre, bounds included.
bool withinCorridor(float v, float percent, float centre) {
  const float half_width = centre * percent / 100.0f;
  const float high = wholeBound(centre + half_width);
  const float low = wholeBound(centre - half_width);
  return low <= v && v <= high;
}

} // namespace

Status::Status(DataBase* db_, long source_, int param_info_id_, int channel_id_,
               int control_point_id_, bool recalculation_)
    : param_info_id(param_info_id_), source(source_), channel_id(channel_id_),
      control_point_id(control_point_id_), recalculation(recalculation_), db(db_) {}

void Status::readData(std::vector<visualization> list) {
  for (const visualization& row : list) {
    data_status parameter;
    parameter.green = row.green;
    parameter.yellow = row.yellow;
    parameter.orange = row.orange;
    parameter.kz = row.kz;
    parameter.active = row.active != 0 ? 1.0f : 0.0f;
    parameter.visualization_id = row.id;
    parameter.type_corridor = row.type_corridor;
    parameter.corridor_zero = row.corridor_zero;
    parameter.corridor_active = row.corridor_active != 0;
    parameter.message_settings = row.message_settings;

    // A point that smooths a parameter is judged on the smoothed value, so that one noisy
    // reading does not turn a machine orange.
    const bool use_middle = control_point_id != 0 && row.middle == 1;
    if (!recalculation) {
      parameter.value =
          static_cast<float>(use_middle ? row.latest_middle_value : row.latest_raw_value);
    } else {
      // A recalculated stretch is judged on the history as it stood at this measurement, not
      // on what the display shows now.
      const std::string id = std::to_string(row.id);
      std::vector<std::vector<double>> table;
      db->readDataTable("SELECT " + std::string(use_middle ? "MIDDLE" : "VALUE") + " FROM RESULT_" +
                            id + " WHERE VISUALIZATION_ID = " + id +
                            " AND PARAM_INFO_ID <= " + std::to_string(param_info_id) +
                            " AND STATUS_CALC = 0 ORDER BY PARAM_INFO_ID DESC LIMIT 1",
                        table);
      if (!table.empty() && !table.front().empty()) {
        parameter.value = static_cast<float>(table.front().front());
      }
    }
    // A parameter shown twice at one point counts once, with its first row's thresholds.
    parameters.emplace(row.name_param, std::move(parameter));
  }
  if (list.empty()) {
    has_data = false;
  }
}

void Status::calculateStatus() {
  if (!has_data) {
    return;
  }
  int counted = 0;
  for (auto& [name, parameter] : parameters) {
    (void)name;
    // An inactive row, or a parameter whose corridor is switched off, is not assessed by any
    // of the three rules. A NaN in active counts as inactive.
    if (!parameter.corridor_active || !(parameter.active == 1.0f)) {
      parameter.color = 0;
    } else {
      if (parameter.corridor_zero != 0) {
        parameter.type_corridor = 2;
      }
      if (parameter.type_corridor == 2) {
        parameter.color =
            color_corridor(parameter.value, parameter.green, parameter.yellow, parameter.orange,
                           static_cast<float>(parameter.corridor_zero));
      } else if (parameter.orange > parameter.yellow) {
        parameter.color =
            color(parameter.value, parameter.green, parameter.yellow, parameter.orange);
      } else {
        // The order of the two upper thresholds alone tells which way the scale runs: a
        // falling yellow-to-orange means low values are bad (battery, signal strength).
        parameter.color =
            color_invers(parameter.value, parameter.green, parameter.yellow, parameter.orange);
      }
    }
    parameter.weighted = static_cast<float>(parameter.color) * (parameter.kz * parameter.active);
    if (static_cast<double>(parameter.weighted) > kLeastWeightedColor) {
      status += parameter.weighted;
      ++counted;
      if (parameter.weighted > status_max) {
        status_max = parameter.weighted;
      }
    }
  }
  status = counted != 0 ? status / static_cast<float>(counted) : 1.0f;
}

int Status::color(float v, float g, float y, float o) {
  if (g >= v) {
    return 1;
  }
  if (y >= v) {
    return 2;
  }
  if (o >= v) {
    return 3;
  }
  return 4;
}

int Status::color_invers(float v, float g, float y, float o) {
  if (v >= g) {
    return 1;
  }
  if (v >= y) {
    return 2;
  }
  if (v >= o) {
    return 3;
  }
  return 4;
}

int Status::color_corridor(float v, float g, float y, float o, float z) {
  if (withinCorridor(v, g, z)) {
    return 1;
  }
  if (withinCorridor(v, y, z)) {
    return 2;
  }
  if (withinCorridor(v, o, z)) {
    return 3;
  }
  return 4;
}

std::string Status::statusText(float value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(std::numeric_limits<float>::max_digits10);
  stream << value;
  std::string text = stream.str();
  for (char& c : text) {
    if (c == ',') {
      c = '.';
    }
  }
  return text;
}

std::string Status::print() const {
  std::string text = "calculate status:\n";
  for (const auto& [name, parameter] : parameters) {
    text += name + " : " + statusText(parameter.green) + "/" + statusText(parameter.yellow) + "/" +
            statusText(parameter.orange) + " : " + statusText(parameter.value) + " : " +
            statusText(parameter.kz) + "*" + statusText(parameter.active) + "*" +
            std::to_string(parameter.color) + " status: " + statusText(parameter.weighted) + "\n";
  }
  text += "final status: " + statusText(status) + "\n";
  return text;
}
