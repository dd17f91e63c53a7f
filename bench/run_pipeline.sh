#!/bin/sh
# Builds the decoding benchmark in Release and prints the time per sample of a vibration piece
# and per record of a piece of timed records.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target pipeline_bench >/dev/null
out=$("$build/bench/pipeline_bench" --benchmark_format=csv 2>/dev/null)
echo "$out" | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name)
    split(name, part, "/")
    printf "%-34s %6d items   %8.1f ns per item\n", part[1], part[2], 1e9 / $col["items_per_second"]
  }'
