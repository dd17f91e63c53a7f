// Removal of the best straight line, MATLAB's detrend in its default form.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB y = detrend(x) of a vector of n samples: the least-squares line over the sample
// points s = 0..n-1, with the regressors s/(n-1) and 1 solved by Householder QR with column
// pivoting (a basic solution when rank-deficient), is subtracted. n = 1 gives 0; any NaN
// makes every output NaN; infinities give NaN where the fit breaks. The result has the
// shape of x; x may be y.
template <int N> void detrend(const array<double, N>& x, array<double, N>& y);

} // namespace coder
