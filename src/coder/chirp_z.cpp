#include "coder/chirp_z.h"

#include "coder/FftPlanCache.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <list>
#include <memory>
#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

namespace coder {
namespace internal {
namespace {

// Points off the grid are reached to first order while the largest turn of a term, 2 pi
// times the offset in cycles times the last phase index, stays below kFirstOrderTurn (the
// second order, half its square, is then below 1e-16); below kNegligibleTurn the turn moves
// no sum by more than that fraction of sum|y|, and is left out.
constexpr double kFirstOrderTurn = 1e-8, kNegligibleTurn = 1e-15;

// Error-free products (Dekker): a * b = p + e exactly. This file is compiled without
// fused multiply-add contraction, on which the splitting depends.
void twoProduct(double a, double b, double* p, double* e) {
  constexpr double kSplitter = 134217729.0; // 2^27 + 1
  const double ca = kSplitter * a, cb = kSplitter * b;
  const double ah = ca - (ca - a), al = a - ah;
  const double bh = cb - (cb - b), bl = b - bh;
  *p = a * b;
  *e = ((ah * bh - *p) + ah * bl + al * bh) + al * bl;
}

// Round to the nearest integer, ties to even, for |x| < 2^51: exact, and free of the
// library call that nearbyint costs in a loop.
double roundNearest(double x) {
  constexpr double kShifter = 6755399441055744.0; // 1.5 * 2^52
  return (x + kShifter) - kShifter;
}

// The fraction of a cycle of r * q, in [-0.5, 0.5], for a q that is an exact double (an
// integer or half an integer) and |r.hi * q| < 2^50.
inline double fractionOf(const Cycles& r, double q) {
  double p, e;
  twoProduct(r.hi, q, &p, &e);
  const double whole = p - roundNearest(p); // exact
  const double t = whole + (e + r.lo * q);
  return t - roundNearest(t);
}

struct InverseFactorials {
  double v[24];
  constexpr InverseFactorials() : v() {
    double factorial = 1.0;
    for (int j = 0; j < 24; ++j) {
      factorial *= j > 0 ? j : 1;
      v[j] = 1.0 / factorial;
    }
  }
  constexpr double operator[](int j) const { return v[j]; }
};
constexpr InverseFactorials kInverseFactorials;

// cos(2 pi c[k]) and sin(2 pi c[k]) for c[k] in [-0.5, 0.5], k < count; the cosines replace
// the fractions. The half cycle is taken off exactly and the rest, within pi / 2, goes
// through the Taylor series to the 23rd power (truncation below 1e-19): the values are
// correct to a few units of 1e-16. No branches and no library calls, so that the loop runs
// in vector registers.
void unitCircles(double* c, double* sine, int count) {
  constexpr double kTwoPi = 6.283185307179586;
  for (int k = 0; k < count; ++k) {
    const double half = roundNearest(2.0 * c[k]);
    const double x = (c[k] - 0.5 * half) * kTwoPi, x2 = x * x;
    // Horner from the 23rd and 22nd powers down: sin x = x (1 - x2 s), cos x = 1 - x2 q
    double s = kInverseFactorials[23], q = kInverseFactorials[22];
    for (int j = 21; j >= 3; j -= 2) {
      s = kInverseFactorials[j] - x2 * s;
      q = kInverseFactorials[j - 1] - x2 * q;
    }
    const double sign = 1.0 - 2.0 * half * half; // a half turn negates both
    sine[k] = sign * (x * (1.0 - x2 * s));
    c[k] = sign * (1.0 - x2 * q);
  }
}

// Phases are only ever needed modulo one cycle: a modulo 1 (it multiplies integers) and s
// modulo 2 (it multiplies halves of squares), which keeps every product below 2^50.
Cycles reduced(Cycles r, double period) {
  const double turns = period * roundNearest(r.hi / period);
  return Cycles{r.hi - turns, r.lo};
}

// exp(-j 2 pi c[k]) for the fractions c[0..count), as complex values.
std::vector<creal_T> phasors(std::vector<double>& c, int count) {
  std::vector<double> sine(static_cast<size_t>(count));
  unitCircles(c.data(), sine.data(), count);
  std::vector<creal_T> v(static_cast<size_t>(count));
  for (size_t k = 0; k < v.size(); ++k)
    v[k] = {c[k], -sine[k]};
  return v;
}

// Everything of a transform that depends on the grid's step, the first phase and the lengths
// only, not on the signal or where the grid starts: the chirps exp(-j 2 pi s K^2 / 2) of the
// samples, K = k + p, and exp(-j 2 pi s i^2 / 2) of the points the length allows, and the
// transformed kernel. The scans of one record at one step (the four bearing lines of every
// axis, a harmonic's window on each axis) share them.
struct Chirps {
  std::vector<creal_T> samples, points;
  FftBuffer<fftw_complex> kernel;
  explicit Chirps(size_t length) : kernel(length) {}
};

// Chirps are kept up to kKeptPoints values in all, the least recently used given up first;
// they are a pure function of their key, so keeping them changes no result.
class ChirpCache {
public:
  using Entry = std::shared_ptr<const Chirps>;
  static constexpr size_t kKeptPoints = size_t(1) << 19;

  static ChirpCache& instance() {
    static ChirpCache* cache = new ChirpCache(); // kept to the end, as the plans
    return *cache;
  }

  Entry chirps(const Cycles& s, int p, int n, int length) {
    const Key key{s.hi, s.lo, p, n, length};
    {
      std::lock_guard<std::mutex> lock(mutex_);
      for (auto e = entries_.begin(); e != entries_.end(); ++e) {
        if (e->first == key) {
          entries_.splice(entries_.begin(), entries_, e);
          return entries_.front().second;
        }
      }
    }
    Entry made = make(s, p, n, length);
    const size_t points = 2 * static_cast<size_t>(length);
    if (points > kKeptPoints / 2)
      return made;
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.emplace_front(key, made);
    kept_ += points;
    while (kept_ > kKeptPoints) {
      kept_ -= 2 * static_cast<size_t>(std::get<4>(entries_.back().first));
      entries_.pop_back();
    }
    return made;
  }

private:
  using Key = std::tuple<double, double, int, int, int>;

  static Entry make(const Cycles& s, int p, int n, int length) {
    auto made = std::make_shared<Chirps>(static_cast<size_t>(length));
    std::vector<double> c(static_cast<size_t>(length));
    for (int k = 0; k < n; ++k) {
      const double K = static_cast<double>(k) + p;
      c[static_cast<size_t>(k)] = fractionOf(s, K * K / 2.0);
    }
    made->samples = phasors(c, n);
    const int points = length - n + 1;
    for (int i = 0; i < points; ++i)
      c[static_cast<size_t>(i)] = fractionOf(s, static_cast<double>(i) * i / 2.0);
    made->points = phasors(c, points);
    // The kernel exp(+j 2 pi s d^2 / 2) at d = p - t for the lags t = i - k from -(n - 1) to
    // length - n, held circularly.
    for (int index = 0; index < length; ++index) {
      const double d = p - (index <= length - n ? index : static_cast<double>(index) - length);
      c[static_cast<size_t>(index)] = fractionOf(s, d * d / 2.0);
    }
    const std::vector<creal_T> lags = phasors(c, length);
    FftBuffer<fftw_complex> work(static_cast<size_t>(length));
    for (size_t k = 0; k < lags.size(); ++k) {
      work[k][0] = lags[k].re;
      work[k][1] = -lags[k].im;
    }
    fftw_execute_dft(
        FftPlanCache::instance().plan(FftPlanCache::Kind::ComplexForward, length).get(), work.get(),
        made->kernel.get());
    return made;
  }

  std::mutex mutex_;
  std::list<std::pair<Key, Entry>> entries_;
  size_t kept_ = 0;
};

// exp(-j 2 pi a K) for K = p .. p + n - 1 as the product of an exact phasor at the start of
// each block of kBlock samples and an exact one of the step within the block: two sines and
// cosines per block instead of one per sample, a unit in the last place more per term.
constexpr int kBlock = 64;
std::vector<creal_T> startPhasors(const Cycles& a, int p, int n, std::vector<creal_T>* within) {
  const int blocks = (n + kBlock - 1) / kBlock;
  std::vector<double> c(static_cast<size_t>(std::max(blocks, kBlock)));
  for (int j = 0; j < kBlock; ++j)
    c[static_cast<size_t>(j)] = fractionOf(a, j);
  *within = phasors(c, kBlock);
  for (int b = 0; b < blocks; ++b)
    c[static_cast<size_t>(b)] = fractionOf(a, static_cast<double>(b) * kBlock + p);
  return phasors(c, blocks);
}

template <bool IsComplex>
void transform(const double* y, int n, Cycles a, Cycles s, int p, int m, creal_T* out,
               const double* shift) {
  if (m <= 0)
    return;
  if (n <= 0) {
    for (int i = 0; i < m; ++i)
      out[i] = creal_T{0.0, 0.0};
    return;
  }
  a = reduced(a, 1.0);
  s = reduced(s, 2.0);
  const int length = chirpZLength(n, m);
  const size_t count = static_cast<size_t>(length);
  FftBuffer<fftw_complex> work(count), signal(count);
  // The second transform, of (k + p) * y[k], only where some point lies off the grid.
  const FftBuffer<fftw_complex> ramp(shift != nullptr ? count : 1);
  FftPlanCache& plans = FftPlanCache::instance();
  const auto forward = plans.plan(FftPlanCache::Kind::ComplexForward, length);
  const auto backward = plans.plan(FftPlanCache::Kind::ComplexBackward, length);

  const ChirpCache::Entry chirps = ChirpCache::instance().chirps(s, p, n, length);
  const fftw_complex* kernel = chirps->kernel.get();

  // The signal times exp(-j 2 pi (a K + s K^2 / 2)), K = k + p.
  std::vector<creal_T> within;
  const std::vector<creal_T> starts = startPhasors(a, p, n, &within);
  for (size_t k = 0; k < static_cast<size_t>(n); ++k) {
    const creal_T& u = starts[k / kBlock];
    const creal_T& v = within[k % kBlock];
    const creal_T& w = chirps->samples[k];
    const double uvr = u.re * v.re - u.im * v.im, uvi = u.re * v.im + u.im * v.re;
    const double cr = uvr * w.re - uvi * w.im, ci = uvr * w.im + uvi * w.re;
    const double yr = IsComplex ? y[2 * k] : y[k], yi = IsComplex ? y[2 * k + 1] : 0.0;
    work[k][0] = yr * cr - yi * ci;
    work[k][1] = yr * ci + yi * cr;
    if (shift != nullptr) {
      const double K = static_cast<double>(k) + p;
      ramp[k][0] = work[k][0] * K;
      ramp[k][1] = work[k][1] * K;
    }
  }
  for (size_t k = static_cast<size_t>(n); k < count; ++k) {
    work[k][0] = work[k][1] = 0.0;
    if (shift != nullptr)
      ramp[k][0] = ramp[k][1] = 0.0;
  }
  fftw_execute_dft(forward.get(), work.get(), signal.get());

  // The circular convolutions: the sums' in signal, the ramp's in work.
  const auto convolve = [&](fftw_complex* spectrum, fftw_complex* product, fftw_complex* result) {
    for (size_t k = 0; k < count; ++k) {
      const fftw_complex& h = kernel[k];
      const double re = spectrum[k][0] * h[0] - spectrum[k][1] * h[1];
      product[k][1] = spectrum[k][0] * h[1] + spectrum[k][1] * h[0];
      product[k][0] = re;
    }
    fftw_execute_dft(backward.get(), product, result);
  };
  convolve(signal.get(), work.get(), signal.get());
  if (shift != nullptr) {
    fftw_execute_dft(forward.get(), ramp.get(), work.get());
    convolve(work.get(), ramp.get(), work.get());
  }

  // The convolution at lag i, unscaled by the inverse, times exp(-j 2 pi s i^2 / 2); a point
  // off the grid by e cycles turns each term by exp(-j 2 pi e K), to first order
  // 1 - j 2 pi e K: the ramp's sum times -j 2 pi e is added.
  const double scale = static_cast<double>(length);
  for (int i = 0; i < m; ++i) {
    const double c = chirps->points[static_cast<size_t>(i)].re;
    const double sn = -chirps->points[static_cast<size_t>(i)].im;
    const size_t at = static_cast<size_t>(i);
    const double gr = signal[at][0] / scale, gi = signal[at][1] / scale;
    out[i].re = gr * c + gi * sn;
    out[i].im = gi * c - gr * sn;
    if (shift != nullptr) {
      const double dr = work[at][0] / scale, di = work[at][1] / scale;
      const double turn = 6.283185307179586 * shift[i];
      out[i].re += turn * (di * c - dr * sn);
      out[i].im -= turn * (dr * c + di * sn);
    }
  }
}

// Knuth's error-free sum: a + b = s + e exactly.
void twoSum(double a, double b, double* s, double* e) {
  *s = a + b;
  const double bb = *s - a;
  *e = (a - (*s - bb)) + (b - bb);
}

bool finite(const double* v, int count) {
  double zero = 0.0;
  for (int k = 0; k < count; ++k)
    zero += v[k] * 0.0; // NaN for a NaN or an infinity
  return zero == 0.0;
}

template <typename T>
bool scanNearGrid(const T* y, int n, double dt, int p, const double* freqs, int m, creal_T* out) {
  constexpr int kValues = int(sizeof(T) / sizeof(double));
  if (n <= 0 || m <= 0 || double(n) + double(m) >= kChirpZMaxLength || !std::isfinite(dt) ||
      !finite(freqs, m) || !finite(reinterpret_cast<const double*>(y), kValues * n))
    return false;
  // The grid through the first and the last point, and how far each point lies off it,
  // exactly: freqs[i] - f0 - i * step in error-free parts.
  const double f0 = freqs[0], step = m > 1 ? (freqs[m - 1] - f0) / (m - 1) : 0.0;
  std::vector<double> shift(static_cast<size_t>(m));
  double farthest = 0.0;
  for (int i = 0; i < m; ++i) {
    double along, along_error, rise, rise_error;
    twoProduct(static_cast<double>(i), step, &along, &along_error);
    twoSum(freqs[i], -f0, &rise, &rise_error);
    const double off = ((rise - along) + rise_error) - along_error;
    shift[static_cast<size_t>(i)] = off * dt;
    farthest = std::max(farthest, std::fabs(off * dt));
  }
  const double reach = 6.283185307179586 * dt * (n + std::abs(p)); // radians per Hz
  const double turn = reach * farthest / dt;
  if (!(turn <= kFirstOrderTurn))
    return false;
  const Cycles a = cyclesPerSample(f0, dt), s = cyclesPerSample(step, dt);
  // A fine grid (the sums change little from point to point) gives the slope of the sums by
  // differences of second order, error (reach * step)^2 / 3 of it; a coarse one, or a point
  // farther off, takes the ramp's transform.
  const double bend = reach * step * reach * step / 3.0;
  if (turn <= kNegligibleTurn || m < 3 || turn * bend > kNegligibleTurn / 10.0) {
    chirpZ(y, n, a, s, p, m, out, turn > kNegligibleTurn ? shift.data() : nullptr);
    return true;
  }
  chirpZ(y, n, a, s, p, m, out);
  std::vector<creal_T> slope(static_cast<size_t>(m));
  for (int i = 0; i < m; ++i) {
    // central differences, and one-sided ones of the same order at the ends
    const int c = std::min(std::max(i, 1), m - 2);
    const double w0 = i < c   ? -1.5
                      : i > c ? 0.5
                              : -0.5,
                 w1 = i < c   ? 2.0
                      : i > c ? -2.0
                              : 0.0,
                 w2 = i < c   ? -0.5
                      : i > c ? 1.5
                              : 0.5;
    slope[static_cast<size_t>(i)] = {
        (w0 * out[c - 1].re + w1 * out[c].re + w2 * out[c + 1].re) / step,
        (w0 * out[c - 1].im + w1 * out[c].im + w2 * out[c + 1].im) / step};
  }
  for (int i = 0; i < m; ++i) {
    const double off = shift[static_cast<size_t>(i)] / dt; // Hz
    out[i].re += off * slope[static_cast<size_t>(i)].re;
    out[i].im += off * slope[static_cast<size_t>(i)].im;
  }
  return true;
}

bool smooth(int v) {
  for (int f : {2, 3, 5, 7}) {
    while (v % f == 0)
      v /= f;
  }
  return v == 1;
}

} // namespace

bool chirpZScan(const creal_T* y, int n, double dt, int first_phase, const double* freqs, int m,
                creal_T* out) {
  return scanNearGrid(y, n, dt, first_phase, freqs, m, out);
}

bool chirpZScan(const double* y, int n, double dt, int first_phase, const double* freqs, int m,
                creal_T* out) {
  return scanNearGrid(y, n, dt, first_phase, freqs, m, out);
}

Cycles cyclesPerSample(double f, double dt) {
  Cycles r;
  twoProduct(f, dt, &r.hi, &r.lo);
  return r;
}

Cycles cyclesOfBin(double k, double n) {
  // hi = k / n rounded; the remainder k - hi * n is exact in two parts, and its quotient
  // by n is the low part.
  Cycles r;
  r.hi = k / n;
  double p, e;
  twoProduct(r.hi, n, &p, &e);
  r.lo = ((k - p) - e) / n;
  return r;
}

void chirpZ(const creal_T* y, int n, Cycles a, Cycles s, int p, int m, creal_T* out,
            const double* shift) {
  // creal_T is two adjacent doubles, so the signal is read as an interleaved double array.
  transform<true>(reinterpret_cast<const double*>(y), n, a, s, p, m, out, shift);
}

void chirpZ(const double* y, int n, Cycles a, Cycles s, int p, int m, creal_T* out,
            const double* shift) {
  transform<false>(y, n, a, s, p, m, out, shift);
}

int chirpZLength(int n, int m) {
  int length = n + m - 1 > 1 ? n + m - 1 : 1;
  while (!smooth(length))
    ++length;
  // FFTW's estimated plans run lengths with factors 5 and 7 fastest and high powers of 3
  // slowest (26460 points take three quarters of the time of 26244): within 3 % above the
  // shortest length, one divisible by 35 is taken where there is one.
  for (int longer = length; longer <= length + length / 33; longer += 1) {
    if (longer % 35 == 0 && smooth(longer))
      return longer;
  }
  return length;
}

double chirpZCost(int n, int m) {
  // Measured on the blocks' lengths: two complex transforms at about 0.6 ns per point and
  // stage, and some 9 ns per sample and point for the phases and products around them; the
  // kernel (one more transform, and the phases of its lags) is counted at a quarter, since
  // the scans of a block share most of theirs.
  constexpr double kTransformNs = 0.6, kPhaseNs = 9.0;
  const double length = chirpZLength(n, m);
  return 2.25 * kTransformNs * length * std::log2(length) + kPhaseNs * (n + m + 0.25 * length);
}

} // namespace internal
} // namespace coder
