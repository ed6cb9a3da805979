#!/usr/bin/python3
"""Holds that the project's texts stand on their own: they send nobody to a paper, a number in a tracker or a folder
that a reader does not have, and leave nothing for later. Facts from outside (data/, seeds) may say what they say.

The patterns are written so that they do not find themselves.
"""

import re
import sys

import project_files

OUTSIDE = ("data/tables/", "data/dicom-dict.txt", "data/uid-dict.txt", "fuzz/corpus/")

RULES = (
    (re.compile(r"\bsp[e]c(s|ification|ifications)?\b", re.I), "says nothing to a reader who has only this project"),
    (re.compile(r"\bas sp[e]cified\b", re.I), "say what, not where it was asked for"),
    (re.compile(r"\bP[a]rt\s+[1-6]\.[0-9]"), "points to a text that is not here"),
    (re.compile(r"\b[i]ssue\s*#?\s*[0-9]", re.I), "points to a tracker"),
    (re.compile(r"/[w]ork/"), "names a folder of one machine"),
    (re.compile(r"\b(T[O]DO|F[I]XME|X[X]X)\b"), "leaves something for later"),
)


def main():
    breaks = 0
    for name in project_files.all_files():
        if name.startswith(OUTSIDE):
            continue
        raw = (project_files.ROOT / name).read_bytes()
        if b"\0" in raw:
            continue
        for number, line in enumerate(raw.decode("utf-8", "replace").splitlines(), 1):
            for pattern, words in RULES:
                match = pattern.search(line)
                if match:
                    print(f'{name}:{number}: "{match[0]}" {words}', file=sys.stderr)
                    breaks += 1
    return 1 if breaks else 0


if __name__ == "__main__":
    sys.exit(main())
