#include "blocks/vibration/rotor.h"

#include "blocks/vibration/conditioning.h"
#include "coder/coder_array.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/hilbert.h"
#include "coder/rt_snf.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vibration {
namespace {

constexpr double kPi = 3.141592653589793;

// Where the rotor line of a motor with P pole pairs on a 50 Hz supply is looked for: the
// band-pass edges of the filter (Hz; the last edge is Nyquist) and the scan f0 + i * 0.01,
// i = 0..last. Row P - 1.
struct RotorBand {
  double edges[5];
  double f0;
  int last;
};
constexpr RotorBand kFixedBands[4] = {{{0, 43, 47, 51, 55}, 47, 400},
                                      {{0, 18, 22, 26, 30}, 22, 400},
                                      {{0, 10, 14, 17, 21}, 14, 300},
                                      {{0, 5, 9, 13, 17}, 9, 400}};
constexpr double kScanStep = 0.01;
// A motor on a frequency converter may turn anywhere from a few Hz up to its synchronous
// speed at 65 Hz: the second generation looks for it over that whole range, below the
// low-pass edges of four-edge designs (edges 0, pass, stop, Nyquist; amplitudes 1 1 0 0) for
// P 2 to 4, and in a band-pass of six edges for one pole pair, whose low range is all noise.
struct WideBand {
  int edge_count;
  double edges[5];
  double f0;
  int last;
};
constexpr WideBand kControlBands[4] = {{6, {0, 3, 7, 61, 65}, 7, 5400},
                                       {4, {0, 31, 35}, 5, 2600},
                                       {4, {0, 21, 25}, 5, 1600},
                                       {4, {0, 21, 25}, 5, 1100}};
// The decimated search: its band filter's order, the zeros padded after the record so that
// the filter's delay can be taken off, and that delay.
constexpr int kDecimatedOrder = 298, kDelayPadding = 300, kDelay = 149;
// Agreement of the axes' rotor frequencies, percent of the largest.
constexpr double kThreeAxesAgree = 0.5, kTwoAxesAgree = 1.0;

bool servedPoles(double P) {
  return P == 1.0 || P == 2.0 || P == 3.0 || P == 4.0;
}

double amplitude(const Scan& s, int n) {
  return s.modulus / double(n);
}

// The amplitude as the harmonic tables of the second generation take it: each part over n.
double partsAmplitude(const Scan& s, int n) {
  const creal_T& b = s.sums[size_t(s.best)];
  return rt_hypotd_snf(b.re / n, b.im / n);
}

double spread(double mx, double mn) {
  return std::fabs((mx - mn) / mx) * 100.0;
}

} // namespace

RotorLine search_rotor_frequency_fixed(double fs, double P, const creal_T* y, int n) {
  RotorLine line;
  if (!servedPoles(P) || n <= 0) {
    return line;
  }
  const RotorBand& band = kFixedBands[int(P) - 1];
  double f[6];
  for (int e = 0; e < 5; ++e) {
    f[e] = band.edges[e] / (fs / 2.0);
  }
  f[5] = 1.0;
  coder::array<double, 2> h;
  if (P <= 2.0) {
    coder::firls(f, h);
  } else {
    coder::b_firls(f, h);
  }
  std::vector<creal_T> yf(size_t(n), creal_T{0.0, 0.0});
  coder::internal::firFilter(h.data(), h.numel(), y, n, yf.data());
  const Scan s = scanGrid(yf.data(), n, 1.0 / fs, band.f0, kScanStep, band.last + 1);
  const creal_T& b = s.sums[size_t(s.best)];
  line.frequency = s.frequency;
  line.amplitude = rt_hypotd_snf(b.re / n, b.im / n);
  line.level = s.level(yf.data(), n);
  return line;
}

void search_rotor_frequency_vibro_Freal(double FREAL, double fv, double Lv, double P,
                                        const creal_T* const z[3], FrequencyMode mode,
                                        RotorLine out[3]) {
  const int n = Lv > 0.0 ? int(Lv) : 0;
  const double shift = mode == FrequencyMode::control ? (50.0 - FREAL) / P : 0.0;
  std::vector<creal_T> turned(static_cast<size_t>(n));
  for (int a = 0; a < 3; ++a) {
    const creal_T* y = z[a];
    if (mode == FrequencyMode::control) {
      for (int k = 0; k < n; ++k) {
        const double phase = 2.0 * kPi * shift * k / fv, c = std::cos(phase), s = std::sin(phase);
        turned[size_t(k)] = {z[a][k].re * c - z[a][k].im * s, z[a][k].re * s + z[a][k].im * c};
      }
      y = turned.data();
    }
    out[a] = search_rotor_frequency_fixed(fv, P, y, n);
    out[a].frequency -= shift;
    out[a].amplitude = toMillimetres(out[a].amplitude);
  }
}

double find_rotor_freq(double dt, int n, const creal_T* z, double& fr, double half_width,
                       double step) {
  const Scan s = scanRange(z, n, dt, fr - half_width, step, fr + half_width);
  if (s.sums.empty()) {
    return 0.0;
  }
  fr = s.frequency;
  return amplitude(s, n);
}

void find_rotor_freq_all(double fr, double dt, int n, const creal_T* z, Harmonic out[3]) {
  // window half-width and step of harmonic k + 1: wider for the higher ones, whose
  // frequency carries k + 1 times the error of fr
  const double windows[3][2] = {{0.2, 0.002}, {0.5, 0.005}, {1.5, 0.015}};
  for (int k = 0; k < 3; ++k) {
    const double centre = (k + 1) * fr;
    const Scan s =
        scanRange(z, n, dt, centre - windows[k][0], windows[k][1], centre + windows[k][0]);
    out[k] = Harmonic{};
    if (!s.sums.empty()) {
      out[k] = {amplitude(s, n), s.frequency, s.lineFlag()};
    }
  }
}

double find_oil_whirl_instability_freq(double dt, int n, const creal_T* z, double& fr,
                                       double& flag) {
  const double lo = 0.4 * fr;
  const Scan s = scanRange(z, n, dt, lo, 0.01, 0.48 * fr);
  if (s.sums.empty()) {
    flag = 1.0;
    return 0.0;
  }
  fr = 0.01 * s.best + lo;
  flag = s.lineFlag();
  return amplitude(s, n);
}

RotorLine find_rotor_freq_base(double fs, double P, const creal_T* y, int n, FrequencyMode mode) {
  RotorLine line;
  if (!servedPoles(P) || n <= 0) {
    return line;
  }
  // The decimation works in place, on a copy in mm/s.
  coder::array<creal_T, 2> z;
  z.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    z[k] = {toMillimetres(y[k].re), toMillimetres(y[k].im)};
  }
  const double fs8 = signal_ndec(fs, z);
  const int m = z.numel();
  // A record shorter than the decimation step leaves nothing to scan.
  if (m <= 0) {
    return line;
  }

  std::vector<double> f, a;
  double f0;
  int last;
  if (mode == FrequencyMode::fixed) {
    const RotorBand& band = kFixedBands[int(P) - 1];
    f.assign(band.edges, band.edges + 5);
    a = {0, 0, 1, 1, 0, 0};
    f0 = band.f0, last = band.last;
  } else {
    const WideBand& band = kControlBands[int(P) - 1];
    f.assign(band.edges, band.edges + band.edge_count - 1);
    a = band.edge_count == 6 ? std::vector<double>{0, 0, 1, 1, 0, 0}
                             : std::vector<double>{1, 1, 0, 0};
    f0 = band.f0, last = band.last;
  }
  for (double& e : f) {
    e /= fs8 / 2.0;
  }
  f.push_back(1.0);
  const auto h = coder::firlsTaps(kDecimatedOrder, f, a);

  // Filter the record followed by zeros and keep the samples from the filter's delay on: the
  // line keeps its place in time and the record's end is not cut off.
  std::vector<creal_T> padded(size_t(m + kDelayPadding), creal_T{0.0, 0.0});
  std::copy(z.data(), z.data() + m, padded.begin());
  std::vector<creal_T> filtered(padded.size());
  coder::internal::firFilter(h->data(), int(h->size()), padded.data(), int(padded.size()),
                             filtered.data());
  const creal_T* yf = filtered.data() + kDelay;

  const Scan s = scanGrid(yf, m, 1.0 / fs8, f0, kScanStep, last + 1);
  line.flag = s.lineFlag();
  if (line.flag != 1.0) {
    line.frequency = s.frequency;
    line.amplitude = partsAmplitude(s, m);
  }
  line.level = s.level(yf, m);
  return line;
}

double error_froot_fun_703_3(double a, double b, double c) {
  const double mx = std::fmax(std::fmax(a, b), c), mn = std::fmin(std::fmin(a, b), c);
  return spread(mx, mn) <= kThreeAxesAgree ? 0.0 : 1.0;
}

double error_froot_fun_703_2(double a, double b) {
  return spread(std::fmax(a, b), std::fmin(a, b)) <= kTwoAxesAgree ? 0.0 : 1.0;
}

void find_rotor_freq_all_10(double fr, double dt, int n, const creal_T* z, double out[10]) {
  for (int k = 1; k <= 10; ++k) {
    const double tol = k == 1 ? 0.2 : k == 2 ? 0.4 : 0.6;
    const Scan s = scanRange(z, n, dt, k * fr - tol, tol / 100.0, k * fr + tol);
    out[k - 1] = s.sums.empty() ? 0.0 : partsAmplitude(s, n);
  }
}

void find_Freal_freq_all(double dt, int n, const creal_T* z, double out[2]) {
  const double windows[2][3] = {{49.8, 0.002, 50.2}, {99.6, 0.004, 100.4}};
  for (int k = 0; k < 2; ++k) {
    const Scan s = scanRange(z, n, dt, windows[k][0], windows[k][1], windows[k][2]);
    out[k] = s.sums.empty() ? 0.0 : partsAmplitude(s, n);
  }
}

} // namespace vibration
