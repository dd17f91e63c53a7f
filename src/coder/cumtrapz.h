// Cumulative trapezoidal integration, MATLAB's cumtrapz with explicit abscissae.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB z = cumtrapz(t, y) of vectors of equal length n: z(1) = 0 and
// z(k) = z(k-1) + ((t(k) - t(k-1)) / 2) * (y(k-1) + y(k)): the velocity from an
// acceleration, the displacement from a velocity. The result has the shape of y; when t is
// shorter than y the missing steps count as NaN (MATLAB stops with an error there).
template <int NT, int NY>
void cumtrapz(const array<double, NT>& t, const array<double, NY>& y, array<double, NY>& z);

} // namespace coder
