// Total harmonic distortion of a supply voltage or motor current, MATLAB's thd on a time
// signal, with the signal-toolbox helpers it is built from.
#pragma once

#include "coder/coder_array.h"

namespace coder {

// MATLAB signal.internal.getToneFromPSD(Pxx, F, rbw, toneFreq) on a one-sided PSD:
// the peak bin is the first global maximum (has_target false) or the first maximum of the
// three bins around the bin nearest to toneFreq; the tone extends down both slopes while
// the PSD does not rise (equal neighbours keep the roll going); freq is the power-weighted
// centroid of F over the tone, power the rectangle-rule band power of its bins (a single
// interior bin: Pxx * half the distance of its neighbours; else Pxx * mean bin width), and
// at least rbw * Pxx(peak), in which case freq is the peak bin's frequency. A target
// outside [F(0), F(end)] or NaN gives power and freq NaN and left > right. left, right are
// 0-based bin indices of the tone. Pxx and F have the same length >= 1; F ascends.
void getToneFromPSD(const array<double, 1>& Pxx, const array<double, 1>& F, double rbw,
                    bool has_target, double toneFreq, double& power, double& freq, int& left,
                    int& right);

// MATLAB computeTHD(Pxx, F, rbw, n) of thd with 'omitaliases': the DC bin is doubled, the DC
// tone is located and zeroed; the fundamental is the global maximum tone; harmonics i = 2..n
// are read at i * F1 (those beyond the last bin are NaN and left out of the sum). Returns
// the distortion 10 log10(sum P2..Pn / P1) in dBc (-Inf when no harmonic is found, NaN for
// a signal without power); harmpow = 10 log10(P1..Pn) in dB, harmfreq = F1..Fn in Hz, n
// values each (NaN where not found). Pxx is modified (DC zeroed).
double computeTHD(array<double, 1>& Pxx, const array<double, 1>& F, double rbw, int n,
                  array<double, 1>& harmpow, array<double, 1>& harmfreq);

// MATLAB [r, harmpow, harmfreq] = thd(x, fs, n) of a real vector: the mean is removed, the
// one-sided PSD is the periodogram with kaiser(length(x), 38) and nfft = length(x) at fs,
// the resolution bandwidth is the window's equivalent noise bandwidth
// (sum(w.^2) / sum(w)^2) * fs, and computeTHD reads n tones including the fundamental.
// r is in dBc: the percentage of the blocks is 10^(r/20) * 100. harmfreq(0) is the
// fundamental's frequency in Hz. Fewer than 2 samples or n < 2 give NaN and empty lists.
template <int N>
double thd(const array<double, N>& x, double fs, int n, array<double, 1>& harmpow,
           array<double, 1>& harmfreq);

// The same call under the name of the time-signal branch of thd.
template <int N>
double timeTHD(const array<double, N>& x, double fs, int n, array<double, 1>& harmpow,
               array<double, 1>& harmfreq) {
  return thd(x, fs, n, harmpow, harmfreq);
}

} // namespace coder
