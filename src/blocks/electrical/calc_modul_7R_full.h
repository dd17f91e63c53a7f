// The math block of the voltage and current modules (module type 3): from the three voltages
// and three currents of one measurement, the RMS values, the harmonic distortion, the power
// of the connection, and from the current alone the supply frequency, the slip, the bearing
// lines and the state of the rotor's bars.
#pragma once

#include "blocks/electrical/samples.h"
#include "blocks/vibration/bearing.h"
#include "coder/coder_array.h"

#include <cmath>

namespace calc_modul_7R_full_ns {

// The motor as the block takes it (struct2_T).
struct Motor {
  double p2 = 0.0;    // pole pairs
  double mains = 0.0; // the supply frequency of the plant, 50
  double speed = 0.0; // rated, rpm
  double power = 0.0; // rated, kW
};

// One measurement (the samples are changed in place: the frame scales them and rebuilds a
// phase that is not measured).
struct ElectricalInput {
  coder::array<double, 2> u[3], i[3]; // counts of phases a, b, c
  ChannelGain u_gain[3], i_gain[3];
  double N = 0.0; // Lwin, the count in every mean
  vibration::BearingGeometry bearing;
  Motor motor;
  double type_param = 0.0; // 4 voltages at 500 Hz, 8 currents at 500 Hz, 21 both at 10000 Hz
  unsigned config = 0;
};

// The harmonic table of one channel (struct8_T): the power of the fundamental and of each
// harmonic in dB, and their frequencies in Hz, NaN where none was found.
struct HarmonicTable {
  coder::array<double, 1> power, frequency;
};

// The twelve power fields (struct6_T); index 0 is the total, 1 to 3 the phases a, b, c. W,
// var and VA.
struct PowerFields {
  double P[4] = {NAN, NAN, NAN, NAN}, Q[4] = {NAN, NAN, NAN, NAN}, S[4] = {NAN, NAN, NAN, NAN};
};

// Everything starts as NaN (the defect words as 0): what the measurement's kind does not
// reach stays NaN.
struct ElectricalOutput {
  double U[3] = {NAN, NAN, NAN};      // phase voltage RMS, V
  double U_line[3] = {NAN, NAN, NAN}; // line voltage RMS AB, BC, CA, V
  double U_0 = NAN;                   // zero-sequence voltage, V
  double I[3] = {NAN, NAN, NAN};      // phase current RMS, A (struct3_T)
  double THD_I[3] = {NAN, NAN, NAN};  // percent (struct4_T)
  double THD_U[3] = {NAN, NAN, NAN};  // percent (struct5_T)
  PowerFields power;
  // Bearing lines in the current (struct7_T): BPFO, BPFI, FTF, BSF, each the modulus of its
  // best scan sum (filter_cor) or its envelope amplitude (envspectrum), A.
  double bearing_lines[4] = {NAN, NAN, NAN, NAN};
  HarmonicTable voltage_harmonics[3], current_harmonics[3];
  // Words 0 to 9 defect numbers, 10 to 19 their levels; 4 is a rotor defect.
  unsigned block_defects[20] = {};
  unsigned status = 0, status_bits = 0;
  // Found on the way and kept for the offline view: the supply frequency and slip from the
  // current, the two slip sidebands' distances below the mains line (10 log10 of the
  // amplitude ratio), and the rotor analysis's quality, 2 when it raised a defect, else 1.
  double supply = NAN, slip = NAN, sideband_low = NAN, sideband_high = NAN, quality = NAN;
};

// calc_modul_7R_full: the counts become volts and amperes (data_586_1), a phase current that
// two-current wiring does not measure is rebuilt, and the measurement's kind chooses the
// stages: 4 the voltages at 500 Hz, 8 the currents at 500 Hz, 21 both at 10000 Hz and the
// power. Any other kind leaves every value NaN. The power totals change sign under 0x400 (P)
// and 0x800 (Q). The status counts the lost samples of the channels the kind measures.
void calc_modul_7R_full(ElectricalInput& in, ElectricalOutput& out);

} // namespace calc_modul_7R_full_ns
