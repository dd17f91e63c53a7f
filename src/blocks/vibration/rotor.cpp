#include "blocks/vibration/rotor.h"

#include "coder/coder_array.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/rt_snf.h"

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

bool servedPoles(double P) {
  return P == 1.0 || P == 2.0 || P == 3.0 || P == 4.0;
}

double amplitude(const Scan& s, int n) {
  return s.modulus / double(n);
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
    out[a].amplitude = out[a].amplitude * 9.8 * 1000.0;
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

} // namespace vibration
