#!/bin/sh
# Builds the vibration benchmark in Release and prints the time of one type 10 row, its
# stages, its FFT floor and the row's multiple of that floor, the same row with its scans and
# FIR filters in direct form and how many times slower that is, and the peak memory. Beside
# each wall time the process's CPU time: on a machine shared with other work it is the steadier
# of the two, and the multiples are given by both.
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
    name = $1; gsub(/"/, "", name)
    order[++count] = name; time[name] = $col["real_time"]; cpu[name] = $col["cpu_time"]
    if (name == "BM_row_whole_block") peak = $col["peak_MB"]
  }
  END {
    for (i = 1; i <= count; ++i)
      printf "%-36s %10.2f ms  (CPU %8.2f ms)\n", order[i], time[order[i]], cpu[order[i]]
    printf "row / FFT floor: %.1f (CPU %.1f); direct form / row: %.1f (CPU %.1f)\n",
           time["BM_row_whole_block"] / time["BM_fft_floor"],
           cpu["BM_row_whole_block"] / cpu["BM_fft_floor"],
           time["BM_row_direct_form"] / time["BM_row_whole_block"],
           cpu["BM_row_direct_form"] / cpu["BM_row_whole_block"]
    printf "peak resident memory of the run: %.0f MB\n", peak
  }'
