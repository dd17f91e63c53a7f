#!/bin/sh
# Builds the electrical benchmark in Release and prints, for a full row (type_param 21) and a
# current row (8), the time of the whole block and of its stages, its FFT floor and the row's
# multiple of that floor, and the row's correlation scans by the kernel and in direct form.
# Beside each wall time the process's CPU time: on a machine shared with other work it is the
# steadier of the two, and the multiples are given by both.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target electrical_bench >/dev/null
bench=$build/bench/electrical_bench
# the median of five runs of each, so that a neighbour's burst of work does not count; the
# direct-form scans take seconds, and one run of them is enough
{
  "$bench" --benchmark_format=csv --benchmark_filter='^BM_(whole|stage|fft|scans<false>)' \
    --benchmark_repetitions=5 --benchmark_report_aggregates_only=true 2>/dev/null |
    grep -v '_mean"\|_stddev"\|_cv"' | sed 's/_median"/"/'
  "$bench" --benchmark_format=csv --benchmark_filter='^BM_scans<true>' 2>/dev/null | grep '^"BM_'
} | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name); gsub(/\/iterations:[0-9]+/, "", name)
    order[++count] = name; time[name] = $col["real_time"]; cpu[name] = $col["cpu_time"]
  }
  END {
    for (i = 1; i <= count; ++i)
      printf "%-36s %10.3f ms  (CPU %9.3f ms)\n", order[i], time[order[i]], cpu[order[i]]
    for (r = 0; r < 2; ++r) {
      row = r == 0 ? "21" : "8"
      whole = "BM_whole_block/" row; floor = "BM_fft_floor/" row
      fast = "BM_scans<false>/" row; direct = "BM_scans<true>/" row
      printf "type_param %s: row / FFT floor %.1f (CPU %.1f); direct-form scans / row %.1f", row,
             time[whole] / time[floor], cpu[whole] / cpu[floor], time[direct] / time[whole]
      printf "; row with its scans in direct form / row %.1f\n",
             (time[whole] - time[fast] + time[direct]) / time[whole]
    }
  }'
