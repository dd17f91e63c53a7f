#include "coder/rt_nonfinite.h"

#include <cmath>
#include <limits>

// Constant expressions, so the globals are set before any static initialiser of another
// unit can read them; rtGetNaN and rtGetInf return the same values.
const double rtNaN = std::numeric_limits<double>::quiet_NaN();
const double rtInf = std::numeric_limits<double>::infinity();
const double rtMinusInf = -std::numeric_limits<double>::infinity();
const float rtNaNF = std::numeric_limits<float>::quiet_NaN();
const float rtInfF = std::numeric_limits<float>::infinity();
const float rtMinusInfF = -std::numeric_limits<float>::infinity();

void rt_InitInfAndNaN() {}

bool rtIsInf(double value) {
  return std::isinf(value);
}

bool rtIsInfF(float value) {
  return std::isinf(value);
}

bool rtIsNaN(double value) {
  return std::isnan(value);
}

bool rtIsNaNF(float value) {
  return std::isnan(value);
}
