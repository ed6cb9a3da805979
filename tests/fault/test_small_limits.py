"""The test programs and the tool in little room: 256 MiB of address space beyond what a program takes to start, and 256 KiB of stack.

What is left out has more than that in its hands before it begins.
"""

import concurrent.futures
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest

BIN = pathlib.Path(os.environ["TESSARET_BINARY_DIR"]) / "bin"
TOOL = os.environ["TESSARET_TOOL"]
CORPUS = pathlib.Path(os.path.normpath(pathlib.Path(os.environ["TESSARET_SOURCE_DIR"]) / ".." / "shared" / "dicom"))

MIB = 1 << 20
ROOM = 256 * MIB
STACK = 256 << 10

PROGRAMS = {
    "base_test": [],
    "platform_test": [],
    "core_object_test": ["DICOMObject.CopiesAndDestroysAMillionLevelsOnASmallStack"],
    "core_coding_test": [],
    "core_dictionary_test": [],
    "core_dump_test": [],
    "core_memory_test": [],
    "core_stream_test": ["MemoryBuffer.ABlockLongerThanInSizeCanCountIsReadToItsEnd"],
    "corpus_test": [],
    "tools_test": ["Escape.AHugeTextIsNotGoneThroughForAShortPiece"],
    "fault_file_test": ["BoundedCost.TenMillionEmptyElementsCostTheirRecords", "BoundedCost.AnUnknownValueOfAGibibyteCostsItself",
                        "BoundedCost.ABlockThatFailsLateCostsASmallMultipleOfItself", "BoundedCost.ALargeFileIsSavedInMegabytes",
                        "BoundedCost/Depth.*/10000000*"],
}
# Of a program of many tests that are alike or that take long, every fourth one or eighth.
SHARES = {"fault_file_test": 8, "core_coding_test": 4, "core_object_test": 4, "corpus_test": 4}


def limited(command, space, stdout=subprocess.PIPE, **environment):
    """The finished command, held to an address space and a small stack."""
    held = ["prlimit", f"--stack={STACK}", f"--as={space}", *map(str, command)]
    return subprocess.run(held, check=False, stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE,
                          env={**os.environ, **environment})


def least_space(command):
    """The least address space, to the MiB, in which a command that does next to nothing succeeds."""
    low, high = 1 * MIB, 1024 * MIB
    while high - low > MIB:
        middle = (low + high) // 2
        if limited(command, middle).returncode == 0:
            high = middle
        else:
            low = middle
    return high


class SmallLimits(unittest.TestCase):

    def failure_of(self, program):
        """What a test program says when it fails; empty when all is well."""
        path = BIN / program
        space = least_space([path, "--gtest_list_tests"]) + ROOM
        result = limited([path, "--gtest_brief=1", "--gtest_filter=-" + ":".join(PROGRAMS[program])], space,
                         GTEST_TOTAL_SHARDS=str(SHARES.get(program, 1)), GTEST_SHARD_INDEX="0")
        return "" if result.returncode == 0 else f"{program} in {space // MIB} MiB: " + (result.stdout + result.stderr).decode()[-3000:]

    def test_every_test_program_passes(self):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            self.assertEqual([words for words in pool.map(self.failure_of, PROGRAMS) if words], [])

    @unittest.skipUnless((CORPUS / "manifest.tsv").exists(), f"the real files of {CORPUS} are not here")
    def test_the_tool_says_of_real_files_what_it_says_in_more_room(self):
        space = least_space([TOOL, "dictionary", "0010,0010"]) + ROOM
        for command in ([TOOL, "check", "--json", CORPUS], [TOOL, "dump", "--json", CORPUS]):
            small = limited(command, space)
            large = subprocess.run(list(map(str, command)), check=False, capture_output=True, stdin=subprocess.DEVNULL)
            self.assertEqual(small.returncode, large.returncode, small.stderr[-2000:])
            self.assertEqual(small.stderr, large.stderr)
            without_summary = lambda output: [line for line in output.splitlines() if b'"seconds"' not in line]
            self.assertEqual(without_summary(small.stdout), without_summary(large.stdout))

    def test_the_tool_lists_many_deep_elements_as_it_walks(self):
        # A million lines of which each is set in by 250 levels: the text alone is larger than the room.
        opening = struct.pack("<HH2sHIHHI", 0x0008, 0x1140, b"SQ", 0, 0xFFFFFFFF, 0xFFFE, 0xE000, 0xFFFFFFFF)
        closing = struct.pack("<HHIHHI", 0xFFFE, 0xE00D, 0, 0xFFFE, 0xE0DD, 0)
        elements = b"".join(struct.pack("<HH2sH", 0x0009 + 2 * (number >> 16), number & 0xFFFF, b"LO", 0)
                            for number in range(1_000_000))
        space = least_space([TOOL, "dictionary", "0010,0010"]) + ROOM
        with tempfile.NamedTemporaryFile() as file:
            file.write(opening * 250 + elements + closing * 250)
            file.flush()
            for form in ("lines", "text"):
                command = [TOOL, "dump", "-q", "--format", form, file.name]
                result = limited(command, space, stdout=subprocess.DEVNULL)
                self.assertEqual((result.returncode, result.stderr), (0, b""), form)

    def test_long_values_are_printed_part_by_part(self):
        # As text they would take four times the room, and as texts one by one much more.
        length, space = 100_000_000, least_space([TOOL, "dictionary", "0010,0010"]) + ROOM
        with tempfile.NamedTemporaryFile() as file:
            syntax = struct.pack("<HH2sH", 0x0002, 0x0010, b"UI", 20) + b"1.2.840.10008.1.2.1\0"
            file.write(bytes(128) + b"DICM" + struct.pack("<HH2sHI", 0x0002, 0x0000, b"UL", 4, len(syntax)) + syntax)
            file.write(struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OW", 0, length))
            file.truncate(file.tell() + length)
            file.flush()
            for command in (["get", file.name, "PixelData"], ["get", "--type", "US", file.name, "PixelData"],
                            ["get", "--type", "UL", "--index", "7", file.name, "PixelData"], ["dump", "--long", file.name]):
                result = limited([TOOL, *command], space, stdout=subprocess.DEVNULL)
                self.assertEqual((result.returncode, result.stderr), (0, b""), command)

    def test_many_values_are_printed_one_by_one(self):
        # Together they would take more than thirty times their bytes, and control characters six times as JSON.
        values, controls, space = 10_000_000, 20_000_000, least_space([TOOL, "dictionary", "0010,0010"]) + ROOM
        implicit = lambda group, number, value: struct.pack("<HHI", group, number, len(value)) + value
        syntax = struct.pack("<HH2sH", 0x0002, 0x0010, b"UI", 18) + b"1.2.840.10008.1.2\0"
        start = bytes(128) + b"DICM" + struct.pack("<HH2sHI", 0x0002, 0x0000, b"UL", 4, len(syntax)) + syntax
        patient, report, model = implicit(0x0010, 0x0020, b"\\" * values), ["dump", "--json"], ["dump", "--format", "json"]
        for content, commands in ((patient, (["get"], ["get", "--json"], report, model)),
                                  (implicit(0x0008, 0x0005, b"ISO_IR 100") + patient, (["get"], ["get", "--index", "3"], model)),
                                  (implicit(0x0010, 0x4000, b"\1" * controls), (model,))):
            with tempfile.NamedTemporaryFile() as file:
                file.write(start + content)
                file.flush()
                for command in commands:
                    tags = ["PatientID"] if "get" in command else []
                    result = limited([TOOL, *command, file.name, *tags], space, stdout=subprocess.DEVNULL)
                    self.assertEqual((result.returncode, result.stderr), (0, b""), command)

    def test_the_model_of_deep_items_needs_no_deep_stack(self):
        opening = struct.pack("<HH2sHIHHI", 0x0008, 0x1140, b"SQ", 0, 0xFFFFFFFF, 0xFFFE, 0xE000, 0xFFFFFFFF)
        closing = struct.pack("<HHIHHI", 0xFFFE, 0xE00D, 0, 0xFFFE, 0xE0DD, 0)
        name = struct.pack("<HH2sH", 0x0010, 0x0010, b"PN", 8) + b"Low^Down"
        with tempfile.NamedTemporaryFile() as file:
            file.write(opening * 250 + name + closing * 250)
            file.flush()
            command = [TOOL, "dump", "-q", "--format", "json", file.name]
            result = limited(command, least_space([TOOL, "dictionary", "0010,0010"]) + ROOM)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertIn(b'"Alphabetic":"Low^Down"', result.stdout.replace(b" ", b""))


if __name__ == "__main__":
    unittest.main()
