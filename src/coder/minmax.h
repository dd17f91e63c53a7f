// Largest and smallest element of a vector, as MATLAB max and min find them.
#pragma once

#include "coder/rtwtypes.h"

namespace coder {
namespace internal {

// MATLAB [m, i] = max(x) of a real vector: NaN elements are skipped, the first of equal
// values wins. *index receives the 1-based position (when index is not null). All NaN:
// x[0] and index 1. n <= 0: NaN and index 0.
double maximum(const double* x, int n, int* index);
// MATLAB [m, i] = min(x), with the same rules.
double minimum(const double* x, int n, int* index);

// MATLAB [m, i] = max(z) of a complex vector: ordered by relop (modulus, then phase
// angle, with the runtime's tolerance tests), NaN elements skipped, first of equals wins.
creal_T maximum(const creal_T* x, int n, int* index);
// MATLAB [m, i] = min(z) of a complex vector, the same order reversed.
creal_T minimum(const creal_T* x, int n, int* index);

} // namespace internal
} // namespace coder
