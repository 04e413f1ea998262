#!/usr/bin/env bash
# Times the whole round trip that users feel: tabulon -cli reads the 1M-row benchmark CSV and
# writes it back as CSV. Prints the median wall time and max RSS of 3 runs for each
# "Optimize processing for" mode, next to the fastest peer measured on these machines.
# Usage: bench/roundtrip.sh [rows]   (default 1000000)
set -euo pipefail

rows="${1:-1000000}"
source "$(dirname "$0")/common.sh"

write_document "$work/roundtrip.tabulon" "$(input_element 1 "$csv" 0 0)" "" \
    "$(output_element 2 300)" '<connection start_id="1" end_id="2"/>'

echo "== $csv: $(du -m "$csv" | cut -f1) MB, $(nproc) cores, median of $runs runs"
for mode in 0 1; do
    printf '[General]\noptimize_for=%s\n' "$mode" > "$XDG_CONFIG_HOME/Velmora/Tabulon.conf"
    time_document "$work/roundtrip.tabulon"
    name=$([ "$mode" = 0 ] && echo "minimum memory" || echo "maximum speed")
    printf 'round trip, %-15s %6.2f s (user %.2f, sys %.2f)  %5d MiB   (fastest peer 1.82 s; pandas 419 MiB)\n' \
        "$name:" "$seconds" "$user" "$system" "$rss_mib"
done
[ "$(wc -l < "$csv")" = "$(wc -l < "$work/out.csv")" ] \
    && echo "== output has as many lines as the input" || echo "== output line count DIFFERS"
