"""Every syntax of the codec library beside independent programs: what we encode they decode, and the other way round.

A file has one frame for each extreme of its kind of image, so each row is a multi-frame object too. Where another program cannot do
a kind, or does it wrong, KNOWN says so with the reason.
"""

import pathlib
import subprocess
import tempfile
import unittest
from collections import namedtuple

import codec_images
import numpy
import pydicom
import tool_runs

RLE = "1.2.840.10008.1.2.5"
JPEG_LOSSLESS = "1.2.840.10008.1.2.4.57"
JPEG_LOSSLESS_FIRST = "1.2.840.10008.1.2.4.70"
JPEG_LS = "1.2.840.10008.1.2.4.80"
JPEG_2000 = "1.2.840.10008.1.2.4.90"
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
    Syntax(
        JPEG_LOSSLESS,
        [Program("dcmdjpeg", []), GDCM_RAW],
        [Program("dcmcjpeg", ["+el", "+sv", str(predictor)]) for predictor in range(1, 8)],
        holds_any,
    ),
    Syntax(
        JPEG_LOSSLESS_FIRST,
        [Program("dcmdjpeg", []), GDCM_RAW],
        [Program("dcmcjpeg", ["+e1"]), Program("gdcmconv", ["--jpeg"])],
        holds_any,
    ),
    Syntax(
        JPEG_LS,
        [Program("dcmdjpls", []), GDCM_RAW],
        [Program("dcmcjpls", []), Program("gdcmconv", ["--jpegls"])],
        holds_any,
    ),
    Syntax(JPEG_2000, [GDCM_RAW], [Program("gdcmconv", ["--j2k"])], holds_any),
]

# What other programs do not do, or do wrong, and why: the program, the kind of image, and a syntax or all. A line that is no longer
# true has to go.
NOT_DECODED = {
    ("gdcmconv", "gray-7-of-8", RLE): "it refuses 7 bits stored",
    ("gdcmconv", "gray-7-of-8", JPEG_LOSSLESS): "it refuses 7 bits stored",
    ("gdcmconv", "gray-7-of-8", JPEG_LOSSLESS_FIRST): "it refuses 7 bits stored",
    ("gdcmconv", "rgb-16", RLE): "it takes six segments for something else",
}
NOT_ENCODED = {
    **{
        ("dcmcjpeg", "rgb-by-plane", syntax): "it takes the planes of all frames but one for pixels, and decodes its own likewise"
        for syntax in (JPEG_LOSSLESS, JPEG_LOSSLESS_FIRST)
    },
    ("gdcmconv", "gray-7-of-8", JPEG_LS): "it refuses 7 bits stored",
    **{
        ("gdcmconv", kind, JPEG_LS): "it refuses a single pixel"
        for kind in ("one-pixel-8", "one-pixel-16", "rgb-one-pixel")
    },
    **{
        ("gdcmconv", kind, JPEG_2000): "it crashes over images of one row or column"
        for kind in ("one-pixel-8", "one-pixel-16", "rgb-one-pixel", "one-row", "one-column")
    },
    ("gdcmconv", "rgb-16", JPEG_2000): "it refuses colours of 16 bits",
    **{
        ("gdcmconv", kind, JPEG_2000): "it drops the highest bit of colours that differ most, and decodes its own likewise"
        for kind in ("rgb", "rgb-by-plane")
    },
}


class Codecs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.natives = {}
        for what in codec_images.KINDS[::3] if tool_runs.INSTRUMENTED else codec_images.KINDS:
            path = cls.folder / f"{what.name}.dcm"
            frames = codec_images.frames_of(what)
            codec_images.write(path, what, frames)
            cls.natives[what] = (path, frames)

    def run_program(self, program, source, target):
        """False where it failed."""
        done = subprocess.run([program.name, *program.words, source, target], capture_output=True, check=False)
        return done.returncode == 0 and target.exists()

    def is_same(self, path, frames):
        return numpy.array_equal(codec_images.read(pydicom.dcmread(path)), frames)

    def expect(self, good, known, program, what, syntax):
        """`good` is what came out; where that is known not to be, it must not be."""
        reason = known.get((program.name, what.name, syntax))
        self.assertIs(good, reason is None, reason)

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
                    self.assertTrue(self.is_same(back, frames))
                for program in syntax.decoders:
                    with self.subTest(syntax=syntax.uid, kind=what.name, program=program.name):
                        back.unlink(missing_ok=True)
                        good = self.run_program(program, coded, back) and self.is_same(back, frames)
                        self.expect(good, NOT_DECODED, program, what, syntax.uid)

    def test_what_others_encode_we_decode(self):
        for syntax in LOSSLESS:
            for what, (native, frames) in self.natives.items():
                for program in syntax.encoders:
                    if not syntax.holds(what):
                        continue
                    with self.subTest(syntax=syntax.uid, kind=what.name, program=program):
                        coded = self.folder / f"{what.name}-{syntax.uid}-by-{program.name}.dcm"
                        back = self.folder / "back.dcm"
                        coded.unlink(missing_ok=True)
                        good = self.run_program(program, native, coded)
                        if good:
                            tool_runs.transcode(coded, EXPLICIT, back)
                            good = self.is_same(back, frames)
                        self.expect(good, NOT_ENCODED, program, what, syntax.uid)


if __name__ == "__main__":
    unittest.main()
