// The one-channel block of the ADS131 modules that send each channel on its own
// (module types 6, multichannel, and 12).
#pragma once

#include "blocks/vibration/second_generation.h"

namespace vibro_tk703_2_single_ve_ns {

// One measurement: the axes in `in` (NaN samples are set to 0 in place and count as lost).
void vibro_tk703_2_single_ve(vibration::SecondGenerationInput& in,
                             vibration::SecondGenerationOutput& out);

} // namespace vibro_tk703_2_single_ve_ns
