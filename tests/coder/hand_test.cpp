// What the golden files do not prove, worked by hand from the documented rules or checked
// against identities: the non-finite helpers, complex ordering, peak search, colon ranges, the
// statistics where MATLAB and Octave part, thd's tone search, the smoothing's small windows,
// the arrays and their expansion, the degenerate inputs the blocks rely on, and the kept FFT
// plans and filter designs.
#include "coder/FftPlanCache.h"
#include "coder/binary_expand_op.h"
#include "coder/cumtrapz.h"
#include "coder/detrend.h"
#include "coder/eml_float_colon.h"
#include "coder/envspectrum.h"
#include "coder/fft.h"
#include "coder/filter.h"
#include "coder/findpeaks.h"
#include "coder/firls.h"
#include "coder/grp2idx.h"
#include "coder/hilbert.h"
#include "coder/median.h"
#include "coder/minmax.h"
#include "coder/mldivide.h"
#include "coder/moments.h"
#include "coder/periodogram.h"
#include "coder/polyfit.h"
#include "coder/relop.h"
#include "coder/rtGetInf.h"
#include "coder/rtGetNaN.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"
#include "coder/smoothdata.h"
#include "coder/sort.h"
#include "coder/sum.h"
#include "coder/thd.h"
#include "coder/windows.h"

#include "support/numeric_compare.h"

#include <cstdio>
#include <sstream>
#include <thread>

namespace {

using namespace vek_test;
using coder::internal::iseq;
using coder::internal::relop;
const double kNaN = rtNaN, kInf = rtInf, kPi = 3.141592653589793, kR2 = 1.4142135623730951;

// Values compared as printed (NaN equals NaN, -0 equals 0), to `digits` significant digits.
void same(const V& got, const V& want, int digits = 17) {
  std::string text[2];
  for (int i = 0; i < 2; ++i) {
    for (double v : i == 0 ? got : want) {
      char b[40];
      std::snprintf(b, sizeof b, " %.*g", digits, std::isnan(v) ? kNaN : v == 0.0 ? 0.0 : v);
      text[i] += b;
    }
  }
  EXPECT_EQ(text[0], text[1]);
}
coder::array<creal_T, 1> toComplex(const V& re) {
  coder::array<creal_T, 1> z;
  z.set_size(int(re.size()));
  for (int k = 0; k < z.numel(); ++k)
    z[k] = {re[size_t(k)], 0.0};
  return z;
}
V operator+(V a, const V& b) {
  return join(a, b);
}
double stat(double (*fn)(const double*, int), const V& x) {
  return fn(x.data(), int(x.size()));
}
// A table of cases, one per line: numbers (nan and inf too) in groups split by '|'.
std::vector<std::vector<V>> table(const char* text) {
  std::vector<std::vector<V>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back(1);
    for (const char* p = line.c_str(); *p != '\0';) {
      char* end = nullptr;
      const double v = std::strtod(p, &end);
      if (end != p)
        rows.back().back().push_back(v), p = end;
      else if (*p++ == '|')
        rows.back().emplace_back();
    }
  }
  return rows;
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

TEST(HandWorked, NonFiniteHelpersAndComplexOrder) {
  rt_InitInfAndNaN();
  same({rtGetNaN(), rtGetNaNF(), rtNaNF, rtGetInf(), rtGetMinusInf(), rtGetInfF(), rtGetMinusInfF(),
        rtMinusInf, rtInfF, rtMinusInfF, double(rtIsNaN(kNaN)), double(rtIsNaN(kInf)),
        double(rtIsInf(-kInf)), double(rtIsInfF(rtInfF)), double(rtIsNaNF(rtNaNF))},
       {kNaN, kNaN, kNaN, kInf, -kInf, kInf, -kInf, -kInf, kInf, -kInf, 1, 0, 1, 1, 1});
  // hypot: equal magnitudes use the constant, not sqrt(18); the squares never overflow
  same({rt_hypotd_snf(kNaN, 0), rt_hypotd_snf(0, kNaN), rt_hypotd_snf(3, 3), rt_hypotd_snf(-3, 3),
        rt_hypotd_snf(3, 4), rt_hypotd_snf(0, 0), rt_hypotd_snf(kInf, 1),
        rt_hypotd_snf(1e300, 1e300), rt_hypotd_snf(3e300, 4e300)},
       {kNaN, kNaN, 3 * kR2, 3 * kR2, 5, 0, kInf, 1e300 * kR2, 5e300});
  same({rt_atan2d_snf(kNaN, 1), rt_atan2d_snf(1, kNaN), rt_atan2d_snf(0, 0), rt_atan2d_snf(1, 0),
        rt_atan2d_snf(-2, 0), rt_atan2d_snf(-0.0, -0.0), rt_atan2d_snf(kInf, kInf),
        rt_atan2d_snf(-kInf, kInf), rt_atan2d_snf(kInf, -kInf), rt_atan2d_snf(1, -1)},
       {kNaN, kNaN, 0, kPi / 2, -kPi / 2, 0, kPi / 4, -kPi / 4, 3 * kPi / 4, 3 * kPi / 4});
  same({rt_powd_snf(kNaN, 0), rt_powd_snf(1, kNaN), rt_powd_snf(1, kInf), rt_powd_snf(-1, -kInf),
        rt_powd_snf(2, kInf), rt_powd_snf(2, -kInf), rt_powd_snf(0.5, kInf),
        rt_powd_snf(0.5, -kInf), rt_powd_snf(0, 0), rt_powd_snf(-8, 1), rt_powd_snf(4, -1),
        rt_powd_snf(-3, 2), rt_powd_snf(2, 0.5), rt_powd_snf(-8, 1.0 / 3), rt_powd_snf(-2, 3),
        rt_powd_snf(10, 0.05)},
       {kNaN, kNaN, 1, 1, kInf, 0, 0, kInf, 1, -8, 0.25, 9, kR2, kNaN, -8, std::pow(10, 0.05)});
  // rem: 0.3 / 0.1 is whole to within eps of the quotient, so 0 where fmod gives 0.0999..
  same({rt_remd_snf(kNaN, 2), rt_remd_snf(2, kNaN), rt_remd_snf(kInf, 2), rt_remd_snf(5, kInf),
        rt_remd_snf(5, 0), rt_remd_snf(7, 3), rt_remd_snf(-7, 3), rt_remd_snf(0.3, 0.1),
        rt_remd_snf(0.35, 0.1)},
       {kNaN, kNaN, kNaN, 5, 0, 1, -1, 0, std::fmod(0.35, 0.1)});
  // iseq: at |y|/2 the spacing is 2^-53, so one ulp of 1.0 is not below it; below the
  // smallest normal the spacing is the subnormals'
  same({double(iseq(1, 1)), double(iseq(1 + 2.220446049250313e-16, 1)),
        double(iseq(1 - 1.1102230246251565e-16, 1)), double(iseq(-0.0, 0)),
        double(iseq(4.9406564584124654e-324, 0)), double(iseq(kInf, kInf)),
        double(iseq(kInf, -kInf)), double(iseq(kNaN, kNaN)), double(iseq(1, kNaN))},
       {1, 0, 0, 1, 0, 1, 0, 0, 0});
  // relop(a, b) is a < b by modulus, then angle (equal moduli 5 here), then along the growing
  // angle when both round equal (the real part near +-pi/2, the imaginary part near pi); equal
  // values are not less, so a scan keeps its first maximum; NaN (in either part) is below all.
  // Near the top of the range the moduli are compared halved, not as two infinities.
  for (const auto& c : table(R"(3 4 0 6 | 1
    0 6 3 4 | 0
    5 0 3 4 | 1
    3 4 5 0 | 0
    3 -4 5 0 | 1
    1 2 1 2 | 0
    1.6e308 1.6e308 -1.5e308 1.5e308 | 0
    -1.5e308 1.5e308 1.6e308 1.6e308 | 1
    1 0 nan 0 | 0
    nan 0 1 0 | 1
    nan 0 nan 0 | 0
    0 nan nan 0 | 0
    1e-20 1 2e-20 1 | 0
    2e-20 1 1e-20 1 | 1
    1e-20 -1 2e-20 -1 | 1
    -1 2e-20 -1 1e-20 | 1
    -1 1e-20 -1 2e-20 | 0)")) {
    const V& z = c[0];
    EXPECT_EQ(relop({z[0], z[1]}, {z[2], z[3]}), c[1][0] != 0) << z[0] << " " << z[1];
  }
}

TEST(HandWorked, PeaksAndColonRanges) {
  // strictly above the left neighbour and the next different value on the right, plateaus
  // at their first sample, ends never (short inputs have none), NaN as +Inf in the scan and
  // not reported, +Inf always a peak, -Inf an ordinary low value; descending, ties stable
  for (const auto& c : table(R"(1 5 2 3 7 1 | 5 2
    9 1 2 |
    1 2 3 4 5 |
    5 4 3 |
    1 4 4 4 2 | 2
    1 4 4 6 |
    0 3 0 3 0 3 0 | 2 4 6
    0 2 nan 2 0 |
    0 2 1 nan 1 3 0 | 6 2
    -inf 2 -inf | 2
    inf 0 4 1 inf | 1 5 3
    |
    1 |)")) {
    V pks, locs, want_pks;
    coder::findpeaks(c[0].data(), int(c[0].size()), pks, locs);
    for (double l : c[1])
      want_pks.push_back(c[0][size_t(l) - 1]);
    same(locs + pks, c[1] + want_pks);
  }
  // a : d : b as {a, d, b}, then the count and some points. Built from both ends: the second
  // half counts back from b, an odd count's centre is the midpoint, an even count's middle
  // pair comes one from each end; 0:0.015:0.1 stops at 0.09; 0:0.1:0.3 reaches 0.3 exactly
  // though 3 * 0.1 does not. A NaN anywhere or equal infinities: one NaN; an infinite step
  // only a; a bound on the wrong side, a zero step, an infinite bound or too many points: none
  const double a = 24.73 - 0.1, b = 24.73 + 0.1;
  const std::pair<V, V> colons[] = {
      {{a, 0.001, b}, {201, a, a + 10 * 0.001, a + 50 * 0.001, (a + b) / 2, b - 50 * 0.001, b}},
      {{0, 0.015, 0.1}, {7, 0, 0.015, 0.03, 0.045, 0.06, 0.075, 0.09}},
      {{1, 0.5, 2.5}, {4, 1, 1.5, 2, 2.5}},
      {{0, 0.1, 0.3}, {4, 0, 0.1, 0.3 - 0.1, 0.3}},
      {{5, 0.002, 5}, {1, 5}},
      {{3, -1, 1}, {3, 3, 2, 1}},
      {{0, kInf, 1}, {1, 0}},
      {{kNaN, 0.01, 1}, {1, kNaN}},
      {{0, kNaN, 1}, {1, kNaN}},
      {{0, 0.01, kNaN}, {1, kNaN}},
      {{kInf, 1, kInf}, {1, kNaN}},
      {{2, 0.01, 1}, {0}},
      {{0, 0, 1}, {0}},
      {{0, 1, kInf}, {0}},
      {{0, 1e-300, 1}, {0}}};
  for (const auto& c : colons) {
    coder::array<double, 2> y;
    coder::eml_float_colon(c.first[0], c.first[1], c.first[2], y);
    V got = {double(y.size(0) * 1000 + y.size(1))}, want = c.second;
    for (int k = 0; k < y.size(1); ++k)
      if (y.size(1) < 10 || k % 50 == 0 || k == 10)
        got.push_back(y[k]);
    want[0] += 1000;
    same(got, want, c.first[1] == 0.015 ? 15 : 17);
  }
  // the scans' ranges span whole numbers of steps between rounded frequencies: that many
  // points plus one, the last the upper bound itself, every point within a few ulp of a + k d
  for (double d : {0.001, 0.002, 0.005, 0.01, 0.015, 0.1})
    for (int steps : {1, 2, 3, 50, 101, 400, 5400})
      for (double lo : {0.0, 0.4 * 24.37, 3.0, 47.0, 49.6, 117.31}) {
        coder::array<double, 2> y;
        coder::eml_float_colon(lo, d, lo + steps * d, y);
        ASSERT_EQ(V({double(y.size(1)), y[steps]}), V({steps + 1.0, lo + steps * d})) << lo << d;
        for (int k = 0; k <= steps; ++k)
          ASSERT_NEAR(y[k], lo + k * d, 8 * 2.220446049250313e-16 * (lo + steps * d)) << k;
      }
}

TEST(HandWorked, StatisticsWhereMatlabAndOctavePart) {
  // x = [1 2 3 4 10 NaN] skipping NaN: mean 4, m2 = 50/5 = 10, m3 = (-27-8-1+0+216)/5 = 36,
  // m4 = (81+16+1+0+1296)/5 = 278.8 (Octave would propagate the NaN)
  const V x = {1, 2, 3, 4, 10, kNaN}, c = {2.5, 2.5, 2.5}, nan2 = {kNaN, kNaN};
  same({stat(coder::skewness, x), stat(coder::kurtosis, x), stat(coder::b_std, {1e300, -1e300})},
       {36 / std::pow(10, 1.5), 2.788, 1e300 * std::sqrt(2)}, 15);
  // constant data 0/0; an empty input; a single or infinite value; pairs of the median:
  // opposite signs averaged directly, same signs through the difference
  same({stat(coder::nanmean, x), stat(coder::peak2peak, x), stat(coder::skewness, c),
        stat(coder::kurtosis, c), stat(coder::peak2peak, c), stat(coder::kurtosis, nan2),
        stat(coder::nanmean, nan2), stat(coder::peak2peak, nan2), stat(coder::b_std, {7}),
        stat(coder::b_std, {kInf}), stat(coder::b_std, {}), stat(coder::mean, {}),
        stat(coder::sum, {}), stat(coder::median, {}), coder::medianOfPair(-1, 3),
        coder::medianOfPair(1e308, 1.7e308), coder::medianOfPair(1, kInf)},
       {4, 9, kNaN, kNaN, 0, kNaN, kNaN, kNaN, 0, kNaN, kNaN, kNaN, 0, kNaN, 1, 1.35e308, kInf});
  // blocks of 1024: 1e16 + 1023 ones rounds back to 1e16 in each block, so 0, where a plain
  // left-to-right sum gives 1023; the complex sum makes the real one's additions in order
  V ones(2048, 1.0), re(3001), im(3001);
  ones[0] = 1e16;
  ones[1024] = -1e16;
  std::vector<creal_T> z(3001);
  for (size_t k = 0; k < z.size(); ++k)
    z[k] = {re[k] = std::sin(0.37 * k) * 1e3 + 0.1, im[k] = std::cos(0.11 * k) - 0.3};
  const creal_T zs = coder::sum(z.data(), 3001);
  same({stat(coder::sum, ones), zs.re, zs.im}, {0, stat(coder::sum, re), stat(coder::sum, im)});
}

TEST(HandWorked, ThdToneSearchOnAnUnevenGrid) {
  // a tone over bins 0..4 of a PSD on a grid of uneven steps. Global maximum at bin 2: the
  // left roll stops at bin 0, the right one after bin 4 (0.05 < 0.2); the tone starts at 0 Hz,
  // so the extra width (4 - 0)/4 goes to the end. Near 5.2 Hz: bins 4..6, extra width first.
  // A wide noise bandwidth lifts the power and pins the frequency; beyond the grid: NaN.
  const auto P = toColumn({0.1, 2.0, 8.0, 4.0, 0.05, 0.2, 0.1});
  const auto F = toColumn({0, 1, 2.5, 3, 4, 5.5, 6});
  for (const auto& c : table(R"(0.5 0 0 | 11.15 2.4169611307420498 0 4
    0.5 1 5.2 | 0.4 5.4285714285714288 4 6
    3 1 5 | 0.6000000000000001 5.5 4 6
    0.5 1 6.5 | nan nan)")) {
    double power = 0, freq = 0;
    int left = 0, right = 0;
    coder::getToneFromPSD(P, F, c[0][0], c[0][1] != 0, c[0][2], power, freq, left, right);
    V got = {power, freq, double(left), double(right)};
    got.resize(c[1].size());
    same(got, c[1], 15);
  }
}

TEST(Smoothdata, SmallWindowsMissingValuesRepeatedStampsAndUnevenEnds) {
  auto loess = [](const V& a, const V& t, double window) {
    V s(a.size());
    coder::internal::localRegression(a.data(), t.data(), int(a.size()), window, s.data());
    return s;
  };
  // a window under twice the smallest step (uneven or uniform) or of three samples gives the
  // data back; NaN takes no part and a NaN row gets the fit of its neighbours
  const V t = {0, 600, 1250, 1800, 2400, 3100}, a = {1, 4, 2, 8, 5, 7}, tu = {0, 1, 2, 3, 4, 5};
  same(loess(a, t, 1000) + loess(a, t, 1300) + loess(a, tu, 1.9), a + a + a);
  same(loess({1, 2, kNaN, 4, 5, 6, 7, 8}, {0, 1, 2, 3, 4, 5, 6, 7}, 6), {1, 2, 3, 4, 5, 6, 7, 8},
       12);
  double one = 3.5, res = 0;
  coder::smoothdata(&one, &one, 1, &res);
  // constant data: the window is one step. Two rows on one stamp: no resampling, the values
  // as they stand scaled by the mean step give the window of evenly spaced stamps
  V tf(10), td = {0, 600, 600, 1800, 2400, 3000, 3600, 4200, 4800, 5400};
  for (int k = 0; k < 10; ++k)
    tf[size_t(k)] = 600.0 * k;
  const V ad = {1, 2, 2.5, 3, 2, 1, 2, 3, 2, 1};
  same({res, coder::internal::chooseWindowSize(V(10, 2.0).data(), tf.data(), 10),
        coder::internal::chooseWindowSize(ad.data(), td.data(), 10)},
       {3.5, 600, coder::internal::chooseWindowSize(ad.data(), tf.data(), 10)});
  V sd(10);
  coder::smoothdata(ad.data(), td.data(), 10, sd.data());
  EXPECT_TRUE(std::all_of(sd.begin(), sd.end(), [](double v) { return std::isfinite(v); }));
  // stamps one rounding step from even take the time-window path; its end windows, shifted
  // inside the history, select the rows of the even-spacing rule: the same smoothing
  V x(50), te(50);
  for (int k = 0; k < 50; ++k) {
    te[size_t(k)] = 600.0 * k;
    x[size_t(k)] = std::sin(0.21 * k) + 0.1 * std::cos(1.7 * k) + 0.01 * k;
  }
  V nudged = te;
  nudged[7] = std::nextafter(nudged[7], 1e9);
  for (double samples : {5, 6, 9, 10, 17, 50})
    EXPECT_TRUE(closeRelative(loess(x, nudged, samples * 600), loess(x, te, samples * 600), 1e-12))
        << samples;
}

TEST(HandWorked, CoderArrayAndImplicitExpansion) {
  // column-major extents; a count kept in place (same flat order, no reallocation), growth
  // from a capacity of 16 by doubling, shrinking keeping the capacity; a negative extent is 0
  coder::array<double, 2> a, empty;
  V got = {double(a.size(0)), double(a.size(1)), double(a.empty())};
  a.set_size(3, 4);
  for (int i = 0; i < 12; ++i)
    a[i] = i;
  const double* before = a.data();
  got = got + V{a(2, 3), a(1, 0), a(0, 1), double(a.size()[1]), double(a.numel())};
  a.set_size(4, 3);
  got = got + V{double(a.data() == before), a(3, 2), double(a.capacity())};
  for (int n : {16, 17, 100, 129, 2, 0})
    got.push_back((a.set_size(1, n), a.capacity()));
  got.push_back(a[1]);
  empty.set_size(-3, 4);
  got = got + V{double(empty.size(0)), double(coder::array<double, 2>(empty).numel())};
  same(got, {0, 0, 1, 11, 1, 3, 4, 12, 1, 11, 16, 16, 32, 128, 256, 256, 256, 1, 0, 0});
  // a view writes through; growing it copies into a buffer of its own; copies are deep,
  // moves take the buffer; reshape is a view and a copy of a view owns its elements
  double outside[3] = {1, 2, 3};
  coder::array<double, 1> view, copy, moved;
  view.set(outside, 3);
  got = {double(view.is_owner())};
  view[1] = 20;
  view.set_size(40);
  view[0] = -1;
  copy = view;
  copy[1] = 7;
  const double* buffer = view.data();
  moved = std::move(view);
  got = got + V{outside[0],
                outside[1],
                double(view.is_owner() + 2 * moved.is_owner()),
                moved[1],
                double(moved.data() == buffer),
                double(view.numel() + moved.numel())};
  coder::array<double, 1> column = a.reshape(12);
  column[1] = 42;
  coder::array<double, 1> owned(column);
  got = got + V{double(column.is_owner()), a(1, 0), double(owned.is_owner()),
                double(owned.data() != a.data())};
  same(got, {0, 1, 20, 3, 20, 1, 40, 0, 42, 1, 1});
  static_assert(sizeof(creal_T) == 2 * sizeof(double), "complex values are adjacent doubles");
  // expansion repeats extents of 1 (a rank-1 column against a row too); extents that differ
  // otherwise give an empty result rather than reading past either operand
  coder::array<double, 2> col = toRow({1, 2, 3}), row = toRow({10, 20}), sum, product, diff, bad;
  coder::array<double, 1> vec = toColumn({1, 2});
  col.set_size(3, 1);
  coder::plus(sum, col, row);
  coder::times(product, sum, sum);
  coder::minus(diff, vec, row);
  coder::rdivide(bad, row, toRow({1, 1, 1}));
  same({double(sum.size(0)), double(sum.size(1)), sum(2, 1), sum(0, 0), product(1, 1),
        double(diff.size(0) * 10 + diff.size(1)), diff(1, 0), diff(0, 1), double(bad.numel())},
       {3, 2, 23, 11, 22 * 22, 22, -8, -19, 0});
}

TEST(Degenerate, TooLittleDataEmptyNaNInPlaceAndRankDeficient) {
  // Too little data: envspectrum of fewer than four samples, thd of one sample, of one
  // harmonic or of silence (no fundamental), firls of an odd order or edge count,
  // periodogram with a window of another length, cumtrapz with fewer times than samples
  // (NaN steps, nothing read beyond t), filter without taps (zeros, in place too).
  coder::array<double, 1> x = toColumn(V(1000, 3.0)), tone(x), hp, hf, es, f, env, t, w, P, F;
  for (int k = 0; k < 1000; ++k)
    tone[k] = std::sin(2 * kPi * 50 * k / 500.0);
  const V thds = {coder::thd(x, 500.0, 5, hp, hf), hf[0],
                  coder::thd(toColumn({1.0}), 500, 5, hp, hf), coder::thd(tone, 500.0, 1, hp, hf)};
  coder::envspectrum(toRow({1.0, 2.0, 3.0}), 16000.0, es, f, env, t);
  coder::array<double, 2> odd, odd_edges, z, y = toRow({1.0, 3.0, 2.0});
  coder::firls(31, {0, 0.5, 0.6, 1}, {1, 1, 0, 0}, odd);
  coder::firls(30, {0, 0.5, 0.6}, {1, 1, 0}, odd_edges);
  coder::tukeywin(7, w);
  coder::periodogram(toColumn(lcgSignal(1, 64)), w, 64, 1000.0, P, F);
  coder::cumtrapz(toRow({0.0, 1.0}), y, z);
  same(thds +
           V{double(es.numel() + f.numel() + env.numel() + t.numel() + odd.numel() +
                    odd_edges.numel() + P.numel() + F.numel())} +
           V{double(z.size(0)), double(z.size(1))} + toVector(z),
       {kNaN, kNaN, kNaN, kNaN, 0, 1, 3, 0, 2, kNaN});
  coder::array<double, 1> b = toColumn({0.25, 0.5, 0.25}), pulse = toColumn({1, 0, 0, 0, 2}), yf;
  coder::filter(coder::array<double, 1>(), pulse, yf);
  coder::filter(b, pulse, pulse);
  same(toVector(yf) + toVector(pulse), V(5, 0.0) + V{0.25, 0.5, 0.25, 0, 0.5});
  // Empty and in place: transforms of nothing, a complex transform into its own input, a
  // NaN spreading over a detrended row written in place, windows of no or negative length,
  // the Kaiser window of a NaN beta.
  coder::array<creal_T, 1> spec = toComplex({1, 2, 3, 4, 5}), out, none, analytic;
  coder::fft(spec, 8, out);
  coder::fft(spec, 8, spec);
  coder::fft(toColumn({1, 2}), 0, none);
  coder::hilbert(coder::array<double, 1>(), analytic);
  coder::array<double, 2> line = toRow(lcgSignal(3, 50));
  line[7] = kNaN;
  coder::detrend(line, line);
  coder::tukeywin(0, w);
  coder::hanning(-3, P);
  coder::kaiser(3, kNaN, F);
  EXPECT_EQ(flatten(spec), flatten(out));
  same(V{double(none.numel() + analytic.numel() + w.numel() + P.numel()), F[0],
         coder::internal::besselI0(-kInf), coder::internal::besselI0(0),
         coder::internal::besselI0(1)} +
           toVector(line),
       V{0, kNaN, kInf, 1, 1.2660658777520084} + V(50, kNaN));
  // Least squares: three points for a cubic are rank 3, one coefficient exactly 0, the fit
  // through the points; all abscissae equal (std 0) or a NaN in the data: every coefficient
  // NaN. A duplicated column: rank 1, the pivoted-out coefficient exactly 0. A square system
  // needing a row swap: [0 2; 1 1] x = [4; 3] gives [1; 2].
  const V tp = {0.0, 1.0, 3.0}, xp = {1.0, 2.0, 0.5}, nan_y = {3, 4, kNaN};
  V p, pc, pn, back(3), xs(2), xq(2);
  double mu[2], mu_flat[2];
  int rank = 0;
  coder::polyfit(tp.data(), xp.data(), 3, 3, p, nullptr, mu);
  coder::polyval(p, tp.data(), 3, mu, back.data());
  coder::polyfit(V(3, 5.0).data(), xp.data(), 3, 3, pc, nullptr, mu_flat);
  coder::polyfit(tp.data(), nan_y.data(), 3, 3, pn, nullptr, mu);
  coder::mldivide(V({0, 1, 2, 1}).data(), 2, 2, V({4, 3}).data(), xs.data());
  coder::qrsolve(V({1, 2, 3, 1, 2, 3}).data(), 3, 2, V({2, 4, 6}).data(), xq.data(), &rank);
  EXPECT_TRUE(closeRelative(back, xp, 1e-13)); // rounding of a 3-point fit
  same(V{double(std::count(p.begin(), p.end(), 0.0)), mu_flat[1], double(rank), xq[0] * xq[1]} +
           pc + pn + xs,
       V{1, 0, 1, 0} + V(8, kNaN) + V{1, 2});
  EXPECT_NEAR(xq[0] + xq[1], 2.0, 2e-15);
}

TEST(Degenerate, GroupsOrderAndExtremesOfNaN) {
  // groups numbered in sorted order, NaN missing, -0 and 0 one group (labelled +0)
  V g, labels, g2, none;
  coder::grp2idx(V({3, 1, kNaN, 2, 3, -0.0, 0, kNaN}).data(), 8, g, labels);
  coder::grp2idx(V({50, 48, 50, 0, 0, 24, 50}).data(), 7, g2, none);
  EXPECT_FALSE(std::signbit(labels[0]));
  same(g + labels + g2, {4, 2, kNaN, 3, 4, 1, 1, kNaN, 0, 1, 2, 3, 4, 3, 4, 1, 1, 2, 4});
  coder::grp2idx(nullptr, 0, g, none);
  EXPECT_EQ(g.size() + none.size(), 0U);
  // extremes skip NaN (a leading one too), the first of equal values wins, all NaN gives the
  // first; complex: equal moduli, angle pi/4 beats -3pi/4. Sorting: ascending, NaN last, stable.
  int i = 0, j = 0, k = 0, ci = 0, cj = 0;
  const V x = {kNaN, 2.0, 5.0, 5.0, kNaN, -1.0, -1.0}, all_nan = {kNaN, kNaN};
  const std::vector<creal_T> z = {{kNaN, 0}, {1, 1}, {0, kNaN}, {-1, -1}, {1, 1}, {-1, -1}};
  V s = {3.0, kNaN, -kInf, 1.0, 3.0, kInf, -0.5}, three = {2.0, 1.0, 2.0};
  std::vector<int> idx(7);
  const V got = {coder::internal::maximum(x.data(), 7, &i),       double(i),
                 coder::internal::minimum(x.data(), 7, &j),       double(j),
                 coder::internal::maximum(all_nan.data(), 2, &k), double(k),
                 coder::internal::maximum(z.data(), 6, &ci).re,   double(ci),
                 coder::internal::minimum(z.data(), 6, &cj).re,   double(cj)};
  coder::internal::sort(s.data(), 7, idx.data());
  coder::internal::sort(three.data(), 3, nullptr);
  same(got + s + three + V(idx.begin(), idx.end()),
       V{5, 3, -1, 6, kNaN, 1, 1, 2, -1, 4} + V{-kInf, -0.5, 1, 3, 3, kInf, kNaN, 1, 2, 2} +
           V{3, 7, 4, 1, 5, 6, 2});
}

TEST(Fft, ThreadsPlanningNewLengthsAtOnceGetTheSameBits) {
  // The loop and a recalculation job transform at once; the first use of a length plans it.
  sameBitsFromThreads(8, [] {
    V r;
    for (int n : {3001, 3002, 3003, 4099, 5000, 6007}) {
      coder::array<creal_T, 2> y;
      coder::fft(toRow(lcgSignal(5, n)), n, y);
      r = join(r, flatten(y));
    }
    return r;
  });
}

TEST(Fft, LengthsBeyondTheKeptPlansStillTransformCorrectly) {
  // Signals of ever new lengths fill the real kind's kept plans; past them each call plans for
  // itself and the results stay those of the complex transform's kept plans. The other kinds
  // keep their own plans.
  using coder::internal::FftPlanCache;
  auto& cache = FftPlanCache::instance();
  const size_t complex_kept = cache.size(FftPlanCache::Kind::ComplexForward);
  for (int n = 700; n < 700 + 2 * int(FftPlanCache::kMaxPlans); ++n) {
    coder::array<creal_T, 2> y;
    coder::array<creal_T, 1> yc;
    coder::fft(toRow(lcgSignal(n, n)), n, y);
    if (n % 16 == 0) { // the complex transform of the same signal, eight new lengths
      coder::fft(toComplex(lcgSignal(n, n)), n, yc);
      EXPECT_TRUE(closeRelative(flatten(y), flatten(yc), 1e-13)) << n;
    }
  }
  EXPECT_EQ(cache.size(FftPlanCache::Kind::RealForward), FftPlanCache::kMaxPlans);
  coder::array<creal_T, 1> y;
  coder::fft(toComplex(V(9001, 0.5)), 9001, y);
  EXPECT_EQ(cache.size(FftPlanCache::Kind::ComplexForward), complex_kept + 9);
}

TEST(Firls, FixedFormsOfTheBlocksAndTheCache) {
  const double edges[6] = {0.0, 45.0 / 125.0, 49.0 / 125.0, 51.0 / 125.0, 55.0 / 125.0, 1.0};
  coder::array<double, 2> h500, h298;
  coder::firls(edges, h500);
  coder::b_firls(edges, h298);
  const V f(edges, edges + 6), a = {0, 0, 1, 1, 0, 0};
  // The blocks' fixed forms are the general design of their orders, handed out unchanged.
  const auto first = coder::firlsTaps(500, f, a);
  EXPECT_EQ(first.get(), coder::firlsTaps(500, f, a).get());
  EXPECT_EQ(join(*first, *coder::firlsTaps(298, f, a)), join(toVector(h500), toVector(h298)));
  // threads asking for a new design at once get the same bits
  sameBitsFromThreads(4, [] {
    return *coder::firlsTaps(298, {0, .1, .15, .3, .35, 1}, {0, 0, 1, 1, 0, 0});
  });
}

// The least-squares optimum makes the error H - D orthogonal to every cosine of the design
// over the bands: composite Simpson, 4000 intervals per band (about 1e-14), independent of
// the closed-form sinc sums the design is built from, with a sloped band (the golden designs
// have flat ones only).
TEST(Firls, ErrorIsOrthogonalToEveryCosineOverTheBands) {
  const V f = {0, .3, .5, 1}, a = {0, 1, .5, .5};
  coder::array<double, 2> h;
  coder::firls(30, f, a, h);
  for (int i = 0; i <= 15; ++i) {
    double inner = 0.0;
    for (size_t s = 0; s + 1 < f.size(); s += 2)
      for (int q = 0; q <= 4000; ++q) {
        const double step = (f[s + 1] - f[s]) / 8000, F = f[s] / 2.0 + q * step;
        double H = h[15] - a[s] - (a[s + 1] - a[s]) * q / 4000.0; // minus D
        for (int k = 1; k <= 15; ++k)
          H += 2.0 * h[15 - k] * std::cos(2.0 * kPi * k * F);
        const double weight = (q == 0 || q == 4000) ? 1.0 : (q % 2 == 1 ? 4.0 : 2.0);
        inner += weight * H * std::cos(2.0 * kPi * i * F) * step / 3.0;
      }
    EXPECT_LT(std::fabs(inner), 1e-11) << "cosine " << i;
  }
}

} // namespace
