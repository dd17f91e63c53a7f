#include "coder/eml_float_colon.h"

#include "coder/rt_nonfinite.h"

#include <cmath>

namespace coder {

void eml_float_colon(double a, double d, double b, array<double, 2>& y) {
  if (std::isnan(a) || std::isnan(d) || std::isnan(b)) {
    y.set_size(1, 1);
    y[0] = rtNaN;
    return;
  }
  if (d == 0.0 || (a < b && d < 0.0) || (b < a && d > 0.0)) {
    y.set_size(1, 0);
    return;
  }
  if (std::isinf(a) || std::isinf(b)) {
    if (a == b) {
      y.set_size(1, 1);
      y[0] = rtNaN;
    } else {
      // An endless range has no storable form; a forecast given one gets no points.
      y.set_size(1, 0);
    }
    return;
  }
  if (std::isinf(d)) {
    // One step reaches past b at once: the range is a alone.
    y.set_size(1, 1);
    y[0] = a;
    return;
  }
  double ndbl = std::floor((b - a) / d + 0.5);
  double last = a + ndbl * d;
  const double excess = d > 0.0 ? last - b : b - last;
  if (std::fabs(excess) < 4.440892098500626e-16 * std::fmax(std::fabs(a), std::fabs(b))) {
    ndbl += 1.0;
    last = b;
  } else if (excess > 0.0) {
    last = a + (ndbl - 1.0) * d;
  } else {
    ndbl += 1.0;
  }
  if (!(ndbl >= 0.0) || ndbl > 2147483647.0) {
    y.set_size(1, 0);
    return;
  }
  const int n = static_cast<int>(ndbl);
  y.set_size(1, n);
  if (n == 0)
    return;
  y[0] = a;
  if (n == 1)
    return;
  y[n - 1] = last;
  const int half = (n - 1) / 2;
  for (int k = 0; k < half - 1; ++k) {
    const double kd = static_cast<double>(k + 1) * d;
    y[k + 1] = a + kd;
    y[n - k - 2] = last - kd;
  }
  if (half * 2 == n - 1) {
    y[half] = (a + last) / 2.0;
  } else {
    const double kd = static_cast<double>(half) * d;
    y[half] = a + kd;
    y[half + 1] = last - kd;
  }
}

} // namespace coder
