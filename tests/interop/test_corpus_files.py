"""The real files."""

import unittest

import corpus
import file_tests
import known_differences
import peers

LARGEST_TO_VARY = 100_000  # bytes
NATIVE = (peers.IMPLICIT_LITTLE, peers.EXPLICIT_LITTLE, peers.EXPLICIT_BIG)


class CorpusFiles(file_tests.FileTests, unittest.TestCase):
    known = known_differences.BY_TEST

    @classmethod
    def make_files(cls, folder):
        cls.rows = corpus.manifest()
        return {row["path"]: row["file"] for row in cls.rows}

    @classmethod
    def files_to_vary(cls):
        return [
            row["path"]
            for row in cls.rows
            if row["transfer_syntax"] in NATIVE and row["file"].stat().st_size <= LARGEST_TO_VARY
        ]


if __name__ == "__main__":
    unittest.main()
