"""Files looked at closely, and dictionaries of a host's own, from Python."""

import pathlib
import struct
import sys
import unittest

import package

package.use_library("tessaret")
sys.path.insert(0, str(package.SOURCE_DIR / "tests" / "tools"))

import tessaret
from dicom_node import Node
from tool import BIG_ENDIAN, EXPLICIT, IMPLICIT, element, image, meta

SAMPLE = element(0x00100010, "PN", b"Doe^John") + element(0x00280011, "US", struct.pack("<H", 2))
PIXELS = element(0x7FE00010, "OW", b"\1\2\3\4")


class FileTest(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.object = tessaret.create("Tessaret.DCMObject")
        self.addCleanup(self.object.close)
        self.file = self.object.query("IDcmFile")
        self.addCleanup(self.file.close)

    def test_bytes_are_loaded_and_tell_of_themselves(self):
        data = meta(EXPLICIT) + SAMPLE + PIXELS
        self.file.LoadBytes(data)
        self.assertEqual(self.file.ReadEncoding, tessaret.ENCODING_EXPLICIT_LITTLE)
        self.assertIs(self.file.HasMark, True)
        self.assertEqual(self.file.NamedSyntax, EXPLICIT)
        self.assertEqual(self.file.NamedEncoding, tessaret.ENCODING_EXPLICIT_LITTLE)
        self.assertEqual(self.file.GetFirstTag()[1:], (2, int.from_bytes(data[134:136], "little")))
        self.assertEqual(self.file.GetEnd(), (tessaret.READ_TO_PIXELS, len(data) - 16, 0x7FE0, 0x10))
        self.assertEqual(self.file.SystemError, "")
        self.file.LoadBytes(data, tessaret.LOAD_PIXELS)
        self.assertEqual(self.file.GetEnd(), (tessaret.READ_TO_THE_END, 0, 0, 0))
        self.assertEqual(self.file.BytesRead, len(data))
        self.assertEqual(self.object.VR(0x10, 0x10), "Doe^John")
        self.assertIsInstance(self.file.GetMetaLength()[0], bool)

    def test_long_pixels_are_stepped_over(self):
        pixels = bytes(range(256)) * 20
        self.file.LoadBytes(SAMPLE + element(0x7FE00010, "OW", pixels) + element(0xFFFCFFFC, "OB", b"end "),
                            tessaret.LOAD_SKIPS_PIXELS)
        self.assertEqual(self.file.GetEnd()[0], tessaret.READ_TO_THE_END)
        self.assertEqual(self.file.GetElement(0x7FE0, 0x10)[1:3] + self.file.GetElement(0x7FE0, 0x10)[4:], ("OW", 5120, False, 0))
        self.assertEqual(bytes(self.file.GetBytes(0x7FE0, 0x10, 0, 5120)), pixels[:256])
        self.assertEqual(bytes(self.file.GetBytes(0xFFFC, 0xFFFC, 0, 4)), b"end ")
        with self.assertRaises(tessaret.Error) as caught:
            self.object.Save(self.folder / "out.dcm")
        self.assertIn("VR(7FE0,0010) was stepped over when it was read", str(caught.exception))

    def test_files_and_descriptors_are_loaded(self):
        path = self.folder / "a.dcm"
        path.write_bytes(SAMPLE)
        self.file.LoadFile(path, 0, tessaret.ENCODING_EXPLICIT_LITTLE)
        self.assertEqual(self.object.VR(0x28, 0x11), 2)
        with path.open("rb") as opened:
            self.file.LoadDescriptor(opened.fileno())
        self.assertEqual(self.object.VR(0x28, 0x11), 2)
        with self.assertRaises(tessaret.Error) as caught:
            self.file.LoadFile(path, tessaret.LOAD_STRICT)
        self.assertIn("Error checking DICOM MetaHeader", str(caught.exception))

    def test_oddities_are_told(self):
        self.file.LoadBytes(SAMPLE + element(0x00280011, "US", b"\3\0"))
        self.assertEqual(self.file.OdditiesCount, 1)
        self.assertEqual(self.file.GetOddity(0), (tessaret.ODDITY_TWICE, len(SAMPLE), 0x28, 0x11))
        self.assertEqual(self.file.GetOddity(1)[0], tessaret.ODDITY_NONE)

    def test_elements_are_shown_as_they_stand(self):
        self.file.LoadBytes(SAMPLE)
        self.assertEqual(self.file.GetElement(0x28, 0x11), (True, "US", 2, 16, True, 0))
        self.assertEqual(bytes(self.file.GetBytes(0x10, 0x10, 4, 10)), b"John")
        count, *columns = self.file.GetListing()
        self.assertEqual(count, 2)
        self.assertEqual([list(column) for column in columns],
                         [[0, 0], [0x100010, 0x280011], [0x504E, 0x5553], [8, 2], [0, 16], [True, True], [0, 0]])
        self.assertIs(self.file.SetType(0x10, 0x10, "LO"), True)
        self.assertEqual(self.file.GetElementText(0x10, 0x10), "(0010,0010) 'LO' [     8] 'Patient's Name' : Doe^John\n")
        self.assertEqual(self.file.GetElementText(0x10, 0x10, 0, 1), self.file.GetElementText(0x10, 0x10))
        self.assertEqual(self.file.GetElementText(0x10, 0x10, 1), "")
        self.assertEqual(self.file.Text.count("\n"), 2)
        self.assertIs(self.file.HasPixelsOfDoubtfulOrder, False)

    def test_a_refusal_says_why(self):
        self.file.LoadBytes(SAMPLE)
        self.assertEqual(self.file.Refusal, "")
        self.assertIs(self.object.Translate("1.2.3"), False)
        self.assertEqual(self.file.Refusal, "Unknown transfer syntax [1.2.3]")
        self.assertIs(self.object.Translate(EXPLICIT), True)
        self.assertEqual(self.file.Refusal, "")

    def test_data_sets_are_saved_in_every_form(self):
        self.file.LoadBytes(SAMPLE)
        bare = element(0x00100010, "PN", b"Doe^John", True) + element(0x00280011, "US", b"\2\0", True)
        self.assertEqual(bytes(self.file.SaveBytes(tessaret.SAVE_BARE)), bare)
        path = self.folder / "out.dcm"
        self.file.SaveFile(path, tessaret.SAVE_BARE, tessaret.SAVE_KEEPS_FILES)
        self.assertEqual(path.read_bytes(), bare)
        with self.assertRaises(tessaret.Error):
            self.file.SaveFile(path, tessaret.SAVE_BARE, tessaret.SAVE_KEEPS_FILES)
        self.assertEqual(bytes(self.file.SaveBytes())[:132], bytes(128) + b"DICM")


class DictionaryTest(package.PackageTest):
    def test_a_dictionary_of_the_hosts_own_is_loaded_and_saved(self):
        with tessaret.create("Tessaret.DcmDictionary") as dictionary, dictionary.query("IDcmDictionaryFile") as file:
            everything = file.ElementsCount
            file.LoadBytes(b'first\n{0x0009 0x1001 LO "Mine"}\n')
            self.assertEqual(file.ElementsCount, 1)
            self.assertEqual(file.GetElementAt(0), (True, 9, 0x1001, "LO", "Mine"))
            self.assertEqual(dictionary.GetVRDescription(9, 0x1001), (True, "LO", "Mine"))
            path = self.folder / "mine"
            file.SaveFile(path, True)
            self.assertEqual(path.read_bytes(), bytes(file.GetBytes(True)))
            file.Unload()
            self.assertEqual(file.ElementsCount, everything)
            file.LoadFile(path)
            self.assertEqual(bytes(file.GetBytes(False)).splitlines()[1:], [b'{0x0009 0x1001 LO "Mine"}'])
            uids = [file.GetUIDAt(at)[1] for at in range(file.UIDsCount)]
            self.assertEqual(uids, sorted(uids))
            self.assertTrue({IMPLICIT, BIG_ENDIAN} <= set(uids))


class SendingTest(package.PackageTest):
    CLASS = "1.2.840.10008.5.1.4.1.1.7"

    def test_a_queue_is_sent_and_answers_are_told(self):
        good, missing = self.folder / "good.dcm", self.folder / "missing.dcm"
        good.write_bytes(meta(EXPLICIT) + image())
        heard = []
        with tessaret.create("Tessaret.DcmCStore") as store, store.query("IDcmStoreResponse") as response:
            for path in (good, missing):
                store.AddFile(path, self.CLASS)
            self.assertEqual((store.NumFiles, store.SentFiles, store.FileName[1]), (2, 0, str(missing)))
            store.on("SopSent", lambda path, index: heard.append((path, index, response.ResponseStatus, response.ResponseComment)))
            store.on("SopError", lambda path, index, words: heard.append((path, index, words[: len(path) + 18], response.AssociationError)))
            store.on("Finished", lambda sent, errors: heard.append((sent, errors)))
            with Node(status=0xA700, comment="no room") as node:
                store.SendFiles("127.0.0.1", str(node.port), "HERE", "THERE", 20)
            self.assertEqual(heard, [(str(good), 0, 0xA700, "no room"), (str(missing), 1, f"Error sending [{missing}]: ", ""), (1, 1)])
            self.assertEqual(store.SentFiles, 1)
            heard.clear()
            store.on("SopSent", lambda *_: store.Cancel())
            with Node() as node:
                store.SendFiles("127.0.0.1", str(node.port), "HERE", "THERE", 20)
            self.assertEqual(heard[1:], [(1, 0)])
            with Node(reject=(1, 1, 7)) as node, self.assertRaises(tessaret.Error) as caught:
                store.SendFiles("127.0.0.1", str(node.port), "HERE", "THERE", 20)
            self.assertIn("Unknown remote AETitle", str(caught.exception))
            self.assertEqual(response.AssociationError, "Connection rejected permanent: service-user, called AE title not recognized")

    def test_a_node_is_asked_whether_it_is_there(self):
        with tessaret.create("Tessaret.DcmCStore") as store, store.query("IDcmVerification") as verification:
            for answers in (True, False):
                with Node(answers_echo=answers) as node:
                    self.assertIs(verification.Verify("127.0.0.1", str(node.port), "HERE", "THERE", 20), answers)

    def test_an_object_is_sent(self):
        with tessaret.create("Tessaret.DCMObject") as made, Node(syntax=EXPLICIT) as node:
            with made.query("IDcmFile") as file:
                file.LoadBytes(meta(EXPLICIT) + image(), tessaret.LOAD_PIXELS)
            self.assertIs(made.Send("127.0.0.1", str(node.port), "HERE", "THERE"), True)
            self.assertEqual(node.stores, [(self.CLASS, "1.2.3.4", image())])


class Completeness(unittest.TestCase):
    def test_every_member_is_called_here(self):
        text = pathlib.Path(__file__).read_text()
        with tessaret.create("Tessaret.DCMObject") as made, tessaret.create("Tessaret.DcmDictionary") as dictionary, \
                tessaret.create("Tessaret.DcmCStore") as store:
            for kind in (made.query("IDcmFile"), dictionary.query("IDcmDictionaryFile"), store, store.query("IDcmStoreResponse"),
                         store.query("IDcmVerification")):
                for name in type(kind)._members:
                    with self.subTest(f"{type(kind).__name__}.{name}"):
                        self.assertRegex(text, rf"\.{name}\b")


if __name__ == "__main__":
    unittest.main()
