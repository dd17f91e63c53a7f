// Spread and shape statistics of a signal: standard deviation, skewness, kurtosis and the
// peak-to-peak range, as the vibration blocks report them for acceleration, velocity and
// displacement.
#pragma once

namespace coder {

// MATLAB std(x) (the blocks' b_std): normalised by n - 1, 'includenan'. The mean is
// sum(x)/n in the blocked order of coder::sum; the deviations |x - mean| enter a scaled
// 2-norm (the xnrm2 recurrence from scale 3.3121686421112381e-170), divided by sqrt(n - 1).
// n == 1 gives 0 (NaN for a non-finite element); n <= 0 gives NaN; any NaN gives NaN.
double b_std(const double* x, int n);

// MATLAB skewness(x, 1): biased, NaN elements are removed first. With m the mean of the
// others and d = x - m: mean(d.^3) / mean(d.^2)^1.5. Constant data gives NaN (0/0), as do
// fewer than one non-NaN element.
double skewness(const double* x, int n);

// MATLAB kurtosis(x, 1): biased, NaN removed: mean(d.^4) / mean(d.^2)^2 (3 for a normal
// distribution, no excess subtracted). Constant data gives NaN.
double kurtosis(const double* x, int n);

// MATLAB peak2peak(x) of a vector: max(x) - min(x), NaN elements skipped; NaN when all are
// NaN or n <= 0.
double peak2peak(const double* x, int n);

} // namespace coder
