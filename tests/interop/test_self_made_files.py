"""Files made with pydicom, so that there is something to test where the real files are absent."""

import unittest

import file_tests
import self_made
import variants


class SelfMadeFiles(file_tests.FileTests, unittest.TestCase):
    @classmethod
    def make_files(cls, folder):
        cls.native = self_made.make_native(folder)
        by_dcmconv = [path for _, path in variants.make(cls.native[:1], folder / "anew")[cls.native[0]]]
        encapsulated = self_made.make_encapsulated(folder)
        return {path.name: path for path in cls.native + by_dcmconv + encapsulated}

    @classmethod
    def files_to_vary(cls):
        return [path.name for path in cls.native]


if __name__ == "__main__":
    unittest.main()
