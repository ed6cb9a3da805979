"""tessaret dump --format json: the DICOM JSON model, beside what pydicom makes of the same files."""

import base64
import json
import math
import struct
import unittest
import warnings

import pydicom

import tool
from tool import BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, element, image, item, meta, run


def model(path, *options):
    result = run("dump", "--format", "json", "-q", *options, path)
    return result, [json.loads(line) for line in result.stdout.splitlines()]


class Model(tool.ToolTest):
    is_big_endian = False

    def of(self, content, syntax=EXPLICIT):
        result, models = model(self.write("file.dcm", meta(syntax) + content))
        self.assert_ends(result, DONE, "")
        self.assertEqual(len(models), 1)
        return models[0]

    def test_values_are_those_of_the_model(self):
        self.assertEqual(self.of(b"".join((
            element(0x00080000, "UL", bytes(4)), element(0x00080005, "CS", "ISO_IR 192"),
            element(0x00080008, "CS", "ORIGINAL\\\\PRIMARY"), element(0x00080020, "DA", "20240102"),
            element(0x00081140, "SQ", item(element(0x00081150, "UI", "1.2.3")) + item(b"")), element(0x00081199, "SQ"),
            element(0x00091001, "UN", b"ab"), element(0x00091002, "DS", "+18.5\\007\\.5\\-5.\\-00.5e3\\.\\1e"),
            element(0x00100010, "PN", "Wang^XiaoDong=王^小東=a\\B"), element(0x00100020, "LO"),
            element(0x00101030, "DS", " 1.50\\2\\x "), element(0x00200013, "IS", "7 "), element(0x00204000, "LT", "a\\b "),
            element(0x00280009, "AT", struct.pack("<HH", 0x0018, 0x1063)), element(0x00280010, "US", struct.pack("<H", 2)),
            element(0x00189074, "FD", struct.pack("<d", 0.1)), element(0x00189075, "FL", struct.pack("<2f", math.nan, 0.5)),
            element(0x7FE00010, "OW", b"\1\2")))), {
                "00080005": {"vr": "CS", "Value": ["ISO_IR 192"]}, "00080008": {"vr": "CS", "Value": ["ORIGINAL", None, "PRIMARY"]},
                "00080020": {"vr": "DA", "Value": ["20240102"]},
                "00081140": {"vr": "SQ", "Value": [{"00081150": {"vr": "UI", "Value": ["1.2.3"]}}, {}]}, "00081199": {"vr": "SQ"},
                "00091001": {"vr": "UN", "InlineBinary": "YWI="}, "00091002": {"vr": "DS", "Value": [18.5, 7, 0.5, -5, -500, ".", "1e"]},
                "00100010": {"vr": "PN", "Value": [{"Alphabetic": "Wang^XiaoDong", "Ideographic": "王^小東", "Phonetic": "a"},
                                                   {"Alphabetic": "B"}]},
                "00100020": {"vr": "LO"}, "00101030": {"vr": "DS", "Value": [1.5, 2, "x"]}, "00200013": {"vr": "IS", "Value": [7]},
                "00204000": {"vr": "LT", "Value": ["a\\b"]}, "00280009": {"vr": "AT", "Value": ["00181063"]},
                "00280010": {"vr": "US", "Value": [2]}, "00189074": {"vr": "FD", "Value": [0.1]},
                "00189075": {"vr": "FL", "Value": ["nan", 0.5]}, "7FE00010": {"vr": "OW", "InlineBinary": "AQI="}})

    def test_the_character_set_is_the_one_of_the_model(self):
        name = lambda value: element(0x00100010, "PN", value)
        sets = lambda value, vr="CS": element(0x00080005, vr, value)
        content = sets("ISO_IR 100") + element(0x00081140, "SQ", item(sets("\\ISO 2022 IR 126") + name(b"\x1b-F\xe4")) + item(
            sets("Latin 9", "UN") + name("a")) + item(sets("") + name("ä")) + item(sets("  ")) + item(name(b"\xe4"))) + name(b"\xe4")
        unicode, names = {"vr": "CS", "Value": ["ISO_IR 192"]}, lambda text: {"vr": "PN", "Value": [{"Alphabetic": text}]}
        self.assertEqual(self.of(content), {"00080005": unicode, "00081140": {"vr": "SQ", "Value": [
            {"00080005": unicode, "00100010": names("δ")}, {"00080005": unicode, "00100010": names("a")},
            {"00080005": {"vr": "CS"}, "00100010": names("ä")}, {"00080005": {"vr": "CS"}}, {"00100010": names("ä")}]},
            "00100010": names("ä")})

    def test_what_pads_a_value_is_no_part_of_it(self):
        self.assertEqual(self.of(element(0x00080008, "CS", " A \\B  \\ ") + element(0x00081160, "IS", "1 \\ 2") +
                                 element(0x0008001A, "UI", b"1.2\0\\1.3\0") + element(0x00101001, "PN", "a \\b= ")), {
            "00080008": {"vr": "CS", "Value": [" A", "B", None]}, "00081160": {"vr": "IS", "Value": [1, 2]},
            "0008001A": {"vr": "UI", "Value": ["1.2", "1.3"]},
            "00101001": {"vr": "PN", "Value": [{"Alphabetic": "a"}, {"Alphabetic": "b"}]}})

    def test_letters_that_are_no_type_are_unknown(self):
        self.assertEqual(self.of(element(0x00091001, "??", b"ab") + element(0x00091002, "us", b"ab") + element(0x00091003, "??")), {
            "00091001": {"vr": "UN", "InlineBinary": "YWI="}, "00091002": {"vr": "UN", "InlineBinary": "YWI="},
            "00091003": {"vr": "UN"}})

    def test_what_is_not_a_number_has_no_sign(self):
        self.assertEqual(self.of(element(0x00189074, "FD", struct.pack("<4d", math.nan, -math.nan, math.inf, -math.inf))), {
            "00189074": {"vr": "FD", "Value": ["nan", "nan", "inf", "-inf"]}})

    def test_signs_that_make_no_number_stay_text(self):
        self.assertEqual(self.of(element(0x00091002, "DS", "+-5\\--5\\-+5\\-0")), {
            "00091002": {"vr": "DS", "Value": ["+-5", "--5", "-+5", 0]}})

    def test_arrays_of_floats_are_bytes(self):
        # The types of an implicit file come from the dictionary.
        floats, doubles = struct.pack("<2f", 1.5, math.inf), struct.pack("<d", 2)
        content = (element(0x00660016, "OF", floats, implicit=True) + element(0x00660022, "OD", implicit=True) +
                   element(0x7FE00009, "OD", doubles, implicit=True))
        self.assertEqual(self.of(content, syntax=IMPLICIT), {
            "00660016": {"vr": "OF", "InlineBinary": base64.b64encode(floats).decode()}, "00660022": {"vr": "OD"},
            "7FE00009": {"vr": "OD", "InlineBinary": base64.b64encode(doubles).decode()}})

    def test_whole_numbers_that_a_double_does_not_have_are_text(self):
        most = 2**53 - 1
        unsigned = (0, 5, most, most + 1, 2**63, 10 * most)
        content = element(0x0008040C, "UV", struct.pack("<6Q", *unsigned), implicit=True)
        self.assertEqual(self.of(content, syntax=IMPLICIT), {
            "0008040C": {"vr": "UV", "Value": [0, 5, most, str(most + 1), str(2**63), str(10 * most)]}})
        signed = (-5, most, -most, -most - 1, most + 1, -2**63)
        file = self.write("file.dcm", meta(IMPLICIT) + element(0x0008040C, "UV", struct.pack("<6q", *signed), implicit=True))
        report = json.loads(run("get", "--json", "--type", "SV", file, "0008,040C").stdout)
        self.assertEqual(report["Value"], [-5, most, -most, str(-most - 1), str(most + 1), str(-2**63)])

    def test_an_implicit_file_has_the_types_that_its_elements_give_each_other(self):
        two_bytes = lambda tag, value: element(tag, "US", struct.pack("<H", value), implicit=True)
        item_of = lambda content: struct.pack("<HHI", 0x0088, 0x0200, len(content) + 8) + item(content)
        content = (element(0x00090010, "LO", "ACME", implicit=True) + two_bytes(0x00280103, 1) + two_bytes(0x00280120, 63536) +
                   item_of(two_bytes(0x00280120, 63536) + item_of(two_bytes(0x00280103, 0) + two_bytes(0x00280120, 63536))))
        signed, unsigned = ({"vr": vr, "Value": [value]} for vr, value in (("SS", -2000), ("US", 63536)))
        self.assertEqual(self.of(content, syntax=IMPLICIT), {
            "00090010": {"vr": "LO", "Value": ["ACME"]}, "00280103": {"vr": "US", "Value": [1]}, "00280120": signed,
            "00880200": {"vr": "SQ", "Value": [{"00280120": signed, "00880200": {"vr": "SQ", "Value": [
                {"00280103": {"vr": "US", "Value": [0]}, "00280120": unsigned}]}}]}})
        # 1 is the sign, and no other value.
        self.assertEqual(self.of(two_bytes(0x00280103, 2) + two_bytes(0x00280120, 63536), syntax=IMPLICIT)["00280120"], unsigned)
        content = element(0x00280103, "US", b"\1\0") + element(0x00280120, "US", b"\x30\xf8")
        self.assertEqual(self.of(content)["00280120"], unsigned)

    def test_long_values_are_whole(self):
        pixels = bytes(number % 251 for number in range(200_000))
        inline = self.of(element(0x7FE00010, "OW", pixels))["7FE00010"]["InlineBinary"]
        self.assertEqual(base64.b64decode(inline, validate=True), pixels)

    def test_values_that_are_not_read_are_named_by_their_place(self):
        path = self.write("a b.dcm", meta(EXPLICIT) + image())
        result, models = model(path, "--no-pixels")
        self.assert_ends(result, DONE, "")
        self.assertEqual(models[0]["7FE00010"], {"vr": "OW", "BulkDataURI": path.as_uri() + "#7FE00010"})

    def test_compressed_pixel_data_has_its_fragments_as_they_stand(self):
        fragments = item(b"") + item(b"\xff\xd8\xff\xd9") + item(b"ab")
        head = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED)
        pixels = self.of(head + fragments + tool.sequence_end(), syntax=JPEG)["7FE00010"]
        self.assertEqual((pixels["vr"], base64.b64decode(pixels["InlineBinary"])), ("OB", fragments))
        # They go out in parts, which end within a group of three bytes.
        long = b"".join(item(bytes(number % 251 for number in range(size))) for size in (0, 2, 49152, 49154, 100_000, 4))
        pixels = self.of(head + long + tool.sequence_end(), syntax=JPEG)["7FE00010"]
        self.assertEqual(base64.b64decode(pixels["InlineBinary"], validate=True), long)

    def test_each_file_is_a_line_and_one_that_fails_has_words(self):
        good, cut = self.good_file(), self.write("cut.dcm", (meta(EXPLICIT) + image())[:-3])
        result, models = model(good)
        self.assertEqual(models[0]["00100010"]["Value"], [{"Alphabetic": "Doe^John"}])
        result = run("dump", "--format", "json", good, cut, self.path("missing"))
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(len(result.stdout.splitlines()), 2)
        self.assertIn(b"truncated", result.stderr)

    # Beside another program.

    def same(self, ours, theirs, where):
        """Differences that are meant are told apart here, each with its reason."""
        self.assertEqual(sorted(ours), sorted(key for key in theirs if not key.endswith("0000")), where)  # group lengths
        for tag, our in ours.items():
            their, place = theirs[tag], f"{where} {tag}"
            if tag == "00080005" and any(their.get("Value", [])):  # they keep that of the file
                self.assertEqual(our, {"vr": "CS", "Value": ["ISO_IR 192"]}, place)
                continue
            if our["vr"] != their["vr"]:
                # Types of private elements in implicit files come from a dictionary of theirs.
                self.assertTrue("UN" in (our["vr"], their["vr"]) or {our["vr"], their["vr"]} <= {"US", "SS", "OW", "OB", "LO"}, place)
                continue
            if our["vr"] == "SQ":
                self.assertEqual(len(our.get("Value", [])), len(their.get("Value", [])), place)
                for index, pair in enumerate(zip(our.get("Value", []), their.get("Value", []))):
                    self.same(*pair, f"{place}[{index}]")
            elif "InlineBinary" in our or "InlineBinary" in their:
                if not self.is_big_endian:  # they leave the bytes in the order of the file, where the model has little endian
                    self.assertEqual(our.get("InlineBinary"), their.get("InlineBinary"), place)
            else:
                self.same_values(our["vr"], our.get("Value", []), their.get("Value", []), place)

    def same_values(self, vr, ours, theirs, place):
        if vr in ("FL", "OF"):  # they write a 32-bit number with the digits of a 64-bit one
            theirs = [struct.unpack("<f", struct.pack("<f", number))[0] for number in theirs]
            ours = [struct.unpack("<f", struct.pack("<f", number))[0] for number in ours]
        empty = (None, "", {}, {"Alphabetic": ""})
        plain = lambda values: ["" if value in empty else value.strip() if isinstance(value, str) else value for value in values]
        ours, theirs = plain(ours), plain(theirs)
        if not any(ours) and not any(theirs) and 0 not in ours:  # blanks only
            return
        if vr == "PN":  # they drop forms that are empty
            ours, theirs = [[{key: text.strip() for key, text in name.items() if text} if name else name for name in names]
                            for names in (ours, theirs)]
        if vr in ("ST", "LT", "UT", "DT", "UC", "UR"):
            ours, theirs = ["".join(map(str, values)).replace("\r\n", "\n").strip() for values in (ours, theirs)]
        self.assertEqual(ours, theirs, place)

    def their_model(self, path):
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            return json.loads(json.dumps(pydicom.dcmread(path, force=True).to_json_dict()))

    def test_self_made_files_are_what_another_program_makes_of_them(self):
        for syntax in (IMPLICIT, EXPLICIT):
            path = self.write("file.dcm", meta(syntax) + image(implicit=syntax == IMPLICIT))
            self.same(model(path)[1][0], self.their_model(path), syntax)

    @tool.needs_corpus
    def test_real_files_are_what_another_program_makes_of_them(self):
        compared = 0
        for row in tool.corpus_sample():
            path = row["file"]
            if path.stat().st_size > 3_000_000 or "broken" in str(path):
                continue
            result, models = model(path)
            if result.returncode != DONE:
                continue
            try:
                theirs = self.their_model(path)
            except Exception:  # what they do not take
                continue
            self.is_big_endian = BIG_ENDIAN.encode() + b"\0" in path.read_bytes()[:1000]
            with self.subTest(str(path)):
                self.same(models[0], theirs, path.name)
                compared += 1
        self.assertGreater(compared, 50 // tool.FILE_SHARE)


if __name__ == "__main__":
    unittest.main()
