#include "blocks/vibration/field_analysis.h"

#include "blocks/vibration/fir_sets.h"
#include "blocks/vibration/scans.h"
#include "coder/correlation_scan.h"
#include "coder/eml_float_colon.h"
#include "coder/filter.h"
#include "coder/findpeaks.h"
#include "coder/minmax.h"
#include "coder/moments.h"
#include "coder/relop.h"
#include "coder/rt_snf.h"
#include "coder/sum.h"
#include "coder/windows.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vibration {
namespace {

constexpr double kPi = 3.141592653589793;
// The step of the magnetic samples (500 Hz) and of the fine scans.
constexpr double kStep = 0.002;
// The count the later stages of the chain take, whatever the record's length.
constexpr int kRecord = 4096;
// 2 * pi * 20: the fixed first window of the three- and four-pole-pair isolation.
constexpr double kTwentyHz = 125.66370614359172;

using Signal = std::vector<creal_T>;

double rms(const double* x, int n) {
  std::vector<double> squares(x, x + n);
  for (double& v : squares) {
    v *= v;
  }
  return std::sqrt(coder::mean(squares.data(), n));
}

// cos(w t) + j sin(w t) at t = k * kStep, k < N, as the product of the phasor at the start of
// each block of kBlock samples and that of the offset within the block: two sines and cosines
// per block instead of per sample, which on the 16384 samples of a full electrical row were
// the field analysis's largest cost. The product adds a few units of 1e-16 to the rounding of
// the two phases, which is smaller than that of the whole phase w * (k * kStep): against the
// exact phasor the blocks err by 1e-12 and the sine and cosine of each sample by 1.8e-12 at
// 44 Hz over the 33 s of 16384 samples, 9e-15 and 1.5e-14 at 0.4 Hz.
constexpr int kBlock = 128;
Signal rotation(int N, double w) {
  Signal within(static_cast<size_t>(kBlock)), out(static_cast<size_t>(std::max(N, 0)));
  for (int j = 0; j < kBlock; ++j) {
    within[size_t(j)] = {std::cos(w * (j * kStep)), std::sin(w * (j * kStep))};
  }
  for (int b = 0; b < N; b += kBlock) {
    const double c = std::cos(w * (b * kStep)), s = std::sin(w * (b * kStep));
    for (int j = 0; j < kBlock && b + j < N; ++j) {
      const creal_T v = within[size_t(j)];
      out[size_t(b + j)] = {c * v.re - s * v.im, c * v.im + s * v.re};
    }
  }
  return out;
}

// x shifted up by w / (2 pi) Hz (a = x cos(w t), b = x sin(w t)), both parts padded by 500
// zeros and filtered by `set`, cut to the N samples from the 250th: the band of the set, moved
// back by w, with the offset of the method (the sets delay by 150 or 250 samples).
Signal heterodyne(const double* x, int N, double w, FirSet set) {
  Signal in(size_t(N + 500), creal_T{0.0, 0.0}), out(in.size());
  const Signal turn = rotation(N, w);
  for (int k = 0; k < N; ++k) {
    in[size_t(k)] = {x[k] * turn[size_t(k)].re, x[k] * turn[size_t(k)].im};
  }
  const std::vector<double>& h = firSet(set);
  coder::internal::firFilter(h.data(), int(h.size()), in.data(), int(in.size()), out.data());
  return Signal(out.begin() + 249, out.begin() + 249 + N);
}

// The two windows around the rotor lines, each shifted onto a fixed band-pass and back, added:
// only what lay in the windows survives.
Signal dualWindow(const double* x, int N, double w1, FirSet set1, double w2, FirSet set2) {
  const Signal c1 = heterodyne(x, N, w1, set1), c2 = heterodyne(x, N, w2, set2);
  const Signal r1 = rotation(N, w1), r2 = rotation(N, w2);
  Signal out(static_cast<size_t>(N));
  for (int k = 0; k < N; ++k) {
    // back by w: times cos(w t) - j sin(w t)
    const creal_T a = c1[size_t(k)], b = c2[size_t(k)], p1 = r1[size_t(k)], p2 = r2[size_t(k)];
    out[size_t(k)] = {a.re * p1.re + a.im * p1.im + b.re * p2.re + b.im * p2.im,
                      -a.re * p1.im + a.im * p1.re - b.re * p2.im + b.im * p2.re};
  }
  return out;
}

// y padded to `padded` samples, filtered by `set`, and the 4096 samples from the 150th: the
// delay of 149 taken off. A record shorter than the method presumes reads zeros past its end.
Signal filterAndAlign(const Signal& y, int padded, FirSet set) {
  Signal in(size_t(std::max(padded, kRecord + 149)), creal_T{0.0, 0.0}), out(in.size());
  std::copy(y.begin(), y.begin() + std::min<long>(long(y.size()), long(in.size())), in.begin());
  const std::vector<double>& h = firSet(set);
  coder::internal::firFilter(h.data(), int(h.size()), in.data(), padded, out.data());
  return Signal(out.begin() + 149, out.begin() + 149 + kRecord);
}

int countOf(double lo, double step, double hi) {
  coder::array<double, 2> range;
  coder::eml_float_colon(lo, step, hi, range);
  return range.numel();
}

// Index of the largest modulus, the first of equal ones (MATLAB max over abs).
int largest(const std::vector<creal_T>& sums, double& value) {
  std::vector<double> moduli;
  for (const creal_T& v : sums) {
    moduli.push_back(rt_hypotd_snf(v.re, v.im));
  }
  int where = 0;
  value = coder::internal::maximum(moduli.data(), int(moduli.size()), &where);
  return where;
}

} // namespace

void cor_left_and_right(double F, double P, double l0, double l1, double r0, double r1, int N,
                        const creal_T* y, double& s, double& fr, int filled) {
  const int m = countOf(l0, kStep, l1);
  // the terms of the zeros add nothing to any sum
  const int n = filled < 0 ? N : std::min(N, filled);
  if (P == 1.0) {
    std::vector<creal_T> L(static_cast<size_t>(countOf(l0, kStep, l1))),
        R(static_cast<size_t>(countOf(r0, kStep, r1)));
    coder::correlation_scan_grid(y, n, kStep, 1, l0, kStep, int(L.size()), L.data());
    coder::correlation_scan_grid(y, n, kStep, 1, r0, kStep, int(R.size()), R.data());
    double left = 0.0, right = 0.0;
    const int il = largest(L, left), ir = largest(R, right);
    // the stronger side decides; ties go to the left, slip-frequency line
    s = right <= left ? ((il * kStep + l0) - F + F) / F : -((ir * kStep + r0) - F - F) / F;
  } else {
    coder::array<double, 1> w;
    coder::hanning(N, w);
    Signal windowed(static_cast<size_t>(n));
    for (int k = 0; k < n; ++k) {
      windowed[size_t(k)] = {y[k].re * w[k], y[k].im * w[k]};
    }
    std::vector<creal_T> D(static_cast<size_t>(m)), fb(static_cast<size_t>(m));
    coder::correlation_scan_grid(windowed.data(), n, kStep, 1, l0, kStep, m, D.data());
    coder::correlation_scan_grid(windowed.data(), n, kStep, 1, r1, -kStep, m, fb.data());
    for (int i = 0; i < m; ++i) {
      D[size_t(i)].re += fb[size_t(i)].re;
      D[size_t(i)].im += fb[size_t(i)].im;
    }
    double peak = 0.0;
    const int id = largest(D, peak);
    s = (((id * kStep + l0) - F) * P + F) / F;
  }
  fr = (1.0 - s) * F / P;
}

SupplyAndSlip cal_param_ad(double F0, double P, int N, const double* x) {
  SupplyAndSlip out;
  if (!(P == 1.0 || P == 2.0 || P == 3.0 || P == 4.0) || N <= 0) {
    return out;
  }
  // The supply line onto 50 Hz, through the band 47 to 53.25 Hz, then the fine scan.
  const double g = 50.0 - F0;
  const Signal c = heterodyne(x, N, 2.0 * kPi * g, FirSet::filter);
  const Scan fine = scanGrid(c.data(), N, kStep, 49.6, kStep, 401);
  out.amplitude = fine.modulus;
  const double level = out.amplitude == 0.0 ? 0.0 : 20.0 * std::log10(rms(x, N) / out.amplitude);
  const double F = 49.6 + kStep * fine.best - (50.0 - F0);

  // The windows of the two rotor lines: from the synchronous line down by 40 rpm of slip
  // (times the constant of the method) on the left, and mirrored on the right.
  const double sync = F / P * 60.0;
  const double l0 = std::floor((1.0 - 1.0 / P) * F / kStep) * kStep;
  const double smax = (sync - (sync - 40.0)) / sync * 3.732050807568877;
  const double e = std::floor((1.0 - (1.0 - smax) / P) * F / kStep), b0 = std::floor(l0 / kStep);
  const double l1 = (e - b0 - 1.0) * kStep + l0;
  const double u = std::floor((1.0 / P + 1.0) * F / kStep);
  const double r1 = u * kStep, r0 = r1 - (e - b0 - 1.0) * kStep;
  const double q = 2.0 * (50.0 - F) + 20.0;

  Signal isolated;
  if (P <= 2.0) {
    isolated = dualWindow(x, N, 2.0 * kPi * (20.0 - l0), FirSet::b_filter, 2.0 * kPi * (116.0 - r0),
                          FirSet::c_filter);
  } else if (P == 3.0) {
    isolated = dualWindow(x, N, kTwentyHz, FirSet::d_filter, 2.0 * kPi * q, FirSet::e_filter);
  } else {
    isolated = dualWindow(x, N, kTwentyHz, FirSet::f_filter, 2.0 * kPi * q, FirSet::g_filter);
  }
  // The supply line removed, then the third stage of the pole-pair count.
  const FirSet stops[4] = {FirSet::h_filter, FirSet::i_filter, FirSet::j_filter, FirSet::k_filter};
  const FirSet thirds[4] = {FirSet::third_1, FirSet::third_2, FirSet::third_3, FirSet::third_4};
  const Signal stopped = filterAndAlign(isolated, N + 300, stops[int(P) - 1]);
  const Signal y = filterAndAlign(stopped, kRecord + 300, thirds[int(P) - 1]);

  Signal scanned(y);
  scanned.resize(size_t(std::max(N, kRecord)), creal_T{0.0, 0.0});
  cor_left_and_right(F, P, l0, l1, r0, r1, N, scanned.data(), out.s, out.fr, int(y.size()));
  out.F = F;
  // A refined line below the field's level by less than 30 dB is no supply line.
  if (level > -30.0 || F < 10.0) {
    out.F = out.s = out.fr = 0.0;
  }
  return out;
}

SupplyAndSlip cal_param_ad_par(double P, double N, const coder::array<double, 2>& x,
                               FrequencyMode mode, FieldFilter filter) {
  const int n = std::isnan(N) ? 0 : int(std::min(std::max(N, 0.0), double(x.numel())));
  const double lo = mode == FrequencyMode::fixed ? 49.6 : 10.0;
  const double hi = mode == FrequencyMode::fixed ? 50.4 : 60.0;
  const int count = int(std::floor((0.1 - lo + hi) / 0.1));
  std::vector<creal_T> sums(size_t(count > 0 ? count : 0));
  coder::correlation_scan_grid(x.data(), n, kStep, 1, lo, 0.1, count, sums.data());
  int best = 0;
  for (int i = 1; i < count; ++i) {
    if (coder::internal::relop(sums[size_t(best)], sums[size_t(i)])) {
      best = i;
    }
  }
  const double F0 = best * 0.1 + lo;

  // The two highest peaks of the coarse scan against the field's RMS: a clean supply line
  // stands far above the field and above any other line.
  std::vector<double> moduli, peaks, locations;
  for (const creal_T& v : sums) {
    moduli.push_back(rt_hypotd_snf(v.re, v.im));
  }
  coder::findpeaks(moduli.data(), int(moduli.size()), peaks, locations);
  const double p1 = peaks.empty() ? 0.0 : peaks[0], p2 = peaks.size() < 2 ? 0.0 : peaks[1];
  const double db_rms = 20.0 * std::log10(p1 / rms(x.data(), n));
  const double db_next = 20.0 * std::log10(p1 / p2);
  SupplyAndSlip out = cal_param_ad(F0, P, n, x.data());
  if (filter == FieldFilter::amp1) {
    out.error = coder::peak2peak(x.data(), n) <= 500.0 || (db_rms < 55.0 && db_next <= 3.0);
  } else {
    out.error = db_rms < 35.0;
  }
  out.speed = (1.0 - out.s) * out.F / P * 60.0;
  return out;
}

} // namespace vibration
