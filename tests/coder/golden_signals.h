// Test signals that the Octave generators in golden/ build too (golden/lcg_signal.m), so
// long inputs need not be stored in the golden files.
#pragma once

#include <cstdint>
#include <vector>

namespace vek_test {

// The Park-Miller sequence s = 16807 s mod (2^31 - 1) from `seed`, mapped to [-0.5, 0.5)
// by s / (2^31 - 1) - 0.5: the same doubles as lcg_signal(seed, n) in Octave.
inline std::vector<double> lcgSignal(std::int64_t seed, int n) {
  std::vector<double> x(static_cast<size_t>(n));
  std::int64_t s = seed;
  for (int k = 0; k < n; ++k) {
    s = (16807 * s) % 2147483647;
    x[static_cast<size_t>(k)] = static_cast<double>(s) / 2147483647.0 - 0.5;
  }
  return x;
}

} // namespace vek_test
