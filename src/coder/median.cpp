#include "coder/median.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace coder {

double medianOfPair(double lo, double hi) {
  if ((lo < 0.0) != (hi < 0.0) || std::isinf(hi))
    return (lo + hi) / 2.0;
  return hi + (lo - hi) / 2.0;
}

double median(const double* x, int n) {
  if (n <= 0)
    return std::numeric_limits<double>::quiet_NaN();
  for (int k = 0; k < n; ++k) {
    if (std::isnan(x[k]))
      return std::numeric_limits<double>::quiet_NaN();
  }
  std::vector<double> v(x, x + n);
  const size_t mid = static_cast<size_t>(n / 2);
  std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(mid), v.end());
  const double hi = v[mid];
  if (n % 2 == 1)
    return hi;
  const double lo = *std::max_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(mid));
  return medianOfPair(lo, hi);
}

} // namespace coder
