#include "blocks/vibro_tk703_2_single_ve/vibro_tk703_2_single_ve.h"

namespace vibro_tk703_2_single_ve_ns {

void vibro_tk703_2_single_ve(vibration::SecondGenerationInput& in,
                             vibration::SecondGenerationOutput& out) {
  vibration::runSecondGeneration(vibration::kTk703_2_single, in, out);
}

} // namespace vibro_tk703_2_single_ve_ns
