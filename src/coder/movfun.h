// Moving statistics over trailing windows of a history: each output looks back, never
// ahead, as a value that is known at its time can only depend on the past.
#pragma once

namespace coder {

// MATLAB movmean(x, [back 0]) with the defaults 'shrink' and 'includenan': out[i] is the
// mean of x[max(0, i-back)] .. x[i], summed left to right per window (no running sum, so
// results match a direct per-window sum bit for bit); a NaN inside the window gives NaN.
// The trend block uses back = 5. out receives n values.
void movmean(const double* x, int n, int back, double* out);

// MATLAB movmedian(x, [back 0]), 'shrink', 'includenan': out[i] is the median (coder::median
// rule for even counts) of x[max(0, i-back)] .. x[i]; a NaN in the window gives NaN. The
// median block uses back = 9.
void movmedian(const double* x, int n, int back, double* out);

} // namespace coder
