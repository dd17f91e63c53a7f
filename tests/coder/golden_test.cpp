// Every golden file of Octave's (or MATLAB's published) results, read by one driver: a row
// picks a file's entries by the start of their names and turns each into checks by calling
// the routine the rest of the name sets up. golden/gen_*.m write the files and say how each
// reference is built.
#include "coder/cumtrapz.h"
#include "coder/detrend.h"
#include "coder/envspectrum.h"
#include "coder/fft.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/hilbert.h"
#include "coder/interp1.h"
#include "coder/median.h"
#include "coder/minmax.h"
#include "coder/moments.h"
#include "coder/movfun.h"
#include "coder/pchip.h"
#include "coder/periodogram.h"
#include "coder/polyfit.h"
#include "coder/smoothdata.h"
#include "coder/sort.h"
#include "coder/sum.h"
#include "coder/thd.h"
#include "coder/windows.h"

#include "support/numeric_compare.h"

#include <cstring>

namespace {

using namespace vek_test;
using S = std::string;

// Named tolerances, each with the reason two correct implementations differ by that much.
constexpr double kExact = 0.0;        // a permutation, a chosen element, a sum in the same order
constexpr double kFftTol = 1e-12;     // FFTW plans of other lengths: a few ulp per stage, to 2^18
constexpr double kOneUlpSums = 1e-15; // the same sums, another contraction or association
constexpr double kDirectSums = 1e-14; // up to 501 products added in another order
constexpr double kDetrendTol = 1e-13; // QR of a 2-column problem, against the input's scale
constexpr double kGridTol = 1e-13;    // Octave builds the frequency grid another way
constexpr double kPolyfitTol = 1e-12; // pivoted QR against unpivoted, cond < 1e3
constexpr double kKaiserTol = 2e-14;  // element-wise: Octave's Bessel series, ends near 1e-16
constexpr double kEnvTol = 1e-12;     // two FFTs, a 51-tap convolution, a modulus: same steps
constexpr double kPchipTol = 1e-13;   // the same formulas, another evaluation order of the cubic
// thd: tone sums over a Kaiser lobe and a noise floor 1e-6 of the peak agree to 1e-12; room
// for a skirt bin decided differently at the noise floor.
constexpr double kThdTol = 1e-9;
// loess: weighted quadratic fits by two QR solvers on systems scaled to [-1, 1]; its window
// is a whole number of steps, equal up to that step's rounding.
constexpr double kLoessTol = 1e-12, kWindowTol = 1e-14;
// Blocked against plain summation order (up to 16384 values), scaled 2-norm against the
// two-pass formula: rounding; third and fourth powers amplify it up to 4x; the even-count
// median's average may differ in the last bit.
constexpr double kSumTol = 1e-13, kMomentTol = 1e-12, kMedianTol = 4e-16;
// firls: Octave solves another formulation; the drift grows with the normal equations'
// condition: rounding for short designs, ~1e7 at order 298, 7.8e10 at order 500.
constexpr double kFirlsTol[] = {1e-12, 1e-8, 1e-5};
const double kPi = 3.141592653589793;

// Runs `check(g, k)` for every entry of golden/<file>.txt named <select><k>.
template <typename F> void each(const char* file, const char* select, F check) {
  static std::map<S, GoldenFile> files;
  const GoldenFile& g =
      files.try_emplace(file, "tests/coder/golden/" + S(file) + ".txt").first->second;
  int cases = 0; // a row that picks nothing would prove nothing
  for (const auto& e : g.entries())
    if (e.first.rfind(select, 0) == 0) {
      SCOPED_TRACE(S(file) + " " + e.first);
      check(g, e.first.substr(std::strlen(select)));
      ++cases;
    }
  EXPECT_GT(cases, 0) << file << " " << select;
}
template <typename A> V shape(const A& a) {
  return {double(a.size(0)), double(a.size(1))};
}
int second(const S& k) { // "<a>_<b>" -> b
  return std::stoi(k.substr(k.find('_') + 1));
}
coder::array<creal_T, 2> complexRow(const V& re, const V& im) {
  coder::array<creal_T, 2> z;
  z.set_size(1, int(re.size()));
  for (int k = 0; k < z.numel(); ++k)
    z[k] = {re[size_t(k)], im[size_t(k)]};
  return z;
}
// The elements of `a` at the indices stored in `bins` (complex: real parts, then imaginary).
V at(const coder::array<creal_T, 2>& y, const V& bins) {
  V re, im;
  for (double b : bins)
    re.push_back(y[int(b)].re), im.push_back(y[int(b)].im);
  return join(re, im);
}
V at(const coder::array<double, 1>& a, const V& bins) {
  V v;
  for (double b : bins)
    v.push_back(a[int(b)]);
  return v;
}
struct Stat {
  const char *key, *input;
  double (*fn)(const double*, int);
  double tol;
};
const Stat kStats[] = {{"sum", "x", coder::sum, kSumTol},
                       {"mean", "x", coder::mean, kSumTol},
                       {"std", "x", coder::b_std, kSumTol},
                       {"median", "x", coder::median, kMedianTol},
                       {"peak2peak", "x", coder::peak2peak, kExact},
                       {"kurtosis", "x", coder::kurtosis, kMomentTol},
                       {"skewness", "x", coder::skewness, kMomentTol},
                       {"nanmean", "xnan", coder::nanmean, kSumTol},
                       {"peak2peaknan", "xnan", coder::peak2peak, kExact}};

TEST(Golden, EveryRoutineMatchesItsReferenceFile) {
  each("fft", "re_", [](auto& g, const S& k) { // x_<length> padded to <n>: row and columns
    const V& x = g["x_" + std::to_string(std::stoi(k))];
    const double n = second(k);
    coder::array<creal_T, 2> y, y2;
    coder::array<creal_T, 1> y1;
    coder::array<double, 2> column = toRow(x);
    column.set_size(int(x.size()), 1);
    coder::fft(toRow(x), int(n), y);
    coder::fft(toColumn(x), int(n), y1);
    coder::fft(column, int(n), y2);
    EXPECT_TRUE(closeRelative(flatten(y), join(g["re_" + k], g["im_" + k]), kFftTol));
    EXPECT_EQ(join(flatten(y1), flatten(y2)), join(flatten(y), flatten(y)));
    EXPECT_EQ(join(shape(y), shape(y2)), V({1, n, x.size() > 1 ? n : 1, x.size() > 1 ? 1 : n}));
  });
  each("fft", "xcut", [](auto& g, const S&) { // cut to 6
    coder::array<creal_T, 2> y;
    coder::fft(toRow(g["xcut"]), 6, y);
    EXPECT_TRUE(closeRelative(flatten(y), join(g["recut"], g["imcut"]), kFftTol));
  });
  each("fft", "zre_", [](auto& g, const S& k) { // complex input, both directions
    const auto z = complexRow(g["zre_" + k], g["zim_" + k]);
    coder::array<creal_T, 2> y, back;
    coder::fft(z, std::stoi(k), y);
    coder::ifft(z, back);
    EXPECT_TRUE(closeRelative(flatten(y), join(g["fre_" + k], g["fim_" + k]), kFftTol));
    EXPECT_TRUE(closeRelative(flatten(back), join(g["ire_" + k], g["iim_" + k]), kFftTol));
  });
  each("fft", "bins_", [](auto& g, const S& k) { // long padded signals: some bins, the power
    coder::array<creal_T, 2> y;
    coder::fft(toRow(lcgSignal(7, std::stoi(k))), second(k), y);
    double power = 0.0;
    for (int i = 0; i < y.numel(); ++i)
      power += y[i].re * y[i].re + y[i].im * y[i].im;
    EXPECT_TRUE(closeRelative(at(y, g["bins_" + k]), join(g["bre_" + k], g["bim_" + k]), kFftTol));
    EXPECT_TRUE(closeRelative({power}, g["bpow_" + k], kFftTol));
  });
  each("hilbert", "x_", [](auto& g, const S& k) { // a row, and a column alike
    coder::array<creal_T, 2> z;
    coder::array<creal_T, 1> zc;
    coder::hilbert(toRow(g["x_" + k]), z);
    coder::hilbert(toColumn(g["x_" + k]), zc);
    EXPECT_TRUE(closeRelative(flatten(z), join(g["re_" + k], g["im_" + k]), kFftTol));
    EXPECT_EQ(join(shape(z), flatten(zc)), join({1.0, double(std::stoi(k))}, flatten(z)));
  });
  each("hilbert", "idx_", [](auto& g, const S& k) {
    coder::array<creal_T, 2> z;
    coder::hilbert(toRow(lcgSignal(9, std::stoi(k))), z);
    EXPECT_TRUE(closeRelative(at(z, g["idx_" + k]), join(g["bre_" + k], g["bim_" + k]), kFftTol));
  });
  each("detrend", "x", [](auto& g, const S& k) { // element-wise on the input's scale; a row too
    const V& x = g["x" + k];
    coder::array<double, 1> y;
    coder::array<double, 2> row;
    coder::detrend(toColumn(x), y);
    coder::detrend(toRow(x), row);
    double scale = 0.0;
    for (double e : x)
      scale = std::max(scale, std::fabs(e));
    EXPECT_TRUE(closeElementwise(toVector(y), g["y" + k], kDetrendTol, scale));
    EXPECT_EQ(join(shape(row), toVector(row)), join({1.0, double(x.size())}, toVector(y)));
  });
  each("cumtrapz", "t", [](auto& g, const S& k) { // t_<n>, or tj_<n> jittered
    coder::array<double, 1> z;
    coder::cumtrapz(toColumn(g["t" + k]), toColumn(g["y" + k.substr(k.find('_'))]), z);
    EXPECT_TRUE(closeRelative(toVector(z), g["z" + k], kOneUlpSums));
  });
  each("filter", "b_", [](auto& g, const S& k) {
    coder::array<creal_T, 2> y;
    coder::array<double, 2> yr;
    coder::filter(toRow(g["b_" + k]), complexRow(g["xre_" + k], g["xim_" + k]), y);
    coder::filter(toRow(g["b_" + k]), toRow(g["xre_" + k]), yr);
    EXPECT_TRUE(closeRelative(flatten(y), join(g["yre_" + k], g["yim_" + k]), kDirectSums));
    EXPECT_TRUE(closeRelative(toVector(yr), g["yreal_" + k], kDirectSums));
  });
  each("fir1", "case_", [](auto& g, const S& k) { // order, cut-off, width
    coder::array<double, 2> b;
    coder::fir1(int(g["case_" + k][0]), g["case_" + k][1], g["case_" + k][2], b);
    EXPECT_TRUE(closeRelative(toVector(b), g["b_" + k], kDirectSums));
  });
  each("firls", "order_", [](auto& g, const S& k) { // a linear-phase row of order + 1
    const int order = int(g["order_" + k][0]);
    coder::array<double, 2> h;
    coder::firls(order, g["f_" + k], g["a_" + k], h);
    const V got = toVector(h);
    EXPECT_TRUE(closeRelative(got, g["h_" + k], kFirlsTol[order == 500 ? 2 : order == 298]));
    EXPECT_EQ(join(got, shape(h)), join(V(got.rbegin(), got.rend()), {1.0, order + 1.0}));
  });
  each("polyfit", "t_", [](auto& g, const S& k) {
    const V &t = g["t_" + k], &tq = g["tq_" + k];
    const int n = int(t.size());
    V p, yq(tq.size());
    coder::polyfit_S fit;
    double mu[2];
    coder::polyfit(t.data(), g["x_" + k].data(), n, 3, p, &fit, mu);
    coder::polyval(p, tq.data(), int(tq.size()), mu, yq.data());
    EXPECT_TRUE(closeRelative({mu[0], mu[1]}, g["mu_" + k], 1e-14)); // mean, std: rounding
    EXPECT_TRUE(closeRelative(join(p, yq), join(g["p_" + k], g["yq_" + k]), kPolyfitTol));
    // a residual of exactly zero (4 points, 4 coefficients) has no relative accuracy
    EXPECT_TRUE(closeElementwise({fit.normr}, g["normr_" + k], 1e-9, 1e-3));
    EXPECT_EQ(fit.df, std::max(n - 4, 0));
  });
  each("interp1", "x_", [](auto& g, const S& k) { // the queries end on the knots
    const V &x = g["x_" + k], &xq = g["xq_" + k];
    V vq(xq.size());
    coder::interp1(x.data(), g["v_" + k].data(), int(x.size()), xq.data(), int(xq.size()),
                   vq.data());
    // v(lo) + s (v(lo+1) - v(lo)) against (1 - r) v(lo) + r v(lo+1): last bits on ~1e3
    EXPECT_TRUE(closeElementwise(vq, g["vq_" + k], kOneUlpSums, 1.0));
    EXPECT_EQ(V(vq.end() - int(x.size()), vq.end()), g["v_" + k]);
  });
  each("pchip", "x_", [](auto& g, const S& k) {
    const V &x = g["x_" + k], &xq = g["xq_" + k];
    V vq(xq.size());
    coder::pchip(x.data(), g["v_" + k].data(), int(x.size()), xq.data(), int(xq.size()), vq.data());
    EXPECT_TRUE(closeRelative(vq, g["vq_" + k], kPchipTol));
  });
  each("movfun", "x_", [](auto& g, const S& k) {
    const V& x = g["x_" + k];
    V mm(x.size()), md(x.size());
    coder::movmean(x.data(), int(x.size()), 5, mm.data());
    coder::movmedian(x.data(), int(x.size()), 9, md.data());
    EXPECT_TRUE(closeElementwise(join(mm, md), join(g["movmean_" + k], g["movmedian_" + k]),
                                 kOneUlpSums, 1.0));
  });
  each("smoothdata", "t_", [](auto& g, const S& k) { // uniform_<n>, jitter_<n>
    const V &t = g["t_" + k], &a = g["a_" + k];
    V s(a.size());
    coder::smoothdata(a.data(), t.data(), int(a.size()), s.data());
    EXPECT_TRUE(closeRelative(s, g["s_" + k], kLoessTol));
    const double window = coder::internal::chooseWindowSize(a.data(), t.data(), int(a.size()));
    EXPECT_TRUE(closeRelative({window}, g["window_" + k], kWindowTol));
  });
  each("statistics", "x_", [](auto& g, const S& k) {
    for (const Stat& st : kStats) {
      const V& x = g[st.input + ("_" + k)];
      if (!g.has(st.key + ("_" + k))) // no moments of one value
        continue;
      EXPECT_TRUE(closeRelative({st.fn(x.data(), int(x.size()))}, g[st.key + ("_" + k)], st.tol))
          << st.key;
    }
    const V& xn = g["xnan_" + k]; // the 'includenan' routines: one NaN spoils the result
    EXPECT_TRUE(std::isnan(coder::b_std(xn.data(), int(xn.size()))) &&
                std::isnan(coder::median(xn.data(), int(xn.size()))));
  });
  each("statistics", "xmedianmix", [](auto& g, const S&) {
    EXPECT_EQ(coder::median(g["xmedianmix"].data(), 4), g["medianmix"][0]);
  });
  each("minmax", "re_", [](auto& g, const S& k) { // values and 1-based indices, exactly
    const V &re = g["re_" + k], &im = g["im_" + k];
    std::vector<creal_T> z;
    for (size_t i = 0; i < re.size(); ++i)
      z.push_back({re[i], im[i]});
    int i = 0, j = 0;
    const creal_T mx = coder::internal::maximum(z.data(), int(z.size()), &i);
    const creal_T mn = coder::internal::minimum(z.data(), int(z.size()), &j);
    EXPECT_EQ(V({mx.re, mx.im, double(i), mn.re, mn.im, double(j)}),
              join(g["max_" + k], g["min_" + k]));
    if (g.has("maxreal_" + k)) {
      const double rmax = coder::internal::maximum(re.data(), int(re.size()), &i);
      const double rmin = coder::internal::minimum(re.data(), int(re.size()), &j);
      EXPECT_EQ(V({rmax, double(i), rmin, double(j)}), join(g["maxreal_" + k], g["minreal_" + k]));
    }
  });
  each("sortrows", "a_", [](auto& g, const S& k) { // rows of 3 columns, exactly
    const V& a = g["a_" + k];
    V b(a.size());
    std::vector<int> idx(a.size() / 3, 0);
    coder::sortrows(a.data(), int(idx.size()), 3, b.data(), idx.data());
    EXPECT_TRUE(closeRelative(join(b, V(idx.begin(), idx.end())), join(g["b_" + k], g["idx_" + k]),
                              kExact));
  });
  each("windows", "", [](auto& g, const S& k) { // kaiser<beta>_<n>, hanning_<n>, tukeywin_<n>
    coder::array<double, 1> w;
    if (k[0] == 'k')
      coder::kaiser(second(k), std::stoi(k.substr(6)), w);
    else
      k[0] == 'h' ? coder::hanning(second(k), w) : coder::tukeywin(second(k), w);
    // Octave's hanning: its second half from cosines near 2 pi, a few 1e-17 absolute
    const V v = toVector(w);
    EXPECT_TRUE(k[0] == 'k'   ? closeElementwise(v, g[k], kKaiserTol, 0.0)
                : k[0] == 'h' ? closeRelative(v, g[k], kOneUlpSums)
                              : closeRelative(v, g[k], kExact));
    EXPECT_EQ(v, V(v.rbegin(), v.rend())); // exactly mirrored, as the correlation sums assume
  });
  each("periodogram", "case_", [](auto& g, const S& k) { // case: -, nfft, fs
    const auto x = toColumn(g["x_" + k]);
    coder::array<double, 1> P, F, w;
    coder::kaiser(x.numel(), 38.0, w);
    coder::periodogram(x, w, int(g["case_" + k][1]), g["case_" + k][2], P, F);
    EXPECT_TRUE(closeRelative(toVector(P), g["P_" + k], kFftTol));
    EXPECT_TRUE(closeRelative(toVector(F), g["F_" + k], kGridTol));
  });
  each("periodogram", "dx_", [](auto& g, const S& k) { // the default window and grid
    coder::array<double, 1> P, w;
    coder::periodogram(toColumn(g["dx_" + k]), P, w);
    EXPECT_TRUE(closeRelative(toVector(P), g["dP_" + k], kFftTol));
    EXPECT_TRUE(closeRelative(toVector(w), g["dw_" + k], kGridTol));
  });
  each("envspectrum", "case_", [](auto& g, const S& k) { // fs, n, kind, seed
    const V& c = g["case_" + k];
    const int n = int(c[1]);
    coder::array<double, 1> es, f, env, t;
    const V x = g.has("x_" + k) ? g["x_" + k] : lcgSignal(int(c[3]), n);
    coder::envspectrum(toColumn(x), c[0], es, f, env, t);
    V times, sizes = {double(es.numel()), double(f.numel()), double(env.numel())};
    for (int i = 0; i < n; ++i)
      times.push_back(i / c[0]);
    EXPECT_EQ(join(toVector(t), sizes), join(times, {n / 2 + 1.0, n / 2 + 1.0, double(n)}));
    const bool sampled = g.has("idx_" + k); // long cases: every 37th bin stored
    EXPECT_TRUE(
        closeRelative(sampled ? at(es, g["idx_" + k]) : toVector(es), g["es_" + k], kEnvTol));
    EXPECT_TRUE(
        closeRelative(sampled ? at(env, g["idx_" + k]) : toVector(env), g["env_" + k], kEnvTol));
    EXPECT_EQ(sampled ? at(f, g["idx_" + k]) : toVector(f), g["f_" + k]);
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
    EXPECT_TRUE(closeRelative({r}, g["r_" + k], kThdTol));
    EXPECT_TRUE(closeRelative(toVector(hp), g["harmpow_" + k], kThdTol));
    EXPECT_TRUE(closeRelative(toVector(hf), g["harmfreq_" + k], kThdTol));
  });
}

} // namespace
