// A motor on a three-phase supply as a voltage and current module sees it: the phase voltages
// and currents with their harmonics, and in the current the traces of the motor's faults,
// each at a known frequency with a known amplitude.
#pragma once

#include "blocks/electrical/samples.h"
#include "blocks/vibration/bearing.h"

#include <string>
#include <vector>

namespace synth {

struct ThreePhaseMotor {
  double supply = 49.8;              // Hz
  double voltage = 230.0;            // phase RMS of the fundamental, V
  double current = 12.0;             // phase RMS of the fundamental, A
  double angle = 0.6435011087932844; // the current lags its voltage by this, rad (cos 0.8)
  // 5th and 7th harmonics, as fractions of the fundamental's amplitude; the 5th turns against
  // the supply, the 7th with it, as a rectifier load makes them.
  double voltage_5th = 0.0, voltage_7th = 0.0, current_5th = 0.0, current_7th = 0.0;
  double unbalance = 0.0; // phase A's voltage is 1 + unbalance times the others'
  double slip = 0.03, pole_pairs = 2.0;
  // Lines of a mixed eccentricity at supply -+ rotor frequency, and the slip sidebands of
  // broken bars at (1 -+ 2 slip) supply, as fractions of the current's fundamental.
  double eccentricity = 0.0, sideband_low = 0.0, sideband_high = 0.0;
  // Bearing lines in the current at the bearing's fault frequencies for a 25 Hz shaft, A:
  // plain lines, or, with a carrier (Hz), the depth of that carrier's amplitude modulation
  // (peak A of the carrier is `carrier_amplitude`).
  vibration::BearingGeometry bearing{};
  double bearing_line = 0.0, carrier = 0.0, carrier_amplitude = 1.0;
  double noise = 0.0; // A RMS of white noise in each current
  unsigned seed = 1;

  double rotorFrequency() const { return (1.0 - slip) * supply / pole_pairs; }
};

// n samples at `rate` Hz from t = 0 of phase 0, 1, 2 (A, B, C): the phase voltage, V, and the
// phase current, A. Every line of the current is a balanced three-phase set, so that the
// current's Clarke component holds it at its phase A amplitude.
std::vector<double> phaseVoltage(const ThreePhaseMotor& m, int phase, double rate, int n);
std::vector<double> phaseCurrent(const ThreePhaseMotor& m, int phase, double rate, int n);

// Volts or amperes as the counts of a channel with the gain `gain`, around `mid` counts (an
// exact 0 would be a lost sample), rounded.
std::vector<double> channelCounts(const std::vector<double>& values,
                                  const calc_modul_7R_full_ns::ChannelGain& gain, double mid);

// The statements that store one measurement row of a type 3 module: type_param 4 (voltages),
// 8 (currents) at 500 Hz or 21 (both) at 10000 Hz, n samples a channel, 16-bit counts at the
// gain rk 0, rn 0 with ku 20 for the voltages and 1 for the currents, given in each piece.
std::string type3Row(const ThreePhaseMotor& m, int id, long source, const std::string& date,
                     int type_param, int n);

} // namespace synth
