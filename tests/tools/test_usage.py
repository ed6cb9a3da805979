"""The command line as a whole: usage, help, version, man pages, completion."""

import json
import os
import re
import shutil
import subprocess
import unittest

import tool
from tool import DONE, INPUT_FAILED, OUTPUT_FAILED, USAGE, run

VERBS = ("dump", "get", "set", "check", "convert", "transcode", "dictionary", "phantom", "echo", "send")
CODES = {0: "done", 1: "some input failed, the rest is done", 2: "wrong usage", 3: "no association",
         4: "the peer refused or failed the work", 5: "output could not be written, standard output included",
         130: "interrupted", 143: "terminated"}
NEEDED = {"dump": ["x"], "check": ["x"], "convert": ["x", "y"], "dictionary": ["x"], "phantom": ["x"], "get": ["x", "PatientName"], "set": ["x", "y", "PatientName="],
          "transcode": ["x", "y", "--to", "explicit"], "echo": ["localhost", "104"], "send": ["localhost", "104", "x"]}


def options_in(help_text):
    """The names of all options that a help text lists."""
    return set(re.findall(r"(?:^  |, )(--?[a-z][a-z-]*)", help_text, re.M))


class Usage(tool.ToolTest):

    def test_without_a_verb_usage_is_wrong(self):
        result = run()
        self.assert_ends(result, USAGE)
        self.assertEqual(result.stdout, b"")
        self.assertIn(b"tessaret: usage: see tessaret --help\n", result.stderr)

    def test_an_unknown_verb_is_named(self):
        result = run("dmup", "file")
        self.assert_ends(result, USAGE)
        self.assertIn(b"tessaret: dmup: no such verb\n", result.stderr)

    def test_an_unknown_option_is_named_with_and_without_a_verb(self):
        self.assert_ends(run("--versio"), USAGE, "tessaret: --versio: no such option\ntessaret: usage: see tessaret --help\n")
        # Not what is missing besides.
        self.assert_ends(run("check", "-x.dcm"), USAGE,
                         "tessaret: check: no such option: -x.dcm\ntessaret: usage: see tessaret check --help\n")
        self.assert_ends(run("-q"), USAGE, "tessaret: usage: a verb is needed\ntessaret: usage: see tessaret --help\n")

    def test_superfluous_words_are_named_in_their_order(self):
        self.assert_ends(run("convert", "a", "b", "[c]", "d"), USAGE,
                         "tessaret: convert: too many words: [c] d\ntessaret: usage: see tessaret convert --help\n")

    def test_options_of_all_verbs_may_stand_before_the_verb(self):
        good = self.good_file()
        self.assert_ends(run("-v", "check", good), DONE, f"tessaret: {good}: reads, 16 elements\n")
        self.assertEqual(run("-q", "check", good).stdout, b"")
        self.assertEqual(json.loads(run("--json", "dictionary", "0010,0010").stdout)["tag"], "00100010")

    def test_names_of_any_characters_are_names(self):
        names = ["[x]", "[a,b]", "[]", "{}", "%%", "-x", " ", "+L", "++", "@x", "a=b", "\"q\"", "new\nline", "--"]
        for name in names:
            with self.subTest(name):
                self.good_file(name)
                result = run("check", "--json", "--", name, cwd=self.folder)
                self.assert_ends(result, DONE, "")
                self.assertEqual([json.loads(line).get("file") for line in result.stdout.splitlines()], [name, None])
                self.assertIn(b"[Doe^John]", run("dump", "--", name, cwd=self.folder).stdout)
                self.assert_ends(run("convert", "--", name, "to" + name, cwd=self.folder), DONE, "")
                self.assertTrue(self.path("to" + name).is_file())

    def test_a_dash_is_no_place_to_write_to(self):
        good = self.good_file()
        for arguments in (["convert", good, "-"], ["dictionary", "--compile", "-"], ["set", good, "-", "PatientName="],
                          ["transcode", "--to", "explicit", good, "-"]):
            result = run(*arguments, cwd=self.folder)
            self.assert_ends(result, USAGE)
            self.assertIn(b"- is for reading; a file is needed, ./- for one of that name", result.stderr)
            self.assertEqual(list(self.folder.iterdir()), [good])
        self.assert_ends(run("convert", good, "./-", cwd=self.folder), DONE, "")
        self.assertTrue(self.path("-").is_file())

    def test_each_verb_refuses_an_unknown_option(self):
        for verb in VERBS:
            with self.subTest(verb):
                result = run(verb, "--no-such-thing", *NEEDED[verb])
                self.assert_ends(result, USAGE)
                self.assertEqual(result.stdout, b"")
                self.assertIn(b"--no-such-thing", result.stderr)
                self.assertIn(f"tessaret: usage: see tessaret {verb} --help\n".encode(), result.stderr)

    def test_each_verb_refuses_to_work_on_nothing(self):
        for verb in VERBS:
            with self.subTest(verb):
                self.assert_ends(run(verb), USAGE)

    def test_each_verb_refuses_a_superfluous_word(self):
        for arguments in (["convert", "a", "b", "c"], ["transcode", "--to", "explicit", "a", "b", "c"], ["phantom", "a", "b"], ["dictionary", "a", "b"]):
            with self.subTest(arguments[0]):
                self.assert_ends(run(*arguments, cwd=self.folder), USAGE)

    def test_each_verb_says_when_a_file_is_not_there(self):
        missing = self.path("missing.dcm")
        for arguments in (["dump", missing], ["check", missing], ["convert", missing, self.path("out")],
                          ["get", missing, "PatientName"], ["set", missing, self.path("out"), "PatientName="],
                          ["transcode", "--to", "explicit", missing, self.path("out")]):
            with self.subTest(arguments[0]):
                self.assert_ends(run(*arguments), INPUT_FAILED, f"tessaret: {missing}: No such file or directory\n")

    def test_values_that_make_no_sense_are_wrong_usage(self):
        for arguments in (["dump", "--format", "xml", "x"], ["phantom", "--kind", "pet", "x"],
                          ["phantom", "--size", "7", "x"], ["phantom", "--size", "many", "x"],
                          ["phantom", "--size", "010", "x"], ["phantom", "--size", "0x10", "x"],
                          ["phantom", "--size", "1e1", "x"], ["phantom", "--slices", "+5", "x"],
                          ["phantom", "--slices", "0", "x"], ["phantom", "--slices", "1000000", "x"],
                          ["phantom", "--spacing", "1,2", "x"], ["phantom", "--spacing", "1,2,-3", "x"],
                          ["phantom", "--spacing", "1,2,nan", "x"], ["phantom", "--spacing", "1,2,3,4", "x"],
                          ["phantom", "--spacing", "1;2;3", "x"], ["phantom", "--spacing", "0,1,1", "x"],
                          ["phantom", "--spacing", "1,1,1000", "x"], ["phantom", "--spacing", "1,1,1 ", "x"],
                          ["phantom", "--kind", "multiframe", "--size", "16384", "--slices", "999999", "x"],
                          ["convert", "--syntax", "jpeg", "x", "y"],
                          ["transcode", "--to", "jpg", "x", "y"], ["get", "--type", "ZZ", "x", "PatientName"],
                          ["get", "--index", "-1", "x", "PatientName"],
                          ["get", "--index", "010", "x", "PatientName"], ["get", "x", "PatientNam"],
                          ["set", "x", "y"], ["set", "x", "y", "PatientName"], ["set", "x", "y", "PatientName:ZZ=1"],
                          ["set", "x", "y", "0002,0010=1.2"], ["set", "x", "y", "--remove", "0010,0000"],
                          ["convert", "--no-preamble", "--syntax", "explicit", "x", "y"]):
            with self.subTest(" ".join(arguments)):
                result = run(*arguments, cwd=self.folder)
                self.assert_ends(result, USAGE)
                self.assertEqual(list(self.folder.iterdir()), [])


class Help(tool.ToolTest):

    def test_help_is_a_result(self):
        for arguments in (["--help"], ["-h"], *[[verb, "--help"] for verb in VERBS]):
            with self.subTest(arguments):
                result = run(*arguments)
                self.assert_ends(result, DONE, "")
                self.assertTrue(result.stdout.startswith(b"Usage: tessaret"))

    def test_help_lists_the_verbs_but_not_those_of_the_build(self):
        text = run("--help").stdout.decode()
        for verb in VERBS:
            self.assertRegex(text, rf"\n  {verb} ")
        self.assertNotIn("__man", text)

    def test_every_verb_has_the_common_options(self):
        for verb in VERBS:
            options = options_in(run(verb, "--help").stdout.decode())
            self.assertLessEqual({"-q", "--quiet", "-v", "--verbose", "-d", "--debug", "--json", "-h", "--help", "--version"}, options)

    def test_every_help_has_the_table_of_exit_codes(self):
        for arguments in (["--help"], *[[verb, "--help"] for verb in VERBS]):
            text = run(*arguments).stdout.decode()
            table = text[text.index("Exit codes:"):]
            found = {int(code): words for code, words in re.findall(r"^  (\d+) +(.+)$", table, re.M)}
            self.assertEqual(found, CODES)

    def test_no_line_of_help_is_wider_than_a_hundred_columns(self):
        for arguments in (["--help"], *[[verb, "--help"] for verb in VERBS]):
            self.assertLessEqual(max(map(len, run(*arguments).stdout.decode().splitlines())), 100)

    def test_version_is_that_of_the_library(self):
        header = (tool.SOURCE_DIR / "include/tessaret/version.h").read_text()
        numbers = [re.search(rf"VERSION_{part} (\d+)", header)[1] for part in ("MAJOR", "MINOR", "PATCH")]
        for arguments in (["--version"], *[[verb, "--version"] for verb in VERBS]):
            result = run(*arguments)
            self.assert_ends(result, DONE, "")
            self.assertEqual(result.stdout.decode(), f"tessaret {'.'.join(numbers)}\n")


class Manual(tool.ToolTest):

    def setUp(self):
        super().setUp()
        self.assert_ends(run("__man", self.folder), DONE, "")
        self.pages = self.folder / "man/man1"

    def test_the_build_made_the_same_pages(self):
        for page in self.pages.iterdir():
            self.assertEqual((tool.BINARY_DIR / "share/man/man1" / page.name).read_bytes(), page.read_bytes())
        made = tool.BINARY_DIR / "share/bash-completion/completions/tessaret"
        self.assertEqual(made.read_bytes(), (self.folder / "bash-completion/completions/tessaret").read_bytes())

    def test_there_is_a_page_for_the_tool_and_for_each_verb(self):
        names = {page.name for page in self.pages.iterdir()}
        self.assertEqual(names, {"tessaret.1"} | {f"tessaret-{verb}.1" for verb in VERBS})

    def test_mandoc_finds_no_fault_but_the_missing_date(self):
        for page in self.pages.iterdir():
            lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], check=False, capture_output=True, text=True)
            found = [line for line in lint.stdout.splitlines() if "missing date" not in line]
            self.assertEqual(found, [], page.name)

    def test_man_shows_every_option_and_exit_code(self):
        for verb in VERBS:
            shown = subprocess.run(["man", "-l", self.pages / f"tessaret-{verb}.1"], check=True, capture_output=True,
                                   text=True, env={**os.environ, "MANWIDTH": "100", "LC_ALL": "C.UTF-8"})
            self.assertEqual(shown.stderr, "")
            text = re.sub(".\b", "", shown.stdout)
            for option in options_in(run(verb, "--help").stdout.decode()):
                self.assertIn(option, text, verb)
            for code, words in CODES.items():
                self.assertRegex(text, rf"{code}\s+{words}")

    def test_the_spellings_of_other_programs_are_named_in_every_text(self):
        completion = (self.folder / "bash-completion/completions/tessaret").read_text()
        for verb, spellings in (("dump", ["+L", "+r", "+sd"]), ("check", ["+r", "+sd"]), ("convert", ["+ti", "+te"]),
                                ("echo", ["-aet", "-aec"]), ("send", ["-aet", "-aec", "+r"])):
            for text in ((self.pages / f"tessaret-{verb}.1").read_text(), run(verb, "--help").stdout.decode(),
                         re.search(rf"^    {verb}\) words=(.*)$", completion, re.M)[1]):
                for spelling in spellings:
                    self.assertRegex(text, rf"\{spelling}(?![a-z])")

    def test_the_spellings_of_other_programs_work(self):
        file = self.write("tree/a.dcm", tool.meta(tool.EXPLICIT) + tool.element(0x00204000, "LT", "x" * 200))
        self.assertIn(b"x" * 200, run("dump", "+sd", "+r", "+L", file.parent).stdout)
        self.assertIn(b"1 files", run("check", "+sd", "+r", file.parent).stdout)
        for spelling, name in (("+ti", "ImplicitVRLittleEndian"), ("+te", "ExplicitVRLittleEndian")):
            out = self.path(name)
            self.assert_ends(run("convert", "-v", spelling, file, out), DONE, f"tessaret: {out}: written in {name}\n")
        # Where a verb has no such option it is a word like any other.
        self.assert_ends(run("check", "+L", cwd=self.folder), INPUT_FAILED, "tessaret: +L: No such file or directory\n")

    def test_completion_offers_verbs_options_and_choices(self):
        script = self.folder / "bash-completion/completions/tessaret"

        def complete(*words):
            line = " ".join(f"'{word}'" for word in words)
            text = (f"source {script}; compopt() {{ :; }}; COMP_WORDS=({line}); COMP_CWORD={len(words) - 1}; _tessaret; "
                    "printf '%s\\n' \"${COMPREPLY[@]}\"")
            return set(subprocess.run(["bash", "-c", text], check=True, capture_output=True, text=True,
                                      cwd=self.folder).stdout.split())

        self.assertEqual(complete("tessaret", "d"), {"dump", "dictionary"})
        self.assertIn("--version", complete("tessaret", "--"))
        self.assertEqual(complete("tessaret", "dump", "--format", ""), {"lines", "text", "json"})
        self.assertEqual(complete("tessaret", "phantom", "--kind", "m"), {"mr", "multiframe", "mono1"})
        self.assertEqual(complete("tessaret", "convert", "--no"), {"--no-preamble"})
        self.assertEqual(complete("tessaret", "convert", "+"), {"+ti", "+te"})
        self.assertEqual(complete("tessaret", "-q", "du"), {"dump"})
        self.assertEqual(complete("tessaret", "-q", "dump", "--format", "="), {"lines", "text", "json"})
        self.assertEqual(complete("tessaret", "dump", "--format", "=", "li"), {"lines"})
        self.assertEqual(complete("tessaret", "dump", "--", "--"), set())
        self.write("some.dcm", b"")
        self.assertEqual(complete("tessaret", "dump", "so"), {"some.dcm"})

    def test_pages_that_cannot_be_written_are_told(self):
        blocker = self.write("blocker", b"")
        result = run("__man", blocker)
        self.assert_ends(result, OUTPUT_FAILED)
        self.assertIn(b"Not a directory", result.stderr)


class Dictionaries(tool.ToolTest):

    def assert_dictionaries_refused(self, words):
        environment = {**os.environ, "TESSARET_DATA_DIR": str(self.folder)}
        result = run("dump", self.good_file(), env=environment)
        self.assert_ends(result, INPUT_FAILED, f"tessaret: dictionaries: {words}\n")
        self.assertEqual(result.stdout, b"")

    def test_missing_dictionaries_are_told_and_end_the_work(self):
        self.assert_dictionaries_refused(f"Error reading [{self.folder}/dicom-dict.txt]: No such file or directory")

    def test_a_broken_dictionary_is_told_with_the_number_of_its_line(self):
        lines = (tool.SOURCE_DIR / "data/dicom-dict.txt").read_text().splitlines()
        # The first entry becomes one without an end.
        number = next(number for number, line in enumerate(lines, 1) if line.startswith("{"))
        lines[number - 1] = '{0x0008 0x0001 UL "no end'
        self.write("dicom-dict.txt", "\n".join(lines).encode())
        self.assert_dictionaries_refused(
            f"Error reading [{self.folder}/dicom-dict.txt]: line {number}: the record has no end before the next one")

    def test_a_broken_dictionary_of_uids_is_told_with_the_number_of_its_line(self):
        shutil.copy(tool.SOURCE_DIR / "data/dicom-dict.txt", self.path("dicom-dict.txt"))
        self.write("uid-dict.txt", b"# comment\nSOPClass 1.2.3 image Name\n")
        self.assert_dictionaries_refused(
            f"Error reading [{self.folder}/uid-dict.txt]: Error reading UID file at line 2")

    def test_a_missing_dictionary_of_uids_is_told_with_its_name(self):
        shutil.copy(tool.SOURCE_DIR / "data/dicom-dict.txt", self.path("dicom-dict.txt"))
        self.assert_dictionaries_refused(f"Error reading [{self.folder}/uid-dict.txt]: No such file or directory")
        self.path("uid-dict.txt").mkdir()
        self.assert_dictionaries_refused(f"Error reading [{self.folder}/uid-dict.txt]: Is a directory")

    def test_help_needs_no_dictionaries(self):
        environment = {**os.environ, "TESSARET_DATA_DIR": str(self.folder)}
        self.assert_ends(run("dump", "--help", env=environment), DONE)

    def test_a_tool_that_was_moved_finds_its_dictionaries(self):
        for part in ("bin", "share/tessaret"):
            (self.folder / part).mkdir(parents=True)
        shutil.copy(tool.TOOL, self.path("bin/tessaret"))
        for name in ("dicom-dict.txt", "uid-dict.txt"):
            shutil.copy(tool.BINARY_DIR / "share/tessaret" / name, self.path("share/tessaret") / name)
        result = subprocess.run([self.path("bin/tessaret"), "dictionary", "0010,0010", "--json"], check=True,
                                capture_output=True)
        self.assertEqual(json.loads(result.stdout)["name"], "Patient's Name")


if __name__ == "__main__":
    unittest.main()
