#!/bin/bash
# Times reading the benchmark CSV into a Dataset in both "Optimize processing for" modes.
# Usage: bench/read_csv.sh [rows]   (default 1000000; the file is kept in /tmp between runs)
# TABULON_BUILD_DIR names the build directory whose tabulon_lib is measured.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="${TABULON_BUILD_DIR:-$root/build}"
rows="${1:-1000000}"
csv="/tmp/tabulon_bench_${rows}.csv"
program="$build/bench/read_bench"
runs=3

echo "== building tabulon_lib in $build"
[ -f "$build/build.ninja" ] || [ -f "$build/Makefile" ] || cmake -S "$root" -B "$build" -G Ninja
cmake --build "$build" --target tabulon_lib -j2 >/dev/null

echo "== compiling $program"
mkdir -p "$build/bench"
g++ -std=c++17 -O2 -g -DNDEBUG -fPIC -Wall -Wextra -Wpedantic \
    -DQT_NO_DEBUG -DQT_NO_FOREACH -DQT_USE_QSTRINGBUILDER \
    -I"$root/src" $(pkg-config --cflags Qt5Core Qt5Gui Qt5Widgets) \
    "$here/read_bench.cpp" -o "$program" \
    "$build/src/libtabulon_lib.a" $(pkg-config --libs Qt5Core Qt5Gui Qt5Widgets)

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
