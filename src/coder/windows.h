// Window functions of MATLAB's signal toolbox as the blocks call them. Each returns a
// column (rank 1) of n values.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB w = tukeywin(n, 0): a taper ratio of 0 is the rectangular window, n ones. The
// blocks keep it as a stage of their chains. n <= 0 gives an empty column.
void tukeywin(int n, array<double, 1>& w);

// MATLAB w = hanning(n), symmetric: w(k) = 0.5 * (1 - cos(2 pi k / (n + 1))), k = 1..n,
// without the zero end points of hann. The first half is computed and mirrored, so the
// window is exactly symmetric; n = 1 gives 1, n <= 0 an empty column.
void hanning(int n, array<double, 1>& w);

// MATLAB w = kaiser(n, beta): w(k) = I0(beta * sqrt(1 - (2 x / (n-1))^2)) / I0(beta), x the
// distance of sample k from the centre, I0 the modified Bessel function of the first kind
// of order 0. Half is computed and mirrored; n = 1 gives 1, n <= 0 an empty column. The THD
// measurement uses beta = 38. Windows are kept once made (up to 32 of them), so a repeated
// length costs a copy.
void kaiser(int n, double beta, array<double, 1>& w);

namespace internal {
// I0(x), the modified Bessel function of the first kind of order 0, for finite x, to a few
// units of double rounding: power series below 30 in magnitude, large-argument asymptotic
// expansion above.
double besselI0(double x);
} // namespace internal

} // namespace coder
