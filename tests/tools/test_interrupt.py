"""Interrupts: the tool ends soon, in good order, and says by its exit code which signal it was."""

import os
import random
import shutil
import signal
import subprocess
import time
import unittest

import tool
from tool import DONE, EXPLICIT, INTERRUPTED, TERMINATED, TOOL, element, meta, run

CODES = {signal.SIGINT: INTERRUPTED, signal.SIGTERM: TERMINATED, signal.SIGHUP: TERMINATED}


def wait_for(condition, seconds=60):
    """True once the condition holds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if condition():
            return True
        time.sleep(0.0005)
    return False


class Interrupts(tool.ToolTest):

    def test_random_moments_leave_only_whole_files(self):
        reference = self.path("reference")
        options = ["--size", "64", "--slices", "30" if tool.INSTRUMENTED else "60"]
        begin = time.monotonic()
        self.assert_ends(run("phantom", *options, reference), DONE)
        usual = time.monotonic() - begin
        whole = {path.name: path.read_bytes() for path in reference.iterdir()}
        moments = random.Random(1)
        codes = []
        for number in range(100 // tool.SHARE):
            place = self.path("series")
            shutil.rmtree(place, ignore_errors=True)
            chosen = moments.choice(list(CODES))
            with subprocess.Popen([TOOL, "phantom", *options, place], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as process:
                # The first file is the sign that the tool has begun; before that it is not yet its own master.
                self.assertTrue(wait_for(lambda: place.exists() and any(place.iterdir()) or process.poll() is not None))
                time.sleep(moments.random() * usual)
                process.send_signal(chosen)
                words = process.stderr.read()
                code = process.wait(30)
            codes.append(code)
            with self.subTest(number=number, signal=chosen.name):
                self.assertIn(code, (CODES[chosen], DONE))  # it may have come to its end before
                self.assertEqual(words, b"")
                left = {path.name: path.read_bytes() for path in place.iterdir()}
                self.assertEqual({name: content for name, content in left.items() if whole.get(name) != content}, {})
                if code == DONE:
                    self.assertEqual(left, whole)
            # On a machine with other work a run is soon faster or slower than the one that was timed.
            usual *= 0.9 if code == DONE else 1.05
        self.assertGreater(len([code for code in codes if code != DONE]), 30 // tool.SHARE)

    def test_an_interrupted_copy_leaves_the_old_file_or_has_the_new_one(self):
        large = self.write("large.dcm", meta(EXPLICIT) + tool.image() + element(0xFFFCFFFC, "OB", os.urandom(1 << 20) * 64))
        out = self.path("out.dcm")
        self.assert_ends(run("convert", large, out), DONE)
        new = out.read_bytes()
        moments = random.Random(2)
        for number in range(20 // tool.SHARE):
            out.write_bytes(b"old")
            with subprocess.Popen([TOOL, "convert", "--force", large, out], stderr=subprocess.PIPE) as process:
                wait_for(lambda: any(".tessaret-" in name for name in os.listdir(self.folder)) or process.poll() is not None)
                time.sleep(moments.random() * 0.1)
                process.send_signal(signal.SIGTERM)
                process.stderr.read()
                code = process.wait(30)
            with self.subTest(number=number):
                self.assertIn(code, (TERMINATED, DONE))
                self.assertIn(out.read_bytes(), (b"old", new))
                self.assertEqual(sorted(os.listdir(self.folder)), ["large.dcm", "out.dcm"])

    def test_waiting_for_input_can_be_interrupted(self):
        for verb in (["dump", "-"], ["check", "-"], ["convert", "-", self.path("out")]):
            for chosen, code in CODES.items():
                with subprocess.Popen([TOOL, *verb], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.PIPE) as process:
                    process.stdin.write(meta(EXPLICIT))
                    process.stdin.flush()
                    time.sleep(0.3)
                    begin = time.monotonic()
                    process.send_signal(chosen)
                    with self.subTest(verb=verb[0], signal=chosen.name):
                        self.assertEqual(process.wait(30), code)
                        self.assertLess(time.monotonic() - begin, 5)
                        self.assertEqual(process.stderr.read(), b"")
        self.assertFalse(self.path("out").exists())

    def test_waiting_for_a_reader_can_be_interrupted(self):
        long_one = self.write("long.dcm", meta(EXPLICIT) + b"".join(
            element(0x00091000 + index, "LO", "x" * 60) for index in range(60000)))
        for arguments in (["dump", long_one], ["dump", "--json", long_one], ["dump", "--format", "text", long_one]):
            with subprocess.Popen([TOOL, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                process.stdout.read(10)
                time.sleep(0.3)
                process.send_signal(signal.SIGINT)
                self.assertEqual(process.wait(30), INTERRUPTED)
                self.assertEqual(process.stderr.read(), b"")

    def test_going_through_folders_can_be_interrupted(self):
        for folder in range(20):
            first = self.write(f"many/{folder}/0", self.good_file().read_bytes())
            for copy in range(1, 1000):
                os.link(first, first.parent / str(copy))
        with subprocess.Popen([TOOL, "check", "--json", self.path("many")], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as process:
            process.stdout.read(1000)
            process.send_signal(signal.SIGTERM)
            begin = time.monotonic()
            process.stdout.close()
            self.assertEqual(process.wait(30), TERMINATED)
            self.assertLess(time.monotonic() - begin, 5)

    def test_a_second_interrupt_ends_it_at_once(self):
        with subprocess.Popen([TOOL, "dump", "-"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL) as process:
            time.sleep(0.3)
            process.send_signal(signal.SIGINT)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(30), INTERRUPTED)

    def test_an_interrupt_that_was_to_be_ignored_is_ignored(self):
        script = 'trap "" INT; exec "$0" "$@"'
        with subprocess.Popen(["sh", "-c", script, TOOL, "check", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
            time.sleep(0.3)
            process.send_signal(signal.SIGINT)
            time.sleep(0.2)
            process.stdin.write(self.good_file().read_bytes())
            process.stdin.close()
            self.assertIn(b"1 read", process.stdout.read())
            self.assertEqual(process.wait(30), DONE)


if __name__ == "__main__":
    unittest.main()
