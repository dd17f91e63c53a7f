#include "coder/rtGetInf.h"

#include <limits>

double rtGetInf() {
  return std::numeric_limits<double>::infinity();
}

float rtGetInfF() {
  return std::numeric_limits<float>::infinity();
}

double rtGetMinusInf() {
  return -std::numeric_limits<double>::infinity();
}

float rtGetMinusInfF() {
  return -std::numeric_limits<float>::infinity();
}
