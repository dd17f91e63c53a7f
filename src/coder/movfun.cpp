#include "coder/movfun.h"

#include "coder/median.h"

#include <cmath>
#include <limits>

namespace coder {

void movmean(const double* x, int n, int back, double* out) {
  for (int i = 0; i < n; ++i) {
    const int first = i - back > 0 ? i - back : 0;
    double s = 0.0;
    bool has_nan = false;
    for (int k = first; k <= i; ++k) {
      s += x[k];
      has_nan = has_nan || std::isnan(x[k]);
    }
    out[i] =
        has_nan ? std::numeric_limits<double>::quiet_NaN() : s / static_cast<double>(i - first + 1);
  }
}

void movmedian(const double* x, int n, int back, double* out) {
  for (int i = 0; i < n; ++i) {
    const int first = i - back > 0 ? i - back : 0;
    out[i] = median(x + first, i - first + 1);
  }
}

} // namespace coder
