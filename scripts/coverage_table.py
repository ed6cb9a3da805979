#!/usr/bin/python3
"""Sums gcovr's summary by floor: coverage_table.py summary.json [--enforce] [--files]

--files  adds a row for each file
--enforce  fails when base or core stays below 95 of 100 lines or 85 of 100 branches
"""

import collections
import json
import sys

LEAST = {"base": (95.0, 85.0), "core": (95.0, 85.0)}


def percent(covered, total):
    return 100.0 * covered / total if total else 100.0


def row(name, counts):
    lines, all_lines, branches, all_branches = counts
    print(f"{name:40} {lines:6} / {all_lines:6} {percent(lines, all_lines):6.1f} %   "
          f"{branches:6} / {all_branches:6} {percent(branches, all_branches):6.1f} %")


def main():
    with open(sys.argv[1], encoding="utf-8") as summary:
        files = json.load(summary)["files"]
    floors = collections.defaultdict(lambda: [0, 0, 0, 0])
    print(f"{'':40} {'lines':>24}   {'branches':>24}")
    for file in files:
        counts = [file["line_covered"], file["line_total"], file["branch_covered"], file["branch_total"]]
        floor = file["filename"].split("/")[1]
        for key in (floor, "total"):
            floors[key] = [a + b for a, b in zip(floors[key], counts)]
        if "--files" in sys.argv:
            row(file["filename"], counts)
    for name in sorted(floors, key=lambda key: (key == "total", key)):
        row(name if name == "total" else f"src/{name}", floors[name])
    if "--enforce" not in sys.argv:
        return 0
    below = 0
    for floor, (least_lines, least_branches) in LEAST.items():
        lines, all_lines, branches, all_branches = floors[floor]
        if percent(lines, all_lines) < least_lines or percent(branches, all_branches) < least_branches:
            print(f"src/{floor}: fewer than {least_lines:.0f} % of the lines or {least_branches:.0f} % of the branches",
                  file=sys.stderr)
            below += 1
    return 1 if below else 0


if __name__ == "__main__":
    sys.exit(main())
