// One-sided power spectral density estimates, MATLAB's periodogram for real signals.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB [Pxx, F] = periodogram(x, w, nfft, fs, 'psd') of a real vector x with a window w
// of the same length: X = fft(x .* w, nfft); Pxx(k) = |X(k)|^2 / sum(w.^2), doubled for all
// bins but DC (and Nyquist for even nfft), then divided by fs: power per Hz, bins
// 0..floor(nfft/2). F(k) = (fs / nfft) * k, except that the last point is exactly fs/2 for
// even nfft and fs/2 - fs/(2 nfft) for odd. Columns of floor(nfft/2) + 1 values; a window of
// another length than x, or nfft <= 0, gives empty outputs.
template <int N>
void periodogram(const array<double, N>& x, const array<double, 1>& w, int nfft, double fs,
                 array<double, 1>& Pxx, array<double, 1>& F);

// MATLAB [Pxx, w] = periodogram(x): rectangular window, nfft = max(256, 2^nextpow2(n)),
// power per radian per sample (the formula above with fs = 2 pi), w in rad/sample.
template <int N>
void periodogram(const array<double, N>& x, array<double, 1>& Pxx, array<double, 1>& w);

} // namespace coder
