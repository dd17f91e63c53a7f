// Sorting: the ascending sort of small vectors and sortrows of the peak tables.
#pragma once

#include <vector>

namespace coder {
namespace internal {

// MATLAB sort(x) ascending, in place, stable; NaN elements go last. When index is not
// null it receives the 1-based original positions (MATLAB's second output).
void sort(double* x, int n, int* index);

} // namespace internal

// MATLAB [B, idx] = sortrows(A, -1) for an m-by-c matrix in column-major order: rows by the
// first column, descending, stable (equal keys keep their order); NaN keys come first,
// then +Inf down to -Inf. b receives the sorted matrix (m*c values, column-major) and idx
// the 1-based original row of each sorted row (when not null).
void sortrows(const double* a, int m, int c, double* b, int* idx);

} // namespace coder
