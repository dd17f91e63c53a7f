#include "blocks/electrical/parameters.h"

#include "blocks/electrical/current_signature.h"
#include "blocks/vibration/field_analysis.h"
#include "coder/hilbert.h"
#include "coder/rt_nonfinite.h"
#include "coder/sum.h"
#include "coder/thd.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace calc_modul_7R_full_ns {
namespace {

constexpr double kSqrt3 = 1.7320508075688772;
constexpr unsigned kRotorDefect = 4;

struct Band {
  double lo, hi;
};
// Where the fundamental of a fixed supply, and of a frequency converter's, may lie for its
// distortion to be believed, Hz.
Band band(const Options& options) {
  return options.frequency == vibration::FrequencyMode::fixed ? Band{49.6, 50.4} : Band{10.0, 60.0};
}
bool within(const Band& b, double f) {
  return f > b.lo && f < b.hi;
}

// thd of one channel into its harmonic table; returns the fundamental's frequency and puts
// the distortion in dBc into db.
double distortion(const Stream& stream, const coder::array<double, 2>& x, HarmonicTable& table,
                  double& db) {
  db = coder::thd(x, stream.rate, stream.harmonics, table.power, table.frequency);
  return table.frequency.numel() > 0 ? table.frequency[0] : rtNaN;
}

// The distortion gate: a channel's percentage counts when its fundamental (the one `tested`
// names) lies in the band and so does the mean of the three; otherwise it is 0.
void percentages(const Band& b, const double f[3], const double db[3], const int tested[3],
                 double out[3]) {
  const bool ok = within(b, (f[0] + f[1] + f[2]) / 3.0);
  for (int p = 0; p < 3; ++p) {
    out[p] = ok && within(b, f[tested[p]]) ? std::pow(10.0, db[p] / 20.0) * 100.0 : 0.0;
  }
}

coder::array<double, 2> combine(const coder::array<double, 2>& a, double wa,
                                const coder::array<double, 2>& b, double wb,
                                const coder::array<double, 2>& c, double wc) {
  coder::array<double, 2> x;
  x.set_size(1, a.numel());
  for (int k = 0; k < a.numel(); ++k) {
    x[k] = wa * a[k] + wb * b[k] + wc * c[k];
  }
  return x;
}

} // namespace

double rms(const coder::array<double, 2>& x, double N) {
  std::vector<double> squares(x.data(), x.data() + x.numel());
  for (double& v : squares) {
    v *= v;
  }
  return std::sqrt(coder::sum(squares.data(), int(squares.size())) * (1.0 / N));
}

void calc_modul_v(const Stream& stream, const Phases& u, double N, const Options& options,
                  ElectricalOutput& out) {
  for (int p = 0; p < 3; ++p) {
    const coder::array<double, 2>& next = u[(p + 1) % 3];
    if (options.four) {
      out.U[p] = rms(u[p], N);
      out.U_line[p] = rms(combine(u[p], 1.0, next, -1.0, next, 0.0), N);
    } else {
      out.U_line[p] = rms(u[p], N);
      out.U[p] = out.U_line[p] / kSqrt3;
    }
  }
  out.U_0 = rms(combine(u[0], 1.0, u[1], 1.0, u[2], 1.0), N) * 0.3333333333333333;
  double f[3], db[3];
  for (int p = 0; p < 3; ++p) {
    f[p] = distortion(stream, u[p], out.voltage_harmonics[p], db[p]);
  }
  // Phases B and C are judged by each other's fundamental on purpose: the plants' records of
  // voltage distortion were made so.
  static const int kCrossed[3] = {0, 2, 1};
  percentages(band(options), f, db, kCrossed, out.THD_U);
}

void calc_modul_i(const Stream& stream, const Phases& i, double N, const Motor& motor,
                  const vibration::BearingGeometry& bearing, const Options& options,
                  ElectricalOutput& out) {
  for (int p = 0; p < 3; ++p) {
    out.I[p] = rms(i[p], N);
  }
  if (!options.keep_rebuilt_rms && options.rebuilt != RebuiltPhase::none) {
    // a rebuilt phase carries the other two's errors: their mean is the better estimate
    const int p = int(options.rebuilt) - 1;
    out.I[p] = (out.I[(p + 1) % 3] + out.I[(p + 2) % 3]) / 2.0;
  }

  // The first Clarke component: the three currents seen as one rotating vector's projection.
  const coder::array<double, 2> x = combine(i[0], 2.0 / 3.0, i[1], -1.0 / 3.0, i[2], -1.0 / 3.0);
  const int n = std::isnan(N) ? 0 : int(std::min(std::max(N, 0.0), double(x.numel())));
  const vibration::SupplyAndSlip supply = vibration::cal_param_ad_par(
      motor.p2, N, x, vibration::FrequencyMode::fixed, vibration::FieldFilter::amp1);
  out.supply = supply.F, out.slip = supply.s;

  coder::array<creal_T, 2> z;
  coder::hilbert(x, z);
  if (!options.no_bearing_lines) {
    mcsa_bpfio(stream, x, z.data(), n, options.bearing, bearing, out.bearing_lines);
  }

  double f[3], db[3];
  for (int p = 0; p < 3; ++p) {
    f[p] = distortion(stream, i[p], out.current_harmonics[p], db[p]);
  }
  static const int kOwn[3] = {0, 1, 2};
  percentages(band(options), f, db, kOwn, out.THD_I);

  const RotorSidebands rotor = rotorSidebands(stream, z.data(), n, supply.F, supply.s);
  out.sideband_low = rotor.low, out.sideband_high = rotor.high;
  out.quality = rotor.level != 0 ? 2.0 : 1.0;
  if (rotor.level != 0) {
    out.block_defects[0] = kRotorDefect;
    out.block_defects[10] = rotor.level;
  }
}

} // namespace calc_modul_7R_full_ns
