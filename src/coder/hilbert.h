// Analytic signal by MATLAB's hilbert.
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

namespace coder {

// MATLAB z = hilbert(x) of a real vector of n samples: X = fft(x) with no padding; bins
// are weighted 1 at DC (and at n/2 for even n), 2 for k = 1..ceil(n/2)-1 and 0 above;
// z = ifft(weighted X). real(z) is x to rounding, imag(z) the Hilbert transform. The result
// has the shape of x (a row stays a row). n <= 2 gives x with zero imaginary parts.
template <int N> void hilbert(const array<double, N>& x, array<creal_T, N>& z);

} // namespace coder
