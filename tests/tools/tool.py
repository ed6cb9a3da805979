"""What the tests of the command line tool share: running it, making DICOM files by hand, reading them with other programs.

Files are made here byte by byte, so that what the tool does is judged by something else.
"""

import os
import pathlib
import pty
import re
import select
import struct
import subprocess
import tempfile
import unittest

TOOL = os.environ["TESSARET_TOOL"]
BINARY_DIR = pathlib.Path(os.environ["TESSARET_BINARY_DIR"])
SOURCE_DIR = pathlib.Path(os.environ["TESSARET_SOURCE_DIR"])
INSTRUMENTED = bool(os.environ.get("TESSARET_SANITIZE"))
CORPUS = pathlib.Path(os.path.normpath(SOURCE_DIR / ".." / "shared" / "dicom"))

IMPLICIT = "1.2.840.10008.1.2"
EXPLICIT = "1.2.840.10008.1.2.1"
BIG_ENDIAN = "1.2.840.10008.1.2.2"
JPEG = "1.2.840.10008.1.2.4.50"
MPEG = "1.2.840.10008.1.2.4.100"  # known, and without a codec

LONG_FORMS = ("OB", "OD", "OF", "OL", "OV", "OW", "SQ", "SV", "UC", "UN", "UR", "UT", "UV")
UNDEFINED = 0xFFFFFFFF

DONE, INPUT_FAILED, USAGE, OUTPUT_FAILED, INTERRUPTED, TERMINATED = 0, 1, 2, 5, 130, 143


def run(*arguments, **options):
    """The finished tool; its output as bytes."""
    options.setdefault("timeout", 300)
    options.setdefault("stdin", subprocess.DEVNULL)
    if "input" in options:
        del options["stdin"]
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    return subprocess.run([TOOL, *map(str, arguments)], check=False, **options)


def on_terminal(*arguments, environment=None, streams=("stdout", "stderr")):
    """What the tool writes to a terminal, and its exit code."""
    leader, follower = pty.openpty()
    settings = {**os.environ, "TERM": "xterm", **(environment or {})}
    settings = {name: value for name, value in settings.items() if value is not None}
    chosen = {name: follower if name in streams else subprocess.DEVNULL for name in ("stdout", "stderr")}
    with subprocess.Popen([TOOL, *map(str, arguments)], stdin=subprocess.DEVNULL, env=settings, **chosen) as process:
        os.close(follower)
        written = b""
        while True:
            select.select([leader], [], [], 60)
            try:
                portion = os.read(leader, 65536)
            except OSError:  # how a terminal says that nobody writes any more
                break
            if not portion:
                break
            written += portion
        os.close(leader)
    return written.replace(b"\r\n", b"\n"), process.returncode


def element(tag, vr, value=b"", implicit=False, order="<", length=None):
    """One data element; the value is padded to an even length unless a length is given."""
    if isinstance(value, str):
        value = value.encode()
    if length is None:
        if len(value) % 2:
            value += b"\0" if vr in ("UI", "OB", "UN") else b" "
        length = len(value)
    head = struct.pack(order + "HH", tag >> 16, tag & 0xFFFF)
    if implicit:
        head += struct.pack(order + "I", length)
    elif vr in LONG_FORMS:
        head += vr.encode() + b"\0\0" + struct.pack(order + "I", length)
    else:
        head += vr.encode() + struct.pack(order + "H", length)
    return head + value


def item(content, order="<", defined=True):
    head = struct.pack(order + "HH", 0xFFFE, 0xE000)
    if defined:
        return head + struct.pack(order + "I", len(content)) + content
    return head + struct.pack(order + "I", UNDEFINED) + content + struct.pack(order + "HHI", 0xFFFE, 0xE00D, 0)


def sequence_end(order="<"):
    return struct.pack(order + "HHI", 0xFFFE, 0xE0DD, 0)


def meta(syntax, *more):
    """Preamble, mark and meta header."""
    rest = element(0x00020001, "OB", b"\0\1") + element(0x00020010, "UI", syntax) + b"".join(more)
    rest += element(0x00020012, "UI", "1.2.3")
    return bytes(128) + b"DICM" + element(0x00020000, "UL", struct.pack("<I", len(rest))) + rest


def image(rows=2, columns=3, implicit=False, order="<", pixels=None):
    """A data set with a name and 16-bit pixels that count from 1."""
    if pixels is None:
        pixels = struct.pack(order + f"{rows * columns}H", *(number % 65536 for number in range(1, rows * columns + 1)))
    number = lambda tag, value: element(tag, "US", struct.pack(order + "H", value), implicit, order)
    text = lambda tag, vr, value: element(tag, vr, value, implicit, order)
    return b"".join((
        text(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.7"), text(0x00080018, "UI", "1.2.3.4"),
        text(0x00100010, "PN", "Doe^John"), number(0x00280002, 1), text(0x00280004, "CS", "MONOCHROME2"),
        number(0x00280010, rows), number(0x00280011, columns), number(0x00280100, 16), number(0x00280101, 16),
        number(0x00280102, 15), number(0x00280103, 0), element(0x7FE00010, "OW", pixels, implicit, order)))


class ToolTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def path(self, name):
        return self.folder / name

    def write(self, name, content):
        path = self.path(name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def good_file(self, name="good.dcm"):
        return self.write(name, meta(EXPLICIT) + image())

    def assert_ends(self, result, code, error=None):
        self.assertEqual(result.returncode, code, (result.stdout or b"")[-2000:] + (result.stderr or b"")[-2000:])
        if error is not None:
            self.assertEqual(result.stderr.decode(), error)

    def assert_no_leftovers(self, folder=None):
        """No temporary file stays."""
        left = [str(path) for path in (folder or self.folder).rglob("*") if ".tessaret-" in path.name]
        self.assertEqual(left, [])


def needs_corpus(test):
    return unittest.skipUnless((CORPUS / "manifest.tsv").exists(), f"the real files of {CORPUS} are not here")(test)


# Under the sanitizers the tool takes ten times as long to start: what repeats itself does so less often. Tests in C++ go through every
# real file there, so what starts the tool for each takes a few.
SHARE = 4 if INSTRUMENTED else 1
FILE_SHARE = 16 if INSTRUMENTED else 1


def corpus_sample():
    """The rows of the manifest for which the tool is started."""
    return list(corpus_rows())[::FILE_SHARE]


def corpus_rows():
    """The manifest as dictionaries, each with "file", the path."""
    lines = (CORPUS / "manifest.tsv").read_text().splitlines()
    names = lines[0].split("\t")
    for line in lines[1:]:
        row = dict(zip(names, line.split("\t")))
        row["file"] = CORPUS.parent / row["path"]
        yield row


LINE = re.compile(rb"^( *)\(([0-9a-f]{4},[0-9a-f]{4})\) (\S\S) (.*) # (u/l|-|\s*\d+), *(\d+) (.*)$", re.S)


def lines_of(listing):
    """(indent, tag, VR, value, length, multiplicity, description) of each line of a listing, ours or that of dcmdump."""
    rows = []
    # A value of several lines goes on without the head of an element.
    for line in re.split(rb"\n(?= *\([0-9a-f]{4},|\n|#|$)", listing):
        match = LINE.match(line)
        if match:
            indent, tag, vr, value, length, multiplicity, description = match.groups()
            rows.append((len(indent), tag.decode(), vr.decode("latin-1"), value.rstrip(), length.strip().decode(),
                         int(multiplicity), description.decode("latin-1")))
    return rows


def dcmdump(path, *options):
    """The listing of the independent program."""
    return subprocess.run(["dcmdump", "-q", "+L", "-Un", *options, str(path)], check=True, capture_output=True).stdout
