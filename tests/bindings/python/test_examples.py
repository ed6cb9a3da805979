"""The example programs, on files made here and on real ones."""

import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import warnings

import package

package.use_library("tessaret")
sys.path.insert(0, str(package.SOURCE_DIR / "tests" / "tools"))

import tool
from tool import BIG_ENDIAN, EXPLICIT, IMPLICIT, UNDEFINED, element, image, item, meta, sequence_end

with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import pydicom

WALK = package.SOURCE_DIR / "examples" / "python" / "walk.py"


class Walk(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.out = self.folder / "out.dcm"

    def walk(self, *arguments):
        return subprocess.run(["/usr/bin/python3", "-B", WALK, *map(str, arguments)], capture_output=True, text=True, check=False,
                              env={**os.environ, "PYTHONPATH": str(package.PACKAGE_FOLDER)})

    def read_out(self):
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            return pydicom.dcmread(self.out)

    def test_it_shows_changes_and_saves_a_file(self):
        inner = element(0x00081140, "SQ", item(element(0x00081155, "UI", b"1.2.9")), length=UNDEFINED) + sequence_end()
        path = self.folder / "in.dcm"
        path.write_bytes(meta(EXPLICIT) + element(0x00080008, "CS", b"ORIGINAL\\PRIMARY") + element(0x00080016, "UI", b"1.2.840.10008.5.1.4.1.1.7")
                         + element(0x00080018, "UI", b"1.2.3.4") + inner
                         + element(0x00100010, "PN", b"Doe^J\xfc") + element(0x00100030, "DA", b"19700102"))
        result = self.walk(path, self.out)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        lines = result.stdout.splitlines()
        for line in ("(0008,0008) CS Image Type: ORIGINAL\\PRIMARY", "(0008,1140) SQ Referenced Image Sequence: 1 items",
                     "    (0008,1155) UI Referenced SOP Instance UID: 1.2.9", "(0010,0010) PN Patient's Name: Doe^J\\xfc",
                     "(0010,0030) DA Patient's Birth Date: 1970-01-02 00:00:00"):
            self.assertIn(line, lines)
        read = self.read_out()
        self.assertEqual((str(read.PatientName), list(read.ImageType)), ("Walked^Through", ["DERIVED", "PRIMARY"]))
        self.assertNotIn("PatientBirthDate", read)
        self.assertEqual(read.ReferencedImageSequence[0].ReferencedSOPInstanceUID, "1.2.9")
        self.assertEqual(read.SourceImageSequence[0].ReferencedSOPInstanceUID, "1.2.3.4")

    def test_it_changes_the_encoding(self):
        for syntax, implicit, order in ((IMPLICIT, True, "<"), (BIG_ENDIAN, False, ">")):
            with self.subTest(syntax):
                path = self.folder / "in.dcm"
                path.write_bytes(meta(syntax) + image(implicit=implicit, order=order))
                self.assertEqual(self.walk(path, self.out).returncode, 0)
                read = self.read_out()
                self.assertEqual((read.file_meta.TransferSyntaxUID, read.Rows, read.PixelData),
                                 (EXPLICIT, 2, struct.pack("<6H", 1, 2, 3, 4, 5, 6)))

    def test_it_says_what_went_wrong(self):
        missing = self.folder / "missing.dcm"
        result = self.walk(missing, self.out)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (1, "", f"{missing}: No such file or directory\n"))
        path = self.folder / "in.dcm"
        path.write_bytes(meta(EXPLICIT) + element(0x00080008, "US", b"\1\0"))  # a type that takes no text
        result = self.walk(path, self.out)
        self.assertEqual((result.returncode, result.stderr), (1, f"{path}: Error converting VARIANT to VR type\n"))
        path.write_bytes(meta(EXPLICIT) + image())
        result = self.walk(path, self.folder / "no" / "folder.dcm")
        self.assertEqual(result.returncode, 5)
        self.assertIn("folder.dcm: ", result.stderr)
        self.assertIn("walk.py IN OUT", self.walk().stderr)

    @tool.needs_corpus
    def test_it_walks_real_files(self):
        walked = 0
        for row in list(tool.corpus_rows())[::40]:
            if "broken" in row["path"] or row["transfer_syntax"] not in (IMPLICIT, EXPLICIT, BIG_ENDIAN):
                continue
            with self.subTest(row["path"]):
                result = self.walk(row["file"], self.out)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assertEqual(str(self.read_out().PatientName), "Walked^Through")
                walked += 1
        self.assertGreater(walked, 2)


if __name__ == "__main__":
    unittest.main()
