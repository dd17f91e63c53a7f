// The correlation scan against the direct form with one sine and one cosine per term, on
// the two grids that dominate the blocks' time: the decimated rotor search of 401 points
// over 16384 samples and the "frequency_control" search of 5401 points over 2048.
#include "coder/correlation_scan.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <type_traits>
#include <vector>

namespace {

struct Grid {
  int n;
  int m;
  double f0;
};

constexpr Grid kGrids[] = {{16384, 401, 47.0}, {2048, 5401, 7.0}};
constexpr double kDt = 8.0 / 26667.0;
constexpr double kStep = 0.01;

std::vector<creal_T> signalOf(int n) {
  std::mt19937 gen(1U);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<creal_T> y(static_cast<size_t>(n));
  for (creal_T& v : y)
    v = creal_T{noise(gen), noise(gen)};
  return y;
}

std::vector<double> gridOf(const Grid& g) {
  std::vector<double> f(static_cast<size_t>(g.m));
  for (int i = 0; i < g.m; ++i)
    f[static_cast<size_t>(i)] = g.f0 + i * kStep;
  return f;
}

// Reports the time per term (one sample at one grid point) in nanoseconds.
void setTermCounter(benchmark::State& state, const Grid& g) {
  state.counters["ns_per_term"] = benchmark::Counter(
      static_cast<double>(g.n) * g.m * static_cast<double>(state.iterations()) * 1e-9,
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Times one scan form over the grid of the benchmark's argument; the signal is complex or its
// real part, as the form takes it.
template <typename Sample, typename Scan>
void runScan(benchmark::State& state, Scan scan) {
  const Grid& g = kGrids[state.range(0)];
  const std::vector<creal_T> z = signalOf(g.n);
  std::vector<Sample> y(z.size());
  for (size_t k = 0; k < z.size(); ++k) {
    if constexpr (std::is_same_v<Sample, creal_T>) {
      y[k] = z[k];
    } else {
      y[k] = z[k].re;
    }
  }
  const std::vector<double> f = gridOf(g);
  std::vector<creal_T> out(f.size());
  for (auto _ : state) {
    scan(y.data(), g.n, kDt, 1, f.data(), g.m, out.data());
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  setTermCounter(state, g);
}

void BM_correlation_scan_kernel(benchmark::State& state) {
  runScan<creal_T>(state, [](auto... a) { coder::correlation_scan(a...); });
}

void BM_correlation_scan_kernel_real(benchmark::State& state) {
  runScan<double>(state, [](auto... a) { coder::correlation_scan(a...); });
}

void BM_correlation_scan_direct(benchmark::State& state) {
  runScan<creal_T>(state, [](auto... a) { coder::correlation_scan_direct(a...); });
}

} // namespace

// Argument 0: 401 points x 16384 samples; 1: 5401 points x 2048 samples.
BENCHMARK(BM_correlation_scan_kernel)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_correlation_scan_kernel_real)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_correlation_scan_direct)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
