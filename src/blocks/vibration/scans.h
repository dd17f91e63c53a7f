// The correlation scans of the vibration blocks: a signal's sums at each point of a frequency
// grid, the best point by the complex ordering of the numeric runtime, and the rule that
// tells a spectral line from a slope.
#pragma once

#include "coder/rtwtypes.h"

#include <vector>

namespace vibration {

struct Scan {
  std::vector<creal_T> sums; // S(i) = sum over k = 1..n of y(k) exp(-j 2 pi f_i k dt)
  int best = 0;              // 0-based index of the first maximum by relop
  double frequency = 0.0;    // f at the best point
  double modulus = 0.0;      // |S(best)|

  // 1 when the sums hold no local peak or their highest peak is not the best point (a
  // maximum at the edge of the window or on a slope is no line), otherwise 0.
  double lineFlag() const;
  // 20 log10(|S(best)| / sqrt(mean(|y|^2))) of the n scanned samples y.
  double level(const creal_T* y, int n) const;
};

// The scan over f_i = f0 + i * step, i = 0..m-1.
Scan scanGrid(const creal_T* y, int n, double dt, double f0, double step, int m);
// The scan over the colon range lo:step:hi (its count and end points as MATLAB builds them).
Scan scanRange(const creal_T* y, int n, double dt, double lo, double step, double hi);

} // namespace vibration
