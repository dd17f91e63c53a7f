#include "coder/envspectrum.h"

#include "array_convert.h"
#include "golden_signals.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// Two FFTs, a 51-tap convolution and a modulus, against the same steps in Octave: FFT
// rounding, norm-wise.
constexpr double kEnvTol = 1e-12;

TEST(Envspectrum, MatchesTheOctaveTranscription) {
  const GoldenFile golden("tests/coder/golden/envspectrum.txt");
  WorstError worst("envspectrum against the Octave transcription");
  for (int c = 1; c <= 6; ++c) {
    const std::string s = std::to_string(c);
    SCOPED_TRACE(s);
    const auto& setup = golden["case_" + s];
    const double fs = setup[0];
    const int n = static_cast<int>(setup[1]);
    const auto x =
        golden.has("x_" + s) ? golden["x_" + s] : lcgSignal(static_cast<int>(setup[3]), n);
    coder::array<double, 1> es;
    coder::array<double, 1> f;
    coder::array<double, 1> env;
    coder::array<double, 1> t;
    coder::envspectrum(toColumn(x), fs, es, f, env, t);
    ASSERT_EQ(es.size(0), n / 2 + 1);
    ASSERT_EQ(f.size(0), n / 2 + 1);
    ASSERT_EQ(env.size(0), n);
    ASSERT_EQ(t.size(0), n);
    std::vector<double> got_es = toVector(es);
    std::vector<double> got_env = toVector(env);
    std::vector<double> got_f = toVector(f);
    if (golden.has("idx_" + s)) {
      got_es.clear();
      got_env.clear();
      got_f.clear();
      for (double k : golden["idx_" + s]) {
        got_es.push_back(es[static_cast<int>(k)]);
        got_env.push_back(env[static_cast<int>(k)]);
        got_f.push_back(f[static_cast<int>(k)]);
      }
    }
    worst.expect(closeRelative(got_es, golden["es_" + s], kEnvTol));
    worst.expect(closeRelative(got_env, golden["env_" + s], kEnvTol));
    EXPECT_EQ(got_f, golden["f_" + s]);
    EXPECT_EQ(t[n - 1], (n - 1) / fs);
  }
}

TEST(Envspectrum, AmplitudeModulatedToneHasItsLineAtTheModulationFrequency) {
  // A bearing-like signal: a 5 kHz carrier (inside the default band 4..6 kHz at 16 kHz)
  // modulated to 30 % by a 125 Hz defect rate, 16384 samples (125 Hz is bin 128).
  const double fs = 16000.0;
  const int n = 16384;
  const double pi = 3.141592653589793;
  coder::array<double, 2> x;
  x.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    const double t = k / fs;
    x[k] = (1.0 + 0.3 * std::cos(2.0 * pi * 125.0 * t)) * std::cos(2.0 * pi * 5000.0 * t);
  }
  coder::array<double, 1> es;
  coder::array<double, 1> f;
  coder::array<double, 1> env;
  coder::array<double, 1> t;
  coder::envspectrum(x, fs, es, f, env, t);
  int best = 1;
  for (int k = 2; k < es.numel(); ++k) {
    if (es[k] > es[best])
      best = k;
  }
  EXPECT_EQ(best, 128);
  EXPECT_EQ(f[best], 125.0);
  // The envelope line is the modulation depth, seen through the band-pass's gain at the
  // side bands 125 Hz off the centre (within 1 % of unity for this order-50 design).
  EXPECT_NEAR(es[best], 0.3, 0.003);
  // The envelope's mean is gone: DC holds nothing.
  EXPECT_NEAR(es[0], 0.0, 1e-12);
  // Fewer than four samples: nothing to analyse, four empty outputs.
  coder::array<double, 2> short_x = toRow({1.0, 2.0, 3.0});
  coder::envspectrum(short_x, fs, es, f, env, t);
  EXPECT_EQ(es.numel() + f.numel() + env.numel() + t.numel(), 0);
}

} // namespace
