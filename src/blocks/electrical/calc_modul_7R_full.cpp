#include "blocks/electrical/calc_modul_7R_full.h"

#include "blocks/electrical/options.h"
#include "blocks/electrical/parameters.h"
#include "blocks/electrical/power.h"

namespace calc_modul_7R_full_ns {
namespace {

// Kirchhoff's law on a motor without neutral: the three currents sum to 0, so two-current
// wiring gives the third.
void rebuildPhase(RebuiltPhase rebuilt, Phases& i) {
  if (rebuilt == RebuiltPhase::none) {
    return;
  }
  const int p = int(rebuilt) - 1;
  coder::array<double, 2>& x = i[p];
  const coder::array<double, 2>&a = i[(p + 1) % 3], &b = i[(p + 2) % 3];
  for (int k = 0; k < x.numel() && k < a.numel() && k < b.numel(); ++k) {
    x[k] = -(a[k] + b[k]);
  }
}

} // namespace

void calc_modul_7R_full(ElectricalInput& in, ElectricalOutput& out) {
  out = ElectricalOutput();
  const Options options = config_function_586_1(in.config);

  LostSamples lost_u[3], lost_i[3];
  for (int p = 0; p < 3; ++p) {
    coder::array<double, 2> scaled;
    lost_u[p] = data_586_1(in.u[p], in.u_gain[p], in.N, options.sim, scaled);
    in.u[p] = scaled;
    lost_i[p] = data_586_1(in.i[p], in.i_gain[p], in.N, options.sim, scaled);
    in.i[p] = scaled;
  }
  if (options.two_current) {
    rebuildPhase(options.rebuilt, in.i);
  }

  const double t = in.type_param;
  if (t == 4.0) {
    calc_modul_v(kSingleGroup, in.u, in.N, options, out);
  } else if (t == 8.0) {
    calc_modul_i(kSingleGroup, in.i, in.N, in.motor, in.bearing, options, out);
  } else if (t == 21.0) {
    calc_modul_v(kFullMeasurement, in.u, in.N, options, out);
    calc_modul_i(kFullMeasurement, in.i, in.N, in.motor, in.bearing, options, out);
    power_modes(options.power, in.u, in.i, in.N, out, out.power);
  }
  if (options.negate_P) {
    out.power.P[0] = -out.power.P[0];
  }
  if (options.negate_Q) {
    out.power.Q[0] = -out.power.Q[0];
  }
  status_vector_fun_586_1(lost_u, lost_i, t, &out.status, &out.status_bits);
}

} // namespace calc_modul_7R_full_ns
