#include "coder/sum.h"

#include <cmath>
#include <limits>

namespace coder {
namespace {

// The runtime sums in blocks of this many elements, which bounds the rounding growth of
// long signals.
constexpr int kSumBlock = 1024;

} // namespace

double sum(const double* x, int n) {
  if (n <= 0)
    return 0.0;
  double total = 0.0;
  for (int start = 0; start < n; start += kSumBlock) {
    const int stop = start + kSumBlock < n ? start + kSumBlock : n;
    double block = x[start];
    for (int k = start + 1; k < stop; ++k)
      block += x[k];
    total = start == 0 ? block : total + block;
  }
  return total;
}

creal_T sum(const creal_T* x, int n) {
  if (n <= 0)
    return creal_T{0.0, 0.0};
  creal_T total{0.0, 0.0};
  for (int start = 0; start < n; start += kSumBlock) {
    const int stop = start + kSumBlock < n ? start + kSumBlock : n;
    creal_T block = x[start];
    for (int k = start + 1; k < stop; ++k) {
      block.re += x[k].re;
      block.im += x[k].im;
    }
    if (start == 0) {
      total = block;
    } else {
      total.re += block.re;
      total.im += block.im;
    }
  }
  return total;
}

double mean(const double* x, int n) {
  if (n <= 0)
    return std::numeric_limits<double>::quiet_NaN();
  return sum(x, n) / static_cast<double>(n);
}

double nanmean(const double* x, int n) {
  double total = 0.0;
  int count = 0;
  for (int k = 0; k < n; ++k) {
    if (!std::isnan(x[k])) {
      total += x[k];
      ++count;
    }
  }
  if (count == 0)
    return std::numeric_limits<double>::quiet_NaN();
  return total / static_cast<double>(count);
}

} // namespace coder
