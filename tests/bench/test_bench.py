"""The measuring program: its input as an independent reader sees it, and every job once on it."""

import contextlib
import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

import pydicom
import pydicom.encaps

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tools"))

from pdu_link import free_port

BUILD = pathlib.Path(os.environ["TESSARET_BINARY_DIR"])
PROGRAM = BUILD / "bin" / "tessaret-bench"
CODEC_LIBRARY = BUILD / "lib" / "DcmCodec.dll"

# The short input: slices of the series, small files, and regions with contours. A contour holds 93 attributes, the sequence
# of its image with 2 elements, and 5 attributes; a region 2 attributes and the sequence of contours; the data set 12
# attributes and the sequence of regions.
SLICES = 8
TINY_FILES = 20
MANY_ELEMENTS = 12 + 1 + 2 * (2 + 1 + 5 * (93 + 1 + 2 + 5))

IO_JOBS = (
    [f"io.big.{what}" for what in ("load", "header", "save", "roundtrip")]
    + [f"io.{what}.{how}" for what in ("ct400e", "ct400i", "tiny") for how in ("load", "header")]
    + [f"io.{what}.{how}" for what in ("manye", "manyi", "manyd") for how in ("load", "free", "save", "roundtrip")]
)
# The folder of what each method compresses, and its transfer syntax.
METHODS = {
    "rle": ("CTRLE", "1.2.840.10008.1.2.5"),
    "jpll": ("CTJPLL", "1.2.840.10008.1.2.4.70"),
    "jpls": ("CTJPLS", "1.2.840.10008.1.2.4.80"),
    "j2k": ("CTJ2K", "1.2.840.10008.1.2.4.90"),
    "jpeg": ("CTJPEG", "1.2.840.10008.1.2.4.50"),
    "jpegext": ("CTJPEGX", "1.2.840.10008.1.2.4.51"),
}
BYTE_METHODS = ("jpeg",)
LOSSLESS_METHODS = ("rle", "jpll", "jpls", "j2k")
CODEC_JOBS = [f"codec.{method}.{what}" for method in METHODS for what in ("decode", "encode")] + [
    f"codec.{method}.decode.all" for method in LOSSLESS_METHODS]
OWN_JOBS = [f"own.dictionary.{what}" for what in ("lookup", "text", "binary")] + [
    f"own.object.{what}" for what in ("create", "get", "getbyname", "threads")]

NET_JOBS = [f"net.store.{series}.{where}{how}" for series in ("ct400e", "tiny") for where in ("null", "disk")
            for how in ("", ".mem")] + ["net.echo", "net.assoc"]


def codecs_at_hand(folder):
    """The methods of the codec library of this build; what it has no coder for is neither made nor measured."""
    return [method for method in METHODS if (folder / METHODS[method][0]).exists()]


def some_samples(series):
    """Every 97th sample of native images of 16 bits."""
    return [int.from_bytes(image.PixelData[2 * at:2 * at + 2], "little")
            for image in series for at in range(0, image.Rows * image.Columns, 97)]


def count_elements(dataset):
    return sum(1 + sum(map(count_elements, element.value if element.VR == "SQ" else ())) for element in dataset)


class Bench(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.input = pathlib.Path(folder.name) / "input"
        cls.scratch = pathlib.Path(folder.name) / "scratch"
        cls.scratch.mkdir()
        made = cls.program("make", cls.input, "--short")
        assert made.returncode == 0, made.stderr
        cls.start_node()

    @classmethod
    def start_node(cls):
        """A node of this program for the jobs of the network."""
        cls.port = str(free_port())
        node = subprocess.Popen([PROGRAM, "scp", cls.port, "null", cls.scratch], stderr=subprocess.DEVNULL)
        cls.addClassCleanup(node.wait)
        cls.addClassCleanup(node.kill)
        for _ in range(200):
            with contextlib.suppress(OSError):
                socket.create_connection(("127.0.0.1", int(cls.port))).close()
                return
            time.sleep(0.05)
        raise AssertionError("the node does not answer")

    @staticmethod
    def program(*arguments, **environment):
        return subprocess.run([PROGRAM, *arguments], env={**os.environ, **environment}, capture_output=True, text=True,
                              check=False)

    def measure(self, job, repetitions="1", budget="0.05"):
        port = [self.port] if job.startswith("net.") else []
        result = self.program(job, self.input, self.scratch, *port, BENCH_REPS=repetitions, BENCH_BUDGET=budget)
        self.assertEqual(result.returncode, 0, result.stderr)
        return [json.loads(line) for line in result.stdout.splitlines()]

    def check_of(self, job):
        return self.measure(job)[0]["check"]

    def files(self, name):
        return sorted((self.input / name).iterdir())

    def test_lists_each_job_once(self):
        listed = self.program("list").stdout.split()
        self.assertCountEqual(listed, IO_JOBS + OWN_JOBS + CODEC_JOBS + NET_JOBS)

    def test_every_job_prints_its_measures_and_leaves_nothing_behind(self):
        for job in self.program("list").stdout.split():
            if job.startswith("codec.") and job.split(".")[1] not in codecs_at_hand(self.input):
                continue
            with self.subTest(job=job):
                for row in self.measure(job):
                    self.assertTrue(row["job"].startswith(job))
                    self.assertEqual(row["peer"], "tessaret")
                    self.assertIn(row["unit"], ("s", "ns"))
                    self.assertTrue(all(sample > 0 for sample in row["samples"]))
                    self.assertGreater(row["peak_kib"], 0)
                self.assertEqual(list(self.scratch.iterdir()), [])

    def test_does_the_jobs_of_the_network_with_a_port_only(self):
        for job in NET_JOBS:
            with self.subTest(job=job):
                self.assertEqual(self.program(job, self.input, self.scratch).returncode, 77)

    def test_keeps_what_a_node_receives_where_it_is_to(self):
        received = self.scratch / "received"
        received.mkdir()
        port = str(free_port())
        node = subprocess.Popen([PROGRAM, "scp", port, "disk", received], stderr=subprocess.DEVNULL)
        try:
            for _ in range(200):
                sent = self.program("net.store.tiny.disk", self.input, self.scratch, port, BENCH_REPS="1", BENCH_BUDGET="0")
                if sent.returncode == 0:
                    break
                time.sleep(0.05)
            self.assertEqual(sent.returncode, 0, sent.stderr)
            self.assertEqual({pydicom.dcmread(path).SOPInstanceUID for path in received.iterdir()},
                             {pydicom.dcmread(path).SOPInstanceUID for path in self.files("TINY")})
        finally:
            node.kill()
            node.wait()
            shutil.rmtree(received)

    def test_takes_as_many_samples_as_the_environment_wants(self):
        self.assertEqual(len(self.measure("io.big.header", repetitions="7", budget="20")[0]["samples"]), 7)

    def test_takes_one_sample_where_the_budget_is_used_up(self):
        self.assertEqual(len(self.measure("io.manye.load", repetitions="7", budget="0")[0]["samples"]), 1)

    def test_makes_all_forms_of_the_many_elements_alike(self):
        for name in ("MANYE", "MANYI", "MANYD"):
            with self.subTest(name=name):
                self.assertEqual(count_elements(pydicom.dcmread(self.input / name)), MANY_ELEMENTS)
                self.assertEqual(self.check_of(f"io.{name.lower()}.load"), MANY_ELEMENTS)

    def test_states_the_lengths_of_sequences_in_one_form_only(self):
        for name, undefined in (("MANYE", True), ("MANYI", True), ("MANYD", False)):
            with self.subTest(name=name):
                sequence = pydicom.dcmread(self.input / name)[0x3006, 0x0039]
                self.assertEqual(sequence.is_undefined_length, undefined)
                self.assertEqual(sequence.value[0].is_undefined_length_sequence_item, undefined)

    def test_writes_the_elements_again_that_it_has_read(self):
        for name in ("MANYE", "MANYI"):
            with self.subTest(name=name):
                self.assertEqual(self.check_of(f"io.{name.lower()}.save"), (self.input / name).stat().st_size)
                self.assertEqual(self.check_of(f"io.{name.lower()}.roundtrip"), (self.input / name).stat().st_size)

    def test_counts_the_pixel_data_of_a_load_and_not_of_a_header(self):
        elements = count_elements(pydicom.dcmread(self.input / "BIG"))
        self.assertEqual(self.check_of("io.big.load"), elements)
        self.assertEqual(self.check_of("io.big.header"), elements - 1)

    def test_makes_series_of_files_that_differ_in_their_place(self):
        for name, count in (("CT400E", SLICES), ("CT400I", SLICES), ("TINY", TINY_FILES)):
            with self.subTest(name=name):
                instances = [pydicom.dcmread(path) for path in self.files(name)]
                self.assertEqual(len({instance.SOPInstanceUID for instance in instances}), count)
                self.assertEqual(sorted(instance.InstanceNumber for instance in instances), list(range(1, count + 1)))
                self.assertEqual(len({instance.SliceLocation for instance in instances}), count)
                self.assertEqual(len({instance.SeriesInstanceUID for instance in instances}), 1)

    def test_makes_the_pixels_of_a_series_those_of_the_multi_frame_file(self):
        frames = pydicom.dcmread(self.input / "BIG").PixelData
        slices = sorted((pydicom.dcmread(path) for path in self.files("CT400I")), key=lambda ct: ct.InstanceNumber)
        self.assertEqual(b"".join(ct.PixelData for ct in slices), frames)

    def test_asks_each_file_for_its_uid(self):
        for name in ("CT400E", "CT400I", "TINY"):
            letters = sum(len(pydicom.dcmread(path).SOPInstanceUID) for path in self.files(name))
            for how in ("load", "header"):
                with self.subTest(name=name, how=how):
                    self.assertEqual(self.check_of(f"io.{name.lower()}.{how}"), letters)

    def test_finds_every_known_tag_in_either_form_of_the_dictionary(self):
        known, _ = self.measure("own.dictionary.lookup")
        self.assertEqual(known["check"], 65536)
        self.assertEqual(self.check_of("own.dictionary.binary"), self.check_of("own.dictionary.text"))

    @unittest.skipUnless(CODEC_LIBRARY.exists(), "no codec library in this build")
    def test_compresses_every_fourth_file_of_the_series_by_each_codec_at_hand(self):
        self.assertIn("rle", codecs_at_hand(self.input))
        for method in codecs_at_hand(self.input):
            folder, syntax = METHODS[method]
            with self.subTest(method=method):
                self.assertEqual([path.name for path in self.files(folder)],
                                 [path.name for path in self.files("CT400E")[::4]])
                for path in self.files(folder):
                    image = pydicom.dcmread(path)
                    self.assertEqual(image.file_meta.TransferSyntaxUID, syntax)
                    self.assertEqual(image.BitsAllocated, 8 if method in BYTE_METHODS else 16)

    @unittest.skipUnless(CODEC_LIBRARY.exists(), "no codec library in this build")
    def test_decodes_the_pixels_of_the_series_again(self):
        native = sum(some_samples(pydicom.dcmread(path) for path in self.files("CT400E")[::4]))
        for method in set(LOSSLESS_METHODS).intersection(codecs_at_hand(self.input)):
            for job in (f"codec.{method}.decode", f"codec.{method}.decode.all"):
                with self.subTest(job=job):
                    self.assertEqual(self.check_of(job), native)

    @unittest.skipUnless(CODEC_LIBRARY.exists(), "no codec library in this build")
    def test_decodes_on_average_the_pixels_that_went_into_lossy_methods(self):
        native = some_samples(pydicom.dcmread(path) for path in self.files("CT400E")[::4])
        for method in set(METHODS).difference(LOSSLESS_METHODS).intersection(codecs_at_hand(self.input)):
            # The upper 8 of 12 bits where the method takes bytes. Few samples of a small image with noise: a mean of 25 may be 2 off.
            expected = [sample >> 4 for sample in native] if method in BYTE_METHODS else native
            tolerance = 4 if method in BYTE_METHODS else 64
            with self.subTest(method=method):
                self.assertAlmostEqual(self.check_of(f"codec.{method}.decode") / len(native),
                                       sum(expected) / len(native), delta=tolerance)

    @unittest.skipUnless(CODEC_LIBRARY.exists(), "no codec library in this build")
    def test_tells_the_bytes_of_pixels_natively_and_the_bytes_that_an_encoder_makes(self):
        for method in codecs_at_hand(self.input):
            with self.subTest(method=method):
                made = [pydicom.dcmread(path) for path in self.files(METHODS[method][0])]
                row, = self.measure(f"codec.{method}.encode")
                self.assertEqual(row["items"], len(made))
                self.assertEqual(row["bytes"], sum(image.Rows * image.Columns * image.BitsAllocated // 8
                                                   for image in made))
                fragments = [pydicom.encaps.decode_data_sequence(image.PixelData) for image in made]
                self.assertEqual(row["check"], sum(len(fragment) for each in fragments for fragment in each))

    def test_ends_with_77_where_a_codec_is_missing(self):
        with tempfile.TemporaryDirectory() as folder:
            program = pathlib.Path(folder) / "tessaret-bench"
            shutil.copy(PROGRAM, program)
            result = subprocess.run([program, "codec.rle.encode", self.input, self.scratch],
                                    env={**os.environ, "TESSARET_DATA_DIR": str(BUILD / "share" / "tessaret")},
                                    capture_output=True, text=True, check=False)
            self.assertEqual(result.returncode, 77, result.stderr)
            self.assertIn("rle", result.stderr)

    def test_leaves_input_alone_that_is_whole(self):
        before = {path: path.stat().st_mtime_ns for path in self.input.rglob("*")}
        self.assertEqual(self.program("make", self.input, "--short").returncode, 0)
        self.assertEqual({path: path.stat().st_mtime_ns for path in self.input.rglob("*")}, before)

    def test_makes_input_again_that_was_left_half_done(self):
        with tempfile.TemporaryDirectory() as folder:
            input_folder = pathlib.Path(folder)
            (input_folder / "TINY").mkdir()
            (input_folder / "TINY" / "left over").touch()
            self.assertEqual(self.program("make", input_folder, "--short").returncode, 0)
            self.assertEqual(len(list((input_folder / "TINY").iterdir())), TINY_FILES)

    def test_ends_with_77_for_a_job_of_another_program(self):
        self.assertEqual(self.program("net.echo", self.input, self.scratch).returncode, 77)

    def test_ends_with_1_and_words_where_the_input_is_missing(self):
        result = self.program("io.big.load", self.scratch, self.scratch)
        self.assertEqual(result.returncode, 1)
        self.assertIn("BIG", result.stderr)

    def test_ends_with_2_for_arguments_that_it_does_not_know(self):
        for arguments in ((), ("make",), ("make", self.input, "--long"), ("io.big.load",)):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.program(*arguments).returncode, 2)


if __name__ == "__main__":
    unittest.main()
