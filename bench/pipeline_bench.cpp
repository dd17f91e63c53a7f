// Decoding of fu_raw pieces as the vibration and timed modules send them: a three-axis
// vibration piece of 16384 signed 16-bit samples, and 1024 timed records with millisecond
// stamps. Figures are per sample (per record for the timed form).
#include "pipeline/DataParsing.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

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

} // namespace

BENCHMARK_MAIN();
