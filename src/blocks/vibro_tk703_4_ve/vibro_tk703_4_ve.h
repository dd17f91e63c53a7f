// The three-axis block of the modules with an ADS131 converter (module type 5).
#pragma once

#include "blocks/vibration/second_generation.h"

namespace vibro_tk703_4_ve_ns {

// One measurement: the axes in `in` (NaN samples are set to 0 in place and count as lost).
void vibro_tk703_4_ve(vibration::SecondGenerationInput& in, vibration::SecondGenerationOutput& out);

} // namespace vibro_tk703_4_ve_ns
