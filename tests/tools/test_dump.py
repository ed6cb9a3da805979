"""tessaret dump: the listing, the library's own text and JSON, for every kind of value and of file."""

import base64
import json
import os
import struct
import subprocess
import unittest

import tool
from tool import BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, UNDEFINED, element, item, meta, run, sequence_end


class Lines(tool.ToolTest):

    def dump(self, content, *options, syntax=EXPLICIT):
        """The lines behind the meta header."""
        result = run("dump", *options, self.write("file.dcm", meta(syntax) + content))
        self.assert_ends(result, DONE, "")
        return [line for line in result.stdout.decode().splitlines() if not line.startswith("(0002,")]

    def test_the_layout_is_that_of_reports(self):
        self.assertEqual(self.dump(element(0x00100010, "PN", "Doe^John")),
                         ["(0010,0010) PN [Doe^John]                               # 8, 1 Patient's Name"])

    def test_the_meta_header_comes_first(self):
        result = run("dump", self.good_file())
        self.assertEqual(result.stdout.decode().splitlines()[1:4], [
            "(0002,0001) OB 00\\01                                    # 2, 1 File Meta Information Version",
            "(0002,0010) UI [1.2.840.10008.1.2.1] =ExplicitVRLittleEndian # 20, 1 Transfer Syntax UID",
            "(0002,0012) UI [1.2.3]                                  # 6, 1 Implementation Class UID"])

    def values(self, content, *options, syntax=EXPLICIT):
        """Tag to (VR, value, length, multiplicity)."""
        listing = "\n".join(self.dump(content, *options, syntax=syntax)).encode()
        return {row[1]: (row[2], row[3].decode(), row[4], row[5]) for row in tool.lines_of(listing)}

    def test_text_stands_in_brackets_without_its_padding(self):
        self.assertEqual(self.values(
            element(0x00080008, "CS", "ORIGINAL\\PRIMARY") + element(0x00080018, "UI", "1.2.3") +
            element(0x00080020, "DA", "20240102") + element(0x00100020, "LO", "  leading") +
            element(0x00101030, "DS", "1.5\\2\\ 3 ") + element(0x00204000, "LT", "a\\b")), {
                "0008,0008": ("CS", "[ORIGINAL\\PRIMARY]", "16", 2), "0008,0018": ("UI", "[1.2.3]", "6", 1),
                "0008,0020": ("DA", "[20240102]", "8", 1), "0010,0020": ("LO", "[  leading]", "10", 1),
                "0010,1030": ("DS", "[1.5\\2\\ 3]", "10", 3), "0020,4000": ("LT", "[a\\b]", "4", 1)})

    def test_numbers_stand_plain_between_backslashes(self):
        self.assertEqual(self.values(
            element(0x00091001, "US", struct.pack("<2H", 0, 65535)) + element(0x00091002, "SS", struct.pack("<h", -2)) +
            element(0x00091003, "UL", struct.pack("<I", 4294967295)) + element(0x00091004, "SL", struct.pack("<i", -7)) +
            element(0x00091005, "FL", struct.pack("<2f", 0.5, -1e10)) + element(0x00091006, "FD", struct.pack("<d", 0.1)) +
            element(0x00091007, "AT", struct.pack("<4H", 0x0010, 0x0020, 0x7FE0, 0x0010))), {
                "0009,1001": ("US", "0\\65535", "4", 2), "0009,1002": ("SS", "-2", "2", 1),
                "0009,1003": ("UL", "4294967295", "4", 1), "0009,1004": ("SL", "-7", "4", 1),
                "0009,1005": ("FL", "0.5\\-1e+10", "8", 2), "0009,1006": ("FD", "0.1", "8", 1),
                "0009,1007": ("AT", "(0010,0020)\\(7fe0,0010)", "8", 2)})

    def test_bytes_are_hexadecimal(self):
        self.assertEqual(self.values(element(0x00091001, "OB", b"\x00\xff") + element(0x00091002, "UN", b"ab") +
                                     element(0x00091003, "OW", b"\x34\x12")), {
            "0009,1001": ("OB", "00\\ff", "2", 1), "0009,1002": ("UN", "61\\62", "2", 1),
            "0009,1003": ("OW", "34\\12", "2", 1)})

    def test_a_value_that_is_no_whole_number_of_numbers_is_shown_as_bytes(self):
        self.assertEqual(self.values(element(0x00091001, "UL", b"\x01\x02\x03", length=3))["0009,1001"],
                         ("UL", "01\\02\\03", "3", 1))

    def test_an_empty_value_says_so(self):
        self.assertEqual(self.values(element(0x00100010, "PN") + element(0x00280010, "US")), {
            "0010,0010": ("PN", "(no value available)", "0", 0), "0028,0010": ("US", "(no value available)", "0", 0)})

    def test_long_values_are_cut_and_whole_when_asked_for(self):
        content = (element(0x00080008, "CS", "x" * 66) + element(0x00091001, "US", struct.pack("<40H", *range(100, 140))) +
                   element(0x7FE00010, "OW", bytes(range(50))))
        cut = self.values(content)
        self.assertEqual(cut["0008,0008"][1], "[" + "x" * 61 + "...]")
        numbers = "\\".join(map(str, range(100, 115)))
        self.assertEqual(cut["0009,1001"][1], numbers + "\\...")
        hexadecimal = "\\".join(f"{number:02x}" for number in range(50))
        self.assertEqual(cut["7fe0,0010"][1], hexadecimal[:59] + "\\...")
        for option in ("--long", "+L"):
            whole = self.values(content, option)
            self.assertEqual(whole["0008,0008"][1], "[" + "x" * 66 + "]")
            self.assertEqual(whole["0009,1001"][1], "\\".join(map(str, range(100, 140))))
            self.assertEqual(whole["7fe0,0010"][1], hexadecimal)
            # Comments stand in one column behind short values.
            short = self.dump(element(0x00091001, "US", b"\1\0\2\0") + element(0x00091002, "OB", b"\1\2") +
                              element(0x00100010, "PN", "a"), option)
            self.assertEqual([line.index(" # ") for line in short], [55, 55, 55])

    def test_a_text_of_64_characters_is_whole(self):
        self.assertEqual(self.values(element(0x00104000, "LT", "y" * 64))["0010,4000"][1], "[" + "y" * 64 + "]")

    def test_uids_have_their_names(self):
        values = self.values(element(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.2") +
                             element(0x00091001, "UI", "1.2.3\\1.2.840.10008.1.1"))
        self.assertEqual(values["0008,0016"][1], "[1.2.840.10008.5.1.4.1.1.2] =CTImageStorage")
        self.assertEqual(values["0009,1001"][1], "[1.2.3\\1.2.840.10008.1.1] =\\Verification")
        self.assertEqual(self.values(element(0x00091001, "UI", "1.2.3\\1.2.4"))["0009,1001"][1], "[1.2.3\\1.2.4]")

    def test_names_of_many_uids_are_cut_like_values_and_whole_when_asked_for(self):
        uid, name = "1.2.840.10008.1.1", "Verification"
        for uids, names in (([uid] * 3000, [name] * 3000), ([uid] + [""] * 9000, [name] + [""] * 9000)):
            content = element(0x00091001, "UI", "\\".join(uids) + "\\1")
            value, joined = "\\".join(uids), "\\".join(names)
            self.assertEqual(self.values(content)["0009,1001"][1], f"[{value[:61]}...] ={joined[:61]}...")
            self.assertEqual(self.values(content, "--long")["0009,1001"][1], f"[{value}\\1] ={joined}\\")
        # 64 characters are whole.
        uids = [uid] * 4 + ["1.2"] * 13
        self.assertEqual(self.values(element(0x00091001, "UI", "\\".join(uids)))["0009,1001"][1].split("] ")[1],
                         "=" + "\\".join([name] * 4) + "\\" * 13)
        self.assertEqual(self.values(element(0x00091001, "UI", "\\".join(uids + ["1.2"])))["0009,1001"][1].split("] ")[1],
                         "=" + "\\".join([name] * 4) + "\\" * 10 + "...")

    def test_descriptions_of_private_and_unknown_elements(self):
        lines = self.dump(element(0x00090010, "LO", "ACME 1.1") + element(0x00091001, "LO", "x") +
                          element(0x00092001, "LO", "x") + element(0x00100000, "UL", bytes(4)) + element(0x00110001, "LO", "x") +
                          element(0x60120001, "LO", "x"))
        self.assertEqual([line.split(" # ")[1] for line in lines], [
            "8, 1 Private Creator", "2, 1 Private (ACME 1.1)", "2, 1 Private", "4, 1 Group Length", "2, 1 Private",
            "2, 1 Unknown"])

    def test_private_elements_outside_all_blocks_have_no_creator(self):
        lines = self.dump(element(0x00110000, "UL", b"ABCD") + element(0x00110001, "LO", "x") + element(0x00110101, "LO", "y"))
        self.assertEqual([line.split(" # ")[1] for line in lines], ["4, 1 Group Length", "2, 1 Private", "2, 1 Private"])

    def test_sequences_items_and_delimiters_are_set_in(self):
        inner = element(0x00080100, "SH", "CT") + element(0x00081140, "SQ", b"")
        for defined in (True, False):
            content = item(inner, defined=defined) + item(b"", defined=defined)
            if defined:
                whole = element(0x00081032, "SQ", content)
                words, length = "Sequence with explicit length #=2", len(content)
            else:
                whole = element(0x00081032, "SQ", content + sequence_end(), length=UNDEFINED)
                words, length = "Sequence with undefined length #=2", "u/l"
            self.assertEqual(self.dump(whole), [
                f"(0008,1032) SQ {f'({words})':<40} # {length}, 1 Procedure Code Sequence",
                f"  (fffe,e000) na {'(Item #=2)':<40} # -, 1 Item",
                f"    (0008,0100) SH {'[CT]':<40} # 2, 1 Code Value",
                f"    (0008,1140) SQ {'(Sequence with explicit length #=0)':<40} # 0, 1 Referenced Image Sequence",
                f"  (fffe,e00d) na {'(ItemDelimitationItem)':<40} # 0, 0 Item Delimitation Item",
                f"  (fffe,e000) na {'(Item #=0)':<40} # -, 1 Item",
                f"  (fffe,e00d) na {'(ItemDelimitationItem)':<40} # 0, 0 Item Delimitation Item",
                f"(fffe,e0dd) na {'(SequenceDelimitationItem)':<40} # 0, 0 Sequence Delimitation Item"])

    def test_a_sequence_that_holds_nothing_but_its_end_has_one(self):
        self.assertEqual(self.dump(element(0x00081140, "SQ", sequence_end()) + element(0x00081150, "UI", "1.2.3")), [
            f"(0008,1140) SQ {'(Sequence with explicit length #=0)':<40} # 8, 1 Referenced Image Sequence",
            f"(fffe,e0dd) na {'(SequenceDelimitationItem)':<40} # 0, 0 Sequence Delimitation Item",
            f"(0008,1150) UI {'[1.2.3]':<40} # 6, 1 Referenced SOP Class UID"])

    def test_fragments_of_compressed_pixels_are_listed(self):
        pixels = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8\xff\xd9") + sequence_end(), length=UNDEFINED)
        self.assertEqual(self.dump(pixels, syntax=JPEG), [
            f"(7fe0,0010) OB {'(PixelSequence #=2)':<40} # u/l, 1 Pixel Data",
            f"  (fffe,e000) pi {'(no value available)':<40} # 0, 1 Item",
            f"  (fffe,e000) pi {'ff' + chr(92) + 'd8' + chr(92) + 'ff' + chr(92) + 'd9':<40} # 4, 1 Item",
            f"(fffe,e0dd) na {'(SequenceDelimitationItem)':<40} # 0, 0 Sequence Delimitation Item"])

    def test_letters_beyond_ascii_take_their_columns(self):
        line = self.dump(element(0x00100010, "PN", "Müller"))[0]
        self.assertEqual(line, f"(0010,0010) PN {'[Müller]':<40} # 8, 1 Patient's Name")

    def test_implicit_values_have_the_types_of_the_dictionary(self):
        content = (element(0x00080060, "CS", "CT", implicit=True) + element(0x00090010, "LO", "ACME", implicit=True) +
                   element(0x00091001, "LO", "ab", implicit=True) + element(0x00280010, "US", b"\2\0", implicit=True))
        self.assertEqual(self.values(content, syntax=IMPLICIT), {
            "0008,0060": ("CS", "[CT]", "2", 1), "0009,0010": ("UN", "[ACME]", "4", 1),
            "0009,1001": ("UN", "61\\62", "2", 1), "0028,0010": ("US", "2", "2", 1)})

    def test_numbers_of_a_big_endian_file_are_right(self):
        nested = item(element(0x00189087, "FD", struct.pack(">d", 2.5), order=">"), order=">")
        content = b"".join((
            element(0x00091001, "US", struct.pack(">2H", 1, 515), order=">"),
            element(0x00091002, "UL", struct.pack(">I", 16909060), order=">"),
            element(0x00091003, "FL", struct.pack(">f", 0.25), order=">"),
            element(0x00091004, "AT", struct.pack(">2H", 0x0010, 0x0020), order=">"),
            element(0x00091005, "OB", b"\1\2\3\4", order=">"), element(0x00091006, "OW", b"\1\2\3\4", order=">"),
            element(0x00091007, "UN", b"\1\2\3\4", order=">"), element(0x00091008, "LO", "text", order=">"),
            element(0x00409096, "SQ", nested, order=">")))
        values = self.values(content, syntax=BIG_ENDIAN)
        self.assertEqual({tag: value[1] for tag, value in values.items() if not tag.startswith(("0040", "fffe"))}, {
            "0009,1001": "1\\515", "0009,1002": "16909060", "0009,1003": "0.25", "0009,1004": "(0010,0020)",
            "0009,1005": "01\\02\\03\\04", "0009,1006": "02\\01\\04\\03", "0009,1007": "01\\02\\03\\04",
            "0009,1008": "[text]", "0018,9087": "2.5"})

    def test_a_big_endian_data_set_without_anything_before_it_is_recognised(self):
        file = self.write("bare", tool.image(order=">"))
        result = run("dump", file)
        self.assert_ends(result, DONE, f"tessaret: {file}: warning: no \"DICM\" mark, so the encoding is a guess\n")
        self.assertIn(b"(0028,0010) US 2 ", result.stdout)
        self.assertIn(b"01\\00\\02\\00\\03\\00", result.stdout)

    def test_a_big_endian_data_set_is_not_looked_for_in_a_pipe(self):
        # To recognise it takes a second look at the bytes. Opened once more, a pipe would wait for another writer.
        pipe = self.path("pipe")
        os.mkfifo(pipe)
        with subprocess.Popen(["cp", "/dev/stdin", pipe], stdin=subprocess.PIPE) as writer:
            writer.stdin.write(tool.image(order=">"))
            writer.stdin.close()
            self.assert_ends(run("dump", pipe), INPUT_FAILED, f"tessaret: {pipe}: not DICOM\n")

    def test_long_pixels_are_cut_unless_the_whole_is_asked_for(self):
        # Cut they are not even loaded.
        pixels = bytes(range(256)) * 20
        hexadecimal = "\\".join(f"{byte:02x}" for byte in pixels)
        content = element(0x7FE00010, "OW", pixels)
        self.assertEqual(self.values(content)["7fe0,0010"][1], hexadecimal[:59] + "\\...")
        self.assertEqual(self.values(content, "--long")["7fe0,0010"][1], hexadecimal)
        fragments = element(0x7FE00010, "OB", item(b"") + item(pixels) + sequence_end(), length=UNDEFINED)
        self.assertIn(hexadecimal[:59] + "\\... ", self.dump(fragments, syntax=JPEG)[2])
        self.assertIn(hexadecimal + " ", self.dump(fragments, "--long", syntax=JPEG)[2])

    def test_no_pixels_stops_before_them(self):
        content = tool.image() + element(0xFFFCFFFC, "OB", b"\0\0")
        lines = self.dump(content, "--no-pixels")
        self.assertEqual(lines[-1], f"(7fe0,0010) OW {'(not loaded)':<40} # 12, 1 Pixel Data")
        fragments = element(0x7FE00010, "OB", item(b"") + sequence_end(), length=UNDEFINED)
        self.assertEqual(self.dump(fragments, "--no-pixels", syntax=JPEG),
                         [f"(7fe0,0010) OB {'(not loaded)':<40} # u/l, 1 Pixel Data"])

    def test_no_pixels_stops_before_those_of_a_big_endian_data_set_without_a_mark(self):
        result = run("dump", "-q", "--no-pixels", self.write("bare", tool.image(order=">")))
        self.assert_ends(result, DONE, "")
        self.assertEqual(result.stdout.decode().splitlines()[-2:],
                         [f"(0028,0103) US {'0':<40} # 2, 1 Pixel Representation",
                          f"(7fe0,0010) OW {'(not loaded)':<40} # 12, 1 Pixel Data"])

    def test_strict_refuses_what_has_no_mark(self):
        bare = self.write("bare.dcm", tool.image())
        self.assert_ends(run("dump", "-q", bare), DONE, "")
        self.assert_ends(run("dump", "--strict", bare), INPUT_FAILED,
                         f"tessaret: {bare}: Error checking DICOM MetaHeader\n")
        self.assert_ends(run("dump", "--strict", self.good_file()), DONE, "")


class Text(tool.ToolTest):

    def test_the_text_form_is_that_of_the_library(self):
        content = (element(0x00080060, "CS", "CT") + element(0x00081032, "SQ", item(element(0x00080100, "SH", "A1"))) +
                   element(0x00280010, "US", b"\2\0"))
        result = run("dump", "--format", "text", self.write("a.dcm", meta(EXPLICIT) + content))
        self.assert_ends(result, DONE, "")
        self.assertEqual(result.stdout.decode().splitlines()[-7:], [
            "(0008,0060) 'CS' [     2] 'Modality' : CT", "(0008,1032) 'SQ' 1 items 'Procedure Code Sequence'", "#start item 1",
            "> (0008,0100) 'SH' [     2] 'Code Value' : A1", "#end item 1", "End sequence (0008,1032)",
            "(0028,0010) 'US' [     2] 'Rows' : 2,0x2"])


class Json(tool.ToolTest):

    def dump(self, content, *options, syntax=EXPLICIT):
        result = run("dump", "--json", *options, self.write("file.dcm", meta(syntax) + content))
        self.assert_ends(result, DONE, "")
        lines = result.stdout.decode().splitlines()
        self.assertEqual(len(lines), 1)
        report = json.loads(lines[0])
        return {tag: value for tag, value in report["elements"].items() if not tag.startswith("0002")}

    def test_values_follow_the_json_model(self):
        self.assertEqual(self.dump(b"".join((
            element(0x00080008, "CS", "ORIGINAL\\\\AXIAL"), element(0x00080018, "UI", "1.2.3"),
            element(0x00091001, "AT", struct.pack("<4H", 0x0010, 0x0020, 0x7FE0, 0x0010)),
            element(0x00091002, "FD", struct.pack("<d", 0.1)), element(0x00091003, "US", struct.pack("<2H", 1, 2)),
            element(0x00100010, "PN", "Yamada^Tarou=IDEO=PHON\\Doe^John"), element(0x00100020, "LO"),
            element(0x00101030, "DS", " 75.50\\+1\\1e3 "), element(0x00200013, "IS", "7"),
            element(0x00204000, "LT", "a\\b")))), {
                "00080008": {"vr": "CS", "Value": ["ORIGINAL", None, "AXIAL"]}, "00080018": {"vr": "UI", "Value": ["1.2.3"]},
                "00091001": {"vr": "AT", "Value": ["00100020", "7FE00010"]}, "00091002": {"vr": "FD", "Value": [0.1]},
                "00091003": {"vr": "US", "Value": [1, 2]},
                "00100010": {"vr": "PN", "Value": [{"Alphabetic": "Yamada^Tarou", "Ideographic": "IDEO", "Phonetic": "PHON"},
                                                   {"Alphabetic": "Doe^John"}]},
                "00100020": {"vr": "LO"}, "00101030": {"vr": "DS", "Value": [75.5, "+1", 1000.0]},
                "00200013": {"vr": "IS", "Value": [7]}, "00204000": {"vr": "LT", "Value": ["a\\b"]}})

    def test_sequences_hold_objects(self):
        code = item(element(0x00080100, "SH", "A1"))
        self.assertEqual(self.dump(element(0x00081032, "SQ", code + item(b"")) + element(0x00081140, "SQ")), {
            "00081032": {"vr": "SQ", "Value": [{"00080100": {"vr": "SH", "Value": ["A1"]}}, {}]}, "00081140": {"vr": "SQ"}})

    def test_what_holds_items_is_a_sequence_whatever_its_letters(self):
        unknown = element(0x00091001, "UN", item(element(0x00080100, "SH", "A1")) + sequence_end(), length=UNDEFINED)
        self.assertEqual(self.dump(unknown), {"00091001": {"vr": "SQ", "Value": [{"00080100": {"vr": "SH", "Value": ["A1"]}}]}})

    def test_a_value_of_blanks_is_null(self):
        self.assertEqual(self.dump(element(0x00080008, "CS", "ORIGINAL\\  \\AXIAL") + element(0x00101030, "DS", " \\1.5")), {
            "00080008": {"vr": "CS", "Value": ["ORIGINAL", None, "AXIAL"]},
            "00101030": {"vr": "DS", "Value": [None, 1.5]}})

    def test_a_value_that_is_no_whole_number_of_numbers_is_base64(self):
        self.assertEqual(self.dump(element(0x00091001, "UL", b"\x01\x02\x03", length=3) +
                                   element(0x00091002, "AT", b"\xff\xfe", length=2)), {
            "00091001": {"vr": "UL", "InlineBinary": base64.b64encode(b"\x01\x02\x03").decode()},
            "00091002": {"vr": "AT", "InlineBinary": base64.b64encode(b"\xff\xfe").decode()}})

    def test_bytes_are_base64_up_to_4096(self):
        for size in (2, 4, 6, 4096):
            value = bytes(index % 251 for index in range(size))
            dumped = self.dump(element(0x00091001, "OB", value))["00091001"]
            self.assertEqual(base64.b64decode(dumped["InlineBinary"], validate=True), value)
        self.assertEqual(self.dump(element(0x00091001, "OB", bytes(4098))), {"00091001": {"vr": "OB", "length": 4098}})

    def test_fragments_are_listed(self):
        pixels = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8") + sequence_end(), length=UNDEFINED)
        self.assertEqual(self.dump(pixels, syntax=JPEG), {
            "7FE00010": {"vr": "OB", "fragments": [{"length": 0}, {"InlineBinary": "/9g="}]}})

    def test_pixels_that_were_not_loaded_have_their_length(self):
        self.assertEqual(self.dump(tool.image(), "--no-pixels")["7FE00010"], {"vr": "OW", "length": 12})

    def test_numbers_that_json_does_not_have_are_strings(self):
        value = struct.pack("<3f", float("nan"), float("inf"), float("-inf"))
        self.assertEqual(self.dump(element(0x00091001, "FL", value))["00091001"]["Value"], ["nan", "inf", "-inf"])

    def test_a_file_that_fails_has_its_line_too(self):
        cut = self.write("cut.dcm", meta(EXPLICIT) + tool.image()[:-2])
        result = run("dump", "--json", cut, self.path("missing"))
        self.assert_ends(result, INPUT_FAILED)
        first, second = map(json.loads, result.stdout.splitlines())
        self.assertEqual(first["file"], str(cut))
        self.assertRegex(first["error"], r"^truncated at offset \d+, in \(7fe0,0010\)$")
        self.assertIn("00100010", first["elements"])
        self.assertEqual(second, {"file": str(self.path("missing")), "error": "No such file or directory"})


class Faults(tool.ToolTest):

    def test_what_is_not_dicom_is_said_to_be_so(self):
        for name, content in (("empty", b""), ("text", b"To be, or not to be: that is the question.\n" * 9),
                              ("zip", b"PK\x03\x04\x14\x00\x00\x00" + bytes(300)), ("elf", b"\x7fELF\x02\x01\x01" + bytes(300)),
                              ("zeros", bytes(500)), ("short", b"\x08"), ("preamble", bytes(128)), ("mark", bytes(128) + b"DIC")):
            with self.subTest(name):
                file = self.write(name, content)
                result = run("dump", file)
                self.assert_ends(result, INPUT_FAILED, f"tessaret: {file}: not DICOM\n")
                self.assertEqual(result.stdout, b"")

    def test_a_cut_file_is_shown_as_far_as_it_goes(self):
        whole = meta(EXPLICIT) + element(0x00100010, "PN", "Doe^John") + element(0x00100020, "LO", "12345678")
        for lost in (1, 8, 9, 15):
            file = self.write("cut.dcm", whole[:-lost])
            result = run("dump", file)
            offset = len(whole) - 16
            where = ", in (0010,0020)" if lost < 13 else ""
            self.assert_ends(result, INPUT_FAILED, f"tessaret: {file}: truncated at offset {offset}{where}\n")
            self.assertIn(b"[Doe^John]", result.stdout)

    def test_an_unknown_transfer_syntax_is_named(self):
        deflated = self.write("deflated.dcm", meta("1.2.840.10008.1.2.1.99") + b"xxxxxxxxxxxx")
        result = run("dump", deflated)
        self.assert_ends(result, INPUT_FAILED, f"tessaret: {deflated}: transfer syntax 1.2.840.10008.1.2.1.99 "
                         "(DeflatedExplicitVRLittleEndian) cannot be read here\n")
        strange = self.write("strange.dcm", meta("1.2.3.4") + tool.image())
        self.assert_ends(run("dump", strange), INPUT_FAILED,
                         f"tessaret: {strange}: transfer syntax \"1.2.3.4\" cannot be read here\n")

    def test_structural_tags_in_the_wrong_place_are_told(self):
        start = meta(EXPLICIT)
        for content, words in ((item(b""), f"an item without a sequence: (fffe,e000) at offset {len(start)}"),
                               (struct.pack("<HHI", 0xFFFE, 0xE0FF, 0), f"stray (fffe,e0ff) at offset {len(start)}")):
            file = self.write("stray.dcm", start + content)
            self.assert_ends(run("dump", file), INPUT_FAILED, f"tessaret: {file}: {words}\n")
            self.assertIn(b"(0002,0012) UI [1.2.3]", run("dump", file).stdout)

    def test_sequences_that_are_nested_too_deeply_are_told(self):
        opening = element(0x00081140, "SQ", length=UNDEFINED) + struct.pack("<HHI", 0xFFFE, 0xE000, UNDEFINED)
        deep = self.write("deep.dcm", meta(EXPLICIT) + opening * 100000)
        result = run("dump", deep)
        self.assert_ends(result, INPUT_FAILED)
        self.assertRegex(result.stderr.decode(), r": sequences nested deeper than \d+ levels at offset \d+\n$")

    def test_the_deepest_nesting_that_is_read_is_shown(self):
        opening = element(0x00081140, "SQ", length=UNDEFINED) + struct.pack("<HHI", 0xFFFE, 0xE000, UNDEFINED)
        closing = struct.pack("<HHIHHI", 0xFFFE, 0xE00D, 0, 0xFFFE, 0xE0DD, 0)
        levels = 250
        deep = self.write("deep.dcm", meta(EXPLICIT) + opening * levels + element(0x00100010, "PN", "Low^Down") + closing * levels)
        result = run("dump", deep)
        self.assert_ends(result, DONE, "")
        self.assertIn(b" " * (4 * levels) + b"(0010,0010) PN [Low^Down]", result.stdout)
        self.assertIn(b"Low^Down", run("dump", "--json", deep).stdout)

    def test_lengths_that_are_newer_than_the_reader_are_told(self):
        content = tool.image() + element(0x7FE00008, "OF", struct.pack("<4f", 1, 2, 3, 4))
        content = content[:content.index(b"\xe0\x7f\x10\x00")] + content[content.index(b"\xe0\x7f\x08\x00"):]
        file = self.write("float.dcm", meta(EXPLICIT) + content)
        result = run("dump", file)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(b": the length of (7fe0,0008) at offset ", result.stderr)

    def assert_length_doubted(self, content, tag, offset):
        file = self.write("newer.dcm", content)
        self.assert_ends(run("dump", file), INPUT_FAILED, f"tessaret: {file}: the length of {tag} at offset {offset} is in a "
                         "form that is not read here; what follows is not to be trusted\n")

    def test_lengths_that_are_newer_than_the_reader_are_told_even_where_what_follows_makes_sense(self):
        # Three numbers, whose length and first bytes read as (000c,0000) LO with the rest as its value.
        start = meta(EXPLICIT) + element(0x00080060, "CS", "CT")
        misread = element(0x00660016, "OF", b"LO\x08\x00" + b"12345678")
        self.assert_length_doubted(start + misread, "(0066,0016)", len(start))
        self.assert_length_doubted(start + misread + element(0x00720052, "AT", bytes(4)), "(0066,0016)", len(start))

    def test_an_empty_value_of_a_newer_type_is_no_mystery_where_its_length_is_short(self):
        empty = struct.pack("<HH2sH", 0x0066, 0x0016, b"OF", 0)
        for behind in (b"", element(0x00720052, "AT", bytes(4))):
            self.assert_ends(run("dump", self.write("short.dcm", meta(EXPLICIT) + empty + behind)), DONE, "")

    def test_three_good_files_and_a_bad_one(self):
        good = [self.good_file(f"{name}.dcm") for name in "abd"]
        bad = self.write("c.dcm", b"bad")
        result = run("dump", good[0], good[1], bad, good[2])
        self.assert_ends(result, INPUT_FAILED, f"tessaret: {bad}: not DICOM\n")
        self.assertEqual(result.stdout.count(b"Doe^John"), 3)
        self.assertEqual([line for line in result.stdout.decode().splitlines() if line.startswith("#")],
                         [f"# {file}" for file in good])

    def test_a_directory_is_gone_through_in_order(self):
        names = ["a.dcm", "b/1.dcm", "b/2.dcm", "b.dcm", "c.dcm"]
        for name in reversed(names):
            self.good_file("tree/" + name)
        # "b" sorts before "b.dcm".
        result = run("dump", self.path("tree"))
        self.assert_ends(result, DONE, "")
        self.assertEqual([line for line in result.stdout.decode().splitlines() if line.startswith("#")],
                         [f"# {self.path('tree')}/{name}" for name in names])

    def test_a_single_file_has_no_heading(self):
        self.assertNotIn(b"# " + bytes(self.good_file()), run("dump", self.good_file()).stdout)

    def test_tag_and_length_mysteries_do_not_stop_the_listing(self):
        blanks = element(0x00091001, "UN", b" " * 8, length=0x20202020)
        file = self.write("blanks.dcm", meta(EXPLICIT) + element(0x00100010, "PN", "Doe^John") + blanks)
        result = run("dump", file)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(b"[Doe^John]", result.stdout)


if __name__ == "__main__":
    unittest.main()
