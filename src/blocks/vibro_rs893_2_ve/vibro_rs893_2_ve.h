// The one-channel block of the wireless RS89x sensors (module type 102).
#pragma once

#include "blocks/vibration/second_generation.h"

namespace vibro_rs893_2_ve_ns {

// One measurement: the axes in `in` (NaN samples are set to 0 in place and count as lost).
void vibro_rs893_2_ve(vibration::SecondGenerationInput& in, vibration::SecondGenerationOutput& out);

} // namespace vibro_rs893_2_ve_ns
