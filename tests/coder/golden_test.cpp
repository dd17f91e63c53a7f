// Every golden file of Octave's (or MATLAB's published) results, read by one driver: each row
// turns a file's entries into checks by calling the routine they name. golden/gen_golden.m
// writes the files.
#include "coder/cumtrapz.h"
#include "coder/detrend.h"
#include "coder/fft.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/hilbert.h"
#include "coder/interp1.h"
#include "coder/minmax.h"
#include "coder/movfun.h"
#include "coder/periodogram.h"
#include "coder/polyfit.h"
#include "coder/sort.h"
#include "coder/windows.h"

#include "support/numeric_compare.h"

#include <cmath>
#include <functional>

namespace {

using namespace vek_test;
using V = std::vector<double>;

// Named tolerances, each with the reason two correct implementations differ by that much.
constexpr double kExact = 0.0;        // a permutation, a chosen element, a sum in the same order
constexpr double kFftTol = 1e-12;     // FFTW plans of other lengths: a few ulp per stage, to 2^18
constexpr double kOneUlpSums = 1e-15; // the same sums, another contraction or association
constexpr double kDirectSums = 1e-14; // up to 501 products added in another order
constexpr double kDetrendTol = 1e-13; // QR of a 2-column problem, against the input's scale
constexpr double kGridTol = 1e-13;    // Octave builds the frequency grid another way
constexpr double kPolyfitTol = 1e-12; // pivoted QR against unpivoted, cond < 1e3
constexpr double kKaiserTol = 2e-14;  // element-wise: Octave's Bessel series, ends near 1e-16
// firls: Octave solves another formulation; the drift grows with the normal equations'
// condition: rounding for short designs, ~1e7 at order 298, 7.8e10 at order 500.
constexpr double kFirlsTol[] = {1e-12, 1e-8, 1e-5};

struct Check {
  std::string name;
  V got, want;
  double tol;
  double floor = -1.0; // >= 0: element-wise with this floor, else norm-wise
};
using Checks = std::vector<Check>;
template <typename A> V shape(const A& a) {
  return {double(a.size(0)), double(a.size(1))};
}
coder::array<creal_T, 2> complexRow(const V& re, const V& im) {
  coder::array<creal_T, 2> z;
  z.set_size(1, static_cast<int>(re.size()));
  for (int k = 0; k < z.numel(); ++k)
    z[k] = {re[size_t(k)], im[size_t(k)]};
  return z;
}
// The transform's bins at the indices stored in `bins`, real parts then imaginary ones.
V at(const coder::array<creal_T, 2>& y, const V& bins) {
  V re, im;
  for (double b : bins) {
    re.push_back(y[int(b)].re);
    im.push_back(y[int(b)].im);
  }
  return join(re, im);
}
std::string key(const char* stem, int n) {
  return stem + std::to_string(n);
}

Checks fftCases(const GoldenFile& g) {
  Checks c;
  coder::array<creal_T, 2> y;
  for (const auto& e : g.entries()) { // re_<length>_<n>: x_<length> padded or cut to n
    if (e.first.rfind("re_", 0) != 0)
      continue;
    const auto sep = e.first.find('_', 3);
    const int n = std::stoi(e.first.substr(sep + 1));
    coder::fft(toRow(g["x_" + e.first.substr(3, sep - 3)]), n, y);
    c.push_back({e.first, flatten(y), join(e.second, g["im" + e.first.substr(2)]), kFftTol});
    c.push_back({e.first + " shape", shape(y), {1.0, double(n)}, kExact});
  }
  coder::fft(toRow(g["xcut"]), 6, y);
  c.push_back({"cut", flatten(y), join(g["recut"], g["imcut"]), kFftTol});
  for (int len : {1, 2, 3, 8, 13, 100, 128}) {
    const auto z = complexRow(g[key("zre_", len)], g[key("zim_", len)]);
    coder::fft(z, len, y);
    c.push_back(
        {key("fft ", len), flatten(y), join(g[key("fre_", len)], g[key("fim_", len)]), kFftTol});
    coder::ifft(z, y);
    c.push_back(
        {key("ifft ", len), flatten(y), join(g[key("ire_", len)], g[key("iim_", len)]), kFftTol});
  }
  for (int len : {4096, 16384}) {
    for (int n : {len, 4 * len, 16 * len}) {
      const std::string k = std::to_string(len) + "_" + std::to_string(n);
      coder::fft(toRow(lcgSignal(7, len)), n, y);
      c.push_back({k, at(y, g["bins_" + k]), join(g["bre_" + k], g["bim_" + k]), kFftTol});
      double power = 0.0;
      for (int i = 0; i < n; ++i)
        power += y[i].re * y[i].re + y[i].im * y[i].im;
      c.push_back({"power " + k, {power}, g["bpow_" + k], kFftTol});
    }
  }
  return c;
}

Checks hilbertCases(const GoldenFile& g) {
  Checks c;
  coder::array<creal_T, 2> z;
  for (int n : {1, 2, 3, 4, 5, 8, 9, 16, 17, 100, 101, 1000, 1001}) {
    coder::hilbert(toRow(g[key("x_", n)]), z);
    c.push_back({key("", n), flatten(z), join(g[key("re_", n)], g[key("im_", n)]), kFftTol});
    c.push_back({key("shape ", n), shape(z), {1.0, double(n)}, kExact});
  }
  for (int n : {4096, 16384}) {
    coder::hilbert(toRow(lcgSignal(9, n)), z);
    c.push_back({key("", n), at(z, g[key("idx_", n)]), join(g[key("bre_", n)], g[key("bim_", n)]),
                 kFftTol});
  }
  return c;
}

Checks detrendCases(const GoldenFile& g) {
  Checks c;
  for (std::string n : {"_1", "_2", "_3", "_5", "_10", "_97", "_1001", "_4096", "off"}) {
    const V& x = g["x" + n];
    coder::array<double, 1> y;
    coder::detrend(toColumn(x), y);
    double scale = 0.0;
    for (double e : x)
      scale = std::max(scale, std::fabs(e));
    V got = toVector(y), want = g["y" + n];
    for (size_t k = 0; k < got.size(); ++k)
      got[k] /= scale;
    for (double& e : want)
      e /= scale;
    c.push_back({n, got, want, kDetrendTol, 1.0});
  }
  return c;
}

Checks cumtrapzCases(const GoldenFile& g) {
  Checks c;
  for (int n : {1, 2, 3, 7, 64, 1000, 4096}) {
    coder::array<double, 1> z;
    for (std::string j : {"", "j"}) {
      coder::cumtrapz(toColumn(g[key(("t" + j + "_").c_str(), n)]), toColumn(g[key("y_", n)]), z);
      c.push_back(
          {key(j.c_str(), n), toVector(z), g[key(("z" + j + "_").c_str(), n)], kOneUlpSums});
    }
  }
  return c;
}

Checks filterCases(const GoldenFile& g) {
  Checks c;
  for (std::string k :
       {"1_1", "1_10", "2_1", "2_7", "5_3", "5_100", "51_1000", "299_1000", "501_2000"}) {
    const auto b = toRow(g["b_" + k]);
    coder::array<creal_T, 2> y;
    coder::filter(b, complexRow(g["xre_" + k], g["xim_" + k]), y);
    c.push_back({k, flatten(y), join(g["yre_" + k], g["yim_" + k]), kDirectSums});
    coder::array<double, 2> yr;
    coder::filter(b, toRow(g["xre_" + k]), yr);
    c.push_back({"real " + k, toVector(yr), g["yreal_" + k], kDirectSums});
  }
  return c;
}

Checks fir1Cases(const GoldenFile& g) {
  Checks c;
  for (int k = 1; k <= 5; ++k) {
    const V& setup = g[key("case_", k)];
    coder::array<double, 2> b;
    coder::fir1(int(setup[0]), setup[1], setup[2], b);
    c.push_back({key("", k), toVector(b), g[key("b_", k)], kDirectSums});
  }
  return c;
}

// |H(f)| of a design on 512 points from 0 to Nyquist: what the rotor search sees.
V response(const V& h) {
  V r;
  for (int i = 0; i < 512; ++i) {
    double re = 0.0, im = 0.0;
    for (size_t k = 0; k < h.size(); ++k) {
      re += h[k] * std::cos(M_PI * i / 511.0 * double(k));
      im -= h[k] * std::sin(M_PI * i / 511.0 * double(k));
    }
    r.push_back(std::hypot(re, im));
  }
  return r;
}

Checks firlsCases(const GoldenFile& g) {
  Checks c;
  for (std::string n : {"short30", "short40", "short50", "low50", "o298a", "o298p1", "o298p4",
                        "o298low", "o500cor", "o500p2"}) {
    const int order = int(g["order_" + n][0]);
    coder::array<double, 2> h;
    coder::firls(order, g["f_" + n], g["a_" + n], h);
    const double tol = kFirlsTol[order == 500 ? 2 : order == 298 ? 1 : 0];
    const V got = toVector(h);
    c.push_back({n, got, g["h_" + n], tol});
    c.push_back({n + " response", response(got), response(g["h_" + n]), tol});
    c.push_back({n + " linear phase", got, V(got.rbegin(), got.rend()), kExact});
    c.push_back({n + " shape", shape(h), {1.0, order + 1.0}, kExact});
  }
  return c;
}

Checks polyfitCases(const GoldenFile& g) {
  Checks c;
  for (int n : {4, 5, 7, 16, 100, 1000}) {
    const V &t = g[key("t_", n)], &tq = g[key("tq_", n)];
    V p, yq(tq.size());
    coder::polyfit_S S;
    double mu[2];
    coder::polyfit(t.data(), g[key("x_", n)].data(), n, 3, p, &S, mu);
    coder::polyval(p, tq.data(), int(tq.size()), mu, yq.data());
    c.push_back({key("mu ", n), {mu[0], mu[1]}, g[key("mu_", n)], 1e-14}); // mean, std: rounding
    c.push_back({key("p ", n), p, g[key("p_", n)], kPolyfitTol});
    c.push_back({key("polyval ", n), yq, g[key("yq_", n)], kPolyfitTol});
    // a residual of exactly zero (4 points, 4 coefficients) has no relative accuracy
    c.push_back({key("normr ", n), {S.normr}, g[key("normr_", n)], 1e-9, 1e-3});
    c.push_back({key("df ", n), {double(S.df)}, {n > 4 ? n - 4.0 : 0.0}, kExact});
  }
  return c;
}

Checks interp1Cases(const GoldenFile& g) {
  Checks c;
  for (int n : {2, 3, 8, 97, 1000}) {
    const V &x = g[key("x_", n)], &xq = g[key("xq_", n)];
    V vq(xq.size());
    coder::interp1(x.data(), g[key("v_", n)].data(), n, xq.data(), int(xq.size()), vq.data());
    // v(lo) + s (v(lo+1) - v(lo)) against (1 - r) v(lo) + r v(lo+1): last bits on ~1e3
    c.push_back({key("", n), vq, g[key("vq_", n)], kOneUlpSums, 1.0});
    c.push_back({key("knots ", n), V(vq.end() - n, vq.end()), g[key("v_", n)], kExact});
  }
  return c;
}

Checks movfunCases(const GoldenFile& g) {
  Checks c;
  for (int n : {1, 2, 5, 6, 7, 10, 11, 13, 64, 1000}) {
    const V& x = g[key("x_", n)];
    V mm(x.size()), md(x.size());
    coder::movmean(x.data(), n, 5, mm.data());
    coder::movmedian(x.data(), n, 9, md.data());
    c.push_back({key("mean ", n), mm, g[key("movmean_", n)], kOneUlpSums, 1.0});
    c.push_back({key("median ", n), md, g[key("movmedian_", n)], kOneUlpSums, 1.0});
  }
  return c;
}

Checks minmaxCases(const GoldenFile& g) {
  Checks c;
  for (std::string s : {"_ties", "_1", "_2", "_3", "_5", "_8", "_17", "_401", "_5401"}) {
    const V &re = g["re" + s], &im = g["im" + s];
    std::vector<creal_T> z;
    for (size_t k = 0; k < re.size(); ++k)
      z.push_back({re[k], im[k]});
    int i = 0, j = 0;
    const creal_T mx = coder::internal::maximum(z.data(), int(z.size()), &i);
    const creal_T mn = coder::internal::minimum(z.data(), int(z.size()), &j);
    c.push_back({s,
                 {mx.re, mx.im, double(i), mn.re, mn.im, double(j)},
                 join(g["max" + s], g["min" + s]),
                 kExact});
    if (s == "_ties")
      continue;
    const double rmax = coder::internal::maximum(re.data(), int(re.size()), &i);
    const double rmin = coder::internal::minimum(re.data(), int(re.size()), &j);
    c.push_back({"real" + s,
                 {rmax, double(i), rmin, double(j)},
                 join(g["maxreal" + s], g["minreal" + s]),
                 kExact});
  }
  return c;
}

Checks sortrowsCases(const GoldenFile& g) {
  Checks c;
  for (int m : {1, 2, 3, 7, 16, 101, 401}) {
    const V& a = g[key("a_", m)];
    V b(a.size());
    std::vector<int> idx(size_t(m), 0);
    coder::sortrows(a.data(), m, 3, b.data(), idx.data());
    c.push_back({key("", m), join(b, V(idx.begin(), idx.end())),
                 join(g[key("b_", m)], g[key("idx_", m)]), kExact});
  }
  return c;
}

Checks windowsCases(const GoldenFile& g) {
  Checks c;
  coder::array<double, 1> w;
  for (int n : {1, 2, 3, 4, 5, 8, 16, 17, 100, 101, 500, 4096}) {
    coder::kaiser(n, 38.0, w);
    c.push_back({key("kaiser38 ", n), toVector(w), g[key("kaiser38_", n)], kKaiserTol, 0.0});
    coder::kaiser(n, 5.0, w);
    c.push_back({key("kaiser5 ", n), toVector(w), g[key("kaiser5_", n)], kKaiserTol, 0.0});
    // Octave's second half from cosines of angles near 2 pi: a few 1e-17 absolute
    coder::hanning(n, w);
    c.push_back({key("hanning ", n), toVector(w), g[key("hanning_", n)], kOneUlpSums});
    coder::tukeywin(n, w);
    c.push_back({key("tukeywin ", n), toVector(w), g[key("tukeywin_", n)], kExact});
  }
  coder::kaiser(9, 0.0, w);
  c.push_back({"kaiser0", toVector(w), g["kaiser0_9"], kExact});
  return c;
}

Checks periodogramCases(const GoldenFile& g) {
  Checks c;
  coder::array<double, 1> P, F, w;
  for (int k = 1; k <= 6; ++k) {
    const V& setup = g[key("case_", k)];
    const auto x = toColumn(g[key("x_", k)]);
    coder::kaiser(x.numel(), 38.0, w);
    coder::periodogram(x, w, int(setup[1]), setup[2], P, F);
    c.push_back({key("P ", k), toVector(P), g[key("P_", k)], kFftTol});
    c.push_back({key("F ", k), toVector(F), g[key("F_", k)], kGridTol});
  }
  for (int n : {100, 300, 1000}) {
    coder::periodogram(toColumn(g[key("dx_", n)]), P, w);
    c.push_back({key("default P ", n), toVector(P), g[key("dP_", n)], kFftTol});
    c.push_back({key("default w ", n), toVector(w), g[key("dw_", n)], kGridTol});
  }
  return c;
}

const std::pair<const char*, std::function<Checks(const GoldenFile&)>> kGolden[] = {
    {"fft", fftCases},           {"hilbert", hilbertCases},        {"detrend", detrendCases},
    {"cumtrapz", cumtrapzCases}, {"filter", filterCases},          {"fir1", fir1Cases},
    {"firls", firlsCases},       {"polyfit", polyfitCases},        {"interp1", interp1Cases},
    {"movfun", movfunCases},     {"minmax", minmaxCases},          {"sortrows", sortrowsCases},
    {"windows", windowsCases},   {"periodogram", periodogramCases}};

TEST(Golden, EveryRoutineMatchesItsReferenceFile) {
  for (const auto& row : kGolden) {
    SCOPED_TRACE(row.first);
    for (const Check& c :
         row.second(GoldenFile("tests/coder/golden/" + std::string(row.first) + ".txt"))) {
      SCOPED_TRACE(c.name);
      EXPECT_TRUE(c.floor < 0 ? closeRelative(c.got, c.want, c.tol)
                              : closeElementwise(c.got, c.want, c.tol, c.floor));
    }
  }
}

} // namespace
