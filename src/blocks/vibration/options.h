// The option word that a module's configuration hands to its vibration block.
#pragma once

#include "blocks/vibration/bearing.h"
#include "blocks/vibration/field_analysis.h"
#include "blocks/vibration/rotor.h"

namespace vibration {

// config_function: the bits of the word, by the names the evaluation gives them.
struct Options {
  bool hanning;            // 0x1 "win_hanning", else "win_rectwin" (read by no stage)
  BearingMode bearing;     // 0x4 "mode_bpf_envspectrum", else "mode_bpf_filter_cor"
  bool journal;            // 0x10: a journal bearing, oil whirl in place of fault lines
  FrequencyMode frequency; // 0x100 "frequency_control", else "frequency_fixed"
  FieldFilter field;       // 0x1000 "filter_Amp_2", else "filter_Amp_1"
  bool two_lowest;         // 0x2000: the vibration's rotor frequency from the two lowest axes
  bool skip_rotor;         // 0x80000000: no rotor analysis
};
Options config_function(unsigned word);

} // namespace vibration
