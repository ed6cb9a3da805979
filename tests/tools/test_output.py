"""Where results and words go, and what happens when they cannot: full, closed and broken outputs, terminals, escapes."""

import json
import os
import re
import socket
import struct
import subprocess
import time
import unittest

import tool
from tool import DONE, INPUT_FAILED, OUTPUT_FAILED, TOOL, element, meta, on_terminal, run

# The last line of tool.image().
PIXELS = "\\".join("01 00 02 00 03 00 04 00 05 00 06 00".split())
PIXELS_LINE = f"(7fe0,0010) OW {PIXELS:<40} # 12, 1 Pixel Data"


def with_closed(descriptors, *arguments):
    """Runs the tool with some of the standard descriptors closed."""
    script = 'exec "$0" "$@" ' + " ".join(f"{number}>&-" for number in descriptors)
    return subprocess.run(["sh", "-c", script, TOOL, *map(str, arguments)], check=False, capture_output=True, timeout=120)


class FullOutput(tool.ToolTest):
    """Every way of producing a result, on an output that takes nothing."""

    def setUp(self):
        super().setUp()
        good = self.good_file()
        self.ways = [["--help"], ["--version"], ["dump", "--help"], ["dump", good], ["dump", "--json", good],
                     ["dump", "--format", "text", good], ["check", good], ["check", "--json", good],
                     ["dictionary", "0010,0010"], ["dictionary", "--json", "patient"],
                     ["phantom", "--json", "--size", "8", "--slices", "1", "--force", self.path("series")],
                     ["convert", "--json", "--force", good, self.path("out.dcm")]]

    def test_a_full_device_is_told_and_has_its_code(self):
        for way in self.ways:
            with self.subTest(way=way), open("/dev/full", "wb") as full:
                self.assert_ends(run(*way, stdout=full), OUTPUT_FAILED,
                                 "tessaret: standard output: No space left on device\n")

    def test_a_closed_output_is_told_and_has_its_code(self):
        for way in self.ways:
            with self.subTest(way=way):
                result = with_closed([1], *way)
                self.assertEqual((result.returncode, result.stderr.decode()),
                                 (OUTPUT_FAILED, "tessaret: standard output: Bad file descriptor\n"))

    def test_a_broken_pipe_has_its_code_and_needs_no_words(self):
        for way in self.ways:
            with self.subTest(way=way):
                reader, writer = os.pipe()
                os.close(reader)
                try:
                    self.assert_ends(run(*way, stdout=writer), OUTPUT_FAILED, "")
                finally:
                    os.close(writer)

    def test_an_output_that_does_not_wait_is_waited_for(self):
        long_one = self.write("long.dcm", meta(tool.EXPLICIT) + b"".join(
            element(0x00091000 + index, "LO", "x" * 60) for index in range(6000)))
        expected = run("dump", long_one).stdout
        reader, writer = os.pipe()
        os.set_blocking(writer, False)
        with subprocess.Popen([TOOL, "dump", long_one], stdout=writer, stderr=subprocess.PIPE) as process:
            os.close(writer)
            time.sleep(0.3)  # the pipe is full long since
            with open(reader, "rb") as listing:
                self.assertEqual(listing.read(), expected)
            self.assertEqual((process.wait(60), process.stderr.read()), (DONE, b""))

    def test_results_and_words_come_in_the_order_in_which_they_happened(self):
        good, other = self.good_file("a.dcm"), self.good_file("c.dcm")
        bad = self.write("b.dcm", b"bad")
        cut = self.write("d.dcm", good.read_bytes()[:-1])
        result = run("dump", good, bad, other, cut, stderr=subprocess.STDOUT)
        self.assertEqual([line for line in result.stdout.decode().splitlines() if re.match("#|tessaret|.*7fe0", line)], [
            f"# {good}", PIXELS_LINE, f"tessaret: {bad}: not DICOM", f"# {other}", PIXELS_LINE, f"# {cut}",
            f"tessaret: {cut}: truncated at offset {good.stat().st_size - 24}, in (7fe0,0010)"])

    def test_warnings_and_notes_come_in_that_order_too(self):
        good, bare = self.good_file("a.dcm"), self.write("bare.dcm", tool.image())
        order = lambda *options: [line.split(": ")[0] for line in
                                  run("dump", *options, good, bare, stderr=subprocess.STDOUT).stdout.decode().splitlines()
                                  if re.match("#|tessaret|.*7fe0", line)]
        warned = [f"# {good}", PIXELS_LINE, "tessaret", f"# {bare}", PIXELS_LINE]
        self.assertEqual(order(), warned)
        self.assertEqual(order("-v"), ["tessaret", *warned[:2], "tessaret", *warned[2:]])
        noted = run("dump", "-v", good, good, stderr=subprocess.STDOUT).stdout.decode().splitlines()
        self.assertEqual([line[:2] for line in noted if line[:2] in ("# ", "te", "(7")], ["te", "# ", "(7", "te", "# ", "(7"])

    def test_a_reader_that_leaves_early_ends_the_work(self):
        listing = self.write("long.dcm", meta(tool.EXPLICIT) + b"".join(
            element(0x00091000 + index, "LO", "x" * 60) for index in range(60000)))
        with subprocess.Popen([TOOL, "dump", listing], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.readline()
            process.stdout.close()
            self.assertEqual(process.stderr.read(), b"")
            self.assertEqual(process.wait(60), OUTPUT_FAILED)

    def test_verbs_without_results_do_not_mind(self):
        self.assertEqual(with_closed([1], "convert", self.good_file(), self.path("copy.dcm")).returncode, DONE)
        self.assertEqual(with_closed([1], "phantom", "--size", 8, "--slices", 1, self.path("s")).returncode, DONE)


class ClosedStreams(tool.ToolTest):

    def test_a_file_is_never_written_to_in_place_of_a_closed_stream(self):
        good = self.good_file()
        reference = self.path("reference.dcm")
        self.assert_ends(run("convert", good, reference), DONE)
        for descriptors in ([0], [1], [2], [0, 1], [1, 2], [0, 1, 2]):
            with self.subTest(descriptors=descriptors):
                copy = self.path("copy.dcm")
                with_closed(descriptors, "convert", "-v", "--json", "--force", good, copy)
                self.assertEqual(copy.read_bytes(), reference.read_bytes())

    def test_a_closed_standard_input_is_no_file(self):
        result = with_closed([0], "dump", "-")
        self.assertEqual(result.returncode, INPUT_FAILED)
        self.assertRegex(result.stderr, rb"^tessaret: standard input: [a-zA-Z ]+\n$")

    def test_closed_error_output_changes_no_code(self):
        self.assertEqual(with_closed([2], "dump", self.path("missing")).returncode, INPUT_FAILED)
        self.assertEqual(with_closed([2], "check", self.good_file()).returncode, DONE)


class StandardInput(tool.ToolTest):

    def test_a_dash_is_standard_input_from_a_pipe(self):
        content = self.good_file().read_bytes()
        from_file = run("dump", self.path("good.dcm"))
        from_pipe = run("dump", "-", input=content)
        self.assert_ends(from_pipe, DONE, "")
        self.assertEqual(from_pipe.stdout, from_file.stdout)

    def test_a_dash_is_standard_input_from_a_file(self):
        with open(self.good_file(), "rb") as file:
            result = run("dump", "-", stdin=file)
        self.assert_ends(result, DONE, "")
        self.assertIn(b"[Doe^John]", result.stdout)

    def test_a_dash_reads_on_from_where_a_file_stands(self):
        for name, content, line in (("good.dcm", self.good_file().read_bytes(), b"[Doe^John]"),
                                    ("bare", tool.image(order=">"), b"(0028,0010) US 2 ")):
            with self.subTest(name), open(self.write("behind", bytes(5000) + content), "rb", buffering=0) as file:
                os.lseek(file.fileno(), 5000, os.SEEK_SET)
                result = run("dump", "-v", "-", stdin=file)
                self.assert_ends(result, DONE)
                self.assertIn(line, result.stdout)
                self.assertIn(f"standard input: {len(content)} bytes, ".encode(), result.stderr)

    def test_a_dash_is_standard_input_from_a_socket(self):
        for blocking in (True, False):
            with self.subTest(blocking=blocking):
                here, there = socket.socketpair()
                there.setblocking(blocking)
                with here, subprocess.Popen([TOOL, "dump", "-"], stdin=there, stdout=subprocess.PIPE,
                                            stderr=subprocess.PIPE) as process:
                    there.close()
                    time.sleep(0.1)
                    here.sendall(self.good_file().read_bytes())
                    here.close()
                    listing, words = process.communicate(timeout=60)
                self.assertEqual((process.returncode, words), (DONE, b""))
                self.assertIn(b"[Doe^John]", listing)

    @unittest.skipUnless(os.geteuid() == 0, "only root can become somebody else")
    def test_a_dash_is_standard_input_from_a_file_that_only_the_parent_may_open(self):
        secret = self.good_file()
        secret.chmod(0o600)
        # For whoever that is, the tool's own folder may be closed too.
        if run("--version", user=65534, stderr=subprocess.DEVNULL).returncode != DONE:
            self.skipTest("the tool is not for everybody")
        with open(secret, "rb") as file:
            result = run("dump", "-", stdin=file, user=65534)
        self.assert_ends(result, DONE, "")
        self.assertIn(b"[Doe^John]", result.stdout)

    def test_every_reading_verb_takes_it(self):
        content = self.good_file().read_bytes()
        self.assert_ends(run("check", "-", input=content), DONE, "")
        self.assert_ends(run("convert", "-", self.path("out.dcm"), input=content), DONE, "")
        self.assertIn(b"Doe^John", self.path("out.dcm").read_bytes())

    def test_a_data_set_without_preamble_comes_through_a_pipe(self):
        result = run("dump", "-", input=tool.image(implicit=True))
        self.assert_ends(result, DONE, "tessaret: standard input: warning: no \"DICM\" mark, so the encoding is a guess\n")
        self.assertIn(b"[Doe^John]", result.stdout)

    def test_big_endian_without_preamble_is_tried_where_the_input_can_be_read_again(self):
        bare = self.write("bare", tool.image(order=">"))
        with open(bare, "rb") as file:
            result = run("dump", "-", stdin=file)
        self.assert_ends(result, DONE, "tessaret: standard input: warning: no \"DICM\" mark, so the encoding is a guess\n")
        self.assertIn(b"(0028,0010) US 2 ", result.stdout)
        self.assert_ends(run("dump", "-", input=bare.read_bytes()), INPUT_FAILED, "tessaret: standard input: not DICOM\n")

    def test_it_can_be_read_once(self):
        content = meta(tool.EXPLICIT) + tool.image()
        once = run("dump", "--no-pixels", "-", input=content)
        twice = run("dump", "--no-pixels", "-", "-", input=content)
        self.assert_ends(twice, INPUT_FAILED, "tessaret: standard input: was read already\n")
        self.assertEqual(twice.stdout, b"# standard input\n" + once.stdout)
        bare = self.write("bare", tool.image(order=">"))
        with open(bare, "rb") as file:
            self.assertEqual(run("check", "-", "-", stdin=file).returncode, INPUT_FAILED)

    def test_a_large_value_comes_through_a_pipe_that_drips(self):
        content = meta(tool.EXPLICIT) + tool.image(1000, 700)
        with subprocess.Popen([TOOL, "check", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
            for start in range(0, len(content), 100001):
                process.stdin.write(content[start:start + 100001])
                process.stdin.flush()
            process.stdin.close()
            summary = process.stdout.read()
            self.assertEqual(process.wait(60), DONE)
        self.assertTrue(summary.startswith(f"1 files, {len(content)} bytes".encode()), summary)

    def run_with_pause(self, content, *arguments):
        """The words of the tool that gets its input in two parts, the first of which ends in the meta header."""
        with subprocess.Popen([TOOL, *map(str, arguments)], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE) as process:
            process.stdin.write(content[:150])
            process.stdin.flush()
            time.sleep(0.2)
            process.stdin.write(content[150:])
            process.stdin.close()
            words = process.stderr.read().decode()
            self.assertEqual(process.wait(60), DONE, words)
        return words

    def test_the_encoding_is_known_however_late_the_meta_header_comes(self):
        fragments = element(0x7FE00010, "OB", tool.item(b"") + tool.item(b"\xff\xd8\xff\xd9") + tool.sequence_end(),
                            length=tool.UNDEFINED)
        for name, syntax, form, data in (
                ("implicit", tool.IMPLICIT, "implicit little endian", tool.image(implicit=True)),
                ("explicit", tool.EXPLICIT, "explicit little endian", tool.image()),
                ("big", tool.BIG_ENDIAN, "explicit big endian", tool.image(order=">")),
                ("jpeg", tool.JPEG, "explicit little endian", element(0x00100010, "PN", "Doe^John") + fragments)):
            with self.subTest(name):
                content = meta(syntax) + data
                self.assertRegex(self.run_with_pause(content, "check", "-d", "-"),
                                 rf"transfer syntax {re.escape(syntax)} \(\w+\), {form}\n")
                self.run_with_pause(content, "convert", "-", self.path(f"{name}.out"))
                file = self.write(name, content)
                self.assert_ends(run("convert", file, self.path(f"{name}.expected")), DONE)
                self.assertEqual(self.path(f"{name}.out").read_bytes(), self.path(f"{name}.expected").read_bytes())

    def test_a_sign_is_kept_however_late_the_meta_header_comes(self):
        content = meta(tool.IMPLICIT) + element(0x00280103, "US", b"\1\0", True) + \
            element(0x00280106, "SS", struct.pack("<h", -5), True)
        self.run_with_pause(content, "convert", "--syntax", "explicit", "-", self.path("out.dcm"))
        self.assertIn(element(0x00280106, "SS", struct.pack("<h", -5)), self.path("out.dcm").read_bytes())

    def test_a_length_that_a_pipe_does_not_supply_takes_no_memory(self):
        claims = meta(tool.EXPLICIT) + element(0x00091001, "OB", b"x" * 64, length=0xFFFFFFF0)
        script = 'ulimit -v 1000000; exec "$0" "$@"'
        limited = [] if "asan" in str(tool.BINARY_DIR) or "tsan" in str(tool.BINARY_DIR) else ["sh", "-c", script]
        result = subprocess.run([*limited, TOOL, "check", "-"], input=claims, check=False, capture_output=True, timeout=60)
        self.assertEqual(result.returncode, INPUT_FAILED)
        offset = claims.index(b"\x09\x00\x01\x10")
        self.assertEqual(result.stderr.decode(), f"tessaret: standard input: truncated at offset {offset}, in (0009,1001)\n")

    def test_empty_input_is_not_dicom(self):
        self.assert_ends(run("dump", "-", input=b""), INPUT_FAILED, "tessaret: standard input: not DICOM\n")

    def test_a_terminal_or_device_is_no_file(self):
        self.assert_ends(run("dump", "/dev/zero"), INPUT_FAILED, "tessaret: /dev/zero: is a device\n")
        self.assert_ends(run("dump", "-", stdin=subprocess.DEVNULL), INPUT_FAILED, "tessaret: standard input: is a device\n")


class LittleMemory(tool.ToolTest):

    @unittest.skipIf(tool.INSTRUMENTED, "sanitizers need the room")
    def test_a_file_that_memory_does_not_hold_is_not_called_broken(self):
        size = 0x7FFFFFFE
        large = self.write("large.dcm", meta(tool.EXPLICIT) + element(0x00100020, "LO", "12") + element(0x7FE00010, "OB", length=size))
        os.truncate(large, large.stat().st_size + size)
        # To be checked, pixel data is not held; anything else is.
        report = self.write("report.dcm", meta(tool.EXPLICIT) + element(0x00420011, "OB", length=size))
        os.truncate(report, report.stat().st_size + size)
        small = self.write("small.dcm", meta(tool.EXPLICIT) + element(0x00100020, "LO", "1"))
        for file, arguments, done, words in (
                (report, ["check", report, small], b"1 read, 1 failed", "not enough memory"),
                (large, ["dump", "--long", large], b"", "not enough memory"),
                (large, ["transcode", "--to", tool.IMPLICIT, large, self.path("out.dcm")], b"", "not enough memory"),
                # What stands before the pixel data is there all the same.
                (large, ["get", large, "PatientID", "Rows"], b"12\n\n", "(0028,0010) is not there before the pixel data")):
            result = subprocess.run(["sh", "-c", 'ulimit -v 1000000; exec "$0" "$@"', TOOL, *map(str, arguments)], check=False,
                                    capture_output=True, timeout=60)
            self.assertEqual(result.returncode, INPUT_FAILED)
            self.assertEqual(result.stderr.decode(), f"tessaret: {file}: {words}\n")
            self.assertIn(done, result.stdout)


class Escapes(tool.ToolTest):
    """Values that try to do something to a terminal."""

    EVIL = b"\x1b[31mred\x07\x9b2J\x7f\r\nnew line\x00end"

    def setUp(self):
        super().setUp()
        self.file = self.write("evil.dcm", meta(tool.EXPLICIT) + element(0x00100010, "PN", self.EVIL) +
                               element(0x00090010, "LO", b"\x1b]0;title\x07") + element(0x00091001, "ST", self.EVIL))

    def assert_harmless(self, text):
        self.assertEqual(re.findall(rb"[\x00-\x09\x0b-\x1f\x7f-\x9f]", text), [])

    def test_values_are_escaped_in_every_form(self):
        for options in (["--format", "lines"], ["--format", "text"], ["--json"], ["--long"]):
            with self.subTest(options):
                self.assert_harmless(run("dump", *options, self.file).stdout)

    def test_an_escape_shows_the_byte(self):
        listing = run("dump", "--long", self.file).stdout
        self.assertIn(rb"[\x1b[31mred\x07\x9b2J\x7f\x0d\x0anew line\x00end]", listing)
        self.assertIn(rb"Private (\x1b]0;title\x07)", listing)

    def test_values_are_escaped_on_a_terminal_too(self):
        listing, _ = on_terminal("dump", self.file, environment={"NO_COLOR": "1"})
        self.assert_harmless(listing)
        self.assertIn(rb"\x1b[31mred", listing)

    def test_nothing_but_our_own_colours_reaches_a_terminal(self):
        listing, _ = on_terminal("dump", self.file)
        self.assertEqual(set(re.findall(rb"\x1b[^m]*m", listing)), {b"\x1b[2m", b"\x1b[0m"})
        self.assert_harmless(re.sub(rb"\x1b\[[02]m", b"", listing))

    def test_names_of_files_are_escaped_in_results_and_words(self):
        evil = self.write("\x1b[31m\n.dcm", meta(tool.EXPLICIT) + tool.image())
        cut = self.write("\x1b]cut", meta(tool.EXPLICIT) + tool.image()[:-1])
        result = run("dump", evil, cut)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(rb"/\x1b[31m\x0a.dcm", result.stdout)
        self.assertIn(rb"/\x1b]cut: truncated", result.stderr)
        self.assert_harmless(result.stdout + result.stderr)

    def test_letters_of_a_strange_vr_are_harmless(self):
        file = self.write("vr.dcm", meta(tool.EXPLICIT) + struct.pack("<HH", 0x0009, 0x1001) + b"\x1b[" + b"\x02\x00ab")
        for options in (["--format", "lines"], ["--format", "text"], ["--json"]):
            self.assert_harmless(run("dump", *options, file).stdout)

    def test_json_is_valid_and_keeps_the_value(self):
        report = json.loads(run("dump", "--json", self.file).stdout)
        self.assertEqual(report["elements"]["00091001"]["Value"][0].encode("latin-1"), self.EVIL)


class Terminals(tool.ToolTest):

    def setUp(self):
        super().setUp()
        self.good_file("many/a.dcm")
        self.good_file("many/b.dcm")

    def test_colours_are_for_terminals_only(self):
        coloured, _ = on_terminal("dump", self.path("many/a.dcm"))
        self.assertIn(b"\x1b[2m# ", coloured)
        self.assertNotIn(b"\x1b", run("dump", self.path("many/a.dcm")).stdout)

    def test_no_colour_when_it_is_not_wanted(self):
        for options, environment in ((["-q"], {}), ([], {"NO_COLOR": "1"}), ([], {"TERM": "dumb"}), ([], {"TERM": None})):
            with self.subTest(options=options, environment=environment):
                plain, code = on_terminal("dump", *options, self.path("many/a.dcm"), environment=environment)
                self.assertEqual(code, DONE)
                self.assertNotIn(b"\x1b", plain)
                failed, code = on_terminal("dump", *options, self.path("missing"), environment=environment)
                self.assertEqual(code, INPUT_FAILED)
                self.assertNotIn(b"\x1b", failed)

    def test_an_empty_no_colour_says_nothing(self):
        self.assertIn(b"\x1b[2m", on_terminal("dump", self.path("many/a.dcm"), environment={"NO_COLOR": ""})[0])

    def test_errors_stand_out_on_a_terminal(self):
        words, _ = on_terminal("check", self.path("missing"), streams=("stderr",))
        self.assertEqual(words.split(b"\x1b[K")[-1],
                         f"\x1b[31mtessaret:\x1b[0m {self.path('missing')}: No such file or directory\n".encode())

    def test_a_progress_bar_is_for_terminals_only(self):
        shown, code = on_terminal("check", self.path("many"), streams=("stderr",))
        self.assertEqual(code, DONE)
        self.assertIn(b"0 of 2 files", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)
        self.assertEqual(run("check", self.path("many")).stderr, b"")

    def test_no_progress_bar_when_it_is_not_wanted(self):
        for options, environment in ((["-q"], {}), ([], {"NO_COLOR": "1"}), ([], {"TERM": "dumb"})):
            shown, _ = on_terminal("check", *options, self.path("many"), environment=environment, streams=("stderr",))
            self.assertEqual(shown, b"")

    def test_words_begin_on_a_line_of_their_own_behind_a_progress_bar(self):
        self.write("many/c.dcm", b"no")
        shown, _ = on_terminal("check", self.path("many"), streams=("stderr",))
        words = shown[shown.index(b"tessaret:"):]
        self.assertTrue(shown[:shown.index(b"\x1b[31mtessaret:")].endswith(b"\r\x1b[K"))
        self.assertTrue(words.startswith(f"tessaret:\x1b[0m {self.path('many/c.dcm')}: not DICOM\n".encode()), words)


class Loudness(tool.ToolTest):

    def test_quiet_says_nothing_but_errors(self):
        warned = self.write("bare.dcm", tool.image(implicit=True))
        self.assertIn(b"warning", run("check", warned).stderr)
        quiet = run("check", "-q", warned)
        self.assert_ends(quiet, DONE, "")
        self.assertEqual(quiet.stdout, b"")
        self.assert_ends(run("check", "-q", self.path("missing")), INPUT_FAILED,
                         f"tessaret: {self.path('missing')}: No such file or directory\n")

    def test_quiet_keeps_results(self):
        self.assertIn(b"[Doe^John]", run("dump", "-q", self.good_file()).stdout)
        self.assertEqual(run("dictionary", "-q", "0010,0010").stdout, b"(0010,0010) PN Patient's Name\n")

    def test_verbose_says_what_is_done(self):
        good = self.good_file()
        self.assert_ends(run("check", "-v", good), DONE, f"tessaret: {good}: reads, 16 elements\n")
        self.assert_ends(run("dictionary", "-v", "0010,0010"), DONE, "tessaret: 0010,0010: 1 found\n")
        self.assertRegex(run("dump", "-v", good).stderr.decode(), rf"^tessaret: {good}: \d+ bytes, preamble and mark, transfer "
                         rf"syntax {tool.EXPLICIT} \(ExplicitVRLittleEndian\), explicit little endian\n$")
        copy = self.path("copy.dcm")
        self.assert_ends(run("convert", "-v", good, copy), DONE, f"tessaret: {copy}: written in ExplicitVRLittleEndian\n")
        series = self.path("series")
        self.assert_ends(run("phantom", "-v", "--size", 8, "--slices", 2, series), DONE,
                         f"tessaret: {series}: 2 files written\n")

    def test_debug_adds_what_helps_to_find_a_fault_to_what_verbose_says(self):
        good = self.good_file()
        encoding = (f"{good.stat().st_size} bytes, preamble and mark, transfer syntax {tool.EXPLICIT} (ExplicitVRLittleEndian), "
                    "explicit little endian")
        for options in (["-d"], ["-v", "-d"]):
            self.assert_ends(run("check", *options, good), DONE,
                             f"tessaret: {good}: {encoding}\ntessaret: {good}: reads, 16 elements\n")
        self.assert_ends(run("dictionary", "-d", "0010,0010"), DONE, "tessaret: 0010,0010: 1 found\n")

    def test_words_hold_no_patient_data_at_any_loudness(self):
        secret = b"Secret^Name"
        whole = meta(tool.EXPLICIT) + element(0x00100010, "PN", secret) + tool.image()
        files = [self.write("whole.dcm", whole), self.write("cut.dcm", whole[:-3]), self.write("bare.dcm", whole[132:]),
                 self.write("bad.dcm", whole + b"\xfe\xff\x00\xe1\0\0\0\0")]
        for options in ([], ["-v"], ["-d"]):
            for arguments in (["check", *files], ["convert", "--force", files[0], self.path("out")],
                              ["convert", "--force", files[1], self.path("out")]):
                self.assertNotIn(secret, run(*arguments[:1], *options, *arguments[1:]).stderr)


if __name__ == "__main__":
    unittest.main()
