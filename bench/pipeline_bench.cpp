// Decoding of fu_raw pieces as the vibration and timed modules send them: a three-axis
// vibration piece of 16384 signed 16-bit samples, and 1024 timed records with millisecond
// stamps. Figures are per sample (per record for the timed form). Beside them the math of the
// middle and the trend over a parameter's history, per row of history: the running median of
// 100 values, and the trend block over 1000 rows at one speed every 10 minutes, plain and with
// a 28-day forecast; its smoothing of the same history alone, by the running moments and by the
// solve per point that they replaced.
#include "pipeline/DataParsing.h"

#include "blocks/median_filter/median_filter.h"
#include "blocks/trend/detrend_filter_group_mon_rul.h"
#include "coder/smoothdata.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

// n bytes of value, least significant first, as lower-case hexadecimal.
std::string littleEndianHex(std::uint64_t value, int bytes) {
  std::string text;
  char pair[3];
  for (int k = 0; k < bytes; ++k) {
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>((value >> (8 * k)) & 0xFFu));
    text += pair;
  }
  return text;
}

void BM_decodeRaw_plain16(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  std::mt19937 gen(1U);
  std::uniform_int_distribution<int> sample(-32768, 32767);
  std::string data = "0x";
  for (int k = 0; k < n; ++k) {
    data += littleEndianHex(static_cast<std::uint16_t>(sample(gen)), 2);
  }
  for (auto _ : state) {
    raw piece;
    piece.param_type_id = 4;
    piece.c_type = 2;
    piece.sub_channel = "x";
    piece.data = data;
    benchmark::DoNotOptimize(DataParsing::decodeRaw(piece));
    benchmark::DoNotOptimize(piece.values.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_decodeRaw_plain16)->Arg(16384);

void BM_decodeRaw_timedMilliseconds(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  std::string data = "0x";
  for (int k = 0; k < n; ++k) {
    data += littleEndianHex(1700000000000ULL + 250ULL * static_cast<std::uint64_t>(k), 8);
    data += littleEndianHex(static_cast<std::uint16_t>(2000 + k), 2);
  }
  for (auto _ : state) {
    raw piece;
    piece.param_type_id = 9;
    piece.c_type = 2;
    piece.data = data;
    benchmark::DoNotOptimize(DataParsing::decodeRaw(piece));
    benchmark::DoNotOptimize(piece.timed_values.size());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_decodeRaw_timedMilliseconds)->Arg(1024);

void BM_median_filter_history(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  coder::array<double, 2> x;
  coder::array<double, 2> y;
  x.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    x[k] = 5.0 + 0.1 * (k * 7 % 10);
  }
  for (auto _ : state) {
    median_filter_ns::median_filter(x, y);
    benchmark::DoNotOptimize(y.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_median_filter_history)->Arg(100);

// A rising velocity's history of state.range(0) rows through the trend block with `options`.
void trendOfHistory(benchmark::State& state, int options) {
  const int n = static_cast<int>(state.range(0));
  coder::array<double, 1> x;
  coder::array<double, 1> frm;
  coder::array<double, 1> t;
  x.set_size(n);
  frm.set_size(n);
  t.set_size(n);
  for (int k = 0; k < n; ++k) {
    t[k] = 600.0 * k;
    const double day = t[k] / 86400.0;
    x[k] = 1.0 + 0.01 * day * day;
    frm[k] = 50.0;
  }
  const double thresholds[3] = {4.0, 6.0, 9.0};
  for (auto _ : state) {
    coder::array<double, 2> trend;
    double monotone = 0.0;
    int size[2];
    double days = 0.0;
    detrend_filter_group_mon_rul_ns::struct0_T curve;
    detrend_filter_group_mon_rul_ns::detrend_filter_group_mon_rul(
        x, frm, t, 28 * 86400.0, thresholds, options, trend, &monotone, size, &days, &curve);
    benchmark::DoNotOptimize(trend.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
void BM_detrend_filter_group_mon_rul_plain(benchmark::State& state) {
  trendOfHistory(state, 0);
}
BENCHMARK(BM_detrend_filter_group_mon_rul_plain)->Arg(1000);

void BM_detrend_filter_group_mon_rul_forecast(benchmark::State& state) {
  trendOfHistory(state, 1);
}
BENCHMARK(BM_detrend_filter_group_mon_rul_forecast)->Arg(1000);

// The trend block's smoothing of a rising history of state.range(0) rows with its own window.
void smoothHistory(benchmark::State& state,
                   void (*regression)(const double*, const double*, int, double, double*)) {
  const int n = static_cast<int>(state.range(0));
  std::vector<double> t(static_cast<std::size_t>(n));
  std::vector<double> a(t.size());
  std::vector<double> s(t.size());
  for (std::size_t k = 0; k < t.size(); ++k) {
    t[k] = 600.0 * static_cast<double>(k);
    a[k] = 1.0 + 0.01 * (t[k] / 86400.0) * (t[k] / 86400.0);
  }
  const double window = coder::internal::chooseWindowSize(a.data(), t.data(), n);
  for (auto _ : state) {
    regression(a.data(), t.data(), n, window, s.data());
    benchmark::DoNotOptimize(s.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}
void BM_localRegression(benchmark::State& state) {
  smoothHistory(state, coder::internal::localRegression);
}
BENCHMARK(BM_localRegression)->Arg(1000);

void BM_localRegressionDirect(benchmark::State& state) {
  smoothHistory(state, coder::internal::localRegressionDirect);
}
BENCHMARK(BM_localRegressionDirect)->Arg(1000);

} // namespace

BENCHMARK_MAIN();
