"""tessaret convert: every way from one encoding to another, what is refused, and that nothing is lost or half written.

The results are read by other programs.
"""

import hashlib
import json
import os
import re
import stat
import struct
import subprocess
import unittest

import pydicom

import tool
from tool import (BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, OUTPUT_FAILED, TOOL, UNDEFINED, element, item, meta,
                  run, sequence_end)

NATIVE = (IMPLICIT, EXPLICIT, BIG_ENDIAN)


class ConvertTest(tool.ToolTest):

    def setUp(self):
        super().setUp()
        self.out = self.path("out.dcm")

    def convert(self, content, *options):
        """The converted file as pydicom reads it."""
        self.assert_ends(run("convert", "--force", *options, self.write("in.dcm", content), self.out), DONE, "")
        return pydicom.dcmread(self.out)

    def assert_refused(self, content, words, *options):
        file = self.write("in.dcm", content)
        result = run("convert", *options, file, self.out)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(f"tessaret: {file}: {words}", result.stderr.decode())
        self.assertFalse(self.out.exists())
        self.assert_no_leftovers()


class Encodings(ConvertTest):

    def rich(self, order="<", implicit=False):
        """Every width of number, text, bytes, and sequences of both kinds of length in each other."""
        made = lambda tag, vr, value: element(tag, vr, value, implicit, order)
        inner = made(0x00189087, "FD", struct.pack(order + "d", 1000.5)) + made(0x0040A043, "SQ", item(made(
            0x00080100, "SH", "T-D1100"), order))
        nested = item(inner, order) + item(inner, order, defined=False)
        undefined = element(0x00081140, "SQ", nested + sequence_end(order), implicit, order, length=UNDEFINED)
        return b"".join((
            made(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.7"), made(0x00080018, "UI", "1.2.3.4"), undefined,
            made(0x00100010, "PN", "Doe^John"), made(0x00189073, "FD", struct.pack(order + "d", 0.125)),
            made(0x00280009, "AT", struct.pack(order + "2H", 0x0018, 0x1063)),
            made(0x00280010, "US", struct.pack(order + "H", 513)), made(0x00280100, "US", struct.pack(order + "H", 16)),
            made(0x00286020, "US", struct.pack(order + "3H", 1, 2, 772)),
            made(0x00720070, "UT", "some text"), made(0x00720072, "DS", "1.5"),
            made(0x00720076, "FL", struct.pack(order + "f", -2.5)), made(0x00720078, "UL", struct.pack(order + "I", 16909060)),
            made(0x0072007C, "SL", struct.pack(order + "i", -16909060)),
            made(0x0072007E, "SS", struct.pack(order + "h", -1000)),
            made(0x7FE00010, "OW", struct.pack(order + "4H", 1, 256, 515, 65535))))

    def assert_rich(self, dataset):
        self.assertEqual(dataset.PatientName, "Doe^John")
        self.assertEqual(dataset[0x00189073].value, 0.125)
        self.assertEqual(dataset.FrameIncrementPointer, 0x00181063)
        self.assertEqual(dataset.Rows, 513)
        self.assertEqual(list(dataset[0x00286020].value), [1, 2, 772])
        self.assertEqual(dataset[0x00720070].value, "some text")
        self.assertEqual(dataset[0x00720076].value, -2.5)
        self.assertEqual(dataset[0x00720078].value, 16909060)
        self.assertEqual(dataset[0x0072007C].value, -16909060)
        self.assertEqual(dataset[0x0072007E].value, -1000)
        self.assertEqual(len(dataset.ReferencedImageSequence), 2)
        for nested in dataset.ReferencedImageSequence:
            self.assertEqual(nested[0x00189087].value, 1000.5)
            self.assertEqual(nested.ConceptNameCodeSequence[0].CodeValue, "T-D1100")
        order = ">" if dataset.file_meta.TransferSyntaxUID == BIG_ENDIAN else "<"
        self.assertEqual(struct.unpack(order + "4H", dataset.PixelData), (1, 256, 515, 65535))

    def test_every_native_encoding_goes_to_every_one_that_is_written(self):
        for source in NATIVE:
            content = meta(source) + self.rich(">" if source == BIG_ENDIAN else "<", source == IMPLICIT)
            for options, target in (([], source), (["--syntax", "implicit"], IMPLICIT), (["--syntax", "explicit"], EXPLICIT)):
                with self.subTest(source=source, target=target):
                    dataset = self.convert(content, *options)
                    self.assertEqual(dataset.file_meta.TransferSyntaxUID, target)
                    self.assert_rich(dataset)

    def test_a_bare_data_set_has_nothing_before_it(self):
        for source in NATIVE:
            with self.subTest(source):
                content = meta(source) + self.rich(">" if source == BIG_ENDIAN else "<", source == IMPLICIT)
                self.assert_ends(run("convert", "--force", "--no-preamble", self.write("in.dcm", content), self.out), DONE, "")
                self.assertEqual(self.out.read_bytes()[:8], struct.pack("<HHI", 8, 0x16, 26))
                dataset = pydicom.dcmread(self.out, force=True)
                dataset.file_meta.TransferSyntaxUID = IMPLICIT
                self.assert_rich(dataset)

    def test_a_bare_data_set_becomes_a_file(self):
        for order, implicit, syntax in (("<", True, IMPLICIT), ("<", False, EXPLICIT), (">", False, BIG_ENDIAN)):
            with self.subTest(syntax):
                file = self.write("bare", self.rich(order, implicit))
                self.assert_ends(run("convert", "-q", "--force", file, self.out), DONE, "")
                dataset = pydicom.dcmread(self.out)
                self.assertEqual(dataset.file_meta.TransferSyntaxUID, syntax)
                self.assert_rich(dataset)

    def test_a_round_trip_through_every_encoding_gives_the_same_file(self):
        first = self.write("first.dcm", meta(EXPLICIT) + self.rich())
        second, third, fourth = (self.path(name) for name in ("2.dcm", "3.dcm", "4.dcm"))
        self.assert_ends(run("convert", "--syntax", "explicit", first, second), DONE, "")
        self.assert_ends(run("convert", "--syntax", "implicit", second, third), DONE, "")
        self.assert_ends(run("convert", "--syntax", "explicit", third, fourth), DONE, "")
        self.assertEqual(second.read_bytes(), fourth.read_bytes())

    def test_unknown_bytes_of_a_big_endian_file_stay(self):
        dataset = self.convert(meta(BIG_ENDIAN) + element(0x00091001, "UN", b"\1\2\3\4", order=">") +
                               element(0x00091002, "OB", b"\1\2\3\4", order=">"), "--syntax", "explicit")
        self.assertEqual(dataset[0x00091001].value, b"\1\2\3\4")
        self.assertEqual(dataset[0x00091002].value, b"\1\2\3\4")

    def test_compressed_pixels_are_kept_fragment_by_fragment(self):
        fragments = item(struct.pack("<I", 0)) + item(b"\xff\xd8" + bytes(range(100))) + item(b"tail\xff\xd9")
        content = meta(JPEG) + element(0x00100010, "PN", "Doe^John") + element(
            0x7FE00010, "OB", fragments + sequence_end(), length=UNDEFINED)
        dataset = self.convert(content)
        self.assertEqual(dataset.file_meta.TransferSyntaxUID, JPEG)
        self.assertEqual(dataset.PixelData, fragments)  # pydicom takes the delimiter off

    def test_a_compressed_syntax_without_pixels_may_change(self):
        dataset = self.convert(meta(JPEG) + element(0x00100010, "PN", "Doe^John"), "--syntax", "implicit")
        self.assertEqual((dataset.file_meta.TransferSyntaxUID, dataset.PatientName), (IMPLICIT, "Doe^John"))

    def test_group_lengths_go_since_they_no_longer_fit(self):
        content = meta(EXPLICIT) + element(0x00080000, "UL", b"\x63\0\0\0") + element(0x00080060, "CS", "CT")
        for options in ([], ["--syntax", "implicit"]):
            dataset = self.convert(content, *options)
            self.assertNotIn(0x00080000, dataset)
            self.assertEqual(dataset.Modality, "CT")

    def test_the_transfer_syntax_is_known_even_where_the_reader_drops_it(self):
        # With a group length that ends it early (0002,0010) is the last element that counts as meta header.
        syntax = element(0x00020010, "UI", IMPLICIT)
        head = bytes(128) + b"DICM" + element(0x00020000, "UL", struct.pack("<I", len(syntax))) + syntax
        dataset = self.convert(head + tool.image(implicit=True))
        self.assertEqual(dataset.file_meta.TransferSyntaxUID, IMPLICIT)
        self.assertEqual(dataset.Rows, 2)
        compressed = head.replace(IMPLICIT.encode() + b"\0", JPEG.encode()[:18])
        self.assertNotEqual(compressed, head)


class Types(ConvertTest):
    """What an implicit file leaves open and an explicit one has to say."""

    def number(self, tag, value, signed=False):
        return element(tag, "SS" if signed else "US", struct.pack("<h" if signed else "<H", value), implicit=True)

    def test_pixel_values_are_signed_where_the_pixels_are(self):
        for representation, vr in ((0, "US"), (1, "SS")):
            content = meta(IMPLICIT) + self.number(0x00280103, representation) + self.number(0x00280106, -1 & 0x7FFF) + \
                element(0x00280120, "US", struct.pack("<H", 63536), implicit=True)
            dataset = self.convert(content, "--syntax", "explicit")
            self.assertEqual(dataset[0x00280106].VR, vr)
            self.assertEqual(dataset[0x00280120].VR, vr)
            self.assertEqual(dataset.PixelPaddingValue, 63536 if vr == "US" else -2000)

    @staticmethod
    def types_that_may_be_numbers_of_two_bytes():
        """Tag to the types that the table of elements names, of all data elements that may be US."""
        rows = [line.split("\t") for line in (tool.SOURCE_DIR / "data/tables/elements.tsv").read_text().splitlines()[1:]]
        return {int(group + number, 16): types for group, number, types, *_ in rows
                if "US" in types.split(" or ") and "x" not in group + number and int(group, 16) > 4}

    def test_every_element_that_may_be_signed_goes_by_the_pixels_and_no_other(self):
        table = self.types_that_may_be_numbers_of_two_bytes()
        signed = {tag for tag, types in table.items() if types == "US or SS"}
        self.assertLessEqual({0x00280106, 0x00189810, 0x00603006}, signed)
        self.assertIn("US or SS or OW", table.values())
        for representation, expected in ((0, set()), (1, signed)):
            content = b"".join(self.number(tag, representation) for tag in sorted(table))
            dataset = self.convert(meta(IMPLICIT) + content, "--syntax", "explicit")
            self.assertEqual({tag for tag in table if dataset.get_item(tag).VR == "SS"}, expected)
            self.assertEqual({tag for tag in table if dataset.get_item(tag).value != struct.pack("<H", representation)}, set())

    def test_what_is_nested_goes_by_what_surrounds_it(self):
        nested = item(element(0x00281101, "US", struct.pack("<3H", 16, 0x8000, 16), implicit=True))
        content = meta(IMPLICIT) + self.number(0x00280103, 1) + element(0x00880200, "SQ", nested, implicit=True)
        dataset = self.convert(content, "--syntax", "explicit")
        self.assertEqual(dataset.IconImageSequence[0][0x00281101].VR, "SS")
        icon = item(self.number(0x00280103, 0) + element(0x00281101, "US", struct.pack("<3H", 16, 0x8000, 16), implicit=True))
        content = meta(IMPLICIT) + self.number(0x00280103, 1) + element(0x00880200, "SQ", icon, implicit=True)
        dataset = self.convert(content, "--syntax", "explicit")
        self.assertEqual(dataset.IconImageSequence[0][0x00281101].VR, "US")

    def test_a_private_creator_is_text_and_other_private_elements_unknown(self):
        content = meta(IMPLICIT) + element(0x00090010, "LO", "ACME 1.1", implicit=True) + \
            element(0x00091001, "LO", "private", implicit=True)
        dataset = self.convert(content, "--syntax", "explicit")
        self.assertEqual((dataset[0x00090010].VR, dataset[0x00090010].value), ("LO", "ACME 1.1"))
        self.assertEqual((dataset[0x00091001].VR, dataset[0x00091001].value), ("UN", b"private "))

    def test_unknown_stays_unknown_in_an_explicit_file(self):
        dataset = self.convert(meta(EXPLICIT) + element(0x00091001, "UN", b"ab") + element(0x00280107, "UN", b"\1\0"))
        raw = self.out.read_bytes()
        self.assertIn(struct.pack("<HH", 0x0028, 0x0107) + b"UN", raw)
        self.assertEqual(dataset[0x00091001].VR, "UN")

    def values_of_length(self, count):
        return "\\".join(["1"] * count)

    @staticmethod
    def texts(found):
        """The values of an element, which pydicom leaves as bytes when it is UN."""
        return found.value.decode().strip().split("\\") if found.VR == "UN" else [str(value) for value in found.value]

    def test_a_value_too_long_for_its_type_becomes_unknown_with_a_long_length(self):
        for text, vr in ((self.values_of_length(32767) + " ", "DS"), (self.values_of_length(32768) + " ", "UN")):
            content = meta(IMPLICIT) + element(0x0018605A, "FL", b"", implicit=True) + \
                element(0x30060050, "DS", text, implicit=True) + element(0x300A0002, "SH", "behind", implicit=True)
            dataset = self.convert(content, "--syntax", "explicit")
            at = self.out.read_bytes().index(struct.pack("<HH", 0x3006, 0x0050))
            self.assertEqual(self.out.read_bytes()[at + 4:at + 6].decode(), vr)
            self.assertEqual(dataset[0x300A0002].value, "behind")
            self.assertEqual(self.texts(dataset[0x30060050]), text.strip().split("\\"))

    def test_the_same_holds_within_sequences(self):
        long_value = element(0x30060050, "DS", self.values_of_length(40000), implicit=True)
        content = meta(IMPLICIT) + element(0x30060039, "SQ", item(long_value), implicit=True)
        dataset = self.convert(content, "--syntax", "explicit")
        self.assertEqual(len(self.texts(dataset.ROIContourSequence[0][0x30060050])), 40000)
        self.assert_ends(run("check", self.out), DONE, "")

    def test_types_that_other_readers_know_with_a_long_length_become_unknown(self):
        floats = struct.pack("<4f", 1, 2, 3, 4)
        content = meta(IMPLICIT) + element(0x00091001, "LO", "x", implicit=True) + element(0x00660016, "OF", floats, implicit=True) + \
            element(0x00720071, "UR", "http://x", implicit=True)
        dataset = self.convert(content, "--syntax", "explicit")
        at = self.out.read_bytes().index(struct.pack("<HH", 0x0066, 0x0016))
        self.assertEqual(self.out.read_bytes()[at + 4:at + 12], b"UN\0\0" + struct.pack("<I", 16))
        self.assertEqual(bytes(dataset[0x00660016].value), floats)
        back = self.path("back.dcm")
        self.assert_ends(run("convert", "--syntax", "implicit", self.out, back), DONE, "")
        self.assertEqual(bytes(pydicom.dcmread(back)[0x00660016].value), floats)


class Refusals(ConvertTest):

    def test_compressed_pixels_do_not_become_native(self):
        pixels = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8") + sequence_end(), length=UNDEFINED)
        icon = element(0x00880200, "SQ", item(pixels))
        defined = element(0x7FE00010, "OB", b"\xff\xd8")
        for content in (pixels, icon, defined):
            for way in ("implicit", "explicit"):
                self.assert_refused(meta(JPEG) + content, "its pixel data is compressed and cannot be made native", "--syntax", way)
        self.assert_refused(meta(JPEG) + pixels, "its pixel data is compressed and cannot be made native", "--no-preamble")

    def test_fragments_in_a_native_syntax_are_refused(self):
        pixels = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8") + sequence_end(), length=UNDEFINED)
        self.assert_refused(meta(EXPLICIT) + pixels, "holds fragments of compressed pixel data but names no compression")

    def test_a_file_that_does_not_read_to_its_end_is_refused(self):
        whole = meta(EXPLICIT) + tool.image()
        self.assert_refused(whole[:-1], "truncated at offset")
        self.assert_refused(meta("1.2.840.10008.1.2.1.99") + b"x" * 50, "transfer syntax 1.2.840.10008.1.2.1.99")
        self.assert_refused(b"no image", "not DICOM")

    def test_what_the_reader_misread_is_refused(self):
        floats = element(0x7FE00008, "OF", struct.pack("<4f", 1, 2, 3, 4))
        self.assert_refused(meta(EXPLICIT) + floats, "the length of (7fe0,0008)")
        hidden = item(element(0x00080100, "SH", "T-D1100", implicit=True))
        self.assert_refused(meta(EXPLICIT) + element(0x00081140, "UN", hidden + sequence_end(), length=UNDEFINED),
                            "the items of (0008,1140)")

    def test_long_lengths_are_known_whatever_their_values_look_like(self):
        # The length is read as the tag that follows, the first bytes of the value as the letters of a type.
        for vr, value in (("UC", "PNEUMONIA-OF-THE-LEFT-LUNG"), ("UC", "ATROPHY-OF-THE-LEFT-SIDE"), ("UC", "ULCER"),
                          ("UR", "URN:LEX:EU:COMMISSION:1.2.3"), ("OF", bytes(24000)), ("OD", bytes(40000)), ("OL", bytes(8)),
                          ("OV", bytes(70000)), ("SV", bytes(8)), ("UV", b"US\4\0abcd" * 3)):
            with self.subTest(vr=vr, value=value[:12]):
                long = element(0x00080119, vr, value)
                refused = "the length of (0008,0119)"
                code = element(0x00080100, "SH", "T-D1100")
                self.assert_refused(meta(EXPLICIT) + code + long, refused)
                self.assert_refused(meta(EXPLICIT) + code + long + element(0x00100010, "PN", "Doe^John"), refused)
                self.assert_refused(meta(EXPLICIT) + element(0x0040A043, "SQ", item(code + long)), refused)
                self.assert_refused(meta(EXPLICIT) + element(0x0040A043, "SQ", item(code + long) + sequence_end(), length=UNDEFINED),
                                    refused)

    def test_implicit_items_of_unknown_elements_are_refused_whatever_their_lengths(self):
        # The lengths 0, 4 and 8224 read as no letters, as control characters and as two blanks.
        for values in (("", "ABCD"), ("ABCD", ""), ("ABCD", "B" * 8224), ("", "B" * 8224)):
            hidden = item(b"".join(element(0x00111010 + at, "UN", value, implicit=True) for at, value in enumerate(values)))
            self.assert_refused(meta(EXPLICIT) + element(0x00091010, "UN", hidden + sequence_end(), length=UNDEFINED), "")
        # Without letters the first is unknown, and the tag of the second its length: 0x00110006. Behind it twelve zeros remain,
        # which read as one element.
        hidden = item(element(0x00060010, "UN", implicit=True) + element(0x00060011, "UN", bytes(0x00110006 + 8), implicit=True))
        self.assert_refused(meta(EXPLICIT) + element(0x00091010, "UN", hidden + sequence_end(), length=UNDEFINED),
                            "the items of (0009,1010)")

    def test_what_lands_elsewhere_than_it_stood_is_refused(self):
        name = element(0x00100010, "PN", "Doe^John")
        start = meta(EXPLICIT)
        at = len(start)
        for content, words in (
                (name + item(b""), f"an item without a sequence: (fffe,e000) at offset {at + len(name)}"),
                (element(0x00100010, "PN") + item(name), f"an item without a sequence: (fffe,e000) at offset {at + 8}"),
                (element(0x00081140, "SQ", name), f"(0010,0010) at offset {at + 12} stands in a sequence, but in no item"),
                (element(0x00081140, "SQ", name + sequence_end(), length=UNDEFINED),
                 f"(0010,0010) at offset {at + 12} stands in a sequence, but in no item"),
                (element(0x00081140, "SQ", item(element(0x00100020, "LO", "ab", length=40))) + name,
                 f"the length of (0010,0020) at offset {at + 20} goes beyond what it stands in"),
                (element(0x00091010, "OB", item(b"AB\0\0UN\0\0\0\0\0\0") + sequence_end(), length=UNDEFINED),
                 f"(0009,1010) at offset {at} has an undefined length, which its type does not allow")):
            with self.subTest(words=words):
                self.assert_refused(start + content, words)
        fragments = item(b"") + item(b"\xff\xd8") + element(0x00080005, "CS", b"", implicit=True) + item(b"\xff\xd9")
        self.assert_refused(meta(JPEG) + element(0x7FE00010, "OB", fragments + sequence_end(), length=UNDEFINED),
                            f"(0008,0005) at offset {len(meta(JPEG)) + 12 + 8 + 10} stands among the fragments of pixel data")
        # In the implicit form the dictionary says what is a sequence.
        self.assert_refused(meta(IMPLICIT) + element(0x00081140, "SQ", b"HELLO WORLD THERE IT IS ", implicit=True),
                            f"(4548,4c4c) at offset {len(meta(IMPLICIT)) + 8} stands in a sequence, but in no item")

    def test_what_may_pass_is_warned_of(self):
        name = element(0x00100010, "PN", "Doe^John")
        start = meta(EXPLICIT)
        for content, words in (
                (name + element(0x00100010, "PN", "Roe^Jane"), f"(0010,0010) at offset {len(start) + 16} is there twice; the last one counts"),
                (name + sequence_end(), f"stray delimiter (fffe,e0dd) at offset {len(start) + 16}"),
                (struct.pack("<HHHH", 0x0010, 0x0010, 0, 4) + b"Doe ",
                 f"(0010,0010) at offset {len(start)} has zeros where the letters of its type should stand"),
                (element(0x00081140, "SQ", struct.pack("<HHI", 0xFFFE, 0xE000, 40) + name),
                 f"the length of (fffe,e000) at offset {len(start) + 12} does not fit what it holds"),
                (element(0x00081140, "SQ", item(element(0x00100020, "LO", "ab") + bytes(16))) + name + element(0x00100010, "PN", "Roe^Jane"),
                 f"(0010,0010) at offset {len(start) + 12 + 8 + 10 + 16 + 16} is there twice; the last one counts"),
                (element(0x00081140, "SQ", item(element(0x00081199, "SQ", struct.pack("<HHI", 0xFFFE, 0xE000, UNDEFINED) + name,
                                                        length=UNDEFINED))),
                 f"(fffe,e000) at offset {len(start) + 12 + 8 + 12} has no delimiter behind it"),
                (element(0x00081140, "SQ", struct.pack("<HHI", 0xFFFE, 0xE000, UNDEFINED) + name + sequence_end() + sequence_end(),
                         length=UNDEFINED), f"(fffe,e0dd) at offset {len(start) + 12 + 8 + 16} is not the delimiter that is due"),
                (name + element(0x00100020, "LO", "ab") + element(0x00020010, "UI", IMPLICIT),
                 f"(0002,0010) at offset {len(start) + 16 + 10} stands behind the meta header and is dropped"),
                (name + element(0x00080060, "CS", "OT"), f"(0008,0060) at offset {len(start) + 16} stands behind an element of a higher tag"),
                (name + b"\x10\0\x11\0ZZ\2\0ab",
                 f"(0010,0011) at offset {len(start) + 16} has the letters \"ZZ\" where the kind of value should stand")):
            with self.subTest(words=words):
                file = self.write("in.dcm", start + content)
                self.assert_ends(run("convert", "--force", file, self.out), DONE, f"tessaret: {file}: warning: {words}\n")

    def test_a_data_set_read_in_another_form_than_it_has_is_refused(self):
        # Zeros read as empty elements in any form, so that one in four of these readings comes to a clean end.
        for odd in (0, 2, 4, 6):
            for syntax in (IMPLICIT, BIG_ENDIAN):
                order = ">" if syntax == BIG_ENDIAN else "<"
                # A length of 26 turned round is 6656.
                whole = meta(syntax) + tool.image(implicit=syntax == IMPLICIT, order=order, pixels=bytes(8192 + odd))
                for uncounted in (whole[:132] + whole[144:], whole[:140] + bytes(4) + whole[144:]):
                    self.assert_refused(uncounted, f"the transfer syntax {syntax} ")
            image = tool.image(implicit=True, pixels=bytes(512 + odd))
            at = image.index(b"\xe0\x7f\x10\x00")
            self.assert_refused(meta(IMPLICIT) + image[:at] + sequence_end() + image[at:], f"the transfer syntax {IMPLICIT} ")
            self.assert_refused(meta(EXPLICIT) + image, f"(0008,0016) at offset {len(meta(EXPLICIT))} does not read as explicit")
            # Little endian under the name of big endian, and the other way round; 26 turned round is 6656.
            turned = f"(0800,1600) at offset {len(meta(EXPLICIT))} reads in the wrong byte order"
            self.assert_refused(meta(EXPLICIT) + tool.image(order=">", pixels=bytes(8192 + odd)), turned)
            self.assert_refused(meta(BIG_ENDIAN) + tool.image(pixels=bytes(8192 + odd)), turned)
            # Read as a length, the letters UI and the length 26 behind them are 0x1A4955.
            long = tool.image(pixels=bytes(0x1A4955 + odd))
            self.assert_refused(meta(IMPLICIT) + long, f"(0008,0016) at offset {len(meta(IMPLICIT))} does not read as implicit")

    def test_what_may_be_cut_is_refused(self):
        fragments = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8"), length=UNDEFINED)
        content = meta(JPEG) + fragments
        self.assert_refused(content, f"truncated at offset {len(content)}, before a delimiter")
        content = meta(EXPLICIT) + element(0x00081140, "SQ", item(b""), length=UNDEFINED)
        self.assert_refused(content, f"truncated at offset {len(content)}, before a delimiter")

    def test_what_the_implicit_form_cannot_tell_is_refused(self):
        text = element(0x00081140, "LO", "hello")
        sequence = element(0x00100010, "SQ", item(b""))
        unknown = element(0x00100010, "UN", item(b"") + sequence_end(), length=UNDEFINED)
        inner = element(0x00081199, "SQ", item(text))
        for content, words in ((text, "(0008,1140) is LO, but a sequence by the dictionary"),
                               (inner, "(0008,1140) is LO, but a sequence by the dictionary"),
                               (sequence, "(0010,0010) is a sequence, but PN by the dictionary"),
                               (unknown, "(0010,0010) is a sequence, but PN by the dictionary")):
            for options in (["--syntax", "implicit"], ["--no-preamble"]):
                self.assert_refused(meta(EXPLICIT) + content, words, *options)
            self.assert_ends(run("convert", "--force", self.write("in.dcm", meta(EXPLICIT) + content), self.out), DONE, "")
            self.out.unlink()
        self.convert(meta(EXPLICIT) + element(0x00081140, "LO"), "--syntax", "implicit")
        # What is unknown holds the implicit form already, and becomes the sequence that it was.
        hidden = element(0x00081140, "UN", item(element(0x00080100, "SH", "T-D1100", implicit=True)))
        dataset = self.convert(meta(EXPLICIT) + hidden, "--syntax", "implicit")
        self.assertEqual(dataset.ReferencedImageSequence[0].CodeValue, "T-D1100")
        self.out.unlink()
        # Anything else would tear the file apart.
        for value in (b"\1\2\3\4", b"HELLO WORLD THERE IT IS ", item(element(0x00080100, "SH", "T-D1100")),
                      struct.pack("<HHI", 0xFFFE, 0xE0FF, 4) + b"abcd", sequence_end() + b"text",
                      item(element(0x00081199, "SQ", b"Hello ", implicit=True)),
                      item(element(0x00080100, "SH", "T-D1100", implicit=True)) + b"rest",
                      item(element(0x00020003, "UI", "1.2.3", implicit=True)), item(b"")[:-1] + b"\1"):
            content = meta(EXPLICIT) + element(0x00081140, "UN", value) + element(0x00100010, "PN", "Doe^John")
            self.assert_refused(content, "(0008,1140) is UN, but a sequence by the dictionary", "--syntax", "implicit")

    def test_an_unknown_value_becomes_no_sequence_deeper_than_any_is_read(self):
        def nested(levels, content, implicit):
            for _ in range(levels):
                content = element(0x00081140, "SQ", item(content), implicit)
            return content

        for outer, inner, refused in ((0, 1, False), (200, 56, False), (200, 57, True), (1, 256, True), (255, 2, True)):
            with self.subTest(outer=outer, inner=inner):
                value = nested(inner, b"", True)[8:]
                content = meta(EXPLICIT) + nested(outer, element(0x00081140, "UN", value), False)
                if refused:
                    self.assert_refused(content, "(0008,1140) is UN, but a sequence by the dictionary", "--syntax", "implicit")
                else:
                    file = self.write("in.dcm", content)
                    self.assert_ends(run("convert", "--syntax", "implicit", "--force", file, self.out), DONE, "")
                    self.assert_ends(run("check", "-q", self.out), DONE, "")
                    self.out.unlink()

    def test_a_bare_data_set_that_would_be_taken_for_explicit_is_refused(self):
        for length in (11 * 256, 0x4144, 127 * 256 + 254):
            self.assert_refused(meta(EXPLICIT) + element(0x00080104, "LO", b"x" * length),
                                "without a mark it would be taken for explicit", "--no-preamble")
        for length in (2, 10 * 256 + 254, 128 * 256, 0xFFFE):
            file = self.write("in.dcm", meta(EXPLICIT) + element(0x00080104, "LO", b"x" * length))
            self.assert_ends(run("convert", "--no-preamble", "--force", file, self.out), DONE, "")
            self.assert_ends(run("check", "-q", self.out), DONE)
            self.out.unlink()

    def test_a_bare_data_set_that_would_not_be_taken_for_dicom_is_refused(self):
        group_length = element(0x00080000, "UL", bytes(4))
        for content in (b"", group_length):
            self.assert_refused(meta(EXPLICIT) + content, "without a mark it would not be taken for DICOM, for it is empty\n",
                                "--no-preamble")
        for tag in (0x00000010, 0x00010010, 0x00080007, 0x00090010):
            content = group_length + element(tag, "LO", "a") + element(0x00100010, "PN", "b")
            self.assert_refused(meta(EXPLICIT) + content, "without a mark it would not be taken for DICOM, for it begins with "
                                f"({tag >> 16:04x},{tag & 0xFFFF:04x})\n", "--no-preamble")
        for content in (element(0x00080005, "CS") + element(0x00090010, "LO", "a"), element(0x00081140, "SQ", item(b""))):
            file = self.write("in.dcm", meta(EXPLICIT) + group_length + content)
            self.assert_ends(run("convert", "--no-preamble", "--force", file, self.out), DONE, "")
            self.assert_ends(run("check", "-q", self.out), DONE)

    def test_elements_of_the_meta_header_in_items_are_refused(self):
        content = element(0x00081140, "SQ", item(element(0x00020003, "UI", "1.2.3")))
        self.assert_refused(meta(EXPLICIT) + content, "(0002,0003) stands in an item and would be lost")
        content = element(0x00081140, "SQ", item(element(0x00020100, "SQ", item(b""))))
        self.assert_refused(meta(EXPLICIT) + content, "(0002,0100) stands in an item and would be lost")

    def test_big_endian_pixels_whose_order_is_not_certain_are_refused(self):
        for bits, vr, refused in ((8, "OB", False), (8, "OW", False), (16, "OW", False), (1, "OW", False), (16, "OB", True),
                                  (32, "OW", True), (64, "OW", True)):
            with self.subTest(bits=bits, vr=vr):
                content = meta(BIG_ENDIAN) + element(0x00280100, "US", struct.pack(">H", bits), order=">") + \
                    element(0x7FE00010, vr, bytes(range(8)), order=">")
                if refused:
                    for options in (["--syntax", "implicit"], ["--syntax", "explicit"], ["--no-preamble"]):
                        self.assert_refused(content, "the order of the bytes in its pixel data is not certain", *options)
                # What stays big endian needs no answer.
                self.assertEqual(self.convert(content).PixelData, bytes(range(8)))
                if not refused:
                    swapped = bytes((1, 0, 3, 2, 5, 4, 7, 6)) if vr == "OW" else bytes(range(8))
                    self.assertEqual(self.convert(content, "--syntax", "explicit").PixelData, swapped)
                self.out.unlink()

    def test_a_dicomdir_is_refused(self):
        self.assert_refused(meta(EXPLICIT) + element(0x00041220, "SQ"), "is a DICOMDIR")

    def test_an_element_before_the_meta_header_is_refused(self):
        content = meta(IMPLICIT) + element(0x00010001, "LO", "early", implicit=True) + tool.image(implicit=True)
        self.assert_refused(content, "(0001,0001) would come before the meta header")

    def test_zeros_behind_a_data_set_do_not_matter(self):
        content = meta(IMPLICIT) + tool.image(implicit=True)
        file = self.write("in.dcm", content + bytes(2500000))
        last = len(content) + 2500000 - 8
        self.assert_ends(run("convert", file, self.out), DONE,
                         f"tessaret: {file}: warning: (0000,0000) at offset {last} stands behind an element of a higher tag\n")
        self.assertEqual(pydicom.dcmread(self.out).Rows, 2)


class Outputs(ConvertTest):

    def setUp(self):
        super().setUp()
        self.good = self.good_file()

    def test_what_is_there_is_replaced_only_by_force(self):
        self.out.write_bytes(b"precious")
        self.assert_ends(run("convert", self.good, self.out), OUTPUT_FAILED,
                         f"tessaret: {self.out}: is there already; --force replaces it\n")
        self.assertEqual(self.out.read_bytes(), b"precious")
        self.assert_ends(run("convert", "--force", self.good, self.out), DONE, "")
        self.assertEqual(pydicom.dcmread(self.out).PatientName, "Doe^John")

    def test_a_file_may_replace_itself_by_force_only(self):
        before = self.good.read_bytes()
        self.assert_ends(run("convert", "--syntax", "implicit", self.good, self.good), OUTPUT_FAILED)
        self.assertEqual(self.good.read_bytes(), before)
        self.assert_ends(run("convert", "--force", "--syntax", "implicit", self.good, self.good), DONE, "")
        dataset = pydicom.dcmread(self.good)
        self.assertEqual((dataset.file_meta.TransferSyntaxUID, dataset.PatientName), (IMPLICIT, "Doe^John"))

    def test_a_link_to_what_is_there_is_not_written_through(self):
        self.out.symlink_to(self.good)
        before = self.good.read_bytes()
        self.assert_ends(run("convert", self.good, self.out), OUTPUT_FAILED)
        self.assertEqual(self.good.read_bytes(), before)

    def test_a_file_that_comes_while_the_input_is_read_stays(self):
        content = meta(EXPLICIT) + element(0x00091001, "UT", "x" * 1000000)
        with subprocess.Popen([TOOL, "convert", "-", self.out], stdin=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            # A pipe holds less than half of this: the tool is reading, and has looked at the place, once it is written.
            process.stdin.write(content[:500000])
            process.stdin.flush()
            self.out.write_bytes(b"precious")
            process.stdin.write(content[500000:])
            process.stdin.close()
            self.assertEqual(process.stderr.read().decode(), f"tessaret: {self.out}: File exists\n")
        self.assertEqual(process.returncode, OUTPUT_FAILED)
        self.assertEqual(self.out.read_bytes(), b"precious")
        self.assert_no_leftovers()

    def test_a_failed_input_leaves_what_was_there(self):
        self.out.write_bytes(b"precious")
        cut = self.write("cut.dcm", self.good.read_bytes()[:-1])
        self.assert_ends(run("convert", "--force", cut, self.out), INPUT_FAILED)
        self.assertEqual(self.out.read_bytes(), b"precious")
        self.assert_no_leftovers()

    def test_a_place_that_is_not_there_is_told(self):
        nowhere = self.path("no/such/place.dcm")
        self.assert_ends(run("convert", self.good, nowhere), OUTPUT_FAILED, f"tessaret: {nowhere}: No such file or directory\n")
        self.assert_ends(run("convert", self.good, self.folder), OUTPUT_FAILED, f"tessaret: {self.folder}: Is a directory\n")

    def test_a_full_disk_is_told(self):
        self.assert_ends(run("convert", self.good, "/dev/full"), OUTPUT_FAILED, "tessaret: /dev/full: No space left on device\n")

    def test_a_limit_on_file_size_leaves_nothing_half_written(self):
        large = self.write("large.dcm", meta(EXPLICIT) + tool.image(600, 500))
        script = 'ulimit -f 100; exec "$0" "$@"'
        result = subprocess.run(["sh", "-c", script, tool.TOOL, "convert", large, self.out], check=False, capture_output=True)
        self.assertEqual((result.returncode, result.stderr.decode()), (OUTPUT_FAILED, f"tessaret: {self.out}: File too large\n"))
        self.assertFalse(self.out.exists())
        self.assert_no_leftovers()

    def test_a_pipe_may_be_written_to(self):
        pipe = self.path("pipe")
        os.mkfifo(pipe)
        with subprocess.Popen(["cat", pipe], stdout=subprocess.PIPE) as reader:
            self.assert_ends(run("convert", self.good, pipe), DONE, "")
            piped = reader.stdout.read()
        self.assert_ends(run("convert", self.good, self.out), DONE, "")
        self.assertEqual(piped, self.out.read_bytes())

    def test_permissions_follow_the_usual_rules(self):
        mask = os.umask(0o027)
        try:
            self.assert_ends(run("convert", self.good, self.out), DONE, "")
        finally:
            os.umask(mask)
        self.assertEqual(stat.S_IMODE(self.out.stat().st_mode), 0o640)

    def test_json_tells_what_was_done(self):
        result = run("convert", "--json", "--syntax", "implicit", self.good, self.out)
        self.assertEqual(json.loads(result.stdout), {"input": str(self.good), "output": str(self.out), "from": EXPLICIT,
                                                     "to": IMPLICIT, "bytes": self.out.stat().st_size})


class RealFiles(ConvertTest):
    """The corpus through every way, compared by programs that have nothing to do with this one."""

    WAYS = (("keep", []), ("implicit", ["--syntax", "implicit"]), ("explicit", ["--syntax", "explicit"]))

    def contents(self, paths):
        """What dcmdump reads in each file: tag, VR and value of each element, without what an encoding is free to change.

        One run for all of them: most of the time of a run goes into its dictionary.
        """
        arguments = ["dcmdump", "-q", "-M", "-Un", "+F", *map(str, paths)]
        listing = subprocess.run(arguments, check=False, capture_output=True).stdout
        parts = re.split(rb"^# dcmdump \(\d+/\d+\): (.*)\n", listing, flags=re.MULTILINE)
        listings = dict(zip(parts[1::2], parts[2::2]))
        return [self.rows(listings[os.fsencode(path)]) for path in paths]

    def rows(self, listing):
        rows = []
        for indent, tag, vr, value, _, _, _ in tool.lines_of(listing):
            if tag.startswith(("0002", "fffe")) or tag.endswith(",0000"):
                continue
            if value.startswith(b"(Sequence with"):
                value = value[value.index(b"#"):]
            rows.append((indent, tag, vr, value))
        return rows

    def assert_same_content(self, expected, found, through_implicit):
        self.assertEqual([row[:2] for row in expected], [row[:2] for row in found])
        for before, after in zip(expected, found):
            if before[1] == "7fe0,0010":  # OB or OW goes by the bits allocated; the bytes are compared elsewhere
                continue
            if not through_implicit:
                self.assertEqual(before, after)
            elif before[2] == after[2] and int(before[1][:4], 16) % 2 == 0:
                self.assertEqual(before, after)

    def converted(self, row, options):
        """A file converted, or None where it was refused."""
        out = self.path(row["path"].replace("/", "_"))
        result = run("convert", "-q", "--force", *options, row["file"], out)
        if result.returncode == INPUT_FAILED:
            self.assertRegex(result.stderr.decode(), r"^tessaret: [^\n]+: [^\n]+\n$")
            return None
        self.assert_ends(result, DONE)
        return out

    @tool.needs_corpus
    def test_other_programs_read_the_same_in_what_was_converted(self):
        # In the first, dcmdump reads items in what was unknown before the dictionary named it; the second it does not read.
        rows = [row for row in tool.corpus_sample() if not row["path"].endswith((
            "enhanced_mr_siemens.dcm", "emri_small_jpeg_2k_lossless_too_short.dcm"))]
        expected = self.contents([row["file"] for row in rows])
        compared = 0
        for way, options in self.WAYS:
            outs = [self.converted(row, options) for row in rows]
            found = iter(self.contents([out for out in outs if out]))
            for row, before, out in zip(rows, expected, outs):
                if not out:
                    continue
                implicit = way == "implicit" or (row["transfer_syntax"] or IMPLICIT) == IMPLICIT
                with self.subTest(row["path"], way=way):
                    self.assert_same_content(before, next(found), implicit)
                compared += 1
        self.assertGreater(compared, 900 // tool.FILE_SHARE)

    @tool.needs_corpus
    def test_every_native_file_that_reads_converts(self):
        for row in tool.corpus_sample():
            if row["transfer_syntax"] not in NATIVE or row["path"].startswith("dicom/broken/") or "DICOMDIR" in row["path"]:
                continue
            check = run("check", row["file"])
            # Four files of wide big endian pixels, and one with an element before the meta header.
            if check.returncode != DONE or b"not certain" in check.stderr or row["path"].endswith("nested_priv_SQ.dcm"):
                continue
            with self.subTest(row["path"]):
                self.assert_ends(run("convert", "-q", "--force", "--syntax", "explicit", row["file"], self.out), DONE, "")

    @tool.needs_corpus
    def test_pixels_are_those_that_independent_tools_found(self):
        compared = 0
        for row in tool.corpus_sample():
            if row["transfer_syntax"] not in NATIVE or not row["native_pixel_sha256"]:
                continue
            for _, options in self.WAYS[1:]:
                if run("convert", "-q", "--force", *options, row["file"], self.out).returncode != DONE:
                    continue
                with self.subTest(row["path"], options=options):
                    value = pydicom.dcmread(self.out).PixelData
                    samples = 2 if row["photometric"] == "YBR_FULL_422" else int(row["samples"])
                    bits = samples * int(row["bits_allocated"]) * int(row["frames"]) * int(row["rows"]) * int(row["columns"])
                    self.assertEqual(hashlib.sha256(value[:(bits + 7) // 8]).hexdigest(), row["native_pixel_sha256"])
                    compared += 1
        self.assertGreater(compared, 300 // tool.FILE_SHARE)


if __name__ == "__main__":
    unittest.main()
