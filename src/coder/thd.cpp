#include "coder/thd.h"

#include "coder/periodogram.h"
#include "coder/sum.h"
#include "coder/windows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace coder {

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Band power of bins l..r by the rectangle rule: the widths are the bin spacings, with one
// extra average width placed at the end when the band starts at 0 Hz and at the start
// otherwise.
double rectangleBandPower(const array<double, 1>& Pxx, const array<double, 1>& F, int l, int r) {
  const double extra = (F[r] - F[l]) / static_cast<double>(r - l);
  double power = 0.0;
  if (F[l] == 0.0) {
    for (int k = l; k < r; ++k)
      power += (F[k + 1] - F[k]) * Pxx[k];
    power += extra * Pxx[r];
  } else {
    power += extra * Pxx[l];
    for (int k = l + 1; k <= r; ++k)
      power += (F[k] - F[k - 1]) * Pxx[k];
  }
  return power;
}

} // namespace

void getToneFromPSD(const array<double, 1>& Pxx, const array<double, 1>& F, double rbw,
                    bool has_target, double toneFreq, double& power, double& freq, int& left,
                    int& right) {
  const int n = Pxx.numel();
  power = kNaN;
  freq = kNaN;
  left = 0;
  right = -1;
  if (n == 0 || F.numel() != n)
    return;
  int idx = 0;
  if (!has_target) {
    for (int k = 1; k < n; ++k) {
      if (Pxx[k] > Pxx[idx])
        idx = k;
    }
  } else {
    if (!(toneFreq >= F[0] && toneFreq <= F[n - 1]))
      return;
    // On an ascending grid the distance to the tone falls up to the first bin at or above it
    // and rises from there: the nearest bin is that one or the last below it, the first of
    // equal distances winning as in a pass over every bin. The spectra of long records have
    // thousands of bins and each of forty harmonics looks one up.
    int nearest = int(std::lower_bound(F.data(), F.data() + n, toneFreq) - F.data());
    if (nearest > 0) {
      int below = nearest - 1;
      const double d = std::fabs(F[below] - toneFreq);
      while (below > 0 && std::fabs(F[below - 1] - toneFreq) == d)
        --below;
      if (nearest == n || d <= std::fabs(F[nearest] - toneFreq))
        nearest = below;
    }
    const int lo = nearest > 0 ? nearest - 1 : 0;
    const int hi = nearest + 1 < n ? nearest + 1 : n - 1;
    idx = lo;
    for (int k = lo + 1; k <= hi; ++k) {
      if (Pxx[k] > Pxx[idx])
        idx = k;
    }
  }
  // Roll down both slopes of the tone while the PSD keeps falling or stays level.
  int l = idx - 1;
  while (l >= 0 && Pxx[l] <= Pxx[l + 1])
    --l;
  int r = idx + 1;
  while (r < n && Pxx[r - 1] >= Pxx[r])
    ++r;
  left = l + 1;
  right = r - 1;

  double weighted = 0.0;
  double total = 0.0;
  for (int k = left; k <= right; ++k) {
    weighted += F[k] * Pxx[k];
    total += Pxx[k];
  }
  freq = weighted / total;
  if (left < right) {
    power = rectangleBandPower(Pxx, F, left, right);
  } else if (right > 0 && right < n - 1) {
    power = Pxx[right] * (F[right + 1] - F[right - 1]) / 2.0;
  } else {
    double widths = 0.0;
    for (int k = 1; k < n; ++k)
      widths += F[k] - F[k - 1];
    power = Pxx[right] * (widths / static_cast<double>(n - 1));
  }
  // A tone is never narrower than the window's noise bandwidth.
  if (power < rbw * Pxx[idx]) {
    power = rbw * Pxx[idx];
    freq = F[idx];
  }
}

double computeTHD(array<double, 1>& Pxx, const array<double, 1>& F, double rbw, int n,
                  array<double, 1>& harmpow, array<double, 1>& harmfreq) {
  if (n < 1)
    n = 0;
  harmpow.set_size(n);
  harmfreq.set_size(n);
  if (Pxx.numel() == 0 || n == 0) {
    for (int i = 0; i < n; ++i) {
      harmpow[i] = kNaN;
      harmfreq[i] = kNaN;
    }
    return kNaN;
  }
  double power = 0.0;
  double freq = 0.0;
  int left = 0;
  int right = -1;
  // The DC bin carries half the weight of the others in a one-sided PSD; doubled, the
  // residual DC skirt is found like any other tone and removed.
  Pxx[0] = 2.0 * Pxx[0];
  getToneFromPSD(Pxx, F, rbw, true, 0.0, power, freq, left, right);
  for (int k = left; k <= right; ++k)
    Pxx[k] = 0.0;

  double p1 = 0.0;
  double f1 = 0.0;
  getToneFromPSD(Pxx, F, rbw, false, 0.0, p1, f1, left, right);
  harmpow[0] = 10.0 * std::log10(p1);
  harmfreq[0] = f1;
  double harmonics = 0.0;
  for (int i = 2; i <= n; ++i) {
    double pi = 0.0;
    double fi = 0.0;
    getToneFromPSD(Pxx, F, rbw, true, static_cast<double>(i) * f1, pi, fi, left, right);
    harmpow[i - 1] = 10.0 * std::log10(pi);
    harmfreq[i - 1] = fi;
    if (!std::isnan(pi))
      harmonics += pi;
  }
  return 10.0 * std::log10(harmonics / p1);
}

template <int N>
double thd(const array<double, N>& x, double fs, int n, array<double, 1>& harmpow,
           array<double, 1>& harmfreq) {
  const int len = x.numel();
  if (len < 2 || n < 2) {
    harmpow.set_size(0);
    harmfreq.set_size(0);
    return kNaN;
  }
  array<double, 1> centred;
  centred.set_size(len);
  const double mean = coder::mean(x.data(), len);
  for (int k = 0; k < len; ++k)
    centred[k] = x[k] - mean;
  array<double, 1> w;
  kaiser(len, 38.0, w);
  // The equivalent noise bandwidth with MATLAB's blocked sums over the window.
  std::vector<double> squares(static_cast<size_t>(len));
  for (int k = 0; k < len; ++k)
    squares[static_cast<size_t>(k)] = w[k] * w[k];
  const double sum_sq = coder::sum(squares.data(), len);
  const double sum = coder::sum(w.data(), len);
  const double rbw = sum_sq / (sum * sum) * fs;
  array<double, 1> Pxx;
  array<double, 1> F;
  periodogram(centred, w, len, fs, Pxx, F);
  return computeTHD(Pxx, F, rbw, n, harmpow, harmfreq);
}

template double thd<1>(const array<double, 1>&, double, int, array<double, 1>&, array<double, 1>&);
template double thd<2>(const array<double, 2>&, double, int, array<double, 1>&, array<double, 1>&);

} // namespace coder
