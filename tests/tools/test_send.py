"""tessaret send: files to another node."""

import json
import os
import pathlib
import signal
import struct
import subprocess
import unittest

import network_tool
import tool
from dicom_node import Node
from pdu_link import free_port
from tool import BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, INTERRUPTED, MPEG, OUTPUT_FAILED, USAGE, element, image, item, meta

NO_ASSOCIATION, PEER_FAILED = 3, 4
SECONDARY_CAPTURE = "1.2.840.10008.5.1.4.1.1.7"


def summary(sent=0, warned=0, refused=0, failed=0):
    return f"{sent} files sent, {warned} with warnings, {refused} refused, {failed} failed\n"


class Send(network_tool.NetworkTest):

    def send(self, node, *arguments):
        return self.run_tool("send", "127.0.0.1", node.port, *arguments)

    def assert_sends(self, node, arguments, code, output, errors):
        self.assert_says(("send", "127.0.0.1", node.port, *arguments), code, output, errors)

    def test_files_are_sent_in_their_order_and_counted(self):
        files = [self.write(f"{name}.dcm", (meta(EXPLICIT) + image()).replace(b"1.2.3.4\0", f"1.2.3.{number}\0".encode()))
                 for number, name in enumerate("cab")]
        with Node() as node:
            self.assert_sends(node, files, DONE, summary(3), "")
        self.assertEqual([store[:2] for store in node.stores], [(SECONDARY_CAPTURE, f"1.2.3.{number}") for number in range(3)])
        self.assertEqual(node.proposals, [(SECONDARY_CAPTURE, [IMPLICIT, EXPLICIT])])
        self.assertEqual(len(node.titles), 1)
        self.assertEqual(node.releases, 1)

    def test_titles_are_given_in_every_way(self):
        file = self.good_file()
        with Node() as node:
            place, at = ["127.0.0.1", node.port], f"127.0.0.1:{node.port}"
            rows = [([*place], "TESSARET", "ANY-SCP"), (["-aet", "US", *place], "US", "ANY-SCP"), (["-aec", "THEM", *place], "TESSARET", "THEM"),
                    (["--aet", "US", "--aec", "THEM", *place], "US", "THEM"), (["-aet", "US", "-aec", "THEM", *place], "US", "THEM"),
                    (["--aet=US", *place, "--aec=THEM"], "US", "THEM"), ([f"THEM@{at}"], "TESSARET", "THEM"),
                    (["-aet", "US", f"THEM@{at}"], "US", "THEM"), (["-aet", "US", "-aec", "OTHER", f"THEM@{at}"], "US", "THEM"),
                    (["-aet", "SIXTEEN  LETTERS", "-aec", "ALSO OF SIXTEEN.", *place], "SIXTEEN  LETTERS", "ALSO OF SIXTEEN.")]
            for arguments, calling, called in rows:
                with self.subTest(arguments):
                    node.titles.clear()
                    self.assert_says(("send", *arguments, file), DONE, summary(1), "")
                    self.assertEqual(node.titles, [(calling.ljust(16), called.ljust(16))])

    def test_what_arrives_is_the_data_set_alone(self):
        for syntax in (IMPLICIT, EXPLICIT):
            for own in (IMPLICIT, EXPLICIT, BIG_ENDIAN):
                with self.subTest(syntax=syntax, own=own), Node(syntax=syntax) as node:
                    file = self.write("a.dcm", meta(own) + image(implicit=own == IMPLICIT, order=">" if own == BIG_ENDIAN else "<"))
                    self.assert_sends(node, [file], DONE, summary(1), "")
                    self.assertEqual(node.stores[0][2], image(implicit=syntax == IMPLICIT))

    def test_directories_are_sent_and_those_in_them_on_request(self):
        for name in ("tree/b.dcm", "tree/a.dcm", "tree/deep/c.dcm", "tree/deep/deeper/d.dcm"):
            self.good_file(name)
        tree = self.path("tree")
        with Node() as node:
            self.assert_sends(node, [tree], DONE, summary(2), "")
            self.assert_sends(node, [f"{tree}/"], DONE, summary(2), "")
            for option in ("+r", "--recurse"):
                self.assert_sends(node, [option, tree], DONE, summary(4), "")
            # A directory that is named is not in a directory.
            self.assert_sends(node, [tree, tree / "deep"], DONE, summary(3), "")

    def test_what_is_deeper_than_asked_for_is_not_looked_at(self):
        file = self.good_file("tree/a.dcm")
        pipe = self.path("tree/deep/pipe")
        pipe.parent.mkdir()
        os.mkfifo(pipe)
        with Node() as node:
            self.assert_sends(node, ["-v", self.path("tree")], DONE, summary(1), f"tessaret: {file}: sent\n")
            self.assert_sends(node, ["-v", "+r", self.path("tree")], DONE, summary(1),
                              f"tessaret: {pipe}: left out, it is no regular file\ntessaret: {file}: sent\n")

    def test_a_directory_that_may_not_be_listed_is_told(self):
        file, closed = self.good_file("tree/a.dcm"), self.path("tree/closed")
        closed.mkdir()
        closed.chmod(0)
        self.addCleanup(closed.chmod, 0o700)
        self.folder.chmod(0o755)
        # Nothing is closed to root.
        somebody = {"user": 65534} if os.geteuid() == 0 else {}
        if tool.run("--version", **somebody).returncode != DONE:
            self.skipTest("the tool is not for everybody")
        words = f"tessaret: {closed}: Permission denied\n"
        with Node() as node:
            for arguments, code, sent, errors in (([self.path("tree")], DONE, 1, ""), (["+r", self.path("tree")], INPUT_FAILED, 1, words),
                                                  ([closed, file], INPUT_FAILED, 1, words), ([closed], INPUT_FAILED, 0, words)):
                with self.subTest(arguments):
                    result = self.run_tool("send", "127.0.0.1", node.port, *arguments, **somebody)
                    self.assert_ends(result, code, errors)
                    self.assertEqual(result.stdout.decode(), summary(sent))

    def test_a_file_that_is_cut_is_not_sent_as_if_it_were_whole(self):
        whole = meta(EXPLICIT) + image()
        pixels = whole.index(b"\xe0\x7f")
        # In the last value before the pixels, in their length, in their first and before their last byte.
        cuts = [self.write(f"{at}.dcm", whole[:at]) for at in (pixels - 1, pixels + 10, pixels + 13, len(whole) - 1)]
        good = self.good_file()
        with Node() as node:
            result = self.send(node, *cuts, good)
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout.decode(), summary(1, failed=4))
        self.assertEqual([line.split(": ")[1] for line in result.stderr.decode().splitlines()], [str(file) for file in cuts])
        self.assertEqual(len(node.stores), 1)

    def test_what_is_no_regular_file_is_not_waited_for(self):
        good, pipe = self.good_file(), self.path("pipe")
        os.mkfifo(pipe)
        with Node() as node:
            self.assert_sends(node, [pipe, "/dev/zero", good], INPUT_FAILED, summary(1, failed=2),
                              f"tessaret: {pipe}: is no regular file\ntessaret: /dev/zero: is no regular file\n")

    def test_a_progress_bar_is_for_terminals(self):
        files = [self.good_file("1.dcm"), self.good_file("2.dcm"), self.path("missing")]
        with Node() as node:
            words, code = tool.on_terminal("send", "127.0.0.1", node.port, *files, streams=("stderr",))
            self.assertEqual(code, INPUT_FAILED)
            self.assertIn(b"[###############               ] 50 %, 1 of 2 files", words)
            self.assertTrue(words.endswith(b"\r\x1b[K"), words)
            words, code = tool.on_terminal("send", "-q", "127.0.0.1", node.port, *files[:2], streams=("stderr",))
            self.assertEqual((network_tool.without_noise(words), code), (b"", DONE))

    def test_an_output_that_takes_nothing_has_its_code(self):
        files = [self.good_file(f"{number}.dcm") for number in range(3)]
        with Node() as node, open("/dev/full", "wb") as full:
            for option in ([], ["--json"]):
                result = self.run_tool("send", *option, "127.0.0.1", node.port, *files, stdout=full)
                self.assert_ends(result, OUTPUT_FAILED, "tessaret: standard output: No space left on device\n")
        self.assertEqual(node.releases, 2)

    def test_a_file_that_fails_has_a_line_and_does_not_stop_the_others(self):
        good, missing = self.good_file(), self.path("missing.dcm")
        junk = self.write("junk.dcm", b"no DICOM file")
        classless = self.write("classless.dcm", meta(EXPLICIT) + element(0x00100010, "PN", "Doe"))
        # Nodes abort for requests without an instance, or with a UID of more than 64 bytes.
        unnamed = self.write("unnamed.dcm", (meta(EXPLICIT) + image()).replace(element(0x00080018, "UI", "1.2.3.4"), b""))
        long = self.write("long.dcm", (meta(EXPLICIT) + image()).replace(
            element(0x00080018, "UI", "1.2.3.4"), element(0x00080018, "UI", "1." + "2" * 63)))
        with Node() as node:
            result = self.send(node, missing, junk, classless, unnamed, long, good)
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(result.stdout.decode(), summary(1, failed=5))
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), 5, lines)
        self.assertEqual(lines[3], f"tessaret: {unnamed}: says no SOP instance")
        self.assertEqual(lines[4], f"tessaret: {long}: has a UID of more than 64 characters")
        self.assertEqual(lines[0], f"tessaret: {missing}: No such file or directory")
        self.assertTrue(lines[1].startswith(f"tessaret: {junk}: "))
        self.assertEqual(lines[2], f"tessaret: {classless}: says no SOP class")

    def test_with_nothing_to_send_nobody_is_asked(self):
        with Node() as node:
            empty = self.path("empty")
            empty.mkdir()
            self.assert_sends(node, [empty], INPUT_FAILED, summary(), "tessaret: send: no files to send\n")
            self.assert_sends(node, [self.path("missing")], INPUT_FAILED, summary(failed=1),
                              f"tessaret: {self.path('missing')}: No such file or directory\n")
        self.assertEqual(node.titles, [])

    def test_a_refused_object_is_told(self):
        file = self.good_file()
        with Node(status=0xA700, comment="no room") as node:
            self.assert_sends(node, [file, file], PEER_FAILED, summary(refused=2),
                              f"tessaret: {file}: refused with status A700: no room\n" * 2)
        with Node(status=0x0122) as node:
            self.assert_sends(node, ["-q", file], PEER_FAILED, "", f"tessaret: {file}: refused with status 0122\n")

    def test_a_warning_is_no_failure(self):
        file = self.good_file()
        with Node(status=0xB007, comment="odd") as node:
            self.assert_sends(node, [file], DONE, summary(1, warned=1), f"tessaret: {file}: warning: stored with status B007: odd\n")
            self.assert_sends(node, ["-q", file], DONE, "", "")

    def test_verbosely_every_file_has_a_line(self):
        file = self.good_file()
        with Node() as node:
            self.assert_sends(node, ["-v", file], DONE, summary(1), f"tessaret: {file}: sent\n")

    def test_json_has_an_object_a_file_and_the_counts(self):
        good, missing = self.good_file(), self.path("missing.dcm")
        with Node(status=0xA700, comment="no room") as node:
            result = self.send(node, "--json", missing, good)
        self.assertEqual(result.returncode, PEER_FAILED)
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()], [
            {"file": str(missing), "ok": False, "error": "No such file or directory"},
            {"file": str(good), "ok": False, "status": 0xA700, "comment": "no room", "error": "refused"},
            {"sent": 0, "warnings": 0, "refused": 1, "failed": 1}])
        with Node() as node:
            result = self.send(node, "--json", good)
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()],
                         [{"file": str(good), "ok": True, "status": 0}, {"sent": 1, "warnings": 0, "refused": 0, "failed": 0}])

    def test_without_an_association_nothing_is_sent(self):
        file = self.good_file()
        with Node(reject=(1, 1, 7)) as node:
            words = ("Connection to  127.0.0.1: THEM permanently refused: Unknown remote AETitle (Connection rejected permanent: "
                     "service-user, called AE title not recognized)")
            self.assert_says(("send", f"THEM@127.0.0.1:{node.port}", file), NO_ASSOCIATION, "",
                             f"tessaret: THEM@127.0.0.1:{node.port}: {words}\n")
            result = self.run_tool("send", "--json", f"THEM@127.0.0.1:{node.port}", file)
            self.assertEqual(result.returncode, NO_ASSOCIATION)
            self.assertEqual(json.loads(result.stdout), {"sent": 0, "warnings": 0, "refused": 0, "failed": 0, "error": words})
        with Node(refused=[SECONDARY_CAPTURE]) as node:
            result = self.send(node, file)
            self.assertEqual((result.returncode, result.stdout), (NO_ASSOCIATION, b""))
            self.assertIn(b"No Accepted presentation Context found", result.stderr)
        result = self.run_tool("send", "127.0.0.1", free_port(), file)
        self.assertEqual((result.returncode, result.stdout), (NO_ASSOCIATION, b""))
        self.assertIn(b"Connection refused", result.stderr)

    def test_a_class_that_the_node_does_not_take_is_the_nodes_failure(self):
        good = self.good_file()
        other = self.write("other.dcm", (meta(EXPLICIT) + image()).replace(b"1.2.840.10008.5.1.4.1.1.7\0", b"1.2.840.10008.5.1.4.1.1.2\0"))
        with Node(refused=["1.2.840.10008.5.1.4.1.1.2"]) as node:
            self.assert_sends(node, [other, good], PEER_FAILED, summary(1, failed=1),
                              f"tessaret: {other}: Cannot find Presentation Context for SOP Class[1.2.840.10008.5.1.4.1.1.2]\n")

    def test_a_link_that_is_lost_fails_every_file_behind_it(self):
        files = [self.good_file(f"{number}.dcm") for number in range(4)]
        with Node(ends_at=1) as node:
            result = self.send(node, *files)
        self.assertEqual((result.returncode, result.stdout.decode()), (PEER_FAILED, summary(1, failed=3)))
        lines = result.stderr.decode().splitlines()
        self.assertEqual([line.split(": ")[1] for line in lines], [str(file) for file in files[1:]])
        self.assertEqual(len(node.stores), 2)

    def test_a_compression_without_a_codec_stays_with_its_file(self):
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + item(b"") + item(b"\xff\xd8") + tool.sequence_end()
        compressed = self.write("mpeg.dcm", meta(MPEG) + image()[: image().index(b"\xe0\x7f")] + pixels)
        good = self.good_file()
        with Node() as node:
            self.assert_sends(node, [compressed, good], INPUT_FAILED, summary(1, failed=1),
                              f"tessaret: {compressed}: Unsupported compressed Transfer Syntax [{MPEG}]\n")

    def test_a_compressed_file_is_sent_native(self):
        self.assert_ends(tool.run("transcode", "--to", "rle", self.good_file(), self.path("rle.dcm")), DONE)
        with Node(syntax=EXPLICIT) as node:
            self.assert_sends(node, [self.path("rle.dcm")], DONE, summary(1), "")
        self.assertIn(struct.pack("<6H", *range(1, 7)), node.stores[0][2])

    def test_names_of_any_bytes_are_sent(self):
        names = [b"new\nline.dcm", b"\xff\xfe.dcm", "\u00e4.dcm".encode(), b"a]: b.dcm", b" ", b"-x"]
        for name in names:
            pathlib.Path(os.fsdecode(os.fsencode(self.folder) + b"/" + name)).write_bytes(meta(EXPLICIT) + image())
        with Node() as node:
            self.assert_sends(node, [self.folder], DONE, summary(len(names)), "")
            result = self.run_tool("send", "--", "127.0.0.1", node.port, "-x", cwd=self.folder)
            self.assertEqual((result.returncode, result.stdout.decode()), (DONE, summary(1)))

    def test_many_small_files_go_over_one_association(self):
        count = 1000 // tool.SHARE
        for number in range(count):
            self.write(f"many/{number:04}.dcm", (meta(EXPLICIT) + image()).replace(b"1.2.3.4\0", f"1.2.{number:04}".encode()[:8].ljust(8, b"\0")))
        with Node() as node:
            self.assert_sends(node, [self.path("many")], DONE, summary(count), "")
        self.assertEqual(len(node.titles), 1)
        self.assertEqual([store[1] for store in node.stores], [f"1.2.{number:04}" for number in range(count)])

    def test_an_interrupt_ends_the_waiting(self):
        file = self.good_file()
        with Node(hangs=True) as node:
            with subprocess.Popen([tool.TOOL, "send", "127.0.0.1", str(node.port), file], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                self.assertTrue(node.reached.wait(60))
                process.send_signal(signal.SIGINT)
                _, words = process.communicate(timeout=60)
        self.assertEqual(process.returncode, INTERRUPTED)
        self.assertEqual(network_tool.without_noise(words), b"")

    def test_what_makes_no_sense_is_wrong_usage(self):
        for arguments in ([], ["localhost"], ["localhost", "104"], ["A@localhost:104"], ["localhost", "0", "x"], ["A@localhost", "x"],
                          ["localhost", "104", "-"], ["--timeout", "-1", "localhost", "104", "x"], ["-aet", "", "localhost", "104", "x"]):
            with self.subTest(arguments):
                result = self.run_tool("send", *arguments)
                self.assertEqual((result.returncode, result.stdout), (USAGE, b""), result.stderr)
                self.assertIn(b"tessaret: usage: see tessaret send --help\n", result.stderr)


if __name__ == "__main__":
    unittest.main()
