#include "coder/pchip.h"

#include <cmath>
#include <limits>
#include <vector>

namespace coder {
namespace {

double signOf(double v) {
  return v > 0.0 ? 1.0 : (v < 0.0 ? -1.0 : 0.0);
}

// MATLAB's end slope: the three-point estimate, set to 0 when it points against the first
// secant and limited to three secants when the secants change sign.
double endSlope(double h1, double h2, double del1, double del2) {
  double d = ((2.0 * h1 + h2) * del1 - h1 * del2) / (h1 + h2);
  if (signOf(d) != signOf(del1)) {
    d = 0.0;
  } else if (signOf(del1) != signOf(del2) && std::fabs(d) > std::fabs(3.0 * del1)) {
    d = 3.0 * del1;
  }
  return d;
}

} // namespace

void pchip(const double* x, const double* v, int n, const double* xq, int nq, double* vq) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  if (n <= 1) {
    for (int i = 0; i < nq; ++i)
      vq[i] = n == 1 && !std::isnan(xq[i]) ? v[0] : nan;
    return;
  }
  const size_t pieces = static_cast<size_t>(n - 1);
  std::vector<double> h(pieces);
  std::vector<double> del(pieces);
  for (size_t k = 0; k < pieces; ++k) {
    h[k] = x[k + 1] - x[k];
    del[k] = (v[k + 1] - v[k]) / h[k];
  }
  std::vector<double> d(static_cast<size_t>(n));
  if (n == 2) {
    d[0] = del[0];
    d[1] = del[0];
  } else {
    for (size_t k = 1; k < pieces; ++k) {
      if (signOf(del[k - 1]) * signOf(del[k]) > 0.0) {
        const double w1 = 2.0 * h[k] + h[k - 1];
        const double w2 = h[k] + 2.0 * h[k - 1];
        d[k] = (w1 + w2) / (w1 / del[k - 1] + w2 / del[k]);
      } else {
        d[k] = 0.0;
      }
    }
    d[0] = endSlope(h[0], h[1], del[0], del[1]);
    d[pieces] = endSlope(h[pieces - 1], h[pieces - 2], del[pieces - 1], del[pieces - 2]);
  }
  for (int i = 0; i < nq; ++i) {
    const double q = xq[i];
    if (std::isnan(q)) {
      vq[i] = nan;
      continue;
    }
    // piece j with x(j) <= q < x(j+1); the end pieces extend beyond the data
    size_t lo = 0;
    size_t hi = pieces;
    while (hi > lo + 1) {
      const size_t mid = (lo + hi) / 2;
      if (q >= x[mid]) {
        lo = mid;
      } else {
        hi = mid;
      }
    }
    const size_t j = lo;
    const double c2 = (3.0 * del[j] - 2.0 * d[j] - d[j + 1]) / h[j];
    const double c1 = (d[j] - 2.0 * del[j] + d[j + 1]) / (h[j] * h[j]);
    const double s = q - x[j];
    vq[i] = ((c1 * s + c2) * s + d[j]) * s + v[j];
  }
}

} // namespace coder
