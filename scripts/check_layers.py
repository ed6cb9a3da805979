#!/usr/bin/python3
"""Holds the order of the floors: a file includes from its own folder and from folders with a smaller number in
src/floors.txt only, names what it includes relative to src/, and uses nothing but the C++ standard library and POSIX.
Hosts and codecs include the public headers, what they have themselves, and of the floors those alone that know nothing of DICOM.

Prints each break as FILE:LINE: WORDS and ends with 1 when there is one.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What may be had of the floors by those that stand outside of the library.
OPEN_TO_HOSTS = {"tools": ("base", "platform"), "codecs": ("base",)}
SUFFIXES = (".h", ".hpp", ".cpp", ".c", ".inc")
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


def host_words_for(folder, target, floors):
    """Says what is wrong with one include of a file of a host, or returns None."""
    first = target.split("/")[0]
    if first == "tessaret":
        return None if (ROOT / "include" / target).exists() else "no such public header"
    if first in floors and "/" in target:
        return None if first in OPEN_TO_HOSTS[folder] else f"{folder} may not see {first}"
    return "leads out of its folder" if ".." in target.split("/") else None


def sources_in(folder):
    return [path for path in sorted((ROOT / folder).rglob("*")) if path.suffix in SUFFIXES]


def breaks_in(path, words_of):
    """Prints what `words_of(quote, target)` says of the includes of a file, and counts that."""
    breaks = 0
    for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
        match = INCLUDE.match(line)
        words = match and words_of(match[1], match[2])
        if words:
            print(f'{path.relative_to(ROOT)}:{number}: "{match[2]}": {words}', file=sys.stderr)
            breaks += 1
    return breaks


def main():
    floors = read_floors(ROOT / "src" / "floors.txt")
    breaks = 0
    for path in sources_in("src"):
        floor = path.relative_to(ROOT).parts[1]
        if floor in floors:
            breaks += breaks_in(path, lambda quote, target, at=floor: words_for(at, quote, target, floors))
        else:
            print(f"{path.relative_to(ROOT)}: its folder is not in src/floors.txt", file=sys.stderr)
            breaks += 1
    for host in OPEN_TO_HOSTS:
        for path in sources_in(host):
            breaks += breaks_in(path, lambda _, target, at=host: host_words_for(at, target, floors))
    return 1 if breaks else 0


if __name__ == "__main__":
    sys.exit(main())
