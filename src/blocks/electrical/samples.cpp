#include "blocks/electrical/samples.h"

#include "coder/sum.h"

namespace calc_modul_7R_full_ns {
namespace {

// The length of a stretch of lost samples that fails a measurement.
constexpr int kRun = 32;

bool set(double count) {
  return count != 0.0; // NaN counts as set
}

} // namespace

double countGain(double rk, double rn) {
  const double g = 1.0 + (35.0 + rn * 19.53125) / 1000.0;
  if (rk == 0.0) {
    return 0.0049417429956896556 / g;
  }
  if (rk == 127.0 || rk == 24.9) {
    return 6.74712643678161 * (0.000732421875 / rk) / g;
  }
  return 1.0;
}

LostSamples data_586_1(const coder::array<double, 2>& counts, const ChannelGain& gain, double N,
                       bool sim, coder::array<double, 2>& out) {
  const int n = counts.numel();
  LostSamples lost;
  // Windows of 32 start at the second sample: s + 1 .. s + 32 for s = 0 .. n - 33, so a run
  // at the very start is seen one sample later.
  int zeros_in_window = 0;
  for (int k = 0; k < n; ++k) {
    if (counts[k] == 0.0) {
      ++lost.zeros;
    }
  }
  for (int s = 0; s + kRun < n; ++s) {
    if (s == 0) {
      for (int k = 1; k <= kRun; ++k) {
        zeros_in_window += counts[k] == 0.0;
      }
    } else {
      zeros_in_window += int(counts[s + kRun] == 0.0) - int(counts[s] == 0.0);
    }
    lost.runs += zeros_in_window == kRun;
  }
  // Lost samples add nothing to the sum: this is the mean of the received ones.
  const double mean = lost.zeros == N ? 0.0 : coder::sum(counts.data(), n) / (N - lost.zeros);
  const double k = sim ? 1.0 : countGain(gain.rk, gain.rn);
  out.set_size(1, n);
  for (int j = 0; j < n; ++j) {
    out[j] = ((counts[j] == 0.0 ? mean : counts[j]) - mean) * k * gain.ku;
  }
  return lost;
}

void status_vector_fun_586_1(const LostSamples u[3], const LostSamples i[3], double t,
                             unsigned* status, unsigned* status_bits) {
  const bool voltages = t == 4.0 || t == 21.0, currents = t == 8.0 || t == 21.0;
  bool u_runs = false, i_runs = false;
  unsigned bits = 0;
  for (int p = 0; p < 3; ++p) {
    u_runs = u_runs || set(u[p].runs);
    i_runs = i_runs || set(i[p].runs);
    if (voltages) {
      bits |= (set(u[p].zeros) ? 0x1u << p : 0u) | (set(u[p].runs) ? 0x100u << p : 0u);
    }
    if (currents) {
      bits |= (set(i[p].zeros) ? 0x8u << p : 0u) | (set(i[p].runs) ? 0x800u << p : 0u);
    }
  }
  *status = (t == 21.0 && (u_runs || i_runs)) || (t == 4.0 && u_runs) || (t == 8.0 && i_runs);
  *status_bits = bits;
}

} // namespace calc_modul_7R_full_ns
