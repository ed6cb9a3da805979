"""Files as our library and independent programs see them, in one form that can be compared.

A view of a file is a list of elements, those of items included, in the order of their tags. Each has a path such as
"(0008,1140)[0](0008,1150)", the two letters of its type (None where they do not stand in the file) and its bytes, or
for dcmdump its text. Sequences and items have no value. Fragments of encapsulated pixel data are items with one
element (fffe,e000).
"""

import hashlib
import itertools
import os
import re
import struct
import subprocess
import warnings
from collections import namedtuple
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pydicom
from pydicom.datadict import dictionary_VR
from pydicom.dataelem import RawDataElement
from pydicom.tag import ItemTag

PEER = Path(os.environ["TESSARET_BINARY_DIR"]) / "tests" / "interop" / "interop_peer"
AT_ONCE = 2  # processes
BATCH = 40  # files a process
SHOWN_WHOLE = 32  # bytes of a value that stand for themselves; of a longer one the digest does

IMPLICIT_LITTLE = "1.2.840.10008.1.2"
EXPLICIT_LITTLE = "1.2.840.10008.1.2.1"
EXPLICIT_BIG = "1.2.840.10008.1.2.2"

Element = namedtuple("Element", "path vr value")


def digest(value):
    return value.hex() if len(value) <= SHOWN_WHOLE else hashlib.sha256(value).hexdigest()


def with_digests(view):
    return [element._replace(value=None if element.value is None else digest(element.value)) for element in view]


def run_all(commands):
    """Runs commands, a few at a time, and returns their results in order."""

    def run(command):
        return subprocess.run([str(word) for word in command], capture_output=True, check=False)

    with ThreadPoolExecutor(AT_ONCE) as pool:
        return list(pool.map(run, commands))


def in_batches(command, arguments):
    """Runs `command` with some of `arguments` at a time, each a tuple."""
    batches = [arguments[at : at + BATCH] for at in range(0, len(arguments), BATCH)]
    return run_all([command + [word for words in batch for word in words] for batch in batches])


def top_tag(element):
    return element.path[:11]


# --- our library ---------------------------------------------------------------------------------------------------


def ask_library(verb, arguments):
    """The outputs of the library's program. Throws when it failed, with its words."""
    results = in_batches([PEER, *verb], arguments)
    for result in results:
        if result.returncode != 0:
            words = result.stderr.decode(errors="replace")
            raise RuntimeError(f"{PEER} {verb} ended with {result.returncode}: {words}")
    return [result.stdout.decode() for result in results]


def resave(pairs, syntax="same"):
    """Loads and saves each (from, to), in the transfer syntax `syntax`."""
    ask_library(["resave", syntax], pairs)


def our_views(paths, verb="list"):
    """{path: [Element]}, with digests for values; of a file that could be read in part the elements of this part. With
    the verb "list-little" numbers are little endian whatever the file has."""
    views = {}
    for output in ask_library([verb], [(path,) for path in paths]):
        for line in output.split("\n")[:-1]:
            kind, path, *fields = line.split("\t")
            if kind == "file":
                elements = views.setdefault(Path(path), [])
            else:
                elements.append(Element(path, fields[0], None if kind == "sequence" else fields[1]))
    return views


# --- pydicom -------------------------------------------------------------------------------------------------------


def pydicom_view(path):
    """[Element] with the bytes as they stand in the file, or None where pydicom cannot read it."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # about values of the files
        try:
            dataset = pydicom.dcmread(path, force=True)
            meta = walk(dataset.file_meta, "", False, "<")
            data = walk(dataset, "", dataset.is_implicit_VR, "<" if dataset.is_little_endian else ">")
            return sorted([*meta, *data], key=top_tag)
        except Exception:  # there is no common class for what pydicom does not like
            return None


def walk(dataset, before, implicit, order):
    for tag in sorted(dataset.keys()):
        path = f"{before}({tag.group:04x},{tag.element:04x})"
        element = dataset.get_item(tag)
        # What pydicom has worked on may have another type by now than in the file.
        vr = element.VR if isinstance(element, RawDataElement) and not implicit else None
        if is_sequence(element):
            yield Element(path, None if implicit else "SQ", None)
            for number, item in enumerate(dataset[tag].value):
                yield from walk(item, f"{path}[{number}]", implicit, order)
        elif tag == 0x7FE00010 and element.length == 0xFFFFFFFF:
            yield Element(path, vr, None)
            for number, fragment in enumerate(fragments(element.value)):
                yield Element(f"{path}[{number}](fffe,e000)", None, fragment)
        else:
            yield Element(path, vr, bytes_of(element, order))


def bytes_of(element, order):
    """The bytes as read. Where pydicom used a value for itself while reading, such as the character set, those it
    stands for."""
    value = element.value
    if isinstance(value, int):
        return struct.pack(order + ("I" if element.VR in ("UL", "up") else "H"), value)
    if isinstance(value, pydicom.multival.MultiValue):
        value = "\\".join(value)
    if isinstance(value, str):
        padding = b"\0" if element.VR == "UI" else b" "
        return value.encode() + padding * (len(value) % 2)
    return value or b""


def is_sequence(element):
    if element.VR is not None or not isinstance(element, RawDataElement):
        return element.VR == "SQ"
    return known_vr(element.tag) == "SQ"


def known_vr(tag):
    """What the standard says of a tag, such as "US or SS"; empty for a tag that pydicom does not know."""
    try:
        return dictionary_VR(tag)
    except KeyError:
        return ""


def fragments(value):
    at = 0
    while at + 8 <= len(value):
        group, element, length = struct.unpack_from("<HHI", value, at)
        if group << 16 | element != ItemTag:
            return
        yield value[at + 8 : at + 8 + length]
        at += 8 + length


# --- dcmdump -------------------------------------------------------------------------------------------------------

# Values as they are: not corrected, UIDs as numbers, control characters quoted, not cut. What is longer than 4 kB is
# not shown; pydicom looks at those.
DCMDUMP = ["dcmdump", "-q", "-dc", "-Un", "+Qo", "+L", "-M", "+R", "4", "+F"]
FILE_LINE = re.compile(r"# dcmdump \(\d+/\d+\): (.*)")
ELEMENT_LINE = re.compile(r"( *)(\([0-9a-f]{4},[0-9a-f]{4}\)) (..) (.*?) *# +(?:u/l|\d+), *\d+ \S.*")


def dcmdump_views(paths):
    """{path: [Element]} with the text of each value; empty for a file that dcmdump refuses."""
    views = {}
    for result in in_batches(DCMDUMP, [(path,) for path in paths]):
        for line in result.stdout.decode("latin-1").split("\n"):
            if header := FILE_LINE.fullmatch(line):
                level = Level(views.setdefault(Path(header[1]), []))
            elif found := ELEMENT_LINE.fullmatch(line):
                level.add(len(found[1]) // 2, found[2], found[3], found[4])
    return {path: sorted(view, key=top_tag) for path, view in views.items()}


class Level:
    """Turns the indented lines of dcmdump into paths."""

    def __init__(self, elements):
        self.elements = elements
        self.above = [("", None)]  # of the elements and items around a line: the path, and a counter of items

    def add(self, depth, tag, vr, text):
        if tag in ("(fffe,e00d)", "(fffe,e0dd)"):
            return
        del self.above[depth + 1 :]
        before, items = self.above[-1]
        if tag == "(fffe,e000)":
            path = f"{before}[{next(items)}]"
            if vr == "pi":
                self.elements.append(Element(path + tag, None, text))
        else:
            path = before + tag
            sequence = text.startswith(("(Sequence with", "(PixelSequence"))
            self.elements.append(Element(path, vr, None if sequence else text))
        self.above.append((path, itertools.count()))
