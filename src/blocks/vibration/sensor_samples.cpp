#include "blocks/vibration/sensor_samples.h"

#include "coder/sum.h"

#include <algorithm>
#include <cmath>

namespace vibration {
namespace {

// How the chips differ in the repair of lost samples:
//
//   chip        run window   all samples lost
//   IIS3DWBTR   none         mean 0/0: the axis becomes NaN
//   ADS131      8            mean 0/0: the axis becomes NaN
//   LIS344      32           mean 0: the axis stays zero
//   RS89x       8            mean 0: the axis stays zero
//   magnet      none         mean 0/0: the channel becomes NaN
//
// The asymmetry of the last column is kept: the installed evaluation tells a dead
// accelerometer of the older chips by its NaN statistics.
struct Repair {
  int run_window;
  bool guard_all_lost;
};
constexpr Repair kIIS3DWBTR{0, false}, kADS131{8, false}, kLIS344{32, true}, kRS89x{8, true},
    kMagnet{0, false};

// Replaces the exact zeros of x[0..n) by the mean of the other samples and removes that mean.
// A run starts at k, 0 <= k < n - window, when the window samples from k on are all zero; the
// last possible start is left out, so a run at the very end of the record counts one less.
LostSamples repair(double* x, int n, const Repair& rule) {
  LostSamples lost;
  int zeros_ahead = 0; // length of the run of zeros starting at k, counted from the end
  for (int k = n - 1; k >= 0; --k) {
    zeros_ahead = x[k] == 0.0 ? zeros_ahead + 1 : 0;
    if (x[k] == 0.0) {
      lost.zeros += 1.0;
    }
    if (rule.run_window > 0 && k < n - rule.run_window && zeros_ahead >= rule.run_window) {
      lost.runs += 1.0;
    }
  }
  double m = coder::sum(x, n) / (double(n) - lost.zeros);
  if (rule.guard_all_lost && lost.zeros == double(n)) {
    m = 0.0;
  }
  for (int k = 0; k < n; ++k) {
    x[k] = (x[k] == 0.0 ? m : x[k]) - m;
  }
  return lost;
}

void copyRow(const coder::array<double, 2>& x, int n, coder::array<double, 2>& out) {
  out.set_size(1, n);
  std::copy(x.data(), x.data() + n, out.data());
}

} // namespace

void v_data_IIS3DWBTR(const coder::array<double, 2>& x, double FS, coder::array<double, 2>& out) {
  const int n = x.numel();
  copyRow(x, n, out);
  for (int k = 0; k < n; ++k) {
    out[k] = out[k] * FS / 32768.0;
  }
  repair(out.data(), n, kIIS3DWBTR);
}

LostSamples v_data_ads131_v2(const coder::array<double, 2>& x, double g_del,
                             coder::array<double, 2>& out) {
  const int n = x.numel();
  copyRow(x, n, out);
  for (int k = 0; k < n; ++k) {
    const double v = out[k];
    out[k] = v <= 8388607.0 ? v * 1200.0 / 8388608.0 : (v - 16777215.0) * 1200.0 / 8388608.0;
  }
  const LostSamples lost = repair(out.data(), n, kADS131);
  for (int k = 0; k < n; ++k) {
    out[k] /= g_del;
  }
  return lost;
}

LostSamples v_data_LIS344(const coder::array<double, 2>& x, double ku, double g_del,
                          coder::array<double, 2>& out) {
  const int n = x.numel();
  copyRow(x, n, out);
  const LostSamples lost = repair(out.data(), n, kLIS344);
  for (int k = 0; k < n; ++k) {
    out[k] = out[k] * 1.1 / ku * 1.0681766510009765 / g_del;
  }
  return lost;
}

LostSamples v_data_rs_89x_x(const coder::array<double, 2>& x, coder::array<double, 2>& out) {
  const int n = x.numel();
  copyRow(x, n, out);
  const LostSamples lost = repair(out.data(), n, kRS89x);
  for (int k = 0; k < n; ++k) {
    out[k] /= 1000000.0;
  }
  return lost;
}

void dell_null_data(const coder::array<double, 2>& x, double n, coder::array<double, 2>& out) {
  // A count beyond the record would read past the samples: only what is there is used.
  const int count = std::isnan(n) ? 0 : int(std::min(std::max(n, 0.0), double(x.numel())));
  copyRow(x, count, out);
  zeroNaN(out);
  repair(out.data(), count, kMagnet);
}

void zeroNaN(coder::array<double, 2>& x) {
  for (int k = 0; k < x.numel(); ++k) {
    if (std::isnan(x[k])) {
      x[k] = 0.0;
    }
  }
}

} // namespace vibration
