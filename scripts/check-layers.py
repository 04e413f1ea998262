#!/usr/bin/env python3
"""Checks the layering of the sources. Usage: check-layers.py <src> <core-sources.txt>

- The include graph between folders has no cycle.
- A source of the core library includes only headers of the core library: the list of its
  sources is written by CMake at configure time.
Prints each offence and exits 1 if there is any."""
import re
import sys
from pathlib import Path

src = Path(sys.argv[1])
core = set(Path(sys.argv[2]).read_text().split())
# The entry point sits above everything and may include any folder.
entry_point = "shell/main.cpp"
include_re = re.compile(r'^\s*#\s*include\s+"(([a-z]+)/[^"]+)"', re.M)

edges = {}
problems = []
for path in sorted(src.rglob("*")):
    relative = path.relative_to(src).as_posix()
    if path.suffix not in (".h", ".cpp") or relative == entry_point:
        continue
    here = relative.split("/")[0]
    for header, folder in include_re.findall(path.read_text(encoding="utf-8")):
        if not (src / header).is_file():
            continue
        if folder != here:
            edges.setdefault(here, set()).add(folder)
        if relative in core and header not in core:
            problems.append(f"{relative}: the core includes {header}, which is not the core's")

state = {}


def visit(node, trail):
    state[node] = "open"
    for following in sorted(edges.get(node, ())):
        if state.get(following) == "open":
            cycle = trail[trail.index(following):] + [following]
            problems.append("folder cycle: " + " -> ".join(cycle))
        elif following not in state:
            visit(following, trail + [following])
    state[node] = "done"


for start in sorted(edges):
    if start not in state:
        visit(start, [start])

for problem in problems:
    print(problem)
if not core:
    print("no core sources listed")
sys.exit(1 if problems or not core else 0)
