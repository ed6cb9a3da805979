"""Any compressed syntax to any other, with the tool: pixels stay where nothing may be lost, elements tell the truth, and the listing shows
what was made."""

import json
import pathlib
import subprocess
import tempfile
import unittest

import codec_images
import numpy
import peers
import pydicom
import tool_runs

UID = "1.2.840.10008.1.2"
EXPLICIT = f"{UID}.1"
NATIVE = [UID, EXPLICIT, f"{UID}.2"]
LOSSLESS = [f"{UID}{tail}" for tail in (".5", ".4.57", ".4.70", ".4.80", ".4.90")]
LOSSY = [f"{UID}{tail}" for tail in (".4.50", ".4.51", ".4.81", ".4.91")]
KINDS = ("ct", "rgb", "palette", "mono1", "multiframe")


def holds(kind, syntax):
    """What a syntax refuses: JPEG baseline has 8 bits; entries of a palette may not be nearly right."""
    if kind == "palette":
        return syntax not in LOSSY
    return kind == "rgb" or not syntax.endswith(".4.50")


def pixels(path):
    with_pixels = pydicom.dcmread(path)
    return codec_images.read(with_pixels), with_pixels


def complaints(path):
    done = subprocess.run(["dciodvfy", path], capture_output=True, check=False)
    return {line for line in done.stderr.decode(errors="replace").splitlines() if line.startswith("Error")}


class Transcoding(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def make(self, kind):
        subprocess.run([tool_runs.TOOL, "-q", "phantom", "--kind", kind, "--size", "48", "--slices", "3", self.folder / kind], check=True)
        return sorted((self.folder / kind).iterdir())[0]

    def decoded(self, path):
        target = self.folder / "decoded.dcm"
        tool_runs.transcode(path, EXPLICIT, target)
        return pixels(target)

    def check_elements(self, kind, source, path, syntax):
        image = pydicom.dcmread(path)
        self.assertEqual(image.file_meta.TransferSyntaxUID, syntax)
        if syntax in LOSSY:
            self.assertEqual(image.LossyImageCompression, "01")
            self.assertEqual(image.ImageType[0], "DERIVED")
        if image.SamplesPerPixel > 1:
            self.assertEqual(image.PlanarConfiguration, 0)
        listing = json.loads(subprocess.run([tool_runs.TOOL, "dump", "--json", path], capture_output=True, check=True).stdout)
        text = json.dumps(listing)
        self.assertIn(syntax, text)
        frames = int(image.get("NumberOfFrames", 1) or 1)
        self.assertEqual(len(list(peers.fragments(image.PixelData))), 1 + frames)  # and the offset table
        self.assertEqual(complaints(path) - complaints(source), set())

    def test_every_syntax_becomes_every_other(self):
        for kind in KINDS[1::3] if tool_runs.INSTRUMENTED else KINDS:
            native = self.make(kind)
            original, _ = pixels(native)
            for first in LOSSLESS + LOSSY:
                if not holds(kind, first):
                    with self.subTest(kind=kind, refused=first), self.assertRaisesRegex(AssertionError, "not to be had in"):
                        tool_runs.transcode(native, first, self.folder / "refused.dcm")
                    continue
                one = self.folder / "first.dcm"
                tool_runs.transcode(native, first, one)
                with self.subTest(kind=kind, first=first):
                    self.check_elements(kind, native, one, first)
                    held, _ = self.decoded(one)
                    if first in LOSSLESS:
                        numpy.testing.assert_array_equal(held, original)
                for second in NATIVE + LOSSLESS + LOSSY:
                    if not holds(kind, second):
                        continue
                    with self.subTest(kind=kind, first=first, second=second):
                        two = self.folder / "second.dcm"
                        tool_runs.transcode(one, second, two)
                        if second not in LOSSY:
                            again, _ = self.decoded(two)
                            numpy.testing.assert_array_equal(again, held)


if __name__ == "__main__":
    unittest.main()
