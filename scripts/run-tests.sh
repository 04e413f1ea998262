#!/usr/bin/env bash
# Runs every test through CTest without a display.
set -euo pipefail
build_dir=${1:-build}
export QT_QPA_PLATFORM=offscreen
runtime_dir=$(mktemp -d)
trap 'rm -rf "$runtime_dir"' EXIT
chmod 700 "$runtime_dir"
export XDG_RUNTIME_DIR=$runtime_dir
echo "run-tests: ctest in $build_dir"
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
