"""Our requesters of queries and retrievals, which requester.cpp drives, and archives that are programs of others."""

import collections
import contextlib
import os
import subprocess
import unittest
from pathlib import Path

import made_files
import network_peers
import pydicom
import tool_runs
from our_provider import CANCEL_TURNS, Provider

REQUESTER = Path(os.environ["TESSARET_BINARY_DIR"]) / "tests" / "interop" / "interop_requester"
SECONDS = 60  # for one request; none takes two
NO_ASSOCIATION = 3
PENDING, DONE = "ff00", "0000"
MANY = 100  # so many matches that a cancel mostly comes while some of them are still to be sent
FIND_CANCELLED = "[status: Cancel: MatchingTerminatedDueToCancelRequest]"
MOVE_CANCELLED = "[status: Cancel: SubOperationsTerminatedDueToCancelIndication]"

ARCHIVES = "dcmqrscp", "Orthanc"
# What both archives keep of an image, by tag.
KEPT = {"0008,0060": "CS", "0010,0010": "PN", "0010,0020": "LO", "0020,0013": "IS"}

Answer = collections.namedtuple("Answer", "code lines words")


def ask(peer, *words, options=()):
    done = subprocess.run([REQUESTER, *map(str, [*options, peer.port, *words])], capture_output=True, timeout=SECONDS, check=False)
    return Answer(done.returncode, [line.split("\t") for line in done.stdout.decode().splitlines()], done.stderr.decode())


def send(peer, *paths):
    subprocess.run([tool_runs.TOOL, "-q", "send", f"ARCHIVE@127.0.0.1:{peer.port}", *paths], check=True, timeout=SECONDS, stderr=subprocess.DEVNULL)


def keys(level, image, **unique):
    """The keys of a level, with those above it, whose values archives want; what the image has more is asked for."""
    asked = {"0008,0052:CS": level, "0020,000D:UI": image.StudyInstanceUID}
    if level != "STUDY":
        asked["0020,000E:UI"] = image.SeriesInstanceUID
    return sorted(f"{key}={value}" for key, value in {**asked, **unique}.items())


class Requesters(unittest.TestCase, made_files.ArrivedFiles):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(network_peers.a_folder())
        cls.sources = made_files.two_studies(cls.folder / "two")
        cls.images = [pydicom.dcmread(path) for path in cls.sources]
        cls.many = made_files.phantoms(cls.folder / "many", slices=MANY, size=16)
        cls.one_of_many = pydicom.dcmread(cls.many[0])
        cls.orthanc = cls.enterClassContext(network_peers.orthanc())

    def new_folder(self):
        return self.enterContext(network_peers.a_folder(self.folder))

    @contextlib.contextmanager
    def archive(self, kind, destinations=None):
        """An empty one, while it runs and knows the destinations, ports by their titles."""
        if kind == "dcmqrscp":
            with network_peers.dcmqrscp("-v", destinations=destinations) as peer:
                yield peer
            return
        self.orthanc.forget_everything()
        # It answers nobody whom it does not know.
        for title, port in {"TESTER": 1, **(destinations or {})}.items():
            self.orthanc.introduce(title, port)
        yield self.orthanc

    def find(self, peer, *asked, options=()):
        """The matches, after a query that ends as it should, and an echo behind it."""
        folder = self.new_folder()
        answer = ask(peer, "find", folder, *asked, options=options)
        matches = [pydicom.dcmread(path) for path in sorted(folder.iterdir())]
        self.assertEqual((answer.code, answer.lines), (0, [["find", PENDING]] * len(matches) + [["find", DONE], ["true"], ["true"]]), answer)
        return matches

    @staticmethod
    def text_of(image, keyword):
        return str(image.get(keyword, ""))

    def assert_found(self, matches, images, *keywords):
        """As many, and of each what the image has."""
        table = [sorted(tuple(self.text_of(one, keyword) for keyword in keywords) for one in some) for some in (matches, images)]
        self.assertEqual(*table)

    def test_what_is_found_is_what_was_sent(self):
        for kind in ARCHIVES:
            with self.subTest(kind), self.archive(kind) as peer:
                send(peer, *self.sources)
                for options in ([], ["--explicit"], ["--patient"], ["--patient", "--explicit"]):
                    with self.subTest(options):
                        self.check_levels(peer, options)

    def check_levels(self, peer, options):
        patient = "--patient" in options
        for image in (self.images[0], self.images[3]):
            series = [other for other in self.images if other.StudyInstanceUID == image.StudyInstanceUID]
            inner = [other for other in series if other.SeriesInstanceUID == image.SeriesInstanceUID]
            self.assertEqual((len(series), len(inner)), (3, 2))
            above = {"0010,0020:LO": image.PatientID} if patient else {}
            kept = {f"{tag}:{vr}": "" for tag, vr in KEPT.items()}
            of_image = {**kept, **above, "0008,0018:UI": ""}
            matches = self.find(peer, *keys("IMAGE", image, **of_image), options=options)
            self.assert_found(matches, inner, "SOPInstanceUID", "Modality", "PatientName", "PatientID", "InstanceNumber", "StudyInstanceUID",
                              "SeriesInstanceUID")
            matches = self.find(peer, *keys("IMAGE", image, **{**of_image, "0008,0018:UI": inner[1].SOPInstanceUID}), options=options)
            self.assert_found(matches, inner[1:], "SOPInstanceUID", "InstanceNumber")
            matches = self.find(peer, *keys("SERIES", image, **{**above, "0020,000E:UI": "", "0008,0060:CS": "CT"}), options=options)
            self.assert_found(matches, series[1:], "SeriesInstanceUID", "Modality", "StudyInstanceUID")
            self.assertEqual(self.find(peer, *keys("SERIES", image, **{**above, "0020,000E:UI": "", "0008,0060:CS": "MR"}), options=options), [])
            matches = self.find(peer, *keys("STUDY", image, **{**above, "0020,000D:UI": "", "0008,0020:DA": image.StudyDate, "0010,0010:PN": ""}),
                                options=options)
            self.assert_found(matches, [image], "StudyInstanceUID", "StudyDate", "PatientName")
        if patient:
            matches = self.find(peer, "0008,0052:CS=PATIENT", "0010,0010:PN=", "0010,0020:LO=", options=options)
            self.assert_found(matches, [self.images[0], self.images[3]], "PatientName", "PatientID")
        else:
            for pattern, images in (("D*", self.images[3:4]), ("*^*", [self.images[0], self.images[3]]), ("?oe^John", self.images[3:4])):
                matches = self.find(peer, "0008,0052:CS=STUDY", f"0010,0010:PN={pattern}", "0010,0020:LO=", "0020,000D:UI=", options=options)
                self.assert_found(matches, images, "StudyInstanceUID", "PatientName", "PatientID")

    def test_many_matches_come_whole_and_a_cancel_ends_them(self):
        asked = keys("IMAGE", self.one_of_many, **{"0008,0018:UI": "", "0020,0013:IS": ""})
        for kind in ARCHIVES:
            with self.subTest(kind), self.archive(kind) as peer:
                send(peer, self.folder / "many")
                self.assert_found(self.find(peer, *asked), [pydicom.dcmread(path) for path in self.many], "SOPInstanceUID", "InstanceNumber")
                for number in (1, 3):
                    self.assertTrue(any(self.is_find_cancelled(peer, number, asked) for _ in range(CANCEL_TURNS)))

    def is_find_cancelled(self, peer, number, asked):
        """One of the archives tells of it."""
        before = peer.words().count(FIND_CANCELLED)
        answer = ask(peer, "find", "-", *asked, options=["--cancel", number])
        # The association goes on behind it, whatever is on its way.
        self.assertEqual((answer.code, answer.lines), (0, [["find", PENDING]] * number + [["false"], ["true"]]), answer)
        return peer.http or peer.words().count(FIND_CANCELLED) == before + 1

    def test_a_query_that_fails_has_words(self):
        with network_peers.dcmqrscp() as peer:
            send(peer, *self.sources)
            # It wants the study and the series.
            answer = ask(peer, "find", "-", "0008,0018:UI=", "0008,0052:CS=IMAGE")
            self.assertEqual((answer.code, answer.lines), (0, [["false"], ["true"]]), answer)
            self.assertIn("The peer has answered with status 0xC000", answer.words)

    def progress(self, count):
        """What is said when `count` objects move, and all goes well, without the end."""
        return [["move", PENDING, str(count - done), str(done), "0", "0"] for done in range(1, count + 1)]

    def test_what_is_moved_arrives_as_it_was(self):
        ours = self.new_folder()
        with Provider(ours) as provider, network_peers.storescp("+B") as other:
            for kind in ARCHIVES:
                with self.subTest(kind), self.archive(kind, {"OURS": provider.port, "OTHER": other.port}) as peer:
                    send(peer, *self.sources)
                    self.check_moves(peer, "OURS", lambda: list(ours.iterdir()))
                    self.check_moves(peer, "OTHER", other.files)

    def check_moves(self, peer, destination, files):
        for level, number, moved in (("STUDY", 0, (0, 1, 2)), ("SERIES", 3, (3, 4)), ("IMAGE", 4, (4,))):
            image = self.images[number]
            unique = {"0008,0018:UI": image.SOPInstanceUID} if level == "IMAGE" else {}
            for options, above in (([], {}), (["--patient", "--explicit"], {"0010,0020:LO": image.PatientID})):
                with self.subTest(level=level, destination=destination, options=options):
                    answer = ask(peer, "move", destination, *keys(level, image, **unique, **above), options=options)
                    self.assert_moved(answer, len(moved))
                    self.assert_arrived([self.sources[number] for number in moved], files())
                    for path in files():
                        path.unlink()

    def assert_moved(self, answer, count):
        self.assertEqual(answer.lines[-3:], [["move", DONE, "-", str(count), "0", "0"], ["true"], ["true"]], answer)
        # One of the archives says nothing of the last one before the end.
        self.assertIn(answer.lines[:-3], (self.progress(count), self.progress(count)[:-1]))

    def test_many_objects_move_and_a_cancel_stops_them(self):
        folder = self.new_folder()
        with Provider(folder) as provider:
            for kind in ARCHIVES:
                with self.subTest(kind), self.archive(kind, {"OURS": provider.port}) as peer:
                    send(peer, self.folder / "many")
                    asked = keys("STUDY", self.one_of_many)
                    self.assert_moved(ask(peer, "move", "OURS", *asked), MANY)
                    self.assert_arrived(self.many, folder.iterdir())
                    for path in folder.iterdir():
                        path.unlink()
                    self.assertTrue(any(self.is_move_cancelled(peer, folder, asked) for _ in range(CANCEL_TURNS)))

    def is_move_cancelled(self, peer, folder, asked):
        """One of the archives tells of it, and either sends less."""
        many = made_files.by_instance(self.many)
        before = peer.words().count(MOVE_CANCELLED)
        answer = ask(peer, "move", "OURS", *asked, options=["--cancel", 3])
        self.assertEqual((answer.code, answer.lines), (0, self.progress(MANY)[:3] + [["false"], ["true"]]), answer)
        arrived = list(folder.iterdir())
        self.assertGreaterEqual(len(arrived), 3)
        self.assert_arrived([many[path.name] for path in arrived], arrived)
        for path in arrived:
            path.unlink()
        return len(arrived) < MANY and (peer.http or peer.words().count(MOVE_CANCELLED) == before + 1)

    def test_a_destination_that_cannot_be_reached(self):
        for kind in ARCHIVES:
            with self.subTest(kind), self.archive(kind, {"GONE": network_peers.free_port()}) as peer:
                send(peer, self.sources[0])
                for title, status in (("NOBODY", "C000" if peer.http else "A801"), ("GONE", "C000" if peer.http else "A702")):
                    answer = ask(peer, "move", title, *keys("STUDY", self.images[0]))
                    self.assertEqual((answer.code, answer.lines), (0, [["false"], ["true"]]), answer)
                    self.assertIn(f"The peer has answered with status 0x{status}", answer.words)

    def test_an_application_context_that_they_do_not_know(self):
        # Result, source and reason as they come.
        rows = (("storescp", network_peers.storescp(), "permanent", "1 1 2"), ("dcmqrscp", network_peers.dcmqrscp(), "transient", "2 1 2"),
                ("Orthanc", contextlib.nullcontext(self.orthanc), "permanent", "1 1 2"))
        for name, running, lasting, numbers in rows:
            with self.subTest(name), running as peer:
                for _ in range(2):
                    answer = ask(peer, "echo", options=["--context", "1.2.840.10008.3.1.1.2"])
                    self.assertEqual((answer.code, answer.lines), (NO_ASSOCIATION, []))
                    self.assertEqual(answer.words.splitlines()[-2:],
                                     [f"Connection rejected {lasting}: service-user, application context name not supported", numbers])
                self.assertEqual(ask(peer, "echo")[:2], (0, [["true"]]))


if __name__ == "__main__":
    unittest.main()
