// Least-squares linear-phase FIR design, MATLAB's firls, for the band filters of the rotor
// frequency search and the correlation stages, and the designs built on it (fir1).
#pragma once

#include "coder/coder_array.h"

#include <memory>
#include <vector>

namespace coder {

// MATLAB h = firls(order, f, a) with default weights, for an even order (type I, order + 1
// symmetric taps, returned as a row): f holds the band edges as fractions of the Nyquist
// frequency (0..1, an even count, pairs are bands), a the desired amplitude at each edge.
// The cosine coefficients solve the normal equations G a = b of the least-squared error
// over the bands by LU with partial pivoting, as the generated code does; when no band has
// a gap to the next one the closed form a = 4b (a0 halved) is used instead, as in MATLAB.
// Designs are cached per (order, edges, amplitudes) (up to 256 of them) and never change
// once made, so a repeated call costs a lookup. An odd or negative order, or an odd edge count,
// gives an empty row (MATLAB's type II designs do not occur in the blocks).
void firls(int order, const std::vector<double>& f, const std::vector<double>& a,
           array<double, 2>& h);

// The same design as a shared immutable tap vector, for callers that filter many signals.
std::shared_ptr<const std::vector<double>> firlsTaps(int order, const std::vector<double>& f,
                                                     const std::vector<double>& a);

// MATLAB firls(500, f, [0 0 1 1 0 0]): the 501-tap band-pass with the six edges f.
// The normal equations of this order are ill-conditioned (condition near 1e11 for a
// 2-unit pass band): taps agree with other solvers to about 1e-6 relative only.
void firls(const double f[6], array<double, 2>& h);

// MATLAB firls(298, f, [0 0 1 1 0 0]): the 299-tap band-pass with the six edges f.
void b_firls(const double f[6], array<double, 2>& h);

// MATLAB b = fir1(order, [w1 w2]): the band-pass between w1 and w2 (fractions of Nyquist)
// by the window method: the ideal truncated response (firls with edges 0 w1 w1 w2 w2 1 and
// amplitudes 0 0 1 1 0 0, closed form) times a symmetric Hamming window of order + 1 points
// (0.54 - 0.46 cos(2 pi k / order), first half mirrored), scaled to unit gain at the band
// centre (w1 + w2)/2. A row of order + 1 taps; an odd order gives an empty row.
void fir1(int order, double w1, double w2, array<double, 2>& b);

namespace internal {
// The design itself, without the cache (for measuring what the cache saves).
std::vector<double> firlsDesign(int order, const std::vector<double>& f,
                                const std::vector<double>& a);
} // namespace internal

} // namespace coder
