#include "coder/firls.h"

#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

namespace coder {

namespace {

const double kPi = 3.141592653589793;

// sinc(x) = sin(pi x)/(pi x) in the generated code's form: exactly 1 near 0.
double sinc(double x) {
  if (std::fabs(x) < 1.0020841800044864e-292)
    return 1.0;
  const double t = kPi * x;
  return std::sin(t) / t;
}

// Solves A x = b in place (A column-major, n x n) by LU with partial pivoting in the order
// of the generated code: per column the first row with the strictly largest magnitude is
// the pivot, whole rows are swapped, the column below is divided by the pivot, the trailing
// columns get the rank-1 update (zero multipliers skipped); then forward substitution with
// the unit lower factor and back substitution with the upper one.
void luSolve(std::vector<double>& A, std::vector<double>& b, int n) {
  auto at = [&A, n](int r, int c) -> double& {
    return A[static_cast<size_t>(r) + static_cast<size_t>(c) * static_cast<size_t>(n)];
  };
  std::vector<int> pivot(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    int p = k;
    double best = std::fabs(at(k, k));
    for (int r = k + 1; r < n; ++r) {
      if (std::fabs(at(r, k)) > best) {
        best = std::fabs(at(r, k));
        p = r;
      }
    }
    pivot[static_cast<size_t>(k)] = p;
    if (p != k) {
      for (int c = 0; c < n; ++c)
        std::swap(at(k, c), at(p, c));
    }
    const double d = at(k, k);
    if (d != 0.0) {
      for (int r = k + 1; r < n; ++r)
        at(r, k) /= d;
    }
    for (int c = k + 1; c < n; ++c) {
      const double m = at(k, c);
      if (m == 0.0)
        continue;
      for (int r = k + 1; r < n; ++r)
        at(r, c) -= at(r, k) * m;
    }
  }
  for (int k = 0; k < n; ++k) {
    const int p = pivot[static_cast<size_t>(k)];
    if (p != k)
      std::swap(b[static_cast<size_t>(k)], b[static_cast<size_t>(p)]);
  }
  for (int c = 0; c < n; ++c) {
    const double v = b[static_cast<size_t>(c)];
    if (v == 0.0)
      continue;
    for (int r = c + 1; r < n; ++r)
      b[static_cast<size_t>(r)] -= v * at(r, c);
  }
  for (int c = n - 1; c >= 0; --c) {
    if (b[static_cast<size_t>(c)] == 0.0)
      continue;
    b[static_cast<size_t>(c)] /= at(c, c);
    const double v = b[static_cast<size_t>(c)];
    for (int r = 0; r < c; ++r)
      b[static_cast<size_t>(r)] -= v * at(r, c);
  }
}

// The type I least-squares design; edges f are fractions of Nyquist.
std::vector<double> design(int order, const std::vector<double>& f, const std::vector<double>& a) {
  const int half = order / 2;
  const int unknowns = half + 1;
  const size_t bands = f.size() / 2;
  std::vector<double> F(f.size());
  for (size_t i = 0; i < f.size(); ++i)
    F[i] = f[i] / 2.0;

  // Right-hand side: the desired response (linear within each band) against each cosine.
  std::vector<double> rhs(static_cast<size_t>(unknowns), 0.0);
  for (size_t s = 0; s < bands; ++s) {
    const double lo = F[2 * s];
    const double hi = F[2 * s + 1];
    const double slope = (a[2 * s + 1] - a[2 * s]) / (hi - lo);
    const double intercept = a[2 * s] - slope * lo;
    rhs[0] += intercept * (hi - lo) + slope / 2.0 * (hi * hi - lo * lo);
    for (int k = 1; k <= half; ++k) {
      const double kd = static_cast<double>(k);
      rhs[static_cast<size_t>(k)] +=
          slope / 39.478417604357432 *
          (std::cos(2.0 * kPi * kd * hi) - std::cos(2.0 * kPi * kd * lo)) / (kd * kd);
      rhs[static_cast<size_t>(k)] += hi * (slope * hi + intercept) * sinc(2.0 * kd * hi) -
                                     lo * (slope * lo + intercept) * sinc(2.0 * kd * lo);
    }
  }

  bool full_band = true;
  for (size_t s = 1; s < bands; ++s)
    full_band = full_band && F[2 * s - 1] == F[2 * s];

  std::vector<double> coef;
  if (full_band) {
    // Bands that tile the axis make G diagonal: the truncated ideal response.
    coef = rhs;
    for (double& v : coef)
      v *= 4.0;
    coef[0] /= 2.0;
  } else {
    // G(i, j) = integral over the bands of cos(2 pi i F) cos(2 pi j F), from sinc values
    // tabulated per band over the index sums and differences 0..2*half.
    const size_t n = static_cast<size_t>(unknowns);
    std::vector<double> G(n * n, 0.0);
    std::vector<double> sinc_hi(2 * n);
    std::vector<double> sinc_lo(2 * n);
    for (size_t s = 0; s < bands; ++s) {
      const double lo = F[2 * s];
      const double hi = F[2 * s + 1];
      for (size_t m = 0; m < 2 * n; ++m) {
        const double md = static_cast<double>(m);
        sinc_hi[m] = sinc(2.0 * md * hi);
        sinc_lo[m] = sinc(2.0 * md * lo);
      }
      for (size_t j = 0; j < n; ++j) {
        for (size_t i = 0; i < n; ++i) {
          const size_t sum = i + j;
          const size_t diff = i > j ? i - j : j - i;
          G[i + j * n] +=
              0.5 * hi * (sinc_hi[sum] + sinc_hi[diff]) - 0.5 * lo * (sinc_lo[sum] + sinc_lo[diff]);
        }
      }
    }
    coef = rhs;
    luSolve(G, coef, unknowns);
  }

  std::vector<double> taps(static_cast<size_t>(order) + 1);
  for (int k = 0; k < half; ++k) {
    taps[static_cast<size_t>(k)] = coef[static_cast<size_t>(half - k)] / 2.0;
    taps[static_cast<size_t>(order - k)] = coef[static_cast<size_t>(half - k)] / 2.0;
  }
  taps[static_cast<size_t>(half)] = coef[0];
  return taps;
}

// Designs made so far, keyed by order, edges and amplitudes. Entries are never removed or
// changed, so a pointer handed out stays valid and the same for the life of the process.
class DesignCache {
public:
  using Key = std::tuple<int, std::vector<double>, std::vector<double>>;

  std::shared_ptr<const std::vector<double>> get(int order, const std::vector<double>& f,
                                                 const std::vector<double>& a) {
    Key key(order, f, a);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      auto found = designs_.find(key);
      if (found != designs_.end())
        return found->second;
    }
    // Designing takes milliseconds for order 500; it runs outside the lock, and when two
    // threads race the first stored design wins (both are the same bits anyway).
    auto made = std::make_shared<const std::vector<double>>(design(order, f, a));
    std::lock_guard<std::mutex> lock(mutex_);
    // Edge sets come from the blocks' fixed tables; should sample rates ever make them
    // vary without end, designs past the bound are made per call and not kept.
    if (designs_.size() >= 256 && designs_.count(key) == 0)
      return made;
    return designs_.emplace(std::move(key), std::move(made)).first->second;
  }

private:
  std::mutex mutex_;
  std::map<Key, std::shared_ptr<const std::vector<double>>> designs_;
};

DesignCache& designCache() {
  static DesignCache* cache = new DesignCache();
  return *cache;
}

void toRow(const std::vector<double>& taps, array<double, 2>& h) {
  h.set_size(1, static_cast<int>(taps.size()));
  for (size_t k = 0; k < taps.size(); ++k)
    h[static_cast<int>(k)] = taps[k];
}

} // namespace

namespace internal {

std::vector<double> firlsDesign(int order, const std::vector<double>& f,
                                const std::vector<double>& a) {
  if (order < 0 || order % 2 != 0 || f.size() % 2 != 0 || f.empty() || a.size() != f.size()) {
    return {};
  }
  return design(order, f, a);
}

} // namespace internal

std::shared_ptr<const std::vector<double>> firlsTaps(int order, const std::vector<double>& f,
                                                     const std::vector<double>& a) {
  if (order < 0 || order % 2 != 0 || f.size() % 2 != 0 || f.empty() || a.size() != f.size()) {
    return std::make_shared<const std::vector<double>>();
  }
  return designCache().get(order, f, a);
}

void firls(int order, const std::vector<double>& f, const std::vector<double>& a,
           array<double, 2>& h) {
  toRow(*firlsTaps(order, f, a), h);
}

void firls(const double f[6], array<double, 2>& h) {
  firls(500, std::vector<double>(f, f + 6), {0.0, 0.0, 1.0, 1.0, 0.0, 0.0}, h);
}

void b_firls(const double f[6], array<double, 2>& h) {
  firls(298, std::vector<double>(f, f + 6), {0.0, 0.0, 1.0, 1.0, 0.0, 0.0}, h);
}

void fir1(int order, double w1, double w2, array<double, 2>& b) {
  const auto ideal = firlsTaps(order, {0.0, w1, w1, w2, w2, 1.0}, {0.0, 0.0, 1.0, 1.0, 0.0, 0.0});
  const int n = static_cast<int>(ideal->size());
  b.set_size(1, n);
  if (n == 0)
    return;
  // Symmetric Hamming window: the first half computed, the rest mirrored.
  const double last = static_cast<double>(n - 1);
  const int half = (n + 1) / 2;
  for (int k = 0; k < n; ++k) {
    const int j = k < half ? k : n - 1 - k;
    const double w =
        n == 1 ? 1.0 : 0.54 - 0.46 * std::cos(2.0 * kPi * (static_cast<double>(j) / last));
    b[k] = (*ideal)[static_cast<size_t>(k)] * w;
  }
  // Unit gain at the centre of the pass band.
  const double f0 = (w1 + w2) / 2.0;
  double re = 0.0;
  double im = 0.0;
  for (int k = 0; k < n; ++k) {
    const double phase = 2.0 * kPi * static_cast<double>(k) * (f0 / 2.0);
    re += b[k] * std::cos(phase);
    im -= b[k] * std::sin(phase);
  }
  const double gain = std::hypot(re, im);
  for (int k = 0; k < n; ++k)
    b[k] /= gain;
}

} // namespace coder
