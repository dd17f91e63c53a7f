#include "coder/windows.h"

#include "array_convert.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// Element-wise: the far ends of kaiser(n, 38) are near 1e-16 and matter to the THD skirts
// as much as the centre. Octave's Bessel routine and its different argument formula agree
// with MATLAB to 8e-15; ours rounds the extended-precision series once.
constexpr double kKaiserTol = 2e-14;
// Norm-wise (the window peaks at 1): Octave evaluates the second half without mirroring,
// from cosines of angles near 2 pi, which carry absolute errors of a few 1e-17.
constexpr double kHanningTol = 1e-15;

TEST(Windows, KaiserTukeyAndHanningMatchOctave) {
  const GoldenFile golden("tests/coder/golden/windows.txt");
  WorstError worst("kaiser (element-wise), hanning (norm-wise) against Octave");
  for (int n : {1, 2, 3, 4, 5, 8, 16, 17, 100, 101, 500, 4096}) {
    const std::string s = std::to_string(n);
    SCOPED_TRACE(s);
    coder::array<double, 1> w;
    coder::kaiser(n, 38.0, w);
    worst.expect(closeElementwise(toVector(w), golden["kaiser38_" + s], kKaiserTol, 0.0));
    coder::kaiser(n, 5.0, w);
    worst.expect(closeElementwise(toVector(w), golden["kaiser5_" + s], kKaiserTol, 0.0));
    coder::hanning(n, w);
    worst.expect(closeRelative(toVector(w), golden["hanning_" + s], kHanningTol));
    coder::tukeywin(n, w);
    EXPECT_EQ(toVector(w), golden["tukeywin_" + s]);
  }
  coder::array<double, 1> w;
  coder::kaiser(9, 0.0, w);
  EXPECT_EQ(toVector(w), golden["kaiser0_9"]);
}

TEST(Windows, SymmetryAndHandWorkedValues) {
  coder::array<double, 1> w;
  // hanning(3) = 0.5 (1 - cos(2 pi k / 4)), k = 1..3: 0.5, 1, 0.5.
  coder::hanning(3, w);
  ASSERT_EQ(w.size(0), 3);
  EXPECT_DOUBLE_EQ(w[0], 0.5);
  EXPECT_DOUBLE_EQ(w[1], 1.0);
  EXPECT_EQ(w[2], w[0]);
  coder::hanning(1, w);
  EXPECT_EQ(w[0], 1.0);
  // Exactly mirrored, as the blocks' correlation sums assume.
  coder::hanning(4096, w);
  for (int k = 0; k < 2048; ++k)
    ASSERT_EQ(w[k], w[4095 - k]);
  coder::kaiser(40960, 38.0, w);
  for (int k = 0; k < 20480; k += 7)
    ASSERT_EQ(w[k], w[40959 - k]);
  // kaiser ends are 1 / I0(38); I0(38) = 3.2781564739262179e15 (series in long double).
  coder::kaiser(5, 38.0, w);
  EXPECT_NEAR(w[0] * coder::internal::besselI0(38.0), 1.0, 1e-15);
  EXPECT_EQ(w[2], 1.0);
  EXPECT_EQ(coder::internal::besselI0(0.0), 1.0);
  // I0(1) = 1.26606587775200833559824462521471753760767031135496...; the series rounds to
  // the nearest double.
  EXPECT_EQ(coder::internal::besselI0(1.0), 1.2660658777520084);
  // A kept window is handed out again unchanged; a NaN shape parameter gives NaN samples.
  coder::array<double, 1> again;
  coder::kaiser(40960, 38.0, again);
  coder::kaiser(40960, 38.0, w);
  EXPECT_EQ(toVector(again), toVector(w));
  coder::kaiser(3, std::nan(""), w);
  EXPECT_TRUE(std::isnan(w[0]));
  EXPECT_TRUE(std::isinf(coder::internal::besselI0(-HUGE_VAL)));
  coder::tukeywin(0, w);
  EXPECT_EQ(w.numel(), 0);
  coder::hanning(-3, w);
  EXPECT_EQ(w.numel(), 0);
}

} // namespace
