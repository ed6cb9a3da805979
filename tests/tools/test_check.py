"""tessaret check: what it finds, what it says, how it goes through folders."""

import json
import os
import pathlib
import re
import resource
import struct
import unittest

import tool
from tool import DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, UNDEFINED, element, item, meta, run, sequence_end


def number(tag, value):
    return element(tag, "US", struct.pack("<H", value))


def time_of_children():
    """Processor time of all that ran and ended: other work on the machine does not count."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Findings(tool.ToolTest):

    def words(self, content, *options, code=DONE):
        """What is said of a file, without its name."""
        file = self.write("file.dcm", content)
        result = run("check", *options, file)
        self.assert_ends(result, code)
        prefix = f"tessaret: {file}: "
        lines = result.stderr.decode().splitlines()
        self.assertTrue(all(line.startswith(prefix) for line in lines), lines)
        return [line[len(prefix):] for line in lines]

    def test_a_good_file_needs_no_words(self):
        for syntax in (EXPLICIT, IMPLICIT):
            self.assertEqual(self.words(meta(syntax) + tool.image(implicit=syntax == IMPLICIT)), [])

    def test_the_summary_counts_files_bytes_and_seconds(self):
        good = self.good_file()
        bad = self.write("bad.dcm", b"12345")
        result = run("check", good, bad)
        self.assert_ends(result, INPUT_FAILED)
        total = good.stat().st_size + 5
        self.assertRegex(result.stdout.decode(), rf"^2 files, {total} bytes, \d+\.\d{{3}} seconds: 1 read, 1 failed\n$")

    def test_a_cut_file_fails_with_offset_and_tag(self):
        whole = meta(EXPLICIT) + tool.image()
        at = whole.index(b"\xe0\x7f\x10\x00")
        self.assertEqual(self.words(whole[:-1], code=INPUT_FAILED), [f"truncated at offset {at}, in (7fe0,0010)"])

    def test_every_cut_within_an_element_is_found(self):
        whole = meta(EXPLICIT) + tool.image()
        ends = {len(whole)}
        position = 132
        while position < len(whole):
            ends.add(position)
            vr = whole[position + 4:position + 6].decode()
            if vr in tool.LONG_FORMS:
                position += 12 + struct.unpack_from("<I", whole, position + 8)[0]
            else:
                position += 8 + struct.unpack_from("<H", whole, position + 6)[0]
        # One start goes through all of them.
        cuts = {size: self.write(f"cuts/{size:04}", whole[:size]) for size in range(140, len(whole), 7) if size not in ends}
        result = run("check", self.path("cuts"))
        self.assert_ends(result, INPUT_FAILED)
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), len(cuts))
        for line, (size, file) in zip(lines, cuts.items()):
            with self.subTest(size=size):
                self.assertTrue(line.startswith(f"tessaret: {file}: truncated at offset "), line)

    def test_pixel_data_that_is_too_short_or_too_long_is_told(self):
        self.assertEqual(self.words(meta(EXPLICIT) + tool.image(pixels=bytes(10))), ["warning: pixel data has 10 bytes of 12 bytes"])
        self.assertEqual(self.words(meta(EXPLICIT) + tool.image(pixels=bytes(16))), ["warning: pixel data has 4 bytes too many"])

    def shape(self, pixels, rows=3, columns=3, bits=8, samples=1, frames=None, photometric="MONOCHROME2"):
        parts = [number(0x00280002, samples), element(0x00280004, "CS", photometric)]
        if frames is not None:
            parts.append(element(0x00280008, "IS", frames))
        parts += [number(0x00280010, rows), number(0x00280011, columns), number(0x00280100, bits),
                  element(0x7FE00010, "OB", bytes(pixels))]
        return self.words(meta(EXPLICIT) + b"".join(parts))

    def test_the_size_of_pixel_data_follows_from_its_attributes(self):
        self.assertEqual(self.shape(10), [])                      # 9 bytes and one to make them even
        self.assertEqual(self.shape(12), ["warning: pixel data has 3 bytes too many"])
        self.assertEqual(self.shape(28, samples=3), [])           # 27
        self.assertEqual(self.shape(36, frames="4"), [])
        self.assertEqual(self.shape(36, frames=" 4 "), [])
        self.assertEqual(self.shape(10, frames="many"), [])       # then one is meant
        self.assertEqual(self.shape(2, bits=1), [])               # 9 bits
        self.assertEqual(self.shape(14, bits=12), [])             # 108 bits are 13.5 bytes
        self.assertEqual(self.shape(32, columns=4, rows=4, samples=3, photometric="YBR_FULL_422"), [])  # 2 a pixel
        self.assertEqual(self.shape(2, rows=0), [
            "warning: rows, columns, samples, frames and bits leave no room for the pixel data that is there"])

    def test_sizes_beyond_all_numbers_are_told(self):
        words = self.shape(2, rows=65535, columns=65535, bits=65535, samples=65535, frames="99999999999")
        self.assertEqual(words, ["warning: rows, columns, samples, frames and bits name more pixel data than any file holds"])

    def test_compressed_pixel_data_has_no_size_to_check(self):
        pixels = element(0x7FE00010, "OB", item(b"") + item(b"\xff\xd8") + sequence_end(), length=UNDEFINED)
        self.assertEqual(self.words(meta(JPEG) + number(0x00280010, 9) + pixels), [])

    def test_an_image_without_pixels_is_told(self):
        content = element(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.2") + element(0x00100010, "PN", "x")
        self.assertEqual(self.words(meta(EXPLICIT) + content), ["warning: an image without pixel data"])
        for tag, vr in ((0x7FE00008, "OF"), (0x7FE00009, "OD")):
            content = element(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.30", implicit=True) + element(tag, vr, bytes(8), implicit=True)
            self.assertEqual(self.words(meta(IMPLICIT) + content), [])

    def test_a_character_set_that_is_not_known_is_told(self):
        for sets, unknown in (("ISO_IR 100", ""), ("\\ISO 2022 IR 87", ""), ("", ""), ("GBK", ""), ("Latin 9", "Latin 9"),
                              ("ISO 2022 IR 6\\ISO 2022 IR 999\\x", "ISO 2022 IR 999")):
            self.assertEqual(self.words(meta(EXPLICIT) + element(0x00080005, "CS", sets)),
                             [f"warning: the character set \"{unknown}\" of (0008,0005) is not known"] if unknown else [])

    def test_big_endian_pixels_whose_order_is_not_certain_are_told(self):
        for bits, vr, told in ((8, "OB", False), (8, "OW", False), (16, "OW", False), (16, "OB", True), (32, "OW", True)):
            with self.subTest(bits=bits, vr=vr):
                shape = ((0x00280002, 1), (0x00280010, 1), (0x00280011, 8 * 8 // bits), (0x00280100, bits))
                content = b"".join(element(tag, "US", struct.pack(">H", value), order=">") for tag, value in shape)
                words = self.words(meta(tool.BIG_ENDIAN) + content + element(0x7FE00010, vr, bytes(range(8)), order=">"))
                self.assertEqual(words, ["warning: the order of the bytes in the pixel data is not certain, since programs "
                                         "write big endian pixels of this size in two ways"] if told else [])

    def test_a_file_that_ends_where_a_delimiter_is_due_may_be_cut(self):
        sequence = element(0x00081140, "SQ", item(b"", defined=False) + sequence_end(), length=UNDEFINED)
        whole = meta(EXPLICIT) + sequence
        self.assertEqual(self.words(whole), [])
        for missing in (8, 16):
            self.assertEqual(self.words(whole[:-missing], code=INPUT_FAILED),
                             [f"truncated at offset {len(whole) - missing}, before a delimiter"])

    def test_a_meta_header_alone_in_another_form_is_no_misreading(self):
        whole = meta(IMPLICIT)
        self.assertEqual(self.words(whole), [])

    def test_elements_out_of_order_are_told(self):
        start = meta(EXPLICIT) + element(0x00100020, "LO", "12")
        self.assertEqual(self.words(start + element(0x00100010, "PN", "ab")),
                         [f"warning: (0010,0010) at offset {len(start)} stands behind an element of a higher tag"])

    def test_a_wrong_length_of_the_meta_header_is_told(self):
        right = meta(EXPLICIT) + tool.image()
        length = struct.unpack_from("<I", right, 140)[0]
        for wrong in (0, length - 8, length - 1, length + 1, length + 8, length + 100000, 0xFFFFFFFF):
            words = self.words(right[:140] + struct.pack("<I", wrong) + right[144:])
            self.assertIn(f"warning: (0002,0000) says that {wrong} bytes of meta header follow, where there are {length}", words)

    def test_a_wrong_length_of_a_long_meta_header_is_a_warning_too(self):
        right = meta(EXPLICIT, element(0x00020102, "OB", bytes(5000))) + tool.image()
        length = struct.unpack_from("<I", right, 140)[0]
        self.assertGreater(length, 5000)
        words = self.words(right[:140] + struct.pack("<I", length + 40) + right[144:])
        self.assertIn(f"warning: (0002,0000) says that {length + 40} bytes of meta header follow, where there are {length}", words)

    def test_letters_that_are_no_vr_are_told(self):
        start = meta(EXPLICIT)
        self.assertEqual(self.words(start + struct.pack("<HH", 0x0009, 0x1001) + b"Pi\2\0ab"),
                         [f"warning: (0009,1001) at offset {len(start)} has the letters \"Pi\" where the kind of value should stand"])

    def test_a_missing_mark_is_told_or_refused(self):
        bare = tool.image()
        self.assertEqual(self.words(bare), ["warning: no \"DICM\" mark, so the encoding is a guess"])
        self.assertEqual(self.words(bare, "--strict", code=INPUT_FAILED), ["Error checking DICOM MetaHeader"])

    def test_big_endian_attributes_are_read_rightly(self):
        self.assertEqual(self.words(meta(tool.BIG_ENDIAN) + tool.image(order=">")), [])

    def test_json_has_an_object_for_each_file_and_one_for_all(self):
        good = self.good_file("a.dcm")
        cut = self.write("b.dcm", good.read_bytes()[:-4])
        odd = self.write("c.dcm", meta(EXPLICIT) + tool.image(pixels=bytes(10)))
        missing = self.path("d.dcm")
        result = run("check", "--json", good, cut, odd, missing)
        self.assert_ends(result, INPUT_FAILED)
        reports = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual(reports[0], {"file": str(good), "ok": True, "bytes": good.stat().st_size,
                                      "transferSyntax": EXPLICIT, "elements": 16})
        at = good.read_bytes().index(b"\xe0\x7f\x10\x00")
        self.assertEqual(reports[1], {"file": str(cut), "ok": False, "bytes": cut.stat().st_size,
                                      "transferSyntax": EXPLICIT, "elements": 15, "offset": at, "tag": "7FE00010",
                                      "error": f"truncated at offset {at}, in (7fe0,0010)"})
        self.assertEqual(reports[2]["warnings"], ["pixel data has 10 bytes of 12 bytes"])
        self.assertEqual(reports[3], {"file": str(missing), "ok": False, "bytes": 0, "error": "No such file or directory"})
        self.assertEqual({key: reports[4][key] for key in ("files", "failed", "bytes")},
                         {"files": 4, "failed": 2, "bytes": sum(path.stat().st_size for path in (good, cut, odd))})
        self.assertIsInstance(reports[4]["seconds"], float)

    def test_three_good_files_and_a_bad_one(self):
        for name in "abd":
            self.good_file(f"all/{name}.dcm")
        bad = self.write("all/c.dcm", self.good_file("all/a.dcm").read_bytes()[:-1])
        result = run("check", self.path("all"))
        self.assert_ends(result, INPUT_FAILED)
        self.assertRegex(result.stderr.decode(), rf"^tessaret: {re.escape(str(bad))}: truncated [^\n]*\n$")
        self.assertIn(b": 3 read, 1 failed\n", result.stdout)


class Folders(tool.ToolTest):

    def files_of(self, *arguments, code=DONE):
        """The files in the order in which they were checked."""
        result = run("check", "--json", *arguments)
        self.assert_ends(result, code)
        return [json.loads(line)["file"] for line in result.stdout.splitlines()[:-1]]

    def test_an_empty_directory_is_fine(self):
        self.path("empty").mkdir()
        self.assertEqual(self.files_of(self.path("empty")), [])

    def test_files_come_in_the_order_of_their_names_and_arguments(self):
        for name in ("z/10.dcm", "z/9.dcm", "z/a/1.dcm", "z/B.dcm", "y.dcm"):
            self.good_file(name)
        z = self.path("z")
        self.assertEqual(self.files_of(z, self.path("y.dcm")),
                         [f"{z}/10.dcm", f"{z}/9.dcm", f"{z}/B.dcm", f"{z}/a/1.dcm", str(self.path("y.dcm"))])

    def test_a_slash_at_the_end_makes_no_difference(self):
        self.good_file("d/a.dcm")
        self.assertEqual(self.files_of(f"{self.path('d')}/"), [f"{self.path('d')}/a.dcm"])

    def test_loops_of_links_end(self):
        self.good_file("d/a.dcm")
        self.good_file("d/sub/b.dcm")
        d = self.path("d")
        (d / "loop").symlink_to(d)
        (d / "sub/up").symlink_to("..")
        (d / "sub/also").symlink_to(d / "sub")
        self.assertEqual(self.files_of(d), [f"{d}/a.dcm", f"{d}/sub/b.dcm"])

    def test_links_to_files_and_directories_are_followed(self):
        target = self.good_file("elsewhere/deep/a.dcm")
        d = self.path("d")
        d.mkdir()
        (d / "file").symlink_to(target)
        (d / "folder").symlink_to(target.parent)
        self.assertEqual(self.files_of(d), [f"{d}/file", f"{d}/folder/a.dcm"])

    def test_a_link_to_nothing_and_to_itself_is_told(self):
        d = self.path("d")
        d.mkdir()
        (d / "nothing").symlink_to("missing")
        (d / "self").symlink_to("self")
        result = run("check", d)
        self.assert_ends(result, INPUT_FAILED, f"tessaret: {d}/nothing: No such file or directory\n"
                         f"tessaret: {d}/self: Too many levels of symbolic links\n")

    def test_what_is_no_file_is_left_out(self):
        d = self.path("d")
        self.good_file("d/a.dcm")
        os.mkfifo(d / "pipe")
        result = run("check", "-v", d)
        self.assert_ends(result, DONE)
        self.assertIn(f"tessaret: {d}/pipe: left out, it is no regular file\n".encode(), result.stderr)

    def test_a_name_that_is_no_utf8_is_read(self):
        name = os.fsencode(self.folder) + b"/\xff\xfe.dcm"
        pathlib.Path(os.fsdecode(name)).write_bytes(self.good_file().read_bytes())
        self.assert_ends(run("check", os.fsdecode(name)), DONE, "")

    def test_a_path_that_is_too_long_is_told(self):
        result = run("check", "/" + "d" * 5000)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(b"File name too long", result.stderr)

    def test_directories_deeper_than_any_path_are_told(self):
        top = os.open(self.folder, os.O_RDONLY)
        here = top
        for _ in range(40):  # 40 times 200 characters are more than a path may have
            os.mkdir("d" * 200, dir_fd=here)
            deeper = os.open("d" * 200, os.O_RDONLY, dir_fd=here)
            if here != top:
                os.close(here)
            here = deeper
        os.close(here)
        os.close(top)
        result = run("check", self.folder)
        self.assert_ends(result, INPUT_FAILED)
        self.assertIn(b"File name too long", result.stderr)

    def test_time_grows_in_proportion_to_the_number_of_files(self):
        content = meta(EXPLICIT) + element(0x00100010, "PN", "Doe^John")
        few = 1 if tool.INSTRUMENTED else 5
        in_folder = 400 if tool.INSTRUMENTED else 2000
        for name, folders in (("few", few), ("many", 10 * few)):
            for folder in range(folders):
                place = self.path(f"{name}/{folder}")
                place.mkdir(parents=True)
                first = self.write(f"{name}/{folder}/0", content)
                for copy in range(1, in_folder):
                    os.link(first, place / str(copy))
        seconds = {}
        for name, count in (("few", few * in_folder), ("many", 10 * few * in_folder)):
            begin = time_of_children()
            result = run("check", self.path(name))
            seconds[name] = time_of_children() - begin
            self.assert_ends(result, DONE, "")
            self.assertTrue(result.stdout.startswith(f"{count} files, {count * len(content)} bytes".encode()))
        # Ten times as many; another factor of three for caches that many files do not fit into.
        self.assertLess(seconds["many"], 30 * seconds["few"] + 1)


if __name__ == "__main__":
    unittest.main()
