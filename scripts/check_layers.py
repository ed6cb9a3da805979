#!/usr/bin/python3
"""Holds the order of the floors: a file includes from its own folder and from folders with a smaller number in
src/floors.txt only, names what it includes relative to src/, and uses nothing but the C++ standard library and POSIX.

Prints each break as FILE:LINE: WORDS and ends with 1 when there is one.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')


def read_floors(path):
    floors = {}
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            number, folder = line.split()
            floors[folder] = int(number)
    return floors


def words_for(floor, quote, target, floors):
    """Says what is wrong with one include of a file on `floor`, or returns None."""
    folder = target.split("/")[0]
    if folder == "tessaret":
        return None if (ROOT / "include" / target).exists() else "no such public header"
    if quote == "<":
        foreign = "/" in target and folder not in ("sys", "netinet", "arpa", "net")
        return "neither the standard library nor POSIX" if foreign else None
    if folder not in floors or "/" not in target:
        return "not named relative to src/"
    if folder != floor and floors[folder] >= floors[floor]:
        return f"{floor} may not see {folder}"
    return None


def main():
    floors = read_floors(ROOT / "src" / "floors.txt")
    breaks = 0
    for path in sorted((ROOT / "src").rglob("*")):
        if path.suffix not in (".h", ".hpp", ".cpp", ".c", ".inc"):
            continue
        relative = path.relative_to(ROOT)
        floor = relative.parts[1]
        if floor not in floors:
            print(f"{relative}: its folder is not in src/floors.txt", file=sys.stderr)
            breaks += 1
            continue
        for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
            match = INCLUDE.match(line)
            words = match and words_for(floor, match[1], match[2], floors)
            if words:
                print(f'{relative}:{number}: "{match[2]}": {words}', file=sys.stderr)
                breaks += 1
    return 1 if breaks else 0


if __name__ == "__main__":
    sys.exit(main())
