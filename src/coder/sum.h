// Sums and means of a vector with the blocked order of the numeric runtime.
#pragma once

#include "coder/rtwtypes.h"

namespace coder {

// MATLAB sum(x) of a real vector of n elements (the blocks' combineVectorElements): plain
// left-to-right sums over consecutive blocks of 1024 elements, the block sums then added
// left to right. n <= 0 gives 0. NaN and infinities propagate as in any sum.
double sum(const double* x, int n);

// MATLAB sum(x) of a complex row, real and imaginary parts in the same blocked order.
creal_T sum(const creal_T* x, int n);

// MATLAB mean(x) of a real vector: sum(x) / n; n <= 0 gives NaN (0/0).
double mean(const double* x, int n);

// MATLAB nanmean(x): the mean over the elements that are not NaN, in their order; NaN when
// every element is NaN or n <= 0.
double nanmean(const double* x, int n);

} // namespace coder
