#!/bin/bash
# Times reading the benchmark CSV into a Dataset in both "Optimize processing for" modes.
# Usage: bench/read_csv.sh [rows]   (default 1000000; the file is kept in /tmp between runs)
# TABULON_BUILD_DIR names the build directory whose tabulon_core is measured.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="${TABULON_BUILD_DIR:-$root/build}"
rows="${1:-1000000}"
csv="/tmp/tabulon_bench_${rows}.csv"
program="$build/bench/read_bench"
runs=3

echo "== building read_bench in $build"
[ -f "$build/build.ninja" ] || cmake -S "$root" -B "$build" -G Ninja
cmake --build "$build" --target read_bench -j2 >/dev/null

if [ ! -s "$csv" ]; then
    echo "== generating $csv ($rows rows)"
    /usr/bin/python3 "$here/make_csv.py" "$rows" "$csv" >/dev/null
fi
echo "== $csv: $(du -m "$csv" | cut -f1) MB, $(nproc) cores, $runs runs a mode"

cat "$csv" >/dev/null # warm cache, as in the peer figures
for mode in decode speed memory; do
    for _ in $(seq "$runs"); do
        "$program" "$csv" "$mode"
    done
done
