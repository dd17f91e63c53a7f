// The electrical block against the physics of synthetic three-phase machines as a module's
// counts; its hand-worked frame rules. The ranges' gains: tests/pipeline/scenarios/electrical.scn.
#include "blocks/electrical/calc_modul_7R_full.h"
#include "blocks/electrical/current_signature.h"
#include "coder/hilbert.h"
#include "coder/windows.h"
#include "synth/ElectricalSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <map>
#include <sstream>

namespace {

using namespace calc_modul_7R_full_ns;
using Row = coder::array<double, 2>;
const double kPi = 3.141592653589793;
// What a module's counts allow: RMS to 0.1 %, distortion to 0.1 percentage point, power to
// 0.5 % (the time mean of a record of non-whole cycles keeps about 1 / (4 pi f T) of 2 f).
constexpr double kRmsTol = 1e-3, kThdTol = 0.1, kPowerTol = 5e-3;
std::map<std::string, double> worst; // the largest error of each quantity, printed at the end

Row row(const std::vector<double>& v) {
  Row r;
  r.set_size(1, int(v.size()));
  std::copy(v.begin(), v.end(), r.data());
  return r;
}
// The next case of a table: its line, and a stream over it; false at the end.
bool nextCase(std::istream& table, std::string& line, std::istringstream& in) {
  while (std::getline(table, line) && (line.empty() || line[0] == '#')) {
  }
  in = std::istringstream(line);
  return bool(table);
}
void expectNear(const char* what, double got, double want, double tol = kRmsTol,
                bool relative = true) {
  const double error = std::abs(got - want) / (relative ? std::abs(want) : 1.0);
  worst[what] = std::max(worst[what], error);
  EXPECT_LE(error, tol) << what << ": " << got << " against " << want;
}

// A measurement of the motor as its module sends it, counts around a mid-scale of 1e6:
// voltages at rk 0, rn 0, ku 20, currents at rk 127, rn 3, ku 1. The voltage channels carry
// the phases, or on "line" wiring AB, BC, CA, on "aron" wiring (two wattmeters) AB, CB, CA.
ElectricalOutput measure(const synth::ThreePhaseMotor& m, int type_param, unsigned config, int n,
                         const std::string& wiring = "phase") {
  const double rate = type_param == 21 ? 10000.0 : 500.0;
  ElectricalInput in;
  std::vector<double> v[3];
  for (int p = 0; p < 3; ++p) {
    v[p] = synth::phaseVoltage(m, p, rate, n);
    in.u_gain[p] = {0, 0, 20}, in.i_gain[p] = {127, 3, 1};
    in.i[p] = row(synth::channelCounts(synth::phaseCurrent(m, p, rate, n), in.i_gain[p], 1e6));
  }
  for (int p = 0; p < 3; ++p) {
    std::vector<double> u = v[p];
    const int from = wiring == "aron" && p == 1 ? 2 : p,
              to = wiring == "aron" ? 1 - p / 2 : (p + 1) % 3;
    for (int k = 0; wiring != "phase" && k < n; ++k)
      u[size_t(k)] = v[from][size_t(k)] - v[to][size_t(k)];
    in.u[p] = row(synth::channelCounts(u, in.u_gain[p], 1e6));
  }
  in.N = n, in.bearing = m.bearing, in.motor = {2, 50, 1450, 55}, in.type_param = type_param,
  in.config = config;
  ElectricalOutput out;
  calc_modul_7R_full(in, out);
  return out;
}

TEST(ElectricalBlock, VoltagesCurrentsDistortionAndPowerAreThePhysicsOfTheSupply) {
  // fields of the power: - none, T the totals, A the totals and the phases
  std::istringstream table(R"(
# type config   f     wiring v5   v7   i5   i7   unbalance power
  4    0x0      49.65 line   .04  .03  0    0    0         -
  4    0x1      49.65 phase  .04  .03  0    0    0         -
  4    0x1      49.65 phase  0    0    0    0    .1        -
  4    0x101    45    phase  .05  0    0    0    0         -
  8    0x0      49.65 phase  0    0    .06  .05  0         -
  8    0x60     49.65 phase  0    0    .02  0    0         -
  21   0x0      50.3  line   .03  .02  .05  .04  0         -
  21   0x10001  50.3  phase  0    0    0    0    0         A
  21   0x70001  50.3  phase  0    0    0    0    0         A
  21   0x40C01  50.3  phase  0    0    0    0    0         A
  21   0x20000  50.3  aron   0    0    0    0    0         T
  21   0x30001  50.3  phase  0    0    0    0    0         T
  21   0x50001  50.3  phase  0    0    0    0    0         -
  15   0x1      50.3  phase  0    0    0    0    0         -
)");
  std::string line, wiring, power;
  for (std::istringstream in; nextCase(table, line, in);) {
    int type;
    unsigned config;
    synth::ThreePhaseMotor m;
    in >> type >> std::hex >> config >> std::dec >> m.supply >> wiring >> m.voltage_5th >>
        m.voltage_7th >> m.current_5th >> m.current_7th >> m.unbalance >> power;
    SCOPED_TRACE(line);
    const int n = type == 21 ? 16000 : 4096, harmonics = type == 21 ? 40 : 5;
    const ElectricalOutput out = measure(m, type, config, n, wiring);
    const bool voltages = type == 4 || type == 21, currents = type == 8 || type == 21;
    EXPECT_EQ(std::isnan(out.U[0]), !voltages);
    EXPECT_EQ(std::isnan(out.I[0]), !currents);
    EXPECT_EQ(std::isnan(out.power.P[0]), power == "-");
    EXPECT_EQ(std::isnan(out.power.P[1]), power != "A");
    // the 7th lies beyond the 5 tones read at 500 Hz
    const double v7 = harmonics > 7 ? m.voltage_7th : 0, i7 = harmonics > 7 ? m.current_7th : 0;
    const double V =
        m.voltage * std::sqrt(1 + m.voltage_5th * m.voltage_5th + m.voltage_7th * m.voltage_7th);
    const std::complex<double> a = 1 + m.unbalance, b = std::polar(1.0, -2 * kPi / 3),
                               c = std::conj(b);
    const double lines[3] = {std::abs(a - b), std::abs(b - c), std::abs(c - a)};
    for (int p = 0; voltages && p < 3; ++p) {
      expectNear("U", out.U[p], V * (p == 0 ? std::abs(a) : 1));
      expectNear("U_line", out.U_line[p], V * lines[p]);
      expectNear("THD_U", out.THD_U[p], 100 * std::hypot(m.voltage_5th, v7), kThdTol, false);
    }
    if (voltages && wiring != "aron") // the two wattmeters' wiring has no zero sequence
      expectNear("U_0", out.U_0, m.voltage * m.unbalance / 3, kRmsTol * m.voltage, false);
    const double I =
        m.current * std::sqrt(1 + m.current_5th * m.current_5th + m.current_7th * m.current_7th);
    for (int p = 0; currents && p < 3; ++p) {
      expectNear("I", out.I[p], I);
      expectNear("THD_I", out.THD_I[p], 100 * std::hypot(m.current_5th, i7), kThdTol, false);
    }
    const double S = 3 * m.voltage * m.current, P = S * std::cos(m.angle),
                 Q = S * std::sin(m.angle), sign_P = config & 0x400 ? -1 : 1,
                 sign_Q = config & 0x800 ? -1 : 1;
    for (int k = 0; k < (power == "A" ? 4 : power == "T" ? 1 : 0); ++k) {
      expectNear("P", out.power.P[k], (k == 0 ? sign_P : 1.0 / 3) * P, kPowerTol);
      expectNear("Q", out.power.Q[k], (k == 0 ? sign_Q : 1.0 / 3) * Q, kPowerTol);
      expectNear("S", out.power.S[k], (k == 0 ? 1 : 1.0 / 3) * S, kPowerTol);
    }
  }
}

TEST(ElectricalBlock, TheCurrentShowsSupplySlipBearingLinesAndRotorBars) {
  synth::ThreePhaseMotor m;
  m.supply = 49.65, m.eccentricity = 0.02, m.sideband_low = m.sideband_high = 0.01;
  m.bearing = {50, 10, 0, 8}, m.bearing_line = 2; // BPFO 80, BPFI 120, FTF 10, BSF 100 Hz
  ElectricalOutput out = measure(m, 8, 0x0, 4096);
  // the supply and slip as precisely as the stray field gives them (its scan steps 0.002 Hz)
  expectNear("supply", out.supply, m.supply, 0.002, false);
  expectNear("slip", out.slip, m.slip, 0.0025, false);
  // A stationary record's mains line leaks 1 / (pi 2 s f T) of itself into the sidebands'
  // windows, 19 units of the measure below it: a running motor is always in alarm.
  EXPECT_EQ(out.block_defects[0] * 10 + out.block_defects[10], 42u);
  // filter_cor: the best sum of a line a within +-1 Hz is a N, less the mains' leakage (1 %)
  for (int k = 0; k < 4; ++k)
    expectNear("bearing line", out.bearing_lines[k], m.bearing_line * 4096, 0.02);
  // the envelope of a carrier at 3125 Hz modulated 0.2 deep by each line: 0.2 A at each; the
  // record of 1.6 s puts every line on a bin
  m.bearing_line = 0.2, m.carrier = 3125;
  out = measure(m, 21, 0x4, 16000);
  for (int k = 0; k < 4; ++k)
    expectNear("bearing envelope", out.bearing_lines[k], 0.2, 0.02);
  EXPECT_TRUE(std::isnan(measure(m, 21, 0x14, 16000).bearing_lines[0]));

  // The sidebands at chosen depths, on a record tapered by kaiser(n, 38) so that the mains
  // line's own sidelobes lie far below the deepest of them (its main lobe spans +-12 bins:
  // the 1.6 s record at 10000 Hz needs a larger slip to put the sidebands beyond it).
  std::istringstream table(R"(
# rate  slip  low  high  level
  500   .03   25   50    2
  500   .03   50   29.9  2
  500   .03   30   50    1
  500   .03   38   50    1
  500   .03   50   44    1
  500   .03   50   46    0
  10000 .1    35   47    1
)");
  std::string line;
  for (std::istringstream in; nextCase(table, line, in);) {
    double rate, s, low, high;
    unsigned level;
    in >> rate >> s >> low >> high >> level;
    SCOPED_TRACE(line);
    const int n = rate == 500 ? 4096 : 16000;
    const double f = 49.65;
    coder::array<double, 1> w;
    coder::kaiser(n, 38, w);
    Row x;
    x.set_size(1, n);
    for (int k = 0; k < n; ++k) {
      const double t = k / rate;
      x[k] = w[k] * (std::cos(2 * kPi * f * t) +
                     std::pow(10, -low / 10) * std::cos(2 * kPi * (1 - 2 * s) * f * t + 0.8) +
                     std::pow(10, -high / 10) * std::cos(2 * kPi * (1 + 2 * s) * f * t + 2.3));
    }
    coder::array<creal_T, 2> z;
    coder::hilbert(x, z);
    const RotorSidebands r =
        rotorSidebands(rate == 500 ? kSingleGroup : kFullMeasurement, z.data(), n, f, s);
    expectNear("sideband depth", r.low, low, 0.01, false);
    expectNear("sideband depth", r.high, high, 0.01, false);
    EXPECT_EQ(r.level, level);
  }
  for (const auto& [what, error] : worst)
    std::printf("worst %s error: %.3g\n", what.c_str(), error);
}

TEST(ElectricalFrame, CountsLostSamplesAndStatus) {
  // rk 0, rn 0, ku 2: the mean 15 of the received counts removed, lost ones at 0
  const double k0 = 0.0049417429956896556 / 1.035;
  Row out;
  EXPECT_EQ(data_586_1(row({0, 10, 20, 0}), {0, 0, 2}, 4, false, out).zeros, 2);
  EXPECT_EQ(std::vector<double>(out.data(), out.data() + 4),
            std::vector<double>({0, -5 * k0 * 2, 5 * k0 * 2, 0}));
  // 33 lost from the very start are seen by one window, 32 by none
  for (int run : {32, 33}) {
    std::vector<double> x(100, 1.0);
    std::fill(x.begin(), x.begin() + run, 0.0);
    EXPECT_EQ(data_586_1(row(x), {}, 100, false, out).runs, run - 32);
  }
  // {type, lost voltage b zeros, lost current c run} -> status, bits
  const LostSamples none{}, zeros{3, 0}, run{40, 9};
  const LostSamples u[3] = {none, zeros, none}, i[3] = {none, none, run};
  const unsigned want[][3] = {
      {4, 0, 0x2}, {8, 1, 0x20 | 0x2000}, {21, 1, 0x2 | 0x20 | 0x2000}, {15, 0, 0}};
  for (const auto& c : want) {
    unsigned status, bits;
    status_vector_fun_586_1(u, i, c[0], &status, &bits);
    EXPECT_EQ(status * 0x10000 + bits, c[1] * 0x10000 + c[2]) << "type " << c[0];
  }
}

} // namespace
