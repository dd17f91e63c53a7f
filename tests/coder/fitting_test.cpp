// Least squares, polyfit/polyval, interp1, the moving statistics and grp2idx: Octave's
// values where Octave follows MATLAB, normal equations and hand-worked cases elsewhere.
#include "coder/grp2idx.h"
#include "coder/interp1.h"
#include "coder/mldivide.h"
#include "coder/movfun.h"
#include "coder/polyfit.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// QR with column pivoting against Octave's QR without: the centred cubic basis is well
// conditioned (cond < 1e3), so the coefficients agree to a few hundred ulp at most.
constexpr double kPolyfitTol = 1e-12;
// Octave's interp1 forms v(lo) + s*(v(lo+1)-v(lo)), ours (1-r)*v(lo) + r*v(lo+1): the
// last bits differ on values ~1e3.
constexpr double kInterpTol = 1e-15;
// Per-window mean and median against Octave's mean and median of the same windows.
constexpr double kMovTol = 1e-15;
// Small full-rank systems: QR against the normal equations solved in extended precision.
constexpr double kLstsqTol = 1e-12;

TEST(Polyfit, MatchesOctaveOnHistories) {
  const vek_test::GoldenFile g("tests/coder/golden/polyfit.txt");
  for (int n : {4, 5, 7, 16, 100, 1000}) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    const std::vector<double>& t = g["t" + s];
    const std::vector<double>& x = g["x" + s];
    std::vector<double> p;
    coder::polyfit_S S;
    double mu[2];
    coder::polyfit(t.data(), x.data(), n, 3, p, &S, mu);
    EXPECT_TRUE(vek_test::closeRelative({mu[0], mu[1]}, g["mu" + s], 1e-14));
    EXPECT_TRUE(vek_test::closeRelative(p, g["p" + s], kPolyfitTol));
    // a residual of exactly zero (n = 4 points, 4 coefficients) has no relative accuracy
    EXPECT_TRUE(vek_test::closeElementwise({S.normr}, g["normr" + s], 1e-9, 1e-3));
    EXPECT_EQ(S.df, n > 4 ? n - 4 : 0);
    const std::vector<double>& tq = g["tq" + s];
    std::vector<double> yq(tq.size());
    coder::polyval(p, tq.data(), static_cast<int>(tq.size()), mu, yq.data());
    EXPECT_TRUE(vek_test::closeRelative(yq, g["yq" + s], kPolyfitTol));
  }
}

TEST(Polyfit, RankDeficientGivesBasicSolutionWithZeros) {
  // three points for a cubic: V is 3x4, rank 3, one coefficient exactly 0, and the fit
  // passes through the points (Octave solves this differently, so it is checked here)
  const std::vector<double> t = {0.0, 1.0, 3.0};
  const std::vector<double> x = {1.0, 2.0, 0.5};
  std::vector<double> p;
  double mu[2];
  coder::polyfit(t.data(), x.data(), 3, 3, p, nullptr, mu);
  int zeros = 0;
  for (double c : p)
    zeros += c == 0.0 ? 1 : 0;
  EXPECT_EQ(zeros, 1);
  std::vector<double> back(3);
  coder::polyval(p, t.data(), 3, mu, back.data());
  EXPECT_TRUE(vek_test::closeRelative(back, x, 1e-13));
  // all abscissae equal: std 0, NaN coefficients as MATLAB gives
  const std::vector<double> same = {5.0, 5.0, 5.0, 5.0, 5.0};
  const std::vector<double> y = {1.0, 2.0, 3.0, 4.0, 5.0};
  coder::polyfit(same.data(), y.data(), 5, 3, p, nullptr, mu);
  EXPECT_EQ(mu[1], 0.0);
  for (double c : p)
    EXPECT_TRUE(std::isnan(c));
}

TEST(Mldivide, QrAgreesWithNormalEquationsAndLuSolvesSquare) {
  std::mt19937 gen(2026U);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int m : {2, 3, 5, 8, 13}) {
    for (int n : {1, 2, 3}) {
      if (n >= m)
        continue;
      SCOPED_TRACE("m = " + std::to_string(m) + ", n = " + std::to_string(n));
      std::vector<double> a(static_cast<size_t>(m * n));
      std::vector<double> b(static_cast<size_t>(m));
      for (double& v : a)
        v = u(gen);
      for (double& v : b)
        v = u(gen);
      std::vector<double> x(static_cast<size_t>(n));
      int rank = 0;
      coder::qrsolve(a.data(), m, n, b.data(), x.data(), &rank);
      EXPECT_EQ(rank, n);
      // normal equations A'A x = A'b by Gaussian elimination in extended precision
      std::vector<long double> g(static_cast<size_t>(n * (n + 1)), 0.0L);
      for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
          for (int k = 0; k < m; ++k) {
            g[static_cast<size_t>(i * (n + 1) + j)] +=
                static_cast<long double>(a[static_cast<size_t>(k + i * m)]) *
                a[static_cast<size_t>(k + j * m)];
          }
        }
        for (int k = 0; k < m; ++k) {
          g[static_cast<size_t>(i * (n + 1) + n)] +=
              static_cast<long double>(a[static_cast<size_t>(k + i * m)]) *
              b[static_cast<size_t>(k)];
        }
      }
      for (int c = 0; c < n; ++c) {
        for (int r = c + 1; r < n; ++r) {
          const long double f =
              g[static_cast<size_t>(r * (n + 1) + c)] / g[static_cast<size_t>(c * (n + 1) + c)];
          for (int j = c; j <= n; ++j)
            g[static_cast<size_t>(r * (n + 1) + j)] -= f * g[static_cast<size_t>(c * (n + 1) + j)];
        }
      }
      std::vector<double> want(static_cast<size_t>(n));
      for (int r = n - 1; r >= 0; --r) {
        long double v = g[static_cast<size_t>(r * (n + 1) + n)];
        for (int j = r + 1; j < n; ++j)
          v -= g[static_cast<size_t>(r * (n + 1) + j)] * want[static_cast<size_t>(j)];
        want[static_cast<size_t>(r)] =
            static_cast<double>(v / g[static_cast<size_t>(r * (n + 1) + r)]);
      }
      EXPECT_TRUE(vek_test::closeRelative(x, want, kLstsqTol));
    }
  }
  // square: hand-worked 2x2 with a row swap, [0 2; 1 1] x = [4; 3] -> x = [1; 2]
  const std::vector<double> a = {0.0, 1.0, 2.0, 1.0};
  const std::vector<double> b = {4.0, 3.0};
  std::vector<double> x(2);
  coder::mldivide(a.data(), 2, 2, b.data(), x.data());
  EXPECT_EQ(x[0], 1.0);
  EXPECT_EQ(x[1], 2.0);
  // duplicated column: rank 1, the pivoted-out coefficient exactly 0
  const std::vector<double> dup = {1.0, 2.0, 3.0, 1.0, 2.0, 3.0};
  const std::vector<double> rhs = {2.0, 4.0, 6.0};
  int rank = 0;
  coder::qrsolve(dup.data(), 3, 2, rhs.data(), x.data(), &rank);
  EXPECT_EQ(rank, 1);
  EXPECT_TRUE(x[0] == 0.0 || x[1] == 0.0);
  EXPECT_NEAR(x[0] + x[1], 2.0, 1e-15);
}

TEST(Interp1, MatchesOctaveLinearWithNaNOutside) {
  const vek_test::GoldenFile g("tests/coder/golden/interp1.txt");
  for (int n : {2, 3, 8, 97, 1000}) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    const std::vector<double>& x = g["x" + s];
    const std::vector<double>& v = g["v" + s];
    const std::vector<double>& xq = g["xq" + s];
    std::vector<double> vq(xq.size());
    coder::interp1(x.data(), v.data(), n, xq.data(), static_cast<int>(xq.size()), vq.data());
    EXPECT_TRUE(vek_test::closeElementwise(vq, g["vq" + s], kInterpTol, 1.0));
    // knots reproduce the data exactly
    for (int k = 0; k < n; ++k) {
      EXPECT_EQ(vq[xq.size() - static_cast<size_t>(n) + static_cast<size_t>(k)],
                v[static_cast<size_t>(k)]);
    }
  }
  // decreasing abscissae are flipped with the values
  const std::vector<double> xd = {3.0, 2.0, 0.0};
  const std::vector<double> vd = {30.0, 20.0, 0.0};
  const double q = 1.0;
  double out = 0.0;
  coder::interp1(xd.data(), vd.data(), 3, &q, 1, &out);
  EXPECT_EQ(out, 10.0);
}

TEST(MovingStatistics, MatchOctaveTrailingWindows) {
  const vek_test::GoldenFile g("tests/coder/golden/movfun.txt");
  for (int n : {1, 2, 5, 6, 7, 10, 11, 13, 64, 1000}) {
    const std::string s = "_" + std::to_string(n);
    SCOPED_TRACE("n = " + std::to_string(n));
    const std::vector<double>& x = g["x" + s];
    std::vector<double> mm(x.size());
    std::vector<double> md(x.size());
    coder::movmean(x.data(), n, 5, mm.data());
    coder::movmedian(x.data(), n, 9, md.data());
    EXPECT_TRUE(vek_test::closeElementwise(mm, g["movmean" + s], kMovTol, 1.0));
    EXPECT_TRUE(vek_test::closeElementwise(md, g["movmedian" + s], kMovTol, 1.0));
  }
}

TEST(Grp2idx, SortedGroupsNaNMissing) {
  // MATLAB's rule, hand-worked (Octave numbers in order of appearance and mishandles NaN):
  // s = [3 1 NaN 2 3 -0 0 NaN] -> groups 0, 1, 2, 3 -> g = [4 2 NaN 3 4 1 1 NaN]
  const std::vector<double> s = {3, 1, kNaN, 2, 3, -0.0, 0, kNaN};
  std::vector<double> g;
  std::vector<double> labels;
  coder::grp2idx(s.data(), 8, g, labels);
  EXPECT_TRUE(vek_test::closeRelative(g, {4, 2, kNaN, 3, 4, 1, 1, kNaN}, 0.0));
  EXPECT_EQ(labels, (std::vector<double>{0, 1, 2, 3}));
  EXPECT_FALSE(std::signbit(labels[0]));
  // rotor speeds rounded to multiples of 2, as the trend block groups them
  const std::vector<double> speeds = {50, 48, 50, 0, 0, 24, 50};
  coder::grp2idx(speeds.data(), 7, g, labels);
  EXPECT_EQ(g, (std::vector<double>{4, 3, 4, 1, 1, 2, 4}));
  coder::grp2idx(nullptr, 0, g, labels);
  EXPECT_TRUE(g.empty());
  EXPECT_TRUE(labels.empty());
}

} // namespace
