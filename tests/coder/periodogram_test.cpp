#include "coder/periodogram.h"

#include "array_convert.h"
#include "coder/windows.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace vek_test;

// One FFT and a squared modulus: rounding of the FFT, norm-wise over the PSD.
constexpr double kPsdTol = 1e-12;
// Octave builds the frequency grid another way (6e-14 absolute at 5 kHz).
constexpr double kGridTol = 1e-13;

TEST(Periodogram, WindowedAndDefaultFormsMatchOctave) {
  const GoldenFile golden("tests/coder/golden/periodogram.txt");
  WorstError worst_p("periodogram PSD against Octave");
  WorstError worst_f("periodogram frequency grid against Octave");
  for (int c = 1; c <= 6; ++c) {
    const std::string s = std::to_string(c);
    SCOPED_TRACE(s);
    const auto& setup = golden["case_" + s];
    const auto x = toColumn(golden["x_" + s]);
    coder::array<double, 1> w;
    coder::kaiser(x.numel(), 38.0, w);
    coder::array<double, 1> P;
    coder::array<double, 1> F;
    coder::periodogram(x, w, static_cast<int>(setup[1]), setup[2], P, F);
    worst_p.expect(closeRelative(toVector(P), golden["P_" + s], kPsdTol));
    worst_f.expect(closeRelative(toVector(F), golden["F_" + s], kGridTol));
  }
  for (int n : {100, 300, 1000}) {
    const std::string s = std::to_string(n);
    SCOPED_TRACE(s);
    coder::array<double, 1> P;
    coder::array<double, 1> w;
    coder::periodogram(toColumn(golden["dx_" + s]), P, w);
    worst_p.expect(closeRelative(toVector(P), golden["dP_" + s], kPsdTol));
    worst_f.expect(closeRelative(toVector(w), golden["dw_" + s], kGridTol));
  }
}

TEST(Periodogram, ParsevalAndGridEnds) {
  // A rectangular window: the one-sided PSD integrates to the mean square of the signal.
  const int n = 64;
  coder::array<double, 1> x;
  x.set_size(n);
  for (int k = 0; k < n; ++k)
    x[k] = std::sin(0.7 * k) + 0.1 * k / n;
  coder::array<double, 1> w;
  coder::tukeywin(n, w);
  coder::array<double, 1> P;
  coder::array<double, 1> F;
  coder::periodogram(x, w, n, 1000.0, P, F);
  ASSERT_EQ(P.size(0), n / 2 + 1);
  double integral = 0.0;
  for (int k = 0; k < P.numel(); ++k)
    integral += P[k] * (1000.0 / n);
  double mean_square = 0.0;
  for (int k = 0; k < n; ++k)
    mean_square += x[k] * x[k] / n;
  EXPECT_NEAR(integral, mean_square, 1e-13);
  EXPECT_EQ(F[0], 0.0);
  EXPECT_EQ(F[n / 2], 500.0);
  // Odd length: the last point is half a bin below Nyquist.
  coder::array<double, 1> x7 = toColumn({1, 2, 3, 4, 5, 6, 7});
  coder::tukeywin(7, w);
  coder::periodogram(x7, w, 7, 7.0, P, F);
  ASSERT_EQ(F.size(0), 4);
  EXPECT_EQ(F[3], 3.0);
  // A window of the wrong length gives nothing.
  coder::periodogram(x, w, n, 1000.0, P, F);
  EXPECT_EQ(P.numel(), 0);
  EXPECT_EQ(F.numel(), 0);
}

} // namespace
