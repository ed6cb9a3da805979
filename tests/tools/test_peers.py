"""The listing of tessaret dump beside that of dcmdump, an independent program: tags, types, values, lengths and counts."""

import concurrent.futures
import re
import struct
import unittest

import tool
from tool import DONE, IMPLICIT, run

# What dcmdump calls types that it leaves open.
OPEN_TYPES = {"xs": ("US", "SS"), "ox": ("OB", "OW"), "px": ("OB", "OW"), "lt": ("OW", "US", "SS"), "up": ("UL",), "??": ("UN",)}
FLOATS = ("FL", "FD", "OF", "OD")


def bytes_of(value):
    """Hexadecimal numbers between backslashes as bytes; those of 16 bits are little endian."""
    words = [word for word in value.split(b"\\") if re.fullmatch(rb"[0-9a-f]+", word)]
    return b"".join(bytes.fromhex(word.decode())[::-1] for word in words)


def without_name(value):
    """A UID without the name behind it."""
    return re.sub(rb"\] =\S*$", b"]", value)


def same_value(vr, ours, theirs, their_vr):
    if b"no value" in theirs or b"not loaded" in theirs:
        return True  # some say so of blanks only, others do not load what is long
    if vr == "SQ" or theirs.startswith(b"("):
        return ours.split(b"#")[-1] == theirs.split(b"#")[-1]
    if their_vr in ("OB", "OW", "ox", "px", "lt", "pi", "UN", "??") and vr not in ("US", "SS", "LO"):
        length = len(bytes_of(ours.replace(b"\\...", b"")))
        return bytes_of(ours.replace(b"\\...", b"")) == bytes_of(theirs)[:length]
    if vr in FLOATS:
        pairs = zip(ours.split(b"\\"), theirs.split(b"\\"))
        pairs = [(float(mine), float(other)) for mine, other in pairs if mine != b"..."]
        if vr in ("FL", "OF"):
            pairs = [tuple(struct.unpack("<f", struct.pack("<f", number))[0] for number in pair) for pair in pairs]
        # dcmdump rounds the last of 17 digits in its own way.
        return all(abs(mine - other) <= 4e-16 * abs(other) for mine, other in pairs)
    if ours.startswith(b"["):
        ours, theirs = without_name(ours)[1:-1], theirs[1:-1]
        if not theirs.isascii() or not theirs.replace(b" ", b"").isalnum() and re.search(rb"[^ -~]", theirs):
            return True  # written differently on purpose
        return theirs.rstrip().startswith(ours[:-3]) if ours.endswith(b"...") else ours.rstrip() == theirs.rstrip()
    return theirs.startswith(ours.replace(b"\\...", b""))


class Dumps(tool.ToolTest):
    maxDiff = None

    def rows(self, listing):
        """The elements of a listing, without those of the meta header, which dcmdump makes up where it is missing, and without
        zeros behind the data set."""
        return [row for row in tool.lines_of(listing) if row[2] != "na" and not row[1].startswith(("0000", "0002"))]

    def differences(self, path, implicit):
        """What differs between the listings of a file."""
        ours = self.rows(run("dump", "-q", path).stdout)
        theirs = self.rows(tool.dcmdump(path, "-M"))
        if [row[:2] for row in ours] != [row[:2] for row in theirs]:
            both = list(zip(ours, theirs))
            return [next(((mine[:3], other[:3]) for mine, other in both if mine[:2] != other[:2]), (len(ours), len(theirs)))]
        found = []
        for (_, tag, vr, value, length, multiplicity, _), (_, _, other_vr, other_value, other_length, other_multiplicity, _) \
                in zip(ours, theirs):
            private = int(tag[:4], 16) % 2 == 1
            if implicit and (private and vr == "UN" or (vr, other_vr) == ("US", "SS")):
                continue  # they have a dictionary of private elements, and go by the sign of the pixels
            fragments = other_value.startswith(b"(PixelSequence")  # always OB for dcmdump, whatever the file says
            if vr != other_vr and vr not in OPEN_TYPES.get(other_vr, ()) and not fragments:
                found.append((tag, "type", vr, other_vr))
            if not same_value(vr, value, other_value, other_vr):
                found.append((tag, "value", value, other_value[:100]))
            if length != other_length and "u/l" not in (length, other_length):
                found.append((tag, "length", length, other_length))
            if multiplicity != other_multiplicity and b"no value" not in other_value and other_value.isascii():
                found.append((tag, "count", multiplicity, other_multiplicity))
        return found

    def compare(self, row):
        return [(row["path"], *difference) for difference in
                self.differences(row["file"], (row["transfer_syntax"] or IMPLICIT) == IMPLICIT)]

    @tool.needs_corpus
    def test_real_files(self):
        rows = [row for row in tool.corpus_sample()
                if not row["path"].startswith("dicom/broken/") and run("check", "-q", row["file"]).returncode == DONE]
        self.assertGreater(len(rows), 380 // tool.FILE_SHARE)
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            found = [difference for differences in pool.map(self.compare, rows) for difference in differences]
        self.assertEqual(found, [])

    def test_phantoms(self):
        for kind in ("ct", "mr", "multiframe", "rgb", "palette", "mono1"):
            place = self.path(kind)
            self.assert_ends(run("phantom", "--kind", kind, "--size", 16, "--slices", 2, "--oblique", place), DONE, "")
            for file in sorted(place.iterdir()):
                self.assertEqual(self.differences(file, False), [], kind)


if __name__ == "__main__":
    unittest.main()
