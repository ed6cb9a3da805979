"""tessaret set: elements of a file changed; what comes out is read by another program."""

import os
import struct
import unittest

import pydicom

import tool
from tool import BIG_ENDIAN, DONE, EXPLICIT, IMPLICIT, INPUT_FAILED, JPEG, OUTPUT_FAILED, USAGE, element, image, item, meta, run


class Set(tool.ToolTest):

    def set(self, source, *arguments, code=DONE, error=""):
        """The output, read by pydicom."""
        out = self.path("out.dcm")
        result = run("set", source, out, *arguments)
        self.assert_ends(result, code, error)
        self.assert_no_leftovers()
        if code != DONE:
            self.assertFalse(out.exists())
            return None
        data = pydicom.dcmread(out)
        out.unlink()
        return data

    def refuse(self, words, *arguments):
        file = self.good_file()
        self.set(file, *arguments, code=INPUT_FAILED, error=f"tessaret: {file}: {words}\n")

    def test_values_of_every_kind_are_set(self):
        data = self.set(self.good_file(), "PatientName=Roe^Jane", "(0010,0020)=a\\b", "PatientBirthDate=1970-01-02",
                        "StudyTime=14:05:06.25", "AcquisitionDateTime=2001-02-03 14:05", "PatientWeight=70.5",
                        "InstanceNumber=-3", "Rows=4", "0009,1001:FD=0.1\\2", "0009,0010=ACME", "0009,1002:SL=-7",
                        "0009,1003:AT=PatientName", "0009,1004:OB=00\\ff", "0009,1005:UT=a\\b", "0009,1006:FL=0.5")
        self.assertEqual(data.PatientName, "Roe^Jane")
        self.assertEqual(list(data[0x00100020].value), ["a", "b"])
        self.assertEqual((data.PatientBirthDate, data.StudyTime, data.AcquisitionDateTime),
                         ("19700102", "140506.25", "200102031405"))
        self.assertEqual((data.PatientWeight, data.InstanceNumber, data.Rows), (70.5, -3, 4))
        self.assertEqual(list(data[0x00091001].value), [0.1, 2.0])
        self.assertEqual((data[0x00090010].VR, data[0x00090010].value), ("LO", "ACME"))
        self.assertEqual((data[0x00091002].value, data[0x00091003].value, data[0x00091004].value, data[0x00091005].value,
                          data[0x00091006].value), (-7, 0x00100010, b"\0\xff", "a\\b", 0.5))

    def test_texts_are_filled_with_blanks_and_uids_with_a_nul(self):
        data = self.set(self.good_file(), "PatientName=Roe", "StudyInstanceUID=1.2", "0009,1001:OB=01")
        self.assertEqual([data.get_item(tag).value for tag in (0x00100010, 0x0020000D, 0x00091001)],
                         [b"Roe ", b"1.2\0", b"\1\0"])

    def test_the_rest_stays(self):
        file = self.good_file()
        before, after = pydicom.dcmread(file), self.set(file, "PatientID=x")
        del after.PatientID
        self.assertEqual(before, after)
        self.assertEqual(after.file_meta.TransferSyntaxUID, EXPLICIT)

    def test_every_encoding_is_kept(self):
        for syntax in (IMPLICIT, EXPLICIT, BIG_ENDIAN):
            order = ">" if syntax == BIG_ENDIAN else "<"
            source = self.write("in.dcm", meta(syntax) + image(implicit=syntax == IMPLICIT, order=order))
            data = self.set(source, "0028,0010=700", "0028,1054=HU")
            self.assertEqual((data.file_meta.TransferSyntaxUID, data.Rows, data.RescaleType), (syntax, 700, "HU"))
            self.assertEqual(data.PixelData, struct.pack(order + "6H", *range(1, 7)))

    def test_compressed_pixel_data_stays_as_it_is(self):
        fragments = item(b"") + item(b"\xff\xd8\xff\xd9") + tool.sequence_end()
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + fragments
        data = self.set(self.write("in.dcm", meta(JPEG) + element(0x00280010, "US", b"\1\0") + pixels), "PatientID=x")
        self.assertEqual((data.file_meta.TransferSyntaxUID, data.PatientID), (JPEG, "x"))
        self.assertEqual(data.PixelData, item(b"") + item(b"\xff\xd8\xff\xd9"))

    def test_an_empty_value_leaves_the_element_empty(self):
        data = self.set(self.good_file(), "PatientName=", "Rows=", "PatientID=", "ReferencedImageSequence=")
        for name in ("PatientName", "Rows", "PatientID"):
            self.assertTrue(data[name].is_empty, name)
        self.assertEqual(len(data.ReferencedImageSequence), 0)

    def test_a_given_type_replaces_the_one_that_was_there(self):
        source = self.write("in.dcm", meta(EXPLICIT) + element(0x00091001, "UN", b"\1\0"))
        self.assertEqual(self.set(source, "0009,1001=01\\02")[0x00091001].VR, "UN")
        data = self.set(source, "0009,1001:US=7")
        self.assertEqual((data[0x00091001].VR, data[0x00091001].value), ("US", 7))

    def test_elements_are_removed_before_others_are_set(self):
        data = self.set(self.good_file(), "PatientName=x", "--remove", "PatientName", "--remove", "0028,0004", "--remove", "PatientID")
        self.assertEqual(data.PatientName, "x")
        self.assertNotIn("PhotometricInterpretation", data)

    def test_items_are_reached_but_none_is_made(self):
        source = self.write("in.dcm", meta(EXPLICIT) + element(0x00081140, "SQ", item(element(0x00081150, "UI", "1.2"))))
        data = self.set(source, "0008,1140[0].0008,1155=1.3", "--remove", "ReferencedImageSequence[0].0008,1150")
        self.assertEqual((data.ReferencedImageSequence[0].ReferencedSOPInstanceUID, len(data.ReferencedImageSequence[0])), ("1.3", 1))
        self.set(source, "0008,1140[1].0008,1155=1.3", code=INPUT_FAILED, error=(
            f"tessaret: {source}: (0008,1140)[1].(0008,1155): there is no such item, and none is made\n"))
        self.set(source, "0008,1140:LO=x", code=INPUT_FAILED, error=(
            f"tessaret: {source}: (0008,1140): holds items, which a value cannot replace: use --remove\n"))
        self.assertEqual(len(self.set(source, "0008,1140=").ReferencedImageSequence), 0)

    def test_text_goes_in_the_character_set_of_the_file(self):
        data = self.set(self.write("in.dcm", meta(EXPLICIT) + element(0x00080005, "CS", "ISO_IR 144")), "PatientName=Люк")
        self.assertEqual(data.get_item(0x00100010).value, "Люк ".encode("iso8859_5"))
        self.assertEqual(str(data.PatientName), "Люк")
        data = self.set(self.good_file(), "SpecificCharacterSet=ISO_IR 192", "PatientName=王^小東")
        self.assertEqual(str(data.PatientName), "王^小東")
        self.refuse("(0010,0010): \"Müller\" cannot be written in the character set of (0008,0005)", "PatientName=Müller")

    def test_text_that_a_new_character_set_makes_other_characters_of_is_told(self):
        sets, name = lambda value: element(0x00080005, "CS", value), lambda value: element(0x00100010, "PN", value)
        latin = self.write("in.dcm", meta(EXPLICIT) + sets("ISO_IR 100") + element(0x00081140, "SQ", item(name(b"\xe4")) + item(
            sets("ISO_IR 126") + name(b"\xe4"))) + element(0x00091001, "OB", b"\xff\xfe") + name(b"M\xfcller"))
        told = lambda path: (f"tessaret: {self.path('out.dcm')}: warning: text keeps its bytes, which the new (0008,0005) makes "
                             f"other characters of, first in {path}\n")
        root, first, second = "SpecificCharacterSet=ISO_IR 192", "(0008,1140)[0].(0010,0010)", "(0008,1140)[1].(0010,0010)"
        data = self.set(latin, root, error=told(first))
        self.assertEqual((data.SpecificCharacterSet, data.get_item(0x00100010).value), ("ISO_IR 192", b"M\xfcller"))
        self.set(latin, root, f"{first}=ä", error=told("(0010,0010)"))
        data = self.set(latin, root, f"{first}=ä", "PatientName=Müller")
        self.assertEqual((str(data.PatientName), str(data.ReferencedImageSequence[0].PatientName)), ("Müller", "ä"))
        # What is written before is written in the old set.
        self.set(latin, f"{first}=ä", root, "PatientName=Müller", error=told(first))
        self.set(latin, "--remove", "SpecificCharacterSet", error=told(first))
        self.set(latin, root, "--remove", "PatientName", "--remove", first, error="")
        for same in ("ISO 2022 IR 100", "ISO_IR 100\\ISO 2022 IR 87"):
            self.set(latin, f"SpecificCharacterSet={same}", "--remove", "SpecificCharacterSet", error="")
        # Items have their own set, or that around them.
        self.set(latin, "0008,1140[1].SpecificCharacterSet=ISO_IR 100", error=told(second))
        self.set(latin, "--remove", "0008,1140[1].SpecificCharacterSet", error=told(second))
        self.set(latin, "0008,1140[0].SpecificCharacterSet=ISO_IR 126", error=told(first))
        self.set(latin, "0008,1140[0].SpecificCharacterSet=ISO_IR 126", f"{first}=δ", error="")
        self.set(latin, "0008,1140[0].SpecificCharacterSet=ISO_IR 100", error="")
        self.set(latin, "0008,1140[2].SpecificCharacterSet=ISO_IR 100", code=INPUT_FAILED, error=(
            f"tessaret: {latin}: (0008,1140)[2].(0008,0005): there is no such item, and none is made\n"))
        self.set(latin, "--remove", "0008,1140[2].SpecificCharacterSet", error="")
        # A set of an item says nothing of what was written outside.
        self.set(latin, root, "PatientName=ä", f"{first}=ä", "0008,1140[1].SpecificCharacterSet=ISO_IR 126", error="")
        # In these texts every byte is ASCII.
        for old, text, new in (("ISO_IR 13", b"a~", "ISO_IR 192"), ("ISO_IR 13", b"a\\", "ISO_IR 6"),
                               ("\\ISO 2022 IR 87", b"\x1b$B;3\x1b(B", "ISO_IR 100")):
            source = self.write("in.dcm", meta(EXPLICIT) + sets(old) + element(0x00104000, "LT", text))
            self.set(source, f"SpecificCharacterSet={new}", error=told("(0010,4000)"))
        # Now it is said what the text was all the time.
        source = self.write("in.dcm", meta(EXPLICIT) + name("Müller"))
        self.assertEqual(str(self.set(source, root, error="").PatientName), "Müller")

    def test_what_does_not_fit_is_refused_and_nothing_written(self):
        self.refuse("(0028,0010): \"70000\" is not a whole number from 0 to 65535", "Rows=70000")
        self.refuse("(0008,0060): 17 characters are more than the 16 of CS", "Modality=12345678901234567")
        self.refuse("(0008,0020): \"2001-02-30\" is not a date: YYYYMMDD or YYYY-MM-DD", "StudyDate=2001-02-30")
        self.refuse("(0008,0060): \"ct\" has small letters, which this type does not take", "Modality=ct")
        self.refuse("(0010,0010): \"a=b=c=d\" has more than the three forms of a name", "PatientName=a=b=c=d")
        self.refuse("(0020,000d): \"1.02\" is not a UID: numbers without leading zeros, with points between", "StudyInstanceUID=1.02")
        self.refuse("(0011,1001): its type is not known: give one, as in TAG:LO=VALUE", "0011,1001=x")
        self.refuse("(0008,1140): a sequence takes no value: name an element of an item", "0008,1140=x")

    def test_group_lengths_go_since_they_fit_no_longer(self):
        source = self.write("in.dcm", meta(EXPLICIT) + element(0x00100000, "UL", struct.pack("<I", 10)) + element(0x00100010, "PN", "a") +
                            element(0x00400275, "SQ", item(element(0x00400000, "UL", bytes(4)) + element(0x00400009, "SH", "b"))))
        data = self.set(source, "PatientName=Longer")
        self.assertEqual([each.tag for each in data], [0x00100010, 0x00400275])
        self.assertEqual([each.tag for each in data[0x00400275][0]], [0x00400009])

    def test_what_the_length_field_of_its_type_cannot_hold_becomes_unknown(self):
        out, numbers = self.path("out.dcm"), "\\".join(["1.25"] * 14000)  # 69,999 bytes, where 16 bits say 65,535
        for more, value in (("0009,1002:DS", numbers), ("0009,1001:UC", "abc")):
            error = f"tessaret: {out}: warning: ({more[:9]}) is written as UN, which has room for its length\n"
            data = self.set(self.good_file(), f"{more}={value}", "PatientComments=behind", error=error)
            raw = data.get_item(int(more[:9].replace(",", ""), 16))
            self.assertEqual((raw.VR, raw.value.rstrip()), ("UN", value.encode()))
            self.assertEqual(data.PatientComments, "behind")
        source = self.write("in.dcm", meta(IMPLICIT) + image(implicit=True))
        self.assertEqual(len(self.set(source, f"0009,1002:DS={numbers}").get_item(0x00091002).value), 70000)

    def test_an_element_of_a_newer_type_stays_readable(self):
        # The library's readers and writers give UC a short length, others a long one.
        out = self.path("out.dcm")
        error = f"tessaret: {out}: warning: (0008,0119) is written as UN, which has room for its length\n"
        data = self.set(self.good_file(), "LongCodeValue=abc", error=error)
        raw = data.get_item(0x00080119)
        self.assertEqual((raw.VR, raw.value), ("UN", b"abc "))
        self.assertEqual(data.PatientName, "Doe^John")

    def test_what_is_unknown_stays_unknown(self):
        content = element(0x00100010, "UN", b"Doe^John") + element(0x00280107, "UN", b"\1\0")
        data = self.set(self.write("in.dcm", meta(EXPLICIT) + content), "PatientID:UN=41\\42")
        raw = {tag: (data.get_item(tag).VR, data.get_item(tag).value) for tag in (0x00100010, 0x00100020, 0x00280107)}
        self.assertEqual(raw, {0x00100010: ("UN", b"Doe^John"), 0x00100020: ("UN", b"AB"), 0x00280107: ("UN", b"\1\0")})

    def test_a_given_type_that_the_implicit_form_does_not_keep_is_told(self):
        source, out = self.write("in.dcm", meta(IMPLICIT) + image(implicit=True)), self.path("out.dcm")
        lost = lambda tag, vr: (f"tessaret: {out}: warning: {tag} will be read as {vr}, "
                                "for the implicit form does not keep its type\n")
        data = self.set(source, "PatientName:FD=1", "Rows:UL=5", "0009,0010:SH=ACME", "PixelData:FD=1", error=(
            lost("(0010,0010)", "PN") + lost("(0028,0010)", "US") + lost("(0009,0010)", "LO") + lost("(7fe0,0010)", "OW")))
        self.assertEqual(data.get_item(0x00280010).value, b"\5\0\0\0")
        # Nothing is lost of what readers know or cannot know, and bytes are bytes.
        self.set(source, "Rows:US=5", "0009,1001:FD=1", "PixelData:OB=00\\01", "PatientID:SH=", error="")

    def test_the_output_may_be_the_input(self):
        file = self.good_file()
        self.assert_ends(run("set", "-v", file, file, "PatientName=New"), DONE, f"tessaret: {file}: written\n")
        self.assertEqual(pydicom.dcmread(file).PatientName, "New")
        before = file.read_bytes()
        self.assert_ends(run("set", file, file, "Rows=x"), INPUT_FAILED)
        self.assertEqual(file.read_bytes(), before)
        os.link(file, self.path("link"))
        self.assert_ends(run("set", file, self.path("link"), "PatientName=Linked"), DONE, "")
        self.assertEqual(pydicom.dcmread(self.path("link")).PatientName, "Linked")

    def test_another_file_is_replaced_only_by_force(self):
        file, other = self.good_file(), self.write("other.dcm", b"mine")
        self.assert_ends(run("set", file, other, "PatientName=x"), OUTPUT_FAILED,
                         f"tessaret: {other}: is there already; --force replaces it\n")
        self.assertEqual(other.read_bytes(), b"mine")
        self.assert_ends(run("set", "--force", file, other, "PatientName=x"), DONE, "")
        self.assertEqual(pydicom.dcmread(other).PatientName, "x")

    def test_a_file_that_does_not_read_whole_is_not_written_anew(self):
        cut = self.write("cut.dcm", (meta(EXPLICIT) + image())[:-3])
        result = run("set", cut, cut, "PatientName=x")
        self.assert_ends(result, INPUT_FAILED)
        self.assertEqual(cut.read_bytes(), (meta(EXPLICIT) + image())[:-3])

    def test_what_follows_from_the_rest_is_not_to_be_set(self):
        file = self.good_file()
        for assignment, words in (("0002,0010=1.2", "(0002,0010) is of the meta header, which is made when the file is written"),
                                  ("0010,0000=4", "(0010,0000) is a length, which follows from the rest"),
                                  ("fffe,e000=x", "(fffe,e000) is no element of a data set"),
                                  ("0000,0010=x", "(0000,0010) would come before the meta header, where no file can hold it"),
                                  ("0001,0010:LO=x", "(0001,0010) would come before the meta header, where no file can hold it")):
            self.set(file, assignment, code=USAGE, error=f"tessaret: set: {words}\n")

    def test_fragments_hold_no_elements(self):
        fragments = item(b"") + item(b"\xff\xd8\xff\xd9") + tool.sequence_end()
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + fragments
        icon = element(0x00880200, "SQ", item(element(0x00280010, "US", b"\1\0") + pixels))
        source = self.write("in.dcm", meta(JPEG) + icon + pixels)
        for place in ("PixelData[1]", "0088,0200[0].PixelData[0]"):
            for arguments in ((f"{place}.PatientID=x",), ("--remove", f"{place}.PatientID")):
                self.set(source, *arguments, code=USAGE, error=(
                    "tessaret: set: (7fe0,0010) has fragments at most, which hold no elements\n"))
        self.assertEqual(self.set(source, "0088,0200[0].PatientID=x").IconImageSequence[0].PatientID, "x")

    def test_what_would_make_the_file_unreadable_is_refused(self):
        implicit = self.write("implicit.dcm", meta(IMPLICIT) + image(implicit=True))
        for value in ("0008,1140:LO=abcdefgh", "0008,1140:UN=00"):
            self.set(implicit, value, code=INPUT_FAILED, error=(
                f"tessaret: {implicit}: (0008,1140): is a sequence by the dictionary, which the implicit form is read by\n"))
        # Where types are written, and where there is no value, nothing is misread.
        self.assertEqual(self.set(self.good_file(), "0008,1140:LO=abc")[0x00081140].value, "abc")
        self.assertEqual(len(self.set(implicit, "0008,1140:LO=").ReferencedImageSequence), 0)
        pixels = struct.pack("<HH2sHI", 0x7FE0, 0x0010, b"OB", 0, tool.UNDEFINED) + item(b"") + item(b"\xff\xd8") + tool.sequence_end()
        icon = element(0x00880200, "SQ", item(element(0x7FE00010, "OB", b"\1\2")))
        compressed = self.write("compressed.dcm", meta(JPEG) + icon + pixels)
        for arguments in (("PixelData:OB=01\\02", "--remove", "PixelData"), ("PixelData:SQ=",), ("PixelData=",)):
            self.set(compressed, *arguments, code=INPUT_FAILED, error=(
                f"tessaret: {compressed}: (7fe0,0010): is compressed in this transfer syntax: a value cannot take its place\n"))
        native = self.write("native.dcm", meta(EXPLICIT) + icon + element(0x7FE00010, "OB", b"\1\2"))
        for path in ("(7fe0,0010)", "(0088,0200)[0].(7fe0,0010)"):
            self.set(native, f"{path}:SQ=", code=INPUT_FAILED, error=f"tessaret: {native}: {path}: is pixel data and no sequence\n")
        # The pixel data of an icon may be native there.
        self.assertEqual(self.set(compressed, "0088,0200[0].PixelData=03\\04").IconImageSequence[0].PixelData, b"\3\4")

    def test_a_value_has_the_sign_of_the_pixels_where_the_type_is_open(self):
        for representation, value in ((b"\1\0", -5), (b"\0\0", 5)):
            for syntax in (IMPLICIT, EXPLICIT):
                content = lambda tag, value: element(tag, "US", value, implicit=syntax == IMPLICIT)
                source = self.write("in.dcm", meta(syntax) + content(0x00280103, representation) + content(0x00280010, b"\1\0"))
                raw = self.set(source, f"PixelPaddingValue={value}").get_item(0x00280120)
                self.assertEqual(raw.value, struct.pack("<h", value))
                self.assertEqual(raw.VR, None if syntax == IMPLICIT else "SS" if value < 0 else "US")
                self.set(source, "Rows=-5", code=INPUT_FAILED, error=(
                    f"tessaret: {source}: (0028,0010): \"-5\" is not a whole number from 0 to 65535\n"))
        # Also where an element is there whose type is not stated.
        source = self.write("in.dcm", meta(IMPLICIT) + element(0x00280103, "US", b"\1\0", implicit=True) +
                            element(0x00280120, "US", b"\0\0", implicit=True))
        self.assertEqual(self.set(source, "PixelPaddingValue=-5").get_item(0x00280120).value, struct.pack("<h", -5))
        # The type that is stated stays.
        source = self.write("in.dcm", meta(EXPLICIT) + element(0x00280103, "US", b"\1\0") + element(0x00280120, "US", b"\0\0"))
        self.assertEqual(self.set(source, "PixelPaddingValue=5").get_item(0x00280120).VR, "US")

    def test_standard_input_is_not_a_file_of_its_name(self):
        dash = self.write("-", b"mine")
        result = run("set", "-", "./-", "PatientID=x", input=self.good_file().read_bytes(), cwd=self.folder)
        self.assert_ends(result, OUTPUT_FAILED, "tessaret: ./-: is there already; --force replaces it\n")
        self.assertEqual(dash.read_bytes(), b"mine")

    def test_the_meta_header_follows_the_uids(self):
        data = self.set(self.good_file(), "SOPInstanceUID=1.2.99")
        self.assertEqual(data.file_meta.MediaStorageSOPInstanceUID, "1.2.99")


if __name__ == "__main__":
    unittest.main()
