#!/bin/sh
# Builds the numeric-library benchmark in Release and prints each routine's time beside the
# plain FFTW real transform of the same length, measured in the same run.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target coder_bench >/dev/null
out=$("$build/bench/coder_bench" --benchmark_format=csv 2>/dev/null)
echo "$out" | awk -F, '
  /^name,/ { for (i = 1; i <= NF; ++i) { c = $i; gsub(/"/, "", c); col[c] = i }; next }
  /^"BM_/ {
    name = $1; gsub(/"/, "", name)
    t = $col["real_time"]; len = $col["fft_length"]
    order[++count] = name; time[name] = t; flen[name] = len
    if (name ~ /^BM_fftw_plain\//) plain[len] = t
  }
  END {
    printf "%-34s %12s   %s\n", "routine", "time (us)", "plain FFTW r2c of the same length (us)"
    for (i = 1; i <= count; ++i) {
      name = order[i]
      if (name ~ /^BM_fftw_plain\//) continue
      len = flen[name]
      if (len != "" && (len in plain)) {
        printf "%-34s %12.2f   %10.2f (n = %d, ratio %.1f)\n", name, time[name], plain[len], len, time[name] / plain[len]
      } else {
        printf "%-34s %12.2f   -\n", name, time[name]
      }
    }
  }'
