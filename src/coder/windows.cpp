#include "coder/windows.h"

#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace coder {

void tukeywin(int n, array<double, 1>& w) {
  if (n < 0)
    n = 0;
  w.set_size(n);
  for (int k = 0; k < n; ++k)
    w[k] = 1.0;
}

void hanning(int n, array<double, 1>& w) {
  if (n < 0)
    n = 0;
  w.set_size(n);
  const int half = (n % 2 == 0) ? n / 2 : (n + 1) / 2;
  const double pi = 3.141592653589793;
  for (int k = 1; k <= half; ++k) {
    w[k - 1] =
        0.5 * (1.0 - std::cos(2.0 * pi * static_cast<double>(k) / static_cast<double>(n + 1)));
  }
  for (int k = half; k < n; ++k)
    w[k] = w[n - 1 - k];
}

namespace internal {

double besselI0(double x) {
  if (std::isnan(x))
    return x;
  if (std::isinf(x))
    return std::fabs(x);
  // All terms (x/2)^(2k) / (k!)^2 are positive, so the series has no cancellation; summed
  // in extended precision it rounds to the double nearest I0 for every argument the
  // windows use (beta up to a few hundred).
  const long double q = static_cast<long double>(x) * static_cast<long double>(x) / 4.0L;
  long double term = 1.0L;
  long double sum = 1.0L;
  for (int k = 1; k < 100000; ++k) {
    term *= q / (static_cast<long double>(k) * static_cast<long double>(k));
    sum += term;
    if (term < sum * 1e-22L)
      break;
  }
  return static_cast<double>(sum);
}

} // namespace internal

namespace {

std::vector<double> makeKaiser(int n, double beta) {
  std::vector<double> w(static_cast<size_t>(n));
  if (n == 1) {
    w[0] = 1.0;
    return w;
  }
  const double m = static_cast<double>(n - 1);
  const double scale = internal::besselI0(beta);
  // Samples from the centre outward; the other half is the mirror image.
  const int half = (n + 1) / 2;
  for (int k = n - half; k < n; ++k) {
    const double x = static_cast<double>(k) - m / 2.0;
    const double r = 1.0 - 4.0 * x * x / (m * m);
    w[static_cast<size_t>(k)] = internal::besselI0(beta * std::sqrt(r < 0.0 ? 0.0 : r)) / scale;
  }
  for (int k = 0; k < n - half; ++k)
    w[static_cast<size_t>(k)] = w[static_cast<size_t>(n - 1 - k)];
  return w;
}

// The THD measurement asks for the same few windows over and over (one length per stream
// rate); each costs a Bessel series per sample, so finished windows are kept, immutable.
// The number kept is bounded, so odd lengths cannot make the cache grow without end.
class KaiserCache {
public:
  std::shared_ptr<const std::vector<double>> get(int n, double beta) {
    const auto key = std::make_pair(n, beta);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      const auto found = windows_.find(key);
      if (found != windows_.end())
        return found->second;
    }
    auto made = std::make_shared<const std::vector<double>>(makeKaiser(n, beta));
    std::lock_guard<std::mutex> lock(mutex_);
    if (windows_.size() >= 32)
      return made;
    return windows_.emplace(key, std::move(made)).first->second;
  }

private:
  std::mutex mutex_;
  std::map<std::pair<int, double>, std::shared_ptr<const std::vector<double>>> windows_;
};

KaiserCache& kaiserCache() {
  static KaiserCache* cache = new KaiserCache();
  return *cache;
}

} // namespace

void kaiser(int n, double beta, array<double, 1>& w) {
  if (n < 0)
    n = 0;
  w.set_size(n);
  if (n == 0)
    return;
  if (std::isnan(beta)) {
    // NaN keys cannot be looked up; such a window is all NaN anyway.
    const auto made = makeKaiser(n, beta);
    for (int k = 0; k < n; ++k)
      w[k] = made[static_cast<size_t>(k)];
    return;
  }
  const auto shared = kaiserCache().get(n, beta);
  for (int k = 0; k < n; ++k)
    w[k] = (*shared)[static_cast<size_t>(k)];
}

} // namespace coder
