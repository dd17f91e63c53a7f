// Ascending sort and sortrows(A, -1) against Octave's values and hand-worked cases.
#include "coder/sort.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

TEST(SortRows, MatchesOctaveDescendingStableNaNFirst) {
  const vek_test::GoldenFile g("tests/coder/golden/sortrows.txt");
  for (int m : {1, 2, 3, 7, 16, 101, 401}) {
    const std::string s = "_" + std::to_string(m);
    SCOPED_TRACE("rows = " + std::to_string(m));
    const std::vector<double>& a = g["a" + s];
    ASSERT_EQ(static_cast<int>(a.size()), 3 * m);
    std::vector<double> b(a.size());
    std::vector<int> idx(static_cast<size_t>(m));
    coder::sortrows(a.data(), m, 3, b.data(), idx.data());
    const std::vector<double>& want = g["b" + s];
    for (size_t k = 0; k < b.size(); ++k) {
      // a permutation of the rows: exact, NaN where NaN
      if (std::isnan(want[k])) {
        EXPECT_TRUE(std::isnan(b[k])) << k;
      } else {
        EXPECT_EQ(b[k], want[k]) << k;
      }
    }
    for (int i = 0; i < m; ++i)
      EXPECT_EQ(idx[static_cast<size_t>(i)], g["idx" + s][static_cast<size_t>(i)]);
  }
}

TEST(Sort, AscendingStableNaNLast) {
  std::vector<double> x = {3.0, kNaN, -kInf, 1.0, 3.0, kInf, -0.5};
  std::vector<int> idx(x.size());
  coder::internal::sort(x.data(), 7, idx.data());
  const std::vector<double> want = {-kInf, -0.5, 1.0, 3.0, 3.0, kInf};
  for (size_t k = 0; k < want.size(); ++k)
    EXPECT_EQ(x[k], want[k]);
  EXPECT_TRUE(std::isnan(x[6]));
  const std::vector<int> want_idx = {3, 7, 4, 1, 5, 6, 2};
  EXPECT_EQ(idx, want_idx);
  double three[3] = {2.0, 1.0, 2.0};
  coder::internal::sort(three, 3, nullptr);
  EXPECT_EQ(three[0], 1.0);
  EXPECT_EQ(three[2], 2.0);
}

} // namespace
