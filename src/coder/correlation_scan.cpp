#include "coder/correlation_scan.h"

#include "coder/chirp_z.h"

#include <cmath>
#include <vector>

namespace coder {
namespace {

// Phasor recurrence with periodic re-anchoring. Within a segment of kSegment samples the
// unit phasor p_k = exp(-j 2 pi f (k + first_phase) dt) advances by one complex product
// with w = exp(-j 2 pi f dt); each segment starts from an anchor, so the rounding of the
// recurrence (about one unit in the last place per step, in angle and in modulus) never
// accumulates beyond kSegment steps plus the 15 segment advances between exact anchors. The anchor
// phase and the step are reduced to a fraction of a cycle in extended precision, so that the large
// phases of long signals (2 pi f k dt reaches 1e4 radians) lose nothing to the rounding of the
// product f * k * dt.
//
// Eight frequencies advance side by side as two groups of four lanes (GCC vector extension:
// two SSE2 registers per group, or one AVX register). Their recurrences are independent
// chains that keep the floating-point units busy, and no sum is reassociated: each lane
// sums its own terms in the order k = 0..n-1, as the direct form does.
constexpr int kSegment = 128;
constexpr int kAnchorEvery = 16 * kSegment;
constexpr int kQuads = 2;
constexpr int kLanes = 4 * kQuads;
constexpr long double kTwoPi = 6.283185307179586476925286766559L;

typedef double Quad __attribute__((vector_size(32)));

// On x86-64 the kernel is also built for AVX and chosen at load time where the processor
// has it; plain multiplies and adds only (no fused multiply-add), so both builds give the
// same bits. clang cannot clone function templates, so its builds (the fuzzers) keep the
// default build only.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define VEK_SCAN_CLONES __attribute__((target_clones("avx", "default")))
#else
#define VEK_SCAN_CLONES
#endif

// exp(-j 2 pi * cycles) for cycles = f * dt * k formed in extended precision.
void unitPhasor(double f, double dt, long double k, double* re, double* im) {
  const long double cycles = static_cast<long double>(f) * static_cast<long double>(dt) * k;
  const long double frac = cycles - std::nearbyint(cycles);
  const double angle = static_cast<double>(-kTwoPi * frac);
  *re = std::cos(angle);
  *im = std::sin(angle);
}

// Phasors of the lanes at phase index k, as groups of four.
void lanePhasors(const double* f, int lanes, double dt, long double k, Quad* re, Quad* im) {
  double r[kLanes];
  double i[kLanes];
  for (int l = 0; l < kLanes; ++l) {
    // Idle lanes run on a copy of the first frequency; their sums are discarded.
    unitPhasor(f[l < lanes ? l : 0], dt, k, &r[l], &i[l]);
  }
  for (int h = 0; h < kQuads; ++h) {
    re[h] = Quad{r[4 * h], r[4 * h + 1], r[4 * h + 2], r[4 * h + 3]};
    im[h] = Quad{i[4 * h], i[4 * h + 1], i[4 * h + 2], i[4 * h + 3]};
  }
}

template <bool IsComplex>
VEK_SCAN_CLONES void scanLanes(const double* y, int n, double dt, int first_phase, const double* f,
                               int lanes, creal_T* out) {
  Quad w_re[kQuads];
  Quad w_im[kQuads];
  lanePhasors(f, lanes, dt, 1.0L, w_re, w_im);
  Quad s_re[kQuads];
  Quad s_im[kQuads];
  for (int h = 0; h < kQuads; ++h) {
    s_re[h] = Quad{0.0, 0.0, 0.0, 0.0};
    s_im[h] = Quad{0.0, 0.0, 0.0, 0.0};
  }
  // Segment anchors come from the exact phase every kAnchorEvery samples and, in between,
  // from the previous anchor times the exact advance over one segment: sine and cosine
  // then cost little per term, and the error still restarts at every exact anchor.
  Quad a_re[kQuads];
  Quad a_im[kQuads];
  Quad g_re[kQuads];
  Quad g_im[kQuads];
  lanePhasors(f, lanes, dt, static_cast<long double>(kSegment), g_re, g_im);
  for (int start = 0; start < n; start += kSegment) {
    const int stop = start + kSegment < n ? start + kSegment : n;
    if (start % kAnchorEvery == 0) {
      lanePhasors(f, lanes, dt, static_cast<long double>(start) + first_phase, a_re, a_im);
    }
    Quad p_re[kQuads];
    Quad p_im[kQuads];
    for (int h = 0; h < kQuads; ++h) {
      p_re[h] = a_re[h];
      p_im[h] = a_im[h];
      const Quad next_re = a_re[h] * g_re[h] - a_im[h] * g_im[h];
      a_im[h] = a_re[h] * g_im[h] + a_im[h] * g_re[h];
      a_re[h] = next_re;
    }
    for (int k = start; k < stop; ++k) {
      const double yr_value = IsComplex ? y[2 * k] : y[k];
      const Quad yr = Quad{yr_value, yr_value, yr_value, yr_value};
      for (int h = 0; h < kQuads; ++h) {
        if (IsComplex) {
          const double yi_value = y[2 * k + 1];
          const Quad yi = Quad{yi_value, yi_value, yi_value, yi_value};
          s_re[h] += yr * p_re[h] - yi * p_im[h];
          s_im[h] += yr * p_im[h] + yi * p_re[h];
        } else {
          s_re[h] += yr * p_re[h];
          s_im[h] += yr * p_im[h];
        }
        const Quad next_re = p_re[h] * w_re[h] - p_im[h] * w_im[h];
        p_im[h] = p_re[h] * w_im[h] + p_im[h] * w_re[h];
        p_re[h] = next_re;
      }
    }
  }
  for (int l = 0; l < lanes; ++l) {
    out[l].re = s_re[l / 4][l % 4];
    out[l].im = s_im[l / 4][l % 4];
  }
}

template <bool IsComplex>
void scan(const double* y, int n, double dt, int first_phase, const double* freqs, int m,
          creal_T* out) {
  for (int i = 0; i < m; i += kLanes) {
    const int lanes = m - i < kLanes ? m - i : kLanes;
    if (n <= 0) {
      for (int l = 0; l < lanes; ++l)
        out[i + l] = creal_T{0.0, 0.0};
      continue;
    }
    scanLanes<IsComplex>(y, n, dt, first_phase, freqs + i, lanes, out + i);
  }
}

// The kernel above costs about this per sample and grid point (in lanes of eight), ns.
constexpr double kPhasorNs = 0.55;

// The cost rule: the chirp-z transform where its estimated time is below the kernel's.
bool prefersChirpZ(int n, int m) {
  const double lanes = double((m + kLanes - 1) / kLanes * kLanes);
  return n > 0 && m > 0 && kPhasorNs * n * lanes > internal::chirpZCost(n, m);
}

std::vector<double> gridOf(double f0, double step, int m) {
  std::vector<double> freqs(m > 0 ? static_cast<size_t>(m) : 0U);
  for (int i = 0; i < m; ++i)
    freqs[static_cast<size_t>(i)] = f0 + i * step;
  return freqs;
}

} // namespace

void correlation_scan(const creal_T* y, int n, double dt, int first_phase, const double* freqs,
                      int m, creal_T* out) {
  if (prefersChirpZ(n, m) && internal::chirpZScan(y, n, dt, first_phase, freqs, m, out))
    return;
  internal::correlation_scan_phasor(y, n, dt, first_phase, freqs, m, out);
}

void correlation_scan(const double* y, int n, double dt, int first_phase, const double* freqs,
                      int m, creal_T* out) {
  if (prefersChirpZ(n, m) && internal::chirpZScan(y, n, dt, first_phase, freqs, m, out))
    return;
  scan<false>(y, n, dt, first_phase, freqs, m, out);
}

void internal::correlation_scan_phasor(const creal_T* y, int n, double dt, int first_phase,
                                       const double* freqs, int m, creal_T* out) {
  // creal_T is two adjacent doubles, so the signal is read as an interleaved double array.
  scan<true>(reinterpret_cast<const double*>(y), n, dt, first_phase, freqs, m, out);
}

void correlation_scan_grid(const creal_T* y, int n, double dt, int first_phase, double f0,
                           double step, int m, creal_T* out) {
  const std::vector<double> freqs = gridOf(f0, step, m);
  correlation_scan(y, n, dt, first_phase, freqs.data(), m, out);
}

void correlation_scan_grid(const double* y, int n, double dt, int first_phase, double f0,
                           double step, int m, creal_T* out) {
  const std::vector<double> freqs = gridOf(f0, step, m);
  correlation_scan(y, n, dt, first_phase, freqs.data(), m, out);
}

void correlation_scan_direct(const creal_T* y, int n, double dt, int first_phase,
                             const double* freqs, int m, creal_T* out) {
  for (int i = 0; i < m; ++i) {
    double s_re = 0.0;
    double s_im = 0.0;
    for (int k = 0; k < n; ++k) {
      const double q = 6.2831853071795862 * freqs[i] * (k + first_phase) * dt;
      const double c = std::cos(q);
      const double s = std::sin(q);
      // y * (cos q - j sin q)
      s_re += y[k].re * c + y[k].im * s;
      s_im += y[k].im * c - y[k].re * s;
    }
    out[i].re = s_re;
    out[i].im = s_im;
  }
}

} // namespace coder
