#include "coder/relop.h"

#include "coder/rt_snf.h"

#include <cmath>
#include <limits>

namespace coder {
namespace internal {

bool iseq(double x, double y) {
  const double half = std::fabs(y / 2.0);
  double spacing;
  if (std::isinf(half) || std::isnan(half)) {
    spacing = std::numeric_limits<double>::quiet_NaN();
  } else if (half < 2.2250738585072014e-308) {
    spacing = 4.9406564584124654e-324;
  } else {
    int e = 0;
    std::frexp(half, &e);
    spacing = std::ldexp(1.0, e - 53);
  }
  if (std::fabs(y - x) < spacing)
    return true;
  return std::isinf(x) && std::isinf(y) && ((x > 0.0) == (y > 0.0));
}

bool relop(const creal_T& a, const creal_T& b) {
  if (std::isnan(b.re) || std::isnan(b.im))
    return false;
  if (std::isnan(a.re) || std::isnan(a.im))
    return true;
  constexpr double kHalvingLimit = 8.988465674311579e307;
  double x;
  double y;
  if (std::fabs(a.re) > kHalvingLimit || std::fabs(a.im) > kHalvingLimit ||
      std::fabs(b.re) > kHalvingLimit || std::fabs(b.im) > kHalvingLimit) {
    // Halving keeps the modulus of values near the top of the range finite.
    x = rt_hypotd_snf(a.re / 2.0, a.im / 2.0);
    y = rt_hypotd_snf(b.re / 2.0, b.im / 2.0);
  } else {
    x = rt_hypotd_snf(a.re, a.im);
    y = rt_hypotd_snf(b.re, b.im);
  }
  if (!iseq(x, y))
    return x < y;
  const double angle_a = rt_atan2d_snf(a.im, a.re);
  const double angle_b = rt_atan2d_snf(b.im, b.re);
  if (!iseq(angle_a, angle_b))
    return angle_a < angle_b;
  // Same modulus and angle to rounding: the value further along the direction of growing
  // angle is the larger one. That direction moves the real part most near +-pi/2 and the
  // imaginary part most near 0 and pi; the sign follows the angle's quadrant.
  double ka;
  double kb;
  if (angle_a > 0.78539816339744828) {
    if (angle_a > 2.3561944901923448) {
      ka = -a.im;
      kb = -b.im;
    } else {
      ka = -a.re;
      kb = -b.re;
    }
  } else if (angle_a > -0.78539816339744828) {
    ka = a.im;
    kb = b.im;
  } else if (angle_a > -2.3561944901923448) {
    ka = a.re;
    kb = b.re;
  } else {
    ka = -a.im;
    kb = -b.im;
  }
  if (iseq(ka, kb))
    return false;
  return ka < kb;
}

} // namespace internal
} // namespace coder
