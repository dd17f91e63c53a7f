// The vibration block of the modules with an IIS3DWBTR accelerometer and a magnetic channel
// (module type 10): the newest first-generation form.
#pragma once

#include "blocks/vibration/first_generation.h"

namespace vibro_tk701_3_ve_ns {

// One measurement: the field (magnet_y and magnet_z are not read), the three axes in counts
// (NaN samples are set to 0 in place and count as lost), Lv samples at fv Hz, Lm field samples
// at fm Hz, the motor's rated power and pole pairs, its bearing, the sensor's full scale FS in
// g and the option word.
void vibro_tk701_3_ve(const coder::array<double, 2>& magnet_x,
                      const coder::array<double, 2>& magnet_y,
                      const coder::array<double, 2>& magnet_z, coder::array<double, 2>& vibro_x,
                      coder::array<double, 2>& vibro_y, coder::array<double, 2>& vibro_z, double Lv,
                      double fv, double Lm, double fm, double power, double poles,
                      const vibration::BearingGeometry& bearing, double FS, unsigned word,
                      vibration::FirstGenerationOutput& out);

} // namespace vibro_tk701_3_ve_ns
