#include "blocks/vibration/options.h"

namespace vibration {

Options config_function(unsigned word) {
  return {(word & 0x1u) != 0,
          (word & 0x4u) != 0 ? BearingMode::envspectrum : BearingMode::filter_cor,
          (word & 0x10u) != 0,
          (word & 0x100u) != 0 ? FrequencyMode::control : FrequencyMode::fixed,
          (word & 0x1000u) != 0 ? FieldFilter::amp2 : FieldFilter::amp1,
          (word & 0x2000u) != 0,
          (word & 0x80000000u) != 0};
}

} // namespace vibration
