// Local maxima of a sequence, as the scans use them to tell a spectral line from a slope.
#pragma once

#include <vector>

namespace coder {

// MATLAB [pks, locs] = findpeaks(y, 'SortStr', 'descend') with no other option (coder's
// one-pass getAllPeaksCodegen). A finite peak stands strictly above its left neighbour and
// strictly above the next different value on its right; a plateau is one peak at its first
// sample; the first and last samples are never finite peaks; a NaN counts as +Inf in the
// scan (so its neighbours are no peaks) and is never reported; every +Inf sample is a peak;
// -Inf is an ordinary very low value. Peaks are ordered by value descending, stably (equal
// values keep ascending position). locs are 1-based positions as doubles; pks = y(locs).
// Fewer than 3 samples are accepted here and simply give their +Inf samples, if any.
void findpeaks(const double* y, int n, std::vector<double>& pks, std::vector<double>& locs);

} // namespace coder
