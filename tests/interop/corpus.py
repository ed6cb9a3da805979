"""The real files that lie beside the project, where they do."""

import csv
import os
import unittest
from pathlib import Path

FOLDER = Path(os.environ["TESSARET_CORPUS_DIR"])


def manifest():
    """The rows of manifest.tsv, with the place of each file under "file". Skips the tests where there is none."""
    table = FOLDER / "manifest.tsv"
    if not table.exists():
        raise unittest.SkipTest(f"no {table}")
    with open(table, encoding="utf-8", newline="") as lines:
        rows = list(csv.DictReader(lines, delimiter="\t", quoting=csv.QUOTE_NONE))
    for row in rows:
        row["file"] = FOLDER.parent / row["path"]
    return rows
