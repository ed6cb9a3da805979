"""Files on their way over a line that is slow, loses packets, and is cut: all of a file arrives, or its failure is told in time."""

import contextlib
import json
import os
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import bad_network
import pydicom
import tool_runs
from peers import EXPLICIT_LITTLE, IMPLICIT_LITTLE

PROVIDER = Path(os.environ["TESSARET_BINARY_DIR"]) / "tests" / "net" / "net_provider"
PORT = 11112  # in a namespace of its own nobody else has it
SECONDS = 60  # for what takes a few
DONE, NO_ASSOCIATION, PEER_FAILED = 0, 3, 4
FILES = 10
TIMEOUT = 2

bad_network.gain_rights()


def data_set(path):
    """The bytes behind the meta header."""
    content = path.read_bytes()
    return content[144 + int.from_bytes(content[140:144], "little") :]


class BadNetwork(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.sources = Path(folder.name) / "sources"
        subprocess.run([tool_runs.TOOL, "-q", "phantom", "--kind", "ct", "--size", "128", "--slices", str(FILES), cls.sources], check=True)
        cls.expected = {syntax: {} for syntax in (EXPLICIT_LITTLE, IMPLICIT_LITTLE)}
        for syntax, contents in cls.expected.items():
            for path in sorted(cls.sources.iterdir()):
                copy = Path(folder.name) / "copy"
                tool_runs.transcode(path, syntax, copy)
                contents[str(pydicom.dcmread(path).SOPInstanceUID)] = data_set(copy)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    @contextlib.contextmanager
    def link(self):
        link = bad_network.BadLink()
        try:
            link.__enter__()
        except bad_network.NotAllowed as reason:
            self.skipTest(str(reason))
        try:
            yield link
        finally:
            link.__exit__()

    @contextlib.contextmanager
    def running(self, node, command):
        process = node.start(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            end = time.monotonic() + SECONDS
            while not bad_network.listens(process, PORT):
                self.assertIsNone(process.poll(), command)
                self.assertLess(time.monotonic(), end, command)
                time.sleep(0.01)
            yield process
        finally:
            process.terminate()
            try:
                process.wait(SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
                raise

    def provider(self, node):
        return self.running(node, [PROVIDER, PORT, self.folder, "--everywhere", "--timeout", TIMEOUT])

    def storescp(self, node):
        return self.running(node, ["storescp", "-q", "+xe", "+B", "-od", self.folder, PORT])

    def start_sending(self, link, timeout=SECONDS):
        return link.near.start([tool_runs.TOOL, "send", "--json", "--timeout", timeout, f"ANY-SCP@{link.far.address}:{PORT}", self.sources],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL)

    def result_of(self, sending):
        """(exit code, lines of the files, summary)"""
        try:
            output, words = sending.communicate(timeout=SECONDS)
        except subprocess.TimeoutExpired:
            sending.kill()
            sending.communicate()
            raise
        lines = [json.loads(line) for line in output.decode().splitlines()]
        self.assertTrue(lines, words)
        return sending.returncode, lines[:-1], lines[-1]

    def received(self):
        return {str(pydicom.dcmread(path, stop_before_pixels=True).SOPInstanceUID): data_set(path) for path in self.folder.iterdir()}

    def assert_all_arrive(self, link, start, syntax):
        code, files, summary = self.result_of(start(link))
        self.assertEqual((code, summary), (DONE, {"sent": FILES, "warnings": 0, "refused": 0, "failed": 0}), files)
        self.assertEqual(self.received(), self.expected[syntax])

    def test_files_arrive_as_they_are_at_a_node_of_others(self):
        with self.link() as link, self.storescp(link.far):
            begin = time.monotonic()
            self.assert_all_arrive(link, self.start_sending, EXPLICIT_LITTLE)
            # There and back for the connection, the association and each file.
            self.assertGreater(time.monotonic() - begin, (FILES + 2) * 2 * link.delay)
            self.assertGreater(link.lost, 0)

    def test_files_arrive_as_they_are_at_our_provider(self):
        with self.link() as link, self.provider(link.far):
            self.assert_all_arrive(link, self.start_sending, IMPLICIT_LITTLE)
            self.assertGreater(link.lost, 0)

    def test_a_cut_that_is_mended_within_the_timeout_is_made_up_for(self):
        def send_with_a_cut(link):
            link.cut(after=100 << 10)
            sending = self.start_sending(link)
            self.assertTrue(link.await_cut(SECONDS))
            time.sleep(0.5)
            link.mend()
            return sending

        # Longer than our provider would wait.
        with self.link() as link, self.storescp(link.far):
            self.assert_all_arrive(link, send_with_a_cut, EXPLICIT_LITTLE)

    def test_a_cut_is_told_of_every_file_within_the_timeout(self):
        with self.link() as link, self.provider(link.far) as provider:
            descriptors = len(os.listdir(f"/proc/{provider.pid}/fd"))
            link.cut(after=150 << 10)
            sending = self.start_sending(link, TIMEOUT)
            self.assertTrue(link.await_cut(SECONDS))
            code, files, summary = self.result_of(sending)
            # What was on its way when the line was cut, the timeout, and a machine that has other work.
            self.assertLess(time.monotonic() - link.cut_at, TIMEOUT + 4)
            self.assertEqual(code, PEER_FAILED)
            self.assertEqual([line["file"] for line in files], [str(path) for path in sorted(self.sources.iterdir())])
            sent = [line for line in files if line["ok"]]
            self.assertEqual(files[: len(sent)], sent)
            self.assertTrue(0 < len(sent) < FILES, files)
            self.assertEqual((summary["sent"], summary["failed"]), (len(sent), FILES - len(sent)))
            self.assertTrue(all(line["error"] for line in files[len(sent) :]), files)
            # The other side gives up as well. It may have kept one file more, of which the answer was lost.
            end = time.monotonic() + SECONDS
            while len(os.listdir(f"/proc/{provider.pid}/fd")) != descriptors:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.05)
            received = self.received()
            self.assertIn(len(received) - len(sent), (0, 1))
            for instance, content in received.items():
                self.assertEqual(content, self.expected[IMPLICIT_LITTLE][instance])
            # Nor does anybody come through now.
            code, files, summary = self.result_of(self.start_sending(link, TIMEOUT))
            self.assertEqual((code, files), (NO_ASSOCIATION, []))
            self.assertIn("Operation timed out", summary["error"])
            # The line is mended, and all is well.
            link.mend()
            self.assert_all_arrive(link, self.start_sending, IMPLICIT_LITTLE)


if __name__ == "__main__":
    unittest.main()
