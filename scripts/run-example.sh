#!/usr/bin/env bash
# Opens the workbench on the example document, or runs that document headless when
# there is no display to open a window on.
set -euo pipefail
program=$1
document=$2
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "run-example: opening $document"
    exec "$program" "$document"
fi
echo "run-example: no display, running $document headless"
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    XDG_RUNTIME_DIR=$(mktemp -d)
    chmod 700 "$XDG_RUNTIME_DIR"
    export XDG_RUNTIME_DIR
fi
"$program" -cli -verbose "$document"
echo "run-example: outputs written beside the document: $(dirname "$document")/sales_clean.csv and sales_clean.md"
