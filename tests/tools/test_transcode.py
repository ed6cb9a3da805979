"""tessaret transcode: pixel data in another transfer syntax; what comes out is read by another program."""

import json
import struct
import unittest

import pydicom

import tool
from tool import BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, MPEG, OUTPUT_FAILED, USAGE, element, image, item, meta, run

NAMES = {IMPLICIT: ("implicit", "ImplicitVRLittleEndian", IMPLICIT), EXPLICIT: ("explicit", "ExplicitVRLittleEndian", EXPLICIT),
         BIG_ENDIAN: ("big", "ExplicitVRBigEndian", BIG_ENDIAN)}


class Transcode(tool.ToolTest):

    def source(self, syntax, more=b""):
        return self.write("in.dcm", meta(syntax) + image(implicit=syntax == IMPLICIT, order=">" if syntax == BIG_ENDIAN else "<") + more)

    def refuse(self, source, words, *arguments):
        out = self.path("out.dcm")
        self.assert_ends(run("transcode", *arguments, source, out), INPUT_FAILED, f"tessaret: {source}: {words}\n")
        self.assertFalse(out.exists())
        self.assert_no_leftovers()

    def test_every_native_syntax_becomes_every_other(self):
        for old in NAMES:
            source = self.source(old)
            for new, names in NAMES.items():
                for name in names:
                    with self.subTest(f"{old} {name}"):
                        out = self.path("out.dcm")
                        self.assert_ends(run("transcode", "--force", "--to", name, source, out), DONE, "")
                        data = pydicom.dcmread(out)
                        self.assertEqual(data.file_meta.TransferSyntaxUID, new)
                        self.assertEqual((data.Rows, data.BitsAllocated, data.PatientName), (2, 16, "Doe^John"))
                        self.assertEqual(data.PixelData, struct.pack((">" if new == BIG_ENDIAN else "<") + "6H", *range(1, 7)))

    def test_a_data_set_without_pixels_changes_too(self):
        source, out = self.write("in.dcm", meta(EXPLICIT) + element(0x00280010, "US", b"\1\0")), self.path("out.dcm")
        self.assert_ends(run("transcode", "-v", "--to", "big", source, out), DONE, f"tessaret: {out}: written in ExplicitVRBigEndian\n")
        self.assertEqual(pydicom.dcmread(out).Rows, 1)
        out.unlink()
        self.refuse(source, "there is no pixel data", "--to", "rle")

    def test_what_no_codec_makes_is_refused(self):
        mpeg = "1.2.840.10008.1.2.4.100"
        self.refuse(self.source(EXPLICIT), f"not to be had in MPEG2MPML: Unknown transfer syntax [{mpeg}]", "--to", mpeg)
        self.refuse(self.source(EXPLICIT), "not to be had in 1.2.3: Unknown transfer syntax [1.2.3]", "--to", "1.2.3")

    def test_what_a_codec_cannot_hold_is_refused_in_its_words(self):
        self.refuse(self.source(EXPLICIT), "not to be had in JPEGBaseline8Bit: Transfer syntax [1.2.840.10008.1.2.4.50]: "
                    "samples of 16 bits in 16 are not encoded, only those of 8 in 8", "--to", "jpeg")

    def test_how_much_is_lost_can_be_said(self):
        content = meta(EXPLICIT) + b"".join(element(0x00280000 | low, "US", struct.pack("<H", value)) for low, value in (
            (0x0002, 1), (0x0010, 64), (0x0011, 64), (0x0100, 8), (0x0101, 8), (0x0102, 7), (0x0103, 0)))
        content = content.replace(element(0x00280010, "US", struct.pack("<H", 64)),
                                  element(0x00280004, "CS", "MONOCHROME2") + element(0x00280010, "US", struct.pack("<H", 64)))
        noise = bytes(number * number * 7 % 251 for number in range(64 * 64))
        source = self.write("in.dcm", content + element(0x7FE00010, "OB", noise))
        sizes = {}
        for name, syntax, values in (("--quality", "jpeg", (10, 90, 100)), ("--near", "jpeg-ls-lossy", (20, 2, 0)),
                                     ("--ratio", "jpeg2000", (40, 10, 1))):
            out = self.path("out.dcm")
            sizes[name] = []
            for value in values:
                self.assert_ends(run("transcode", "--force", "--to", syntax, name, value, source, out), DONE, "")
                sizes[name].append(out.stat().st_size)
                self.assertEqual(pydicom.dcmread(out).get("LossyImageCompression"), None if value in (0, 1) else "01")
            self.assertEqual(sizes[name], sorted(set(sizes[name])), name)
            with self.subTest("the default"):
                self.assert_ends(run("transcode", "--force", "--to", syntax, source, out), DONE, "")
                self.assertEqual(out.stat().st_size, sizes[name][1])
            self.assert_ends(run("transcode", "--force", "--to", syntax, name, 5000, source, out), USAGE)

    def test_names_of_the_dictionary_are_known(self):
        # JPEG Lossless, Non-Hierarchical (Process 14), has no short word.
        self.assert_ends(run("transcode", "--to", "JPEGLossless", self.source(EXPLICIT), self.path("lossless.dcm")), DONE, "")
        self.assertEqual(pydicom.dcmread(self.path("lossless.dcm")).file_meta.TransferSyntaxUID, "1.2.840.10008.1.2.4.57")
        for name in ("CTImageStorage", "jpeglossless", "", "JPEGLossless ", ".57", "1.2.840.10008.", "1..2", "1.02", "5"):
            result = run("transcode", "--to", name, self.source(EXPLICIT), self.path("out.dcm"))
            self.assert_ends(result, USAGE)
            self.assertIn(f"--to: {name} is no transfer syntax: one of implicit,", result.stderr.decode())

    def test_fragments_never_come_to_a_file_of_another_syntax(self):
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + item(b"") + item(b"\xff\xd8") + tool.sequence_end()
        icon = element(0x00880200, "SQ", item(element(0x00280010, "US", b"\1\0") + pixels))
        for content in (pixels, icon, icon + element(0x7FE00010, "OW", b"\1\2")):
            for name in ("explicit", "implicit", "big", "rle"):
                self.refuse(self.write("in.dcm", meta(EXPLICIT) + content),
                            "holds fragments of compressed pixel data but names no compression", "--to", name)
        for content in (icon, icon + pixels):
            for name in ("explicit", "big", "rle"):
                self.refuse(self.write("in.dcm", meta(JPEG) + content),
                            "the pixel data of an item is compressed, and only that of the image itself is changed", "--to", name)
        # The syntax that it has is the engine's business.
        self.refuse(self.write("in.dcm", meta(MPEG) + icon + pixels), f"Unknown transfer syntax [{MPEG}]", "--to", MPEG)

    def test_compressed_pixel_data_without_a_codec_is_refused_in_the_words_of_the_engine(self):
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + item(b"") + item(b"\xff\xd8\xff\xd9") + tool.sequence_end()
        source = self.write("in.dcm", meta(MPEG) + element(0x00280010, "US", b"\1\0") + pixels)
        self.refuse(source, f"Unknown transfer syntax [{MPEG}]", "--to", "explicit")

    def test_big_endian_pixels_whose_order_is_not_certain_stay_big_endian(self):
        for bits, vr, refused in ((16, "OW", False), (8, "OB", False), (16, "OB", True), (32, "OW", True)):
            with self.subTest(f"{bits} {vr}"):
                number = lambda tag, value: element(tag, "US", struct.pack(">H", value), order=">")
                source = self.write("in.dcm", meta(BIG_ENDIAN) + number(0x00280100, bits) + element(0x7FE00010, vr, bytes(range(8)), order=">"))
                out = self.path("out.dcm")
                for name in ("implicit", "explicit"):
                    if refused:
                        self.refuse(source, "the order of the bytes in its pixel data is not certain, since programs write big endian "
                                            "pixels of this size in two ways", "--to", name)
                    else:
                        self.assert_ends(run("transcode", "--force", "--to", name, source, out), DONE, "")
                self.assert_ends(run("transcode", "--force", "--to", "big", source, out), DONE, "")
                self.assertEqual(pydicom.dcmread(out).PixelData, bytes(range(8)))
                out.unlink()

    def test_what_the_implicit_form_would_lose_is_refused(self):
        source = self.write("in.dcm", meta(EXPLICIT) + element(0x00081140, "LO", "x"))
        self.refuse(source, "(0008,1140) is LO, but a sequence by the dictionary", "--to", "implicit")

    def test_signed_values_become_signed_when_types_are_written(self):
        content = element(0x00280103, "US", b"\1\0", implicit=True) + element(0x00280106, "SS", b"\xff\xff", implicit=True)
        out = self.path("out.dcm")
        self.assert_ends(run("transcode", "--to", "explicit", self.write("in.dcm", meta(IMPLICIT) + content), out), DONE, "")
        self.assertEqual(pydicom.dcmread(out).SmallestImagePixelValue, -1)

    def test_an_element_of_a_newer_type_stays_readable(self):
        # Written as UN, since the library's writers would give UC a length that others misread.
        content = element(0x00080119, "UC", "code", implicit=True) + element(0x00100010, "PN", "behind", implicit=True)
        out = self.path("out.dcm")
        self.assert_ends(run("transcode", "--to", "explicit", self.write("in.dcm", meta(IMPLICIT) + content), out), DONE, "")
        self.assertIn(struct.pack("<HH2sHI", 0x0008, 0x0119, b"UN", 0, 4) + b"code", out.read_bytes())
        self.assertEqual(pydicom.dcmread(out).PatientName, "behind")

    def test_a_file_that_is_there_is_replaced_only_by_force(self):
        source = self.source(EXPLICIT)
        self.assert_ends(run("transcode", "--to", "big", source, source), OUTPUT_FAILED,
                         f"tessaret: {source}: is there already; --force replaces it\n")
        self.assert_ends(run("transcode", "--force", "--to", "big", source, source), DONE, "")
        self.assertEqual(pydicom.dcmread(source).file_meta.TransferSyntaxUID, BIG_ENDIAN)

    def test_a_file_that_does_not_read_whole_is_not_written_anew(self):
        result = run("transcode", "--to", "big", self.write("cut.dcm", (meta(EXPLICIT) + image())[:-3]), self.path("out.dcm"))
        self.assert_ends(result, INPUT_FAILED)
        self.assertFalse(self.path("out.dcm").exists())

    def test_names_that_nobody_knows_are_wrong_usage(self):
        result = run("transcode", "--to", "jpg", "a", "b")
        self.assert_ends(result, USAGE)
        self.assertIn(b"jpg is no transfer syntax: one of implicit, explicit, big, deflated, jpeg,", result.stderr)

    def test_the_report_names_both_syntaxes(self):
        source, out = self.source(EXPLICIT), self.path("out.dcm")
        report = json.loads(run("transcode", "--json", "--to", "big", source, out).stdout)
        self.assertEqual(report, {"input": str(source), "output": str(out), "from": EXPLICIT, "to": BIG_ENDIAN})


if __name__ == "__main__":
    unittest.main()
