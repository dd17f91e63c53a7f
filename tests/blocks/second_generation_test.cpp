// The vibration blocks of the modules without a magnetic channel: the converters and the
// rules hand-worked, and whole blocks on synthetic machines against their physics.
#include "blocks/vibration/defects.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/second_generation.h"
#include "blocks/vibration/sensor_samples.h"
#include "synth/MachineSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Row = coder::array<double, 2>;
const double kPi = 3.141592653589793, kNaN = NAN;

Row row(const std::vector<double>& v) {
  Row r;
  r.set_size(1, int(v.size()));
  std::copy(v.begin(), v.end(), r.data());
  return r;
}
std::string text(const std::vector<double>& v) {
  std::ostringstream out;
  out.precision(12);
  for (double x : v)
    out << x << ' ';
  return out.str();
}

TEST(SecondGeneration, ConvertersAndTheRulesOfSpeedAndDefects) {
  Row out;
  // ADS131: the complement against 16777215 makes 8388608 read just over -1200 mV and 16777215
  // read 0, a lost sample; the lost ones take the mean of the others (600 / 3), then g_del 2
  const double top = 1200.0 - 1200.0 / 8388608;
  vibration::LostSamples lost =
      vibration::v_data_ads131_v2(row({8388607, 8388608, 16777215, 4194304}), 2, out);
  EXPECT_EQ(text({out[0], out[1], out[2], out[3], lost.zeros}),
            text({(top - 200) / 2, (-top - 200) / 2, 0, 200, 1}));
  vibration::v_data_ads131_v2(row({0, 0}), 1, out);
  EXPECT_TRUE(std::isnan(out[0]));
  // RS89x: micro-g; all lost stays zero; a run of 10 lost has 3 starts of a window of 8
  vibration::v_data_rs_89x_x(row({2e6, 0, -1e6}), out);
  EXPECT_EQ(text({out[0], out[1], out[2]}), text({1.5, 0, -1.5}));
  std::vector<double> x(40, 5.0);
  std::fill(x.begin() + 10, x.begin() + 20, 0.0);
  lost = vibration::v_data_rs_89x_x(row(x), out);
  vibration::v_data_rs_89x_x(row({0, 0}), out);
  EXPECT_EQ(text({lost.zeros, lost.runs, out[0]}), text({10, 3, 0}));

  // The axes agree within 0.5 percent of the largest (three) or 1 percent (two); NaN is
  // skipped; axes that found no line (0) never agree
  EXPECT_EQ(
      text({vibration::error_froot_fun_703_3(30.0, 30.1, 30.2),
            vibration::error_froot_fun_703_3(30.0, 30.1, 30.15),
            vibration::error_froot_fun_703_3(kNaN, 30.0, 30.1),
            vibration::error_froot_fun_703_3(0, 0, 0), vibration::error_froot_fun_703_2(25, 25.2),
            vibration::error_froot_fun_703_2(25, 25.3)}),
      text({1, 0, 0, 1, 0, 1}));

  // Defect rules at the default thresholds (t1 = 0.35 * 4.5 = 1.575, t2 = 0.35 * 11.2 = 3.92):
  // the ten harmonics of X and of Y, the lines near 100 Hz ("-": frequency_control), and the
  // codes:levels found. Harmonics not written are 0.
  const char* const cases = R"(1.19|1|-|
1.2|1|-|1:1
0.7|1|-|1:1
0.71|1|-|
1 1.6 1.6|1|-|3:1
1 1.5 1.6 1.6|1|-|
1 4 1.6|1|-|3:2
1 1.6 1.6 1.6 1.6 1.6 1.6|1|-|2:1
1 3.92 3.92 3.92 3.92 3.92 3.92|1|-|2:2
1 3.92 3.92 3.92 3.92 3.92|1 3.92 3.92 3.92 3.92 3.92 3.92|-|2:2
2 1.6|1 1.6 1.6|3.93 0|1:1 3:1 5:2
1|1|1.58 1.58|5:1
1|1|1.575 0|)";
  std::istringstream lines(cases);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string f[4];
    for (std::string& field : f)
      std::getline(fields, field, '|');
    double h[2][10] = {}, supply[2] = {};
    for (int a = 0; a < 2; ++a) {
      std::istringstream values(f[a]);
      for (int k = 0; k < 10 && values >> h[a][k]; ++k) {
      }
    }
    std::istringstream(f[2]) >> supply[0] >> supply[1];
    const vibration::DefectList list =
        vibration::defectRules(h[0], h[1], f[2] == "-" ? nullptr : supply, {});
    std::string found;
    for (int i = 0; i < list.count; ++i)
      found += (found.empty() ? "" : " ") + std::to_string(list.code[i]) + ":" +
               std::to_string(list.level[i]);
    EXPECT_EQ(found, f[3]) << line;
  }
}

// A module of the given form on a machine: its axes as the converter sends them; the last axis
// may see another machine.
vibration::SecondGenerationOutput block(const vibration::SecondGenerationForm& form,
                                        const synth::Machine& m, double fs, unsigned word,
                                        const synth::Machine* last = nullptr) {
  constexpr int n = 16384;
  vibration::SecondGenerationInput in;
  for (int a = 0; a < form.axes; ++a) {
    const std::vector<double> g =
        synth::acceleration(a == form.axes - 1 && last ? *last : m, a, fs, n);
    in.vibro[a] =
        row(form.converter == vibration::Converter::ADS131  ? synth::ads131Counts(g, 100)
            : form.converter == vibration::Converter::RS89x ? synth::rs89xCounts(g)
                                                            : synth::accelerometerCounts(g, 16));
    in.g_del[a] = 100;
  }
  in.Lv = n, in.fs = fs, in.poles = m.pole_pairs, in.bearing = m.bearing, in.FS = 16;
  in.word = word;
  vibration::SecondGenerationOutput out;
  vibration::runSecondGeneration(form, in, out);
  return out;
}

// The decimated scan steps 0.01 Hz and may settle on either grid point beside the line; the
// chain's detrend and integration, the band filter's slope near its edges and the few turns
// of a slow rotor move it further, by up to 0.043 Hz at 10 turns (docs/vibration-bias.md).
constexpr double kChainFrequencyTol = 0.045;
// Imbalance on a window of +-0.2 Hz at 0.002 Hz: the line's amplitude less what the chain's
// detrend leaks from it, under 2 % from 9 turns on (the table, same place).
constexpr double kAmplitudeTol = 0.02;

TEST(SecondGeneration, EachBlockFindsTheSpeedOfAMotorOfEachPolePairCountInBothModes) {
  using namespace vibration;
  // {form, rate, pole pairs, supply (50: frequency_fixed, else frequency_control)}
  struct Case {
    const SecondGenerationForm* form;
    double fs, P, supply;
  };
  const Case cases[] = {{&kTk703_3, 26667, 1, 50}, {&kTk703_3, 26667, 2, 43.7},
                        {&kTk703_4, 16000, 3, 50}, {&kTk703_4, 16000, 4, 38.2},
                        {&kTk703_2, 16000, 2, 50}, {&kTk703_2_single, 16000, 1, 52.3},
                        {&kRs893_4, 16667, 4, 50}, {&kRs893_2, 16667, 3, 47.1}};
  for (const Case& c : cases) {
    synth::Machine m;
    m.pole_pairs = c.P, m.supply = c.supply, m.slip = 0.0271, m.noise = 0.001;
    m.harmonics[0] = 0.3 / c.P;
    m.bearing = {52.5, 7.94, 0.2618, 9};
    const double fr = m.rotorFrequency();
    SCOPED_TRACE(testing::Message()
                 << "axes " << c.form->axes << ", P " << c.P << ", rotor " << fr);
    const SecondGenerationOutput o = block(*c.form, m, c.fs, c.supply == 50 ? 0 : 0x100u);
    EXPECT_NEAR(o.FRM, fr, kChainFrequencyTol);
    EXPECT_EQ(o.status_2 & 0x100u, 0u);
    for (int a = 0; a < c.form->axes; ++a) {
      const double want = m.harmonics[0] * synth::kAxisGain[a] * 9800 / (2 * kPi * fr);
      EXPECT_NEAR(o.imbalance[a], want, want * kAmplitudeTol) << "axis " << a;
      EXPECT_NEAR(o.harmonics[a][0], want, want * kAmplitudeTol) << "axis " << a;
    }
    EXPECT_TRUE(std::isfinite(o.bearing[0]) && std::isnan(o.bearing[4]));
  }
}

TEST(SecondGeneration, StopLimitAxesThatDisagreeAndTheDefectsOfTheHarmonics) {
  using namespace vibration;
  synth::Machine m;
  m.slip = 0.03, m.noise = 0.001, m.harmonics[0] = 0.1;
  // below 0.6 mm/s over the axes the machine stands: the speed is 0 and nothing is scanned
  for (const double target : {0.59, 0.61}) {
    synth::Machine quiet = m;
    const SecondGenerationOutput loud = block(kTk703_3, m, 26667, 0x80000000u);
    const double rss = std::hypot(loud.table[0].vel[7], loud.table[1].vel[7], loud.table[2].vel[7]);
    quiet.harmonics[0] = m.harmonics[0] * target / rss;
    const SecondGenerationOutput o = block(kTk703_3, quiet, 26667, 0);
    EXPECT_EQ(o.FRM == 0, target < 0.6) << target;
    EXPECT_EQ(std::isnan(o.imbalance[0]), target < 0.6) << target;
  }
  // the last axis turning faster than the others: beyond 0.5 percent over three axes or 1 percent
  // over two there is no speed, and the flag 0x100
  struct Turn {
    const SecondGenerationForm* form;
    double fs, faster;
  };
  for (const Turn& t : {Turn{&kTk703_3, 26667, 1.004}, Turn{&kTk703_3, 26667, 1.008},
                        Turn{&kTk703_2, 16000, 1.008}, Turn{&kTk703_2, 16000, 1.012}}) {
    synth::Machine last = m;
    last.slip = 1 - (1 - m.slip) * t.faster;
    const bool apart = t.faster - 1 > (t.form->axes == 3 ? 0.005 : 0.01);
    const SecondGenerationOutput o = block(*t.form, m, t.fs, 0, &last);
    EXPECT_EQ(o.status_2 & 0x100u, apart ? 0x100u : 0u) << t.form->axes << " axes, " << t.faster;
    EXPECT_EQ(o.FRM == 0, apart) << t.form->axes << " axes, " << t.faster;
  }
  // A second harmonic of 5 mm/s over t2 beside a third of 2.5 mm/s over t1: code 3 at level 2;
  // the misalignment of X against Y (gains 1 and 0.8: ratio 1.25) gives code 1 at level 1
  synth::Machine loose = m;
  for (int h = 1; h < 3; ++h)
    loose.harmonics[h] = (h == 1 ? 5.0 : 2.5) / 9800 * (2 * kPi * (h + 1) * m.rotorFrequency());
  const SecondGenerationOutput o = block(kTk703_3, loose, 26667, 0);
  std::string found;
  for (int i = 0; i < o.defects.count; ++i)
    found += std::to_string(o.defects.code[i]) + ":" + std::to_string(o.defects.level[i]) + " ";
  EXPECT_EQ(found, "1:1 3:2 ");
  // the option word: no rotor analysis leaves the speed NaN and the statistics there
  const SecondGenerationOutput skipped = block(kRs893_2, m, 16667, 0x80000000u);
  EXPECT_TRUE(std::isnan(skipped.FRM) && std::isfinite(skipped.table[0].vel[7]) &&
              skipped.status_2 == 0);
}

} // namespace
