#include "coder/hilbert.h"

#include "array_convert.h"
#include "golden_signals.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// Two FFTs of the same length as Octave's; the rounding of FFTW's plans for the two
// libraries' lengths differs by a few ulp, norm-wise.
constexpr double kHilbertTol = 1e-12;

TEST(Hilbert, AnalyticSignalMatchesOctave) {
  const GoldenFile golden("tests/coder/golden/hilbert.txt");
  WorstError worst("hilbert against Octave");
  for (int n : {1, 2, 3, 4, 5, 8, 9, 16, 17, 100, 101, 1000, 1001}) {
    const std::string s = std::to_string(n);
    SCOPED_TRACE(s);
    coder::array<creal_T, 2> z;
    coder::hilbert(toRow(golden["x_" + s]), z);
    ASSERT_EQ(z.size(0), 1);
    ASSERT_EQ(z.size(1), n);
    worst.expect(
        closeRelative(flatten(z), join(golden["re_" + s], golden["im_" + s]), kHilbertTol));
  }
  for (int n : {4096, 16384}) {
    const std::string s = std::to_string(n);
    SCOPED_TRACE(s);
    coder::array<creal_T, 2> z;
    coder::hilbert(toRow(lcgSignal(9, n)), z);
    std::vector<double> re;
    std::vector<double> im;
    for (double k : golden["idx_" + s]) {
      re.push_back(z[static_cast<int>(k)].re);
      im.push_back(z[static_cast<int>(k)].im);
    }
    worst.expect(
        closeRelative(join(re, im), join(golden["bre_" + s], golden["bim_" + s]), kHilbertTol));
  }
}

TEST(Hilbert, CosineTurnsIntoSineAndKeepsTheColumnShape) {
  // A cosine with a whole number of periods: the Hilbert transform is the sine, the
  // envelope is flat, and the real part is the input itself.
  const int n = 64;
  coder::array<double, 1> x;
  x.set_size(n);
  for (int k = 0; k < n; ++k)
    x[k] = std::cos(2.0 * 3.141592653589793 * 5.0 * k / n);
  coder::array<creal_T, 1> z;
  coder::hilbert(x, z);
  ASSERT_EQ(z.size(0), n);
  for (int k = 0; k < n; ++k) {
    EXPECT_NEAR(z[k].re, x[k], 1e-14);
    EXPECT_NEAR(z[k].im, std::sin(2.0 * 3.141592653589793 * 5.0 * k / n), 1e-14);
  }
  coder::array<double, 1> empty;
  coder::hilbert(empty, z);
  EXPECT_EQ(z.numel(), 0);
}

} // namespace
