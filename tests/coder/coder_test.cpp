// The numeric runtime against references: Octave's (or MATLAB's published) results in golden
// files read by one driver (golden/gen_*.m write them), hand-worked cases of the documented
// rules, identities, direct sums in extended precision, and the degenerate inputs.
#include "coder/FftPlanCache.h"
#include "coder/binary_expand_op.h"
#include "coder/chirp_z.h"
#include "coder/correlation_scan.h"
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
#include "coder/interp1.h"
#include "coder/median.h"
#include "coder/minmax.h"
#include "coder/mldivide.h"
#include "coder/moments.h"
#include "coder/movfun.h"
#include "coder/pchip.h"
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

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <numeric>
#include <random>
#include <sstream>
#include <thread>

namespace {

using V = std::vector<double>;
using S = std::string;
using coder::internal::iseq;
using coder::internal::relop;
const double kNaN = rtNaN, kInf = rtInf, kPi = 3.141592653589793, kR2 = 1.4142135623730951;

// |got - want| <= tol * max(|want|, floor) element by element; without a floor, norm-wise
// against the largest finite |want| (1 if none), so a tolerance of 0 asks for the same values.
// A NaN where a number belongs, or a wrong infinity, fails whatever the tolerance.
::testing::AssertionResult near(const V& got, const V& want, double tol, double floor = -1) {
  double scale = 0;
  for (double w : want)
    scale = std::isfinite(w) ? std::max(scale, std::fabs(w)) : scale;
  floor = floor >= 0 ? floor : scale > 0 ? scale : 1;
  if (got.size() != want.size())
    return ::testing::AssertionFailure() << "length " << got.size() << ", want " << want.size();
  for (size_t i = 0; i < got.size(); ++i) {
    const double err = std::fabs(got[i] - want[i]) / std::max(std::fabs(want[i]), floor);
    if (err > tol || std::isnan(got[i]) != std::isnan(want[i]) ||
        (std::isinf(want[i]) && got[i] != want[i]))
      return ::testing::AssertionFailure() << "at " << i << " of " << got.size() << ": got "
                                           << got[i] << ", want " << want[i] << ", error " << err;
  }
  return ::testing::AssertionSuccess();
}
// Hand-worked values: exactly, or to a relative `tol` each.
void same(const V& got, const V& want, double tol = 0) {
  EXPECT_TRUE(near(got, want, tol, tol > 0 ? 0.0 : -1));
}
// The Park-Miller sequence s = 16807 s mod (2^31 - 1) from `seed`, mapped to [-0.5, 0.5): the
// same doubles as golden/lcg_signal.m, so long inputs need not be stored.
V lcgSignal(std::int64_t seed, int n) {
  V x;
  for (std::int64_t s = seed; static_cast<int>(x.size()) < n;)
    x.push_back(static_cast<double>(s = (16807 * s) % 2147483647) / 2147483647.0 - 0.5);
  return x;
}
coder::array<double, 2> toRow(const V& v) {
  coder::array<double, 2> a;
  a.set_size(1, int(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
coder::array<double, 1> toColumn(const V& v) {
  coder::array<double, 1> a;
  a.set_size(int(v.size()));
  std::copy(v.begin(), v.end(), a.data());
  return a;
}
coder::array<creal_T, 1> toComplex(const V& re, const V& im = {}) {
  coder::array<creal_T, 1> z;
  z.set_size(int(re.size()));
  for (size_t k = 0; k < re.size(); ++k)
    z[int(k)] = {re[k], im.empty() ? 0.0 : im[k]};
  return z;
}
template <typename T, int N> std::vector<T> toVector(const coder::array<T, N>& a) {
  return std::vector<T>(a.data(), a.data() + a.numel());
}
template <typename A> V shape(const A& a) {
  return {double(a.size(0)), double(a.size(1))};
}
V operator+(V a, const V& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
// Real parts, then imaginary parts: one norm-wise error covers both.
template <int N> V flatten(const coder::array<creal_T, N>& a) {
  V v(size_t(2 * a.numel()));
  for (int k = 0; k < a.numel(); ++k)
    v[size_t(k)] = a[k].re, v[size_t(k + a.numel())] = a[k].im;
  return v;
}
// The elements of `a` at the (0-based) indices `bins`.
template <typename T, int N> coder::array<T, 1> pick(const coder::array<T, N>& a, const V& bins) {
  coder::array<T, 1> p;
  p.set_size(int(bins.size()));
  for (int k = 0; k < p.numel(); ++k)
    p[k] = a[int(bins[size_t(k)])];
  return p;
}
double stat(double (*fn)(const double*, int), const V& x) {
  return fn(x.data(), int(x.size()));
}
// Lines of numbers ("nan" and "inf" too) in groups split by '|', after an optional "name:":
// the golden files' entries and the tables of hand-worked cases, one case per line.
std::vector<std::pair<S, std::vector<V>>> lines(std::istream&& in) {
  std::vector<std::pair<S, std::vector<V>>> rows;
  for (S line; std::getline(in, line);) {
    const size_t name = line.find(':') == S::npos ? 0 : line.find(':');
    rows.push_back({line.substr(0, name), {V()}});
    for (const char* p = line.c_str() + name + (name > 0); *p != '\0';) {
      char* end = nullptr;
      const double v = std::strtod(p, &end);
      if (end != p)
        rows.back().second.back().push_back(v), p = end;
      else if (*p++ == '|')
        rows.back().second.emplace_back();
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

// A golden file by its entries' names; an absent name throws.
struct Golden : std::map<S, V> {
  const V& operator[](const S& name) const { return at(name); }
  bool has(const S& name) const { return count(name) != 0; }
};
// Runs `check(g, k)` for every entry of golden/<file>.txt named <select><k>.
template <typename F> void each(const char* file, const char* select, F check) {
  static std::map<S, Golden> files;
  Golden& g = files[file];
  if (g.empty()) // the first line names the generator: no entry
    for (const auto& [name, values] :
         lines(std::ifstream(S(VEK_SOURCE_DIR) + "/tests/coder/golden/" + file + ".txt")))
      if (!name.empty())
        g.emplace(name, values[0]);
  int cases = 0; // a row that picks nothing would prove nothing
  for (const auto& e : g)
    if (e.first.rfind(select, 0) == 0) {
      SCOPED_TRACE(S(file) + " " + e.first);
      check(g, e.first.substr(S(select).size()));
      ++cases;
    }
  EXPECT_GT(cases, 0) << file << " " << select;
}
int second(const S& k) { // "<a>_<b>" -> b
  return std::stoi(k.substr(k.find('_') + 1));
}

// Named tolerances, by why two correct implementations differ: kExact a permutation, a chosen
// element, a sum in the same order; kFftTol FFTW plans of other lengths, a few ulp per stage;
// kOneUlpSums another association; kDirectSums up to 501 products in another order; kDetrendTol
// a 2-column QR, on the input's scale; kGridTol Octave builds the grid another way; kPolyfitTol
// pivoted QR against unpivoted, cond < 1e3; kKaiserTol Octave's Bessel series, ends near 1e-16;
// kEnvTol two FFTs, a 51-tap convolution, a modulus; kPchipTol another order of the cubic;
// kThdTol tone sums agree to 1e-12, a skirt bin may be decided otherwise; kLoessTol normal
// equations against QR, kWindowTol a whole number of steps; kSumTol blocked against plain sums of
// 16384; kMomentTol powers amplify it; kMedianTol the last bit of an even count's average;
// kFirlsTol another formulation, drifting with the condition: ~1e7 at order 298, 7.8e10 at order
// 500.
constexpr double kExact = 0, kFftTol = 1e-12, kOneUlpSums = 1e-15, kDirectSums = 1e-14,
                 kDetrendTol = 1e-13, kGridTol = 1e-13, kPolyfitTol = 1e-12, kKaiserTol = 2e-14,
                 kEnvTol = 1e-12, kPchipTol = 1e-13, kThdTol = 1e-9, kLoessTol = 1e-12,
                 kWindowTol = 1e-14, kSumTol = 1e-13, kMomentTol = 1e-12, kMedianTol = 4e-16,
                 kFirlsTol[] = {1e-12, 1e-8, 1e-5};

TEST(Golden, EveryRoutineMatchesItsReferenceFile) {
  each("fft", "re_", [](auto& g, const S& k) { // x_<length> padded to <n>: a row and columns
    const V& x = g["x_" + std::to_string(std::stoi(k))];
    const double n = second(k);
    coder::array<creal_T, 2> y, y2;
    coder::array<creal_T, 1> y1;
    coder::array<double, 2> column = toRow(x);
    column.set_size(int(x.size()), 1);
    coder::fft(toRow(x), int(n), y);
    coder::fft(toColumn(x), int(n), y1);
    coder::fft(column, int(n), y2);
    EXPECT_TRUE(near(flatten(y), g["re_" + k] + g["im_" + k], kFftTol));
    EXPECT_EQ(flatten(y1) + flatten(y2), flatten(y) + flatten(y));
    EXPECT_EQ(shape(y) + shape(y2), V({1, n, x.size() > 1 ? n : 1, x.size() > 1 ? 1 : n}));
  });
  each("fft", "xcut", [](auto& g, const S&) { // cut to 6
    coder::array<creal_T, 2> y;
    coder::fft(toRow(g["xcut"]), 6, y);
    EXPECT_TRUE(near(flatten(y), g["recut"] + g["imcut"], kFftTol));
  });
  each("fft", "zre_", [](auto& g, const S& k) { // complex input, both directions
    const auto z = toComplex(g["zre_" + k], g["zim_" + k]);
    coder::array<creal_T, 1> y, back;
    coder::fft(z, std::stoi(k), y);
    coder::ifft(z, back);
    EXPECT_TRUE(near(flatten(y) + flatten(back),
                     g["fre_" + k] + g["fim_" + k] + g["ire_" + k] + g["iim_" + k], kFftTol));
  });
  each("fft", "bins_", [](auto& g, const S& k) { // long padded signals: some bins
    coder::array<creal_T, 2> y;
    coder::fft(toRow(lcgSignal(7, std::stoi(k))), second(k), y);
    EXPECT_TRUE(near(flatten(pick(y, g["bins_" + k])), g["bre_" + k] + g["bim_" + k], kFftTol));
  });
  each("hilbert", "x_", [](auto& g, const S& k) { // a row, and a column alike
    coder::array<creal_T, 2> z;
    coder::array<creal_T, 1> zc;
    coder::hilbert(toRow(g["x_" + k]), z);
    coder::hilbert(toColumn(g["x_" + k]), zc);
    EXPECT_TRUE(near(flatten(z), g["re_" + k] + g["im_" + k], kFftTol));
    EXPECT_EQ(shape(z) + flatten(zc), V({1, double(std::stoi(k))}) + flatten(z));
  });
  each("hilbert", "idx_", [](auto& g, const S& k) {
    coder::array<creal_T, 2> z;
    coder::hilbert(toRow(lcgSignal(9, std::stoi(k))), z);
    EXPECT_TRUE(near(flatten(pick(z, g["idx_" + k])), g["bre_" + k] + g["bim_" + k], kFftTol));
  });
  each("detrend", "x", [](auto& g, const S& k) { // on the input's scale (x joined); a row too
    const V& x = g["x" + k];
    coder::array<double, 1> y;
    coder::array<double, 2> row;
    coder::detrend(toColumn(x), y);
    coder::detrend(toRow(x), row);
    EXPECT_TRUE(near(toVector(y) + x, g["y" + k] + x, kDetrendTol));
    EXPECT_EQ(shape(row) + toVector(row), V({1, double(x.size())}) + toVector(y));
  });
  each("cumtrapz", "t", [](auto& g, const S& k) { // t_<n>, or tj_<n> jittered
    coder::array<double, 1> z;
    coder::cumtrapz(toColumn(g["t" + k]), toColumn(g["y" + k.substr(k.find('_'))]), z);
    EXPECT_TRUE(near(toVector(z), g["z" + k], kOneUlpSums));
  });
  each("filter", "b_", [](auto& g, const S& k) {
    coder::array<creal_T, 1> y;
    coder::array<double, 2> yr;
    coder::filter(toRow(g["b_" + k]), toComplex(g["xre_" + k], g["xim_" + k]), y);
    coder::filter(toRow(g["b_" + k]), toRow(g["xre_" + k]), yr);
    EXPECT_TRUE(near(flatten(y), g["yre_" + k] + g["yim_" + k], kDirectSums));
    EXPECT_TRUE(near(toVector(yr), g["yreal_" + k], kDirectSums));
  });
  each("fir1", "case_", [](auto& g, const S& k) { // order, cut-off, width
    coder::array<double, 2> b;
    coder::fir1(int(g["case_" + k][0]), g["case_" + k][1], g["case_" + k][2], b);
    EXPECT_TRUE(near(toVector(b), g["b_" + k], kDirectSums));
  });
  each("firls", "order_", [](auto& g, const S& k) { // a linear-phase row of order + 1
    const int order = int(g["order_" + k][0]);
    coder::array<double, 2> h;
    coder::firls(order, g["f_" + k], g["a_" + k], h);
    const V got = toVector(h);
    EXPECT_TRUE(near(got, g["h_" + k], kFirlsTol[order == 500 ? 2 : order == 298]));
    EXPECT_EQ(got + shape(h), V(got.rbegin(), got.rend()) + V({1, order + 1.0}));
  });
  each("polyfit", "t_", [](auto& g, const S& k) {
    const V &t = g["t_" + k], &tq = g["tq_" + k];
    const int n = int(t.size());
    V p, yq(tq.size());
    coder::polyfit_S fit;
    double mu[2];
    coder::polyfit(t.data(), g["x_" + k].data(), n, 3, p, &fit, mu);
    coder::polyval(p, tq.data(), int(tq.size()), mu, yq.data());
    EXPECT_TRUE(near({mu[0], mu[1]}, g["mu_" + k], 1e-14)); // mean, std: rounding
    EXPECT_TRUE(near(p + yq, g["p_" + k] + g["yq_" + k], kPolyfitTol));
    // a residual of exactly zero (4 points, 4 coefficients) has no relative accuracy
    EXPECT_TRUE(
        near({fit.normr, double(fit.df)}, g["normr_" + k] + V{n > 4 ? n - 4.0 : 0}, 1e-9, 1e-3));
  });
  each("interp1", "x_", [](auto& g, const S& k) { // the queries end on the knots
    const V &x = g["x_" + k], &xq = g["xq_" + k];
    V vq(xq.size());
    coder::interp1(x.data(), g["v_" + k].data(), int(x.size()), xq.data(), int(xq.size()),
                   vq.data());
    // v(lo) + s (v(lo+1) - v(lo)) against (1 - r) v(lo) + r v(lo+1): last bits on ~1e3
    EXPECT_TRUE(near(vq, g["vq_" + k], kOneUlpSums, 1.0));
    EXPECT_EQ(V(vq.end() - int(x.size()), vq.end()), g["v_" + k]);
  });
  each("pchip", "x_", [](auto& g, const S& k) {
    const V &x = g["x_" + k], &xq = g["xq_" + k];
    V vq(xq.size());
    coder::pchip(x.data(), g["v_" + k].data(), int(x.size()), xq.data(), int(xq.size()), vq.data());
    EXPECT_TRUE(near(vq, g["vq_" + k], kPchipTol));
  });
  each("movfun", "x_", [](auto& g, const S& k) {
    const V& x = g["x_" + k];
    V mm(x.size()), md(x.size());
    coder::movmean(x.data(), int(x.size()), 5, mm.data());
    coder::movmedian(x.data(), int(x.size()), 9, md.data());
    EXPECT_TRUE(near(mm + md, g["movmean_" + k] + g["movmedian_" + k], kOneUlpSums, 1.0));
  });
  each("smoothdata", "t_", [](auto& g, const S& k) { // uniform_<n>, jitter_<n>
    const V &t = g["t_" + k], &a = g["a_" + k];
    V s(a.size());
    coder::smoothdata(a.data(), t.data(), int(a.size()), s.data());
    EXPECT_TRUE(near(s, g["s_" + k], kLoessTol));
    const double window = coder::internal::chooseWindowSize(a.data(), t.data(), int(a.size()));
    EXPECT_TRUE(near({window}, g["window_" + k], kWindowTol));
  });
  each("statistics", "x_", [](auto& g, const S& k) {
    const V &x = g["x_" + k], &xn = g["xnan_" + k];
    const std::tuple<S, double, double> stats[] = {
        {"sum", stat(coder::sum, x), kSumTol},
        {"mean", stat(coder::mean, x), kSumTol},
        {"std", stat(coder::b_std, x), kSumTol},
        {"median", stat(coder::median, x), kMedianTol},
        {"peak2peak", stat(coder::peak2peak, x), kExact},
        {"kurtosis", stat(coder::kurtosis, x), kMomentTol},
        {"skewness", stat(coder::skewness, x), kMomentTol},
        {"nanmean", stat(coder::nanmean, xn), kSumTol},
        {"peak2peaknan", stat(coder::peak2peak, xn), kExact}};
    for (const auto& [key, value, tol] : stats) // no moments of one value; std, median keep NaN
      EXPECT_TRUE(!g.has(key + "_" + k) || near({value}, g[key + "_" + k], tol)) << key;
    EXPECT_TRUE(std::isnan(stat(coder::b_std, xn)) && std::isnan(stat(coder::median, xn)));
    EXPECT_EQ(stat(coder::median, g["xmedianmix"]), g["medianmix"][0]); // pairs around 0, 1e308
  });
  each("minmax", "re_", [](auto& g, const S& k) { // values and 1-based indices, exactly
    const V &re = g["re_" + k], &im = g["im_" + k];
    const auto z = toComplex(re, im);
    int i = 0, j = 0, ri = 0, rj = 0;
    const creal_T mx = coder::internal::maximum(z.data(), z.numel(), &i),
                  mn = coder::internal::minimum(z.data(), z.numel(), &j);
    const V real = {coder::internal::maximum(re.data(), int(re.size()), &ri), double(ri),
                    coder::internal::minimum(re.data(), int(re.size()), &rj), double(rj)};
    EXPECT_EQ(V({mx.re, mx.im, double(i), mn.re, mn.im, double(j)}) + real,
              g["max_" + k] + g["min_" + k] +
                  (g.has("maxreal_" + k) ? g["maxreal_" + k] + g["minreal_" + k] : real));
  });
  each("sortrows", "a_", [](auto& g, const S& k) { // rows of 3 columns, exactly
    const V& a = g["a_" + k];
    V b(a.size());
    std::vector<int> idx(a.size() / 3, 0);
    coder::sortrows(a.data(), int(idx.size()), 3, b.data(), idx.data());
    EXPECT_TRUE(near(b + V(idx.begin(), idx.end()), g["b_" + k] + g["idx_" + k], kExact));
  });
  each("windows", "", [](auto& g, const S& k) { // kaiser<beta>_<n>, hanning_<n>, tukeywin_<n>
    coder::array<double, 1> w;
    if (k[0] == 'k')
      coder::kaiser(second(k), std::stoi(k.substr(6)), w);
    else
      k[0] == 'h' ? coder::hanning(second(k), w) : coder::tukeywin(second(k), w);
    // Octave's hanning: its second half from cosines near 2 pi, a few 1e-17 absolute
    const V v = toVector(w);
    const int kind = (k[0] == 'h') + 2 * (k[0] == 'k'); // tukeywin, hanning, kaiser (each value)
    EXPECT_TRUE(near(v, g[k], V{kExact, kOneUlpSums, kKaiserTol}[size_t(kind)], kind / 2 - 1.0));
    EXPECT_EQ(v, V(v.rbegin(), v.rend())); // exactly mirrored, as the correlation sums assume
  });
  each("periodogram", "case_", [](auto& g, const S& k) { // case: -, nfft, fs
    const auto x = toColumn(g["x_" + k]);
    coder::array<double, 1> P, F, w;
    coder::kaiser(x.numel(), 38.0, w);
    coder::periodogram(x, w, int(g["case_" + k][1]), g["case_" + k][2], P, F);
    EXPECT_TRUE(near(toVector(P), g["P_" + k], kFftTol));
    EXPECT_TRUE(near(toVector(F), g["F_" + k], kGridTol));
  });
  each("periodogram", "dx_", [](auto& g, const S& k) { // the default window and grid
    coder::array<double, 1> P, w;
    coder::periodogram(toColumn(g["dx_" + k]), P, w);
    EXPECT_TRUE(near(toVector(P), g["dP_" + k], kFftTol));
    EXPECT_TRUE(near(toVector(w), g["dw_" + k], kGridTol));
  });
  each("envspectrum", "case_", [](auto& g, const S& k) { // fs, n, kind, seed
    const V& c = g["case_" + k];
    const int n = int(c[1]);
    coder::array<double, 1> es, f, env, t;
    coder::envspectrum(toColumn(g.has("x_" + k) ? g["x_" + k] : lcgSignal(int(c[3]), n)), c[0], es,
                       f, env, t);
    V times, sizes = {double(es.numel()), double(f.numel()), double(env.numel())};
    for (int i = 0; i < n; ++i)
      times.push_back(i / c[0]);
    EXPECT_EQ(toVector(t) + sizes, times + V({n / 2 + 1.0, n / 2 + 1.0, double(n)}));
    if (g.has("idx_" + k)) // long cases: every 37th bin stored
      es = pick(es, g["idx_" + k]), env = pick(env, g["idx_" + k]), f = pick(f, g["idx_" + k]);
    EXPECT_TRUE(near(toVector(es), g["es_" + k], kEnvTol));
    EXPECT_TRUE(near(toVector(env), g["env_" + k], kEnvTol));
    EXPECT_EQ(toVector(f), g["f_" + k]);
  });
  each("thd", "case_", [](auto& g, const S& k) { // fs, n, fundamental, harmonics, seed
    const V& c = g["case_" + k];
    V x = lcgSignal(int(c[4]), int(c[1]));
    const double fs = c[0], f = c[2];
    for (size_t i = 0; i < x.size(); ++i) { // the signal of gen_thd.m, same operations
      const double t = double(i) / fs;
      x[i] = std::sin(2.0 * kPi * f * t) + 0.05 * std::sin(2.0 * kPi * 3.0 * f * t + 0.3) +
             0.02 * std::cos(2.0 * kPi * 5.0 * f * t) + 1e-3 * x[i];
    }
    coder::array<double, 1> hp, hf;
    const double r = coder::thd(toRow(g.has("x_" + k) ? g["x_" + k] : x), fs, int(c[3]), hp, hf);
    EXPECT_TRUE(near({r}, g["r_" + k], kThdTol));
    EXPECT_TRUE(near(toVector(hp), g["harmpow_" + k], kThdTol));
    EXPECT_TRUE(near(toVector(hf), g["harmfreq_" + k], kThdTol));
  });
}

TEST(HandWorked, NonFiniteHelpersComplexOrderPeaksAndColonRanges) {
  // hypot: equal magnitudes use the constant, the squares never overflow. rem: 0.3 / 0.1 is
  // whole to eps of the quotient (fmod gives 0.0999...). iseq: at |y|/2 the spacing is 2^-53,
  // not above one ulp of 1.0; below the smallest normal it is the subnormals'.
  rt_InitInfAndNaN();
  same(V{rtGetNaN(), rtGetNaNF(), rtNaNF, rtGetInf(), rtGetMinusInf(), rtGetInfF(),
         rtGetMinusInfF(), rtMinusInf, rtInfF, rtMinusInfF, double(rtIsNaN(kNaN)),
         double(rtIsNaN(kInf)), double(rtIsInf(-kInf)), double(rtIsInfF(rtInfF)),
         double(rtIsNaNF(rtNaNF))} +
           V{rt_hypotd_snf(kNaN, 0), rt_hypotd_snf(0, kNaN), rt_hypotd_snf(3, 3),
             rt_hypotd_snf(-3, 3), rt_hypotd_snf(3, 4), rt_hypotd_snf(0, 0), rt_hypotd_snf(kInf, 1),
             rt_hypotd_snf(1e300, 1e300), rt_hypotd_snf(3e300, 4e300)} +
           V{rt_atan2d_snf(kNaN, 1), rt_atan2d_snf(1, kNaN), rt_atan2d_snf(0, 0),
             rt_atan2d_snf(1, 0), rt_atan2d_snf(-2, 0), rt_atan2d_snf(-0.0, -0.0),
             rt_atan2d_snf(kInf, kInf), rt_atan2d_snf(-kInf, kInf), rt_atan2d_snf(kInf, -kInf),
             rt_atan2d_snf(1, -1)} +
           V{rt_powd_snf(kNaN, 0), rt_powd_snf(1, kNaN), rt_powd_snf(1, kInf),
             rt_powd_snf(-1, -kInf), rt_powd_snf(2, kInf), rt_powd_snf(2, -kInf),
             rt_powd_snf(0.5, kInf), rt_powd_snf(0.5, -kInf), rt_powd_snf(0, 0), rt_powd_snf(-8, 1),
             rt_powd_snf(4, -1), rt_powd_snf(-3, 2), rt_powd_snf(2, 0.5), rt_powd_snf(-8, 1.0 / 3),
             rt_powd_snf(-2, 3), rt_powd_snf(10, 0.05)} +
           V{rt_remd_snf(kNaN, 2), rt_remd_snf(2, kNaN), rt_remd_snf(kInf, 2), rt_remd_snf(5, kInf),
             rt_remd_snf(5, 0), rt_remd_snf(7, 3), rt_remd_snf(-7, 3), rt_remd_snf(0.3, 0.1),
             rt_remd_snf(0.35, 0.1)} +
           V{double(iseq(1, 1)), double(iseq(1 + 2.220446049250313e-16, 1)),
             double(iseq(1 - 1.1102230246251565e-16, 1)), double(iseq(-0.0, 0)),
             double(iseq(4.9406564584124654e-324, 0)), double(iseq(kInf, kInf)),
             double(iseq(kInf, -kInf)), double(iseq(kNaN, kNaN)), double(iseq(1, kNaN))},
       V{kNaN, kNaN, kNaN, kInf, -kInf, kInf, -kInf, -kInf, kInf, -kInf, 1, 0, 1, 1, 1} +
           V{kNaN, kNaN, 3 * kR2, 3 * kR2, 5, 0, kInf, 1e300 * kR2, 5e300} +
           V{kNaN, kNaN, 0, kPi / 2, -kPi / 2, 0, kPi / 4, -kPi / 4, 3 * kPi / 4, 3 * kPi / 4} +
           V{kNaN, kNaN, 1, 1, kInf, 0, 0, kInf, 1, -8, 0.25, 9, kR2, kNaN, -8} +
           V{std::pow(10, 0.05), kNaN, kNaN, kNaN, 5, 0, 1, -1, 0, std::fmod(0.35, 0.1)} +
           V{1, 0, 0, 1, 0, 1, 0, 0, 0});
  // relop(a, b) is a < b by modulus (halved near the top of the range), then angle, then along
  // the growing angle when both round equal (the real part near +-pi/2, the imaginary part near
  // pi); equal values are not less, so a scan keeps its first maximum; NaN is below all.
  for (const auto& [name, c] : lines(std::istringstream(R"(3 4 0 6 | 1
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
    -1 1e-20 -1 2e-20 | 0)"))) {
    const V& z = c[0];
    EXPECT_EQ(relop({z[0], z[1]}, {z[2], z[3]}), c[1][0] != 0) << z[0] << " " << z[1];
  }
  // strictly above the left neighbour and the next different value on the right, plateaus
  // at their first sample, ends never (short inputs have none), NaN as +Inf in the scan and
  // not reported, +Inf always a peak, -Inf an ordinary low value; descending, ties stable
  for (const auto& [name, c] : lines(std::istringstream(R"(1 5 2 3 7 1 | 5 2
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
    1 |)"))) {
    V pks, locs, want_pks;
    coder::findpeaks(c[0].data(), int(c[0].size()), pks, locs);
    for (double l : c[1])
      want_pks.push_back(c[0][size_t(l) - 1]);
    same(locs + pks, c[1] + want_pks);
  }
  // a : d : b, then the count and some points, built from both ends: the second half from b,
  // an odd count's centre the midpoint, an even count's middle pair one from each end; 0:0.1:0.3
  // reaches 0.3 though 3 * 0.1 does not. NaN or equal infinities: one NaN; an infinite step: a;
  // a bound on the wrong side, a zero step, an infinite bound, too many points: none
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
    same(got, want, c.first[1] == 0.015 ? 1e-14 : 0);
  }
}

TEST(HandWorked, StatisticsWhereMatlabAndOctavePartAndThdToneSearch) {
  // x = [1 2 3 4 10 NaN] skipping NaN: mean 4, m2 = 50/5 = 10, m3 = (-27-8-1+0+216)/5 = 36,
  // m4 = (81+16+1+0+1296)/5 = 278.8 (Octave would propagate the NaN)
  const V x = {1, 2, 3, 4, 10, kNaN}, flat = {2.5, 2.5, 2.5}, nan2 = {kNaN, kNaN};
  same({stat(coder::skewness, x), stat(coder::kurtosis, x), stat(coder::b_std, {1e300, -1e300})},
       {36 / std::pow(10, 1.5), 2.788, 1e300 * std::sqrt(2)}, 1e-14);
  // constant data 0/0; an empty input; a single or infinite value; pairs of the median:
  // opposite signs averaged directly, same signs through the difference
  same({stat(coder::nanmean, x), stat(coder::peak2peak, x), stat(coder::skewness, flat),
        stat(coder::kurtosis, flat), stat(coder::peak2peak, flat), stat(coder::kurtosis, nan2),
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
  // a tone over bins 0..4 of a PSD on a grid of uneven steps. Global maximum at bin 2: the
  // left roll stops at bin 0, the right one after bin 4 (0.05 < 0.2); the tone starts at 0 Hz,
  // so the extra width (4 - 0)/4 goes to the end. At 3.5 Hz, as near bin 3 as bin 4, the lower
  // one is nearest: bins 2..4, the same tone. Near 5.2 Hz: bins 4..6, extra width first.
  // A wide noise bandwidth lifts the power and pins the frequency; beyond the grid: NaN.
  const auto P = toColumn({0.1, 2.0, 8.0, 4.0, 0.05, 0.2, 0.1});
  const auto F = toColumn({0, 1, 2.5, 3, 4, 5.5, 6});
  for (const auto& [name, c] : lines(std::istringstream(R"(0.5 0 0 | 11.15 2.4169611307420498 0 4
    0.5 1 3.5 | 11.15 2.4169611307420498 0 4
    0.5 1 5.2 | 0.4 5.4285714285714288 4 6
    3 1 5 | 0.6000000000000001 5.5 4 6
    0.5 1 6.5 | nan nan)"))) {
    double power = 0, freq = 0;
    int left = 0, right = 0;
    coder::getToneFromPSD(P, F, c[0][0], c[0][1] != 0, c[0][2], power, freq, left, right);
    V got = {power, freq, double(left), double(right)};
    got.resize(c[1].size());
    same(got, c[1], 1e-14);
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
       1e-11);
  double one = 3.5, res = 0;
  coder::smoothdata(&one, &one, 1, &res);
  // constant data: the window is one step. Two rows on one stamp: no resampling, the values
  // as they stand scaled by the mean step give the window of evenly spaced stamps
  V te(50), td = {0, 600, 600, 1800, 2400, 3000, 3600, 4200, 4800, 5400};
  for (int k = 0; k < 50; ++k)
    te[size_t(k)] = 600.0 * k;
  const V ad = {1, 2, 2.5, 3, 2, 1, 2, 3, 2, 1};
  same({res, coder::internal::chooseWindowSize(V(10, 2.0).data(), te.data(), 10),
        coder::internal::chooseWindowSize(ad.data(), td.data(), 10)},
       {3.5, 600, coder::internal::chooseWindowSize(ad.data(), te.data(), 10)});
  V sd(10);
  coder::smoothdata(ad.data(), td.data(), 10, sd.data());
  EXPECT_TRUE(std::all_of(sd.begin(), sd.end(), [](double v) { return std::isfinite(v); }));
  // stamps one rounding step from even take the time-window path; its end windows, shifted
  // inside the history, select the rows of the even-spacing rule: the same smoothing
  const V x = lcgSignal(5, 50);
  V nudged = te;
  nudged[7] = std::nextafter(nudged[7], 1e9);
  for (double samples : {5, 6, 9, 10, 17, 50})
    EXPECT_TRUE(near(loess(x, nudged, samples * 600), loess(x, te, samples * 600), 1e-12))
        << samples;
  // the running moments against one QR solve per window, on a slow rise with noise and a step:
  // stamps even (0), jittered with NaN rows and a gap (1), in bursts (2), repeated (3); windows
  // of rows 600 s apart, from four to wider than the history
  constexpr double kMomentsTol = 1e-12; // normal equations square a condition of some hundreds
  for (const auto& [name, c] : lines(std::istringstream(R"(1000 0 443
    1000 1 2000
    300 1 17.5
    300 2 40
    81 2 43
    400 3 60.5
    200 3 7
    200 3 2.5
    5 0 4
    12 1 30
    60 0 59
    60 0 200)"))) {
    const int n = int(c[0][0]), kind = int(c[0][1]);
    const double steps = c[0][2];
    const V r = lcgSignal(n + kind, 2 * n);
    V tk(r.size() / 2, 0.0), ak(tk), direct(tk);
    for (size_t k = 0; k < tk.size(); ++k) {
      const double u = r[k] + 0.5, dt[] = {600, 300 + 600 * u, u < 0.2 ? 1e5 * u : 20 * u};
      const double step =
          (kind == 3 ? 600.0 * (u > 0.3) : dt[kind]) + 9e3 * (kind == 1 && k == 100);
      tk[k] = k ? tk[k - 1] + step : 0;
      ak[k] = kind == 1 && k % 9 == 4
                  ? kNaN
                  : 1 + 1e-12 * tk[k] * tk[k] + 0.05 * r[k + tk.size()] + (k > 40);
    }
    coder::internal::localRegressionDirect(ak.data(), tk.data(), n, steps * 600, direct.data());
    EXPECT_TRUE(near(loess(ak, tk, steps * 600), direct, kMomentsTol)) << n << " " << kind;
  }
}

TEST(HandWorked, CoderArrayAndImplicitExpansion) {
  // column-major extents; a count kept in place (same flat order, no reallocation), growth from
  // 16 by doubling, shrinking keeps the capacity; a negative extent is 0; reshape is a view.
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
  coder::array<double, 1> column = a.reshape(12);
  column[1] = 42;
  coder::array<double, 1> owned(column);
  got = got + V{double(empty.size(0)), double(coder::array<double, 2>(empty).numel()), a(1, 0),
                double(column.is_owner() + 2 * owned.is_owner()), double(owned.data() != a.data())};
  // a view writes through; growing it copies into a buffer of its own; copies are deep, moves
  // take the buffer
  double outside[3] = {1, 2, 3};
  coder::array<double, 1> view, copy, moved;
  view.set(outside, 3);
  view[1] = 20;
  got.push_back(view.is_owner());
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
  // expansion repeats extents of 1 (a rank-1 column against a row too); extents that differ
  // otherwise give an empty result rather than reading past either operand
  coder::array<double, 2> col = toRow({1, 2, 3}), row = toRow({10, 20}), sum, product, diff, bad;
  col.set_size(3, 1);
  coder::plus(sum, col, row);
  coder::times(product, sum, sum);
  coder::minus(diff, toColumn({1, 2}), row);
  coder::rdivide(bad, row, toRow({1, 1, 1}));
  same(got + shape(sum) + shape(diff) +
           V{sum(2, 1), sum(0, 0), product(1, 1), diff(1, 0), diff(0, 1), double(bad.numel())},
       V{0, 0, 1, 11, 1, 3, 4, 12, 1, 11, 16, 16, 32, 128, 256, 256, 256, 1} +
           V{0, 0, 42, 2, 1, 0, 1, 20, 3, 20, 1, 40, 3, 2, 2, 2, 23, 11, 22 * 22, -8, -19, 0});
  static_assert(sizeof(creal_T) == 2 * sizeof(double), "complex values are adjacent doubles");
}

TEST(Degenerate, TooLittleDataEmptyNaNRankDeficientAndTies) {
  // Too little data: envspectrum of under four samples, thd of one sample, one harmonic or
  // silence, firls of an odd order or edge count, periodogram with a window of another length,
  // cumtrapz with fewer times than samples (NaN steps), filter without taps (zeros; in place).
  coder::array<double, 1> hp, hf, es, f, env, t, w, P, F, yf, pulse = toColumn({1, 0, 0, 0, 2});
  const V thds = {coder::thd(toColumn(V(1000, 3.0)), 500.0, 5, hp, hf), hf[0],
                  coder::thd(toColumn({1.0}), 500, 5, hp, hf),
                  coder::thd(toColumn(lcgSignal(2, 1000)), 500.0, 1, hp, hf)};
  coder::envspectrum(toRow({1.0, 2.0, 3.0}), 16000.0, es, f, env, t);
  coder::array<double, 2> odd, odd_edges, z;
  coder::firls(31, {0, 0.5, 0.6, 1}, {1, 1, 0, 0}, odd);
  coder::firls(30, {0, 0.5, 0.6}, {1, 1, 0}, odd_edges);
  coder::periodogram(toColumn(lcgSignal(1, 64)), toColumn(V(7, 1.0)), 64, 1000.0, P, F);
  coder::cumtrapz(toRow({0.0, 1.0}), toRow({1.0, 3.0, 2.0}), z);
  coder::filter(coder::array<double, 1>(), pulse, yf);
  coder::filter(toColumn({0.25, 0.5, 0.25}), pulse, pulse);
  same(thds +
           V{double(es.numel() + f.numel() + env.numel() + t.numel() + odd.numel() +
                    odd_edges.numel() + P.numel() + F.numel())} +
           shape(z) + toVector(z) + toVector(yf) + toVector(pulse),
       {kNaN, kNaN, kNaN, kNaN, 0, 1, 3, 0, 2, kNaN, 0, 0, 0, 0, 0, 0.25, 0.5, 0.25, 0, 0.5});
  // Empty and in place: transforms of nothing or into their input, a NaN spreading over a row
  // detrended in place, windows of no or negative length or a NaN beta.
  coder::array<creal_T, 1> ramp = toComplex({1, 2, 3, 4, 5}), out, none, analytic;
  coder::fft(ramp, 8, out);
  coder::fft(ramp, 8, ramp);
  coder::fft(toColumn({1, 2}), 0, none);
  coder::hilbert(coder::array<double, 1>(), analytic);
  coder::array<double, 2> line = toRow(lcgSignal(3, 50));
  line[7] = kNaN;
  coder::detrend(line, line);
  coder::tukeywin(0, w);
  coder::hanning(-3, P);
  coder::kaiser(3, kNaN, F);
  same(flatten(ramp) +
           V{double(none.numel() + analytic.numel() + w.numel() + P.numel()), F[0],
             coder::internal::besselI0(-kInf), coder::internal::besselI0(0),
             coder::internal::besselI0(1)} +
           toVector(line),
       flatten(out) + V{0, kNaN, kInf, 1, 1.2660658777520084} + V(50, kNaN));
  // Least squares: a cubic through three points, or A with a duplicated column: rank 3 (1),
  // one coefficient exactly 0; equal abscissae (std 0) or a NaN: all NaN; [0 2; 1 1] \ [4; 3].
  const V tp = {0.0, 1.0, 3.0}, xp = {1.0, 2.0, 0.5}, nan_y = {3, 4, kNaN};
  V p, pc, pn, xs(2), xq(2);
  double mu[2], mu_flat[2];
  int rank = 0;
  coder::polyfit(tp.data(), xp.data(), 3, 3, p, nullptr, mu);
  coder::polyfit(V(3, 5.0).data(), xp.data(), 3, 3, pc, nullptr, mu_flat);
  coder::polyfit(tp.data(), nan_y.data(), 3, 3, pn, nullptr, mu);
  coder::mldivide(V({0, 1, 2, 1}).data(), 2, 2, V({4, 3}).data(), xs.data());
  coder::qrsolve(V({1, 2, 3, 1, 2, 3}).data(), 3, 2, V({2, 4, 6}).data(), xq.data(), &rank);
  EXPECT_NEAR(xq[0] + xq[1], 2.0, 2e-15);
  same(V{double(std::count(p.begin(), p.end(), 0.0)), mu_flat[1], double(rank), xq[0] * xq[1]} +
           pc + pn + xs,
       V{1, 0, 1, 0} + V(8, kNaN) + V{1, 2});
  // groups numbered in sorted order, NaN missing, -0 and 0 one group (labelled +0)
  V g, labels, g2, l2, g0, l0;
  coder::grp2idx(V({3, 1, kNaN, 2, 3, -0.0, 0, kNaN}).data(), 8, g, labels);
  coder::grp2idx(V({50, 48, 50, 0, 0, 24, 50}).data(), 7, g2, l2);
  coder::grp2idx(nullptr, 0, g0, l0);
  same(g + labels + g2 + V{double(std::signbit(labels[0])), double(g0.size() + l0.size())},
       {4, 2, kNaN, 3, 4, 1, 1, kNaN, 0, 1, 2, 3, 4, 3, 4, 1, 1, 2, 4, 0, 0});
  // extremes skip NaN (a leading one too), the first of equal values wins, all NaN gives the
  // first; complex: equal moduli, angle pi/4 beats -3pi/4. Sorting: ascending, NaN last, stable.
  int i = 0, j = 0, k = 0, ci = 0, cj = 0;
  const V x = {kNaN, 2.0, 5.0, 5.0, kNaN, -1.0, -1.0}, all_nan = {kNaN, kNaN};
  const auto zs = toComplex({kNaN, 1, 0, -1, 1, -1}, {0, 1, kNaN, -1, 1, -1});
  V s = {3.0, kNaN, -kInf, 1.0, 3.0, kInf, -0.5}, three = {2.0, 1.0, 2.0};
  std::vector<int> idx(7);
  const V got = {coder::internal::maximum(x.data(), 7, &i),       double(i),
                 coder::internal::minimum(x.data(), 7, &j),       double(j),
                 coder::internal::maximum(all_nan.data(), 2, &k), double(k),
                 coder::internal::maximum(zs.data(), 6, &ci).re,  double(ci),
                 coder::internal::minimum(zs.data(), 6, &cj).re,  double(cj)};
  coder::internal::sort(s.data(), 7, idx.data());
  coder::internal::sort(three.data(), 3, nullptr);
  same(got + s + three + V(idx.begin(), idx.end()),
       V{5, 3, -1, 6, kNaN, 1, 1, 2, -1, 4} + V{-kInf, -0.5, 1, 3, 3, kInf, kNaN, 1, 2, 2} +
           V{3, 7, 4, 1, 5, 6, 2});
}

TEST(Fft, ThreadsPlanningAtOnceAndLengthsBeyondTheKeptPlans) {
  // The loop and a recalculation job transform at once; the first use of a length plans it.
  sameBitsFromThreads(8, [] {
    V r;
    for (int n : {3001, 3002, 3003, 4099, 5000, 6007}) {
      coder::array<creal_T, 1> y;
      coder::fft(toColumn(lcgSignal(5, n)), n, y);
      r = r + flatten(y);
    }
    return r;
  });
  // Ever new lengths fill the real kind's kept plans; past them each call plans for itself, the
  // results still those of the complex kind's kept plans (eight new lengths, its own count).
  using coder::internal::FftPlanCache;
  auto& cache = FftPlanCache::instance();
  const size_t complex_kept = cache.size(FftPlanCache::Kind::ComplexForward);
  coder::array<creal_T, 1> y, yc;
  for (int n = 700; n < 700 + 2 * int(FftPlanCache::kMaxPlans); ++n) {
    coder::fft(toColumn(lcgSignal(n, n)), n, y);
    if (n % 16 == 0)
      coder::fft(toComplex(lcgSignal(n, n)), n, yc);
    EXPECT_TRUE(n % 16 != 0 || near(flatten(y), flatten(yc), 1e-13)) << n;
  }
  coder::fft(toComplex(V(9001, 0.5)), 9001, y);
  EXPECT_EQ(V({double(cache.size(FftPlanCache::Kind::RealForward)),
               double(cache.size(FftPlanCache::Kind::ComplexForward))}),
            V({double(FftPlanCache::kMaxPlans), complex_kept + 9.0}));
}

TEST(Firls, FixedFormsOfTheBlocksAndTheCache) {
  // The blocks' fixed forms are the general design of their orders, handed out unchanged;
  // threads asking for a new design at once get the same bits.
  const double edges[6] = {0.0, 45.0 / 125.0, 49.0 / 125.0, 51.0 / 125.0, 55.0 / 125.0, 1.0};
  const V f(edges, edges + 6), a = {0, 0, 1, 1, 0, 0};
  coder::array<double, 2> h500, h298, ramp;
  coder::firls(edges, h500);
  coder::b_firls(edges, h298);
  const auto first = coder::firlsTaps(500, f, a);
  EXPECT_EQ(first.get(), coder::firlsTaps(500, f, a).get());
  EXPECT_EQ(*first + *coder::firlsTaps(298, f, a), toVector(h500) + toVector(h298));
  sameBitsFromThreads(4, [] {
    return *coder::firlsTaps(298, {0, .1, .15, .3, .35, 1}, {0, 0, 1, 1, 0, 0});
  });
  // A sloped band (the golden designs have flat ones): D = 2F over the whole band is the
  // triangle wave, whose series is 1/2 - 4/pi^2 sum cos(2 pi k F) / k^2 over odd k.
  coder::firls(20, {0, 1}, {0, 1}, ramp);
  V series(21, 0.0);
  for (int k = -9; k <= 9; k += 2)
    series[size_t(10 + k)] = -2 / (kPi * kPi * k * k);
  series[10] = 0.5;
  EXPECT_TRUE(near(toVector(ramp), series, 1e-15)); // closed-form sinc sums: rounding
}

// The correlation scan (the grid forms call the list forms, which choose the phasor kernel or
// the chirp-z transform by cost; both are also held to it alone) against the sum in extended
// precision: every sum within kScanBound of sum|y|; the direct form rounds 2 pi f k dt at phases
// up to 1e4 rad, errors adding up over a line in the band (1.3e-13 of sum|y| measured).
constexpr double kScanBound = 5e-14, kDirectBound = 5e-13;

TEST(CorrelationScan, AgreesWithExtendedPrecisionSumOnBlockGrids) {
  // n, dt, f0, step, m, first phase: the decimated rotor searches, the right line moving down,
  // cor_for counting the phase from 0, one and two samples, a prime length; at the full rate
  // the rotor search, a bearing line and the imbalance; the 16-fold padded velocity spectrum
  const double cases[][6] = {{16384, 8 / 26667.0, 47, 0.01, 401, 1},
                             {16384, 1 / 26667.0, 22, 0.01, 401, 1},
                             {16384, 1 / 26667.0, 127.3, 0.01, 201, 1},
                             {16384, 1 / 26667.0, 24.08, 0.001, 201, 1},
                             {16384, 1 / 262144.0, 20, 1, 9713, 0},
                             {2048, 8 / 26667.0, 7, 0.01, 5401, 1},
                             {4096, 0.002, 75, -0.002, 300, 1},
                             {20000, 1e-4, 49.8, 0.002, 201, 0},
                             {1, 0.002, 49.6, 0.1, 9, 1},
                             {2, 0.002, 10, 0.1, 7, 1},
                             {1021, 0.002, 10, 0.1, 501, 1}};
  std::mt19937 gen(17U);
  std::normal_distribution<double> noise(0.0, 0.3);
  for (const auto& c : cases) {
    const int n = int(c[0]), m = int(c[4]), first = int(c[5]);
    // a line near the band, its harmonic and noise, like a velocity's analytic signal
    std::vector<creal_T> y(static_cast<size_t>(n));
    std::vector<std::vector<creal_T>> out(5, std::vector<creal_T>(static_cast<size_t>(m)));
    V re(y.size());
    double scale = 0.0;
    for (size_t k = 0; k < y.size(); ++k) {
      const double a = 2 * kPi * 49.87 * k * c[1], b = 2 * kPi * 99.74 * k * c[1] + 0.3;
      y[k] = {1.5 * std::cos(a) + 0.2 * std::cos(b) + noise(gen),
              1.5 * std::sin(a) + 0.2 * std::sin(b) + noise(gen)};
      re[k] = y[k].re;
      scale += std::hypot(y[k].re, y[k].im);
    }
    coder::correlation_scan_grid(y.data(), n, c[1], first, c[2], c[3], m, out[0].data());
    coder::correlation_scan_grid(re.data(), n, c[1], first, c[2], c[3], m, out[1].data());
    V grid(static_cast<size_t>(m));
    for (int i = 0; i < m; ++i)
      grid[size_t(i)] = c[2] + i * c[3];
    coder::internal::correlation_scan_phasor(y.data(), n, c[1], first, grid.data(), m,
                                             out[3].data());
    ASSERT_TRUE(
        coder::internal::chirpZScan(y.data(), n, c[1], first, grid.data(), m, out[4].data()));
    for (int i = 0; i < m; i += (m > 2000 ? 61 : m > 50 ? 13 : 1)) { // a sample of long grids
      const double fi = c[2] + i * c[3];
      coder::correlation_scan_direct(y.data(), n, c[1], first, &fi, 1, &out[2][size_t(i)]);
      long double want[2][2] = {}; // the complex signal's sum, then its real part's
      for (size_t k = 0; k < y.size(); ++k) {
        const long double cycles = static_cast<long double>(fi) * c[1] * (k + first);
        const long double q = 6.283185307179586476925286766559L * (cycles - std::nearbyint(cycles));
        want[0][0] += y[k].re * std::cos(q) + y[k].im * std::sin(q);
        want[0][1] += y[k].im * std::cos(q) - y[k].re * std::sin(q);
        want[1][0] += y[k].re * std::cos(q);
        want[1][1] -= y[k].re * std::sin(q);
      }
      for (int form = 0; form < 5; ++form) {
        const creal_T got = out[form][size_t(i)];
        const long double* w = want[form == 1];
        ASSERT_LE(std::hypot(got.re - double(w[0]), got.im - double(w[1])) / scale,
                  form == 2 ? kDirectBound : kScanBound)
            << "n " << n << ", m " << m << ", form " << form << ", grid point " << i;
      }
    }
  }
  // a NaN frequency spoils only its own sum; no samples: sums of 0; the chirp-z leaves a NaN
  // signal and points off a grid to the kernel
  const V x = {1.0, 2.0}, f = {1.0, kNaN, 2.0}, g = {1.0, 2.0, 3.5}, z = {1.0, kNaN};
  creal_T out[4];
  EXPECT_FALSE(coder::internal::chirpZScan(x.data(), 2, 0.01, 1, f.data(), 3, out) ||
               coder::internal::chirpZScan(x.data(), 2, 0.01, 1, g.data(), 3, out) ||
               coder::internal::chirpZScan(z.data(), 2, 0.01, 1, g.data(), 2, out));
  coder::correlation_scan(x.data(), 2, 0.01, 1, f.data(), 3, out);
  coder::correlation_scan(x.data(), 0, 0.01, 1, f.data(), 1, out + 3);
  same({out[0].re, out[1].re, out[2].re, out[3].re, out[3].im}, {out[0].re, kNaN, out[2].re, 0, 0});
  EXPECT_FALSE(std::isnan(out[0].re + out[0].im + out[2].re + out[2].im));
}

// The FFT convolution of long tap sets against the direct form, relative to sum|b| max|x|: the
// rotor search's 501 taps over a record, the magnetic channel's 301 over its padded record,
// the shortest set it takes, a record shorter than a transform's block; a NaN keeps
// the direct form, and reaches only the outputs after it.
TEST(Filter, FftConvolutionAgreesWithTheDirectForm) {
  const int cases[][2] = {{501, 16384}, {301, 4596}, {64, 1024}, {1001, 1500}};
  std::mt19937 gen(5U);
  std::normal_distribution<double> normal(0.0, 1.0);
  for (const auto& c : cases) {
    V b(static_cast<size_t>(c[0])), xr(static_cast<size_t>(c[1])), yr[2] = {xr, xr};
    std::vector<creal_T> x(xr.size()), y[2] = {x, x};
    double scale = 0.0, worst = 0.0;
    for (double& v : b)
      scale += std::fabs(v = normal(gen));
    for (size_t k = 0; k < x.size(); ++k)
      x[k] = {xr[k] = normal(gen), normal(gen)};
    coder::internal::firFilter(b.data(), c[0], x.data(), c[1], y[0].data());
    coder::internal::firFilterDirect(b.data(), c[0], x.data(), c[1], y[1].data());
    coder::internal::firFilter(b.data(), c[0], xr.data(), c[1], yr[0].data());
    coder::internal::firFilterDirect(b.data(), c[0], xr.data(), c[1], yr[1].data());
    for (size_t k = 0; k < x.size(); ++k)
      worst = std::max({worst, std::hypot(y[0][k].re - y[1][k].re, y[0][k].im - y[1][k].im),
                        std::fabs(yr[0][k] - yr[1][k])});
    EXPECT_LE(worst / (scale * 5.0), coder::internal::kFirFftTolerance) << c[0] << " taps";
    const size_t lost = xr.size() / 2;
    xr[lost] = kNaN;
    coder::internal::firFilter(b.data(), c[0], xr.data(), c[1], yr[0].data());
    EXPECT_TRUE(std::isnan(yr[0][lost]) && !std::isnan(yr[0][lost - 1])) << c[0] << " taps";
  }
}

} // namespace
