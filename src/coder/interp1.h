// Linear interpolation of a sampled history onto other abscissae.
#pragma once

namespace coder {

// MATLAB vq = interp1(x, v, xq) with the default 'linear' method: x of n distinct values,
// increasing or decreasing (a decreasing x is flipped with v). A query that is NaN or
// outside [min(x), max(x)] gives NaN (no extrapolation); xq == x(end) falls in the last
// interval. With r = (xq - x(lo)) / (x(lo+1) - x(lo)): r == 0 gives v(lo), r == 1 gives
// v(lo+1), equal end values give v(lo), otherwise (1 - r)*v(lo) + r*v(lo+1). n < 2 gives NaN
// for every query. vq receives nq values.
void interp1(const double* x, const double* v, int n, const double* xq, int nq, double* vq);

} // namespace coder
