// The signal routines of the numeric library on the blocks' lengths, each beside a plain
// FFTW real transform of the length it works on, measured in the same run, so that the
// figures show what the MATLAB conventions (padding, copies, the full two-sided spectrum,
// the plan lookup) cost over the bare transform.
#include "coder/envspectrum.h"
#include "coder/fft.h"
#include "coder/filter.h"
#include "coder/firls.h"
#include "coder/hilbert.h"
#include "coder/thd.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <vector>

namespace {

coder::array<double, 2> signalOf(int n) {
  coder::array<double, 2> x;
  x.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    x[k] = std::sin(0.01 * k) + 0.3 * std::cos(1.7 * k) + 0.01 * ((k * 7919) % 1000) / 1000.0;
  }
  return x;
}

// Tags a figure with the transform length it is to be read against.
void tagLength(benchmark::State& state, int n) {
  state.counters["fft_length"] = static_cast<double>(n);
}

// The bare FFTW real-to-complex transform of n points, planned as the library plans
// (FFTW_ESTIMATE) before the clock runs.
void BM_fftw_plain(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  double* in = fftw_alloc_real(static_cast<size_t>(n));
  fftw_complex* out = fftw_alloc_complex(static_cast<size_t>(n / 2 + 1));
  const fftw_plan plan = fftw_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
  const auto x = signalOf(n);
  for (int k = 0; k < n; ++k)
    in[k] = x[k];
  for (auto _ : state) {
    fftw_execute(plan);
    benchmark::DoNotOptimize(out[1][0]);
  }
  fftw_destroy_plan(plan);
  fftw_free(in);
  fftw_free(out);
  tagLength(state, n);
}
BENCHMARK(BM_fftw_plain)
    ->Arg(4096)
    ->Arg(16384)
    ->Arg(65536)
    ->Arg(262144)
    ->Arg(40960)
    ->Unit(benchmark::kMicrosecond);

// fft(x, n) of the statistics routine: 16384 samples padded 4x and 16x, and 4096 unpadded.
void BM_fft(benchmark::State& state) {
  const int len = static_cast<int>(state.range(0));
  const int n = static_cast<int>(state.range(1));
  const auto x = signalOf(len);
  coder::array<creal_T, 2> y;
  for (auto _ : state) {
    coder::fft(x, n, y);
    benchmark::DoNotOptimize(y[1].re);
  }
  tagLength(state, n);
}
BENCHMARK(BM_fft)
    ->Args({16384, 65536})
    ->Args({16384, 262144})
    ->Args({4096, 4096})
    ->Unit(benchmark::kMicrosecond);

void BM_hilbert(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto x = signalOf(n);
  coder::array<creal_T, 2> z;
  for (auto _ : state) {
    coder::hilbert(x, z);
    benchmark::DoNotOptimize(z[1].im);
  }
  tagLength(state, n);
}
BENCHMARK(BM_hilbert)->Arg(16384)->Unit(benchmark::kMicrosecond);

const std::vector<double> kCorrelationEdges = {0.0,          45.0 / 125.0, 49.0 / 125.0,
                                               51.0 / 125.0, 55.0 / 125.0, 1.0};
const std::vector<double> kBandPass = {0.0, 0.0, 1.0, 1.0, 0.0, 0.0};

// The order-500 design itself: Gram matrix and LU of 251 unknowns.
void BM_firls_design500(benchmark::State& state) {
  for (auto _ : state) {
    auto taps = coder::internal::firlsDesign(500, kCorrelationEdges, kBandPass);
    benchmark::DoNotOptimize(taps.data());
  }
}
BENCHMARK(BM_firls_design500)->Unit(benchmark::kMicrosecond);

// What a block pays per call once the design is cached: the lookup and the copy into its
// row of 501 taps.
void BM_firls_cached500(benchmark::State& state) {
  coder::array<double, 2> h;
  coder::firls(500, kCorrelationEdges, kBandPass, h);
  for (auto _ : state) {
    coder::firls(500, kCorrelationEdges, kBandPass, h);
    benchmark::DoNotOptimize(h[250]);
  }
}
BENCHMARK(BM_firls_cached500)->Unit(benchmark::kMicrosecond);

// thd of 40960 samples at 10 kHz with 40 harmonics: Kaiser window, periodogram, tone reads.
void BM_thd(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  coder::array<double, 1> x;
  x.set_size(n);
  for (int k = 0; k < n; ++k) {
    const double t = k / 10000.0;
    x[k] = std::sin(2.0 * 3.141592653589793 * 50.0 * t) +
           0.05 * std::sin(2.0 * 3.141592653589793 * 150.0 * t) +
           1e-3 * ((k * 7919) % 1000) / 1000.0;
  }
  coder::array<double, 1> harmpow;
  coder::array<double, 1> harmfreq;
  for (auto _ : state) {
    benchmark::DoNotOptimize(coder::thd(x, 10000.0, 40, harmpow, harmfreq));
  }
  tagLength(state, n);
}
BENCHMARK(BM_thd)->Arg(40960)->Unit(benchmark::kMicrosecond);

// envspectrum of 16384 samples: convolution, two transforms, an inverse.
void BM_envspectrum(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto x = signalOf(n);
  coder::array<double, 1> es;
  coder::array<double, 1> f;
  coder::array<double, 1> env;
  coder::array<double, 1> t;
  for (auto _ : state) {
    coder::envspectrum(x, 16000.0, es, f, env, t);
    benchmark::DoNotOptimize(es[1]);
  }
  tagLength(state, n);
}
BENCHMARK(BM_envspectrum)->Arg(16384)->Unit(benchmark::kMicrosecond);

// The rotor search's band filter: 501 taps over a complex signal of 16384 samples.
void BM_filter(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  coder::array<double, 2> h;
  coder::firls(500, kCorrelationEdges, kBandPass, h);
  const auto x = signalOf(n);
  coder::array<creal_T, 2> y;
  y.set_size(1, n);
  for (int k = 0; k < n; ++k)
    y[k] = creal_T{x[k], -x[k]};
  coder::array<creal_T, 2> out;
  for (auto _ : state) {
    coder::filter(h, y, out);
    benchmark::DoNotOptimize(out[1].re);
  }
}
BENCHMARK(BM_filter)->Arg(16384)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
