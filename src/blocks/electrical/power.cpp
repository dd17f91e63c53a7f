#include "blocks/electrical/power.h"

#include "coder/fft.h"
#include "coder/minmax.h"
#include "coder/rt_nonfinite.h"
#include "coder/rt_snf.h"
#include "coder/sum.h"
#include "coder/windows.h"

#include <cmath>
#include <vector>

namespace calc_modul_7R_full_ns {
namespace {

// C(a, b): the complex power of one wattmeter, 0.5 / N times the sum over the samples of the
// analytic voltage times the conjugate analytic current. By Parseval's theorem that sum is 1/n
// times the one over the bins of their spectra, and an analytic spectrum is the real one with
// its positive frequencies doubled, DC and the Nyquist bin kept once and the negative ones
// gone: one real transform per channel instead of a forward and an inverse complex one, the
// same sum to rounding. Channels of unequal length have no common samples.
creal_T wattmeter(const coder::array<double, 2>& a, const coder::array<double, 2>& b, double N) {
  const int n = a.numel() == b.numel() ? a.numel() : 0;
  creal_T total{0.0, 0.0};
  if (n > 0) {
    const int half = n / 2 + 1;
    std::vector<creal_T> A(static_cast<size_t>(half)), B(A.size()), products(A.size());
    coder::internal::fftRealHalf(a.data(), n, n, A.data());
    coder::internal::fftRealHalf(b.data(), n, n, B.data());
    for (int k = 0; k < half; ++k) {
      const double weight = k == 0 || 2 * k == n ? 1.0 : 4.0;
      const creal_T x = A[size_t(k)], y = B[size_t(k)];
      products[size_t(k)] = {weight * (x.re * y.re + x.im * y.im),
                             weight * (x.im * y.re - x.re * y.im)};
    }
    total = coder::sum(products.data(), half);
    total = {total.re / n, total.im / n};
  }
  return {0.5 / N * total.re, 0.5 / N * total.im};
}

void threeWattmeter(Phases& u, const Phases& i, double N, const ElectricalOutput& rms,
                    PowerFields& out) {
  out.P[0] = out.Q[0] = out.S[0] = 0.0;
  for (int p = 0; p < 3; ++p) {
    std::vector<double> products(size_t(u[p].numel()));
    for (int k = 0; k < u[p].numel(); ++k) {
      products[size_t(k)] = u[p][k] * i[p][k];
    }
    const double P = 1.0 / N * coder::sum(products.data(), int(products.size()));
    const double S = rms.U[p] * rms.I[p];
    // the angle's sign is not seen: Q is as large as the angle says, with the sign of P
    const double Q = std::tan(std::acos(P / S)) * P;
    out.P[p + 1] = P, out.S[p + 1] = S, out.Q[p + 1] = Q;
    out.P[0] += P, out.S[0] += S, out.Q[0] += Q;
  }
}

void twoWattmeter(Phases& u, const Phases& i, double N, const ElectricalOutput&, PowerFields& out) {
  const creal_T w1 = wattmeter(u[0], i[0], N), w2 = wattmeter(u[1], i[2], N);
  out.P[0] = w1.re + w2.re, out.Q[0] = w1.im + w2.im;
  out.S[0] = rt_hypotd_snf(out.P[0], out.Q[0]);
}

void twoWattmeterByAngle(Phases& u, const Phases& i, double, const ElectricalOutput& rms,
                         PowerFields& out) {
  for (int k = 0; k < u[0].numel(); ++k) {
    u[0][k] -= u[1][k];
    u[2][k] -= u[1][k];
  }
  const double p1 = phdiffmeasure(u[0], i[0]), p2 = phdiffmeasure(u[2], i[2]);
  const double S1 = rms.U_line[0] * rms.I[0], S2 = rms.U_line[1] * rms.I[2];
  out.P[0] = std::abs(std::cos(p1) * S1) + std::abs(std::cos(p2) * S2);
  out.Q[0] = std::abs(std::sin(p1) * S1) + std::abs(std::sin(p2) * S2);
  out.S[0] = std::sqrt(out.P[0] * out.P[0] + out.Q[0] * out.Q[0]);
}

void threeWattmeterAnalytic(Phases& u, const Phases& i, double N, const ElectricalOutput&,
                            PowerFields& out) {
  out.P[0] = out.Q[0] = out.S[0] = 0.0;
  for (int p = 0; p < 3; ++p) {
    const creal_T w = wattmeter(u[p], i[p], N);
    out.P[p + 1] = w.re, out.Q[p + 1] = w.im, out.S[p + 1] = rt_hypotd_snf(w.re, w.im);
    out.P[0] += w.re, out.Q[0] += w.im, out.S[0] += out.S[p + 1];
  }
}

using Method = void (*)(Phases&, const Phases&, double, const ElectricalOutput&, PowerFields&);
struct ModeMethod {
  PowerMode mode;
  Method method;
};
// The modes that compute; not_mode_power and mode_three_wattmeter_c_3 leave the fields NaN.
const ModeMethod kMethods[] = {{PowerMode::mode_three_wattmeter, threeWattmeter},
                               {PowerMode::mode_two_wattmeter, twoWattmeter},
                               {PowerMode::mode_two_wattmeter_faz, twoWattmeterByAngle},
                               {PowerMode::mode_three_wattmeter_c, threeWattmeterAnalytic}};

// The angle of the strongest bin of the Hanning-windowed spectrum of x less its mean.
double peakAngle(const coder::array<double, 2>& x) {
  const int n = x.numel();
  coder::array<double, 1> w;
  coder::hanning(n, w);
  const double mean = coder::mean(x.data(), n);
  coder::array<double, 2> windowed;
  windowed.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    windowed[k] = (x[k] - mean) * w[k];
  }
  coder::array<creal_T, 2> X;
  coder::fft(windowed, X);
  std::vector<double> moduli(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    moduli[size_t(k)] = rt_hypotd_snf(X[k].re, X[k].im);
  }
  int peak = 0;
  coder::internal::maximum(moduli.data(), n, &peak);
  return peak < 1 ? rtNaN : rt_atan2d_snf(X[peak - 1].im, X[peak - 1].re);
}

} // namespace

double phdiffmeasure(const coder::array<double, 2>& x, const coder::array<double, 2>& y) {
  return peakAngle(y) - peakAngle(x);
}

void power_modes(PowerMode mode, Phases& u, const Phases& i, double N, const ElectricalOutput& rms,
                 PowerFields& out) {
  for (const ModeMethod& m : kMethods) {
    if (m.mode == mode) {
      m.method(u, i, N, rms, out);
    }
  }
}

} // namespace calc_modul_7R_full_ns
