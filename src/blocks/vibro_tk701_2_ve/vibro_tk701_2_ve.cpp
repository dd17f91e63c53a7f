#include "blocks/vibro_tk701_2_ve/vibro_tk701_2_ve.h"

namespace vibro_tk701_2_ve_ns {

void vibro_tk701_2_ve(coder::array<double, 2>& magnet, coder::array<double, 2>& vibro_x,
                      coder::array<double, 2>& vibro_y, coder::array<double, 2>& vibro_z, double Lv,
                      double Lm, const double ku[3], double power, double poles,
                      const double g_del[3], const vibration::BearingGeometry& bearing,
                      unsigned word, vibration::FirstGenerationOutput& out) {
  vibration::FirstGenerationInput in;
  in.magnet = magnet;
  in.vibro[0] = vibro_x, in.vibro[1] = vibro_y, in.vibro[2] = vibro_z;
  in.Lv = Lv, in.fv = 2000.0, in.Lm = Lm, in.fm = 500.0, in.power = power, in.poles = poles;
  in.bearing = bearing, in.word = word;
  for (int a = 0; a < 3; ++a) {
    in.ku[a] = ku[a], in.g_del[a] = g_del[a];
  }
  vibration::runFirstGeneration(vibration::kTk701_2, in, out);
  vibro_x = in.vibro[0], vibro_y = in.vibro[1], vibro_z = in.vibro[2];
}

} // namespace vibro_tk701_2_ve_ns
