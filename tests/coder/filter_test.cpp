#include "coder/filter.h"

#include "array_convert.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace vek_test;

// Direct-form sums of up to 501 products; Octave adds them in another order.
constexpr double kFilterTol = 1e-14;

TEST(Filter, RealAndComplexSignalsMatchOctave) {
  const GoldenFile golden("tests/coder/golden/filter.txt");
  WorstError worst("filter against Octave");
  const int cases[][2] = {{1, 1},   {1, 10},    {2, 1},      {2, 7},     {5, 3},
                          {5, 100}, {51, 1000}, {299, 1000}, {501, 2000}};
  for (const auto& c : cases) {
    const std::string key = std::to_string(c[0]) + "_" + std::to_string(c[1]);
    SCOPED_TRACE(key);
    const auto b = toRow(golden["b_" + key]);
    const auto& re = golden["xre_" + key];
    const auto& im = golden["xim_" + key];
    coder::array<creal_T, 2> x;
    x.set_size(1, static_cast<int>(re.size()));
    for (int k = 0; k < x.numel(); ++k)
      x[k] = {re[static_cast<size_t>(k)], im[static_cast<size_t>(k)]};
    coder::array<creal_T, 2> y;
    coder::filter(b, x, y);
    ASSERT_EQ(y.size(1), x.size(1));
    worst.expect(
        closeRelative(flatten(y), join(golden["yre_" + key], golden["yim_" + key]), kFilterTol));
    coder::array<double, 2> yr;
    coder::filter(b, toRow(re), yr);
    worst.expect(closeRelative(toVector(yr), golden["yreal_" + key], kFilterTol));
  }
}

TEST(Filter, ImpulseGivesTheTapsAndTheLengthStays) {
  coder::array<double, 1> b = toColumn({0.25, 0.5, 0.25});
  coder::array<double, 1> x = toColumn({1.0, 0.0, 0.0, 0.0, 2.0});
  coder::array<double, 1> y;
  coder::filter(b, x, y);
  EXPECT_EQ(toVector(y), (std::vector<double>{0.25, 0.5, 0.25, 0.0, 0.5}));
  coder::array<double, 1> none;
  coder::filter(none, x, y);
  EXPECT_EQ(toVector(y), (std::vector<double>(5, 0.0)));
  // In place.
  coder::filter(b, x, x);
  EXPECT_EQ(x[1], 0.5);
}

} // namespace
