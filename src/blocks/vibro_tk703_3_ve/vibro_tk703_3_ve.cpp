#include "blocks/vibro_tk703_3_ve/vibro_tk703_3_ve.h"

namespace vibro_tk703_3_ve_ns {

void vibro_tk703_3_ve(vibration::SecondGenerationInput& in,
                      vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kTk703_3, in, out);
}

} // namespace vibro_tk703_3_ve_ns
