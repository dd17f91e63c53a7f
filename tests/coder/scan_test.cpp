// The correlation scan, in all its forms, against the direct sum in extended precision.
#include "coder/correlation_scan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

// The kernel's stated bound: every sum within this fraction of sum|y| of the exact one. The
// double direct form rounds 2*pi*f*k*dt at phases up to 1e4 rad, errors that add up over a
// line in the band (1.3e-13 of sum|y| measured).
constexpr double kScanBound = 5e-14, kDirectBound = 5e-13;

TEST(CorrelationScan, AgreesWithExtendedPrecisionSumOnBlockGrids) {
  // n, dt, f0, step, m, first phase: the decimated rotor searches, the fine supply scan, the
  // right line moving down, cor_for of the current and bearing analyses counting the phase
  // from 0, one and two samples, a prime length
  const struct {
    int n;
    double dt, f0, step;
    int m, first;
  } cases[] = {{16384, 8 / 26667.0, 47, 0.01, 401, 1},
               {2048, 8 / 26667.0, 7, 0.01, 5401, 1},
               {4096, 0.002, 49.6, 0.002, 401, 1},
               {4096, 0.002, 75, -0.002, 300, 1},
               {20000, 1e-4, 49.8, 0.002, 201, 0},
               {8192, 1 / 26667.0, 180, 0.01, 201, 0},
               {1, 0.002, 49.6, 0.1, 9, 1},
               {2, 0.002, 10, 0.1, 7, 1},
               {1021, 0.002, 10, 0.1, 501, 1}};
  std::mt19937 gen(17U);
  std::normal_distribution<double> noise(0.0, 0.3);
  for (const auto& c : cases) {
    // a line near the band, its harmonic and noise, like a velocity's analytic signal
    std::vector<creal_T> y(size_t(c.n));
    std::vector<double> re(y.size()), freqs(size_t(c.m));
    double scale = 0.0;
    for (size_t k = 0; k < y.size(); ++k) {
      const double a = 2 * M_PI * 49.87 * k * c.dt, b = 2 * M_PI * 99.74 * k * c.dt + 0.3;
      y[k] = {1.5 * std::cos(a) + 0.2 * std::cos(b) + noise(gen),
              1.5 * std::sin(a) + 0.2 * std::sin(b) + noise(gen)};
      re[k] = y[k].re;
      scale += std::hypot(y[k].re, y[k].im);
    }
    for (int i = 0; i < c.m; ++i)
      freqs[size_t(i)] = c.f0 + i * c.step;
    std::vector<std::vector<creal_T>> out(5, std::vector<creal_T>(freqs.size()));
    coder::correlation_scan_grid(y.data(), c.n, c.dt, c.first, c.f0, c.step, c.m, out[0].data());
    coder::correlation_scan(y.data(), c.n, c.dt, c.first, freqs.data(), c.m, out[1].data());
    coder::correlation_scan_direct(y.data(), c.n, c.dt, c.first, freqs.data(), c.m, out[2].data());
    coder::correlation_scan_grid(re.data(), c.n, c.dt, c.first, c.f0, c.step, c.m, out[3].data());
    coder::correlation_scan(re.data(), c.n, c.dt, c.first, freqs.data(), c.m, out[4].data());
    for (int i = 0; i < c.m; i += (c.m > 50 ? 13 : 1)) { // every 13th point on long grids
      long double want[2][2] = {};                       // complex, then real signal
      for (size_t k = 0; k < y.size(); ++k) {
        const long double cycles =
            static_cast<long double>(freqs[size_t(i)]) * c.dt * (k + c.first);
        const long double q = 6.283185307179586476925286766559L * (cycles - std::nearbyint(cycles));
        for (int real = 0; real < 2; ++real) {
          const double im = real ? 0.0 : y[k].im;
          want[real][0] += y[k].re * std::cos(q) + im * std::sin(q);
          want[real][1] += im * std::cos(q) - y[k].re * std::sin(q);
        }
      }
      for (int form = 0; form < 5; ++form) {
        const creal_T got = out[size_t(form)][size_t(i)];
        const long double* w = want[form < 3 ? 0 : 1];
        ASSERT_LE(std::hypot(got.re - double(w[0]), got.im - double(w[1])) / scale,
                  form == 2 ? kDirectBound : kScanBound)
            << "n " << c.n << ", m " << c.m << ", form " << form << ", grid point " << i;
      }
    }
  }
  // a NaN sample spoils every sum, a NaN frequency only its own; no samples: sums of 0
  std::vector<double> x = {1.0, 2.0, NAN, 4.0}, f = {1.0, NAN, 2.0};
  creal_T out[6];
  coder::correlation_scan(x.data(), 4, 0.01, 1, f.data(), 3, out);
  x[2] = 3.0;
  coder::correlation_scan(x.data(), 4, 0.01, 1, f.data(), 3, out + 3);
  coder::correlation_scan(x.data(), 0, 0.01, 1, f.data(), 1, out + 5);
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(std::isnan(out[i].re) || std::isnan(out[i].im), i < 3 || i == 4) << i;
  EXPECT_TRUE(out[5].re == 0.0 && out[5].im == 0.0);
}

} // namespace
