// The stages of the vibration blocks: the sensor chips' counts to g with the repair of lost
// samples (hand-worked), and the statistics of a tone against its physics.
#include "blocks/vibration/conditioning.h"
#include "blocks/vibration/field_analysis.h"
#include "blocks/vibration/fir_sets.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/sensor_samples.h"
#include "blocks/vibro_tk701_2_ve/vibro_tk701_2_ve.h"
#include "blocks/vibro_tk701_3_ve/vibro_tk701_3_ve.h"
#include "coder/hilbert.h"
#include "synth/MachineSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using vibration::LostSamples;
using Row = coder::array<double, 2>;
using namespace std::complex_literals;
const double kPi = 3.141592653589793, kNaN = NAN;

Row row(const std::vector<double>& v) {
  Row r;
  r.set_size(1, int(v.size()));
  for (size_t k = 0; k < v.size(); ++k)
    r[int(k)] = v[k];
  return r;
}
// The samples, then the zero and run counts, as one text.
std::string text(const Row& r, LostSamples lost = {}) {
  std::ostringstream out;
  out.precision(15);
  for (int k = 0; k < r.numel(); ++k)
    out << (std::isnan(r[k]) ? "nan" : std::to_string(r[k])) << ' ';
  out << "| " << lost.zeros << ' ' << lost.runs;
  return out.str();
}

TEST(SensorSamples, ChipsScaleRepairLostSamplesAndCountTheirRuns) {
  Row out;
  // IIS3DWBTR at 16 g: 8, lost, -8, 4 g; the lost one takes the mean 4/3 of the others, which
  // is then removed from all; all lost is NaN
  vibration::v_data_IIS3DWBTR(row({16384, 0, -16384, 8192}), 16, out);
  EXPECT_EQ(text(out), text(row({8 - 4 / 3.0, 0, -8 - 4 / 3.0, 4 - 4 / 3.0})));
  vibration::v_data_IIS3DWBTR(row({0, 0}), 16, out);
  EXPECT_EQ(text(out), "nan nan | 0 0");
  // LIS344: repair, then (x * 1.1 / ku) * 1.0681766510009765 / g_del
  LostSamples lost = vibration::v_data_LIS344(row({3, 0, 5}), 0.5, 2, out);
  const double u = 1.1 / 0.5 * 1.0681766510009765 / 2;
  EXPECT_EQ(text(out, lost), text(row({-u, 0, u}), {1, 0}));
  // the magnetic channel: NaN counts as lost; the first n samples, or what the record holds
  const std::string field[] = {(vibration::dell_null_data(row({kNaN, 2, 4, 0}), 4, out), text(out)),
                               (vibration::dell_null_data(row({kNaN, 2, 4, 9}), 3, out), text(out)),
                               (vibration::dell_null_data(row({1, 3}), 5, out), text(out))};
  EXPECT_EQ(field[0] + field[1] + field[2],
            text(row({0, -1, 1, 0})) + text(row({0, -1, 1})) + text(row({-1, 1})));
  // {run start, run length, runs} in 100 LIS344 samples: a run of 40 inside has 9 starts of a
  // window of 32, at the very end one less, one shorter than the window none; a record all
  // lost stays zero (no 0/0)
  const int runs[][3] = {{10, 40, 9}, {60, 40, 8}, {10, 31, 0}, {0, 100, 68}};
  for (const auto& c : runs) {
    std::vector<double> x(100, 1.0);
    std::fill(x.begin() + c[0], x.begin() + c[0] + c[1], 0.0);
    lost = vibration::v_data_LIS344(row(x), 1, 1, out);
    EXPECT_EQ(text(row({lost.zeros, lost.runs, out[c[0]]})),
              text(row({double(c[1]), double(c[2]), 0})))
        << "run of " << c[1] << " at " << c[0];
  }
}

// A cosine of whole turns is orthogonal to a line in continuous time; sampled, it still holds
// one of slope 1 / turns^2 or so, which detrend takes out of the acceleration: its RMS moves by
// under 1e-6. Its velocity, a sine, is not: detrend takes a line holding
// about 0.3 / turns^2 of its RMS (under 1e-3 from 19 turns), and trapezoids shrink it by
// (2 pi f / fs)^2 / 12 more (under 8e-4 here).
constexpr double kSampledLineTol = 1e-6, kVelocityTol = 1e-3;
// Band sums over a 16-fold padded spectrum also lose the sidelobes of the record that fall
// outside the band: under 0.3 % of the RMS for a tone 50 bins inside it.
constexpr double kBandTol = 4e-3;

TEST(Conditioning, TheStatisticsOfAToneAreItsPhysics) {
  struct Case {
    double fs;
    int n, turns; // the tone holds whole turns: f = turns * fs / n
    vibration::StatisticsForm form;
    int band; // the velocity band that holds the tone: 7 rms_cf_4, 8 rms_cf_5, 9 rms_cf_6
  };
  const Case cases[] = {{26667, 16384, 61, vibration::kFirstGeneration, 7}, // 99.3 Hz
                        {26667, 16384, 19, vibration::kFirstGeneration, 8}, // 30.9 Hz
                        {16000, 8192, 81, vibration::kFirstGeneration, 9},  // 158 Hz
                        {2000, 4096, 61, vibration::kLIS344Form, 8}};       // 29.8 Hz
  const double g = 0.7; // amplitude of the acceleration, g
  for (const Case& c : cases) {
    const double f = c.turns * c.fs / c.n, w = 2 * kPi * f;
    SCOPED_TRACE(testing::Message() << f << " Hz at " << c.fs << " Hz");
    Row x, acc, vel, dsp;
    x.set_size(1, c.n);
    for (int k = 0; k < c.n; ++k)
      x[k] = 0.05 + g * std::cos(w * k / c.fs);
    vibration::ACC_VEL_DSP(x, c.fs, acc, vel, dsp);
    vibration::AxisStatistics s;
    vibration::paramData_v(c.n, c.fs, acc, vel, dsp, c.form, s);
    const double vel_rms = g * 9800 / w / std::sqrt(2.0);
    EXPECT_NEAR(s.acc[0], 0, 1e-12); // the offset is gone
    EXPECT_NEAR(s.acc[6], g / std::sqrt(2.0), g * kSampledLineTol);
    EXPECT_NEAR(s.acc[5], std::sqrt(2.0), 1e-3); // peak over RMS of a cosine, less its line
    EXPECT_NEAR(s.vel[6], vel_rms, vel_rms * kVelocityTol);
    EXPECT_NEAR(s.vel[c.band], vel_rms, vel_rms * kBandTol);
  }
}

// The chain written out directly: least-squares lines by the normal equations in long double,
// trapezoids on the module's 16-bit time axis.
std::vector<double> detrended(std::vector<double> y) {
  long double n = y.size(), st = 0, stt = 0, sy = 0, sty = 0;
  for (size_t k = 0; k < y.size(); ++k)
    st += k, stt += (long double)k * k, sy += y[k], sty += k * (long double)y[k];
  const long double b = (n * sty - st * sy) / (n * stt - st * st), a = (sy - b * st) / n;
  for (size_t k = 0; k < y.size(); ++k)
    y[k] = double(y[k] - (a + b * k));
  return y;
}
std::vector<double> integrated(const std::vector<double>& y, double fs) {
  std::vector<double> z(y.size(), 0.0);
  for (size_t k = 1; k < y.size(); ++k)
    z[k] = z[k - 1] + (uint16_t(k) / fs - uint16_t(k - 1) / fs) / 2 * (y[k - 1] + y[k]);
  return z;
}

TEST(Conditioning, VelocityAndDisplacementFollowTheChainOnTheWrappingTimeAxis) {
  // 70000 samples: the time axis of the record starts again at sample 65536
  const int n = 70000;
  const double fs = 26667;
  std::vector<double> x(n);
  for (int k = 0; k < n; ++k)
    x[size_t(k)] = std::sin(0.02 * k) + 0.3 * std::cos(0.37 * k) + 1e-5 * k;
  Row acc, vel, dsp;
  vibration::ACC_VEL_DSP(row(x), fs, acc, vel, dsp);
  const std::vector<double> a = detrended(x), v = detrended(integrated(a, fs)),
                            d = detrended(integrated(v, fs));
  double worst[3] = {0, 0, 0}, scale[3] = {0, 0, 0};
  for (int k = 0; k < n; ++k) {
    const double got[3] = {acc[k], vel[k], dsp[k]}, want[3] = {a[k], v[k], d[k]};
    for (int i = 0; i < 3; ++i) {
      worst[i] = std::max(worst[i], std::fabs(got[i] - want[i]));
      scale[i] = std::max(scale[i], std::fabs(want[i]));
    }
  }
  for (int i = 0; i < 3; ++i) // QR against normal equations over 70000 points
    EXPECT_LT(worst[i], 1e-9 * scale[i]) << "signal " << i;
}

// A band by its definition: the bins round(M f1 / fs) .. round(M f2 / fs) (1-based, M = nfft + 2)
// of the amplitude spectrum 2 |X| / n, X by a direct DFT of x padded to p n, summed and
// divided by 2 p.
double band(const std::vector<double>& x, int p, double fs, double f1, double f2) {
  const double M = p * x.size() + 2.0;
  double sum = 0;
  for (long i = std::lround(M * f1 / fs); i <= std::lround(M * f2 / fs); ++i) {
    std::complex<double> X = 0;
    for (size_t j = 0; j < x.size(); ++j)
      X += x[j] * std::exp(-2i * kPi * double(j) * double(i - 1) / (M - 2));
    sum += std::norm(2.0 * X / double(x.size()));
  }
  return std::sqrt(sum / (2 * p));
}

TEST(Conditioning, BandsAddTheBinsBetweenTheirRoundedEdgesWhereTheRateReachesThem) {
  std::vector<double> acc(256), vel(256), w(256);
  for (int k = 0; k < 256; ++k) {
    acc[size_t(k)] = std::sin(0.37 * k) + std::cos(1.9 * k * k / 256.0);
    vel[size_t(k)] = std::sin(0.011 * k) + std::cos(0.23 * k) + 0.1 * std::sin(2.9 * k);
    w[size_t(k)] = vel[size_t(k)] * 9.8 * 1000;
  }
  // 500 to 2500 Hz needs floor(fs / 2) of 2500, 2500 to 5000 Hz 5000; the LIS344 form has no
  // acceleration bands at any rate; FFT against the direct DFT of a few hundred terms
  for (const double fs : {4999.0, 5000.0, 9999.0, 10000.0, 12000.0}) {
    vibration::AxisStatistics s, lis;
    vibration::paramData_v(256, fs, row(acc), row(vel), row(vel), vibration::kFirstGeneration, s);
    vibration::paramData_v(256, fs, row(acc), row(vel), row(vel), vibration::kLIS344Form, lis);
    const double got[] = {s.acc[7], s.acc[8], s.vel[7], s.vel[8], s.vel[9]};
    const double want[] = {fs < 5000 ? kNaN : band(acc, 4, fs, 500, 2500),
                           fs < 10000 ? kNaN : band(acc, 4, fs, 2500, 5000),
                           band(w, 16, fs, 10, 990), band(w, 16, fs, 2, 65),
                           band(w, 16, fs, 65, 300)};
    for (int b = 0; b < 5; ++b)
      EXPECT_TRUE(std::isnan(want[b]) ? std::isnan(got[b])
                                      : std::fabs(got[b] - want[b]) < 1e-12 * want[b])
          << "fs " << fs << ", band " << b << ": " << got[b] << " against " << want[b];
    EXPECT_TRUE(std::isnan(lis.acc[7]) && std::isnan(lis.acc[8]));
  }
}

using coder::array;
constexpr double kRate = 26667, kFullScale = 16;
constexpr int kSamples = 16384;

// n samples at kRate of the analytic tone v exp(j (2 pi f t + phase)).
std::vector<creal_T> tone(double v, double f, double phase) {
  std::vector<creal_T> z(kSamples);
  for (int k = 0; k < kSamples; ++k)
    z[size_t(k)] = {v * std::cos(2 * kPi * f * k / kRate + phase),
                    v * std::sin(2 * kPi * f * k / kRate + phase)};
  return z;
}

TEST(RotorSearch, FindsARotorLineOnItsGridInEveryBandAndMode) {
  // {pole pairs, supply Hz, rotor Hz}: in "frequency_control" (supply off 50 Hz) the windows
  // made for 50 Hz follow the supply; rotor lines off the scan grids
  const double cases[][3] = {{1, 50, 48.8137},   {2, 50, 24.4163},   {3, 50, 16.2851},
                             {4, 50, 12.1239},   {1, 47.3, 46.1234}, {2, 45.83, 22.6047},
                             {3, 52.1, 17.0071}, {4, 48.6, 11.8762}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "P " << c[0] << ", rotor " << c[2] << " Hz");
    std::vector<creal_T> axes[3] = {tone(1e-4, c[2], 0.3), tone(2e-4, c[2], 2.0),
                                    tone(5e-5, c[2], -1.1)};
    const creal_T* z[3] = {axes[0].data(), axes[1].data(), axes[2].data()};
    vibration::RotorLine found[3];
    vibration::search_rotor_frequency_vibro_Freal(
        c[1], kRate, kSamples, c[0], z,
        c[1] != 50 ? vibration::FrequencyMode::control : vibration::FrequencyMode::fixed, found);
    const double shift = c[1] != 50 ? (50 - c[1]) / c[0] : 0;
    for (int a = 0; a < 3; ++a) {
      // a point of the 0.01 Hz grid of the shifted line next to it: the start of the
      // uncompensated band filter can tip the choice to the farther one
      const double below = std::floor((c[2] + shift) * 100) / 100 - shift;
      EXPECT_TRUE(std::fabs(found[a].frequency - below) < 1e-9 ||
                  std::fabs(found[a].frequency - below - 0.01) < 1e-9)
          << found[a].frequency << ", axis " << a;
      double f = found[a].frequency;
      const double v = vibration::find_rotor_freq(1 / kRate, kSamples, z[a], f);
      EXPECT_NEAR(f, c[2], 0.0005 + 1e-9);
      EXPECT_NEAR(v, std::abs(z[a][0].re + 1i * z[a][0].im), 1e-4 * v); // off-grid loss
    }
  }
  // a motor of five pole pairs is not served: nothing is found
  vibration::RotorLine none = vibration::search_rotor_frequency_fixed(kRate, 5, nullptr, 0);
  EXPECT_EQ(none.frequency + none.amplitude + none.level, 0.0);
}

TEST(RotorSearch, HarmonicsAndOilWhirlAreLinesOnlyWhereTheirWindowHoldsAPeak) {
  // a 2x line inside its window (flag 0); a 1x line just beyond the edge of its window and a
  // 3x window on the flank of a line (no peak inside, or the highest at the edge: flag 1);
  // one line per signal, so that none leaks into another's window
  const double fr = 24.41;
  const std::vector<creal_T> lines[4] = {tone(2e-4, fr + 0.35, 1), tone(3e-4, 2 * fr + 0.123, 0.4),
                                         tone(2e-4, 3 * fr + 2.2, 2),
                                         tone(2e-4, 3 * fr + 0.105, 2)};
  vibration::Harmonic h[4][3];
  for (int k = 0; k < 4; ++k)
    vibration::find_rotor_freq_all(fr, 1 / kRate, kSamples, lines[k].data(), h[k]);
  EXPECT_EQ(text(row({h[0][0].flag, h[1][1].flag, h[2][2].flag, h[3][2].flag})),
            text(row({1, 0, 1, 0})));
  EXPECT_NEAR(h[3][2].frequency, 3 * fr + 0.105, 1e-9); // on the third harmonic's 0.015 Hz grid
  EXPECT_NEAR(h[1][1].frequency, 2 * fr + 0.123, 0.0025 + 1e-9);
  EXPECT_NEAR(h[1][1].amplitude, 3e-4, 3e-4 * 1e-4);
  // oil whirl at 0.43 of the shaft speed
  double f = fr, flag = -1;
  const double a = vibration::find_oil_whirl_instability_freq(
      1 / kRate, kSamples, tone(1e-4, 0.43 * fr, 0).data(), f, flag);
  EXPECT_NEAR(f, 0.43 * fr, 0.005 + 1e-9);
  EXPECT_EQ(flag, 0.0);
  EXPECT_NEAR(a, 1e-4, 1e-4 * 1e-2);
}

// Through the whole chain of a module (counts, conversion, detrend and integration, analytic
// signal) the acceleration's detrend leaves a line that integrates to a parabola in the
// velocity; its leakage moves the line by up to 0.06 Hz and its amplitude by up to 3 % with
// the phase and the turns the record holds (docs/vibration-bias.md). The block only compares
// the vibration's rotor frequency with the magnetic one at 1 %.
constexpr double kChainFrequencyTol = 0.06, kChainAmplitudeTol = 0.03;

TEST(Bearing, TheFaultLinesOfAnOuterRaceDefectInBothModes) {
  // the textbook bearing: ball 10, pitch 50, no contact angle, 8 balls at 25 Hz
  const vibration::FaultFrequencies f = vibration::faultFrequencies({50, 10, 0, 8}, 25);
  EXPECT_EQ(text(row({f.bpfi, f.bpfo, f.ftf, f.bsf})), text(row({120, 80, 10, 100})));
  // at 15 degrees the ball-spin line takes the cosine squared and the ratio to the first power
  const vibration::FaultFrequencies t =
      vibration::faultFrequencies({52.5, 7.94, 15 * 3.14159265 / 180, 9}, 25);
  EXPECT_EQ(text(row({t.bpfi, t.bpfo, t.ftf, t.bsf})),
            text(row({128.934538, 96.065462, 10.673940, 141.976949})));

  synth::Machine m;
  m.bearing = {52.5, 7.94, 0.2618, 9}; // a 6205-sized deep-groove bearing, 15 degrees
  m.harmonics[0] = 0, m.outer_race = 0.03, m.resonance = 8000;
  const double bpfo = vibration::faultFrequencies(m.bearing, m.rotorFrequency()).bpfo;
  array<double, 2> g;
  vibration::v_data_IIS3DWBTR(
      row(synth::accelerometerCounts(synth::acceleration(m, 0, kRate, kSamples), kFullScale)),
      kFullScale, g);
  // the scan of the analytic acceleration: the modulus of the sum over the record
  const vibration::BearingLines scan = vibration::vibro_rms_bpfio_1(
      kRate, kSamples, m.rotorFrequency(), m.bearing, g, vibration::BearingMode::filter_cor, kRate);
  EXPECT_NEAR(scan.bpfo, 0.03 * kSamples, 0.03 * kSamples * kChainAmplitudeTol);
  EXPECT_NEAR(scan.f_bpfo, bpfo, 0.005 + 1e-9);
  EXPECT_LT(scan.bpfi, 0.05 * scan.bpfo);
  // the envelope of the ringing resonance holds the defect's line; its frequency is read a
  // bin high
  const vibration::BearingLines envelope =
      vibration::vibro_rms_bpfio_1(kRate, kSamples, m.rotorFrequency(), m.bearing, g,
                                   vibration::BearingMode::envspectrum, kRate);
  const double bin = kRate / kSamples;
  EXPECT_NEAR(envelope.bpfo, 0.03, 0.03 * 0.1); // scalloping of a line between two bins
  EXPECT_NEAR(envelope.f_bpfo, bpfo + bin, bin / 2 + 1e-9);
  EXPECT_LT(envelope.bpfi, 0.2 * envelope.bpfo);
}

// The gain of a set at f Hz (500 Hz sampling).
double gain(const std::vector<double>& h, double f) {
  std::complex<double> sum = 0;
  for (size_t k = 0; k < h.size(); ++k)
    sum += h[k] * std::exp(-2i * kPi * f * double(k) / 500.0);
  return std::abs(sum);
}

TEST(FirSets, HalfGainAtTheListedEdgesFlatPassBandsDeepStopBands) {
  // {set, taps, 0 band-pass / 1 band-stop / 2 low-pass, edges}
  struct Set {
    vibration::FirSet set;
    size_t taps;
    int kind;
    double lo, hi;
  };
  using F = vibration::FirSet;
  const Set sets[] = {{F::filter, 301, 0, 47, 53.25},     {F::b_filter, 501, 0, 19.25, 27},
                      {F::c_filter, 501, 0, 115, 122.25}, {F::d_filter, 501, 0, 12.25, 18},
                      {F::e_filter, 501, 0, 43.25, 49},   {F::f_filter, 501, 0, 16, 21.25},
                      {F::g_filter, 501, 0, 40.25, 44},   {F::h_filter, 301, 1, 5.5, 96.5},
                      {F::i_filter, 301, 1, 32.5, 67.75}, {F::j_filter, 301, 1, 34.75, 65.75},
                      {F::k_filter, 301, 1, 42.5, 57.75}, {F::third_1, 301, 2, 104.5, 250},
                      {F::third_2, 301, 0, 21.5, 78.5},   {F::third_3, 301, 0, 28.75, 71.5},
                      {F::third_4, 301, 0, 35.25, 65}};
  for (const Set& s : sets) {
    SCOPED_TRACE(testing::Message() << "set " << int(s.set) << ", " << s.lo << " to " << s.hi);
    const std::vector<double>& h = vibration::firSet(s.set);
    ASSERT_EQ(h.size(), s.taps);
    EXPECT_TRUE(std::equal(h.begin(), h.end(), h.rbegin())); // linear phase
    EXPECT_NEAR(gain(h, s.lo), 0.5, 0.01);
    EXPECT_NEAR(gain(h, s.hi), s.kind == 2 ? 0.0 : 0.5, 0.01);
    // away from the edges by 2.5 Hz: pass band within 1 %, stop band 45 dB down
    for (double f = 0; f <= 250; f += 0.25) {
      if (std::fabs(f - s.lo) < 2.5 || std::fabs(f - s.hi) < 2.5)
        continue;
      const bool inside = f > s.lo && f < s.hi;
      if (s.kind == 2 ? f < s.lo : inside == (s.kind == 0))
        EXPECT_NEAR(gain(h, f), 1.0, 0.01) << f << " Hz";
      else
        EXPECT_LT(gain(h, f), 0.0057) << f << " Hz";
    }
  }
}

// The magnetic channel as the module sends it: 4096 samples at 500 Hz of lines {Hz, counts}
// around a mid-scale of 2048, repaired as the block repairs it.
array<double, 2> field(std::initializer_list<std::pair<double, double>> lines) {
  array<double, 2> x, mag;
  x.set_size(1, 4096);
  for (int k = 0; k < 4096; ++k) {
    x[k] = 2048;
    for (const auto& [f, a] : lines)
      x[k] += a * std::cos(2 * kPi * f * k / 500);
  }
  vibration::dell_null_data(x, 4096, mag);
  return mag;
}

// The supply is read on a 0.002 Hz grid. The rotor frequency of one pole pair comes from one
// line on that grid; with more pole pairs the two lines' relative phase moves it by up to
// about 0.05 Hz (docs/vibration-bias.md).
constexpr double kSupplyTol = 0.001 + 1e-9, kOneLineTol = 0.004, kTwoLineTol = 0.06;

TEST(FieldAnalysis, SupplyAndSlipOfAMotorForEveryPolePairCountAndBothModes) {
  for (double P = 1; P <= 4; ++P) {
    for (const double supply : {49.9313, 47.3071}) {
      synth::Machine m;
      m.pole_pairs = P, m.supply = supply, m.slip = 0.0271, m.rotor_phase = 1;
      SCOPED_TRACE(testing::Message() << "P " << P << ", supply " << supply);
      const std::vector<double> samples = synth::magneticField(m, 500, 4096);
      array<double, 2> mag;
      vibration::dell_null_data(row(samples), 4096, mag);
      const vibration::SupplyAndSlip r = vibration::cal_param_ad_par(
          P, 4096, mag,
          supply == 47.3071 ? vibration::FrequencyMode::control : vibration::FrequencyMode::fixed,
          vibration::FieldFilter::amp1);
      EXPECT_NEAR(r.F, supply, kSupplyTol);
      EXPECT_NEAR(r.fr, m.rotorFrequency(), P == 1 ? kOneLineTol : kTwoLineTol);
      EXPECT_NEAR(r.speed, r.fr * 60, 1e-9);
      EXPECT_EQ(r.error, 0.0);
    }
  }
  // a motor of five pole pairs is not served; a converter's supply below 10 Hz is no supply
  const vibration::SupplyAndSlip five =
      vibration::cal_param_ad(50, 5, 4096, field({{50, 3000}}).data());
  const vibration::SupplyAndSlip slow =
      vibration::cal_param_ad_par(2, 4096, field({{9.71, 3000}}), vibration::FrequencyMode::control,
                                  vibration::FieldFilter::amp1);
  EXPECT_EQ(text(row({five.F, five.fr, five.s, slow.F, slow.fr})), text(row({0, 0, 0, 0, 0})));
}

TEST(FieldAnalysis, AWeakOrCrowdedFieldIsAnError) {
  // {supply line, second line at 49.8 Hz, line far out of the scan at 150 Hz, filter mode,
  // error}: amp1 wants a peak-to-peak above 500 counts, and a supply line 55 dB over the
  // field's RMS or 3 dB over the next line; amp2 only 35 dB over the RMS
  const double cases[][5] = {{240, 0, 0, 1, 1},    {260, 0, 0, 1, 0},    {100, 90, 600, 1, 1},
                             {100, 50, 600, 1, 0}, {100, 90, 300, 1, 0}, {100, 0, 6000, 2, 1},
                             {100, 0, 4000, 2, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c[0] << ", " << c[1] << ", " << c[2] << ", amp" << c[3]);
    const vibration::SupplyAndSlip r = vibration::cal_param_ad_par(
        2, 4096, field({{50.2, c[0]}, {49.8, c[1]}, {150, c[2]}}), vibration::FrequencyMode::fixed,
        c[3] == 1 ? vibration::FieldFilter::amp1 : vibration::FieldFilter::amp2);
    EXPECT_EQ(r.error, c[4]);
  }
}

// A row of module type 10 from the axes of machine `vib` (its Z axis from `z` if given) and the
// field of machine `mag`: 16384 samples at 26667 Hz, 4096 field samples at 500 Hz, 16 g.
vibration::FirstGenerationOutput block(const synth::Machine& vib, const synth::Machine& mag,
                                       unsigned word, const synth::Machine* z = nullptr) {
  array<double, 2> axes[3], none;
  for (int a = 0; a < 3; ++a)
    axes[a] = row(synth::accelerometerCounts(
        synth::acceleration(a == 2 && z ? *z : vib, a, kRate, kSamples), 16));
  vibration::FirstGenerationOutput out;
  vibro_tk701_3_ve_ns::vibro_tk701_3_ve(row(synth::magneticField(mag, 500, 4096)), none, none,
                                        axes[0], axes[1], axes[2], kSamples, kRate, 4096, 500, 55,
                                        vib.pole_pairs, vib.bearing, 16, word, out);
  return out;
}
double rss(const vibration::FirstGenerationOutput& o) {
  return std::hypot(o.table[0].vel[7], o.table[1].vel[7], o.table[2].vel[7]);
}

TEST(VibrationBlock, AHealthyMotorOfEachPolePairCount) {
  for (double P = 1; P <= 4; ++P) {
    synth::Machine m;
    m.pole_pairs = P, m.supply = 49.9313, m.slip = 0.0312, m.noise = 0.001, m.rotor_phase = 1;
    m.harmonics[0] = 0.3 / P; // a few mm/s at every speed
    m.bearing = {52.5, 7.94, 0.2618, 9};
    SCOPED_TRACE(testing::Message() << "P " << P);
    const vibration::FirstGenerationOutput o = block(m, m, 0);
    const double fr = m.rotorFrequency();
    EXPECT_NEAR(o.FREAL, m.supply, kSupplyTol);
    // the axes agree among themselves better than with the field here, so theirs is the speed
    EXPECT_NEAR(o.FRM, fr, kChainFrequencyTol);
    EXPECT_NEAR(o.SAD, m.slip, kChainFrequencyTol * P / m.supply);
    EXPECT_NEAR(o.SPEED, o.FRM * 60, 1e-9);
    for (int a = 0; a < 3; ++a) {
      const double want = m.harmonics[0] * synth::kAxisGain[a] * 9800 / (2 * kPi * fr);
      EXPECT_NEAR(o.imbalance[a], want, want * kChainAmplitudeTol) << "axis " << a;
      EXPECT_NEAR(o.harmonics[a][0], want, want * kChainAmplitudeTol) << "axis " << a;
    }
    EXPECT_TRUE(std::isfinite(o.bearing[0]) && std::isnan(o.bearing[4]));
    // no disagreement; the windows of the harmonics that hold no line flag where their
    // highest point is no peak of its own, the same on every axis
    const unsigned flags[] = {0x92000u, 0x49000u, 0x49000u, 0u};
    EXPECT_EQ(o.status_2, flags[int(P) - 1]);
  }
}

TEST(VibrationBlock, DecisionRulesOnEitherSideOfTheirLimits) {
  synth::Machine m;
  m.supply = 49.9313, m.slip = 0.0312, m.noise = 0.001, m.rotor_phase = 1;
  // stopped below 1.2 mm/s over the three axes: the speed is 0
  for (const double target : {1.19, 1.21}) {
    synth::Machine quiet = m;
    quiet.harmonics[0] = 0.05 * target / rss(block(m, m, 0x80000000u));
    const vibration::FirstGenerationOutput o = block(quiet, quiet, 0);
    SCOPED_TRACE(testing::Message() << "rss " << rss(o));
    EXPECT_EQ(rss(o) < 1.2, target < 1.2); // the machine was built on this side of the limit
    EXPECT_EQ(o.FRM == 0, rss(o) < 1.2);
    EXPECT_EQ(std::isnan(o.imbalance[0]), rss(o) < 1.2);
  }
  // the field says 3 % of slip, the axes 1 %: flagged, and the agreeing axes give the speed
  synth::Machine other = m;
  other.slip = 0.0112;
  vibration::FirstGenerationOutput o = block(other, m, 0);
  EXPECT_EQ(o.status_2 & 0x700u, 0x200u);
  EXPECT_NEAR(o.FRM, other.rotorFrequency(), kChainFrequencyTol);
  // a field of under 500 counts peak to peak is no field: the speed is 0
  synth::Machine weak = m;
  weak.field = 200, weak.field_rotor = 4;
  o = block(m, weak, 0);
  EXPECT_EQ(text(row({double(o.status_2 & 0x700u), o.FREAL, o.FRM, o.SAD, o.SPEED})),
            text(row({0x400, 0, 0, 0, 0})));
  // the option word: no rotor analysis; a journal bearing's oil whirl in place of its lines
  o = block(m, m, 0x80000000u);
  EXPECT_TRUE(std::isnan(o.FRM) && std::isnan(o.FREAL) && std::isnan(o.bearing[0]) &&
              std::isfinite(o.table[2].vel[7]) && o.status_2 == 0);
  o = block(m, m, 0x10u);
  EXPECT_TRUE(std::isnan(o.bearing[0]) && std::isfinite(o.bearing[4]));
}

TEST(VibrationBlock, AxesThatDisagreeWithEachOtherAndTheFieldLeaveNoSpeed) {
  // X and Y at a slip of 1 %, Z 1.6 % faster, the field at 6 %: both flags; with the two
  // lowest axes taken (0x2000) X and Y agree, only the field disagrees, and X and Y give the
  // speed
  synth::Machine m, xy, z;
  m.supply = xy.supply = z.supply = 49.9313, m.noise = xy.noise = z.noise = 0.001;
  m.slip = 0.06, xy.slip = 0.0112, z.slip = -0.005;
  for (const unsigned word : {0u, 0x2000u}) {
    const vibration::FirstGenerationOutput o = block(xy, m, word, &z);
    SCOPED_TRACE(testing::Message() << "word " << word);
    EXPECT_EQ(o.status_2 & 0x700u, word == 0 ? 0x300u : 0x200u);
    EXPECT_EQ(std::isnan(o.FRM), word == 0);
    EXPECT_TRUE(word == 0 || std::fabs(o.FRM - xy.rotorFrequency()) < kChainFrequencyTol);
  }
}

TEST(VibrationBlock, LIS344ModulesCountTheirRunsOfLostSamplesInTheStatus) {
  synth::Machine m;
  m.supply = 49.9313, m.slip = 0.0312, m.noise = 0.001;
  m.harmonics[0] = 0.3;
  array<double, 2> axes[3], field = row(synth::magneticField(m, 500, 4096));
  for (int a = 0; a < 3; ++a) {
    std::vector<double> counts =
        synth::accelerometerCounts(synth::acceleration(m, a, 2000, 4096), 2);
    if (a == 1)
      std::fill(counts.begin() + 100, counts.begin() + 140, 0.0); // 40 lost: 9 runs of 32
    axes[a] = row(counts);
  }
  const double ku[3] = {1, 1, 1}, g_del[3] = {1, 1, 1};
  vibration::FirstGenerationOutput o;
  vibro_tk701_2_ve_ns::vibro_tk701_2_ve(field, axes[0], axes[1], axes[2], 4096, 4096, ku, 55, 2,
                                        g_del, m.bearing, 0, o);
  EXPECT_EQ(o.status_1, 1u);
  EXPECT_EQ(o.status_2 & 0x7u, 0x2u);
  EXPECT_NEAR(o.FRM, m.rotorFrequency(), kTwoLineTol);
  EXPECT_TRUE(std::isnan(o.table[0].acc[7])); // no acceleration bands in this form
}

} // namespace
