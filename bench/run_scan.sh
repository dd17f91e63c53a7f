#!/bin/sh
# Builds the scan benchmark in Release and prints the time per term (one sample at one grid
# point) of the scan kernel beside the direct form with a sine and a cosine per term, and
# the speed-up on each grid.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target scan_bench >/dev/null
out=$("$build/bench/scan_bench" --benchmark_format=csv 2>/dev/null)
echo "$out" | awk -F, '
  /^"BM_/ {
    name = $1; gsub(/"/, "", name)
    for (i = 1; i <= NF; ++i) if (col[i] == "ns_per_term") v = $i
    ns[name] = v
    split(name, part, "/")
    grid = (part[2] == "0") ? "401 points x 16384 samples" : "5401 points x 2048 samples"
    printf "%-40s %-28s %8.3f ns per sample and grid point\n", part[1], grid, v
    next
  }
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[i] = c } }
  END {
    for (g = 0; g <= 1; ++g) {
      k = ns["BM_correlation_scan_kernel/" g]; d = ns["BM_correlation_scan_direct/" g]
      if (k > 0) printf "grid %d: kernel is %.1f times faster than the direct form\n", g, d / k
    }
  }'
