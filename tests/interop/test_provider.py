"""The programs of DCMTK as requesters of our provider."""

import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

import pydicom
from pydicom.dataset import Dataset, FileDataset, FileMetaDataset
from pydicom.encaps import encapsulate
from pydicom.sequence import Sequence
from pydicom.uid import UID

import peers
import self_made
from joining_relay import JoiningRelay
from our_provider import CANCEL_TURNS, Provider, ask

CT = UID("1.2.840.10008.5.1.4.1.1.2")
INSTANCE = UID("1.2.826.0.1.3680043.2.1143.7.8")


def make_image(path, syntax, instance=INSTANCE, name="Nobody^Nowhere"):
    """A small CT image, of several fragments on the wire."""
    dataset = Dataset()
    dataset.SOPClassUID = CT
    dataset.SOPInstanceUID = instance
    dataset.StudyDate = "20240229"
    dataset.Manufacturer = "odd"
    dataset.PatientName = name
    dataset.PatientID = "ID1"
    dataset.StudyInstanceUID = "1.2.3"
    dataset.SeriesInstanceUID = "1.2.3.4"
    code = Dataset()
    code.CodeValue = "C-1"
    code.CodeMeaning = "a code"
    dataset.ProcedureCodeSequence = Sequence([code, Dataset(), code])
    self_made.add_pixels(dataset, 16, 90, 100)
    if syntax == self_made.JPEG_BASELINE:
        dataset.PixelData = encapsulate([self_made.noise(9000)])
        dataset["PixelData"].VR = "OB"
        dataset["PixelData"].is_undefined_length = True
    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = CT
    meta.MediaStorageSOPInstanceUID = instance
    meta.TransferSyntaxUID = UID(syntax)
    file = FileDataset(str(path), dataset, file_meta=meta, preamble=bytes(128))
    file.is_implicit_VR = syntax == peers.IMPLICIT_LITTLE
    file.is_little_endian = syntax != peers.EXPLICIT_BIG
    file.save_as(path, write_like_original=False)
    return path


def data_set(path):
    """The elements, with their values as a reader takes them from the file; of pixels their samples."""
    dataset = pydicom.dcmread(path)
    pixels = struct.unpack(("<" if dataset.is_little_endian else ">") + "9000H", dataset.PixelData)
    del dataset.PixelData
    return dataset.to_json(), pixels


class OurProvider(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.temporary.cleanup)
        cls.folder = Path(cls.temporary.name)
        syntaxes = (peers.IMPLICIT_LITTLE, peers.EXPLICIT_LITTLE, peers.EXPLICIT_BIG)
        cls.native = [make_image(cls.folder / syntax, syntax) for syntax in syntaxes]
        cls.compressed = make_image(cls.folder / "compressed", self_made.JPEG_BASELINE)

    def new_folder(self):
        return Path(tempfile.mkdtemp(dir=self.folder))

    def succeeds(self, result):
        code, words = result
        self.assertEqual(code, 0, words)
        return words

    def fails(self, result, expected):
        code, words = result
        self.assertNotEqual(code, 0, words)
        self.assertIn(expected, words)

    def test_echo(self):
        with Provider() as provider:
            words = self.succeeds(provider.ask("echoscu", options=["--repeat", "50"]))
            self.assertEqual(words.count("Received Echo Response (Success)"), 50)
            self.succeeds(provider.ask("echoscu", options=["--propose-pc", "128"]))
            # The smallest and the largest PDU that it can offer to take.
            for size in ("4096", "131072"):
                self.succeeds(provider.ask("echoscu", options=["--max-pdu", size]))

    def test_what_is_stored_is_what_was_sent(self):
        for path in self.native:
            with self.subTest(path.name):
                folder = self.new_folder()
                with Provider(folder) as provider:
                    self.succeeds(provider.ask("storescu", path, options=["-R", "-xs"]))
                (stored,) = folder.iterdir()
                self.assertEqual(stored.name, INSTANCE)
                self.assertEqual(data_set(stored), data_set(path))

    def test_each_native_syntax_that_is_proposed(self):
        wanted = {"-xe": "1.2.840.10008.1.2.1", "-xb": "1.2.840.10008.1.2.2", "-xi": "1.2.840.10008.1.2"}
        for option, syntax in wanted.items():
            with self.subTest(syntax):
                folder = self.new_folder()
                with Provider(folder) as provider:
                    self.succeeds(provider.ask("storescu", self.native[0], options=["-R", option]))
                (stored,) = folder.iterdir()
                self.assertEqual(pydicom.dcmread(stored).file_meta.TransferSyntaxUID, syntax)
                self.assertEqual(data_set(stored), data_set(self.native[0]))

    def test_fragments_that_are_longer_and_shorter_than_ours(self):
        for size in ("4096", "131072"):
            folder = self.new_folder()
            with Provider(folder) as provider:
                self.succeeds(provider.ask("storescu", self.native[0], options=["-R", "--max-send-pdu", size]))
            (stored,) = folder.iterdir()
            self.assertEqual(data_set(stored), data_set(self.native[0]))

    def test_several_fragments_in_one_pdu(self):
        # The command and five fragments of 4084 bytes at most: all in one, or as many as the PDUs that ours announces have room for.
        for longest, expected in ((1 << 20, [6]), (16384, [4, 2]), (8200, [2, 2, 2])):
            folder = self.new_folder()
            with self.subTest(longest), Provider(folder) as provider, JoiningRelay(provider.port, longest) as relay:
                self.succeeds(ask(relay.port, "storescu", self.native[0], self.native[0], options=["-R", "--max-send-pdu", "4096"]))
                self.assertEqual(relay.joined, expected * 2)
                (stored,) = folder.iterdir()
                self.assertEqual(data_set(stored), data_set(self.native[0]))

    def test_stores_of_another_library(self):
        folder = self.new_folder()
        other = make_image(self.folder / "other", peers.EXPLICIT_LITTLE, UID(INSTANCE + ".1"), "Somebody^Else")
        with Provider(folder) as provider:
            # It falls over its own release, with every provider and whatever came of the stores, so that its exit code says nothing.
            subprocess.run(["gdcmscu", "--store", "127.0.0.1", provider.port, self.native[0], other], capture_output=True, timeout=60, check=False)
        sent = {INSTANCE: self.native[0], INSTANCE + ".1": other}
        self.assertEqual({stored.name: data_set(stored) for stored in folder.iterdir()}, {name: data_set(path) for name, path in sent.items()})

    def test_a_compressed_object_whose_syntax_is_taken(self):
        folder = self.new_folder()
        with Provider(folder) as provider:
            self.succeeds(provider.ask("storescu", self.compressed, options=["-R", "-xy"]))
        (stored,) = folder.iterdir()
        self.assertEqual(pydicom.dcmread(stored).file_meta.TransferSyntaxUID, self_made.JPEG_BASELINE)
        self.assertEqual(pydicom.dcmread(stored).PixelData, pydicom.dcmread(self.compressed).PixelData)

    def test_a_thousand_objects_over_one_association(self):
        with Provider() as provider:
            words = self.succeeds(
                provider.ask("storescu", self.native[0], options=["-R", "--repeat", "1000", "+II"])
            )
        self.assertEqual(words.count("Received Store Response (Success)"), 1000)

    def test_a_status_that_is_no_success(self):
        with Provider("--status", "0xA700") as provider:
            _, words = provider.ask("storescu", self.native[0], options=["-R"])
        self.assertIn("Received Store Response (Refused: OutOfResources)", words)

    def refuses(self, provider):
        """What is sent is answered as a failure, and the association goes on."""
        _, words = provider.ask("storescu", self.native[0], self.native[1], options=["-R", "--no-halt"])
        self.assertEqual(words.count("Received Store Response (Refused: OutOfResources)"), 2, words)
        self.assertNotIn("Received Store Response (Success)", words)

    def test_a_disk_that_is_full(self):
        folder = self.new_folder()
        with Provider(folder, largest_file=10000) as provider:  # of 18,000 bytes of pixels
            self.refuses(provider)
            self.assertEqual(list(folder.iterdir()), [])
            # One that is there already stays as it was.
            (folder / INSTANCE).write_bytes(b"before")
            self.refuses(provider)
            (kept,) = folder.iterdir()
            self.assertEqual(kept.read_bytes(), b"before")

    def test_a_device_that_is_full(self):
        folder = self.new_folder()
        (folder / INSTANCE).symlink_to("/dev/full")
        with Provider(folder) as provider:
            self.refuses(provider)
        self.assertTrue((folder / INSTANCE).is_symlink())

    def test_places_that_take_no_file(self):
        no_folder = self.new_folder() / "file"
        no_folder.write_bytes(b"")
        removed = self.new_folder()
        removed.rmdir()
        taken = self.new_folder()
        (taken / INSTANCE).mkdir()
        # The system lets nobody make a file in the last one.
        for place in (no_folder, removed, taken, "/proc"):
            with self.subTest(str(place)), Provider(place) as provider:
                self.refuses(provider)
        self.assertEqual(no_folder.read_bytes(), b"")
        self.assertFalse(removed.exists())
        self.assertEqual(list(taken.rglob("*")), [taken / INSTANCE])

    def test_an_instance_that_is_there_already(self):
        folder = self.new_folder()
        (folder / INSTANCE).write_bytes(b"before")
        renamed = make_image(self.folder / "renamed", peers.IMPLICIT_LITTLE, name="Somebody^Else")
        with Provider(folder) as provider:
            words = self.succeeds(provider.ask("storescu", self.native[1], renamed, options=["-R"]))
            self.assertEqual(words.count("Received Store Response (Success)"), 2, words)
            # In its place while the provider still runs.
            (stored,) = folder.iterdir()
            self.assertEqual(data_set(stored), data_set(renamed))

    def test_a_title_that_is_refused(self):
        with Provider("--title", "SOMEBODY") as provider:
            self.fails(provider.ask("echoscu"), "Called AE Title Not Recognized")
            self.succeeds(provider.ask("echoscu", options=["-aec", "SOMEBODY"]))

    def test_every_other_reason_for_a_refusal(self):
        reasons = {"caller": "Calling AE Title Not Recognized", "application": "App Context Name Not Supported",
                   "classes": "App Context Name Not Supported"}
        for refused, reason in reasons.items():
            with self.subTest(refused), Provider("--refuse", refused) as provider:
                for program, words in (("echoscu", []), ("storescu", [self.native[0]])):
                    _, said = provider.ask(program, *words)
                    self.assertIn("Result: Rejected Permanent, Source: Service User", said)
                    self.assertIn("Reason: " + reason, said)
                    self.assertNotIn("Association Accepted", said)

    def test_a_provider_of_one_syntax_alone(self):
        folder = self.new_folder()
        with Provider(folder, "--implicit") as provider:
            self.succeeds(provider.ask("storescu", self.native[2], options=["-R", "-xe"]))
        (stored,) = folder.iterdir()
        self.assertEqual(pydicom.dcmread(stored).file_meta.TransferSyntaxUID, peers.IMPLICIT_LITTLE)
        self.assertEqual(data_set(stored), data_set(self.native[2]))

    def test_aborts(self):
        with Provider() as provider:
            for _ in range(20):
                self.succeeds(provider.ask("echoscu", options=["--abort"]))
            self.succeeds(provider.ask("storescu", self.native[0], options=["-R", "--abort"]))
            self.succeeds(provider.ask("echoscu"))

    def test_queries(self):
        folder = self.new_folder()
        with Provider(folder) as provider:
            self.succeeds(provider.ask("storescu", self.native[0], options=["-R"]))
            keys = ["-k", "0008,0052=IMAGE", "-k", "0008,0018", "-k", "0008,0070"]
            for model in ("-S", "-P"):
                words = self.succeeds(provider.ask("findscu", options=[model, *keys]))
                self.assertIn(INSTANCE, words)
                self.assertIn("[odd", words)
                words = self.succeeds(provider.ask("findscu", options=[model, *keys, "-k", "0008,0020=19000101"]))
                self.assertNotIn(INSTANCE, words)

    def test_queries_with_many_matches_and_with_a_cancel(self):
        asked = ["-S", "-k", "0008,0052=STUDY", "-k", "0010,0020"]
        with Provider("--matches", "3000") as provider:
            words = self.succeeds(provider.ask("findscu", options=asked))
            self.assertEqual(words.count("(Pending)"), 3000)
            self.assertIn("[ID2999", words)
            self.assertTrue(any(self.is_cancelled(provider, asked) for _ in range(CANCEL_TURNS)))

    def is_cancelled(self, provider, asked):
        """Only a query all of whose matches have been sent ends otherwise."""
        words = self.succeeds(provider.ask("findscu", options=[*asked, "--cancel", "3"]))
        matches = words.count("(Pending)")
        end = "Cancel: MatchingTerminatedDueToCancelRequest" if matches < 3000 else "Success"
        self.assertIn(f"Received Final Find Response ({end})", words)
        return matches < 3000

    def test_moves(self):
        source = self.new_folder()
        target = self.new_folder()
        with Provider(target) as destination:
            with Provider(source, f"TARGET={destination.port}") as provider:
                self.succeeds(provider.ask("storescu", self.native[0], options=["-R"]))
                keys = ["-k", "0008,0052=IMAGE", "-k", f"0008,0018={INSTANCE}"]
                words = self.succeeds(provider.ask("movescu", options=["-S", "-aem", "TARGET", *keys]))
                self.assertIn("Received Final Move Response (Success)", words)
                (moved,) = target.iterdir()
                self.assertEqual(data_set(moved), data_set(self.native[0]))
                _, words = provider.ask("movescu", options=["-S", "-aem", "NOBODY", *keys])
                self.assertIn("Received Final Move Response (Failed: UnableToProcess)", words)


if __name__ == "__main__":
    unittest.main()
