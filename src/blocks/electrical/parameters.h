// The voltages and currents of one measurement as RMS values and harmonic distortion. A
// module samples at one of two rates, and each stage exists once with the constants of both:
// the single-group measurements (type_param 4 and 8) at 500 Hz, the full one (21) at 10000 Hz.
#pragma once

#include "blocks/electrical/calc_modul_7R_full.h"
#include "blocks/electrical/options.h"

namespace calc_modul_7R_full_ns {

struct Stream {
  double rate;   // Hz
  int harmonics; // tones that the distortion reads, the fundamental included
  double dt;     // the time step of the current analysis's scans, s
};
// calc_modul_v, calc_modul_i
constexpr Stream kSingleGroup{500.0, 5, 0.002};
// b_calc_modul_v, b_calc_modul_i
constexpr Stream kFullMeasurement{10000.0, 40, 0.0001};

using Phases = coder::array<double, 2>[3];

// sqrt(sum(x.^2) * (1 / N)), N the measurement's count, not the array's.
double rms(const coder::array<double, 2>& x, double N);

// calc_modul_v: phase and line RMS by the wiring ("three": the channels carry the line
// voltages AB, BC, CA and a phase is the line over sqrt 3; "four": the phase voltages, and a
// line is the RMS of the difference), U_0 = RMS(u_a + u_b + u_c) / 3, and the distortion of
// each channel, in percent where the supply passes the band test (see distortionGate).
void calc_modul_v(const Stream& stream, const Phases& u, double N, const Options& options,
                  ElectricalOutput& out);

// calc_modul_i: the phase RMS (the phase that two-current wiring rebuilds gets the mean of
// the other two unless 0x200 is set), the distortion of each channel, and the current
// signature analysis on the first Clarke component (2 i_a - i_b - i_c) / 3: supply and slip,
// the bearing lines (NaN under 0x10), the rotor's slip sidebands.
void calc_modul_i(const Stream& stream, const Phases& i, double N, const Motor& motor,
                  const vibration::BearingGeometry& bearing, const Options& options,
                  ElectricalOutput& out);

} // namespace calc_modul_7R_full_ns
