#!/usr/bin/python3
"""Holds that no source, header, test, fuzz target or bench lies about that no build names: each file must stand, by its
name relative to the list, in the nearest CMakeLists.txt above it. Prints what is missing and ends with 1 when there is
something.
"""

import pathlib
import re
import sys

import project_files

ROOT = project_files.ROOT
BUILT = ("src/", "include/", "tools/", "bench/", "fuzz/", "tests/", "codecs/", "examples/", "viewer/")
KINDS = ("*.h", "*.hpp", "*.c", "*.cpp", "*.h.in", "*_test.sh", "test_*.py", "*_test.py")


def names_in(cmake_list):
    text = re.sub(r"#.*", "", cmake_list.read_text())
    return set(re.findall(r"[\w./+-]+", text))


def nearest_list(path):
    for folder in path.parents:
        if (folder / "CMakeLists.txt").exists():
            return folder / "CMakeLists.txt"
    return None


def is_listed(path, known):
    """A list further up may name a file too, as tests/ does for what lies in tests/support/."""
    for folder in path.parents:
        cmake_list = folder / "CMakeLists.txt"
        if not cmake_list.exists():
            continue
        if cmake_list not in known:
            known[cmake_list] = names_in(cmake_list)
        if str(path.relative_to(folder)) in known[cmake_list]:
            return True
        if folder == ROOT:
            break
    return False


def main():
    known = {}
    missing = 0
    for name in project_files.files(*KINDS):
        path = ROOT / name
        if name.startswith(BUILT) and not is_listed(path, known):
            print(f"{name}: not in {nearest_list(path).relative_to(ROOT)}", file=sys.stderr)
            missing += 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
