// The summation order of MATLAB's sum and mean on long vectors.
#pragma once

namespace coder {
namespace internal {

// sum(x) as the generated code adds it: left to right within consecutive blocks of 1024
// elements, then the block sums left to right (a plain left-to-right sum up to 1024
// elements). 0 for n <= 0.
double blockedSum(const double* x, int n);

// mean(x) = blockedSum(x, n) / n; NaN for n <= 0.
double blockedMean(const double* x, int n);

} // namespace internal
} // namespace coder
