"""tessaret dictionary: tags, UIDs, words, and the binary form."""

import json
import os
import struct
import subprocess
import unittest

import tool
from tool import DONE, INPUT_FAILED, OUTPUT_FAILED, run


def lines(*arguments):
    return run("dictionary", *arguments).stdout.decode().splitlines()


class Queries(tool.ToolTest):

    def test_a_tag_is_found_in_every_spelling(self):
        for spelling in ("0010,0010", "(0010,0010)", "00100010"):
            self.assertEqual(lines(spelling), ["(0010,0010) PN Patient's Name"])
        for spelling in ("7FE0,0010", "7fe00010"):
            self.assertEqual(lines(spelling), ["(7fe0,0010) OW Pixel Data"])

    def test_a_uid_is_found(self):
        self.assertEqual(lines("1.2.840.10008.5.1.4.1.1.2"), ["1.2.840.10008.5.1.4.1.1.2 SOPClass CTImageStorage, image, CT"])
        self.assertEqual(lines("1.2.840.10008.1.2.1"), ["1.2.840.10008.1.2.1 TransferSyntax ExplicitVRLittleEndian"])

    def test_a_uid_is_not_found_by_its_beginning(self):
        self.assert_ends(run("dictionary", "1.2.840"), INPUT_FAILED, "tessaret: 1.2.840: in no dictionary\n")

    def test_words_are_found_in_either_case(self):
        for words in ("patient's birth date", "PATIENT'S BIRTH DATE", "Birth Date"):
            self.assertIn("(0010,0030) DA Patient's Birth Date", lines(words))

    def test_keywords_are_found(self):
        self.assertIn("(0010,0010) PN Patient's Name", lines("PatientName"))
        self.assertEqual(lines("ImagePositionPatient"), ["(0020,0032) DS Image Position (Patient)"])
        self.assertIn("1.2.840.10008.5.1.4.1.1.2 SOPClass CTImageStorage, image, CT", lines("CTImageStorage"))
        # Some are not made of the words of the name.
        self.assertEqual(lines("ThreeDMatingPoint"), ["(0068,64c0) FD 3D Mating Point"])
        self.assertEqual(lines("radiusalongwedge"), ["(0014,511f) DS Radius Along the Wedge"])

    def test_words_find_tags_and_uids_in_their_order(self):
        found = lines("verification")
        tags = [line for line in found if line.startswith("(")]
        uids = [line for line in found if not line.startswith("(")]
        self.assertEqual(found, sorted(tags) + uids)
        self.assertIn("1.2.840.10008.1.1 SOPClass Verification", uids)

    def test_what_is_unknown_is_told(self):
        for query in ("0009,1001", "1.2.3.4", "no such thing", "...", "'"):
            with self.subTest(query):
                result = run("dictionary", query)
                self.assert_ends(result, INPUT_FAILED, f"tessaret: {query}: in no dictionary\n")
                self.assertEqual(result.stdout, b"")

    def test_json_has_an_object_for_each(self):
        self.assertEqual([json.loads(line) for line in lines("--json", "0010,0010")],
                         [{"tag": "00100010", "vr": "PN", "name": "Patient's Name"}])
        self.assertEqual([json.loads(line) for line in lines("--json", "1.2.840.10008.5.1.4.1.1.2")],
                         [{"uid": "1.2.840.10008.5.1.4.1.1.2", "type": "SOPClass", "name": "CTImageStorage", "image": True,
                           "modality": "CT"}])
        self.assertEqual([json.loads(line) for line in lines("--json", "1.2.840.10008.1.1")],
                         [{"uid": "1.2.840.10008.1.1", "type": "SOPClass", "name": "Verification", "image": False}])
        self.assertGreater(len([json.loads(line) for line in lines("--json", "patient")]), 10)


class Compile(tool.ToolTest):

    def test_the_binary_form_has_every_entry_of_the_text(self):
        out = self.path("dict.bin")
        self.assert_ends(run("dictionary", "--compile", out), DONE, "")
        content = out.read_bytes()
        text = (tool.SOURCE_DIR / "data/dicom-dict.txt").read_text()
        entries = sorted(int(group, 16) << 16 | int(element, 16) for group, element in
                         (line[1:].split()[:2] for line in text.splitlines() if line.startswith("{")))
        count, described = struct.unpack_from("<iI", content, 12)
        self.assertEqual(content[:10], b"#!BinRTC\n\0")
        self.assertEqual((count, bool(described)), (len(entries), True))
        self.assertEqual(list(struct.unpack_from(f"<{count}I", content, 20)), entries)
        texts = content[20 + 16 * count:].split(b"\0")
        self.assertEqual(texts[entries.index(0x00100010)], b"Patient's Name")

    def test_the_tool_works_with_the_binary_form(self):
        place = self.path("data")
        place.mkdir()
        self.assert_ends(run("dictionary", "--compile", place / "dicom-dict.txt"), DONE)
        (place / "uid-dict.txt").write_bytes((tool.SOURCE_DIR / "data/uid-dict.txt").read_bytes())
        environment = {**os.environ, "TESSARET_DATA_DIR": str(place)}
        for query in ("0010,0010", "7fe0,0010", "spacing"):
            compiled = subprocess.run([tool.TOOL, "dictionary", query], check=True, capture_output=True, env=environment)
            self.assertEqual(compiled.stdout.decode().splitlines(), lines(query))

    def test_what_is_there_is_replaced_only_by_force(self):
        out = self.write("precious", b"do not lose")
        self.assert_ends(run("dictionary", "--compile", out), OUTPUT_FAILED,
                         f"tessaret: {out}: is there already; --force replaces it\n")
        self.assertEqual(out.read_bytes(), b"do not lose")
        self.assert_ends(run("dictionary", "--force", "--compile", out), DONE, "")
        self.assertTrue(out.read_bytes().startswith(b"#!BinRTC"))
        self.assert_no_leftovers()

    def test_an_output_that_cannot_be_written_is_told(self):
        nowhere = self.path("no/such/place")
        self.assert_ends(run("dictionary", "--compile", nowhere), OUTPUT_FAILED,
                         f"tessaret: {nowhere}: No such file or directory\n")
        self.assert_ends(run("dictionary", "--compile", self.folder), OUTPUT_FAILED,
                         f"tessaret: {self.folder}: Is a directory\n")
        self.assert_ends(run("dictionary", "--compile", "/dev/full"), OUTPUT_FAILED,
                         "tessaret: /dev/full: No space left on device\n")

    def test_json_tells_what_was_written(self):
        out = self.path("dict.bin")
        result = run("dictionary", "--json", "--compile", out)
        report = json.loads(result.stdout)
        entries = (tool.SOURCE_DIR / "data/dicom-dict.txt").read_text().count("\n{")
        self.assertEqual(report, {"output": str(out), "bytes": out.stat().st_size, "entries": entries})
        self.assert_ends(run("dictionary", "-v", "--force", "--compile", out), DONE,
                         f"tessaret: {out}: {entries} entries, {out.stat().st_size} bytes\n")

    def test_a_dictionary_without_descriptions_is_written_without_them(self):
        place, out = self.path("data"), self.path("dict.bin")
        place.mkdir()
        whole = self.path("whole.bin")
        self.assert_ends(run("dictionary", "--compile", whole), DONE)
        content = whole.read_bytes()
        count = struct.unpack_from("<i", content, 12)[0]
        bare = content[:16] + bytes(4) + content[20:20 + 16 * count]
        (place / "dicom-dict.txt").write_bytes(bare)
        (place / "uid-dict.txt").write_bytes((tool.SOURCE_DIR / "data/uid-dict.txt").read_bytes())
        environment = {**os.environ, "TESSARET_DATA_DIR": str(place)}
        self.assert_ends(run("dictionary", "--compile", out, env=environment), DONE, "")
        self.assertEqual(out.read_bytes()[16:], bare[16:])

    def test_one_that_could_not_be_loaded_is_not_written(self):
        # 20 bytes of header; 4 for the key, 12 for the element, its text and a NUL: 512 for all but the last, of 492.
        out = self.path("large.bin")
        self.write("uid-dict.txt", (tool.SOURCE_DIR / "data/uid-dict.txt").read_bytes())
        environment = {**os.environ, "TESSARET_DATA_DIR": str(self.folder)}
        for length, error in ((475, ""), (476, f"tessaret: {out}: File too large\n")):
            lines = "".join(f"{{0 {at} LO {'x' * 495}\"\n" for at in range(32767)) + f"{{0 32767 LO {'x' * length}\"\n"
            self.write("dicom-dict.txt", ("\n" + lines).encode())
            result = run("dictionary", "--force", "--compile", out, env=environment)
            self.assert_ends(result, OUTPUT_FAILED if error else DONE, error)
            self.assertEqual(out.stat().st_size, 16 << 20)

    def test_a_question_may_come_with_it(self):
        result = run("dictionary", "--compile", self.path("dict.bin"), "0010,0010")
        self.assert_ends(result, DONE, "")
        self.assertEqual(result.stdout, b"(0010,0010) PN Patient's Name\n")


if __name__ == "__main__":
    unittest.main()
