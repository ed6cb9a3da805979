"""Every member of the data set, the dictionary and the options, called from Python by value."""

import datetime
import pathlib
import re
import struct
import sys
import unittest
import warnings

import package

package.use_library("tessaret")
sys.path.insert(0, str(package.SOURCE_DIR / "tests" / "tools"))

import tessaret
import tool
from tessaret import _library
from tool import BIG_ENDIAN, EXPLICIT, IMPLICIT, MPEG, UNDEFINED, element, image, item, meta, sequence_end

with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import pydicom

WHATEVER = "1.2.840.113619.5.2"  # a syntax that nobody knows


def number(tag, value, implicit=False, order="<"):
    return element(tag, "US", struct.pack(order + "H", value), implicit, order)


class DataSetTest(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.object = tessaret.create("Tessaret.DCMObject")
        self.addCleanup(self.object.close)

    def file(self, content, name="in.dcm"):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def load(self, content, pixels=True):
        self.assertIs(self.object.Load(self.file(content), pixels), True)
        return self.object

    def tags_of(self, walked):
        """The tags from the first to the last, as a script walks them."""
        tags = []
        found, group, number_ = walked.GetFirstVR()
        while found:
            tags.append((group, number_))
            found, group, number_ = walked.GetNextVR(group, number_)
        return tags

    def assert_fails(self, words, function, *arguments, status=0x80020009):
        with self.assertRaises(tessaret.Error) as caught:
            function(*arguments)
        self.assertEqual((caught.exception.status, caught.exception.source, caught.exception.words),
                         (status, "Tessaret.DCMObject", words))

    def read_again(self):
        """What an independent reader finds in the saved object."""
        path = self.folder / "saved.dcm"
        self.object.Save(path)
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            return pydicom.dcmread(path)


class Values(DataSetTest):
    def test_every_type_of_element_has_its_type_in_python(self):
        rows = (
            (0x00080054, "AE", b"STORE", "STORE"), (0x00101010, "AS", b"042Y", "042Y"), (0x00080060, "CS", b"CT", "CT"),
            (0x00204000, "LT", b" kept in front", " kept in front"), (0x00100020, "LO", b"id\xfc", "id\u00fc"),
            (0x00100010, "PN", b"Doe^John", "Doe^John"), (0x00080050, "SH", b"short", "short"), (0x00080081, "ST", b"text", "text"),
            (0x00080018, "UI", b"1.2.3", "1.2.3"), (0x00080120, "UT", b"long", "long"), (0x00200013, "IS", b"-12", -12),
            (0x00281052, "DS", b"1.5", 1.5), (0x00280010, "US", struct.pack("<H", 65535), 65535),
            (0x00189219, "SS", struct.pack("<h", -5), -5), (0x00186016, "UL", struct.pack("<I", 2**32 - 1), 4294967295.0),
            (0x00186020, "SL", struct.pack("<i", -2**31), -2**31), (0x00089459, "FL", struct.pack("<f", 0.25), 0.25),
            (0x00089A01, "FD", struct.pack("<d", 0.1), 0.1), (0x00080020, "DA", b"20010203", datetime.datetime(2001, 2, 3)),
            (0x0008002A, "DT", b"20010203040506.250000", datetime.datetime(2001, 2, 3, 4, 5, 6, 250000)),
            (0x00080030, "TM", b"040506", "04:05:06"), (0x00091001, "OB", b"\1\2\3\4", b"\1\2\3\4"), (0x00091002, "UN", b"\0", b"\0\0"),
            (0x00281201, "OW", b"\1\2", b"\1\2"), (0x00100040, "CS", b"", None))
        self.load(meta(EXPLICIT) + b"".join(element(tag, vr, raw) for tag, vr, raw, _ in sorted(rows)))
        for tag, vr, _, value in rows:
            with self.subTest(vr):
                got = self.object.VR(tag >> 16, tag & 0xFFFF)
                self.assertEqual((type(got), got), (type(value), value))
        self.assertIsNone(self.object.VR(0x0011, 0x0011))

    def test_what_is_put_is_there_and_another_program_reads_it(self):
        rows = (
            (0x00080005, "ISO_IR 100", "ISO_IR 100"), (0x00080016, "1.2.840.10008.5.1.4.1.1.7", "1.2.840.10008.5.1.4.1.1.7"),
            (0x00080018, "1.2.3", "1.2.3"), (0x00100010, "M\u00fcller^J", "M\u00fcller^J"), (0x00200013, 7, 7), (0x00281052, 1.5, 1.5),
            (0x00280010, 512, 512), (0x00189219, -5, -5), (0x00186020, -6, -6), (0x00186016, 70000, 70000.0), (0x00089459, 0.25, 0.25),
            (0x00189073, 0.1, 0.1), (0x00080020, datetime.date(2001, 2, 3), datetime.datetime(2001, 2, 3)),
            (0x0008002A, datetime.datetime(2001, 2, 3, 4, 5, 6, 7000), datetime.datetime(2001, 2, 3, 4, 5, 6, 7000)),
            (0x00080030, "14:05:06.250", "14:05:06"), (0x7FE00010, bytes(range(8)), bytes(range(8))))
        for tag, value, back in rows:
            with self.subTest(f"{tag:08x}"):
                self.object.VR[tag >> 16, tag & 0xFFFF] = value
                self.assertEqual(self.object.VR(tag >> 16, tag & 0xFFFF), back)
        read = self.read_again()
        self.assertEqual((str(read.PatientName), read.InstanceNumber, read.RescaleIntercept, read.Rows), ("M\u00fcller^J", 7, 1.5, 512))
        self.assertEqual((read.StudyDate, read.AcquisitionDateTime, read.StudyTime, read.PixelData),
                         ("20010203", "20010203040506.007000", "140506.250", bytes(range(8))))

    def test_text_of_another_character_set_is_handed_over_as_its_bytes(self):
        name = "\u0394\u03b9\u03bf\u03bd\u03c5\u03c3\u03b9\u03bf\u03c2"
        self.object.VR[0x10, 0x10] = name
        self.assertEqual(self.object.VR(0x10, 0x10), "?" * len(name))
        self.object.VR[0x10, 0x10] = name.encode("iso8859_7").decode("latin-1")
        self.object.VR[0x08, 0x05] = "ISO_IR 126"
        self.assertEqual(self.object.VR(0x10, 0x10).encode("latin-1").decode("iso8859_7"), name)
        self.object.VR[0x08, 0x16], self.object.VR[0x08, 0x18] = "1.2.840.10008.5.1.4.1.1.7", "1.2.3"
        self.assertEqual(str(self.read_again().PatientName), name)

    def test_an_element_has_values_by_number(self):
        self.load(meta(EXPLICIT) + element(0x00080008, "CS", b"ORIGINAL\\PRIMARY\\AXIAL"))
        self.assertEqual([self.object.VR(8, 8, VM=at) for at in range(3)], ["ORIGINAL", "PRIMARY", "AXIAL"])
        self.assertEqual(self.object.VRMultiplicity(8, 8), 3)
        self.assertEqual(self.object.VRMultiplicity[8, 8], 3)
        self.assertEqual(self.object.VRMultiplicity(9, 9), 0)
        self.object.VR[8, 8, None, 1] = "SECONDARY"
        self.assertEqual(self.object.GetVRRawString(8, 8)[1], "ORIGINAL\\SECONDARY\\AXIAL")
        self.object.VR.put(8, 8, VM=3, newVal="MORE")
        self.assertEqual(self.object.VRMultiplicity(8, 8), 4)
        self.load(meta(EXPLICIT) + element(0x00080081, "ST", b"text"))
        self.assert_fails("Error: VR type ST,LT and UT have VM=1", self.object.VR, 8, 0x81, None, 1)

    def test_a_type_that_is_given_counts(self):
        self.load(meta(EXPLICIT) + element(0x00091001, "UN", b"text"))
        self.assertEqual(self.object.VR(9, 0x1001), b"text")
        self.assertEqual(self.object.VR(9, 0x1001, "LO"), "text")
        self.assertEqual(self.object.VR(Element=0x1001, Group=9), "text")
        self.object.VR[9, 0x1002, "IS"] = "12"
        self.assertEqual(self.object.VR(9, 0x1002), 12)

    def test_a_value_that_does_not_fit_fails_with_words(self):
        self.object.VR[0x10, 0x10] = "Doe^John"
        for tag, value in ((0x00280010, "many"), (0x00280010, b"\1\2"), (0x00080020, "no date"), (0x7FE00010, 5)):
            with self.subTest(value):
                self.assert_fails("Error converting VARIANT to VR type", self.object.VR.__setitem__, (tag >> 16, tag & 0xFFFF), value)
        self.object.VR[0x10, 0x10] = None
        self.assertEqual(self.object.GetVRDescr(0x10, 0x10), (True, "Patient's Name", "PN", 0, 0))

    def test_raw_text_and_bytes_go_in_and_out_as_they_are(self):
        self.assertIs(self.object.PutVRRawString(0x10, 0x20, "LO", "odd "), True)
        self.assertEqual(self.object.GetVRRawString(0x10, 0x20), (None, "odd "))
        self.assertEqual(self.object.GetVRRawString(9, 9)[1], "")
        self.assertIs(self.object.PutVRRawString(0x10, 0x20, "LO", "\u00fc\udcff\0?"), True)
        self.assertEqual(self.object.GetVRData(0x10, 0x20), ("LO", b"\xfc\xff\0?"))
        self.assertIs(self.object.PutVRData(0x10, 0x20, "PN", bytearray(b"a\\b")), True)
        self.assertEqual(self.object.GetVRData(0x10, 0x20), ("PN", b"a\\b"))
        self.object.PutVRData(0x7FE0, 0x10, "OW", b"")
        self.assertEqual(self.object.GetVRData(0x7FE0, 0x10), ("OW", None))
        self.assert_fails("Cannot convert VR to raw ASCII", self.object.GetVRRawString, 0x7FE0, 0x10)
        self.assert_fails("Non existing VR", self.object.GetVRData, 9, 9)
        self.assert_fails("Only BYTE vectors allowed", self.object.PutVRData, 9, 9, "OB", "text")
        self.assert_fails("Only BYTE vectors allowed", self.object.PutVRData, 9, 9, "OB", [1, 2])
        self.assert_fails("PutVRData: Only 1 dim BYTE vectors allowed", self.object.PutVRData, 9, 9, "OB",
                          tessaret.Array([[1, 2], [3, 4]], "byte"))

    def test_large_bytes_come_through(self):
        raw = bytes(range(256)) * 65_536  # 16 MiB
        self.object.PutVRData(0x7FE0, 0x10, "OW", raw)
        self.assertEqual(self.object.VR(0x7FE0, 0x10), raw)


class Walks(DataSetTest):
    def test_tags_are_walked_in_their_order(self):
        self.assertEqual(self.object.GetFirstVR()[0], False)
        for tag in (0x00280010, 0x00100010, 0x00080018):
            self.object.PutVRRawString(tag >> 16, tag & 0xFFFF, "UN", "x")
        self.assertEqual(self.tags_of(self.object), [(8, 0x18), (0x10, 0x10), (0x28, 0x10)])
        self.assertEqual(self.object.GetNextVR(8, 0x18), (True, 0x10, 0x10))
        self.assertEqual(self.object.GetNextVR(0x28, 0x10), (False, 0x28, 0x10))
        self.assertEqual(self.object.GetNextVR(9, 9), (False, 9, 9))

    def test_elements_are_described(self):
        self.load(meta(EXPLICIT) + element(0x00080008, "CS", b"A\\B") + element(0x00091001, "OB", b"\1\2"))
        self.assertEqual(self.object.GetVRDescr(8, 8), (True, "Image Type", "CS", 4, 2))
        self.assertEqual(self.object.GetVRDescr(9, 0x1001), (True, "", "OB", 2, 0))
        self.assertEqual(self.object.GetVRDescr(9, 9), (False, None, None, 0, 0))

    def test_elements_are_removed(self):
        self.object.VR[0x10, 0x10] = "a"
        self.object.VR[0x10, 0x20] = "b"
        self.assertIs(self.object.RemoveVR(0x10, 0x10), False)  # never written
        self.assertEqual(self.tags_of(self.object), [(0x10, 0x20)])
        self.assertIs(self.object.Clear(), True)
        self.assertEqual(self.tags_of(self.object), [])

    def test_copies_are_independent(self):
        self.object.VR[0x10, 0x10] = "a"
        copied = self.object.copy()
        other = tessaret.create("Tessaret.DCMObject")
        self.assertIs(other.Set(self.object), True)
        self.object.VR[0x10, 0x10] = "b"
        self.assertEqual((copied.VR(0x10, 0x10), other.VR(0x10, 0x10)), ("a", "a"))
        with self.assertRaises(tessaret.Error):
            other.Set(None)
        with self.assertRaises(TypeError):
            other.Set("text")


class Sequences(DataSetTest):
    def nested(self):
        inner = item(element(0x00100020, "LO", b"deep"))
        outer = item(element(0x00081155, "UI", b"1.2.3") + element(0x00081140, "SQ", inner, length=UNDEFINED) + sequence_end())
        return self.load(meta(EXPLICIT) + element(0x00081140, "SQ", outer + item(b""), length=UNDEFINED) + sequence_end())

    def test_items_are_objects_at_any_depth(self):
        self.nested()
        self.assertEqual(self.object.SequencesCount(8, 0x1140), 2)
        first = self.object.Sequence(8, 0x1140, 0)
        self.assertEqual(first.VR(8, 0x1155), "1.2.3")
        self.assertEqual(first.Sequence[8, 0x1140, 0].VR(0x10, 0x20), "deep")
        self.assertEqual(self.tags_of(self.object.Sequence(8, 0x1140, 1)), [])
        for index in (-1, 2):
            self.assertIsNone(self.object.Sequence(8, 0x1140, index))
        self.assertEqual(self.object.SequencesCount(9, 9), 0)

    def test_an_item_keeps_its_object(self):
        item_ = self.nested().copy().Sequence(8, 0x1140, 0).Sequence(8, 0x1140, 0)
        self.assertEqual(item_.VR(0x10, 0x20), "deep")

    def test_an_object_becomes_an_item(self):
        for name in ("one", "two"):
            made = tessaret.create("Tessaret.DCMObject")
            made.VR[0x10, 0x20] = name
            self.object.Sequence[8, 0x1140, -1] = made
            self.assertEqual(made.VR(0x10, 0x20), name)
            # It shows the item from now on, and owns it no longer.
            with self.assertRaises(tessaret.BadArgument):
                self.object.Sequence[8, 0x1140, -1] = made
        self.assertEqual([self.object.Sequence(8, 0x1140, at).VR(0x10, 0x20) for at in range(2)], ["one", "two"])
        replaced = tessaret.create("Tessaret.DCMObject")
        replaced.VR[0x10, 0x20] = "three"
        self.object.Sequence.put(Group=8, Element=0x1140, Idx=0, newVal=replaced)
        self.assertEqual(self.object.Sequence(8, 0x1140, 0).VR(0x10, 0x20), "three")
        self.object.Sequence[8, 0x1115, 0] = None
        self.assertEqual((self.object.SequencesCount(8, 0x1115), self.object.GetVRDescr(8, 0x1115)[2]), (0, "SQ"))
        self.assertIs(self.object.RemoveSequence(8, 0x1140, 0), False)
        self.assertEqual(self.object.SequencesCount(8, 0x1140), 2)
        read = self.read_again()
        self.assertEqual([entry.PatientID for entry in read.ReferencedImageSequence], ["three", "two"])

    def test_an_object_cannot_contain_itself(self):
        with self.assertRaises(tessaret.BadArgument):
            self.object.Sequence[8, 0x1140, 0] = self.object


class Files(DataSetTest):
    def test_a_file_is_loaded_with_and_without_pixels(self):
        self.load(meta(EXPLICIT) + image())
        self.assertEqual(self.object.VR(0x7FE0, 0x10), struct.pack("<6H", 1, 2, 3, 4, 5, 6))
        self.load(meta(EXPLICIT) + image(), False)
        self.assertIsNone(self.object.VR(0x7FE0, 0x10))
        self.assertEqual(self.object.VR(0x10, 0x10), "Doe^John")

    def test_every_number_but_zero_is_true(self):
        for number in (1, 2, -1, 77, 0.1, 2**20):
            with self.subTest(number):
                self.load(meta(EXPLICIT) + image(), number)
                self.assertIsNotNone(self.object.VR(0x7FE0, 0x10))
        self.load(meta(EXPLICIT) + image(), 0)
        self.assertIsNone(self.object.VR(0x7FE0, 0x10))

    def test_numbers_are_the_same_in_every_encoding(self):
        for syntax, implicit, order in ((IMPLICIT, True, "<"), (EXPLICIT, False, "<"), (BIG_ENDIAN, False, ">")):
            with self.subTest(syntax):
                self.load(meta(syntax) + image(implicit=implicit, order=order))
                self.assertEqual((self.object.VR(0x28, 0x11), self.object.VR(2, 0x10)), (3, syntax))
                self.assertEqual(self.object.VR(0x7FE0, 0x10), struct.pack("<6H", 1, 2, 3, 4, 5, 6))

    def test_an_object_is_turned_into_another_syntax_and_saved(self):
        self.load(meta(EXPLICIT) + image())
        self.assertIs(self.object.Translate(BIG_ENDIAN), True)
        self.assertEqual(self.object.VR(2, 0x10), BIG_ENDIAN)
        read = self.read_again()
        self.assertEqual((read.file_meta.TransferSyntaxUID, read.Columns, read.PixelData), (BIG_ENDIAN, 3, struct.pack(">6H", 1, 2, 3, 4, 5, 6)))
        self.assertIs(self.object.Translate(IMPLICIT), True)
        self.assertEqual(self.read_again().file_meta.TransferSyntaxUID, IMPLICIT)
        self.assertIs(self.object.Translate(WHATEVER), False)
        self.assertIs(self.object.Translate(), False)  # native already, and never written
        self.assertIs(self.object.Translate(None), False)

    def test_files_that_cannot_be_read_or_written_say_why(self):
        self.assert_fails("No such file or directory", self.object.Load, str(self.folder / "missing.dcm"), True)
        self.assert_fails("Empty object", self.object.GetVRData, 8, 8)
        self.assertEqual((self.object.VR(8, 8), self.object.GetFirstVR()[0]), (None, False))
        self.assertIs(self.object.Clear(), True)
        with self.assertRaises(tessaret.Error):
            self.object.Save(self.folder / "no" / "such" / "folder.dcm")

    def test_compressed_pixels_without_a_codec_fail_and_stay(self):
        fragments = item(b"") + item(b"\xff\xd8\xff\xd9") + sequence_end()
        content = meta(MPEG) + image()[:-20] + element(0x7FE00010, "OB", fragments, length=UNDEFINED)
        self.assert_fails("Unsupported Encapsulated Transfer Syntax", self.object.Load, self.file(content), True)
        self.assertEqual(self.object.VR(0x10, 0x10), "Doe^John")

    def test_names_of_files_need_not_be_text(self):
        path = self.folder / "M\u00fcller\udcff \U0001f600.dcm"
        path.write_bytes(meta(EXPLICIT) + image())
        self.assertIs(self.object.Load(path, True), True)
        self.assertIs(self.object.Save(str(path) + "2"), True)
        self.assertTrue(pathlib.Path(str(path) + "2").is_file())

    @tool.needs_corpus
    def test_real_files_have_the_elements_that_pydicom_finds(self):
        compared = 0
        for row in list(tool.corpus_rows())[::9]:
            if "broken" in row["path"]:
                continue
            with self.subTest(row["path"]), warnings.catch_warnings():
                warnings.simplefilter("ignore")
                read = pydicom.dcmread(row["file"], stop_before_pixels=True, force=True)
                self.object.Load(row["file"], False)
                tags = {tag for tag in self.tags_of(self.object) if tag[0] > 2 and tag[1] != 0 and tag < (0x7FE0, 0x10)}
                self.assertEqual(tags, {(key.group, key.elem) for key in read.keys() if key.elem != 0 and key < 0x7FE00010})
                self.assertEqual(self.object.VR(8, 0x18, "UI"), read.get("SOPInstanceUID"))
                compared += 1
        self.assertGreater(compared, 20)


class Sending(DataSetTest):
    def test_what_has_no_class_is_not_sent(self):
        for more in ((), (True,)):
            self.assert_fails("Missing SOP Class for C-STORE", self.object.Send, "127.0.0.1", "104", "ME", "YOU", *more)


class Later(DataSetTest):
    def test_members_that_are_still_to_come_say_so(self):
        words = "This is not available in this version"
        other = tessaret.create("Tessaret.DCMObject")
        for function, arguments in ((self.object.IntersectPlane, (other, True)), (self.object.CreateSecondaryCapture, (other, None)),
                                    (self.object.AddOverlay, (0, 0, 1, 1, "G", "overlay"))):
            with self.subTest(function.__name__):
                self.assert_fails(words, function, *arguments, status=0x80004001)

    def test_the_event_can_be_connected(self):
        connection = self.object.on("OnDrawOverlay", lambda surface, x0, y0, x1, y1: None)
        self.assertTrue(connection.connected)
        connection.disconnect()


class Manager(DataSetTest):
    def setUp(self):
        super().setUp()
        self.object.VR[0x10, 0x20] = "id"
        self.manager = self.object.query("IDcmObjectManager")
        self.addCleanup(self.manager.close)

    def test_ownership_is_given_once(self):
        self.assertIs(self.manager.GetOwnership(), True)
        self.assertIs(self.manager.GetOwnership(), False)
        self.assertIs(self.manager.SetOwner(), True)
        self.assertIs(self.manager.SetOwner(), False)

    def test_a_data_set_is_handed_on(self):
        handle = self.manager.GetPtr(1)
        self.assertIs(handle.IsAlive, True)
        self.assertIsNone(self.manager.GetPtr(1))
        other = tessaret.create("Tessaret.DCMObject")
        self.assertIs(other.query("IDcmObjectManager").PutPtr(1, handle), True)
        self.assertEqual(other.VR(0x10, 0x20), "id")
        self.assertEqual(self.object.VR(0x10, 0x20), "id")
        other.close()
        self.assertIs(handle.IsAlive, False)
        self.assertIsNone(self.object.VR(0x10, 0x20))

    def test_what_is_no_object_is_refused_where_one_is_needed(self):
        for value, name in ((5, "int"), ("text", "str"), (b"", "bytes"), (tessaret.Array([1]), "Array")):
            with self.subTest(name), self.assertRaisesRegex(TypeError, f"newVal has to be an object of the library, not {name}"):
                self.manager.PutPtr(1, value)
            with self.subTest(name), self.assertRaisesRegex(TypeError, f"newVal has to be an object of the library, not {name}"):
                self.object.Sequence[0x0008, 0x1140, 0] = value
        self.assertEqual(self.object.VR(0x10, 0x20), "id")

    def test_elements_are_records(self):
        record = self.manager.GetVR(0x10, 0x20)
        self.assertEqual((record.Group, record.Elem, record.TypeCode, record.len, record.pt), (0x10, 0x20, 0x4C4F, 2, b"id"))
        record.Elem, record.TypeCode, record.pt = 0x10, 0x504E, b"Doe^John"
        self.assertIs(self.manager.PutVR(record), True)
        record.Group = 0x11
        self.assertEqual((self.object.VR(0x10, 0x10), record.len, record.Group), ("Doe^John", 8, 0x11))
        missing = self.manager.GetVR(9, 9)
        self.assertEqual((missing.Group, missing.Elem, missing.len, missing.pt), (-1, -1, 0, None))
        with self.assertRaises(TypeError):
            record.pt = "text"

    def test_an_interface_that_is_not_there_is_refused(self):
        for name in ("INothing", "IDCMOptions"):
            with self.assertRaises(tessaret.NoInterface):
                self.object.query(name)
        self.assertIs(self.manager.query("IDCMObject"), self.object)


class Dictionary(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.dictionary = tessaret.create("Tessaret.DcmDictionary")
        self.addCleanup(self.dictionary.close)

    def test_it_has_the_entries_of_its_file(self):
        lines = (package.SOURCE_DIR / "data" / "dicom-dict.txt").read_text().splitlines()
        rows = sorted((int(row[1], 16), int(row[2], 16)) for row in (re.match(r"\{(0x\w+) (0x\w+) ", line) for line in lines) if row)
        self.assertEqual(self.dictionary.NumEntries, len(rows))
        self.assertEqual([self.dictionary.GetEntry(at) for at in range(len(rows))], [(True, *row) for row in rows])
        for at in (-1, -32768, len(rows), 32767):
            self.assertFalse(self.dictionary.GetEntry(at)[0])
        for at in (32768, -32769):
            with self.assertRaises(OverflowError):
                self.dictionary.GetEntry(at)

    def test_it_knows_elements_and_uids(self):
        self.assertEqual(self.dictionary.GetVRDescription(0x10, 0x10), (True, "PN", "Patient's Name"))
        self.assertEqual(self.dictionary.GetVRDescription(0x70010, -65520), (True, "PN", "Patient's Name"))
        self.assertEqual(self.dictionary.GetVRDescription(9, 0x1001), (False, None, None))
        found, description, kind, modality, is_image = self.dictionary.GetUIDDescription("1.2.840.10008.5.1.4.1.1.2")
        self.assertEqual((found, description, modality, is_image), (True, "CTImageStorage", "CT", True))
        self.assertEqual(self.dictionary.GetUIDDescription("1.2.3.4.5"), (False, None, None, None, False))


class Options(package.PackageTest):
    def test_the_option_is_kept_in_the_users_settings(self):
        with tessaret.create("Tessaret.DCMOptions") as options, tessaret.create("Tessaret.DCMOptions.1") as others:
            self.assertIs(options.UseTotokuLUT, False)
            options.UseTotokuLUT = True
            self.assertIs(others.UseTotokuLUT, True)
            others.UseTotokuLUT = False
            self.assertIs(options.UseTotokuLUT, False)


class Completeness(unittest.TestCase):
    def test_every_member_is_called_here(self):
        text = pathlib.Path(__file__).read_text()
        kinds = [tessaret.create(name) for name in ("Tessaret.DCMObject", "Tessaret.DCMOptions", "Tessaret.DcmDictionary")]
        manager = kinds[0].query("IDcmObjectManager")
        kinds += [manager, manager.GetPtr(0), manager.GetVR(8, 8)]
        for kind in kinds:
            for name, members in type(kind)._members.items():
                with self.subTest(f"{type(kind).__name__}.{name}"):
                    self.assertRegex(text, rf"\.{name}\b")
                    if any(member.kind in (_library.PUT, _library.PUTREF) for member in members):
                        self.assertRegex(text, rf"\.{name}(\[[^\]]*\]|, [\w., ]+)? = |\.{name}\.put\(")


if __name__ == "__main__":
    unittest.main()
