// Prints, as Markdown tables, how far the vibration chain itself (16-bit counts, conversion,
// detrend, two integrations, analytic signal, scans) moves what it measures of a clean
// machine, over the phase of the line and the turns the record holds: the rotor line's
// frequency and amplitude, the velocity RMS, and the leakage of the first harmonic into the
// second's window; and how the rotor frequency read from the magnetic field moves with the
// relative phase of its two rotor lines. These are properties of the method, not faults;
// docs/vibration-bias.md holds the output of bench/run_vibration_bias.sh.
#include "blocks/vibration/conditioning.h"
#include "blocks/vibration/field_analysis.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/second_generation.h"
#include "blocks/vibration/sensor_samples.h"
#include "coder/hilbert.h"
#include "synth/MachineSignals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double kRate = 26667, kFullScale = 16, kPi = 3.141592653589793;
constexpr int kSamples = 16384;

struct Measured {
  double frequency_error, amplitude_error, rms_error, second_error;
};

// A machine of two pole pairs whose rotor turns `turns` times in the record, with its first
// harmonic at `phase` (the axis-0 phase of the synthesizer is shifted to it) and, for the
// leakage column, a second harmonic of the same acceleration.
Measured measure(double turns, double phase) {
  synth::Machine m;
  m.slip = 1.0 - 2.0 * turns * kRate / kSamples / 50.0;
  m.harmonics[1] = 0.05;
  const double fr = m.rotorFrequency();
  std::vector<double> g = synth::acceleration(m, 0, kRate, kSamples);
  // the synthesizer's first harmonic has phase 0 on axis 0: turn it to `phase`
  for (int k = 0; k < kSamples; ++k) {
    const double t = k / kRate;
    g[size_t(k)] += 0.05 * (std::cos(2 * kPi * fr * t + phase) - std::cos(2 * kPi * fr * t));
  }
  coder::array<double, 2> counts, x, acc, vel, dsp;
  const std::vector<double> c = synth::accelerometerCounts(g, kFullScale);
  counts.set_size(1, kSamples);
  std::copy(c.begin(), c.end(), counts.data());
  vibration::v_data_IIS3DWBTR(counts, kFullScale, x);
  vibration::ACC_VEL_DSP(x, kRate, acc, vel, dsp);
  coder::array<creal_T, 2> z;
  coder::hilbert(vel, z);
  double f = fr;
  const double v1 = vibration::find_rotor_freq(1 / kRate, kSamples, z.data(), f) * 9800;
  vibration::Harmonic h[3];
  vibration::find_rotor_freq_all(fr, 1 / kRate, kSamples, z.data(), h);
  const double want1 = 0.05 * 9800 / (2 * kPi * fr), want2 = want1 / 2;
  vibration::AxisStatistics s;
  vibration::paramData_v(kSamples, kRate, acc, vel, dsp, vibration::kFirstGeneration, s);
  const double rms = std::sqrt(want1 * want1 + want2 * want2) / std::sqrt(2.0);
  return {f - fr, 100 * (v1 / want1 - 1), 100 * (s.vel[7] / rms - 1),
          100 * (h[1].amplitude * 9800 / want2 - 1)};
}

// The rotor frequency that the magnetic channel gives a motor of P pole pairs on 49.93 Hz with
// a slip of 0.0271, its left rotor line turned by `phase` against the right one.
double fieldRotorError(double P, double phase) {
  synth::Machine m;
  m.pole_pairs = P, m.supply = 49.93, m.slip = 0.0271, m.rotor_phase = phase;
  const std::vector<double> field = synth::magneticField(m, 500, 4096);
  coder::array<double, 2> x, mag;
  x.set_size(1, 4096);
  std::copy(field.begin(), field.end(), x.data());
  vibration::dell_null_data(x, 4096, mag);
  return vibration::cal_param_ad_par(P, 4096, mag, vibration::FrequencyMode::fixed,
                                     vibration::FieldFilter::amp1)
             .fr -
         m.rotorFrequency();
}

// The rotor frequency and imbalance of a block without a magnetic channel: the worst error over
// slips of 2 to 4 percent (the turns and the lines' phases at the record's end move with it) of
// a machine of P pole pairs at 0.3 / P g, its axes as the block's converter sends them.
void secondGeneration() {
  std::printf(
      "\n## Modules without a magnetic channel: rotor frequency (FRM, Hz) and imbalance (%%), "
      "worst over slips of 2 to 4 percent\n\n"
      "| block | rate, Hz | P | supply, Hz | turns | FRM | IMBALANCE_X |\n"
      "|---|---|---|---|---|---|---|\n");
  using vibration::Converter;
  struct Case {
    const char* name;
    const vibration::SecondGenerationForm* form;
    double fs, P, supply;
  };
  const Case cases[] = {{"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 1, 50},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 2, 50},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 3, 50},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 4, 50},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 1, 43.7},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 2, 43.7},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 3, 43.7},
                        {"vibro_tk703_3_ve", &vibration::kTk703_3, 26667, 4, 43.7},
                        {"vibro_tk703_4_ve", &vibration::kTk703_4, 16000, 3, 50},
                        {"vibro_tk703_4_ve", &vibration::kTk703_4, 16000, 4, 38.2},
                        {"vibro_tk703_2_ve", &vibration::kTk703_2, 16000, 2, 50},
                        {"vibro_tk703_2_single_ve", &vibration::kTk703_2_single, 16000, 1, 52.3},
                        {"vibro_rs893_4_ve", &vibration::kRs893_4, 16667, 4, 50},
                        {"vibro_rs893_2_ve", &vibration::kRs893_2, 16667, 3, 47.1}};
  for (const Case& c : cases) {
    double worst_f = 0, worst_a = 0;
    for (int i = 0; i <= 20; ++i) {
      synth::Machine m;
      m.pole_pairs = c.P, m.supply = c.supply, m.slip = 0.02 + 0.001 * i, m.noise = 0.001;
      m.harmonics[0] = 0.3 / c.P;
      vibration::SecondGenerationInput in;
      for (int a = 0; a < c.form->axes; ++a) {
        const std::vector<double> g = synth::acceleration(m, a, c.fs, kSamples);
        const std::vector<double> counts =
            c.form->converter == Converter::ADS131  ? synth::ads131Counts(g, 100)
            : c.form->converter == Converter::RS89x ? synth::rs89xCounts(g)
                                                    : synth::accelerometerCounts(g, kFullScale);
        in.vibro[a].set_size(1, kSamples);
        std::copy(counts.begin(), counts.end(), in.vibro[a].data());
        in.g_del[a] = 100;
      }
      in.Lv = kSamples, in.fs = c.fs, in.poles = c.P, in.FS = kFullScale;
      in.word = c.supply == 50 ? 0 : 0x100u;
      vibration::SecondGenerationOutput o;
      vibration::runSecondGeneration(*c.form, in, o);
      const double fr = m.rotorFrequency(), want = m.harmonics[0] * 9800 / (2 * kPi * fr);
      worst_f = std::max(worst_f, std::fabs(o.FRM - fr));
      worst_a = std::max(worst_a, std::fabs(100 * (o.imbalance[0] / want - 1)));
    }
    std::printf("| %s | %.0f | %.0f | %.1f | %.1f | %.3f | %.2f |\n", c.name, c.fs, c.P, c.supply,
                c.supply / c.P * kSamples / c.fs, worst_f, worst_a);
  }
}

} // namespace

int main() {
  secondGeneration();
  std::printf(
      "\n## Rotor frequency from the magnetic field (FRM), Hz, measured minus true, by pole "
      "pairs (rows) and the relative phase of the two rotor lines (columns)\n\n"
      "| P | 0 deg | 60 deg | 120 deg | 180 deg | 240 deg | 300 deg |\n"
      "|---|---|---|---|---|---|---|\n");
  for (double P = 1; P <= 4; ++P) {
    std::printf("| %.0f |", P);
    for (double d = 0; d < 360; d += 60) {
      std::printf(" %+.3f |", fieldRotorError(P, d * kPi / 180));
    }
    std::printf("\n");
  }
  const double turns[] = {7.3, 7.5, 15.0, 15.25, 15.5, 30.0, 30.4};
  const double degrees[] = {0, 45, 90, 135};
  const char* titles[] = {"rotor line frequency, Hz", "rotor line amplitude, %",
                          "velocity RMS in its band (VEL_RMS_CF_4, 10 to 990 Hz), %",
                          "second harmonic amplitude, %"};
  for (int column = 0; column < 4; ++column) {
    std::printf("\n%s, measured minus true, by turns of the record (rows) and phase of the "
                "line (columns)\n\n| turns | 0 deg | 45 deg | 90 deg | 135 deg |\n"
                "|---|---|---|---|---|\n",
                titles[column]);
    for (double n : turns) {
      std::printf("| %.2f |", n);
      for (double d : degrees) {
        const Measured r = measure(n, d * kPi / 180);
        const double values[] = {r.frequency_error, r.amplitude_error, r.rms_error, r.second_error};
        std::printf(" %+.4f |", values[column]);
      }
      std::printf("\n");
    }
  }
}
