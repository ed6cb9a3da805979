"""The two dictionary files against the tables, read by a small reader of their own grammars."""

import collections
import csv
import itertools
import os
import shutil
import subprocess
import tempfile
import unittest
from operator import itemgetter
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"
GROUPS_WRITTEN_OUT = [f"{low:02X}" for low in range(0x00, 0x20, 2)]


def table(name, data=DATA):
    with open(data / "tables" / name, encoding="ascii", newline="") as file:
        return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


class ElementLine:
    """Takes the fields of one braced line apart, character by character."""

    SEPARATORS = " \"',"

    def __init__(self, line):
        self.rest = line[1:]

    def skip_separators(self):
        while self.rest[0] in self.SEPARATORS:
            self.rest = self.rest[1:]

    def token(self):
        self.skip_separators()
        end = next(i for i, c in enumerate(self.rest) if c in self.SEPARATORS)
        text, self.rest = self.rest[:end], self.rest[end:]
        return text

    def number(self):
        text = self.token()
        return int(text[2:], 16) if len(text) >= 3 and text[1] in "xX" else int(text)

    def description(self):
        self.skip_separators()
        text = ""
        characters = iter(self.rest)
        for c in characters:
            if c == '"':
                self.rest = "".join(characters)
                return text
            text += next(characters) if c == "\\" else c
        raise AssertionError(f"no closing quote: {text}")

    def fields(self):
        return self.number(), self.number(), self.token()[:2], self.description()


Element = collections.namedtuple("Element", "group number vr name")
Uid = collections.namedtuple("Uid", "type uid is_image description modality")


def read_elements(data=DATA):
    lines = (data / "dicom-dict.txt").read_text(encoding="ascii").split("\n")
    return [Element(*ElementLine(line).fields()) for line in lines[1:] if line[:1] in ("{", "(")]


def read_uids(data=DATA):
    uids = []
    for line in (data / "uid-dict.txt").read_text(encoding="ascii").split("\n"):
        tokens = line.split("#")[0].split()
        if tokens:
            kind, uid, is_image, description, *modality = tokens
            uids.append(Uid(kind, uid, int(is_image), description, " ".join(modality)))
    return uids


class ElementDictionary(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.elements = read_elements()
        cls.by_tag = {(e.group, e.number): (e.vr, e.name) for e in cls.elements}
        cls.rows = table("elements.tsv")
        cls.repeating = table("elements-repeating.tsv")

    def named_in_tables(self):
        """Rows whose tag is written without wildcards and that have a VR and a text."""
        for row in self.rows + self.repeating:
            if "x" not in row["group"] + row["element"] and row["name"] and row["vr"] != "NONE":
                yield row

    def test_entries_of_the_standard_have_their_vr_and_name(self):
        known = {
            (0x0000, 0x0002): ("UI", "Affected SOP Class UID"),
            (0x0002, 0x0010): ("UI", "Transfer Syntax UID"),
            (0x0004, 0x1220): ("SQ", "Directory Record Sequence"),
            (0x0008, 0x0005): ("CS", "Specific Character Set"),
            (0x0008, 0x1140): ("SQ", "Referenced Image Sequence"),
            (0x0010, 0x0010): ("PN", "Patient's Name"),
            (0x0010, 0x0030): ("DA", "Patient's Birth Date"),
            (0x0018, 0x8151): ("DS", "X-Ray Tube Current in uA"),
            (0x0020, 0x000D): ("UI", "Study Instance UID"),
            (0x0020, 0x0032): ("DS", "Image Position (Patient)"),
            (0x0028, 0x0010): ("US", "Rows"),
            (0x0028, 0x0106): ("US", "Smallest Image Pixel Value"),
            (0x0028, 0x1050): ("DS", "Window Center"),
            (0x0040, 0xA730): ("SQ", "Content Sequence"),
            (0x0072, 0x006D): ("UN", "Selector UN Value"),
            (0x3006, 0x0050): ("DS", "Contour Data"),
            (0x5000, 0x3000): ("OW", "Curve Data"),
            (0x6000, 0x3000): ("OW", "Overlay Data"),
            (0x601E, 0x0010): ("US", "Overlay Rows"),
            (0x7FE0, 0x0010): ("OW", "Pixel Data"),
            (0xFFFA, 0xFFFA): ("SQ", "Digital Signatures Sequence"),
        }
        for tag, entry in known.items():
            with self.subTest(tag="(%04X,%04X)" % tag):
                self.assertEqual(self.by_tag.get(tag), entry)

    def test_every_row_of_the_tables_is_there_with_its_vr_and_name(self):
        for row in self.named_in_tables():
            tag = int(row["group"], 16), int(row["element"], 16)
            self.assertEqual(self.by_tag.get(tag), (row["vr_default"], row["name"]), row)

    def test_nothing_is_there_but_rows_wildcards_and_group_lengths(self):
        tags = {(int(row["group"], 16), int(row["element"], 16)) for row in self.named_in_tables()}
        groups_without_length = {group for group, _ in tags} - {group for group, number in tags if number == 0}
        # (0020,31xx): 256 numbers. (0028,04x0) to (0028,04x3): 4 times 16, less 0400 to 0403,
        # which are elements of their own. (0028,08x0), 2, 3, 4 and 8: 5 times 16.
        wildcards = 256 + (4 * 16 - 4) + 5 * 16
        self.assertEqual(len(self.elements), len(tags) + wildcards + len(groups_without_length))

    def test_wildcards_in_the_element_number_are_written_out(self):
        known = {
            (0x0020, 0x3100): ("CS", "Source Image IDs"),
            (0x0020, 0x31FF): ("CS", "Source Image IDs"),
            (0x0028, 0x0410): ("US", "Rows For Nth Order Coefficients"),
            (0x0028, 0x04F3): ("AT", "Coefficient Coding Pointers"),
            (0x0028, 0x0800): ("CS", "Code Label"),
            (0x0028, 0x08F8): ("AT", "Image Data Location"),
        }
        for tag, entry in known.items():
            with self.subTest(tag="(%04X,%04X)" % tag):
                self.assertEqual(self.by_tag.get(tag), entry)

    def test_an_element_of_its_own_wins_over_a_wildcard(self):
        self.assertEqual(self.by_tag[0x0028, 0x0400], ("LO", "Transform Label"))
        self.assertEqual(self.by_tag[0x0028, 0x0403], ("LO", "Sequence of Compressed Data"))

    def test_wildcards_without_a_sensible_bound_are_left_out(self):
        self.assertFalse({0x1000, 0x1010} & {e.group for e in self.elements})

    def test_each_group_begins_with_its_length(self):
        for group, elements in itertools.groupby(self.elements, key=lambda e: e.group):
            first = next(elements)
            self.assertEqual((first.number, first.vr), (0, "UL"), f"{group:04X}")
        self.assertEqual(self.by_tag[0x0002, 0x0000], ("UL", "File Meta Information Group Length"))
        self.assertEqual(self.by_tag[0x0008, 0x0000], ("UL", "Group Length"))

    def test_items_and_withdrawn_elements_are_left_out(self):
        self.assertNotIn(0xFFFE, {e.group for e in self.elements})
        withdrawn = [row for row in self.rows if not row["name"]]
        self.assertEqual(len(withdrawn), 7)
        for row in withdrawn:
            self.assertNotIn((int(row["group"], 16), int(row["element"], 16)), self.by_tag)

    def test_no_group_is_private(self):
        self.assertEqual([e for e in self.elements if e.group % 2], [])

    def test_tags_ascend_and_none_stands_twice(self):
        tags = [(e.group, e.number) for e in self.elements]
        self.assertEqual(tags, sorted(set(tags)))

    def test_the_number_of_entries_fits_sixteen_bits(self):
        self.assertLessEqual(len(self.elements), 0x7FFF)

    def test_every_vr_is_one_of_the_standard(self):
        standard = set(
            "AE AS AT CS DA DS DT FD FL IS LO LT OB OD OF OL OV OW "
            "PN SH SL SQ SS ST SV TM UC UI UL UN UR US UT UV".split()
        )
        self.assertEqual({e.vr for e in self.elements} - standard, set())

    def test_the_repeating_table_is_the_wildcard_groups_written_out(self):
        written_out = []
        for row in self.rows:
            if "x" in row["group"]:
                self.assertEqual(row["group"][2:], "xx")
                written_out += [row | {"group": row["group"][:2] + low} for low in GROUPS_WRITTEN_OUT]
        tag = itemgetter("group", "element")
        self.assertEqual(sorted(written_out, key=tag), sorted(self.repeating, key=tag))

    def test_every_record_is_one_closed_line_and_the_first_line_is_a_comment(self):
        lines = (DATA / "dicom-dict.txt").read_text(encoding="ascii").split("\n")
        self.assertTrue(lines[0].startswith("# "))
        self.assertEqual(lines[-1], "")
        for line in lines:
            self.assertLessEqual(len(line), 1000)
            if line[:1] == "{":
                self.assertRegex(line, r'^\{0x[0-9A-F]{4} 0x[0-9A-F]{4} [A-Z]{2} "[^"\\]+"\}$')
            else:
                self.assertRegex(line, "^(# .*)?$")


class UidDictionary(unittest.TestCase):
    KINDS = {
        "Application Context Name": "ApplicationContextName",
        "Application Hosting Model": "ApplicationHostingModel",
        "Coding Scheme": "CodingScheme",
        "DICOM UIDs as a Coding Scheme": "DICOMUIDsAsACodingScheme",
        "LDAP OID": "LDAPOID",
        "Mapping Resource": "MappingResource",
        "Meta SOP Class": "MetaSOPClass",
        "SOP Class": "SOPClass",
        "Service Class": "ServiceClass",
        "Synchronization Frame of Reference": "SynchronizationFrameOfReference",
        "Transfer Syntax": "TransferSyntax",
        "Well-known SOP Instance": "WellKnownSOPInstance",
        "Well-known frame of reference": "WellKnownFrameOfReference",
    }

    @classmethod
    def setUpClass(cls):
        cls.uids = read_uids()
        cls.by_uid = {entry.uid: entry for entry in cls.uids}

    def test_every_row_of_the_table_is_there_with_all_fields(self):
        rows = table("uids.tsv")
        self.assertEqual(len(self.uids), len(rows))
        for row in rows:
            expected = Uid(
                self.KINDS[row["type"]],
                row["uid"],
                int(row["is_image_storage"]),
                row["keyword"] or "Retired",
                row["modality"],
            )
            self.assertEqual(self.by_uid.get(row["uid"]), expected)

    def test_entries_of_the_standard_have_their_fields(self):
        known = [
            Uid("SOPClass", "1.2.840.10008.1.1", 0, "Verification", ""),
            Uid("TransferSyntax", "1.2.840.10008.1.2", 0, "ImplicitVRLittleEndian", ""),
            Uid("TransferSyntax", "1.2.840.10008.1.2.4.70", 0, "JPEGLosslessSV1", ""),
            Uid("SOPClass", "1.2.840.10008.5.1.4.1.1.2", 1, "CTImageStorage", "CT"),
            Uid("SOPClass", "1.2.840.10008.5.1.4.1.1.4", 1, "MRImageStorage", "MR"),
            Uid("SOPClass", "1.2.840.10008.5.1.4.1.1.7", 1, "SecondaryCaptureImageStorage", "OT"),
            Uid("SOPClass", "1.2.840.10008.5.1.4.1.1.88.11", 0, "BasicTextSRStorage", "SR"),
            Uid("SOPClass", "1.2.840.10008.5.1.4.1.2.2.1", 0, "StudyRootQueryRetrieveInformationModelFind", ""),
            Uid("MetaSOPClass", "1.2.840.10008.5.1.1.9", 0, "BasicGrayscalePrintManagementMeta", ""),
            Uid("WellKnownSOPInstance", "1.2.840.10008.1.20.1.1", 0, "StorageCommitmentPushModelInstance", ""),
            Uid("ApplicationContextName", "1.2.840.10008.3.1.1.1", 0, "DICOMApplicationContext", ""),
        ]
        for entry in known:
            with self.subTest(uid=entry.uid):
                self.assertEqual(self.by_uid.get(entry.uid), entry)

    def test_uids_without_a_name_are_called_retired(self):
        nameless = [entry.uid for entry in self.uids if entry.description == "Retired"]
        self.assertEqual(nameless, ["1.2.840.10008.5.1.4.1.1.12.77", "1.2.840.10008.5.1.4.1.1.40"])

    def test_uids_ascend_as_text_and_none_stands_twice(self):
        uids = [entry.uid for entry in self.uids]
        self.assertEqual(uids, sorted(set(uids)))

    def test_every_uid_is_well_formed(self):
        for entry in self.uids:
            self.assertRegex(entry.uid, r"^(0|[1-9][0-9]*)(\.(0|[1-9][0-9]*))+$")
            self.assertLessEqual(len(entry.uid), 64)

    def test_every_line_is_a_comment_or_four_to_five_fields_of_bounded_length(self):
        text = (DATA / "uid-dict.txt").read_text(encoding="ascii")
        self.assertTrue(text.endswith("\n"))
        for line in text.split("\n"):
            self.assertLessEqual(len(line), 512)
            self.assertRegex(line, "^(#.*|[^#\\s]+(\t[^#\\s]+){3,4})?$")


class Script(unittest.TestCase):
    """Runs a copy of the script in a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.data = Path(folder.name) / "data"
        shutil.copytree(DATA, self.data)

    def run_script(self, *arguments):
        return subprocess.run(
            [self.data / "make-dictionaries", *arguments], capture_output=True, text=True, check=False
        )

    def append(self, name, *lines):
        with open(self.data / "tables" / name, "a", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in lines)

    def make(self):
        run = self.run_script()
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def assert_refused(self, *words):
        before = {name: (self.data / name).read_bytes() for name in ("dicom-dict.txt", "uid-dict.txt")}
        run = self.run_script()
        self.assertEqual(run.returncode, 1)
        self.assertNotIn("Traceback", run.stderr)
        for word in words:
            self.assertIn(word, run.stderr)
        for name, content in before.items():
            self.assertEqual((self.data / name).read_bytes(), content)

    def test_the_files_in_the_tree_are_what_the_tables_make(self):
        run = subprocess.run([DATA / "make-dictionaries", "--check"], capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_check_names_the_file_that_was_edited_and_leaves_it_alone(self):
        for name in ("dicom-dict.txt", "uid-dict.txt"):
            with self.subTest(file=name):
                self.make()
                edited = (self.data / name).read_bytes() + b"# a line\n"
                (self.data / name).write_bytes(edited)
                run = self.run_script("--check")
                self.assertEqual(run.returncode, 1)
                self.assertIn(name, run.stderr)
                self.assertEqual((self.data / name).read_bytes(), edited)

    def test_check_fails_when_a_file_is_missing(self):
        (self.data / "uid-dict.txt").unlink()
        run = self.run_script("--check")
        self.assertEqual(run.returncode, 1)
        self.assertIn("uid-dict.txt", run.stderr)

    def test_check_fails_when_a_table_was_edited(self):
        self.append("uids.tsv", "1.2.3\tName\tSOP Class\tName\t0\t0\t")
        self.assertEqual(self.run_script("--check").returncode, 1)

    def test_the_files_are_the_same_bytes_from_any_folder_and_locale(self):
        for name in ("dicom-dict.txt", "uid-dict.txt"):
            (self.data / name).unlink()
        environment = os.environ | {"LC_ALL": "C", "PYTHONHASHSEED": "1"}
        subprocess.run([self.data / "make-dictionaries"], cwd="/", env=environment, check=True)
        for name in ("dicom-dict.txt", "uid-dict.txt"):
            self.assertEqual((self.data / name).read_bytes(), (DATA / name).read_bytes())

    def test_an_element_that_stands_twice_is_refused(self):
        self.append("elements.tsv", "0010\t0010\tLO\t1\tAgain\tAgain\t0\tLO")
        self.assert_refused("(0010,0010)", "twice")

    def test_an_element_that_stands_in_both_tables_is_refused(self):
        self.append("elements.tsv", "6000\t3000\tOB\t1\tAgain\tAgain\t0\tOB")
        self.assert_refused("(6000,3000)", "twice")

    def test_two_wildcards_that_meet_are_refused(self):
        self.append("elements.tsv", "0028\t041x\tOB\t1\tAgain\tAgain\t0\tOB")
        self.assert_refused("(0028,0410)", "twice")

    def test_a_uid_that_stands_twice_is_refused(self):
        self.append("uids.tsv", "1.2.840.10008.1.1\tAgain\tSOP Class\tAgain\t0\t0\t")
        self.assert_refused("1.2.840.10008.1.1", "twice")

    def test_rows_that_cannot_become_an_entry_are_refused(self):
        rows = [
            ("elements.tsv", "0011\t00g0\tLO\t1\tName\tName\t0\tLO", "(0011,00g0)"),
            ("elements.tsv", "0010\t9999\tLO\t1\tName\tName\t0\tUS or SS", "US or SS"),
            ("elements.tsv", "0010\t9999\tLO\t1\tName\t'Name'\t0\tLO", "(0010,9999)"),
            ("elements.tsv", "0010\t9999\tLO\t1\tName", "8 fields"),
            ("elements.tsv", "0010\t9999\tLO\t1\tName\tin \u00b5A\t0\tLO", "ascii"),
            ("elements.tsv", f"0010\t9999\tLO\t1\tName\t{'N' * 1000}\t0\tLO", "1000"),
            ("uids.tsv", "1.2.x\tName\tSOP Class\tName\t0\t0\t", "1.2.x"),
            ("uids.tsv", "1.2.3\tName\tSOP Class\tNa#me\t0\t0\t", "1.2.3"),
            ("uids.tsv", "1.2.3\tName\tSOP Class\tName\t0\t2\t", "1.2.3"),
            ("uids.tsv", "1.2.3\tName\t\tName\t0\t0\t", "1.2.3"),
        ]
        for name, row, word in rows:
            with self.subTest(row=row):
                original = (self.data / "tables" / name).read_bytes()
                self.append(name, row)
                self.assert_refused(word)
                (self.data / "tables" / name).write_bytes(original)

    def test_quotes_backslashes_and_brackets_in_a_name_survive(self):
        name = "A \"quoted\" \\ name, with {0x0001} and 'more'"
        self.append("elements.tsv", f"0010\t9999\tLO\t1\tName\t{name}\t0\tLO")
        self.make()
        self.assertIn(Element(0x0010, 0x9999, "LO", name), read_elements(self.data))

    def test_a_uid_without_a_keyword_gets_its_name_in_one_word(self):
        self.append("uids.tsv", "1.2.3\tTwo-part name (Trial) # 1\tMeta SOP Class\t\t0\t1\tCT")
        self.make()
        self.assertIn(Uid("MetaSOPClass", "1.2.3", 1, "TwoPartNameTrial1", "CT"), read_uids(self.data))


if __name__ == "__main__":
    unittest.main()
