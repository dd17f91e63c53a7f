// Envelope spectrum for the bearing analysis, MATLAB's envspectrum with the Hilbert method.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB [es, f, env, t] = envspectrum(x, fs) with the defaults the blocks use: method
// Hilbert, band-pass fir1(50, [fs/4, 3fs/8] / (fs/2)) (that is [0.5, 0.75] of Nyquist at any
// rate). Steps: the mean is removed; the band-pass is applied as a zero-phase "same"
// convolution (no delay, zeros beyond the ends); the envelope is the modulus of hilbert of
// that; its mean is removed (env, which therefore has negative values); es is the one-sided
// peak-amplitude spectrum |fft(env)| / n with bins 1..n/2-1 doubled (even n; odd n: all
// bins above DC up to (n-1)/2), of n/2 + 1 (odd n: (n+1)/2) values; f(k) = (k/n) * fs in Hz
// for the same bins; t(k) = k / fs for k = 0..n-1. All four are columns. x is a vector of
// n >= 4 finite samples in g; fewer samples give four empty outputs (MATLAB stops there).
template <int N>
void envspectrum(const array<double, N>& x, double fs, array<double, 1>& es, array<double, 1>& f,
                 array<double, 1>& env, array<double, 1>& t);

} // namespace coder
