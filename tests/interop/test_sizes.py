"""Objects as long as a fragment, a little longer, of a gigabyte, and a thousand of them, from and to programs of others."""

import os
import signal
import subprocess
import sys
import threading
import unittest

import made_files
import network_peers
import pydicom
import sizes
import tool_runs
from our_provider import Provider
from peers import EXPLICIT_LITTLE, IMPLICIT_LITTLE

# Data sets have an even length, so the next beyond one PDV of 4096 bytes has 4098.
LENGTHS = (4094, 4096, 4098, 8190, 8192, 8194)
SECONDS = 120  # for one run of the tool; a gigabyte takes some


def send(peer, *paths):
    """Exit code, output, and the most memory that it took, in bytes. One that hangs is ended, and tells by its exit code: who waits for
    it would be ended otherwise, with gigabytes left in memory."""
    process = subprocess.Popen([tool_runs.TOOL, "send", f"ARCHIVE@127.0.0.1:{peer.port}", *paths], stdout=subprocess.PIPE)
    end = threading.Timer(SECONDS, os.kill, (process.pid, signal.SIGKILL))
    end.start()
    try:
        with process.stdout as output:
            words = output.read().decode()
        # Its number stays its own until nobody ends it any more.
        os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
    finally:
        end.cancel()
        end.join()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, words, usage.ru_maxrss * 1024


def sent(count):
    return 0, f"{count} files sent, 0 with warnings, 0 refused, 0 failed\n"


class Fragments(unittest.TestCase, made_files.ArrivedFiles):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(network_peers.a_folder())
        original = pydicom.dcmread(made_files.phantoms(cls.folder / "ct", slices=1, size=16)[0])
        cls.files = {syntax: sizes.files_of_lengths(cls.folder / syntax, original, LENGTHS, syntax == IMPLICIT_LITTLE)
                     for syntax in (EXPLICIT_LITTLE, IMPLICIT_LITTLE)}

    def assert_lengths(self, syntax, received):
        """What arrived is what was sent in this syntax, and so long."""
        received = made_files.by_instance(received)
        self.assert_arrived(self.files[syntax].values(), received.values())
        for number, length in enumerate(LENGTHS):
            path = received[f"1.2.3.{1000 + number}"]
            self.assertEqual(pydicom.dcmread(path).file_meta.TransferSyntaxUID, syntax)
            # The bytes behind a meta header are those that came.
            self.assertEqual(len(sizes.data_set(path)), length)

    def test_from_ours(self):
        for start in (network_peers.storescp, network_peers.dcmqrscp):
            for option, syntax in (("+xe", EXPLICIT_LITTLE), ("+xi", IMPLICIT_LITTLE)):
                options = [option, "+B"] if start is network_peers.storescp else [option]
                with self.subTest(start.__name__, syntax=syntax), start(*options) as peer:
                    self.assertEqual(send(peer, *self.files[syntax].values())[:2], sent(len(LENGTHS)))
                    self.assert_lengths(syntax, peer.files())

    def test_from_ours_to_orthanc(self):
        with network_peers.orthanc() as peer:
            self.assertEqual(send(peer, *self.files[EXPLICIT_LITTLE].values())[:2], sent(len(LENGTHS)))
            folder = self.enterContext(network_peers.a_folder())
            for identifier in peer.ask("instances"):
                (folder / identifier).write_bytes(peer.fetch(f"instances/{identifier}/file"))
            self.assert_lengths(EXPLICIT_LITTLE, list(folder.iterdir()))

    def test_from_storescu(self):
        for option, syntax in (("-xe", EXPLICIT_LITTLE), ("-xi", IMPLICIT_LITTLE)):
            # Its fragments are twelve bytes shorter than that: one, or of as many bytes as ours.
            for length, fragments in (([], [1, 1, 1, 1, 1, 1]), (["--max-send-pdu", "4108"], [1, 1, 2, 2, 2, 3])):
                folder = self.enterContext(network_peers.a_folder())
                with self.subTest(syntax=syntax, length=length), Provider(folder) as provider:
                    code, words = provider.ask("storescu", *self.files[syntax].values(), options=["-R", option, *length])
                    self.assertEqual(code, 0, words)
                    # It says a dot for each.
                    self.assertEqual([line.count(".") for line in words.splitlines() if line.startswith("XMIT: ")], fragments)
                    self.assert_lengths(syntax, list(folder.iterdir()))


class AThousand(unittest.TestCase):
    def test_different_files_over_one_association_to_ours(self):
        folder = self.enterContext(network_peers.a_folder())
        stored = self.enterContext(network_peers.a_folder())
        sources = made_files.phantoms(folder / "many", slices=1000, size=16)
        with Provider(stored) as provider:
            # On a disk each of them is waited for.
            code, words = provider.ask("storescu", folder / "many", options=["-R", "+sd"], seconds=240)
        self.assertEqual((code, words.count("Requesting Association"), words.count("Received Store Response (Success)")), (0, 1, 1000), words[-2000:])
        expected = {instance: sizes.data_set(source) for instance, source in made_files.by_instance(sources).items()}
        self.assertEqual(len(set(expected.values())), 1000)
        self.assertTrue({path.name: sizes.data_set(path) for path in stored.iterdir()} == expected)


class AGigabyte(unittest.TestCase):
    """Or a sixteenth of it, on a machine without room for several."""

    @classmethod
    def setUpClass(cls):
        cls.frames, cls.room = sizes.frames_and_room()
        print(f"{cls.frames} frames of 1 MiB, in {cls.room}", file=sys.stderr)
        folder = cls.enterClassContext(network_peers.a_folder(cls.room))
        cls.source = folder / "multiframe.dcm"
        cls.pixels = sizes.write_frames(cls.source, cls.frames)

    def assert_whole(self, path):
        self.assertEqual(sizes.digest_of_pixels(path, self.frames), self.pixels)
        here, there = (pydicom.dcmread(one, stop_before_pixels=True) for one in (self.source, path))
        self.assertEqual(there.to_json_dict(), here.to_json_dict())

    def check_sent(self, peer):
        code, words, memory = send(peer, self.source)
        self.assertEqual((code, words), sent(1))
        # The object, and not another of its size beside it.
        if not tool_runs.INSTRUMENTED:
            self.assertLess(memory, self.frames * sizes.FRAME * 5 // 4)

    def test_from_ours_to_storescp(self):
        with network_peers.storescp("+B", within=self.room) as peer:
            self.check_sent(peer)
            self.assert_whole(peer.files()[0])

    def test_from_ours_to_dcmqrscp(self):
        with network_peers.dcmqrscp(within=self.room) as peer:
            self.check_sent(peer)
            self.assert_whole(peer.files()[0])

    def test_from_ours_to_orthanc(self):
        with network_peers.orthanc(within=self.room) as peer:
            self.check_sent(peer)
            self.assertEqual(peer.ask("statistics")["CountInstances"], 1)
            # Its own interface would hand it out through memory.
            self.assert_whole(max((peer.folder / "storage").rglob("*"), key=lambda path: path.stat().st_size))

    def test_from_storescu_to_ours(self):
        stored = self.enterContext(network_peers.a_folder(self.room))
        with Provider(stored) as provider:
            code, words = provider.ask("storescu", self.source, options=["-R"])
        self.assertEqual(code, 0, words)
        self.assertIn("Received Store Response (Success)", words)
        self.assert_whole(stored / "1.2.3.4")


if __name__ == "__main__":
    unittest.main()
