#!/usr/bin/python3
"""Lists the files of the project, without builds: project_files.py [PATTERN...], patterns of file names as in "*.cpp"."""

import fnmatch
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def all_files():
    """Names relative to the top, in order: what git knows or would take; in a tree without git, what lies there."""
    git = ["git", "-c", "safe.directory=*", "-C", str(ROOT)]
    try:
        listing = subprocess.run(git + ["ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                                 check=True, capture_output=True).stdout
        names = listing.decode().split("\0")
        return sorted({name for name in names if name and (ROOT / name).is_file()})
    except (OSError, subprocess.CalledProcessError):
        found = (path.relative_to(ROOT) for path in ROOT.rglob("*") if path.is_file())
        return sorted(str(path) for path in found
                      if path.parts[0] not in ("build", ".git") and "__pycache__" not in path.parts)


def files(*patterns):
    return [name for name in all_files()
            if any(fnmatch.fnmatch(pathlib.PurePath(name).name, pattern) for pattern in patterns)]


if __name__ == "__main__":
    for name in files(*(sys.argv[1:] or ["*"])):
        print(name)
