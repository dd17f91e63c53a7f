// findpeaks(y, 'SortStr', 'descend'). Octave's findpeaks is another algorithm, so the cases
// are worked by hand from the rules: strictly above the left neighbour, strictly above the
// next different value on the right, plateaus at their first sample, ends never peaks, NaN
// as +Inf in the scan, +Inf always a peak, stable descending order.
#include "coder/findpeaks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

struct Peaks {
  std::vector<double> pks;
  std::vector<double> locs;
};

Peaks run(const std::vector<double>& y) {
  Peaks p;
  coder::findpeaks(y.data(), static_cast<int>(y.size()), p.pks, p.locs);
  return p;
}

TEST(FindPeaks, HandWorkedCases) {
  // simple: peaks 5 at 2 and 7 at 5; descending order puts 7 first
  Peaks p = run({1, 5, 2, 3, 7, 1});
  EXPECT_EQ(p.pks, (std::vector<double>{7, 5}));
  EXPECT_EQ(p.locs, (std::vector<double>{5, 2}));
  // ends are never peaks; a monotone sequence has none
  EXPECT_TRUE(run({9, 1, 2}).locs.empty());
  EXPECT_TRUE(run({1, 2, 3, 4, 5}).locs.empty());
  EXPECT_TRUE(run({5, 4, 3}).locs.empty());
  // plateau: one peak at its first sample; a plateau that rises again is no peak
  EXPECT_EQ(run({1, 4, 4, 4, 2}).locs, (std::vector<double>{2}));
  EXPECT_TRUE(run({1, 4, 4, 6}).locs.empty());
  // equal heights keep ascending position
  p = run({0, 3, 0, 3, 0, 3, 0});
  EXPECT_EQ(p.locs, (std::vector<double>{2, 4, 6}));
  // a NaN counts as +Inf: its neighbours are no peaks, and it is not reported
  EXPECT_TRUE(run({0, 2, kNaN, 2, 0}).locs.empty());
  EXPECT_EQ(run({0, 2, 1, kNaN, 1, 3, 0}).locs, (std::vector<double>{6, 2}));
  // +Inf samples are peaks, first and last included, ahead of finite ones
  p = run({kInf, 0, 4, 1, kInf});
  EXPECT_EQ(p.locs, (std::vector<double>{1, 5, 3}));
  EXPECT_EQ(p.pks[0], kInf);
  // -Inf is an ordinary low value: 2 stands above it on both sides
  EXPECT_EQ(run({-kInf, 2, -kInf}).locs, (std::vector<double>{2}));
  // short inputs
  EXPECT_TRUE(run({}).locs.empty());
  EXPECT_TRUE(run({1.0}).locs.empty());
}

TEST(FindPeaks, LineInAScanIsFoundAtItsMaximum) {
  // physics: the modulus of a scan across a spectral line is a sinc-shaped main lobe with
  // side lobes; the highest peak is the main lobe's top
  std::vector<double> s(401);
  for (int i = 0; i < 401; ++i) {
    const double u = (i - 173.0) / 20.0;
    s[static_cast<size_t>(i)] = u == 0.0 ? 1.0 : std::fabs(std::sin(M_PI * u) / (M_PI * u));
  }
  const Peaks p = run(s);
  ASSERT_FALSE(p.locs.empty());
  EXPECT_EQ(p.locs[0], 174.0);
  EXPECT_EQ(p.pks[0], 1.0);
  for (size_t k = 1; k < p.pks.size(); ++k)
    EXPECT_LE(p.pks[k], p.pks[k - 1]);
}

} // namespace
