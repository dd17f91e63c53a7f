// MATLAB colon ranges a:d:b of doubles, as the frequency scans and the trend forecast build
// them.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// y = a:d:b as a row (1, n). n = floor((b - a)/d + 0.5) + 1; when the last point
// a + (n-1)*d lies within 4.440892098500626e-16 * max(|a|, |b|) of b it is b exactly, and
// when it overshoots b by more, n drops by one. Elements are built from both ends: the
// first half as a + k*d, the second as last - (n-1-k)*d, and the single centre of an odd
// count as (a + last)/2. A NaN in a, d or b gives one NaN; d == 0, or b on the wrong side of
// a, gives no element; a == b infinite gives one NaN. A range that cannot be stored (an
// infinite bound or more than 2^31-1 elements) gives no element.
void eml_float_colon(double a, double d, double b, array<double, 2>& y);

} // namespace coder
