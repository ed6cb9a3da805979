"""Text by its character set in the listing and in JSON, beside an independent decoder."""

import json
import random
import struct
import unittest

import pydicom.charset

import tool
from tool import DONE, EXPLICIT, element, item, meta, run

JAPANESE = b"Yamada^Tarou=\x1b$B;3ED\x1b(B^\x1b$BB@O:\x1b(B=\x1b$B$d$^$@\x1b(B^\x1b$B$?$m$&\x1b(B"
YAMADA = "Yamada^Tarou=山田^太郎=やまだ^たろう"

# Name in (0008,0005), what its bytes are in Python, and characters of it.
PLAIN = [("ISO_IR 100", "latin_1", "éÄñß"), ("ISO_IR 101", "iso8859_2", "łęŚž"), ("ISO_IR 109", "iso8859_3", "ĉŝħĞ"),
         ("ISO_IR 110", "iso8859_4", "ąķŦŋ"), ("ISO_IR 144", "iso8859_5", "Люкѓ"), ("ISO_IR 127", "iso8859_6", "قباني"),
         ("ISO_IR 126", "iso8859_7", "Διονσ"), ("ISO_IR 138", "iso8859_8", "שרוןד"), ("ISO_IR 148", "iso8859_9", "ğİşÖ"),
         ("ISO_IR 166", "tis_620", "นายกข"), ("ISO_IR 13", "shift_jis", "ﾔﾏﾀﾞ"), ("ISO_IR 192", "utf_8", "é山Люк😀"),
         ("GB18030", "gb18030", "王小东é慭"), ("GBK", "gbk", "王小东慭昞")]
# Escape sequence, bytes in Python without their high bit where they are for G0, characters.
SWITCHED = {"ISO 2022 IR 87": (b"\x1b$B", "euc_jp", True, "山田太郎旬やま"), "ISO 2022 IR 149": (b"\x1b$)C", "euc_kr", False, "洪吉洞홍길동"),
            "ISO 2022 IR 58": (b"\x1b$)A", "gb2312", False, "张小东中文"), "ISO 2022 IR 100": (b"\x1b-A", "latin_1", False, "éÄñß"),
            "ISO 2022 IR 144": (b"\x1b-L", "iso8859_5", False, "Люк"), "ISO 2022 IR 126": (b"\x1b-F", "iso8859_7", False, "Διον"),
            "ISO 2022 IR 166": (b"\x1b-T", "tis_620", False, "นายก"), "ISO 2022 IR 101": (b"\x1b-B", "iso8859_2", False, "łęŚž")}


class Text(tool.ToolTest):

    def dump(self, content, *options):
        result = run("dump", *options, self.write("file.dcm", meta(EXPLICIT) + content))
        self.assert_ends(result, DONE, "")
        return result.stdout.decode()

    def value(self, sets, vr, value):
        content = element(0x00080005, "CS", sets) + element(0x00091001, vr, value)
        return json.loads(self.dump(content, "--json"))["elements"]["00091001"].get("Value")

    def test_the_listing_shows_characters(self):
        text = self.dump(element(0x00080005, "CS", "\\ISO 2022 IR 87") + element(0x00100010, "PN", JAPANESE))
        self.assertIn(f"(0010,0010) PN [{YAMADA}]", text)
        text = self.dump(element(0x00080005, "CS", "ISO_IR 100") + element(0x00100010, "PN", b"M\xfcller\x85"))
        self.assertIn("[Müller\\x85]", text)

    def test_long_text_is_cut_at_64_characters(self):
        content = element(0x00080005, "CS", "ISO_IR 100") + element(0x00104000, "LT", b"\xfc" * 100)
        self.assertIn("[" + "ü" * 61 + "...]", self.dump(content))
        self.assertIn("[" + "ü" * 100 + "]", self.dump(content, "--long"))
        whole = element(0x00080005, "CS", "ISO_IR 100") + element(0x00104000, "LT", b"\xfc" * 64)
        self.assertIn("[" + "ü" * 64 + "]", self.dump(whole))

    def test_items_have_the_set_around_them_unless_they_name_their_own(self):
        name = element(0x00100010, "PN", b"\xe4")
        content = (element(0x00080005, "CS", "ISO_IR 100") +
                   element(0x00081140, "SQ", item(name) + item(element(0x00080005, "CS", "ISO_IR 126") + name +
                                                              element(0x00081140, "SQ", item(name))) + item(name)) + name)
        elements = json.loads(self.dump(content, "--json"))["elements"]
        items = elements["00081140"]["Value"]
        names = [each["00100010"]["Value"][0]["Alphabetic"] for each in (*items, items[1]["00081140"]["Value"][0], elements)]
        self.assertEqual(names, ["ä", "δ", "ä", "δ", "ä"])
        lines = self.dump(content).splitlines()
        self.assertEqual([line.split("[")[1][0] for line in lines if "(0010,0010)" in line], ["ä", "δ", "δ", "ä", "ä"])

    def test_only_text_is_decoded(self):
        content = element(0x00080005, "CS", "ISO_IR 126") + element(0x00080060, "CS", b"\xe4")
        self.assertIn("(0008,0060) CS [\\xe4]", self.dump(content))

    def test_without_a_set_utf8_is_shown_and_other_bytes_as_numbers(self):
        self.assertIn("[ä]", self.dump(element(0x00100010, "PN", "ä")))
        self.assertIn("[\\xe4]", self.dump(element(0x00100010, "PN", b"\xe4")))

    def test_every_set_agrees_with_another_decoder(self):
        seed = random.Random(5)
        for sets, codec, letters in PLAIN:
            for _ in range(12 // tool.SHARE):
                text = "".join(seed.choice(letters + " abc.^") for _ in range(seed.randint(1, 30))).strip() or "a"
                encoded = text.encode(codec)
                with self.subTest(f"{sets} {text}"):
                    theirs = pydicom.charset.decode_bytes(encoded, pydicom.charset.convert_encodings(sets), {"^", "="})
                    self.assertEqual(theirs, text)
                    self.assertEqual(self.value(sets, "LO", encoded), [text])

    def test_random_mixtures_of_switched_sets_agree_with_another_decoder(self):
        seed = random.Random(7)
        names = list(SWITCHED)
        for _ in range(150 // tool.SHARE):
            used = seed.sample(names, seed.randint(1, 3))
            text, encoded = "", b""
            for _ in range(seed.randint(1, 5)):  # components of a name
                if text:
                    text, encoded = text + "^", encoded + b"^"
                for _ in range(seed.randint(0, 3)):
                    escape, codec, low, letters = SWITCHED[seed.choice(used)]
                    part = "".join(seed.choice(letters) for _ in range(seed.randint(1, 4)))
                    run_of = part.encode(codec)
                    if low:
                        run_of = bytes(byte & 0x7F for byte in run_of) + b"\x1b(B"
                    text, encoded = text + part + "x", encoded + escape + run_of + b"x"
            text, encoded = text + "^e", encoded + b"^e"
            sets = ["", *used]
            with self.subTest(f"{used} {text}"):
                theirs = pydicom.charset.decode_bytes(encoded, pydicom.charset.convert_encodings(sets), {"^", "="})
                # They leave the escape sequence of this one in the text.
                self.assertEqual(theirs.replace("\x1b$)A", ""), text)
                self.assertEqual(self.value("\\".join(sets), "PN", encoded), [{"Alphabetic": text}])


if __name__ == "__main__":
    unittest.main()
