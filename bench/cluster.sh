#!/bin/bash
# Times Cluster on 100,000 distinct texts: "Manual" with 1,000 terms and "Automatic" with the
# default 10 clusters, each at the default closeness of 50% and at 80%.
# Usage: bench/cluster.sh [values]   (default 100000; the file is kept in /tmp between runs)
# TABULON_BUILD_DIR names the build directory whose tabulon is measured.
set -euo pipefail

values="${1:-100000}"
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="${TABULON_BUILD_DIR:-$root/build}"
runs="${TABULON_BENCH_RUNS:-3}"
us=$'\x1f'
# The element writers and the timing of common.sh, without its benchmark CSV.
eval "$(sed -n '/^# The <input> element/,$p' "$here/common.sh")"

echo "== building tabulon in $build"
[ -f "$build/build.ninja" ] || cmake -S "$root" -B "$build" -G Ninja
cmake --build "$build" --target tabulon -j2 >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_RUNTIME_DIR="$work"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME/Velmora"

names="/tmp/tabulon_cluster_${values}.csv"
terms="/tmp/tabulon_cluster_${values}_terms.txt"
if [ ! -s "$names" ]; then
    echo "== generating $names ($values distinct texts)"
    /usr/bin/python3 - "$values" "$names" "$terms" <<'PY'
import random, sys
count, path, terms_path = int(sys.argv[1]), sys.argv[2], sys.argv[3]
rng = random.Random(15)
letters = "abcdefghijklmnopqrstuvwxyz"
def word():
    return "".join(rng.choice(letters) for _ in range(rng.randint(3, 9)))
suffixes = ["ltd", "inc", "gmbh", "sa", "plc", "corp", "co", "group", "holdings", "bv"]
bases = sorted({" ".join([word(), word()] + ([rng.choice(suffixes)] if rng.random() < .6 else []))
                for _ in range(2500)})
def variant(text):
    text = list(text)
    for _ in range(rng.randint(0, 3)):
        at = rng.randrange(len(text))
        roll = rng.random()
        if roll < .4:
            text[at] = rng.choice(letters)
        elif roll < .7 and len(text) > 3:
            del text[at]
        else:
            text.insert(at, rng.choice(letters))
    text = "".join(text)
    return text.upper() if rng.random() < .1 else text.title() if rng.random() < .3 else text
seen = set()
with open(path, "w") as out:
    out.write("id,name\n")
    while len(seen) < count:
        text = variant(rng.choice(bases))
        if text.strip() and text not in seen:
            seen.add(text)
            out.write(f"{len(seen)},{text}\n")
with open(terms_path, "w") as out:
    out.write("\n".join(bases[:1000]))
PY
fi
echo "== $names: $values distinct texts, $(nproc) cores, $runs runs a case"

encoded_terms=$(/usr/bin/python3 -c 'import sys, urllib.parse; print(urllib.parse.quote(open(sys.argv[1]).read(), safe=""))' "$terms")
cluster_element() { # way terms closeness
    echo "<transform id=\"2\" name=\"Cluster\" pos_v12=\"300${us}0\"><parameters>" \
        "<parameter name=\"Column\" type=\"0\" value=\"2\"/>" \
        "<parameter name=\"Clustering\" type=\"6\" value=\"$1\"/>" \
        "<parameter name=\"Terms\" type=\"18\" value=\"$2\"/>" \
        "<parameter name=\"Fuzziness\" type=\"8\" value=\"$3\"/>" \
        "<parameter name=\"Max_Auto_Clusters\" type=\"8\" value=\"10\"/>" \
        "<parameter name=\"Max_Auto_Time\" type=\"8\" value=\"60\"/>" \
        "<parameter name=\"Case_Sensitive\" type=\"5\" value=\"0\"/></parameters></transform>"
}

printf '%-34s %8s %8s %8s\n' case seconds user_s rss_MiB
for closeness in 50 80; do
    for way in Manual Automatic; do
        document="$work/cluster_${way}_${closeness}.tabulon"
        write_document "$document" "$(input_element 1 "$names" 0 0)" \
            "$(cluster_element "$way" "$encoded_terms" "$closeness")" \
            "$(output_element 3 600)" \
            "<connection start_id=\"1\" end_id=\"2\"/><connection start_id=\"2\" end_id=\"3\"/>"
        time_document "$document"
        printf '%-34s %8s %8s %8s\n' "$way at $closeness%" "$seconds" "$user" "$rss_mib"
    done
done
