#!/bin/sh
# Builds the vibration benchmark in Release and prints the time of one type 10 row, its
# stages, its FFT floor and the row's multiple of that floor, the same row with its scans and
# FIR filters in direct form and how many times slower that is, and the peak memory.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target vibration_bench vibration_direct_bench >/dev/null
# the median of five runs of each, so that a neighbour's burst of work does not count
{
  "$build/bench/vibration_bench" --benchmark_format=csv --benchmark_repetitions=5 \
    --benchmark_report_aggregates_only=true 2>/dev/null | grep -v '_mean"\|_stddev"\|_cv"' |
    sed 's/_median"/"/'
  # a direct row takes seconds: a few of them are enough
  "$build/bench/vibration_direct_bench" --benchmark_format=csv --benchmark_min_time=3 \
    --benchmark_filter=BM_row_whole_block 2>/dev/null | sed 's/BM_row_whole_block/BM_row_direct_form/'
} | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name); t = $col["real_time"]
    order[++count] = name; time[name] = t
    if (name == "BM_row_whole_block") peak = $col["peak_MB"]
  }
  END {
    for (i = 1; i <= count; ++i) printf "%-36s %10.2f ms\n", order[i], time[order[i]]
    printf "row / FFT floor: %.1f; direct form / row: %.1f; peak resident memory of the run: %.0f MB\n",
           time["BM_row_whole_block"] / time["BM_fft_floor"],
           time["BM_row_direct_form"] / time["BM_row_whole_block"], peak
  }'
