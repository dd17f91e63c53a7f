// Ordering of complex values as MATLAB max and min order them, with the tolerance tests of
// the numeric runtime. Every complex maximum search of the blocks (the frequency scans)
// goes through relop, so the first of equal candidates always wins.
#pragma once

#include "coder/rtwtypes.h"

namespace coder {
namespace internal {

// True when x and y are equal to within the spacing of doubles at |y|/2 (2^(e-53) with e
// from frexp(|y|/2); 4.9406564584124654e-324 for |y|/2 below 2.2250738585072014e-308), or
// when both are infinities of the same sign.
bool iseq(double x, double y);

// Tie-broken "a < b" of MATLAB max on complex values: a NaN in b gives false, else a NaN in
// a gives true; then moduli (by rt_hypotd_snf, halved when a component is above
// 8.988465674311579e307), then angles (rt_atan2d_snf), each compared only when not iseq;
// values equal in both are ordered by the component that grows with the angle, and are
// equal (false) when that component is iseq too.
bool relop(const creal_T& a, const creal_T& b);

} // namespace internal
} // namespace coder
