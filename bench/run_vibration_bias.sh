#!/bin/sh
# Builds the measurement of the vibration chain's own bias in Release and prints its tables
# (the content of docs/vibration-bias.md).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_BENCH=ON >/dev/null
cmake --build "$build" -j 2 --target vibration_bias_bench >/dev/null
"$build/bench/vibration_bias_bench"
