"""tessaret echo: whether another node is there."""

import json
import signal
import subprocess
import time
import unittest

import dicom_node
import network_tool
import tool
from dicom_node import Node
from pdu_link import free_port
from tool import DONE, INTERRUPTED, USAGE

NO_ASSOCIATION, PEER_FAILED = 3, 4


class Echo(network_tool.NetworkTest):

    def test_a_node_that_answers_is_there(self):
        with Node() as node:
            self.assert_says(("echo", "127.0.0.1", node.port), DONE, f"ANY-SCP@127.0.0.1:{node.port} is there\n", "")
            self.assert_says(("echo", "-q", "127.0.0.1", node.port), DONE, "", "")
        self.assertEqual((node.echoes, node.releases), (2, 2))
        self.assertEqual(node.proposals, [(dicom_node.VERIFICATION, [tool.IMPLICIT])])
        self.assertEqual(node.titles[0], ("TESSARET".ljust(16), "ANY-SCP".ljust(16)))

    def test_titles_are_given_in_every_way(self):
        with Node() as node:
            place = ["127.0.0.1", node.port]
            for arguments in (["--aet", "US", "--aec", "THEM", *place], ["-aet", "US", "-aec", "THEM", *place],
                              ["--aet=US", *place, "--aec=THEM"], ["-aet", "US", f"THEM@127.0.0.1:{node.port}"],
                              ["-aet", "US", "-aec", "OTHER", f"THEM@127.0.0.1:{node.port}"]):
                with self.subTest(arguments):
                    self.assert_says(("echo", *arguments), DONE, f"THEM@127.0.0.1:{node.port} is there\n", "")
                    self.assertEqual(node.titles[-1], ("US".ljust(16), "THEM".ljust(16)))

    def test_names_are_looked_up(self):
        with Node() as node:
            self.assert_says(("echo", "localhost", node.port), DONE, f"ANY-SCP@localhost:{node.port} is there\n", "")

    def test_json_says_how_it_went(self):
        with Node() as node:
            result = self.run_tool("echo", "--json", f"THEM@127.0.0.1:{node.port}")
            self.assert_ends(result, DONE, "")
            said = json.loads(result.stdout)
            self.assertGreaterEqual(said.pop("seconds"), 0)
            self.assertEqual(said, {"title": "THEM", "host": "127.0.0.1", "port": str(node.port), "ok": True})
        port = free_port()
        result = self.run_tool("echo", "--json", "127.0.0.1", port)
        self.assertEqual(result.returncode, NO_ASSOCIATION)
        said = json.loads(result.stdout)
        self.assertIs(said["ok"], False)
        self.assertIn("Connection refused", said["error"])

    def test_without_an_association_it_says_why(self):
        port = free_port()
        result = self.run_tool("echo", "127.0.0.1", port)
        self.assertEqual((result.returncode, result.stdout), (NO_ASSOCIATION, b""))
        self.assertRegex(result.stderr.decode(), rf"^tessaret: ANY-SCP@127\.0\.0\.1:{port}: Connection to  127\.0\.0\.1: ANY-SCP "
                         r"permanently refused: Non active link \(.*Connection refused.*\)\n$")
        rows = {(1, 1, 7): ("permanently refused: Unknown remote AETitle (Connection rejected permanent: service-user, "
                            "called AE title not recognized)"),
                (2, 3, 2): ("temporarily refused: Unupported Application Context (Connection rejected transient: service-provider "
                            "(Presentation related function), application context name not supported)"),
                (1, 1, 3): ("permanently refused: Unknown local AETitle (Connection rejected permanent: service-user, "
                            "calling AE title not recognized)"),
                (2, 2, 1): ("temporarily refused: Non active link (Connection rejected transient: service-provider (ACSE related "
                            "function), no reason given)"),
                (1, 1, 10): "permanently refused (Connection rejected permanent: service-user, reserved)"}
        for numbers, words in rows.items():
            with self.subTest(numbers), Node(reject=numbers) as node:
                self.assert_says(("echo", "127.0.0.1", node.port), NO_ASSOCIATION, "",
                                 f"tessaret: ANY-SCP@127.0.0.1:{node.port}: Connection to  127.0.0.1: ANY-SCP {words}\n")

    def test_a_node_without_verification_is_no_association(self):
        with Node(refused=[dicom_node.VERIFICATION]) as node:
            result = self.run_tool("echo", "127.0.0.1", node.port)
        self.assertEqual(result.returncode, NO_ASSOCIATION)
        self.assertIn(b"No Accepted presentation Context found", result.stderr)
        self.assertEqual(node.releases, 1)

    def test_no_answer_is_the_nodes_failure(self):
        with Node(answers_echo=False) as node:
            self.assert_says(("echo", "127.0.0.1", node.port), PEER_FAILED, "",
                             f"tessaret: ANY-SCP@127.0.0.1:{node.port}: made an association, but gave no answer "
                             "(The peer has closed the link)\n")

    def test_a_node_that_says_nothing_is_waited_for_as_long_as_is_said(self):
        with Node(hangs=True) as node:
            begin = time.monotonic()
            result = self.run_tool("echo", "--timeout", 1, "127.0.0.1", node.port)
            self.assertLess(time.monotonic() - begin, 30)
        self.assertEqual(result.returncode, NO_ASSOCIATION)
        self.assertIn(b"Timeout error reading from socket", result.stderr)

    def test_an_interrupt_ends_the_waiting(self):
        with Node(hangs=True) as node:
            with subprocess.Popen([tool.TOOL, "echo", "127.0.0.1", str(node.port)], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                self.assertTrue(node.reached.wait(60))
                process.send_signal(signal.SIGINT)
                _, words = process.communicate(timeout=60)
        self.assertEqual(process.returncode, INTERRUPTED)
        self.assertEqual(network_tool.without_noise(words), b"")

    def test_what_makes_no_sense_is_wrong_usage(self):
        for arguments in ([], ["localhost"], ["localhost", ""], ["localhost", "0"], ["localhost", "65536"], ["localhost", "104x"],
                          ["localhost", "0104"], ["localhost", "104", "more"], ["@localhost:104"], ["A@localhost"], ["A@:104"],
                          ["A@localhost:"], ["AVERYLONGTITLE017@localhost:104"], ["-aet", "", "localhost", "104"],
                          ["-aet", "   ", "localhost", "104"], ["-aec", "A\\B", "localhost", "104"],
                          ["-aec", "AVERYLONGTITLE017", "localhost", "104"], ["--timeout", "-1", "localhost", "104"],
                          ["--timeout", "86401", "localhost", "104"], ["--timeout", "soon", "localhost", "104"]):
            with self.subTest(arguments):
                result = self.run_tool("echo", *arguments)
                self.assertEqual((result.returncode, result.stdout), (USAGE, b""), result.stderr)
                self.assertIn(b"tessaret: usage: see tessaret echo --help\n", result.stderr)


if __name__ == "__main__":
    unittest.main()
