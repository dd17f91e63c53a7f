#include "blocks/electrical/current_signature.h"

#include "coder/correlation_scan.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"

#include <cmath>
#include <vector>

namespace calc_modul_7R_full_ns {
namespace {

// The scan step of the rotor analysis, Hz: 200 steps over the 0.4 Hz around each line.
constexpr double kRotorStep = 0.002;
// The shaft frequency that the bearing lines are reckoned for, whatever the motor.
constexpr double kBearingShaft = 25.0;
// Sideband distances below which the rotor is in alarm, and in warning.
constexpr double kAlarm = 30.0, kWarning = 45.0;

// |a / b| by Smith's division, as MATLAB divides complex numbers.
double quotientModulus(const creal_T& a, const creal_T& b) {
  double re, im;
  if (std::abs(b.re) >= std::abs(b.im)) {
    const double r = b.im / b.re, d = b.re + r * b.im;
    re = (a.re + r * a.im) / d, im = (a.im - r * a.re) / d;
  } else {
    const double r = b.re / b.im, d = b.im + r * b.re;
    re = (r * a.re + a.im) / d, im = (r * a.im - a.re) / d;
  }
  return rt_hypotd_snf(re, im);
}

} // namespace

creal_T cor_for(const Stream& stream, const creal_T* z, double f_low, double f_high, int N) {
  const double count = std::floor((f_high - f_low + kRotorStep) / kRotorStep);
  if (N < 1 || std::isnan(f_low) || std::isnan(f_high) || !(count >= 1.0)) {
    return {rtNaN, rtNaN};
  }
  std::vector<creal_T> sums(static_cast<size_t>(count));
  coder::correlation_scan_grid(z, N, stream.dt, 0, f_low, kRotorStep, int(count), sums.data());
  // the largest magnitude, the first of equal ones; NaN never wins
  size_t best = 0;
  double largest = rt_hypotd_snf(sums[0].re, sums[0].im);
  for (size_t k = 1; k < sums.size(); ++k) {
    const double m = rt_hypotd_snf(sums[k].re, sums[k].im);
    if (m > largest || (std::isnan(largest) && !std::isnan(m))) {
      best = k, largest = m;
    }
  }
  return sums[best];
}

RotorSidebands rotorSidebands(const Stream& stream, const creal_T* z, int N, double F, double s) {
  const double f_low = (1.0 - 2.0 * s) * F, f_high = (1.0 + 2.0 * s) * F;
  const creal_T c0 = cor_for(stream, z, F - 0.2, F + 0.2, N);
  const creal_T c1 = cor_for(stream, z, f_low - 0.2, f_low + 0.2, N);
  const creal_T c2 = cor_for(stream, z, f_high - 0.2, f_high + 0.2, N);
  RotorSidebands out;
  out.low = 10.0 * std::log10(quotientModulus(c0, c1));
  out.high = 10.0 * std::log10(quotientModulus(c0, c2));
  // NaN distances fail every comparison: no defect
  if (out.low < kAlarm || out.high < kAlarm) {
    out.level = 2;
  } else if (out.low < kWarning || out.high < kWarning) {
    out.level = 1;
  }
  return out;
}

void mcsa_bpfio(const Stream& stream, const coder::array<double, 2>& x, const creal_T* z, int N,
                vibration::BearingMode mode, const vibration::BearingGeometry& bearing,
                double out[4]) {
  const vibration::BearingLines lines =
      mode == vibration::BearingMode::filter_cor
          ? vibration::bearingScans(z, N, stream.rate,
                                    vibration::faultFrequencies(bearing, kBearingShaft))
          : vibration::vibro_rms_bpfio_1(stream.rate, N, kBearingShaft, bearing, x, mode,
                                         stream.rate);
  out[0] = lines.bpfo, out[1] = lines.bpfi, out[2] = lines.ftf, out[3] = lines.bsf;
}

} // namespace calc_modul_7R_full_ns
