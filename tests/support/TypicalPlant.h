#pragma once

#include <string>

#include "support/PlantBuilder.h"

namespace vek_test {

// The shape of a typical installation for the demo, benchmarks and tests that need a whole
// plant rather than a single case.
//
// One organization ("plant", UTC+3:00) with one site (node 1) and one gateway (1). Machine m
// (1-based) is aggregate m, a motor-driven pump with one control point 10 * m + 1 that bears
// motor m and rolling bearing m. On it sits vibration module m (type 10, revision 1, source
// 1000 + m, five-minute period) with channel 100 * m (axis order "xyzxyz") bound to the point,
// and visualizations 1000 * m + k of its main parameters with thresholds: class 1 FREAL, FRM,
// SPEED, IMBALANCE_X/Y/Z, BEARING_OUTER_RING, T_CASE; class 2 TEMP, RSSI, U_BATTERY.
//
// Per module, `measurements` rounds, `minutes_between` apart from `start`, each of three rows
// with consecutive ids from `first_measurement_id`, module by module within a round: the
// vibration measurement (type_param 9: x, y, z vibration samples, c_type 2, at 25600 Hz with
// a 50 Hz supply, and x, y, z magnetic samples at 6400 Hz), the case temperature (type_param
// 10) and a telemetry row (type_param 0, semicolon form). The vibration is a rotor line at
// 24.6 Hz with its second harmonic and a little deterministic noise, larger on later machines.
struct TypicalPlant {
  int machines = 2;
  int measurements = 3;
  int samples = 4096; // per axis of a vibration measurement
  int first_measurement_id = 1;
  std::string start = "2024-05-01 10:00:00";
  int minutes_between = 10;
};

// Adds the rows of plant to builder.
void addTypicalPlant(PlantBuilder& builder, const TypicalPlant& plant);

// The time text start plus seconds, in the form "2024-05-01 10:10:00"; start is read in the
// same form, as a time without zone.
std::string timeAfter(const std::string& start, long seconds);

} // namespace vek_test
