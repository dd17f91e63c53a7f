// What the adapters of the vibration modules share in reading a row: the module's limits, the
// sample pieces by axis, and the module type's defaults.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "coder/coder_array.h"
#include "records/types.h"

namespace vibration_rows {

// The sensor's full scale in g, and the sample rates in Hz, that the modules can have.
constexpr double kLowestFullScale = 1.0, kHighestFullScale = 100.0;
constexpr double kLowestRate = 100.0, kHighestRate = 50000.0;
// The option word in which only the top bit is set: the rotor analysis is off.
constexpr unsigned kNoRotorAnalysis = 0x80000000u;
// A journal bearing: oil whirl in place of the rolling-element fault lines.
constexpr int kJournalBearing = 3;
constexpr unsigned kJournalBit = 0x10u;
// The converter's mark of a temperature sensor that does not answer.
constexpr double kNoSensorMark = -32767.0;
// A channel gain below this was not given.
constexpr double kLeastGain = 1.0;

inline bool isAxis(const std::string& sub_channel) {
  return sub_channel == "x" || sub_channel == "y" || sub_channel == "z";
}

// The suffix of axis a's parameters in a block of `axes` axes: _X, _Y, _Z, or none for one.
inline std::string axisSuffix(int a, int axes) {
  return axes == 1 ? std::string() : std::string("_") + "XYZ"[a];
}

// A module-type default applies to a measurement of its own kind or to every kind.
inline bool applies(const module_param& p, int type_param) {
  return p.type_param == 0 || p.type_param == type_param;
}

// The piece's samples as a block's row of n values; missing samples are 0, which the block
// takes for lost ones and repairs.
inline coder::array<double, 2> samples(const raw* piece, int n) {
  coder::array<double, 2> row;
  row.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    row[k] = piece != nullptr && k < int(piece->values.size()) ? piece->values[size_t(k)] : 0.0;
  }
  return row;
}

// The sample pieces of a row by the block's axes, through the axis maps of the point's
// channel, and the sample counts: the last piece of each kind sets its count.
struct Pieces {
  const raw* vibro[3] = {nullptr, nullptr, nullptr};
  const raw* magnet[3] = {nullptr, nullptr, nullptr};
  int Lv = 0, Lm = 0;
};
inline Pieces gather(const std::vector<raw>& raws, std::map<std::string, std::string>& first,
                     std::map<std::string, std::string>& second) {
  static const char* const kAxes[] = {"x", "y", "z"};
  Pieces p;
  for (const raw& piece : raws) {
    if (!isAxis(piece.sub_channel) || (piece.param_type_id != 1 && piece.param_type_id != 2)) {
      continue;
    }
    const bool is_vibro = piece.param_type_id == 2;
    (is_vibro ? p.Lv : p.Lm) = int(piece.values.size());
    for (int a = 0; a < 3; ++a) {
      if (piece.sub_channel == (is_vibro ? first : second)[kAxes[a]]) {
        (is_vibro ? p.vibro : p.magnet)[a] = &piece;
      }
    }
  }
  return p;
}

} // namespace vibration_rows
