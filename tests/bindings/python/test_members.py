"""Members by name: methods, properties with and without arguments, what comes back, help, and failures."""

import array
import fcntl
import inspect
import os
import pydoc
import re
import shutil
import sysconfig
import termios
import threading
import time
import unittest
from unittest import mock

import package

package.use_library("tessaret_echo")

import tessaret
from tessaret import _library


class Members(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.echo = package.new_echo()
        self.addCleanup(self.echo.close)

    def test_what_a_method_writes_comes_back_behind_its_result(self):
        total, a, c, d = self.echo.Mix(1, 2)
        self.assertEqual((total, a, c, d.tolist()), (3.0, 2, "2", [0, 0, 0]))
        self.assertEqual(self.echo.Mix(1, 2, 0.5)[0], 3.5)
        self.assertEqual(self.echo.Mix(a=1, e=0.25, b=2)[0], 3.25)
        self.assertEqual(self.echo.Outs(5), (6, True))

    def test_what_a_method_leaves_alone_is_empty_and_not_left_over(self):
        self.assertEqual(self.echo.LeaveAlone(True), (77, "written", 1.5))
        self.assertEqual(self.echo.LeaveAlone(False), (0, None, None))

    def test_a_method_that_writes_nothing_tells_whether_it_was_done(self):
        self.assertIs(self.echo.Do(True), True)
        self.assertIs(self.echo.Do(False), False)

    def test_names_that_python_keeps_for_itself_get_an_underscore(self):
        self.assertEqual(self.echo.Keywords(1, 2, 3), 123)
        self.assertEqual(self.echo.Keywords(lambda_=3, self_=2, from_=1), 123)

    def test_wrong_numbers_and_names_of_arguments_are_type_errors(self):
        for arguments, named in (((1,), {}), ((1, 2, 3, 4), {}), ((1, 2), {"f": 3}), ((1, 2), {"a": 3})):
            with self.subTest(arguments, named=named), self.assertRaises(TypeError):
                self.echo.Mix(*arguments, **named)

    def test_a_property_with_arguments_is_called_or_indexed_and_set_by_index(self):
        self.echo.Text = "x"
        self.assertEqual(self.echo.Cell(1), "1,none,0=x")
        self.assertEqual(self.echo.Cell(1, "two", 3), "1,two,3=x")
        self.assertEqual(self.echo.Cell(1, Layer=3), "1,none,3=x")
        self.assertEqual(self.echo.Cell[1], "1,none,0=x")
        self.assertEqual(self.echo.Cell[1, "two"], "1,two,0=x")
        self.echo.Cell[4] = 0.5
        self.assertEqual(self.echo.Text, "4,none,0:0.5")
        self.echo.Cell[4, 5, 6] = "text"
        self.assertEqual(self.echo.Text, "4,5,6:text")
        self.echo.Cell[4, "five"] = None
        self.assertEqual(self.echo.Text, "4,five,0:")
        self.echo.Cell.put(7, Layer=9, newVal=True)
        self.assertEqual(self.echo.Text, "7,none,9:True")
        cell = self.echo.Cell
        for use in (iter, list, lambda indexed: 1 in indexed):
            with self.assertRaises(TypeError):
                use(cell)
        cell[1] = 2
        self.assertEqual(self.echo.Text, "1,none,0:2")
        self.assertIn("property Cell of <tessaret.IEcho at 0x", repr(cell))

    def test_a_new_value_that_is_missing_is_not_taken_for_an_empty_one(self):
        self.echo.Cell[4] = "full"
        for arguments, named in (((4,), {"Layer": 9}), ((4, "value"), {"Layer": 9}), ((), {"Row": 4}), ((), {}), ((4,), {})):
            with self.subTest(arguments, named=named), self.assertRaises(TypeError):
                self.echo.Cell.put(*arguments, **named)
            self.assertEqual(self.echo.Text, "4,none,0:full")
        self.echo.Cell.put(4, Layer=9, newVal=None)
        self.assertEqual(self.echo.Text, "4,none,9:")

    def test_a_property_with_arguments_says_how_it_is_set(self):
        with self.assertRaisesRegex(AttributeError, r"Cell has arguments: set it as in Cell\[...\] = value"):
            self.echo.Cell = 5
        with self.assertRaises(TypeError):
            self.echo.Cell[1, 2, 3, 4] = 5

    def test_properties_that_go_one_way_only_say_so(self):
        self.assertEqual(self.echo.Lonely(5), -5)
        with self.assertRaisesRegex(AttributeError, "Lonely cannot be set"):
            self.echo.Lonely[5] = 1
        self.echo.Deaf[5] = 1
        self.assertEqual(self.echo.Long, 6)
        with self.assertRaisesRegex(AttributeError, "Deaf cannot be read"):
            self.echo.Deaf(5)
        with tessaret.create("Tessaret.DcmDictionary") as dictionary, self.assertRaises(AttributeError):
            dictionary.NumEntries = 5

    def test_a_property_is_put_by_reference_where_the_value_is_an_object(self):
        with package.new_echo() as other:
            self.echo.Friend = other
            self.assertIs(self.echo.Friend, other)
            self.echo.Friend = "by value"
            self.assertEqual(self.echo.Text, "by value")
            self.assertIs(self.echo.Friend, other)
            self.echo.Friend = None
            self.assertIsNone(self.echo.Friend)

    def test_letters_of_either_case_are_the_same(self):
        self.echo.text = "lower"
        self.assertEqual(self.echo.TEXT, "lower")
        self.assertEqual(self.echo.outs(1), (2, True))
        self.echo.cell[1] = 2
        self.assertEqual(self.echo.Text, "1,none,0:2")

    def test_unknown_names_are_attribute_errors(self):
        with self.assertRaisesRegex(AttributeError, "IEcho has no member 'Nothing'"):
            self.echo.Nothing
        with self.assertRaisesRegex(AttributeError, "IEcho has no member 'Nothing' that can be set"):
            self.echo.Nothing = 1
        with self.assertRaises(AttributeError):
            self.echo.Outs = 1
        self.assertFalse(hasattr(self.echo, "_ipython_display_"))
        with self.assertRaises(AttributeError):
            tessaret.NO_SUCH_VALUE

    def test_a_member_called_within_a_call_of_itself_has_room_of_its_own(self):
        heard = []

        def tell_again(number, value, source):
            heard.append((number, value))
            if number < 5:
                source.Tell(number + 1, value * 2)
        self.echo.on("OnTold", tell_again)
        self.echo.Tell(1, "x")
        self.assertEqual(heard, [(1, "x"), (2, "xx"), (3, "x" * 4), (4, "x" * 8), (5, "x" * 16)])

    def test_help_shows_signatures_and_texts(self):
        self.assertEqual(str(inspect.signature(self.echo.Mix)), "(a: int, b: int, e: float = None) -> tuple[float, int, str, typing.Any]")
        self.assertEqual(str(inspect.signature(self.echo.Tell)), "(number: int, value: Any) -> bool")
        self.assertEqual(str(inspect.signature(self.echo.Itself)), "() -> 'IEcho'")
        text = pydoc.plain(pydoc.render_doc(self.echo))
        self.assertEqual(text.splitlines()[2], "class IEcho(tessaret._objects.Object)")
        for words in ("Gives back what it gets.", "Mix(self, a: int, b: int, e: float = None)", "Returns (the result, a, c, d).",
                      "A short.\n", "Cell(Row: int, Column: Any = None, Layer: int = None) -> str", "What is in a cell.",
                      "Cell[Row, Column, Layer] = value, or Cell.put(Row, Column, Layer, newVal)", "Fills a cell."):
            self.assertIn(words, text)
        self.assertEqual(text.count("Returns ("), 3)  # what gives back one value needs no such words: of Mix, LeaveAlone and Outs
        self.assertEqual(pydoc.plain(pydoc.render_doc(type(self.echo))).splitlines()[2:], text.splitlines()[2:])
        text = pydoc.plain(pydoc.render_doc(self.echo.Cell))
        for words in ("What is in a cell.", "Cell[Row, Column, Layer] = value, or Cell.put(Row, Column, Layer, newVal)"):
            self.assertIn(words, text)

    def test_dir_lists_members_and_little_else(self):
        listed = dir(self.echo)
        for name in ("Short", "Cell", "Mix", "on", "query", "close"):
            self.assertIn(name, listed)
        self.assertFalse([name for name in listed if name.startswith("_") and not name.startswith("__")])

    def test_an_object_comes_from_the_library_only(self):
        for kind in (tessaret.Object, type(self.echo)):
            with self.subTest(kind), self.assertRaisesRegex(TypeError, "made by tessaret.create"):
                kind()

    def test_an_object_says_what_it_is(self):
        self.assertRegex(repr(self.echo), r"^<tessaret\.IEcho at 0x[0-9a-f]+>$")
        self.assertEqual(type(self.echo).__name__, "IEcho")
        self.assertIsInstance(self.echo, tessaret.Object)

    def test_objects_with_one_interface_have_one_class(self):
        kinds = {type(self.echo), type(self.echo.Another())}
        other = threading.Thread(target=lambda: kinds.add(type(package.new_echo())))
        other.start()
        other.join()
        self.assertEqual(len(kinds), 1)


class Enumerations(package.PackageTest):
    def test_their_values_are_there_by_name(self):
        # As include/tessaret/voxel_type.hpp has them.
        names = ["SHORT_VOXEL", "USHORT_VOXEL", "UCHAR_VOXEL", "FLOAT_VOXEL", "LONG_VOXEL", "ULONG_VOXEL"]
        self.assertEqual([int(getattr(tessaret, name)) for name in names], list(range(6)))
        self.assertEqual([member.name for member in tessaret._EnumVoxelType], names)
        self.assertIs(tessaret._EnumVoxelType(3), tessaret.FLOAT_VOXEL)
        self.assertEqual(tessaret._EnumVoxelType.__doc__, "What one voxel of a volume is.")
        self.assertTrue({"FLOAT_VOXEL", "_EnumVoxelType", "create"} <= set(dir(tessaret)))

    def test_members_of_their_type_give_and_take_them(self):
        with package.new_echo() as echo:
            echo.Voxel = tessaret.LONG_VOXEL
            self.assertIs(echo.Voxel, tessaret.LONG_VOXEL)
            echo.Voxel = 1
            self.assertIs(echo.Voxel, tessaret.USHORT_VOXEL)
            echo.Voxel = 77  # a number that the package does not know stays a number
            self.assertEqual((type(echo.Voxel), echo.Voxel), (int, 77))
            self.assertEqual(inspect.signature(type(echo).Voxel.fget).return_annotation, tessaret._EnumVoxelType)


class Failures(package.PackageTest):
    KINDS = ((0x80004001, tessaret.NotAvailable, NotImplementedError), (0x80004002, tessaret.NoInterface, TypeError),
             (0x80020003, tessaret.UnknownMember, AttributeError), (0x80020005, tessaret.WrongType, TypeError),
             (0x8002000A, tessaret.OutOfRange, OverflowError), (0x8002000B, tessaret.BadIndex, IndexError),
             (0x8002000E, tessaret.WrongCount, TypeError), (0x8007000E, tessaret.NoMemory, MemoryError),
             (0x80070057, tessaret.BadArgument, ValueError), (0x80020009, tessaret.Error, Exception),
             (0x80004005, tessaret.Error, Exception), (0x8FFFFFFF, tessaret.Error, Exception))

    def setUp(self):
        super().setUp()
        self.echo = package.new_echo()
        self.addCleanup(self.echo.close)

    def failure(self, status, words=None):
        with self.assertRaises(tessaret.Error) as caught:
            self.echo.Fail(status - 2**32, words)
        return caught.exception

    def test_a_failure_has_status_source_and_words(self):
        tessaret.create("Tessaret.DCMOptions").close()  # it is then that the library knows its classes
        error = self.failure(0x80020009, "the words \u00fc")
        self.assertEqual((error.status, error.source, error.words), (0x80020009, "Tessaret.DCMOptions", "the words \u00fc"))
        self.assertEqual(str(error), "Tessaret.DCMOptions: the words \u00fc")

    def test_a_failure_is_also_what_python_users_expect(self):
        for status, kind, base in self.KINDS:
            with self.subTest(hex(status)):
                error = self.failure(status)
                self.assertIs(type(error), kind)
                self.assertIsInstance(error, base)
                self.assertEqual(error.status, status)
                self.assertTrue(error.words)

    def test_words_of_an_older_failure_are_not_those_of_a_new_one(self):
        self.failure(0x80020009, "old words")
        error = self.failure(0x80020005)
        self.assertEqual((error.source, error.words), ("IEcho.Fail", "a value cannot be turned into the type that is needed"))

    def test_a_failure_without_words_has_some_all_the_same(self):
        found = []
        # On a thread where none were ever left.
        other = threading.Thread(target=lambda: found.append(self.failure(0x80020009)))
        other.start()
        other.join()
        self.assertEqual((found[0].source, found[0].words), ("IEcho.Fail", "it failed"))

    def test_a_failed_call_leaves_nothing_behind(self):
        self.failure(0x80020009, "x")
        self.assertEqual(self.echo.Outs(5), (6, True))
        self.assertIs(self.echo.Do(True), True)

    def test_objects_that_cannot_be_made_say_why(self):
        for name, status, kind, words in (("Tessaret.Nothing", 0x80040154, tessaret.Error, "There is no such class"),
                                          ("Tessaret.DCMVolume", 0x80004001, NotImplementedError,
                                           "This class is not available in this version")):
            with self.subTest(name), self.assertRaises(kind) as caught:
                tessaret.create(name)
            self.assertEqual((caught.exception.status, caught.exception.source, caught.exception.words), (status, name, words))

    def test_what_an_older_library_does_not_have_is_said(self):
        for name in ("query", "pump", "events_descriptor", "start", "cancel_files"):
            with self.subTest(name), mock.patch.object(_library, name, None), self.assertRaises(tessaret.NotAvailable) as caught:
                self.echo.query("IEcho") if name == "query" else getattr(tessaret, name)()
            self.assertEqual((caught.exception.status, caught.exception.source, caught.exception.words),
                             (0x80004001, f"{'IEcho.' if name == 'query' else ''}{name}", "the library in use is too old for this"))

    def test_names_that_are_none_are_refused(self):
        for name, error in ((5, TypeError), (None, TypeError), (b"Tessaret.DCMOptions", TypeError), ("Tessaret.DCMOptions\0x", ValueError),
                            ("", tessaret.Error), ("\udcff", tessaret.Error)):
            with self.subTest(name), self.assertRaises(error):
                tessaret.create(name)


START = """
import sys
import tessaret
for _ in range(2):
    try:
        print(tessaret.start())
    except tessaret.Error as error:
        print(f"{error.status:x} {error.source} {error.words}")
try:
    tessaret.create("Tessaret.DCMOptions")
    print("made")
except tessaret.Error as error:
    print(f"{error.status:x}")
"""


class Start(package.PackageTest):
    def test_a_program_may_start_the_library_itself(self):
        result = package.run_python(START)
        self.assertEqual((result.stdout, result.stderr), ("None\nNone\nmade\n", ""))

    def test_a_start_that_fails_says_the_file_and_the_line_and_writes_nothing_by_itself(self):
        for name in ("dicom-dict.txt", "uid-dict.txt"):
            shutil.copy(package.SOURCE_DIR / "data" / name, self.folder)
        dictionary = self.folder / "dicom-dict.txt"
        lines = len(dictionary.read_text().splitlines())
        with dictionary.open("a") as file:
            file.write("{0x0009\n")
        result = package.run_python(START, TESSARET_DATA_DIR=str(self.folder))
        failure = rf"80040111 start Error reading \[{re.escape(str(dictionary))}\]: line {lines + 1}: [^\n]+\n"
        self.assertRegex(result.stdout, f"^{failure}{failure}80040111\n$")
        self.assertEqual(result.stderr, "")

    def test_the_folder_of_the_dictionaries_may_be_named_by_the_program(self):
        result = package.run_python(f"""
import os, tessaret
os.environ["TESSARET_DATA_DIR"] = {str(package.SOURCE_DIR / "data")!r}
tessaret.start()
print("started")
""", TESSARET_DATA_DIR="/no/such/folder")
        self.assertEqual((result.stdout, result.stderr), ("started\n", ""))


class CancelledFiles(package.PackageTest):
    def setUp(self):
        super().setUp()
        tessaret.start()  # from files
        self.addCleanup(tessaret.cancel_files, False)

    def test_files_fail_until_they_may_work_again(self):
        path = self.folder / "a.dcm"
        with tessaret.create("Tessaret.DCMObject") as made:
            made.VR[0x10, 0x10] = "Doe^John"
            for cancel in ({"cancel": True}, {}):
                self.assertIsNone(tessaret.cancel_files(**cancel))
                with self.assertRaises(tessaret.Error) as caught:
                    made.Save(path)
                self.assertEqual((caught.exception.status, caught.exception.source, caught.exception.words),
                                 (0x80020009, "Tessaret.DCMObject", "Operation canceled"))
                self.assertEqual(list(self.folder.iterdir()), [])
                tessaret.cancel_files(False)
            self.assertIs(made.Save(path), True)

    def test_another_thread_cancels_a_file_that_is_waited_for(self):
        path = self.folder / "pipe"
        os.mkfifo(path)
        failures = []

        def load():
            with tessaret.create("Tessaret.DCMObject") as made, self.assertRaises(tessaret.Error) as caught:
                made.Load(path, True)
            failures.append(caught.exception.words)
        with open(os.open(path, os.O_RDWR), "wb", buffering=0) as writer:
            worker = threading.Thread(target=load)
            worker.start()
            writer.write(b"\x10\0\x10\0PN\x08\0")
            left = array.array("i", [1])
            while left[0]:  # until it has been read
                time.sleep(0.001)
                fcntl.ioctl(writer, termios.FIONREAD, left)
            tessaret.cancel_files()
            writer.write(b"Doe^John")
            worker.join(30)
            self.assertFalse(worker.is_alive())
        self.assertEqual(failures, ["Operation canceled"])


class Loading(package.PackageTest):
    def test_a_library_that_is_named_and_missing_is_an_import_error(self):
        result = package.run_python("import tessaret", TESSARET_LIBRARY="/no/such/file.so")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("ImportError: the Tessaret library that TESSARET_LIBRARY names cannot be loaded: /no/such/file.so", result.stderr)

    def test_a_library_may_be_named_by_the_way_to_it_from_where_the_program_starts(self):
        result = package.run_python(f"""
import os
os.chdir({str(package.LIBRARY_FOLDER)!r})
import tessaret
os.chdir("/")
tessaret.start()
print("started")
""", TESSARET_LIBRARY="./libtessaret.so")
        self.assertEqual((result.stdout, result.stderr), ("started\n", ""))

    def test_another_library_is_an_import_error(self):
        result = package.run_python("import tessaret", TESSARET_LIBRARY="libc.so.6")
        self.assertIn("ImportError: libc.so.6 is not the Tessaret library", result.stderr)

    def test_a_library_of_another_version_is_an_import_error(self):
        library = package.LIBRARY_FOLDER / "libtessaret_of_another_version.so"
        result = package.run_python("import tessaret", TESSARET_LIBRARY=str(library))
        self.assertIn(f"ImportError: {library} is version 10.2.3 of the Tessaret library: this package needs version 0\n", result.stderr)

    def test_a_copy_in_a_prefix_takes_the_library_of_the_prefix(self):
        for number, place in enumerate(("lib/python3/dist-packages", "lib/python3.11/site-packages")):
            prefix = self.folder / str(number)
            shutil.copytree(package.PACKAGE_FOLDER / "tessaret", prefix / place / "tessaret")
            (prefix / "lib" / "libtessaret.so.0").symlink_to(package.LIBRARY_FOLDER / "libtessaret.so.0")
            result = package.run_python("import tessaret; print(tessaret.__file__, tessaret._library.library._name)", TESSARET_LIBRARY="",
                                        PYTHONPATH=str(prefix / place))
            with self.subTest(place):
                self.assertEqual((result.stdout, result.stderr),
                                 (f"{prefix / place}/tessaret/__init__.py {prefix}/lib/libtessaret.so.0\n", ""))

    def test_a_copy_takes_the_library_beside_it_before_those_of_its_prefix(self):
        copied = self.folder / "lib" / "python3" / "dist-packages" / "tessaret"
        shutil.copytree(package.PACKAGE_FOLDER / "tessaret", copied)
        multiarch = sysconfig.get_config_var("MULTIARCH")
        # From the last one to be looked at to the first.
        for place in (self.folder / "lib64", self.folder / "lib", *([self.folder / "lib" / multiarch] if multiarch else []), copied):
            place.mkdir(exist_ok=True)
            (place / "libtessaret.so.0").symlink_to(package.LIBRARY_FOLDER / "libtessaret.so.0")
            result = package.run_python("import tessaret; print(tessaret._library.library._name)", TESSARET_LIBRARY="",
                                        PYTHONPATH=str(copied.parent))
            with self.subTest(place):
                self.assertEqual((result.stdout, result.stderr), (f"{place}/libtessaret.so.0\n", ""))

    def test_without_a_name_the_loader_looks_for_it(self):
        library = str(package.LIBRARY_FOLDER)
        result = package.run_python("import tessaret; print(tessaret.__version__)", TESSARET_LIBRARY="", LD_LIBRARY_PATH=library)
        self.assertEqual((result.stdout, result.stderr), (tessaret.__version__ + "\n", ""))
        result = package.run_python("import tessaret", TESSARET_LIBRARY="", LD_LIBRARY_PATH="")
        self.assertRegex(result.stderr, "ImportError: the Tessaret library cannot be loaded: libtessaret.so.0: .* "
                                        "TESSARET_LIBRARY can name the file")

    def test_without_its_dictionaries_the_library_says_so(self):
        result = package.run_python("import tessaret; tessaret.create('Tessaret.DCMOptions')", TESSARET_DATA_DIR="/no/such/folder")
        self.assertIn("tessaret._errors.Error: Tessaret.DCMOptions: ", result.stderr)

    def test_the_version_is_that_of_the_header(self):
        header = (package.SOURCE_DIR / "include" / "tessaret" / "version.h").read_text()
        numbers = [line.split()[2] for line in header.splitlines() if line.startswith("#define TESSARET_VERSION_M") or "_PATCH " in line
                   and line.startswith("#define TESSARET_VERSION_PATCH")]
        self.assertEqual(tessaret.__version__, ".".join(numbers))


if __name__ == "__main__":
    unittest.main()
