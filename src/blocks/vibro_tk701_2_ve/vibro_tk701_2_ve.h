// The vibration block of the older modules with LIS344 accelerometers and a magnetic channel
// (module types 1 and 9), on a time base of 2000 Hz.
#pragma once

#include "blocks/vibration/first_generation.h"

namespace vibro_tk701_2_ve_ns {

// One measurement: the field and the three axes in counts (NaN samples are set to 0 in place
// and count as lost; runs of 32 lost samples set the status), Lv and Lm samples, the LIS344
// gains ku and the channel gains g_del of X, Y, Z, the motor's rated power and pole pairs, its
// bearing and the option word.
void vibro_tk701_2_ve(coder::array<double, 2>& magnet, coder::array<double, 2>& vibro_x,
                      coder::array<double, 2>& vibro_y, coder::array<double, 2>& vibro_z, double Lv,
                      double Lm, const double ku[3], double power, double poles,
                      const double g_del[3], const vibration::BearingGeometry& bearing,
                      unsigned word, vibration::FirstGenerationOutput& out);

} // namespace vibro_tk701_2_ve_ns
