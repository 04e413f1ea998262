#!/usr/bin/env bash
# Times the whole round trip that users feel: tabulon -cli reads the 1M-row benchmark CSV and
# writes it back as CSV. Prints the median wall time and max RSS of 3 runs for each
# "Optimize processing for" mode, next to the fastest peer measured on these machines.
# Usage: bench/roundtrip.sh [rows]   (default 1000000)
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="${TABULON_BUILD_DIR:-$root/build}"
rows="${1:-1000000}"
csv="/tmp/tabulon_bench_${rows}.csv"
runs=3

echo "== building tabulon in $build"
[ -f "$build/build.ninja" ] || cmake -S "$root" -B "$build" -G Ninja
cmake --build "$build" --target tabulon -j2 >/dev/null

if [ ! -s "$csv" ]; then
    echo "== generating $csv ($rows rows)"
    /usr/bin/python3 "$here/make_csv.py" "$rows" "$csv" >/dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
us=$'\x1f'
cat > "$work/roundtrip.tabulon" <<DOC
<!DOCTYPE Tabulon>
<root>
    <meta>
        <version value="81"/>
        <auto_run_on value="1"/>
    </meta>
    <inputs>
        <input medium="0" id="1" header="1" trim="1" simplify="1" ignore_empty="1" path="${csv//\//%2F}" file_type="0" delimiter="1" quote="1" encoding="Automatic" pos_v12="0${us}0"/>
    </inputs>
    <outputs>
        <output id="2" path="out.csv" file_type="0" delimiter="1" line_endings="2" quote="0" bom="0" enable_output="1" write_header="1" pos_v12="300${us}0"/>
    </outputs>
    <connections>
        <connection start_id="1" end_id="2"/>
    </connections>
</root>
DOC

export HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_RUNTIME_DIR="$work"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME/Velmora"
cat "$csv" >/dev/null # warm cache, as in the peer figures

echo "== $csv: $(du -m "$csv" | cut -f1) MB, $(nproc) cores, median of $runs runs"
for mode in 0 1; do
    printf '[General]\noptimize_for=%s\n' "$mode" > "$XDG_CONFIG_HOME/Velmora/Tabulon.conf"
    results=()
    for _ in $(seq "$runs"); do
        /usr/bin/time -f '%e %M' -o "$work/time" "$build/tabulon" -cli "$work/roundtrip.tabulon" \
            >/dev/null 2>&1
        results+=("$(cat "$work/time")")
    done
    median=$(printf '%s\n' "${results[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p")
    seconds=${median% *}
    rss=$(( ${median#* } / 1024 ))
    name=$([ "$mode" = 0 ] && echo "minimum memory" || echo "maximum speed")
    printf 'round trip, %-15s %6.2f s  %5d MiB   (fastest peer 1.82 s; pandas 419 MiB)\n' \
        "$name:" "$seconds" "$rss"
done
[ "$(wc -l < "$csv")" = "$(wc -l < "$work/out.csv")" ] \
    && echo "== output has as many lines as the input" || echo "== output line count DIFFERS"
