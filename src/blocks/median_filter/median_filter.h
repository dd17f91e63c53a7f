// The median block: a parameter's history smoothed by a trailing running median, which
// removes single outliers of a measurement series without shifting its level.
#pragma once

#include "coder/coder_array.h"

namespace median_filter_ns {

// MATLAB y = movmedian(x, [9 0]) with 'shrink' and 'includenan' over a 1-by-n row, oldest
// value first: y[i] is the median of x[max(0, i-9)] .. x[i], never looking ahead; a NaN
// makes every output NaN while it is inside the window (ten steps). y gets x's size; an
// empty x gives an empty y.
void median_filter(const coder::array<double, 2>& x, coder::array<double, 2>& y);

} // namespace median_filter_ns
