// The three-axis block of the modules with an IIS3DWBTR accelerometer and no magnetic
// channel (module type 7).
#pragma once

#include "blocks/vibration/second_generation.h"

namespace vibro_tk703_3_ve_ns {

// One measurement: the axes in `in` (NaN samples are set to 0 in place and count as lost).
void vibro_tk703_3_ve(vibration::SecondGenerationInput& in, vibration::SecondGenerationOutput& out);

} // namespace vibro_tk703_3_ve_ns
