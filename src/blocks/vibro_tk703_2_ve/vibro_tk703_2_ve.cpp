#include "blocks/vibro_tk703_2_ve/vibro_tk703_2_ve.h"

namespace vibro_tk703_2_ve_ns {

void vibro_tk703_2_ve(vibration::SecondGenerationInput& in,
                      vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kTk703_2, in, out);
}

} // namespace vibro_tk703_2_ve_ns
