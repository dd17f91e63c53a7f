#include "blocks/electrical/options.h"

namespace calc_modul_7R_full_ns {

Options config_function_586_1(unsigned config) {
  static const PowerMode kPowerModes[8] = {
      PowerMode::not_mode_power,         PowerMode::mode_three_wattmeter,
      PowerMode::mode_two_wattmeter,     PowerMode::mode_two_wattmeter_faz,
      PowerMode::mode_three_wattmeter_c, PowerMode::mode_three_wattmeter_c_3,
      PowerMode::mode_three_wattmeter,   PowerMode::mode_three_wattmeter};
  static const RebuiltPhase kRebuilt[4] = {RebuiltPhase::none, RebuiltPhase::a, RebuiltPhase::b,
                                           RebuiltPhase::c};
  return {(config & 0x70000000u) != 0,
          (config & 0x1u) != 0,
          (config & 0x4u) != 0 ? vibration::BearingMode::envspectrum
                               : vibration::BearingMode::filter_cor,
          (config & 0x10u) != 0,
          (config & 0x20u) != 0,
          kRebuilt[(config >> 6) & 0x3u],
          (config & 0x100u) != 0 ? vibration::FrequencyMode::control
                                 : vibration::FrequencyMode::fixed,
          (config & 0x200u) != 0,
          (config & 0x400u) != 0,
          (config & 0x800u) != 0,
          kPowerModes[(config >> 16) & 0x7u]};
}

} // namespace calc_modul_7R_full_ns
