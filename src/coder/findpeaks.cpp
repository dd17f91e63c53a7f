#include "coder/findpeaks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace coder {

void findpeaks(const double* y, int n, std::vector<double>& pks, std::vector<double>& locs) {
  const double inf = std::numeric_limits<double>::infinity();
  pks.clear();
  locs.clear();
  // One pass over runs of equal values, from an imagined +Inf before the first sample.
  // Direction: 0 none, 1 rising, -1 falling; a run's first index is kept so that a plateau
  // is reported at its start.
  std::vector<int> finite_peaks;
  std::vector<int> infinite_peaks;
  int direction = 0;
  int run_first = -1;
  double run_value = inf;
  bool run_infinite = true;
  for (int k = 0; k < n; ++k) {
    const double yk = std::isnan(y[k]) ? inf : y[k];
    const bool infinite = yk == inf;
    if (infinite && !std::isnan(y[k]))
      infinite_peaks.push_back(k);
    if (yk != run_value) {
      const int previous = direction;
      if (infinite || run_infinite) {
        direction = 0;
      } else if (yk < run_value) {
        direction = -1;
        if (previous == 1)
          finite_peaks.push_back(run_first);
      } else {
        direction = 1;
      }
      run_value = yk;
      run_first = k;
      run_infinite = infinite;
    }
  }
  std::vector<int> all(finite_peaks);
  all.insert(all.end(), infinite_peaks.begin(), infinite_peaks.end());
  std::sort(all.begin(), all.end());
  std::stable_sort(all.begin(), all.end(), [y](int a, int b) { return y[a] > y[b]; });
  for (int k : all) {
    pks.push_back(y[k]);
    locs.push_back(static_cast<double>(k + 1));
  }
}

} // namespace coder
