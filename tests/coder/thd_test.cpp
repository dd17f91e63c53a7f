#include "coder/thd.h"

#include "array_convert.h"
#include "golden_signals.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// The PSD carries FFT rounding (1e-16 of the peak); the tone sums and the centroid are
// dominated by the lobe and the noise floor (1e-6 of the peak), so they agree to about
// 1e-12; the tolerance leaves room for a skirt bin decided differently at the noise floor.
constexpr double kThdTol = 1e-9;

// The test signal of gen_thd.m, built with the same operations in the same order.
std::vector<double> supplySignal(double fs, int n, double f, int seed) {
  const double pi = 3.141592653589793;
  const auto noise = lcgSignal(seed, n);
  std::vector<double> x(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double t = static_cast<double>(k) / fs;
    x[static_cast<size_t>(k)] =
        std::sin(2.0 * pi * f * t) + 0.05 * std::sin(2.0 * pi * 3.0 * f * t + 0.3) +
        0.02 * std::cos(2.0 * pi * 5.0 * f * t) + 1e-3 * noise[static_cast<size_t>(k)];
  }
  return x;
}

TEST(Thd, MatchesTheOctaveReference) {
  const GoldenFile golden("tests/coder/golden/thd.txt");
  WorstError worst("thd against the Octave reference");
  for (int c = 1; c <= 6; ++c) {
    const std::string s = std::to_string(c);
    SCOPED_TRACE(s);
    const auto& setup = golden["case_" + s];
    const double fs = setup[0];
    const int n = static_cast<int>(setup[1]);
    const auto x = golden.has("x_" + s) ? golden["x_" + s]
                                        : supplySignal(fs, n, setup[2], static_cast<int>(setup[4]));
    coder::array<double, 1> harmpow;
    coder::array<double, 1> harmfreq;
    const double r = coder::thd(toRow(x), fs, static_cast<int>(setup[3]), harmpow, harmfreq);
    worst.expect(closeRelative({r}, golden["r_" + s], kThdTol));
    worst.expect(closeRelative(toVector(harmpow), golden["harmpow_" + s], kThdTol));
    worst.expect(closeRelative(toVector(harmfreq), golden["harmfreq_" + s], kThdTol));
  }
}

TEST(Thd, FivePercentThirdHarmonicReadsFivePercent) {
  // A 50 Hz supply with 5 % of third harmonic: the blocks turn r into 10^(r/20) * 100 %.
  const double fs = 500.0;
  const int n = 1000;
  const double pi = 3.141592653589793;
  coder::array<double, 1> x;
  x.set_size(n);
  for (int k = 0; k < n; ++k) {
    const double t = k / fs;
    x[k] = 230.0 * (std::sin(2.0 * pi * 50.0 * t) + 0.05 * std::sin(2.0 * pi * 150.0 * t));
  }
  coder::array<double, 1> harmpow;
  coder::array<double, 1> harmfreq;
  const double r = coder::thd(x, fs, 5, harmpow, harmfreq);
  // The rectangle rule over a Kaiser lobe recovers each tone's power to about 1e-6.
  EXPECT_NEAR(std::pow(10.0, r / 20.0) * 100.0, 5.0, 1e-4);
  ASSERT_EQ(harmfreq.size(0), 5);
  EXPECT_NEAR(harmfreq[0], 50.0, 1e-9);
  EXPECT_NEAR(harmfreq[2], 150.0, 1e-9);
  // Fundamental power: amplitude^2 / 2 in dB.
  EXPECT_NEAR(harmpow[0], 10.0 * std::log10(230.0 * 230.0 / 2.0), 1e-4);
  // A pure tone has no harmonics to speak of; silence has no fundamental.
  for (int k = 0; k < n; ++k)
    x[k] = std::sin(2.0 * pi * 50.0 * k / fs);
  EXPECT_LT(coder::thd(x, fs, 5, harmpow, harmfreq), -200.0);
  for (int k = 0; k < n; ++k)
    x[k] = 3.0;
  EXPECT_TRUE(std::isnan(coder::thd(x, fs, 5, harmpow, harmfreq)));
  EXPECT_TRUE(std::isnan(harmfreq[0]));
  // Too short or too few harmonics: NaN, no crash.
  coder::array<double, 1> one = toColumn({1.0});
  EXPECT_TRUE(std::isnan(coder::thd(one, fs, 5, harmpow, harmfreq)));
  EXPECT_TRUE(std::isnan(coder::thd(x, fs, 1, harmpow, harmfreq)));
}

TEST(GetToneFromPSD, RollsDownBothSlopesAndGuardsByTheNoiseBandwidth) {
  // Hand-worked: a tone over bins 1..3 of a PSD on a 1 Hz grid, noise minima at 0 and 4.
  const auto P = toColumn({0.1, 2.0, 8.0, 4.0, 0.05, 0.2, 0.1});
  const auto F = toColumn({0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
  double power = 0.0;
  double freq = 0.0;
  int left = 0;
  int right = 0;
  coder::getToneFromPSD(P, F, 0.5, false, 0.0, power, freq, left, right);
  // Global maximum at bin 2; left roll stops at bin 0 (0.1 <= 2 continues to -1), right
  // roll stops after bin 4 (0.05 < 0.2): the tone is bins 0..4.
  EXPECT_EQ(left, 0);
  EXPECT_EQ(right, 4);
  EXPECT_DOUBLE_EQ(freq, (0 * 0.1 + 1 * 2.0 + 2 * 8.0 + 3 * 4.0 + 4 * 0.05) / 14.15);
  // Starting at 0 Hz, the extra width (4 - 0)/4 = 1 goes to the end: widths all 1.
  EXPECT_DOUBLE_EQ(power, 14.15);
  // A target near 5 Hz: bins 4..6 hold their maximum at 5; the left roll passes 0.05 and
  // stops below 4.0, the right one runs to the end: the tone is bins 4..6. It does not start
  // at 0 Hz, so the extra width (6 - 4)/2 = 1 goes first: widths 1, 1, 1.
  coder::getToneFromPSD(P, F, 0.5, true, 5.2, power, freq, left, right);
  EXPECT_EQ(left, 4);
  EXPECT_EQ(right, 6);
  EXPECT_DOUBLE_EQ(power, 0.05 + 0.2 + 0.1);
  EXPECT_DOUBLE_EQ(freq, (4 * 0.05 + 5 * 0.2 + 6 * 0.1) / 0.35);
  // The guard: a wide noise bandwidth lifts the power and pins the frequency to the bin.
  coder::getToneFromPSD(P, F, 3.0, true, 5.0, power, freq, left, right);
  EXPECT_DOUBLE_EQ(power, 0.6000000000000001);
  EXPECT_EQ(freq, 5.0);
  // Beyond the grid: NaN.
  coder::getToneFromPSD(P, F, 0.5, true, 6.5, power, freq, left, right);
  EXPECT_TRUE(std::isnan(power));
  EXPECT_TRUE(std::isnan(freq));
}

} // namespace
