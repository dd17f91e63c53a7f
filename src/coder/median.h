// The median of a vector, with the averaging rule of the numeric runtime.
#pragma once

namespace coder {

// MATLAB median(x) of a vector, 'includenan': NaN when any element is NaN or n <= 0. Odd
// count: the middle value. Even count with middle values lo <= hi: (lo + hi) / 2 when they
// differ in sign or hi is infinite, otherwise hi + (lo - hi) / 2, which cannot overflow.
double median(const double* x, int n);

// The even-count rule above for two middle values lo <= hi, shared with the moving median.
double medianOfPair(double lo, double hi);

} // namespace coder
