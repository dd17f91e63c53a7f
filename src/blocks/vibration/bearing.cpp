#include "blocks/vibration/bearing.h"

#include "blocks/vibration/scans.h"
#include "coder/envspectrum.h"
#include "coder/hilbert.h"

#include <algorithm>
#include <cmath>

namespace vibration {
namespace {

// The highest envelope bin strictly within five bins of f; NaN when none is there.
void envelopeLine(const coder::array<double, 1>& E, const coder::array<double, 1>& G, double f,
                  double& amplitude, double& frequency) {
  const double df = G[1] - G[0], lo = f - 5.0 * df, hi = f + 5.0 * df;
  int position = 0; // 1-based within the selected bins
  for (int k = 0; k < G.numel(); ++k) {
    if (G[k] > lo && G[k] < hi) {
      ++position;
      // the first of equal maxima wins; NaN never does
      if (position == 1 || (std::isnan(amplitude) && !std::isnan(E[k])) || E[k] > amplitude) {
        amplitude = E[k];
        frequency = position * df + lo;
      }
    }
  }
}

} // namespace

FaultFrequencies faultFrequencies(const BearingGeometry& b, double fr) {
  const double c = std::cos(b.angle), r = b.ball / b.pitch;
  return {(1.0 + r * c) * (b.balls / 2.0) * fr, (1.0 - r * c) * (b.balls / 2.0) * fr,
          (1.0 - r * c) * 0.5 * fr, (1.0 - c * c * r) * (b.pitch / b.ball) * fr};
}

BearingLines bearingScans(const creal_T* z, int n, double fs, const FaultFrequencies& f) {
  BearingLines out;
  const double lines[4] = {f.bpfo, f.bpfi, f.ftf, f.bsf};
  double* amplitude[4] = {&out.bpfo, &out.bpfi, &out.ftf, &out.bsf};
  double* frequency[4] = {&out.f_bpfo, &out.f_bpfi, &out.f_ftf, &out.f_bsf};
  for (int i = 0; i < 4; ++i) {
    const Scan s = scanRange(z, n, 1.0 / fs, lines[i] - 1.0, 0.01, lines[i] + 1.0);
    if (!s.sums.empty()) {
      *amplitude[i] = s.modulus;
      *frequency[i] = s.best * 0.01 + lines[i] - 1.0;
    }
  }
  return out;
}

BearingLines vibro_rms_bpfio_1(double fs, int n, double fr, const BearingGeometry& bearing,
                               const coder::array<double, 2>& x, BearingMode mode,
                               double envelope_rate) {
  const FaultFrequencies f = faultFrequencies(bearing, fr);
  BearingLines out;
  if (mode == BearingMode::filter_cor) {
    coder::array<creal_T, 2> z;
    coder::hilbert(x, z);
    return bearingScans(z.data(), std::min(n, z.numel()), fs, f);
  }
  coder::array<double, 1> E, G, envelope, t;
  coder::envspectrum(x, envelope_rate, E, G, envelope, t);
  if (G.numel() < 2) {
    return out;
  }
  envelopeLine(E, G, f.bpfi, out.bpfi, out.f_bpfi);
  envelopeLine(E, G, f.bpfo, out.bpfo, out.f_bpfo);
  envelopeLine(E, G, f.ftf, out.ftf, out.f_ftf);
  envelopeLine(E, G, f.bsf, out.bsf, out.f_bsf);
  return out;
}

} // namespace vibration
