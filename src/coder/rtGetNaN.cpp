#include "coder/rtGetNaN.h"

#include <limits>

double rtGetNaN() {
  return std::numeric_limits<double>::quiet_NaN();
}

float rtGetNaNF() {
  return std::numeric_limits<float>::quiet_NaN();
}
