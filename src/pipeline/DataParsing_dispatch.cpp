// One run of the measurement for one control point: which axis letter stands where, the
// point's motor and bearing, and the computation that the module type and measurement kind
// select.
#include "pipeline/DataParsing.h"

#include <cctype>
#include <cmath>
#include <string>

#include "equipment/Aggregate.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "logging/PrintLog.h"
#include "store/DataBase.h"

namespace {

// An axis text names up to two triples of letters; from the seventh letter on nothing counts.
constexpr std::size_t kAxisPlaces = 6;
// The speed above which a machine counts as running.
constexpr float kRunningSpeed = 10.0f;

// Puts the letter of place `place` of an axis text into the map of its triple: the key is the
// letter that normally stands in that place ("xyz" or "abc"), the value the letter found.
void placeAxis(std::map<std::string, std::string>& first,
               std::map<std::string, std::string>& second, const char* normal, std::size_t place,
               char letter) {
  std::map<std::string, std::string>& triple = place < 3 ? first : second;
  triple[std::string(1, normal[place % 3])] = std::string(1, letter);
}

} // namespace

bool DataParsing::rawMatchesPoint() const {
  for (const channel& ch : channels) {
    if (ch.control_point_id != point.id) {
      continue;
    }
    for (const raw& piece : raws) {
      // A piece without a sub-channel concerns every channel of the module.
      if (ch.raw_param.find(piece.sub_channel) != std::string::npos) {
        return true;
      }
    }
  }
  return false;
}

void DataParsing::run(bool has_point) {
  std::string axes;
  if (has_point) {
    // The channel that stands for the whole module carries the axis text of the point.
    for (const channel& ch : channels) {
      if (ch.raw_param.empty()) {
        axes = ch.axis_order;
        break;
      }
    }
  } else {
    axes = axis_order;
  }
  for (char& c : axes) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  // The maps are not reset: a point whose text is shorter keeps what an earlier point of the
  // same row left in the places its own text does not reach.
  for (std::size_t place = 0; place < axes.size() && place < kAxisPlaces; ++place) {
    const char letter = axes[place];
    if (letter == 'x' || letter == 'y' || letter == 'z') {
      placeAxis(axes_xyz_first, axes_xyz_second, "xyz", place, letter);
    } else if (letter == 'a' || letter == 'b' || letter == 'c') {
      placeAxis(axes_abc_first, axes_abc_second, "abc", place, letter);
    }
  }

  // An invalid motor or bearing is no failure of the run: the computations get the objects
  // as they are and decide what they can do without them.
  DataMotor motor(db, has_point ? point.motor_id : 0);
  if (!motor.valid) {
    log->print(motor.message);
  }
  const int bearing_id = has_point && !point.bearing_ids.empty() && point.bearing_ids[0] != 0
                             ? point.bearing_ids[0]
                             : 0;
  DataBearing bearing(db, bearing_id);
  if (!bearing.valid) {
    log->print(bearing.message);
  }

  if (no_data) {
    log->print("no data in fu_raw\n");
    return;
  }

  // Independent tests in this order; a module has one type, so at most one computation runs.
  // Pairs that verify lets through and this table does not name (5 with 3, 3 with 9 to 14, 7
  // with 2) compute nothing on purpose.
  DataMotor* m = &motor;
  DataBearing* b = &bearing;
  const int p = type_param;
  if (type_mod == 1 || type_mod == 9) {
    computed = computeModule1(m, b);
  }
  if (type_mod == 2) {
    computed = computeModule2();
  }
  if (type_mod == 5 && (p == 4 || p == 5)) {
    computed = computeModule5(m, b);
  }
  if (type_mod == 6 && p >= 1 && p <= 6 && !module->multichannel) {
    computed = computeModule6(m, b);
  }
  // A multichannel module sends one piece per sub-channel; a point none of whose channels
  // takes a piece of this measurement is passed over.
  if (type_mod == 6 && p >= 1 && p <= 6 && module->multichannel && rawMatchesPoint()) {
    computed = computeModule6_single(m, b);
  }
  if (type_mod == 7 && p == 4) {
    computed = computeModule7(m, b);
  }
  if (type_mod == 3 && (p <= 8 || p >= 15)) {
    computed = computeModule3(m, b);
  }
  if (type_mod == 8) {
    computed = computeModule8();
  }
  if (type_mod == 10 && (p == 9 || p == 10)) {
    computed = computeModule10(m, b);
  }
  if (type_mod == 11 && p == 1) {
    computed = computeModule11();
  }
  if (type_mod == 101) {
    computed = computeModule101(m, b);
  }
  if (type_mod == 102) {
    computed = computeModule102(m, b);
  }
  if (type_mod == 103) {
    computed = computeModule103();
  }
  if (type_mod == 104) {
    computed = computeModule104();
  }
  if (type_mod == 105) {
    computed = computeModule105();
  }
  if (type_mod == 106) {
    computed = computeModule106();
  }
  if (type_mod == 12 && p == 1) {
    computed = computeModule6_single(m, b);
  }

  // Machine state from the speed of a vibration module. The three module types are joined by
  // "and", so the block is never entered and AGGREGATE.MODE is not written today. The guard is
  // kept exactly so on purpose; the block stands ready for the day it changes.
  const bool vibration_module = type_mod == 1 && type_mod == 9 && type_mod == 10;
  if (has_point && computed && vibration_module && !results.empty() && !recalculation) {
    const auto speed = values.find("SPEED");
    if (results[0].status_calc != 1 && results[0].params.count("SPEED") != 0 &&
        speed != values.end() && !std::isnan(speed->second)) {
      static const char* const kStates[] = {"unknown", "running", "not running", "на профилактике"};
      const int mode = speed->second > kRunningSpeed ? 1 : 2;
      db->writeAggregateMode(aggregate->id, mode);
      log->print("aggregate: " + std::to_string(aggregate->id) + ", state: " + kStates[mode] +
                 "\n");
    }
  }
}
