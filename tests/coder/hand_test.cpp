// Hand-worked cases of the numeric runtime, each worked from the documented rule: the
// non-finite helpers, complex ordering, peak search, colon ranges, the statistics where
// MATLAB and Octave part, thd's tone search and the smoothing's small windows.
#include "coder/binary_expand_op.h"
#include "coder/eml_float_colon.h"
#include "coder/envspectrum.h"
#include "coder/findpeaks.h"
#include "coder/median.h"
#include "coder/moments.h"
#include "coder/relop.h"
#include "coder/rtGetInf.h"
#include "coder/rtGetNaN.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"
#include "coder/smoothdata.h"
#include "coder/sum.h"
#include "coder/thd.h"

#include "support/numeric_compare.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace {

using coder::internal::iseq;
using coder::internal::relop;
using V = std::vector<double>;
const double kNaN = rtNaN, kInf = rtInf, kPi = 3.141592653589793, kR2 = 1.4142135623730951;

// Values compared as printed (NaN equals NaN), to `digits` significant digits.
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
V operator+(V a, const V& b) {
  return vek_test::join(a, b);
}
double stat(double (*fn)(const double*, int), const V& x) {
  return fn(x.data(), int(x.size()));
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
  // values are not less, so a scan keeps its first maximum; NaN (in either part) is below all
  const creal_T z[][2] = {{{3, 4}, {0, 6}},
                          {{0, 6}, {3, 4}},
                          {{5, 0}, {3, 4}},
                          {{3, 4}, {5, 0}},
                          {{3, -4}, {5, 0}},
                          {{1, 2}, {1, 2}},
                          {{1.5e308, 1.5e308}, {-1.6e308, 1.6e308}},
                          {{1, 0}, {kNaN, 0}},
                          {{kNaN, 0}, {1, 0}},
                          {{kNaN, 0}, {kNaN, 0}},
                          {{0, kNaN}, {kNaN, 0}},
                          {{1e-20, 1}, {2e-20, 1}},
                          {{2e-20, 1}, {1e-20, 1}},
                          {{1e-20, -1}, {2e-20, -1}},
                          {{-1, 2e-20}, {-1, 1e-20}},
                          {{-1, 1e-20}, {-1, 2e-20}}};
  V less;
  for (const auto& p : z)
    less.push_back(relop(p[0], p[1]));
  same(less, {1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0, 1, 1, 1, 0});
}

TEST(HandWorked, PeaksAndColonRanges) {
  // strictly above the left neighbour and the next different value on the right, plateaus
  // at their first sample, ends never (short inputs have none), NaN as +Inf in the scan and
  // not reported, +Inf always a peak, -Inf an ordinary low value; descending, ties stable
  const std::pair<V, V> peaks[] = {{{1, 5, 2, 3, 7, 1}, {5, 2}},
                                   {{9, 1, 2}, {}},
                                   {{1, 2, 3, 4, 5}, {}},
                                   {{5, 4, 3}, {}},
                                   {{1, 4, 4, 4, 2}, {2}},
                                   {{1, 4, 4, 6}, {}},
                                   {{0, 3, 0, 3, 0, 3, 0}, {2, 4, 6}},
                                   {{0, 2, kNaN, 2, 0}, {}},
                                   {{0, 2, 1, kNaN, 1, 3, 0}, {6, 2}},
                                   {{-kInf, 2, -kInf}, {2}},
                                   {{kInf, 0, 4, 1, kInf}, {1, 5, 3}},
                                   {{}, {}},
                                   {{1}, {}}};
  for (const auto& c : peaks) {
    V pks, locs, want_pks;
    coder::findpeaks(c.first.data(), int(c.first.size()), pks, locs);
    for (double l : c.second)
      want_pks.push_back(c.first[size_t(l) - 1]);
    same(locs, c.second);
    same(pks, want_pks);
  }
  // a : d : b as {a, d, b}, then the count and some points. Built from both ends: the second
  // half counts back from b, an odd count's centre is the midpoint, an even count's middle
  // pair comes one from each end; 0:0.015:0.1 stops at 0.09; 0:0.1:0.3 reaches 0.3 exactly
  // though 3 * 0.1 does not. A NaN anywhere or equal infinities: one NaN; a bound on the
  // wrong side, a zero step, an infinite bound or too many points: none
  const double a = 24.73 - 0.1, b = 24.73 + 0.1;
  const std::pair<V, V> colons[] = {
      {{a, 0.001, b}, {201, a, a + 10 * 0.001, a + 50 * 0.001, (a + b) / 2, b - 50 * 0.001, b}},
      {{0, 0.015, 0.1}, {7, 0, 0.015, 0.03, 0.045, 0.06, 0.075, 0.09}},
      {{1, 0.5, 2.5}, {4, 1, 1.5, 2, 2.5}},
      {{0, 0.1, 0.3}, {4, 0, 0.1, 0.3 - 0.1, 0.3}},
      {{5, 0.002, 5}, {1, 5}},
      {{3, -1, 1}, {3, 3, 2, 1}},
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
  for (double d : {0.001, 0.002, 0.005, 0.01, 0.015, 0.1}) {
    for (int steps : {1, 2, 3, 50, 101, 400, 5400}) {
      for (double lo : {0.0, 0.4 * 24.37, 3.0, 47.0, 49.6, 117.31}) {
        coder::array<double, 2> y;
        coder::eml_float_colon(lo, d, lo + steps * d, y);
        ASSERT_EQ(y.size(1), steps + 1) << lo << ":" << d << ":" << steps;
        ASSERT_EQ(y[steps], lo + steps * d) << lo << ":" << d << ":" << steps;
        for (int k = 0; k <= steps; ++k)
          ASSERT_NEAR(y[k], lo + k * d, 8 * 2.220446049250313e-16 * (lo + steps * d)) << k;
      }
    }
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

TEST(HandWorked, ThdToneSearchSmallWindowsAndTooLittleData) {
  // a tone over bins 1..3 of a PSD on a 1 Hz grid. Global maximum at bin 2: the left roll
  // stops at bin 0, the right one after bin 4 (0.05 < 0.2); the tone starts at 0 Hz, so the
  // extra width (4 - 0)/4 goes to the end. Near 5.2 Hz: bins 4..6, extra width first. A
  // wide noise bandwidth lifts the power and pins the frequency; beyond the grid: NaN.
  const auto P = vek_test::toColumn({0.1, 2.0, 8.0, 4.0, 0.05, 0.2, 0.1});
  const auto F = vek_test::toColumn({0, 1, 2, 3, 4, 5, 6});
  const std::pair<V, V> tones[] = {
      // {rbw, has target, target}, {power, freq, left, right}
      {{0.5, 0, 0}, {14.15, (2 + 16 + 12 + 0.2) / 14.15, 0, 4}},
      {{0.5, 1, 5.2}, {0.05 + 0.2 + 0.1, (0.2 + 1 + 0.6) / 0.35, 4, 6}},
      {{3, 1, 5}, {0.6000000000000001, 5, 4, 6}},
      {{0.5, 1, 6.5}, {kNaN, kNaN}}};
  for (const auto& c : tones) {
    double power = 0, freq = 0;
    int left = 0, right = 0;
    coder::getToneFromPSD(P, F, c.first[0], c.first[1] != 0, c.first[2], power, freq, left, right);
    V got = {power, freq, double(left), double(right)};
    got.resize(c.second.size());
    same(got, c.second, 15);
  }
  // silence has no fundamental; one sample or one harmonic: NaN; envspectrum of fewer than
  // four samples: four empty arrays
  coder::array<double, 1> x = vek_test::toColumn(V(1000, 3.0)), hp, hf, es, f, env, t, tone(x);
  for (int k = 0; k < 1000; ++k)
    tone[k] = std::sin(2 * kPi * 50 * k / 500.0);
  same({coder::thd(x, 500.0, 5, hp, hf), hf[0],
        coder::thd(vek_test::toColumn({1.0}), 500.0, 5, hp, hf),
        coder::thd(tone, 500.0, 1, hp, hf)},
       {kNaN, kNaN, kNaN, kNaN});
  coder::envspectrum(vek_test::toRow({1.0, 2.0, 3.0}), 16000.0, es, f, env, t);
  EXPECT_EQ(es.numel() + f.numel() + env.numel() + t.numel(), 0);
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
    EXPECT_TRUE(vek_test::closeRelative(loess(x, nudged, samples * 600),
                                        loess(x, te, samples * 600), 1e-12))
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
  coder::array<double, 2> col = vek_test::toRow({1, 2, 3}), row = vek_test::toRow({10, 20}), sum,
                          product, diff, bad;
  coder::array<double, 1> vec = vek_test::toColumn({1, 2});
  col.set_size(3, 1);
  coder::plus(sum, col, row);
  coder::times(product, sum, sum);
  coder::minus(diff, vec, row);
  coder::rdivide(bad, row, vek_test::toRow({1, 1, 1}));
  same({double(sum.size(0)), double(sum.size(1)), sum(2, 1), sum(0, 0), product(1, 1),
        double(diff.size(0) * 10 + diff.size(1)), diff(1, 0), diff(0, 1), double(bad.numel())},
       {3, 2, 23, 11, 22 * 22, 22, -8, -19, 0});
}

} // namespace
