"""The scripts that hold the rules of the house find what they are there to find."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ.get("TESSARET_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))


class Rules(unittest.TestCase):
    """A small tree of its own, with the scripts of the project."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        shutil.copytree(SOURCE / "scripts", self.tree / "scripts")
        self.write("src/floors.txt", (SOURCE / "src/floors.txt").read_text())
        self.write("src/core/CMakeLists.txt", "tessaret_add_floor(core SOURCES vr.h)\n")

    def write(self, name, text):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def run_rule(self, script):
        return subprocess.run([sys.executable, "-B", self.tree / "scripts" / script],
                              capture_output=True, text=True, check=False)

    def assert_found(self, script, words):
        result = self.run_rule(script)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn(words, result.stderr)

    def assert_clean(self, script):
        result = self.run_rule(script)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_an_include_from_an_upper_floor_is_fine(self):
        self.write("src/core/vr.h", '#include <vector>\n#include <sys/stat.h>\n#include "base/text.h"\n#include "core/tag.h"\n')
        self.assert_clean("check_layers.py")

    def test_an_include_from_a_lower_floor_is_found(self):
        self.write("src/core/vr.h", '#include "facade/module.h"\n')
        self.assert_found("check_layers.py", 'src/core/vr.h:1: "facade/module.h": core may not see facade')

    def test_floors_with_one_number_do_not_see_each_other(self):
        self.write("src/net/pdu.h", '#include "imaging/raster.h"\n')
        self.assert_found("check_layers.py", "net may not see imaging")

    def test_an_include_relative_to_the_file_is_found(self):
        self.write("src/core/vr.h", '#include "tag.h"\n')
        self.assert_found("check_layers.py", "not named relative to src/")

    def test_the_tool_sees_public_headers_and_what_knows_nothing_of_dicom(self):
        self.write("include/tessaret/tessaret.hpp", "")
        self.write("tools/main.cpp", '#include <tessaret/tessaret.hpp>\n#include <CLI/CLI.hpp>\n#include "base/text.h"\n'
                   '#include "platform/file_calls.h"\n#include "tag.h"\n#include <core>\n')
        self.assert_clean("check_layers.py")

    def test_the_tool_sees_nothing_else_of_the_library(self):
        for folder in ("component", "core", "facade", "net", "display"):
            self.write("tools/main.cpp", f'#include <vector>\n#include "{folder}/vr.h"\n')
            self.assert_found("check_layers.py", f'tools/main.cpp:2: "{folder}/vr.h": tools may not see {folder}')
        self.write("tools/main.cpp", '#include "../src/core/vr.h"\n')
        self.assert_found("check_layers.py", "leads out of its folder")
        self.write("tools/main.cpp", "#include <tessaret/secret.hpp>\n")
        self.assert_found("check_layers.py", "no such public header")

    def test_codecs_see_the_lowest_floor_and_the_libraries_they_stand_on(self):
        self.write("include/tessaret/codec.h", "")
        self.write("codecs/coder.cpp", '#include <jpeglib.h>\n#include "tessaret/codec.h"\n#include "base/text.h"\n#include "rle/coder.h"\n')
        self.assert_clean("check_layers.py")
        for folder in ("platform", "core"):
            self.write("codecs/coder.cpp", f'#include "{folder}/vr.h"\n')
            self.assert_found("check_layers.py", f'codecs/coder.cpp:1: "{folder}/vr.h": codecs may not see {folder}')

    def test_an_include_of_a_foreign_package_is_found(self):
        self.write("src/core/vr.h", "#include <CLI/CLI.hpp>\n")
        self.assert_found("check_layers.py", "neither the standard library nor POSIX")

    def test_a_folder_that_is_no_floor_is_found(self):
        self.write("src/cellar/wine.h", "\n")
        self.assert_found("check_layers.py", "src/cellar/wine.h: its folder is not in src/floors.txt")

    def test_a_listed_file_is_fine(self):
        self.write("src/core/vr.h", "\n")
        self.assert_clean("check_lists.py")

    def test_a_file_in_no_list_is_found(self):
        self.write("src/core/vr.h", "\n")
        self.write("src/core/forgotten.cpp", "\n")
        self.assert_found("check_lists.py", "src/core/forgotten.cpp: not in src/core/CMakeLists.txt")

    def test_a_name_in_a_comment_is_not_a_list(self):
        self.write("src/core/CMakeLists.txt", "tessaret_add_floor(core SOURCES vr.h)  # old.cpp\n")
        self.write("src/core/old.cpp", "\n")
        self.assert_found("check_lists.py", "src/core/old.cpp")

    def test_ordinary_words_are_fine(self):
        self.write("docs/notes.md", "Specific, unspecified, (0008,0005) Specific Character Set, an issue of trust.\n")
        self.assert_clean("check_words.py")

    def test_words_that_lead_out_of_the_project_are_found(self):
        for words in ("see the sp" + "ec", "as sp" + "ecified", "Pa" + "rt 1.3", "iss" + "ue #7", "/wo" + "rk/x", "TO" + "DO"):
            with self.subTest(words):
                self.write("docs/notes.md", f"First line.\n{words}\n")
                self.assert_found("check_words.py", "docs/notes.md:2:")

    def test_facts_from_outside_may_say_what_they_say(self):
        self.write("data/tables/elements.tsv", "00189810\tSp" + "ecification of something\n")
        self.assert_clean("check_words.py")


if __name__ == "__main__":
    unittest.main()
