#include "blocks/vibro_rs893_2_ve/vibro_rs893_2_ve.h"

namespace vibro_rs893_2_ve_ns {

void vibro_rs893_2_ve(vibration::SecondGenerationInput& in,
                      vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kRs893_2, in, out);
}

} // namespace vibro_rs893_2_ve_ns
