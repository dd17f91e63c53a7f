// Grouping of numeric values, as the trend block groups measurements by running speed.
#pragma once

#include <vector>

namespace coder {

// MATLAB [g, ~, gl] = grp2idx(s) for a numeric vector: the groups are the distinct values of
// s sorted ascending (-0 and 0 are one group); g[i] is the 1-based rank of s[i] among them,
// as a double; a NaN is a missing value: its g is NaN and it forms no group, so the group
// numbers run 1..K without gaps. labels receives the K sorted distinct values.
void grp2idx(const double* s, int n, std::vector<double>& g, std::vector<double>& labels);

} // namespace coder
