// The configuration word of an electrical module as its block reads it: the wiring, the
// bearing and rotor analysis, the repair of a phase that is not measured, and the power mode.
#pragma once

#include "blocks/vibration/bearing.h"
#include "blocks/vibration/rotor.h"

namespace calc_modul_7R_full_ns {

// How the active, reactive and apparent power are found (bits 18, 17, 16 of the word).
enum class PowerMode {
  not_mode_power,           // 000: no power
  mode_three_wattmeter,     // 001, 110, 111: time-domain mean per phase
  mode_two_wattmeter,       // 010: two analytic wattmeters on the line voltages
  mode_two_wattmeter_faz,   // 011: two wattmeters by the measured phase angle
  mode_three_wattmeter_c,   // 100: three analytic wattmeters
  mode_three_wattmeter_c_3, // 101: no power
};

// The current channel that two-current wiring rebuilds from the other two (bits 0x80, 0x40).
enum class RebuiltPhase { none, a, b, c };

// config_function_586_1 and the entry's own decoding, by the names the word's bits have.
struct Options {
  bool sim;                           // 0x70000000 "sim": samples are physical values already
  bool four;                          // 0x1 "four": phase voltages with a neutral, else "three"
  vibration::BearingMode bearing;     // 0x4 "mode_bpf_envspectrum", else "mode_bpf_filter_cor"
  bool no_bearing_lines;              // 0x10: a bearing without rolling elements
  bool two_current;                   // 0x20 "two_current", else "three_current"
  RebuiltPhase rebuilt;               // 0x80, 0x40
  vibration::FrequencyMode frequency; // 0x100 "frequency_control", else "frequency_fixed"
  bool keep_rebuilt_rms;              // 0x200: the rebuilt phase keeps its own RMS
  bool negate_P, negate_Q;            // 0x400, 0x800: the totals change sign at the end
  PowerMode power;
};
Options config_function_586_1(unsigned config);

} // namespace calc_modul_7R_full_ns
