#include "coder/detrend.h"

#include "array_convert.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// Both sides solve the same 2-column least-squares problem by QR; the residual is small
// against the offset it removes, so the error is taken relative to the input's scale.
constexpr double kDetrendTol = 1e-13;

std::vector<double> relativeToInput(const std::vector<double>& v, const std::vector<double>& x) {
  double scale = 0.0;
  for (double e : x)
    scale = std::max(scale, std::fabs(e));
  std::vector<double> out;
  for (double e : v)
    out.push_back(e / scale);
  return out;
}

TEST(Detrend, RemovesTheSameLineAsOctave) {
  const GoldenFile golden("tests/coder/golden/detrend.txt");
  WorstError worst("detrend against Octave, relative to the input's scale");
  auto check = [&](const std::string& xname, const std::string& yname) {
    SCOPED_TRACE(xname);
    const auto& x = golden[xname];
    coder::array<double, 1> y;
    coder::detrend(toColumn(x), y);
    ASSERT_EQ(y.size(0), static_cast<int>(x.size()));
    std::vector<double> got = toVector(y);
    worst.expect(closeElementwise(relativeToInput(got, x), relativeToInput(golden[yname], x),
                                  kDetrendTol, 1.0));
  };
  for (int n : {1, 2, 3, 5, 10, 97, 1001, 4096}) {
    check("x_" + std::to_string(n), "y_" + std::to_string(n));
  }
  check("xoff", "yoff");
}

TEST(Detrend, StraightLinesVanishAndNaNSpreads) {
  coder::array<double, 2> line;
  line.set_size(1, 50);
  for (int k = 0; k < 50; ++k)
    line[k] = 3.0 - 0.25 * k;
  coder::array<double, 2> y;
  coder::detrend(line, y);
  ASSERT_EQ(y.size(0), 1);
  ASSERT_EQ(y.size(1), 50);
  for (int k = 0; k < 50; ++k)
    EXPECT_NEAR(y[k], 0.0, 1e-14);

  // In place, a NaN sample makes the whole result NaN.
  line[7] = std::nan("");
  coder::detrend(line, line);
  for (int k = 0; k < 50; ++k)
    EXPECT_TRUE(std::isnan(line[k]));

  coder::array<double, 1> single;
  single.set_size(1);
  single[0] = 42.0;
  coder::array<double, 1> out;
  coder::detrend(single, out);
  EXPECT_EQ(out[0], 0.0);
}

} // namespace
