#!/bin/sh
# Builds the benchmark of the wireless vibration modules in Release and prints, for a type 7
# row (three axes at 26667 Hz, the rotor looked for over a converter's whole range) and a type 6
# row (two axes at 16000 Hz), the time of the whole block and of its stages, its FFT floor and
# the row's multiple of that floor, and the row with its scans and FIR filters in direct form
# and how many times slower that is.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target second_generation_bench second_generation_direct_bench >/dev/null
# the median of five runs of each, in CPU time, so that a neighbour's burst of work does not count
{
  "$build/bench/second_generation_bench" --benchmark_format=csv --benchmark_repetitions=5 \
    --benchmark_report_aggregates_only=true 2>/dev/null | grep -v '_mean"\|_stddev"\|_cv"' |
    sed 's/_median"/"/'
  # a direct row takes seconds: a few of them are enough
  "$build/bench/second_generation_direct_bench" --benchmark_format=csv --benchmark_min_time=3 \
    --benchmark_filter=BM_whole_block 2>/dev/null | sed 's/BM_whole_block/BM_direct_form/'
} | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name); gsub(/\/iterations:[0-9]+/, "", name); gsub(/\/min_time:[0-9.]+/, "", name)
    order[++count] = name; time[name] = $col["cpu_time"]
  }
  END {
    for (i = 1; i <= count; ++i) printf "%-44s %10.2f ms\n", order[i], time[order[i]]
    for (r = 0; r < 2; ++r) {
      row = r == 0 ? "7" : "6"
      printf "type %s row / FFT floor: %.1f; direct form / row: %.1f\n", row,
             time["BM_whole_block/" row] / time["BM_fft_floor/" row],
             time["BM_direct_form/" row] / time["BM_whole_block/" row]
    }
  }'
