#include "blocks/vibro_rs893_4_ve/vibro_rs893_4_ve.h"

namespace vibro_rs893_4_ve_ns {

void vibro_rs893_4_ve(vibration::SecondGenerationInput& in,
                      vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kRs893_4, in, out);
}

} // namespace vibro_rs893_4_ve_ns
