#!/usr/bin/env bash
# Times reading and writing a 10-column sheet of mixed strings and numbers: the benchmark CSV
# turned into an xlsx by xlsxwriter in constant-memory mode. Each figure is the median wall
# time and max RSS of 3 runs, with openpyxl's read-only and write-only modes measured in the
# same run for comparison.
#   read:  the sheet into a dataset (an output with Write mode Disabled), openpyxl iterating
#          every value;
#   write: the CSV into a new workbook (Formatting Automatic), openpyxl writing the CSV's rows.
# Usage: bench/excel.sh [rows]   (default 1000000; the files are kept in /tmp between runs)
set -euo pipefail

rows="${1:-1000000}"
source "$(dirname "$0")/common.sh"

book="/tmp/tabulon_bench_${rows}.xlsx"
if [ ! -s "$book" ]; then
    echo "== generating $book with xlsxwriter (constant memory)"
    /usr/bin/python3 - "$csv" "$book" <<'PY'
import csv, sys, xlsxwriter
book = xlsxwriter.Workbook(sys.argv[2], {'constant_memory': True})
sheet = book.add_worksheet('Data')
numeric = {0, 6, 7}
with open(sys.argv[1], newline='') as source:
    for r, row in enumerate(csv.reader(source)):
        for c, value in enumerate(row):
            if r and c in numeric:
                sheet.write_number(r, c, float(value))
            else:
                sheet.write_string(r, c, value)
book.close()
PY
fi

measure() { # label command...
    local results=() median
    for _ in $(seq "$runs"); do
        /usr/bin/time -f '%e %M' -o "$work/time" "$@" >/dev/null 2>&1
        results+=("$(cat "$work/time")")
    done
    median=$(printf '%s\n' "${results[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p")
    read -r seconds rss_kib <<< "$median"
    printf '%-26s %8.2f s %8d MiB\n' "$label" "$seconds" $((rss_kib / 1024))
}

read_doc="$work/read.tabulon"
write_document "$read_doc" \
    "<input medium=\"0\" id=\"1\" header=\"1\" trim=\"1\" simplify=\"1\" ignore_empty=\"1\" path=\"${book//\//%2F}\" file_type=\"1\" pos_v12=\"0${us}0\"/>" \
    "" "<output id=\"2\" path=\"out.csv\" file_type=\"0\" enable_output=\"0\" pos_v12=\"300${us}0\"/>" \
    '<connection start_id="1" end_id="2"/>'
write_doc="$work/write.tabulon"
write_document "$write_doc" "$(input_element 1 "$csv" 0 0)" "" \
    "<output id=\"2\" path=\"${work//\//%2F}%2Fout.xlsx\" file_type=\"1\" worksheet=\"Data\" enable_output=\"1\" write_header=\"1\" pos_v12=\"300${us}0\"/>" \
    '<connection start_id="1" end_id="2"/>'

openpyxl_read='
import openpyxl, sys
book = openpyxl.load_workbook(sys.argv[1], read_only=True)
count = 0
for row in book.active.iter_rows(values_only=True):
    count += len(row)
print(count)'
openpyxl_write='
import csv, openpyxl, sys
book = openpyxl.Workbook(write_only=True)
sheet = book.create_sheet("Data")
numeric = {0, 6, 7}
with open(sys.argv[1], newline="") as source:
    for r, row in enumerate(csv.reader(source)):
        sheet.append([float(v) if r and c in numeric else v for c, v in enumerate(row)])
book.save(sys.argv[2])'

echo "== $rows rows x 10 columns, median of $runs runs"
label="read: Tabulon" measure "$build/tabulon" -cli "$read_doc"
label="read: openpyxl read-only" measure /usr/bin/python3 -c "$openpyxl_read" "$book"
label="write: Tabulon" measure "$build/tabulon" -cli "$write_doc"
label="write: openpyxl write-only" measure /usr/bin/python3 -c "$openpyxl_write" "$csv" "$work/py.xlsx"
