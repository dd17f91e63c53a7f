// Shape-preserving piecewise cubic interpolation, as smoothdata uses it to fill and resample
// a history before it chooses its window.
#pragma once

namespace coder {

// MATLAB vq = pchip(x, v, xq) for strictly increasing x of n >= 2 points: Fritsch-Carlson
// slopes (weighted harmonic mean of neighbouring secants where they agree in sign, else 0;
// MATLAB's three-point end slopes, clipped to keep the shape), evaluated per piece as
// ((c1*s + c2)*s + c3)*s + v(j) with s = xq - x(j). Queries beyond the ends extrapolate with
// the end pieces; a NaN query gives NaN. n == 2 is the straight line; n == 1 gives v(1) and
// n <= 0 NaN. vq receives nq values.
void pchip(const double* x, const double* v, int n, const double* xq, int nq, double* vq);

} // namespace coder
