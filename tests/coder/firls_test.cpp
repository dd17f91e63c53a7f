#include "coder/firls.h"

#include "array_convert.h"
#include "support/numeric_compare.h"
#include "worst_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>

namespace {

using namespace vek_test;

// Octave solves the same least-squares problem by another formulation; how far two exact
// solvers may drift apart grows with the condition of the normal equations:
// short, well-conditioned designs agree to rounding.
constexpr double kShortTol = 1e-12;
// Order 298: condition near 1e6-1e8 for 4-unit transitions.
constexpr double kOrder298Tol = 1e-8;
// Order 500 with a 2-unit pass band: condition 7.8e10, solvers differ by ~1e-6 of the
// largest tap.
constexpr double kOrder500Tol = 1e-5;

// |H(f)| of a linear-phase design on a grid of 512 points between 0 and Nyquist.
std::vector<double> response(const std::vector<double>& h) {
  std::vector<double> r;
  const double pi = 3.141592653589793;
  for (int i = 0; i < 512; ++i) {
    const double w = pi * i / 511.0;
    double re = 0.0;
    double im = 0.0;
    for (size_t k = 0; k < h.size(); ++k) {
      re += h[k] * std::cos(w * static_cast<double>(k));
      im -= h[k] * std::sin(w * static_cast<double>(k));
    }
    r.push_back(std::hypot(re, im));
  }
  return r;
}

TEST(Firls, DesignsMatchOctave) {
  const GoldenFile golden("tests/coder/golden/firls.txt");
  WorstError worst_short("firls short orders against Octave");
  WorstError worst_298("firls order 298 against Octave");
  WorstError worst_500("firls order 500 against Octave");
  WorstError worst_response("firls amplitude responses against Octave");
  for (const std::string name : {"short30", "short40", "short50", "low50", "o298a", "o298p1",
                                 "o298p4", "o298low", "o500cor", "o500p2"}) {
    SCOPED_TRACE(name);
    const int order = static_cast<int>(golden["order_" + name][0]);
    coder::array<double, 2> h;
    coder::firls(order, golden["f_" + name], golden["a_" + name], h);
    ASSERT_EQ(h.size(0), 1);
    ASSERT_EQ(h.size(1), order + 1);
    const auto& want = golden["h_" + name];
    const auto got = toVector(h);
    // The amplitude response, which the rotor search sees, carries the same error as the
    // taps (the transition bands take it).
    const double tol = order == 500 ? kOrder500Tol : order == 298 ? kOrder298Tol : kShortTol;
    auto& worst = order == 500 ? worst_500 : order == 298 ? worst_298 : worst_short;
    worst.expect(closeRelative(got, want, tol));
    worst_response.expect(closeRelative(response(got), response(want), tol));
    // Linear phase: exactly symmetric taps.
    for (int k = 0; k <= order / 2; ++k)
      ASSERT_EQ(h[k], h[order - k]);
  }
}

TEST(Firls, FixedFormsOfTheBlocksAndTheCache) {
  const double edges[6] = {0.0, 45.0 / 125.0, 49.0 / 125.0, 51.0 / 125.0, 55.0 / 125.0, 1.0};
  coder::array<double, 2> h500;
  coder::firls(edges, h500);
  EXPECT_EQ(h500.size(1), 501);
  coder::array<double, 2> h298;
  coder::b_firls(edges, h298);
  EXPECT_EQ(h298.size(1), 299);
  // Pass band centre near unity gain, stop bands near zero.
  const auto r = response(toVector(h500));
  EXPECT_NEAR(r[static_cast<size_t>(std::lround(0.4 * 511))], 1.0, 0.02);
  EXPECT_LT(r[100], 0.01);
  EXPECT_LT(r[400], 0.01);

  // A repeated design hands out the same immutable taps.
  const std::vector<double> f(edges, edges + 6);
  const std::vector<double> a = {0, 0, 1, 1, 0, 0};
  const auto first = coder::firlsTaps(500, f, a);
  const auto again = coder::firlsTaps(500, f, a);
  EXPECT_EQ(first.get(), again.get());
  EXPECT_EQ(*first, toVector(h500));

  // Threads asking for a new design at once all get the same bits.
  std::vector<std::vector<double>> seen(4);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < seen.size(); ++t) {
    threads.emplace_back([&seen, t] {
      seen[t] = *coder::firlsTaps(298, {0, 0.1, 0.15, 0.3, 0.35, 1}, {0, 0, 1, 1, 0, 0});
    });
  }
  for (auto& th : threads)
    th.join();
  for (size_t t = 1; t < seen.size(); ++t)
    EXPECT_EQ(seen[t], seen[0]);

  // Odd orders and odd edge counts have no type I design: an empty row, no crash.
  coder::array<double, 2> none;
  coder::firls(31, {0, 0.5, 0.6, 1}, {1, 1, 0, 0}, none);
  EXPECT_EQ(none.numel(), 0);
  coder::firls(30, {0, 0.5, 0.6}, {1, 1, 0}, none);
  EXPECT_EQ(none.numel(), 0);
}

// The least-squares optimum makes the error H - D orthogonal to every cosine of the design
// over the bands. Checked by numerical integration (composite Simpson, 4000 intervals per
// band), independent of the closed-form sinc sums the design is built from, including a
// sloped band.
TEST(Firls, ErrorIsOrthogonalToEveryCosineOverTheBands) {
  struct Design {
    int order;
    std::vector<double> f;
    std::vector<double> a;
  };
  const Design designs[] = {{20, {0.0, 0.2, 0.3, 0.6, 0.7, 1.0}, {0, 0, 1, 1, 0, 0}},
                            {30, {0.0, 0.3, 0.5, 1.0}, {0.0, 1.0, 0.5, 0.5}},
                            {40, {0.0, 0.4, 0.5, 1.0}, {1, 1, 0, 0}}};
  const double pi = 3.141592653589793;
  // Simpson's rule at this step integrates these smooth integrands to about 1e-14.
  constexpr double kOrthogonalityTol = 1e-11;
  for (const auto& d : designs) {
    SCOPED_TRACE(d.order);
    coder::array<double, 2> h;
    coder::firls(d.order, d.f, d.a, h);
    const int half = d.order / 2;
    std::vector<double> coef = {h[half]};
    for (int k = 1; k <= half; ++k)
      coef.push_back(2.0 * h[half - k]);
    double worst = 0.0;
    for (int i = 0; i <= half; ++i) {
      double inner = 0.0;
      for (size_t s = 0; s + 1 < d.f.size(); s += 2) {
        const double lo = d.f[s] / 2.0;
        const double hi = d.f[s + 1] / 2.0;
        const int steps = 4000;
        const double step = (hi - lo) / steps;
        for (int q = 0; q <= steps; ++q) {
          const double F = lo + q * step;
          double H = coef[0];
          for (int k = 1; k <= half; ++k)
            H += coef[static_cast<size_t>(k)] * std::cos(2.0 * pi * k * F);
          const double D = d.a[s] + (d.a[s + 1] - d.a[s]) * (F - lo) / (hi - lo);
          const double weight = (q == 0 || q == steps) ? 1.0 : (q % 2 == 1 ? 4.0 : 2.0);
          inner += weight * (H - D) * std::cos(2.0 * pi * i * F) * step / 3.0;
        }
      }
      worst = std::max(worst, std::fabs(inner));
    }
    EXPECT_LT(worst, kOrthogonalityTol);
  }
}

TEST(Fir1, BandPassMatchesThePublishedStepsAndUnitCentreGain) {
  const GoldenFile golden("tests/coder/golden/fir1.txt");
  WorstError worst("fir1 against the Octave transcription of MATLAB's steps");
  // Sinc values and a cosine window, one product and one division per tap.
  constexpr double kFir1Tol = 1e-14;
  for (int c = 1; c <= 5; ++c) {
    SCOPED_TRACE(c);
    const auto& setup = golden["case_" + std::to_string(c)];
    coder::array<double, 2> b;
    coder::fir1(static_cast<int>(setup[0]), setup[1], setup[2], b);
    worst.expect(closeRelative(toVector(b), golden["b_" + std::to_string(c)], kFir1Tol));
  }
  // Hand-worked anchors of fir1(50, [0.5 0.75]), the envelope band-pass: the end taps, the
  // centre tap and the sum of magnitudes computed from the published steps.
  coder::array<double, 2> b;
  coder::fir1(50, 0.5, 0.75, b);
  ASSERT_EQ(b.size(1), 51);
  EXPECT_NEAR(b[0], -2.9786226008576822e-04, 1e-18);
  EXPECT_EQ(b[0], b[50]);
  EXPECT_NEAR(b[25], 0.24960085385863898, 1e-16);
  double sum_abs = 0.0;
  for (int k = 0; k < 51; ++k)
    sum_abs += std::fabs(b[k]);
  EXPECT_NEAR(sum_abs, 1.6349685100087903, 1e-15);
  // Unit gain at the band centre 0.625 of Nyquist.
  double re = 0.0;
  double im = 0.0;
  for (int k = 0; k < 51; ++k) {
    re += b[k] * std::cos(3.141592653589793 * 0.625 * k);
    im -= b[k] * std::sin(3.141592653589793 * 0.625 * k);
  }
  EXPECT_NEAR(std::hypot(re, im), 1.0, 1e-15);
}

} // namespace
