// A motor on its bearings as its sensors see it: the acceleration of each axis and the stray
// magnetic field, built from the machine's physics so that every line a block looks for sits
// at a known frequency with a known amplitude.
#pragma once

#include "blocks/vibration/bearing.h"

#include <string>
#include <vector>

namespace synth {

struct Machine {
  double supply = 50.0; // Hz
  double pole_pairs = 2.0;
  double slip = 0.02;
  // Acceleration amplitudes (g) of the lines at 1, 2 and 3 times the rotor frequency.
  double harmonics[3] = {0.05, 0.0, 0.0};
  vibration::BearingGeometry bearing{};
  // An outer-race defect: a line of this amplitude (g) at the outer-race frequency, and the
  // same depth of impacts ringing a structural resonance at `resonance` Hz (0: none), whose
  // envelope then holds a line of this amplitude at the outer-race frequency.
  double outer_race = 0.0;
  double resonance = 0.0;
  double noise = 0.0; // g RMS, white
  // The stray field in counts of the magnetic sensor: the supply line and the two lines of the
  // rotor beside it at supply -+ rotor frequency, the latter turned by `rotor_phase` radians.
  double field = 3000.0, field_rotor = 60.0, rotor_phase = 0.0;
  unsigned seed = 1;

  double rotorFrequency() const { return (1.0 - slip) * supply / pole_pairs; }
};

// Phase and gain of each axis: the three axes see the same lines from different directions.
constexpr double kAxisGain[3] = {1.0, 0.8, 0.6};

// n samples of axis 0, 1 or 2 at `rate` Hz, in g, starting at t = 0.
std::vector<double> acceleration(const Machine& m, int axis, double rate, int n);

// n samples of the stray field at `rate` Hz, in sensor counts around a mid-scale of 2048 (no
// sample is exactly zero, which the blocks would take for a lost one).
std::vector<double> magneticField(const Machine& m, double rate, int n);

// Acceleration in g as IIS3DWBTR counts at the full scale FS (g), rounded, clipped to 16 bits.
std::vector<double> accelerometerCounts(const std::vector<double>& g, double FS);

// Acceleration in g as the 24-bit counts of an ADS131 converter behind a channel of g_del mV
// per g (1200 mV at full scale), negative values in the complement against 16777215 that the
// blocks undo.
std::vector<double> ads131Counts(const std::vector<double>& g, double g_del);

// Acceleration in g as an RS89x sensor sends it, in micro-g.
std::vector<double> rs89xCounts(const std::vector<double>& g);

// Counts as a module writes them into fu_raw.data: "0x", then each count as a signed 16-bit
// value (format 2), least significant byte first.
std::string moduleSamples(const std::vector<double>& counts);

// The statements that store one measurement row of a type 10 module of `source` with id `id`,
// dated `date` (an SQL expression): the three axes at 26667 Hz (16384 samples, 16 g full scale)
// and the stray field at 500 Hz (4096 samples), with their rates in the pieces' settings.
std::string type10Row(const Machine& m, int id, long source, const std::string& date);

} // namespace synth
