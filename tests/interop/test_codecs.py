"""Every syntax of the codec library beside independent programs: what we encode they decode, and the other way round.

A file has one frame for each extreme of its kind of image, so each row is a multi-frame object too. Where another program cannot do
a kind, or does it wrong, KNOWN says so with the reason.
"""

import pathlib
import shutil
import subprocess
import tempfile
import unittest
from collections import namedtuple

import codec_images
import numpy
import pydicom
import tool_runs

RLE = "1.2.840.10008.1.2.5"
EXPLICIT = "1.2.840.10008.1.2.1"

# A program, and the words before the names of the two files.
Program = namedtuple("Program", "name words")

GDCM_RAW = Program("gdcmconv", ["--raw"])

Syntax = namedtuple("Syntax", "uid decoders encoders holds")


def holds_any(_):
    return True


LOSSLESS = [
    Syntax(
        RLE,
        [Program("dcmdrle", []), GDCM_RAW],
        [Program("dcmcrle", []), Program("gdcmconv", ["--rle"])],
        holds_any,
    ),
]

KNOWN = {}


class Codecs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.natives = {}
        for what in codec_images.KINDS:
            path = cls.folder / f"{what.name}.dcm"
            frames = codec_images.frames_of(what)
            codec_images.write(path, what, frames)
            cls.natives[what] = (path, frames)

    def run_program(self, program, source, target):
        """False where it failed."""
        if shutil.which(program.name) is None:
            self.skipTest(f"no {program.name}")
        done = subprocess.run([program.name, *program.words, source, target], capture_output=True, check=False)
        return done.returncode == 0 and target.exists()

    def same(self, path, frames):
        decoded = codec_images.read(pydicom.dcmread(path))
        numpy.testing.assert_array_equal(decoded, frames)

    def test_what_we_encode_others_and_we_decode(self):
        for syntax in LOSSLESS:
            for what, (native, frames) in self.natives.items():
                if not syntax.holds(what):
                    continue
                coded = self.folder / f"{what.name}-{syntax.uid}.dcm"
                back = self.folder / "back.dcm"
                with self.subTest(syntax=syntax.uid, kind=what.name):
                    tool_runs.transcode(native, syntax.uid, coded)
                    tool_runs.transcode(coded, EXPLICIT, back)
                    self.same(back, frames)
                for program in syntax.decoders:
                    if (syntax.uid, program.name, what.name) in KNOWN:
                        continue
                    with self.subTest(syntax=syntax.uid, kind=what.name, program=program.name):
                        back.unlink()
                        self.assertTrue(self.run_program(program, coded, back))
                        self.same(back, frames)

    def test_what_others_encode_we_decode(self):
        for syntax in LOSSLESS:
            for what, (native, frames) in self.natives.items():
                for program in syntax.encoders:
                    if not syntax.holds(what) or (syntax.uid, program.name, what.name) in KNOWN:
                        continue
                    with self.subTest(syntax=syntax.uid, kind=what.name, program=program.name):
                        coded = self.folder / f"{what.name}-{syntax.uid}-by-{program.name}.dcm"
                        back = self.folder / "back.dcm"
                        self.assertTrue(self.run_program(program, native, coded))
                        tool_runs.transcode(coded, EXPLICIT, back)
                        self.same(back, frames)


if __name__ == "__main__":
    unittest.main()
