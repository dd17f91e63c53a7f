#include "blocks/vibro_tk703_4_ve/vibro_tk703_4_ve.h"

namespace vibro_tk703_4_ve_ns {

void vibro_tk703_4_ve(vibration::SecondGenerationInput& in,
                      vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kTk703_4, in, out);
}

} // namespace vibro_tk703_4_ve_ns
