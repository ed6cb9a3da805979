"""tessaret get: values for scripts."""

import json
import os
import struct
import threading
import unittest

import tool
from tool import DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, USAGE, element, item, meta, run


def numbers(form, *values):
    return struct.pack(f"<{len(values)}{form}", *values)


CONTENT = b"".join((
    element(0x00080005, "CS", "ISO_IR 100"), element(0x00080008, "CS", "ORIGINAL\\PRIMARY"),
    element(0x00081140, "SQ", item(element(0x00081150, "UI", "1.2.3")) +
            item(element(0x00081150, "UI", "1.2.4") + element(0x00081140, "SQ", item(element(0x00100010, "PN", b"Inn\xe9r"))))),
    element(0x00091001, "UN", numbers("H", 1, 515)), element(0x00100010, "PN", b"M\xfcller^J\xf6rg "),
    element(0x00100020, "LO", "a \\b "), element(0x00100030, "DA", "20010203"), element(0x00100040, "CS"),
    element(0x00204000, "LT", "a\\b\r\nc"), element(0x00280010, "US", numbers("H", 2)),
    element(0x00280009, "AT", numbers("H", 0x0018, 0x1063)), element(0x00281052, "DS", "-1024\\1.50 "),
    element(0x7FE00010, "OB", b"\0\xff")))


class Get(tool.ToolTest):

    def setUp(self):
        super().setUp()
        self.file = self.write("file.dcm", meta(EXPLICIT) + CONTENT)

    def get(self, *arguments, code=DONE, error=""):
        result = run("get", self.file, *arguments)
        self.assert_ends(result, code, error)
        return result.stdout.decode()

    def test_a_value_is_a_line(self):
        lines = {"0010,0010": "Müller^Jörg", "(0028,0010)": "2", "ImageType": "ORIGINAL\\PRIMARY", "PatientID": "a\\b",
                 "PatientBirthDate": "20010203", "PatientSex": "", "ImageComments": "a\\b\\x0d\\x0ac",
                 "RescaleIntercept": "-1024\\1.50", "FrameIncrementPointer": "(0018,1063)", "0009,1001": "01\\00\\03\\02",
                 "PixelData": "00\\ff", "TransferSyntaxUID": EXPLICIT}
        self.assertEqual(dict(zip(lines, self.get(*lines).split("\n"))), lines)
        self.assertEqual(self.get("0010,0010"), "Müller^Jörg\n")

    def test_lines_come_in_the_order_of_the_tags(self):
        self.assertEqual(self.get("Rows", "PatientID", "Rows"), "2\na\\b\n2\n")

    def test_a_sequence_is_the_number_of_its_items_and_paths_lead_into_them(self):
        self.assertEqual(self.get("ReferencedImageSequence"), "2\n")
        self.assertEqual(self.get("(0008,1140)[1].(0008,1150)", "ReferencedImageSequence[0].ReferencedSOPClassUID"),
                         "1.2.4\n1.2.3\n")
        # The character set of the file counts in its items.
        self.assertEqual(self.get("0008,1140[1].0008,1140[0].PatientName"), "Innér\n")

    def test_an_item_may_name_its_own_character_set(self):
        name = element(0x00100010, "PN", b"\xe4")
        file = self.write("own.dcm", meta(EXPLICIT) + element(0x00080005, "CS", "ISO_IR 100") + element(
            0x00081140, "SQ", item(element(0x00080005, "CS", "ISO_IR 126") + name)) + name)
        self.assertEqual(run("get", file, "0008,1140[0].PatientName", "PatientName").stdout.decode(), "δ\nä\n")

    def test_what_is_not_there_keeps_its_line_and_fails(self):
        self.assertEqual(self.get("Rows", "Columns", "0008,1140[2].0008,1150", "Rows", code=INPUT_FAILED, error=(
            f"tessaret: {self.file}: (0028,0011) is not there\n"
            f"tessaret: {self.file}: (0008,1140)[2].(0008,1150) is not there\n")), "2\n\n\n2\n")

    def test_what_stands_behind_the_pixel_data_is_reached(self):
        file = self.write("more.dcm", meta(EXPLICIT) + CONTENT + element(0x7FE10010, "LO", "ACME") + element(0xFFFCFFFC, "OB", b"\1\2"))
        for tag, line in (("7fe1,0010", "ACME"), ("fffc,fffc", "01\\02"), ("PatientID", "a\\b")):
            result = run("get", file, tag)
            self.assert_ends(result, DONE, "")
            self.assertEqual(result.stdout.decode(), line + "\n")

    def test_what_stands_behind_the_pixel_data_out_of_order_is_found(self):
        content = meta(EXPLICIT) + element(0x00280010, "US", b"\2\0") + element(0x7FE00010, "OB", b"\0\xff") + element(
            0x00081140, "SQ", item(element(0x00081150, "UI", "1.2.4"))) + element(0x00100020, "LO", "late")
        file = self.write("late.dcm", content)
        for tag, line in (("PatientID", "late"), ("0008,1140[0].0008,1150", "1.2.4"), ("Rows", "2")):
            result = run("get", file, "Rows", tag)
            self.assert_ends(result, DONE, "")
            self.assertEqual(result.stdout.decode(), f"2\n{line}\n")
        # What has begun cannot be read from the start again.
        result = run("get", "-", "Rows", "PatientID", input=content)
        self.assert_ends(result, INPUT_FAILED, "tessaret: standard input: (0010,0020) is not there before the pixel data\n")
        self.assertEqual(result.stdout, b"2\n\n")
        pipe = self.path("pipe")
        os.mkfifo(pipe)
        writer = threading.Thread(target=pipe.write_bytes, args=(content,))
        writer.start()
        result = run("get", pipe, "Rows", "PatientID", timeout=30)
        writer.join()
        self.assert_ends(result, INPUT_FAILED, f"tessaret: {pipe}: (0010,0020) is not there before the pixel data\n")
        # Where pixel data is cut nobody knows what was behind it.
        cut = self.write("cut.dcm", content[:content.index(b"\0\xff") + 1])
        self.assert_ends(run("get", cut, "Rows"), DONE, "")
        result = run("get", cut, "Rows", "PatientID")
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout, b"2\n\n")
        self.assertIn("truncated", result.stderr.decode())
        self.assertIn(f"tessaret: {cut}: (0010,0020) is not there\n", result.stderr.decode())

    def test_of_a_file_that_is_cut_short_what_is_there_is_shown(self):
        file = self.write("cut.dcm", (meta(EXPLICIT) + CONTENT)[:-1])
        result = run("get", file, "PatientID", "PixelData")
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout.decode().splitlines()[0], "a\\b")
        self.assertIn("truncated", result.stderr.decode())
        # All that was asked for is there, and the file is broken all the same.
        short = self.write("short.dcm", (meta(EXPLICIT) + element(0x00100020, "LO", "ab") + element(0x00104000, "LT", "abcd"))[:-2])
        result = run("get", short, "PatientID")
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout.decode(), "ab\n")
        # Nothing of it can be read.
        result = run("get", self.path("missing"), "PatientID", "Rows")
        self.assert_ends(result, INPUT_FAILED, f"tessaret: {self.path('missing')}: No such file or directory\n")
        self.assertEqual(result.stdout, b"")

    def test_one_value_is_chosen_by_its_number(self):
        self.assertEqual(self.get("--index", "1", "ImageType", "RescaleIntercept", "0009,1001", "Rows", code=INPUT_FAILED, error=(
            f"tessaret: {self.file}: (0009,1001) has no value of number 1\n"
            f"tessaret: {self.file}: (0028,0010) has no value of number 1\n")), "PRIMARY\n1.50\n\n\n")

        self.assertEqual(self.get("--index", "0", "ImageType"), "ORIGINAL\n")
        # Items are no values.
        self.assertEqual(self.get("--index", "0", "0008,1140", "Rows", code=INPUT_FAILED, error=(
            f"tessaret: {self.file}: (0008,1140) has no value of number 0\n")), "\n2\n")

    def test_a_type_may_be_given(self):
        self.assertEqual(self.get("--type", "US", "0009,1001"), "1\\515\n")
        self.assertEqual(self.get("--type", "UL", "0009,1001"), f"{515 << 16 | 1}\n")
        # What is no whole number of numbers is bytes.
        self.assertEqual(self.get("--type", "FD", "0009,1001"), "01\\00\\03\\02\n")

    def test_json_is_an_object_for_each_tag(self):
        lines = self.get("--json", "PatientName", "Rows", "0009,1001", "Columns", "PatientSex", "ReferencedImageSequence",
                         code=INPUT_FAILED, error=f"tessaret: {self.file}: (0028,0011) is not there\n").splitlines()
        self.assertEqual([json.loads(line) for line in lines], [
            {"tag": "(0010,0010)", "keyword": "PatientName", "vr": "PN", "Value": [{"Alphabetic": "Müller^Jörg"}]},
            {"tag": "(0028,0010)", "keyword": "Rows", "vr": "US", "Value": [2]},
            {"tag": "(0009,1001)", "vr": "UN", "InlineBinary": "AQADAg=="},
            {"tag": "(0028,0011)", "found": False},
            {"tag": "(0010,0040)", "keyword": "PatientSex", "vr": "CS"},
            {"tag": "(0008,1140)", "keyword": "ReferencedImageSequence", "vr": "SQ", "items": 2}])

    def test_json_has_the_one_value_that_is_chosen(self):
        lines = self.get("--json", "--index", "1", "ImageType", "RescaleIntercept", "Rows", "PatientName", "0008,1140",
                         code=INPUT_FAILED, error=(f"tessaret: {self.file}: (0028,0010) has no value of number 1\n"
                                                   f"tessaret: {self.file}: (0010,0010) has no value of number 1\n"
                                                   f"tessaret: {self.file}: (0008,1140) has no value of number 1\n")).splitlines()
        self.assertEqual([json.loads(line) for line in lines], [
            {"tag": "(0008,0008)", "keyword": "ImageType", "vr": "CS", "Value": ["PRIMARY"]},
            {"tag": "(0028,1052)", "keyword": "RescaleIntercept", "vr": "DS", "Value": [1.5]},
            {"tag": "(0028,0010)", "found": False}, {"tag": "(0010,0010)", "found": False}, {"tag": "(0008,1140)", "found": False}])
        for index, number in enumerate((1, 515)):
            self.assertEqual(json.loads(self.get("--json", "--type", "US", "--index", index, "0009,1001"))["Value"], [number])
        self.assertEqual(json.loads(self.get("--json", "--index", "0", "0009,1001"))["InlineBinary"], "AQADAg==")

    def test_compressed_pixel_data_has_its_type_and_its_fragments(self):
        head = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED)
        file = self.write("file.dcm", meta(tool.JPEG) + head + item(b"") + item(b"\xff\xd8") + tool.sequence_end())
        self.assertEqual(run("get", file, "PixelData").stdout, b"2\n")
        self.assertEqual(json.loads(run("get", "--json", file, "PixelData").stdout),
                         {"tag": "(7fe0,0010)", "keyword": "PixelData", "vr": "OB", "items": 2})

    def test_words_that_name_no_element_are_wrong_usage(self):
        self.assertEqual(self.get("Rows", "Roes", code=USAGE, error="tessaret: get: no element has the keyword \"Roes\"\n"), "")

    def test_long_values_are_whole(self):
        # Longer than a part, and no whole number of parts.
        content = bytes(number % 251 for number in range(200_001 if tool.INSTRUMENTED else 1_000_001)) + b"\0"
        file = self.write("long.dcm", meta(EXPLICIT) + element(0x7FE00010, "OB", content))
        self.assertEqual(run("get", file, "PixelData").stdout.decode(), "\\".join(f"{byte:02x}" for byte in content) + "\n")
        words = [str(word) for word in struct.unpack(f"<{len(content) // 2}H", content)]
        self.assertEqual(run("get", "--type", "US", file, "PixelData").stdout.decode(), "\\".join(words) + "\n")
        for index in (0, 24575, 24576, len(words) - 1):  # 48 KiB are 24576 words
            self.assertEqual(run("get", "--type", "US", "--index", index, file, "PixelData").stdout.decode(), words[index] + "\n")
        self.assert_ends(run("get", "--type", "US", "--index", len(words), file, "PixelData"), INPUT_FAILED,
                         f"tessaret: {file}: (7fe0,0010) has no value of number {len(words)}\n")

    def test_standard_input_is_read(self):
        self.assertEqual(run("get", "-", "Rows", input=self.file.read_bytes()).stdout, b"2\n")

    def test_a_file_that_is_cut_gives_what_it_has_and_fails(self):
        cut = self.write("cut.dcm", (meta(EXPLICIT) + CONTENT)[:-5])
        result = run("get", cut, "Rows", "PixelData")
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout, b"2\n\n" if b"not there" in result.stderr else b"2\n00\n")
        self.assertIn(b"truncated", result.stderr)

    def test_numbers_of_a_big_endian_file_are_what_they_say(self):
        big = self.write("big.dcm", meta(tool.BIG_ENDIAN) + element(0x00280010, "US", b"\1\0", order=">"))
        self.assertEqual(run("get", big, "Rows").stdout, b"256\n")

    def test_an_implicit_file_has_the_types_of_the_dictionary(self):
        implicit = self.write("implicit.dcm", meta(IMPLICIT) + element(0x00280010, "US", b"\1\0", implicit=True))
        self.assertEqual(run("get", implicit, "Rows").stdout, b"1\n")

    def test_an_implicit_file_has_the_types_that_its_elements_give_each_other(self):
        two_bytes = lambda tag, value: element(tag, "US", struct.pack("<H", value), implicit=True)
        item_of = lambda content: struct.pack("<HHI", 0x0088, 0x0200, len(content) + 8) + item(content)
        for representation, shown in ((1, b"-2000\n-2000\n63536\n"), (0, b"63536\n63536\n63536\n")):
            file = self.write("implicit.dcm", meta(IMPLICIT) + element(0x00090010, "LO", "ACME", implicit=True) +
                              two_bytes(0x00280010, 63536) + two_bytes(0x00280103, representation) + two_bytes(0x00280120, 63536) +
                              item_of(two_bytes(0x00280120, 63536)))
            result = run("get", file, "PixelPaddingValue", "0088,0200[0].0028,0120", "Rows", "0009,0010")
            self.assertEqual(result.stdout, shown + b"ACME\n")
        # An item may say otherwise than what is around it, and types that a file states count.
        file = self.write("item.dcm", meta(IMPLICIT) + two_bytes(0x00280103, 1) +
                          item_of(two_bytes(0x00280103, 0) + two_bytes(0x00280120, 63536)))
        self.assertEqual(run("get", file, "0088,0200[0].0028,0120").stdout, b"63536\n")
        file = self.write("explicit.dcm", meta(EXPLICIT) + element(0x00280103, "US", b"\1\0") + element(0x00280120, "US", b"\x30\xf8"))
        self.assertEqual(run("get", file, "PixelPaddingValue").stdout, b"63536\n")

    def test_nothing_in_a_value_steers_a_terminal(self):
        odd = self.write("odd.dcm", meta(EXPLICIT) + element(0x00204000, "LT", "\x1b[31m"))
        self.assertEqual(run("get", odd, "ImageComments").stdout, b"\\x1b[31m\n")


if __name__ == "__main__":
    unittest.main()
