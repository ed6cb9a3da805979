"""tessaret check and dump of files with several GiB of pixel data: they are read past the pixels, in little memory.

The pixel data are holes, which take no room on the disk and no time to read.
"""

import os
import subprocess
import struct
import unittest

import tool
from tool import DONE, EXPLICIT, INPUT_FAILED, JPEG, TOOL, UNDEFINED, element, item, meta, sequence_end

MIB = 1 << 20
GIB = 1 << 30
LONGEST = 0xFFFFFFFE  # the largest even length; the next one is undefined
MOST_MEMORY = 64 * MIB

TAIL = element(0xFFFCFFFC, "OB", b"tail")
FORMS = (["check"], ["dump"], ["dump", "--json"], ["dump", "--format", "text"])


def number(tag, value):
    return element(tag, "US", struct.pack("<H", value))


def header(frames):
    """Frames of 1 GiB."""
    return b"".join((element(0x00100010, "PN", "Doe^John"), number(0x00280002, 1), element(0x00280004, "CS", "MONOCHROME2"),
                     element(0x00280008, "IS", str(frames)), number(0x00280010, 32768), number(0x00280011, 32768),
                     number(0x00280100, 8)))


@unittest.skipUnless(hasattr(os, "wait4"), "what a program took cannot be asked for here")
class LargeFiles(tool.ToolTest):

    def setUp(self):
        super().setUp()
        probe = self.path("probe")
        with probe.open("wb") as file:
            file.truncate(64 * MIB)
        if probe.stat().st_blocks * 512 > MIB:
            self.skipTest("this file system has no holes, and the files would need 6 GiB of it")

    def file_of(self, *parts):
        """A file of bytes and, for numbers, holes of so many bytes that begin with "first"."""
        path = self.path("large.dcm")
        with path.open("wb") as file:
            for part in parts:
                if isinstance(part, bytes):
                    file.write(part)
                    continue
                end = file.tell() + part
                file.write(b"first")
                file.truncate(end)
                file.seek(end)
        return path

    def native(self, length, tail=TAIL):
        return self.file_of(meta(EXPLICIT) + header(3), element(0x7FE00010, "OW", length=length), length, tail)

    def fragments(self, lengths):
        parts = [meta(JPEG) + header(3) + element(0x7FE00010, "OB", length=UNDEFINED) + item(b"")]
        for length in lengths:
            parts += [struct.pack("<HHI", 0xFFFE, 0xE000, length), length]
        return self.file_of(*parts, sequence_end() + TAIL)

    def output_of(self, arguments, code=DONE, **options):
        """What the tool writes, which took it no more memory than it may take."""
        with self.path("output").open("w+b") as output, self.path("words").open("w+b") as words:
            process = subprocess.Popen([TOOL, *map(str, arguments)], stdout=output, stderr=words, **options)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            output.seek(0)
            words.seek(0)
            self.words = words.read().decode()
            self.assertEqual(process.returncode, code, self.words)
            if not tool.INSTRUMENTED:
                self.assertLessEqual(usage.ru_maxrss * 1024, MOST_MEMORY, arguments)
            return output.read().decode()

    def assert_shows(self, path, lines):
        """Each form comes to the end; the listing has these lines, less what fills them up, and the element behind the pixels."""
        outputs = [self.output_of([*form, path]) for form in FORMS]
        self.assertIn(" 1 read, 0 failed", outputs[0])
        shown = [" ".join(line.split()) for line in outputs[1].splitlines()]
        for line in (*lines, r"(fffc,fffc) OB 74\61\69\6c # 4, 1 Data Set Trailing Padding"):
            self.assertIn(line, shown)
        self.assertIn('"FFFCFFFC":{"vr":"OB","InlineBinary":"dGFpbA=="}', outputs[2].replace(" ", ""))
        self.assertIn("'Data Set Trailing Padding' : 74 61 69 6C |tail|", outputs[3])

    def test_native_pixels_of_3_gib(self):
        path = self.native(3 * GIB)
        self.assert_shows(path, [rf"(7fe0,0010) OW {FIRST} # {3 * GIB}, 1 Pixel Data"])
        self.assertEqual(self.words, "")

    def test_native_pixels_of_the_largest_length(self):
        path = self.native(LONGEST)
        self.assert_shows(path, [rf"(7fe0,0010) OW {FIRST} # {LONGEST}, 1 Pixel Data"])
        self.output_of(["check", path])
        self.assertEqual(self.words, f"tessaret: {path}: warning: pixel data has {LONGEST - 3 * GIB} bytes too many\n")

    def test_two_fragments_of_3_gib(self):
        path = self.fragments([3 * GIB, 3 * GIB])
        self.assert_shows(path, [rf"(fffe,e000) pi {FIRST} # {3 * GIB}, 1 Item", "(7fe0,0010) OB (PixelSequence #=3) # u/l, 1 Pixel Data"])
        self.assertEqual(self.words, "")

    def test_6000_fragments_of_1_mib(self):
        path = self.fragments([MIB] * 6000)
        self.assert_shows(path, [rf"(fffe,e000) pi {FIRST} # {MIB}, 1 Item", "(7fe0,0010) OB (PixelSequence #=6001) # u/l, 1 Pixel Data"])
        self.assertEqual(self.words, "")

    def test_elements_behind_4_gib_are_in_their_order(self):
        # Offsets, which begin anew there, would say otherwise.
        self.output_of(["check", self.fragments([3 * GIB, GIB - 200])])
        self.assertEqual(self.words, "")

    def test_a_file_that_is_cut_within_its_pixels(self):
        at = len(meta(EXPLICIT) + header(3))
        path = self.native(3 * GIB, tail=b"")
        os.truncate(path, path.stat().st_size - 1)
        for form in FORMS:
            self.output_of([*form, path], INPUT_FAILED)
            self.assertEqual(self.words, f"tessaret: {path}: truncated at offset {at}, in (7fe0,0010)\n")
        path = self.fragments([3 * GIB, GIB])
        os.truncate(path, path.stat().st_size - GIB)
        at = len(meta(JPEG) + header(3)) + 12 + 8 + 8 + 3 * GIB
        for form in FORMS:
            self.output_of([*form, path], INPUT_FAILED)
            self.assertEqual(self.words, f"tessaret: {path}: truncated at offset {at}, in (fffe,e000)\n")

    def test_standard_input(self):
        path = self.native(3 * GIB)
        with path.open("rb") as file:
            self.assertIn("1 read, 0 failed", self.output_of(["check", "-"], stdin=file))
        # What comes through a pipe is read, and dropped in pieces.
        path = self.native(256 * MIB)
        with subprocess.Popen(["cat", path], stdout=subprocess.PIPE) as source:
            listing = self.output_of(["dump", "-"], stdin=source.stdout)
        self.assertIn(r"OB 74\61\69\6c", listing)
        self.assertIn(f"# {256 * MIB}, 1 Pixel Data", listing)
        os.truncate(path, path.stat().st_size - len(TAIL) - 1)
        with subprocess.Popen(["cat", path], stdout=subprocess.PIPE) as source:
            self.output_of(["check", "-"], INPUT_FAILED, stdin=source.stdout)
        self.assertIn("truncated at offset", self.words)


# As the listing cuts it.
FIRST = r"66\69\72\73\74" + r"\00" * 15 + r"\..."


if __name__ == "__main__":
    unittest.main()
