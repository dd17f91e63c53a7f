#include "coder/minmax.h"

#include "coder/relop.h"

#include <cmath>
#include <limits>

namespace coder {
namespace internal {
namespace {

bool isNaN(double v) {
  return std::isnan(v);
}
bool isNaN(const creal_T& v) {
  return std::isnan(v.re) || std::isnan(v.im);
}

// First element that is not NaN, or -1.
template <typename T> int firstNumber(const T* x, int n) {
  for (int k = 0; k < n; ++k) {
    if (!isNaN(x[k]))
      return k;
  }
  return -1;
}

// Shared scan: `better(candidate, best)` tells whether the candidate replaces the best;
// strict comparisons keep the first of equal values.
template <typename T, typename Better>
T extreme(const T* x, int n, int* index, T empty, Better better) {
  if (n <= 0) {
    if (index != nullptr)
      *index = 0;
    return empty;
  }
  int best = firstNumber(x, n);
  if (best < 0) {
    if (index != nullptr)
      *index = 1;
    return x[0];
  }
  for (int k = best + 1; k < n; ++k) {
    if (!isNaN(x[k]) && better(x[k], x[best]))
      best = k;
  }
  if (index != nullptr)
    *index = best + 1;
  return x[best];
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

double maximum(const double* x, int n, int* index) {
  return extreme(x, n, index, kNaN, [](double c, double b) { return c > b; });
}

double minimum(const double* x, int n, int* index) {
  return extreme(x, n, index, kNaN, [](double c, double b) { return c < b; });
}

creal_T maximum(const creal_T* x, int n, int* index) {
  return extreme(x, n, index, creal_T{kNaN, kNaN},
                 [](const creal_T& c, const creal_T& b) { return relop(b, c); });
}

creal_T minimum(const creal_T* x, int n, int* index) {
  return extreme(x, n, index, creal_T{kNaN, kNaN},
                 [](const creal_T& c, const creal_T& b) { return relop(c, b); });
}

} // namespace internal
} // namespace coder
