#!/bin/sh
# Builds the electrical benchmark in Release and prints, for a full row (type_param 21) and a
# current row (8), the time of the whole block and of its stages, its FFT floor and the row's
# multiple of that floor, and the row's correlation scans by the kernel and in direct form.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target electrical_bench >/dev/null
"$build/bench/electrical_bench" --benchmark_format=csv 2>/dev/null | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name); gsub(/\/iterations:[0-9]+/, "", name); t = $col["real_time"]
    order[++count] = name; time[name] = t
  }
  END {
    for (i = 1; i <= count; ++i) printf "%-36s %10.3f ms\n", order[i], time[order[i]]
    for (r = 0; r < 2; ++r) {
      row = r == 0 ? "21" : "8"
      whole = time["BM_whole_block/" row]; floor = time["BM_fft_floor/" row]
      fast = time["BM_scans<false>/" row]; direct = time["BM_scans<true>/" row]
      printf "type_param %s: row / FFT floor %.1f; direct-form scans / row %.1f", row, whole / floor, direct / whole
      printf "; row with its scans in direct form / row %.1f\n", (whole - fast + direct) / whole
    }
  }'
