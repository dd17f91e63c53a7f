// pchip against Octave, and smoothdata's loess with its automatic window: against an
// independent Octave transcription of the documented rules, quadratic reproduction, and the
// end handling on uneven stamps pinned to the uniform rule.
#include "coder/pchip.h"
#include "coder/smoothdata.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Octave's pchip (SLATEC PCHIM slopes) against ours: same formulas, different evaluation
// order of the cubic.
constexpr double kPchipTol = 1e-13;
// Weighted quadratic fits by two different QR solvers on systems scaled to [-1, 1].
constexpr double kLoessTol = 1e-12;
// A quadratic is reproduced by every degree-2 local fit up to the solver's rounding.
constexpr double kQuadraticTol = 1e-11;

TEST(Pchip, MatchesOctaveWithExtrapolation) {
  const vek_test::GoldenFile g("tests/coder/golden/pchip.txt");
  for (int n : {2, 3, 4, 9, 100}) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    const std::vector<double>& x = g["x" + s];
    const std::vector<double>& v = g["v" + s];
    const std::vector<double>& xq = g["xq" + s];
    std::vector<double> vq(xq.size());
    coder::pchip(x.data(), v.data(), n, xq.data(), static_cast<int>(xq.size()), vq.data());
    EXPECT_TRUE(vek_test::closeRelative(vq, g["vq" + s], kPchipTol));
  }
  // shape preservation: monotone data stays monotone, a flat piece stays flat
  const std::vector<double> x = {0, 1, 2, 3, 4};
  const std::vector<double> v = {0, 1, 1, 5, 5.5};
  std::vector<double> q;
  for (int k = 0; k <= 400; ++k)
    q.push_back(k / 100.0);
  std::vector<double> out(q.size());
  coder::pchip(x.data(), v.data(), 5, q.data(), static_cast<int>(q.size()), out.data());
  for (size_t k = 1; k < out.size(); ++k)
    EXPECT_GE(out[k], out[k - 1]) << q[k];
  for (size_t k = 100; k <= 200; ++k)
    EXPECT_EQ(out[k], 1.0) << q[k];
}

TEST(Smoothdata, MatchesIndependentTranscriptionOfTheRules) {
  const vek_test::GoldenFile g("tests/coder/golden/smoothdata.txt");
  for (int n : {3, 7, 16, 41, 128, 300}) {
    for (const char* kind : {"uniform_", "jitter_"}) {
      const std::string name = kind + std::to_string(n);
      SCOPED_TRACE(name);
      const std::vector<double>& t = g["t_" + name];
      const std::vector<double>& a = g["a_" + name];
      const double window = coder::internal::chooseWindowSize(a.data(), t.data(), n);
      // the window is a whole number of samples times a step: equal up to that step's rounding
      EXPECT_TRUE(vek_test::closeRelative({window}, g["window_" + name], 1e-14));
      std::vector<double> s(a.size());
      coder::smoothdata(a.data(), t.data(), n, s.data());
      EXPECT_TRUE(vek_test::closeRelative(s, g["s_" + name], kLoessTol));
    }
  }
}

TEST(Smoothdata, ReproducesAQuadraticOnEveryPath) {
  // a degree-2 local fit returns a quadratic unchanged, at the ends as in the middle
  for (bool uneven : {false, true}) {
    SCOPED_TRACE(uneven ? "uneven stamps" : "uniform stamps");
    const int n = 60;
    std::vector<double> t(n);
    std::vector<double> a(n);
    for (int k = 0; k < n; ++k) {
      t[static_cast<size_t>(k)] = 600.0 * k + (uneven ? 97.0 * std::sin(1.3 * k) : 0.0);
      const double u = t[static_cast<size_t>(k)] / 3600.0;
      a[static_cast<size_t>(k)] = 3.0 - 0.2 * u + 0.01 * u * u;
    }
    std::vector<double> s(a.size());
    coder::internal::localRegression(a.data(), t.data(), n, 9000.0, s.data());
    EXPECT_TRUE(vek_test::closeRelative(s, a, kQuadraticTol));
  }
}

TEST(Smoothdata, UnevenStampsShiftEndWindowsLikeTheUniformRule) {
  // Stamps one rounding step away from uniform take the time-window path; its windows at
  // the ends (shifted to [t1, t1 + w) and (tn - w, tn]) must select the samples that the
  // documented uniform rule selects, so both paths give the same smoothing.
  const int n = 50;
  std::vector<double> t(n);
  std::vector<double> a(n);
  for (int k = 0; k < n; ++k) {
    t[static_cast<size_t>(k)] = 600.0 * k;
    a[static_cast<size_t>(k)] = std::sin(0.21 * k) + 0.1 * std::cos(1.7 * k) + 0.01 * k;
  }
  for (double samples : {5.0, 6.0, 9.0, 10.0, 17.0, 50.0}) {
    SCOPED_TRACE("window of " + std::to_string(samples) + " samples");
    std::vector<double> uniform(a.size());
    coder::internal::localRegression(a.data(), t.data(), n, samples * 600.0, uniform.data());
    std::vector<double> nudged(t);
    nudged[7] = std::nextafter(nudged[7], 1e9);
    std::vector<double> uneven(a.size());
    coder::internal::localRegression(a.data(), nudged.data(), n, samples * 600.0, uneven.data());
    EXPECT_TRUE(vek_test::closeRelative(uneven, uniform, 1e-12));
  }
}

TEST(Smoothdata, SmallWindowsAndMissingValues) {
  const std::vector<double> t = {0, 600, 1250, 1800, 2400, 3100};
  const std::vector<double> a = {1.0, 4.0, 2.0, 8.0, 5.0, 7.0};
  std::vector<double> s(a.size());
  // windows narrower than twice the smallest step hold one point: the data come back
  coder::internal::localRegression(a.data(), t.data(), 6, 1000.0, s.data());
  EXPECT_EQ(s, a);
  // a window of three samples fits a quadratic through them exactly: data come back too
  coder::internal::localRegression(a.data(), t.data(), 6, 1300.0, s.data());
  EXPECT_EQ(s, a);
  // uniform stamps, window under two samples
  const std::vector<double> tu = {0, 1, 2, 3, 4, 5};
  coder::internal::localRegression(a.data(), tu.data(), 6, 1.9, s.data());
  EXPECT_EQ(s, a);
  // NaN samples take no part (the default 'omitnan'); the NaN point itself gets the fit of
  // its neighbours, and a series of one point is copied
  std::vector<double> line = {1, 2, kNaN, 4, 5, 6, 7, 8};
  std::vector<double> tl = {0, 1, 2, 3, 4, 5, 6, 7};
  std::vector<double> out(line.size());
  coder::internal::localRegression(line.data(), tl.data(), 8, 6.0, out.data());
  for (size_t k = 0; k < out.size(); ++k)
    EXPECT_NEAR(out[k], static_cast<double>(k + 1), 1e-12) << k;
  double one = 3.5;
  double res = 0.0;
  coder::smoothdata(&one, &one, 1, &res);
  EXPECT_EQ(res, 3.5);
  // constant data: no spectral bin exceeds the share, the window is one step
  const std::vector<double> flat(10, 2.0);
  std::vector<double> tf(10);
  for (int k = 0; k < 10; ++k)
    tf[static_cast<size_t>(k)] = 600.0 * k;
  EXPECT_EQ(coder::internal::chooseWindowSize(flat.data(), tf.data(), 10), 600.0);
  // two rows with one time stamp: no resampling over repeated abscissae, the heuristic runs
  // on the values as they stand, scaled by the mean step, and the smoothing still runs
  std::vector<double> td = {0, 600, 600, 1800, 2400, 3000, 3600, 4200, 4800, 5400};
  std::vector<double> ad = {1, 2, 2.5, 3, 2, 1, 2, 3, 2, 1};
  const double w = coder::internal::chooseWindowSize(ad.data(), td.data(), 10);
  std::vector<double> plain(ad.size());
  std::vector<double> tp = tf;
  EXPECT_EQ(w, coder::internal::chooseWindowSize(ad.data(), tp.data(), 10));
  coder::smoothdata(ad.data(), td.data(), 10, plain.data());
  for (double v : plain)
    EXPECT_TRUE(std::isfinite(v));
}

} // namespace
