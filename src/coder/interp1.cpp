#include "coder/interp1.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace coder {

void interp1(const double* x, const double* v, int n, const double* xq, int nq, double* vq) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  if (n < 2) {
    for (int i = 0; i < nq; ++i)
      vq[i] = nan;
    return;
  }
  std::vector<double> xs(x, x + n);
  std::vector<double> vs(v, v + n);
  if (xs[1] < xs[0]) {
    std::reverse(xs.begin(), xs.end());
    std::reverse(vs.begin(), vs.end());
  }
  for (int i = 0; i < nq; ++i) {
    const double q = xq[i];
    if (std::isnan(q) || q < xs.front() || q > xs.back()) {
      vq[i] = nan;
      continue;
    }
    // binary search for lo with xs[lo] <= q < xs[lo+1]; the last point joins the last interval
    int lo = 0;
    int hi = n - 1;
    while (hi > lo + 1) {
      const int mid = (lo + hi) / 2;
      if (q >= xs[static_cast<size_t>(mid)]) {
        lo = mid;
      } else {
        hi = mid;
      }
    }
    const double a = vs[static_cast<size_t>(lo)];
    const double b = vs[static_cast<size_t>(lo + 1)];
    const double r = (q - xs[static_cast<size_t>(lo)]) /
                     (xs[static_cast<size_t>(lo + 1)] - xs[static_cast<size_t>(lo)]);
    if (r == 0.0) {
      vq[i] = a;
    } else if (r == 1.0) {
      vq[i] = b;
    } else if (a == b) {
      vq[i] = a;
    } else {
      vq[i] = (1.0 - r) * a + r * b;
    }
  }
}

} // namespace coder
