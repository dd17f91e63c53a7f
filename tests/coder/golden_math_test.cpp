// envspectrum, thd, pchip, smoothdata and the statistics against Octave (the generators
// beside the data in golden/ say how each reference is built).
#include "coder/envspectrum.h"
#include "coder/median.h"
#include "coder/moments.h"
#include "coder/pchip.h"
#include "coder/smoothdata.h"
#include "coder/sum.h"
#include "coder/thd.h"

#include "support/numeric_compare.h"

#include <cmath>
#include <string>

namespace {

using namespace vek_test;
using V = std::vector<double>;

// envspectrum: two FFTs, a 51-tap convolution and a modulus, the same steps in Octave.
// pchip: the same formulas, another evaluation order of the cubic.
// thd: tone sums over a Kaiser lobe and a noise floor 1e-6 of the peak agree to 1e-12; room
// for a skirt bin decided differently at the noise floor.
// loess: weighted quadratic fits by two different QR solvers on systems scaled to [-1, 1];
// its window is a whole number of steps, equal up to that step's rounding.
constexpr double kEnvTol = 1e-12, kPchipTol = 1e-13, kThdTol = 1e-9, kLoessTol = 1e-12,
                 kWindowTol = 1e-14;
// Blocked against plain summation order (up to 16384 values), scaled 2-norm against the
// two-pass formula: rounding; third and fourth powers amplify it up to 4x; the even-count
// median's average may differ in the last bit.
constexpr double kSumTol = 1e-13, kMomentTol = 1e-12, kMedianTol = 4e-16;

TEST(Envspectrum, MatchesTheOctaveTranscription) {
  const GoldenFile g("tests/coder/golden/envspectrum.txt");
  for (const std::string s : {"1", "2", "3", "4", "5", "6"}) {
    const V& c = g["case_" + s]; // fs, n, kind, seed
    const int n = static_cast<int>(c[1]);
    coder::array<double, 1> es, f, env, t;
    coder::envspectrum(toColumn(g.has("x_" + s) ? g["x_" + s] : lcgSignal(int(c[3]), n)), c[0], es,
                       f, env, t);
    ASSERT_EQ((std::vector<int>{es.size(0), f.size(0), env.size(0), t.size(0)}),
              (std::vector<int>{n / 2 + 1, n / 2 + 1, n, n}));
    auto pick = [&](const coder::array<double, 1>& a) { // long cases: every 37th bin stored
      V v = g.has("idx_" + s) ? V() : toVector(a);
      for (double k : g.has("idx_" + s) ? g["idx_" + s] : V())
        v.push_back(a[static_cast<int>(k)]);
      return v;
    };
    EXPECT_TRUE(closeRelative(pick(es), g["es_" + s], kEnvTol)) << s;
    EXPECT_TRUE(closeRelative(pick(env), g["env_" + s], kEnvTol)) << s;
    EXPECT_EQ(pick(f), g["f_" + s]) << s;
    EXPECT_EQ(t[n - 1], (n - 1) / c[0]) << s;
  }
}

TEST(Thd, MatchesTheOctaveReference) {
  const GoldenFile g("tests/coder/golden/thd.txt");
  for (const std::string s : {"1", "2", "3", "4", "5", "6"}) {
    const V& c = g["case_" + s]; // fs, n, fundamental, harmonics, seed
    V x = lcgSignal(static_cast<int>(c[4]), static_cast<int>(c[1]));
    const double pi = 3.141592653589793, fs = c[0], f = c[2];
    for (size_t k = 0; k < x.size(); ++k) { // the signal of gen_thd.m, same operations
      const double t = static_cast<double>(k) / fs;
      x[k] = std::sin(2.0 * pi * f * t) + 0.05 * std::sin(2.0 * pi * 3.0 * f * t + 0.3) +
             0.02 * std::cos(2.0 * pi * 5.0 * f * t) + 1e-3 * x[k];
    }
    coder::array<double, 1> hp, hf;
    const double r = coder::thd(toRow(g.has("x_" + s) ? g["x_" + s] : x), fs, int(c[3]), hp, hf);
    EXPECT_TRUE(closeRelative({r}, g["r_" + s], kThdTol)) << s;
    EXPECT_TRUE(closeRelative(toVector(hp), g["harmpow_" + s], kThdTol)) << s;
    EXPECT_TRUE(closeRelative(toVector(hf), g["harmfreq_" + s], kThdTol)) << s;
  }
}

TEST(Smoothdata, MatchesIndependentTranscriptionOfTheRulesAndPchipOctave) {
  const GoldenFile p("tests/coder/golden/pchip.txt");
  for (const std::string s : {"_2", "_3", "_4", "_9", "_100"}) {
    const V &x = p["x" + s], &xq = p["xq" + s];
    V vq(xq.size());
    coder::pchip(x.data(), p["v" + s].data(), int(x.size()), xq.data(), int(xq.size()), vq.data());
    EXPECT_TRUE(closeRelative(vq, p["vq" + s], kPchipTol)) << s;
  }
  const GoldenFile g("tests/coder/golden/smoothdata.txt");
  for (const std::string n : {"3", "7", "16", "41", "128", "300"}) {
    for (const std::string& name : {"uniform_" + n, "jitter_" + n}) {
      const V &t = g["t_" + name], &a = g["a_" + name];
      V s(a.size());
      coder::smoothdata(a.data(), t.data(), int(a.size()), s.data());
      EXPECT_TRUE(closeRelative(s, g["s_" + name], kLoessTol)) << name;
      EXPECT_TRUE(
          closeRelative({coder::internal::chooseWindowSize(a.data(), t.data(), int(a.size()))},
                        g["window_" + name], kWindowTol))
          << name;
    }
  }
}

TEST(Statistics, MatchOctaveOverSizes) {
  const GoldenFile g("tests/coder/golden/statistics.txt");
  const struct {
    const char *key, *input;
    double (*fn)(const double*, int);
    double tol;
  } stats[] = {{"sum", "x", coder::sum, kSumTol},
               {"mean", "x", coder::mean, kSumTol},
               {"std", "x", coder::b_std, kSumTol},
               {"median", "x", coder::median, kMedianTol},
               {"peak2peak", "x", coder::peak2peak, 0},
               {"kurtosis", "x", coder::kurtosis, kMomentTol},
               {"skewness", "x", coder::skewness, kMomentTol},
               {"nanmean", "xnan", coder::nanmean, kSumTol},
               {"peak2peaknan", "xnan", coder::peak2peak, 0}};
  for (int n : {1, 2, 3, 5, 7, 8, 13, 16, 64, 127, 1024, 1025, 2048, 3001, 16384}) {
    const std::string s = "_" + std::to_string(n);
    for (const auto& st : stats) {
      const V& x = g[st.input + s];
      ASSERT_EQ(x.size(), size_t(n));
      if (g.has(st.key + s)) { // no moments of one value
        EXPECT_TRUE(closeRelative({st.fn(x.data(), n)}, g[st.key + s], st.tol)) << st.key << s;
      }
    }
    const V& xn = g["xnan" + s]; // the 'includenan' routines: one NaN spoils the result
    EXPECT_TRUE(std::isnan(coder::b_std(xn.data(), n)) && std::isnan(coder::median(xn.data(), n)));
  }
  EXPECT_EQ(coder::median(g["xmedianmix"].data(), 4), g["medianmix"][0]);
}

} // namespace
