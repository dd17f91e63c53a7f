#include "coder/rt_snf.h"

#include "coder/rt_nonfinite.h"

#include <cmath>

double rt_hypotd_snf(double a, double b) {
  const double x = std::fabs(a);
  const double y = std::fabs(b);
  if (y > x) {
    const double r = x / y;
    return y * std::sqrt(r * r + 1.0);
  }
  if (x > y) {
    const double r = y / x;
    return x * std::sqrt(r * r + 1.0);
  }
  if (std::isnan(y))
    return y;
  return x * 1.4142135623730951;
}

double rt_atan2d_snf(double y, double x) {
  if (std::isnan(y) || std::isnan(x))
    return rtNaN;
  if (std::isinf(y) && std::isinf(x)) {
    const double sy = y > 0.0 ? 1.0 : -1.0;
    const double sx = x > 0.0 ? 1.0 : -1.0;
    return std::atan2(sy, sx);
  }
  if (x == 0.0) {
    if (y > 0.0)
      return 1.5707963267948966;
    if (y < 0.0)
      return -1.5707963267948966;
    return 0.0;
  }
  return std::atan2(y, x);
}

double rt_powd_snf(double a, double b) {
  if (std::isnan(a) || std::isnan(b))
    return rtNaN;
  if (std::isinf(b)) {
    const double mag = std::fabs(a);
    if (mag == 1.0)
      return 1.0;
    if (mag > 1.0)
      return b > 0.0 ? rtInf : 0.0;
    return b > 0.0 ? 0.0 : rtInf;
  }
  if (b == 0.0)
    return 1.0;
  if (std::fabs(b) == 1.0)
    return b > 0.0 ? a : 1.0 / a;
  if (b == 2.0)
    return a * a;
  if (b == 0.5 && a >= 0.0)
    return std::sqrt(a);
  if (a < 0.0 && b > std::floor(b))
    return rtNaN;
  return std::pow(a, b);
}

double rt_remd_snf(double u0, double u1) {
  if (std::isnan(u0) || std::isnan(u1) || std::isinf(u0))
    return rtNaN;
  if (std::isinf(u1))
    return u0;
  if (u1 == 0.0)
    return 0.0;
  if (u1 == std::trunc(u1))
    return std::fmod(u0, u1);
  const double q = std::fabs(u0 / u1);
  if (std::fabs(q - std::floor(q + 0.5)) <= 2.220446049250313e-16 * q)
    return 0.0;
  return std::fmod(u0, u1);
}
