// What the golden files do not prove: slow direct references, physics, hand-worked values,
// the degenerate inputs the blocks rely on, and the kept FFT plans and filter designs.
#include "coder/FftPlanCache.h"
#include "coder/cumtrapz.h"
#include "coder/detrend.h"
#include "coder/fft.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/grp2idx.h"
#include "coder/hilbert.h"
#include "coder/minmax.h"
#include "coder/mldivide.h"
#include "coder/periodogram.h"
#include "coder/polyfit.h"
#include "coder/sort.h"
#include "coder/windows.h"

#include "support/numeric_compare.h"

#include <numeric>
#include <thread>

namespace {

using namespace vek_test;
using V = std::vector<double>;
using coder::internal::FftPlanCache;
const double kNaN = std::nan("");
constexpr double kDirectTol = 1e-14; // FFT algorithms reach about log2(n) ulp of the largest bin

// The DFT summed in long double, angles reduced modulo n: far below double rounding.
V directDft(const V& x) {
  const size_t n = x.size();
  V re(n), im(n);
  for (size_t k = 0; k < n; ++k) {
    long double r = 0.0L, i = 0.0L;
    for (size_t j = 0; j < n; ++j) {
      const long double a = -2.0L * 3.141592653589793238462643383279502884L * ((j * k) % n) / n;
      r += x[j] * std::cos(a), i += x[j] * std::sin(a);
    }
    re[k] = double(r), im[k] = double(i);
  }
  return join(re, im);
}
V fftOf(const V& x) {
  coder::array<creal_T, 2> y;
  coder::fft(toRow(x), int(x.size()), y);
  return flatten(y);
}
// Runs `make` on `threads` threads at once: every one must get the same bits.
template <typename F> void sameBitsFromThreads(int threads, F make) {
  std::vector<V> results(static_cast<size_t>(threads));
  std::vector<std::thread> running;
  for (V& r : results)
    running.emplace_back([&r, &make] { r = make(); });
  for (auto& th : running)
    th.join();
  for (const V& r : results)
    EXPECT_EQ(r, results[0]);
}

TEST(Fft, DirectDftColumnsInPlaceAndEmpty) {
  for (int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 16, 17, 31, 32, 97, 210, 1024})
    EXPECT_TRUE(
        closeRelative(fftOf(lcgSignal(11 + n, n)), directDft(lcgSignal(11 + n, n)), kDirectTol))
        << n;
  coder::array<double, 1> column = toColumn({-3, -2, 1, 6, 13});
  coder::array<creal_T, 1> y, none;
  coder::fft(column, 8, y); // a column gives a column, padded with zeros
  EXPECT_TRUE(closeRelative(flatten(y), directDft({-3, -2, 1, 6, 13, 0, 0, 0}), kDirectTol));
  coder::array<double, 2> col2 = toRow({-3, -2, 1, 6, 13});
  col2.set_size(5, 1);
  coder::array<creal_T, 2> spec2;
  coder::fft(col2, 16, spec2);
  EXPECT_EQ(V({16, 1}), V({double(spec2.size(0)), double(spec2.size(1))}));
  coder::array<creal_T, 1> z = y;
  coder::fft(z, 8, z); // in place
  coder::fft(y, 8, y);
  EXPECT_EQ(flatten(z), flatten(y));
  coder::fft(column, 0, none);
  coder::fft(coder::array<double, 1>(), y);
  EXPECT_EQ(none.numel() + y.numel(), 0);
}

TEST(Fft, ThreadsPlanningNewLengthsAtOnceGetTheSameBits) {
  // The loop and a recalculation job transform at once; the first use of a length plans it.
  sameBitsFromThreads(8, [] {
    V r;
    for (int n : {3001, 3002, 3003, 4099, 5000, 6007})
      r = join(r, fftOf(lcgSignal(5, n)));
    return r;
  });
}

TEST(Fft, LengthsBeyondTheKeptPlansStillTransformCorrectly) {
  // Signals of ever new lengths fill the real kind's kept plans; past them each call plans for
  // itself and the results stay the direct DFT's. The other kinds keep their own plans.
  auto& cache = FftPlanCache::instance();
  const size_t complex_kept = cache.size(FftPlanCache::Kind::ComplexForward);
  for (int n = 700; n < 700 + 2 * int(FftPlanCache::kMaxPlans); ++n) {
    const V x = lcgSignal(n, n), y = fftOf(x);
    EXPECT_TRUE(n % 16 != 0 || closeRelative(y, directDft(x), 1e-13)) << n;
  }
  EXPECT_EQ(cache.size(FftPlanCache::Kind::RealForward), FftPlanCache::kMaxPlans);
  coder::array<creal_T, 2> z, y;
  z.set_size(1, 9001);
  for (int k = 0; k < z.numel(); ++k)
    z[k] = {1.0 / (k + 1), 0.0};
  coder::fft(z, 9001, y);
  EXPECT_EQ(cache.size(FftPlanCache::Kind::ComplexForward), complex_kept + 1);
}

TEST(Degenerate, ColumnsEmptyLengthOneNaNAndInPlace) {
  V x, s;
  for (int k = 0; k < 64; ++k)
    x.push_back(std::cos(2.0 * M_PI * 5.0 * k / 64)),
        s.push_back(std::sin(2.0 * M_PI * 5 * k / 64));
  coder::array<creal_T, 1> z;
  coder::hilbert(toColumn(x), z); // a cosine turns into a sine, a column stays a column
  EXPECT_TRUE(
      closeElementwise(join(V{double(z.size(0))}, flatten(z)), join({64}, join(x, s)), 1e-14, 1.0));
  coder::hilbert(coder::array<double, 1>(), z);
  EXPECT_EQ(z.numel(), 0);
  coder::array<double, 2> y, line = toRow(lcgSignal(3, 50));
  for (int k = 0; k < 50; ++k)
    line[k] = 3.0 - 0.25 * k;
  coder::detrend(line, y); // a straight line vanishes, a row stays a row
  EXPECT_TRUE(
      closeElementwise(join({double(y.size(0))}, toVector(y)), join({1}, V(50, 0.0)), 1e-14, 1.0));
  line[7] = kNaN;
  coder::detrend(line, line); // in place; one NaN spreads
  EXPECT_TRUE(closeRelative(toVector(line), V(50, kNaN), 0.0));
  coder::array<double, 1> out;
  coder::detrend(toColumn({42.0}), out);
  EXPECT_EQ(toVector(out), V{0.0});
}

TEST(Cumtrapz, HandWorkedStepsAndShortTimes) {
  // y = 1, 3, 2 at t = 0, 0.5, 2: steps 0.5 * 2 = 1 and 0.75 * 5 = 3.75. Fewer times than
  // samples: the steps without a time are NaN, nothing is read beyond t.
  coder::array<double, 2> z, y = toRow({1.0, 3.0, 2.0});
  coder::cumtrapz(toRow({0.0, 0.5, 2.0}), y, z);
  EXPECT_EQ(V({1, 3, 0, 1, 4.75}), join({double(z.size(0)), double(z.size(1))}, toVector(z)));
  coder::cumtrapz(toRow({0.0, 1.0}), y, z);
  EXPECT_TRUE(closeRelative(toVector(z), {0.0, 2.0, kNaN}, 0.0));
}

TEST(Filter, ImpulseGivesTheTapsAndTheLengthStays) {
  coder::array<double, 1> b = toColumn({0.25, 0.5, 0.25}), x = toColumn({1, 0, 0, 0, 2}), y;
  coder::filter(b, x, y);
  EXPECT_EQ(toVector(y), V({0.25, 0.5, 0.25, 0.0, 0.5}));
  coder::filter(coder::array<double, 1>(), x, y);
  EXPECT_EQ(toVector(y), V(5, 0.0));
  coder::filter(b, x, x); // in place
  EXPECT_EQ(toVector(x), V({0.25, 0.5, 0.25, 0.0, 0.5}));
}

TEST(MinMaxSort, NaNSkippedFirstOfEqualWinsStableAscending) {
  int i = 0, j = 0, k = 0;
  const V x = {kNaN, 2.0, 5.0, 5.0, kNaN, -1.0, -1.0}, all_nan = {kNaN, kNaN};
  const double mx = coder::internal::maximum(x.data(), 7, &i);
  const double mn = coder::internal::minimum(x.data(), 7, &j);
  const double nan = coder::internal::maximum(all_nan.data(), 2, &k);
  EXPECT_TRUE(
      closeRelative({mx, double(i), mn, double(j), nan, double(k)}, {5, 3, -1, 6, kNaN, 1}, 0));
  // A running NaN is always replaced; equal moduli: angle pi/4 beats -3pi/4; ties keep the first.
  const std::vector<creal_T> z = {{kNaN, 0}, {1, 1}, {0, kNaN}, {-1, -1}, {1, 1}, {-1, -1}};
  EXPECT_EQ(coder::internal::maximum(z.data(), 6, &i).re, 1.0);
  coder::internal::minimum(z.data(), 6, &j);
  EXPECT_EQ(V({2, 4}), V({double(i), double(j)}));
  V s = {3.0, kNaN, -HUGE_VAL, 1.0, 3.0, HUGE_VAL, -0.5}, three = {2.0, 1.0, 2.0};
  std::vector<int> idx(7);
  coder::internal::sort(s.data(), 7, idx.data());
  coder::internal::sort(three.data(), 3, nullptr);
  EXPECT_TRUE(
      closeRelative(join(s, three), {-HUGE_VAL, -0.5, 1, 3, 3, HUGE_VAL, kNaN, 1, 2, 2}, 0));
  EXPECT_EQ(idx, std::vector<int>({3, 7, 4, 1, 5, 6, 2}));
}

// |H| at normalised frequency f (1 = Nyquist) of a design.
double gain(const V& h, double f) {
  double re = 0.0, im = 0.0;
  for (size_t k = 0; k < h.size(); ++k)
    re += h[k] * std::cos(M_PI * f * double(k)), im -= h[k] * std::sin(M_PI * f * double(k));
  return std::hypot(re, im);
}

TEST(Firls, FixedFormsOfTheBlocksAndTheCache) {
  const double edges[6] = {0.0, 45.0 / 125.0, 49.0 / 125.0, 51.0 / 125.0, 55.0 / 125.0, 1.0};
  coder::array<double, 2> h500, h298, none;
  coder::firls(edges, h500);
  coder::b_firls(edges, h298);
  const V f(edges, edges + 6), a = {0, 0, 1, 1, 0, 0};
  // The blocks' fixed forms are the general design of their orders, handed out unchanged.
  const auto first = coder::firlsTaps(500, f, a);
  EXPECT_EQ(first.get(), coder::firlsTaps(500, f, a).get());
  EXPECT_EQ(join(*first, *coder::firlsTaps(298, f, a)), join(toVector(h500), toVector(h298)));
  EXPECT_NEAR(gain(*first, 0.4), 1.0, 0.02); // pass band centre; stop bands below 1 %
  EXPECT_LT(std::max(gain(*first, 0.2), gain(*first, 0.8)), 0.01);
  // threads asking for a new design at once get the same bits
  sameBitsFromThreads(4, [] {
    return *coder::firlsTaps(298, {0, .1, .15, .3, .35, 1}, {0, 0, 1, 1, 0, 0});
  });
  // Odd orders and odd edge counts have no type I design: an empty row.
  coder::firls(31, {0, 0.5, 0.6, 1}, {1, 1, 0, 0}, none);
  coder::firls(30, {0, 0.5, 0.6}, {1, 1, 0}, h298);
  EXPECT_EQ(none.numel() + h298.numel(), 0);
}

// The least-squares optimum makes the error H - D orthogonal to every cosine of the design
// over the bands: composite Simpson, 4000 intervals per band (about 1e-14), independent of
// the closed-form sinc sums the design is built from, with a sloped band.
TEST(Firls, ErrorIsOrthogonalToEveryCosineOverTheBands) {
  const std::tuple<int, V, V> designs[] = {{20, {0, .2, .3, .6, .7, 1}, {0, 0, 1, 1, 0, 0}},
                                           {30, {0, .3, .5, 1}, {0, 1, .5, .5}},
                                           {40, {0, .4, .5, 1}, {1, 1, 0, 0}}};
  for (const auto& [order, f, a] : designs) {
    coder::array<double, 2> h;
    coder::firls(order, f, a, h);
    const int half = order / 2;
    for (int i = 0; i <= half; ++i) {
      double inner = 0.0;
      for (size_t s = 0; s + 1 < f.size(); s += 2)
        for (int q = 0; q <= 4000; ++q) {
          const double step = (f[s + 1] - f[s]) / 8000, F = f[s] / 2.0 + q * step;
          double H = h[half] - a[s] - (a[s + 1] - a[s]) * q / 4000.0; // minus D
          for (int k = 1; k <= half; ++k)
            H += 2.0 * h[half - k] * std::cos(2.0 * M_PI * k * F);
          const double weight = (q == 0 || q == 4000) ? 1.0 : (q % 2 == 1 ? 4.0 : 2.0);
          inner += weight * H * std::cos(2.0 * M_PI * i * F) * step / 3.0;
        }
      EXPECT_LT(std::fabs(inner), 1e-11) << order << " cosine " << i;
    }
  }
}

TEST(Polyfit, RankDeficientGivesBasicSolutionWithZeros) {
  // Three points for a cubic: rank 3, one coefficient exactly 0, the fit through the points.
  const V t = {0.0, 1.0, 3.0}, x = {1.0, 2.0, 0.5}, same = V(5, 5.0), y = {1, 2, 3, 4, kNaN};
  V p, back(3);
  double mu[2];
  coder::polyfit(t.data(), x.data(), 3, 3, p, nullptr, mu);
  EXPECT_EQ(std::count(p.begin(), p.end(), 0.0), 1);
  coder::polyval(p, t.data(), 3, mu, back.data());
  EXPECT_TRUE(closeRelative(back, x, 1e-13));
  // All abscissae equal (std 0), or a NaN in the data: every coefficient NaN.
  coder::polyfit(same.data(), x.data(), 3, 3, p, nullptr, mu);
  EXPECT_TRUE(closeRelative(join(p, {mu[1]}), {kNaN, kNaN, kNaN, kNaN, 0.0}, 0.0));
  coder::polyfit(t.data(), y.data() + 2, 3, 3, p, nullptr, mu);
  EXPECT_TRUE(closeRelative(p, V(4, kNaN), 0.0));
}

TEST(Mldivide, ResidualOrthogonalToTheColumnsAndLuSolvesSquare) {
  for (int m : {2, 3, 5, 8, 13}) // the least-squares residual is orthogonal to A's columns
    for (int n = 1; n <= 3 && n < m; ++n) {
      const V a = lcgSignal(m, m * n), b = lcgSignal(n + 99, m);
      V x(static_cast<size_t>(n)), r = b;
      int rank = 0;
      coder::qrsolve(a.data(), m, n, b.data(), x.data(), &rank);
      for (int k = 0; k < m * n; ++k)
        r[size_t(k % m)] -= a[size_t(k)] * x[size_t(k / m)];
      for (int j = 0; j < n; ++j)
        EXPECT_NEAR(std::inner_product(r.begin(), r.end(), a.begin() + j * m, 0.0), 0.0, 1e-13)
            << m << "x" << n;
      EXPECT_EQ(rank, n);
    }
  V x(2); // [0 2; 1 1] x = [4; 3] needs a row swap: x = [1; 2]
  coder::mldivide(V({0, 1, 2, 1}).data(), 2, 2, V({4, 3}).data(), x.data());
  EXPECT_EQ(x, V({1, 2}));
  int rank = 0; // a duplicated column: rank 1, the pivoted-out coefficient exactly 0
  coder::qrsolve(V({1, 2, 3, 1, 2, 3}).data(), 3, 2, V({2, 4, 6}).data(), x.data(), &rank);
  EXPECT_TRUE(closeRelative({double(rank), x[0] * x[1], x[0] + x[1]}, {1, 0, 2}, 1e-15));
}

TEST(Grp2idx, SortedGroupsNaNMissing) {
  // MATLAB's rule: groups numbered in sorted order, NaN missing, -0 and 0 one group.
  V g, labels, g2, empty;
  coder::grp2idx(V({3, 1, kNaN, 2, 3, -0.0, 0, kNaN}).data(), 8, g, labels);
  EXPECT_TRUE(closeRelative(join(g, labels), {4, 2, kNaN, 3, 4, 1, 1, kNaN, 0, 1, 2, 3}, 0.0));
  EXPECT_FALSE(std::signbit(labels[0]));
  coder::grp2idx(V({50, 48, 50, 0, 0, 24, 50}).data(), 7, g2, labels);
  coder::grp2idx(nullptr, 0, g, empty);
  EXPECT_EQ(join(g2, join(g, empty)), V({4, 3, 4, 1, 1, 2, 4}));
}

TEST(Windows, SymmetryAndHandWorkedValues) {
  coder::array<double, 1> w, again;
  coder::hanning(3, w); // 0.5 (1 - cos(2 pi k / 4)), k = 1..3
  EXPECT_TRUE(closeRelative(toVector(w), {0.5, 1.0, 0.5}, 1e-15));
  for (int n : {3, 4096, 40960}) { // exactly mirrored, as the blocks' correlation sums assume
    n < 5000 ? coder::hanning(n, w) : coder::kaiser(n, 38.0, w);
    coder::kaiser(40960, 38.0, again); // a kept window, handed out again unchanged
    const V v = toVector(n < 5000 ? w : again);
    EXPECT_EQ(toVector(w), V(v.rbegin(), v.rend())) << n;
  }
  // The ends are 1 / I0(38); I0(1) = 1.266065877752008335598... rounds to the nearest double.
  coder::kaiser(5, 38.0, w);
  EXPECT_NEAR(w[0] * coder::internal::besselI0(38.0), 1.0, 1e-15);
  EXPECT_EQ(V({w[2], coder::internal::besselI0(0.0), coder::internal::besselI0(1.0)}),
            V({1.0, 1.0, 1.2660658777520084}));
  coder::kaiser(3, kNaN, w);
  EXPECT_TRUE(std::isnan(w[0]) && std::isinf(coder::internal::besselI0(-HUGE_VAL)));
  coder::tukeywin(0, w);
  coder::hanning(-3, again);
  EXPECT_EQ(w.numel() + again.numel(), 0);
}

TEST(Periodogram, ParsevalAndGridEnds) {
  // A rectangular window: the one-sided PSD integrates to the mean square of the signal.
  V x;
  double mean_square = 0.0;
  for (int k = 0; k < 64; ++k)
    x.push_back(std::sin(0.7 * k) + 0.1 * k / 64), mean_square += x.back() * x.back() / 64;
  coder::array<double, 1> w, P, F;
  coder::tukeywin(64, w);
  coder::periodogram(toColumn(x), w, 64, 1000.0, P, F);
  ASSERT_EQ(P.size(0), 33);
  EXPECT_NEAR(std::accumulate(P.data(), P.data() + 33, 0.0) * 1000.0 / 64, mean_square, 1e-13);
  EXPECT_EQ(V({F[0], F[32]}), V({0.0, 500.0}));
  coder::tukeywin(7, w); // odd length: the last point half a bin below Nyquist
  coder::periodogram(toColumn({1, 2, 3, 4, 5, 6, 7}), w, 7, 7.0, P, F);
  EXPECT_EQ(V({double(F.size(0)), F[3]}), V({4, 3}));
  coder::periodogram(toColumn(x), w, 64, 1000.0, P, F); // a window of another length
  EXPECT_EQ(P.numel() + F.numel(), 0);
}

} // namespace
