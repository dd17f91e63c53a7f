#include "blocks/vibro_tk701_3_ve/vibro_tk701_3_ve.h"

namespace vibro_tk701_3_ve_ns {

void vibro_tk701_3_ve(const coder::array<double, 2>& magnet_x, const coder::array<double, 2>&,
                      const coder::array<double, 2>&, coder::array<double, 2>& vibro_x,
                      coder::array<double, 2>& vibro_y, coder::array<double, 2>& vibro_z, double Lv,
                      double fv, double Lm, double fm, double power, double poles,
                      const vibration::BearingGeometry& bearing, double FS, unsigned word,
                      vibration::FirstGenerationOutput& out) {
  vibration::FirstGenerationInput in;
  in.magnet = magnet_x;
  in.vibro[0] = vibro_x, in.vibro[1] = vibro_y, in.vibro[2] = vibro_z;
  in.Lv = Lv, in.fv = fv, in.Lm = Lm, in.fm = fm, in.power = power, in.poles = poles;
  in.bearing = bearing, in.FS = FS, in.word = word;
  vibration::runFirstGeneration(vibration::kTk701_3, in, out);
  vibro_x = in.vibro[0], vibro_y = in.vibro[1], vibro_z = in.vibro[2];
}

} // namespace vibro_tk701_3_ve_ns
