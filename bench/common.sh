# Shared set-up of the benchmark scripts: builds tabulon, makes the benchmark CSV, isolates the
# settings, and times documents run headless. Source it after setting `rows`.

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(dirname "$here")"
build="${TABULON_BUILD_DIR:-$root/build}"
csv="/tmp/tabulon_bench_${rows}.csv"
runs="${TABULON_BENCH_RUNS:-3}"
us=$'\x1f'

echo "== building tabulon in $build"
[ -f "$build/build.ninja" ] || cmake -S "$root" -B "$build" -G Ninja
cmake --build "$build" --target tabulon -j2 >/dev/null

if [ ! -s "$csv" ]; then
    echo "== generating $csv ($rows rows)"
    /usr/bin/python3 "$here/make_csv.py" "$rows" "$csv" >/dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_RUNTIME_DIR="$work"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME/Velmora"
cat "$csv" >/dev/null # warm cache, as in the peer figures

# The <input> element of a CSV file with a header, at canvas position x,y.
input_element() { # id path x y
    echo "<input medium=\"0\" id=\"$1\" header=\"1\" trim=\"1\" simplify=\"1\" ignore_empty=\"1\"" \
        "path=\"${2//\//%2F}\" file_type=\"0\" delimiter=\"1\" quote=\"1\" encoding=\"Automatic\"" \
        "pos_v12=\"$3${us}$4\"/>"
}

# The <output> element of a CSV file out.csv in the work folder.
output_element() { # id x
    echo "<output id=\"$1\" path=\"out.csv\" file_type=\"0\" delimiter=\"1\" line_endings=\"2\"" \
        "quote=\"0\" bom=\"0\" enable_output=\"1\" write_header=\"1\" pos_v12=\"$2${us}0\"/>"
}

# Writes a document: inputs, transforms and connections are given as element text.
write_document() { # file inputs transforms outputs connections
    cat > "$1" <<DOC
<!DOCTYPE Tabulon>
<root>
    <meta><version value="81"/><auto_run_on value="1"/></meta>
    <inputs>$2</inputs>
    <transforms>$3</transforms>
    <outputs>$4</outputs>
    <connections>$5</connections>
</root>
DOC
}

# Runs a document $runs times; sets `seconds` and `rss_mib` to the median run's figures, and
# `user` and `system` to the median CPU times. The machines are virtual and shared: system
# time (page faults the host serves) swings from 0.1 to 0.9 s between equal runs, while user
# time holds within a few per cent, so it tells a change in the program from the host's.
time_document() { # document
    local results=() median
    for _ in $(seq "$runs"); do
        /usr/bin/time -f '%e %M %U %S' -o "$work/time" "$build/tabulon" -cli "$1" >/dev/null 2>&1
        results+=("$(cat "$work/time")")
    done
    median=$(printf '%s\n' "${results[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p")
    read -r seconds rss_mib _ _ <<< "$median"
    rss_mib=$((rss_mib / 1024))
    user=$(printf '%s\n' "${results[@]}" | awk '{ print $3 }' | sort -n | sed -n "$(((runs + 1) / 2))p")
    system=$(printf '%s\n' "${results[@]}" | awk '{ print $4 }' | sort -n | sed -n "$(((runs + 1) / 2))p")
}
