// Local quadratic regression of a history over its time stamps, as the trend block smooths a
// parameter's moving mean before it counts rises and falls.
#pragma once

namespace coder {

// MATLAB s = smoothdata(a, 'loess', 'SamplePoints', t) with the automatic window and the
// default 'omitnan': a and t of n values, t increasing. Each output is the weighted
// least-squares quadratic in (t(j) - t(i)) through the samples of point i's window,
// evaluated at t(i), with tricube weights scaled by the largest |t(j) - t(i)| in the window.
// See localRegression for the windows. n < 2 copies a.
void smoothdata(const double* a, const double* t, int n, double* s);

namespace internal {

// smoothdata's automatic window (chooseWindowSize, smoothing factor 0.25) as a time span:
// for exactly uniform t (every difference bit-equal) the spectral heuristic on a times the
// step; otherwise the heuristic on a filled (NaN by pchip over t) and resampled by pchip
// onto linspace(t(1), t(n), n), times (t(n) - t(1)) / (n - 1). The heuristic: remove the
// mean; P = |fft(a, 2n)|^2 over bins 0..n-1; rho = first bin (1-based) where the cumulative
// share of P exceeds 0.75; window = ceil(sqrt((0.44294 * 2n / max(rho - 1, 1))^2 + 1)),
// or 1 when no bin exceeds it (constant data). 0 becomes realmin, a non-finite value realmax.
// Time stamps that are not strictly increasing skip the resampling (pchip needs distinct
// abscissae) and scale the heuristic on a by the mean step.
double chooseWindowSize(const double* a, const double* t, int n);

// The regression with a given window span (seconds, like t), NaN samples omitted:
// - Exactly uniform t without NaN: w = min(fix(window/dt), n) samples; w < 2 copies a. Points
//   with a full centred window use offsets -h..h, h = floor(w/2); the first ceil(w/2) points
//   use the first w samples and the last ceil(w/2) the last w samples (shifted, not
//   truncated).
// - Otherwise: sample j is in point i's window when t(i) - w/2 <= t(j) < t(i) + w/2; when that
//   span reaches before t(1) the window is [t(1), t(1) + w) instead, when it reaches beyond
//   t(n) it is (t(n) - w, t(n)]: the same shift to the ends, in time. On uniform stamps this
//   selects exactly the samples of the uniform rule. When 2 * min(diff t) > w every window
//   holds one point and s = a.
// - A window with at most three samples of non-zero weight, the point itself among them, is
//   fitted exactly by the quadratic: s(i) = a(i). A window without valid sample gives NaN.
// Each fit comes from the weighted moments of its window, drawn from running sums that
// neighbouring points share, so that a point costs a few hundred operations whatever its
// window; the results agree with localRegressionDirect to rounding.
void localRegression(const double* a, const double* t, int n, double window, double* s);

// The same regression solved by least squares (pivoted QR) once per point over its members:
// n times the window in work. Histories whose stamps are out of order or not finite, or with
// infinite values, take this path from localRegression.
void localRegressionDirect(const double* a, const double* t, int n, double window, double* s);

} // namespace internal
} // namespace coder
