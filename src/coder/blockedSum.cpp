#include "coder/blockedSum.h"

#include <algorithm>
#include <cmath>

namespace coder {
namespace internal {

double blockedSum(const double* x, int n) {
  if (n <= 0) return 0.0;
  double total = 0.0;
  for (int start = 0; start < n; start += 1024) {
    const int end = std::min(start + 1024, n);
    double block = x[start];
    for (int k = start + 1; k < end; ++k) block += x[k];
    total = start == 0 ? block : total + block;
  }
  return total;
}

double blockedMean(const double* x, int n) {
  if (n <= 0) return std::nan("");
  return blockedSum(x, n) / static_cast<double>(n);
}

} // namespace internal
} // namespace coder
