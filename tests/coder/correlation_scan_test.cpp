// The correlation scan against direct sums: in extended precision (the truth the stated
// bound refers to) and in the double form of the blocks' loops.
#include "coder/correlation_scan.h"

#include "support/numeric_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

// The kernel's stated bound: every sum within this fraction of sum|y| of the exact one.
constexpr double kScanBound = 5e-14;
// The double direct form rounds 2*pi*f*k*dt at phases up to ~1e4 rad, and over a line in
// the band those errors add up coherently (1.3e-13 of sum|y| measured); kernel and direct
// form agree within the sum of their two errors.
constexpr double kDirectBound = 5e-13;

struct Case {
  const char* what;
  int n;
  double dt;
  double f0;
  double step;
  int m;
  int first_phase;
};

// The grids and lengths of the blocks: the decimated rotor searches (401 points over 16384
// samples, 5401 over 2048), the fine supply scan at 500 Hz, cor_left_and_right's windowed
// scan, the 10 kHz current stream and scans that count the phase from 0.
const Case kCases[] = {
    {"rotor fixed P1, 401 x 16384", 16384, 8.0 / 26667.0, 47.0, 0.01, 401, 1},
    {"rotor control P1, 5401 x 2048", 2048, 8.0 / 26667.0, 7.0, 0.01, 5401, 1},
    {"supply fine scan, 401 x 4096", 4096, 0.002, 49.6, 0.002, 401, 1},
    {"right line moving down, 300 x 4096", 4096, 0.002, 75.0, -0.002, 300, 1},
    {"current cor_for at 10 kHz, 201 x 20000", 20000, 0.0001, 49.8, 0.002, 201, 0},
    {"bearing line cor_for, 201 x 8192", 8192, 1.0 / 26667.0, 180.0, 0.01, 201, 0},
    {"one sample", 1, 0.002, 49.6, 0.1, 9, 1},
    {"two samples, prime grid", 2, 0.002, 10.0, 0.1, 7, 1},
    {"prime length", 1021, 0.002, 10.0, 0.1, 501, 1},
};

std::vector<creal_T> testSignal(int n, double dt, unsigned seed) {
  // a line near the scanned band, its harmonic, and noise: like a velocity's analytic signal
  std::mt19937 gen(seed);
  std::normal_distribution<double> noise(0.0, 0.3);
  std::vector<creal_T> y(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double t = k * dt;
    const double a = 2.0 * M_PI * 49.87 * t;
    const double b = 2.0 * M_PI * 99.74 * t + 0.3;
    y[static_cast<size_t>(k)] = creal_T{1.5 * std::cos(a) + 0.2 * std::cos(b) + noise(gen),
                                        1.5 * std::sin(a) + 0.2 * std::sin(b) + noise(gen)};
  }
  return y;
}

// Direct sum in extended precision: the reference the bound is stated against.
creal_T exactSum(const std::vector<creal_T>& y, double dt, int first_phase, double f) {
  const long double two_pi = 6.283185307179586476925286766559L;
  long double s_re = 0.0L;
  long double s_im = 0.0L;
  for (size_t k = 0; k < y.size(); ++k) {
    const long double cycles =
        static_cast<long double>(f) * dt * (static_cast<long double>(k) + first_phase);
    const long double q = two_pi * (cycles - std::nearbyint(cycles));
    const long double c = std::cos(q);
    const long double s = std::sin(q);
    s_re += y[k].re * c + y[k].im * s;
    s_im += y[k].im * c - y[k].re * s;
  }
  return creal_T{static_cast<double>(s_re), static_cast<double>(s_im)};
}

double absSum(const std::vector<creal_T>& y) {
  double s = 0.0;
  for (const creal_T& v : y)
    s += std::hypot(v.re, v.im);
  return s;
}

TEST(CorrelationScan, AgreesWithExtendedPrecisionSumOnBlockGrids) {
  double worst = 0.0;
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::vector<creal_T> y = testSignal(c.n, c.dt, 17U);
    std::vector<creal_T> fast(static_cast<size_t>(c.m));
    coder::correlation_scan_grid(y.data(), c.n, c.dt, c.first_phase, c.f0, c.step, c.m,
                                 fast.data());
    const double scale = absSum(y);
    // every 13th grid point keeps the extended-precision reference affordable
    for (int i = 0; i < c.m; i += (c.m > 50 ? 13 : 1)) {
      const creal_T want = exactSum(y, c.dt, c.first_phase, c.f0 + i * c.step);
      const double err = std::hypot(fast[static_cast<size_t>(i)].re - want.re,
                                    fast[static_cast<size_t>(i)].im - want.im) /
                         scale;
      worst = std::max(worst, err);
      ASSERT_LE(err, kScanBound) << "grid point " << i;
    }
  }
  RecordProperty("worst_error_over_sum_abs", std::to_string(worst));
  std::printf("worst scan error / sum|y|: %.3g\n", worst);
}

TEST(CorrelationScan, AgreesWithDirectDoubleFormAtEveryGridPoint) {
  for (const Case& c : kCases) {
    if (static_cast<double>(c.n) * c.m > 3.5e6)
      continue; // the slow form, on the mid-size grids
    SCOPED_TRACE(c.what);
    const std::vector<creal_T> y = testSignal(c.n, c.dt, 5U);
    std::vector<double> freqs(static_cast<size_t>(c.m));
    for (int i = 0; i < c.m; ++i)
      freqs[static_cast<size_t>(i)] = c.f0 + i * c.step;
    std::vector<creal_T> fast(freqs.size());
    std::vector<creal_T> direct(freqs.size());
    coder::correlation_scan(y.data(), c.n, c.dt, c.first_phase, freqs.data(), c.m, fast.data());
    coder::correlation_scan_direct(y.data(), c.n, c.dt, c.first_phase, freqs.data(), c.m,
                                   direct.data());
    std::vector<double> got;
    std::vector<double> want;
    for (size_t i = 0; i < freqs.size(); ++i) {
      got.push_back(fast[i].re);
      got.push_back(fast[i].im);
      want.push_back(direct[i].re);
      want.push_back(direct[i].im);
    }
    // norm-wise: the largest sum of the scan is of the order of sum|y| when a line is inside
    const double scale = absSum(y);
    double err = 0.0;
    for (size_t i = 0; i < got.size(); ++i)
      err = std::max(err, std::fabs(got[i] - want[i]));
    EXPECT_LE(err / scale, kDirectBound);
  }
}

TEST(CorrelationScan, RealSignalMatchesComplexWithZeroImaginary) {
  const int n = 4099;
  std::mt19937 gen(3U);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<double> x(n);
  std::vector<creal_T> z(n);
  for (int k = 0; k < n; ++k) {
    x[static_cast<size_t>(k)] = noise(gen);
    z[static_cast<size_t>(k)] = creal_T{x[static_cast<size_t>(k)], 0.0};
  }
  const int m = 81; // not a multiple of the lane count, so the idle lanes are exercised
  std::vector<creal_T> a(m);
  std::vector<creal_T> b(m);
  coder::correlation_scan_grid(x.data(), n, 0.002, 1, 10.0, 0.1, m, a.data());
  coder::correlation_scan_grid(z.data(), n, 0.002, 1, 10.0, 0.1, m, b.data());
  for (int i = 0; i < m; ++i) {
    // the same products in the same order: exactly equal
    EXPECT_EQ(a[static_cast<size_t>(i)].re, b[static_cast<size_t>(i)].re) << i;
    EXPECT_EQ(a[static_cast<size_t>(i)].im, b[static_cast<size_t>(i)].im) << i;
  }
}

TEST(CorrelationScan, PureToneGivesItsAmplitudeAtItsFrequency) {
  // physics: a real cosine of amplitude A at a grid frequency shows A*n/2 there (the other
  // half lies at the negative frequency and cancels over whole periods of 2f: 5 samples
  // here), and the phase origin k = 0 turns the sum by exactly one step of the tone.
  const int n = 4000;
  const double dt = 0.002;
  const double f = 50.0;
  std::vector<double> x(n);
  for (int k = 0; k < n; ++k)
    x[static_cast<size_t>(k)] = 3.0 * std::cos(2.0 * M_PI * f * (k + 1) * dt);
  creal_T s1;
  creal_T s0;
  const double freq = f;
  coder::correlation_scan(x.data(), n, dt, 1, &freq, 1, &s1);
  // phase from k = 1 matches the tone's own phase: the sum is real
  EXPECT_NEAR(s1.re, 3.0 * n / 2.0, 1e-9 * n);
  EXPECT_NEAR(s1.im, 0.0, 1e-9 * n);
  coder::correlation_scan(x.data(), n, dt, 0, &freq, 1, &s0);
  // counting from 0 multiplies by exp(+j 2 pi f dt)
  const double a = 2.0 * M_PI * f * dt;
  EXPECT_NEAR(s0.re, s1.re * std::cos(a) - s1.im * std::sin(a), 1e-9 * n);
  EXPECT_NEAR(s0.im, s1.re * std::sin(a) + s1.im * std::cos(a), 1e-9 * n);
}

TEST(CorrelationScan, NonFiniteAndEmptyInputs) {
  std::vector<double> x = {1.0, 2.0, NAN, 4.0};
  const double freqs[3] = {1.0, NAN, 2.0};
  creal_T out[3];
  coder::correlation_scan(x.data(), 4, 0.01, 1, freqs, 3, out);
  for (const creal_T& s : out)
    EXPECT_TRUE(std::isnan(s.re) || std::isnan(s.im));
  x[2] = 3.0;
  coder::correlation_scan(x.data(), 4, 0.01, 1, freqs, 3, out);
  EXPECT_FALSE(std::isnan(out[0].re));
  EXPECT_TRUE(std::isnan(out[1].re)); // a NaN frequency spoils only its own sum
  EXPECT_FALSE(std::isnan(out[2].re));
  coder::correlation_scan(x.data(), 0, 0.01, 1, freqs, 3, out);
  EXPECT_EQ(out[0].re, 0.0);
  EXPECT_EQ(out[2].im, 0.0);
}

} // namespace
