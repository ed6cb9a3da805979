"""echo and send to nodes that are programs of others: what they take arrives as it was, and what they refuse is told."""

import collections
import functools
import io
import json
import subprocess
import tempfile
import unittest
import warnings
from pathlib import Path

import comparison
import corpus
import known_differences
import network_peers
import peers
import pydicom
import tool_runs
from peers import EXPLICIT_LITTLE, IMPLICIT_LITTLE

DONE, INPUT_FAILED, NO_ASSOCIATION, PEER_FAILED = 0, 1, 3, 4
Sent = collections.namedtuple("Sent", "code files summary words")

# The tool does not write the last one anew, for its number of frames is none.
OTHERWISE = {path for path, _, _ in known_differences.ROWS} | {"dicom/broken/badVR.dcm"}


def run(*arguments):
    done = subprocess.run([tool_runs.TOOL, *map(str, arguments)], capture_output=True, check=False, timeout=200, stdin=subprocess.DEVNULL)
    return done.returncode, done.stdout.decode(), done.stderr.decode(errors="replace")


def send(peer, *files, title="ARCHIVE"):
    code, output, words = run("send", "--json", f"{title}@127.0.0.1:{peer.port}", *files)
    lines = [json.loads(line) for line in output.splitlines()]
    return Sent(code, lines[:-1], lines[-1], words)


def echo(peer, title="ARCHIVE"):
    return run("echo", f"{title}@127.0.0.1:{peer.port}")


def instance_of(path):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            return str(pydicom.dcmread(path, force=True, stop_before_pixels=True).get("SOPInstanceUID", ""))
        except Exception:  # there is no common class for what pydicom does not like
            return ""


def without_padding(view):
    """Behind the meta header, without group lengths, what fills UIDs up, and the types of private elements: the tool guesses these, the
    library does not."""
    form = []
    for element in comparison.without_group_lengths(comparison.data_set(view)):
        if comparison.standard_vrs(element) == ["UI"]:
            element = element._replace(value=element.value.rstrip(b"\0 "))
        elif int(comparison.last_tag(element)[0], 16) % 2 and element.value is not None:
            element = element._replace(vr=None)
        form.append(element)
    return form


class NetworkPeers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def phantoms(self, kind="ct", slices=3, size=32, name=None):
        folder = self.folder / (name or kind)
        done, _, words = run("-q", "phantom", "--kind", kind, "--size", size, "--slices", slices, folder)
        self.assertEqual(done, DONE, words)
        return sorted(folder.iterdir())

    def assert_sent(self, sent, count):
        self.assertEqual((sent.code, sent.summary), (DONE, {"sent": count, "warnings": 0, "refused": 0, "failed": 0}), sent)

    def assert_same(self, source, received):
        """Elements, types and values, and the pixels, by another reader."""
        before, after = (comparison.without_group_lengths(comparison.data_set(peers.pydicom_view(path))) for path in (source, received))
        implicit = pydicom.dcmread(received, stop_before_pixels=True).is_implicit_VR
        form = comparison.without_group_lengths(comparison.saved_form(before, implicit))
        private = comparison.private_sequences(form)
        self.assertEqual(comparison.first_difference(comparison.without(form, private), comparison.without(after, private)), "", source)

    def test_every_peer_is_there(self):
        for start in (network_peers.storescp, network_peers.dcmqrscp, network_peers.orthanc):
            with self.subTest(start.__name__), start() as peer:
                code, output, _ = echo(peer)
                self.assertEqual((code, output), (DONE, f"ARCHIVE@127.0.0.1:{peer.port} is there\n"))

    def test_files_arrive_as_they_were_in_either_native_form(self):
        files = [file for kind in ("ct", "rgb", "palette", "mono1", "multiframe") for file in self.phantoms(kind)]
        for options, syntax in ((["+xe"], EXPLICIT_LITTLE), (["+xi"], IMPLICIT_LITTLE)):
            with network_peers.storescp(*options, "+B") as peer:
                self.assert_sent(send(peer, *files), len(files))
                received = {instance_of(path): path for path in peer.files()}
                self.assertEqual(set(received), {instance_of(file) for file in files})
                for file in files:
                    path = received[instance_of(file)]
                    self.assertEqual(pydicom.dcmread(path).file_meta.TransferSyntaxUID, syntax)
                    self.assert_same(file, path)

    def test_compressed_files_arrive_with_the_pixels_that_they_show(self):
        native = self.phantoms("rgb")[0], self.phantoms("ct")[0]
        for name, syntax in (("rle", "1.2.840.10008.1.2.5"), ("lossless", "1.2.840.10008.1.2.4.70"), ("jpeg-ls", "1.2.840.10008.1.2.4.80"),
                             ("jpeg2000", "1.2.840.10008.1.2.4.90")):
            for file in native:
                with self.subTest(name, file=file.parent.name), network_peers.storescp("+B") as peer:
                    tool_runs.transcode(file, syntax, self.folder / "in.dcm")
                    self.assert_sent(send(peer, self.folder / "in.dcm"), 1)
                    received = pydicom.dcmread(peer.files()[0])
                    self.assertIn(received.file_meta.TransferSyntaxUID, (EXPLICIT_LITTLE, IMPLICIT_LITTLE))
                    original = pydicom.dcmread(file)
                    self.assertEqual(received.PixelData, original.PixelData)
                    self.assertEqual(received.PhotometricInterpretation, original.PhotometricInterpretation)

    def test_an_object_goes_in_its_own_syntax_where_the_peer_takes_that(self):
        native = self.phantoms("rgb")[0]
        original = pydicom.dcmread(native)
        for name, syntax, takes in (("rle", "1.2.840.10008.1.2.5", "+xr"), ("jpeg lossless", "1.2.840.10008.1.2.4.70", "+xs"),
                                    ("jpeg-ls", "1.2.840.10008.1.2.4.80", "+xt"), ("jpeg2000", "1.2.840.10008.1.2.4.90", "+xv")):
            file = self.folder / "in.dcm"
            tool_runs.transcode(native, syntax, file)
            with self.subTest(name, taken=True), network_peers.storescp(takes, "+B") as peer:
                self.send_object(peer, file)
                received = pydicom.dcmread(peer.files()[0])
                self.assertEqual(received.file_meta.TransferSyntaxUID, syntax)
                # Fragments arrive as they were, byte by byte.
                self.assertEqual(received.PixelData, pydicom.dcmread(file).PixelData)
            with self.subTest(name, taken=False), network_peers.storescp("+xi", "+B") as peer:
                self.send_object(peer, file)
                received = pydicom.dcmread(peer.files()[0])
                self.assertEqual(received.file_meta.TransferSyntaxUID, IMPLICIT_LITTLE)
                self.assertEqual(received.PixelData, original.PixelData)

    def send_object(self, peer, file):
        done = subprocess.run([peers.PEER, "send", str(peer.port), file], capture_output=True, check=False, timeout=100)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_real_files_arrive_as_they_were(self):
        rows, seen = [], set()
        for row in corpus.manifest():
            instance = instance_of(row["file"])
            # What the library is known to read or write otherwise has its tests elsewhere.
            if instance and instance not in seen and row["path"] not in OTHERWISE:
                seen.add(instance)
                rows.append(row["file"])
        # Native, as they mostly arrive, they are larger than they were.
        with network_peers.storescp("+B", "-pm", within=network_peers.place_with(1 << 30)) as peer:
            sent = send(peer, *rows)
            received = {instance_of(path): path for path in peer.files()}
            # Some classes are newer than the peer.
            self.assertIn(sent.code, (DONE, INPUT_FAILED, PEER_FAILED), sent.words[-2000:])
            taken = [Path(line["file"]) for line in sent.files if line["ok"]]
            self.assertEqual(sent.summary["refused"], 0)
            self.assertGreater(len(taken), len(rows) * 3 // 4, [line for line in sent.files if not line["ok"]])
            self.assertEqual({instance_of(path) for path in taken}, set(received))
            for file in taken:
                with self.subTest(file=file):
                    self.check_real_file(file, received[instance_of(file)])

    def check_real_file(self, file, received):
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            implicit = pydicom.dcmread(received, stop_before_pixels=True).is_implicit_VR
        # By this library's own reading of it, which other tests hold to that of others.
        own = self.folder / "own.dcm"
        tool_runs.transcode(file, IMPLICIT_LITTLE if implicit else EXPLICIT_LITTLE, own)
        before, after = (without_padding(peers.pydicom_view(path)) for path in (own, received))
        self.assertEqual(comparison.first_difference(before, after), "")

    def test_an_archive_lists_what_was_sent(self):
        files = self.phantoms("ct", slices=5) + self.phantoms("rgb")
        tool_runs.transcode(files[0], "1.2.840.10008.1.2.4.70", self.folder / "lossless.dcm")
        with network_peers.orthanc() as peer:
            self.assert_sent(send(peer, self.folder / "lossless.dcm", *files[1:]), len(files))
            self.assertEqual(peer.ask("statistics")["CountInstances"], len(files))
            received = {}
            for identifier in peer.ask("instances"):
                data = pydicom.dcmread(io.BytesIO(peer.fetch(f"instances/{identifier}/file")))
                received[data.SOPInstanceUID] = data
                self.assertEqual(peer.ask(f"instances/{identifier}/simplified-tags")["PatientName"], str(data.PatientName))
                self.assertIn("TESSARET", peer.fetch(f"instances/{identifier}/metadata/RemoteAET").decode())
            for file in files:
                data = pydicom.dcmread(file)
                self.assertEqual(received[data.SOPInstanceUID].PixelData, data.PixelData)
            # The same again changes nothing, and is no failure.
            self.assert_sent(send(peer, *files[1:]), len(files) - 1)
            self.assertEqual(peer.ask("statistics")["CountInstances"], len(files))

    def test_a_database_keeps_what_was_sent(self):
        files = self.phantoms("ct", slices=5)
        with network_peers.dcmqrscp() as peer:
            self.assert_sent(send(peer, *files), 5)
            self.assertEqual({instance_of(path) for path in peer.files()}, {instance_of(path) for path in files})

    def test_refused_associations_say_why(self):
        file = self.phantoms()[0]
        not_known = "Unknown remote AETitle (Connection rejected permanent: service-user, called AE title not recognized)"
        rows = [(network_peers.dcmqrscp, (), "OTHER", not_known),
                # Its numbers are 2, 3 and 2, "local limit exceeded"; the reason is told by its number alone.
                (functools.partial(network_peers.dcmqrscp, associations=0), (), "ARCHIVE",
                 "Connection rejected transient: service-provider (Presentation related function), application context name not supported"),
                (network_peers.dcmqrscp, ("--refuse",), "ARCHIVE", "Connection rejected permanent: service-user, no reason given"),
                (network_peers.storescp, ("--refuse",), "ARCHIVE", "Connection rejected permanent: service-user, no reason given"),
                (network_peers.storescp_of_jpeg, (), "ARCHIVE", "No Accepted presentation Context found"),
                (network_peers.orthanc, (), "OTHER", not_known),
                (functools.partial(network_peers.orthanc, strangers=False), (), "ARCHIVE",
                 "Unknown local AETitle (Connection rejected permanent: service-user, calling AE title not recognized)")]
        for start, options, title, words in rows:
            with self.subTest(words, options=options), start(*options) as peer:
                for _ in range(2):  # a refusal leaves nothing behind
                    sent = send(peer, file, title=title)
                    self.assertEqual((sent.code, sent.files), (NO_ASSOCIATION, []), sent)
                    self.assertIn(words, sent.summary["error"])
                    self.assertIn(words, sent.words)

    def test_an_association_that_is_aborted_fails_its_files(self):
        files = self.phantoms()
        for option in ("--abort-after", "--abort-during"):
            with self.subTest(option), network_peers.storescp(option) as peer:
                sent = send(peer, *files)
                self.assertEqual((sent.code, sent.summary), (PEER_FAILED, {"sent": 0, "warnings": 0, "refused": 0, "failed": 3}), sent)
                self.assertEqual([line["file"] for line in sent.files], [str(file) for file in files])

    def test_many_small_files_go_over_one_association(self):
        count = 1000 // (4 if tool_runs.INSTRUMENTED else 1)
        self.phantoms(slices=count, size=16, name="many")
        for start, options in ((network_peers.storescp, ["--ignore"]), (network_peers.dcmqrscp, []),
                               (network_peers.orthanc, [])):
            with self.subTest(start.__name__), start(*options) as peer:
                self.assert_sent(send(peer, self.folder / "many"), count)
                if peer.http:
                    self.assertEqual(peer.ask("statistics")["CountInstances"], count)

    def test_objects_around_the_length_of_a_fragment_arrive_whole(self):
        source = pydicom.dcmread(self.phantoms(size=16)[0])
        files = []
        for more in range(0, 4200, 2):
            if more > 64 and more < 4000 and more % 500:
                continue
            source.SOPInstanceUID = f"1.2.3.{len(files) + 1}"
            source.file_meta.MediaStorageSOPInstanceUID = source.SOPInstanceUID
            source.ImageComments = "x" * more
            files.append(self.folder / f"{more}.dcm")
            source.save_as(files[-1])
        with network_peers.storescp("+B") as peer:
            self.assert_sent(send(peer, *files), len(files))
            received = {instance_of(path): path for path in peer.files()}
            for file in files:
                self.assert_same(file, received[instance_of(file)])


if __name__ == "__main__":
    unittest.main()
