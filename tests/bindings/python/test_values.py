"""Values of every kind, from Python to the library and back."""

import array
import copy
import ctypes
import datetime
import decimal
import enum
import math
import pathlib
import pickle
import struct
import sys
import tracemalloc
import unittest
import warnings

import numpy
import package

package.use_library("tessaret_echo")

import tessaret
from tessaret import _dates

SHORT, LONG, FLOAT, DOUBLE, DATE, STRING, OBJECT, BOOL, SIGNED_BYTE, BYTE = 2, 3, 4, 5, 7, 8, 9, 11, 16, 17
ARRAY = 0x2000


class EchoTest(package.PackageTest):
    def setUp(self):
        super().setUp()
        self.echo = package.new_echo()
        self.addCleanup(self.echo.close)

    def assert_echoed(self, value, kind, back=None):
        """What Python hands over arrives as `kind`, and comes back."""
        expected = value if back is None else back
        self.assertEqual(self.echo.TypeOf(value), kind)
        got = self.echo.Echo(value)
        self.assertEqual((type(got), got), (type(expected), expected))


class Numbers(EchoTest):
    def test_whole_numbers_come_through_a_property_up_to_their_limits(self):
        for name, lowest, highest in (("Short", -2**15, 2**15 - 1), ("Long", -2**31, 2**31 - 1), ("Byte", 0, 255)):
            for number in (lowest, -1 if lowest else 1, 0, 1, highest):
                with self.subTest(name, number=number):
                    setattr(self.echo, name, number)
                    self.assertEqual(getattr(self.echo, name), number)
            for number in (lowest - 1, highest + 1, 2**40, -2**70):
                with self.subTest(name, number=number), self.assertRaises(OverflowError):
                    setattr(self.echo, name, number)
            self.assertEqual(getattr(self.echo, name), highest)

    def test_fractions_come_through_with_what_is_no_number(self):
        self.echo.Double = 0.1
        self.assertEqual(self.echo.Double, 0.1)
        self.echo.Float = 0.1
        # The nearest number of 32 bits.
        self.assertEqual(self.echo.Float, struct.unpack("f", struct.pack("f", 0.1))[0])
        for name in ("Double", "Float"):
            for number in (math.inf, -math.inf, -0.0, 5):
                setattr(self.echo, name, number)
                self.assertEqual(math.copysign(1, getattr(self.echo, name)), math.copysign(1, number))
                self.assertEqual(getattr(self.echo, name), number)
            setattr(self.echo, name, math.nan)
            self.assertTrue(math.isnan(getattr(self.echo, name)))
        self.echo.Double = sys.float_info.max
        self.assertEqual(self.echo.Double, sys.float_info.max)
        with self.assertRaises(OverflowError):
            self.echo.Float = 1e39
        with self.assertRaises(OverflowError):
            self.echo.Double = 10**400

    def test_a_number_of_another_type_is_converted_by_the_library(self):
        self.echo.Long = 2.5
        self.assertEqual(self.echo.Long, 2)
        self.echo.Long = " 12 "
        self.assertEqual(self.echo.Long, 12)
        self.echo.Long = True
        self.assertEqual(self.echo.Long, 1)
        self.assertEqual(self.echo.Mix("1", True)[0], 2.0)
        self.echo.Double = "1e3"
        self.assertEqual(self.echo.Double, 1000.0)
        self.echo.Double = decimal.Decimal("0.5")
        self.assertEqual(self.echo.Double, 0.5)
        self.echo.Text = 12
        self.assertEqual(self.echo.Text, "12")
        for wrong in ("twelve", b"12", [12], None, object(), math.nan, 1j):
            with self.subTest(wrong), self.assertRaises((TypeError, OverflowError)):
                self.echo.Long = wrong
        self.assertEqual(self.echo.Long, 1)

    def test_what_acts_as_a_whole_number_is_one(self):
        class Colour(enum.IntEnum):
            RED = 7

        class Index:
            def __index__(self):
                return 9

        self.echo.Short = Colour.RED
        self.assertEqual(self.echo.Short, 7)
        self.echo.Short = Index()
        self.assertEqual(self.echo.Short, 9)
        self.assert_echoed(Colour.RED, LONG, 7)
        self.assert_echoed(Index(), LONG, 9)

    def test_numbers_of_any_type_keep_their_value(self):
        for number in (0, 1, -1, 2**31 - 1, -2**31):
            self.assert_echoed(number, LONG)
        for number in (2**31, -2**31 - 1, 2**53, -2**53):
            self.assert_echoed(number, DOUBLE, float(number))
        for number in (2**53 + 1, -2**63, 10**400):
            with self.assertRaises(OverflowError):
                self.echo.Echo(number)
        for number in (0.5, math.inf, 5e-324, -0.0):
            self.assert_echoed(number, DOUBLE)
        self.assertTrue(math.isnan(self.echo.Echo(math.nan)))
        self.assertEqual([self.echo.SignedByte(number) for number in (-128, -1, 0, 127)], [-128, -1, 0, 127])

    def test_truth_is_true_or_false(self):
        for truth in (True, False):
            self.echo.Truth = truth
            self.assertIs(self.echo.Truth, truth)
            self.assert_echoed(truth, BOOL)
        for value, truth in ((1, True), (0, False), ("true", True), ("False", False), (0.5, True)):
            self.echo.Truth = value
            self.assertIs(self.echo.Truth, truth)
        with self.assertRaises(TypeError):
            self.echo.Truth = None
        with self.assertRaises(TypeError):
            self.echo.Truth = "yes"

    def test_numbers_of_numpy_are_numbers(self):
        self.echo.Long = numpy.int64(-5)
        self.assertEqual(self.echo.Long, -5)
        self.echo.Double = numpy.float32(0.5)
        self.assertEqual(self.echo.Double, 0.5)
        self.assert_echoed(numpy.uint16(65535), LONG, 65535)
        self.assert_echoed(numpy.float32(0.5), DOUBLE, 0.5)
        self.assert_echoed(numpy.bool_(True), BOOL, True)
        self.assert_echoed(numpy.uint32(2**32 - 1), DOUBLE, 4294967295.0)

    def test_truth_of_numpy_is_a_number_as_pythons_is(self):
        for name in ("Short", "Long", "Float", "Double", "Byte"):
            for truth in (numpy.bool_(True), numpy.array(True)):
                # NumPy warns now, and refuses later.
                with self.subTest(name, kind=type(truth)), warnings.catch_warnings():
                    warnings.simplefilter("error")
                    setattr(self.echo, name, 0)
                    setattr(self.echo, name, truth)
                    self.assertEqual(getattr(self.echo, name), 1)

    def test_dates_of_numpy_are_no_bytes(self):
        for value in (numpy.datetime64("2001-02-03"), numpy.datetime64(5, "ns"), numpy.timedelta64(5, "s"),
                      numpy.array(["2001-02-03"], "datetime64[D]")):
            for use in (self.echo.Echo, lambda given: setattr(self.echo, "When", given), lambda given: setattr(self.echo, "Long", given),
                        tessaret.Array, lambda given: tessaret.Array([given])):
                with self.subTest(value), self.assertRaisesRegex(TypeError, "the library has no value for .* of the type .*64"):
                    use(value)
        self.echo.When = numpy.datetime64("2001-02-03T06:00").item()
        self.assertEqual(self.echo.When, datetime.datetime(2001, 2, 3, 6))


class Texts(EchoTest):
    def test_text_comes_through_whatever_is_in_it(self):
        long_text = "\u00fc" * 100_000
        for text in ("", "a", "M\u00fcller", "\U0001f600", "a\0b", "\0", "line\n", "\udcff\udc80", "a\udcfcb", "\uffff", long_text):
            with self.subTest(text[:10]):
                self.echo.Text = text
                self.assertEqual(self.echo.Text, text)
                self.assert_echoed(text, STRING)

    def test_a_null_text_is_none_and_differs_from_an_empty_one(self):
        self.echo.Text = None
        self.assertIsNone(self.echo.Text)
        self.assertIs(self.echo.IsNull(None), True)
        self.assertIs(self.echo.IsNull(""), False)
        self.echo.Text = ""
        self.assertEqual(self.echo.Text, "")

    def test_half_a_character_is_refused(self):
        for text in ("\ud800", "a\udfff"):
            with self.assertRaises(UnicodeEncodeError):
                self.echo.Text = text
            with self.assertRaises(UnicodeEncodeError):
                self.echo.Echo(text)

    def test_a_path_is_a_text_and_bytes_are_none(self):
        self.echo.Text = pathlib.Path("/tmp/\udcff.dcm")
        self.assertEqual(self.echo.Text, "/tmp/\udcff.dcm")
        for value in (b"text", bytearray(b"text"), memoryview(b"text")):
            with self.assertRaisesRegex(TypeError, "newVal has to be text, not "):
                self.echo.Text = value

    def test_blocks_are_clean_after_a_long_text(self):
        self.echo.Text = "x" * 10_000
        self.echo.Text = "y"
        self.assertEqual(self.echo.Text, "y")

    def test_a_long_text_is_not_kept(self):
        self.echo.Text = self.echo.Echo("x")  # what the first call makes
        tracemalloc.start()
        self.addCleanup(tracemalloc.stop)
        for use in (lambda text: setattr(self.echo, "Text", text), self.echo.Echo):
            use("x" * 1_000_000)
            self.assertLess(tracemalloc.get_traced_memory()[0], 100_000)


class Dates(EchoTest):
    def test_dates_come_through_to_the_millisecond(self):
        # By hand: 2001-02-03 is day 36925; 06:00 is a quarter of a day.
        self.echo.When = datetime.datetime(2001, 2, 3, 6)
        self.assertEqual(self.echo.When, datetime.datetime(2001, 2, 3, 6))
        self.echo.Double = 0
        self.assertEqual(_dates.days_of(datetime.datetime(2001, 2, 3, 6)), 36925.25)
        self.assertEqual(_dates.days_of(datetime.datetime(1899, 12, 29, 6)), -1.25)
        self.assertEqual(_dates.days_of(datetime.datetime(1899, 12, 30)), 0)
        for date in (datetime.datetime(100, 1, 1), datetime.datetime(1899, 12, 29, 23, 59, 59, 999000),
                     datetime.datetime(1899, 12, 30), datetime.datetime(9999, 12, 31, 23, 59, 59, 999000),
                     datetime.datetime(2000, 2, 29, 0, 0, 0, 1000)):
            with self.subTest(date):
                self.echo.When = date
                self.assertEqual(self.echo.When, date)
                self.assert_echoed(date, DATE)

    def test_the_library_reads_the_same_date_as_python(self):
        self.echo.Friend = datetime.datetime(1899, 12, 29, 14, 5, 6, 250000)
        self.assertEqual(self.echo.Text, "1899-12-29 14:05:06.250")

    def test_every_day_and_millisecond_keeps_its_value(self):
        for day in range(-657_434, 2_958_466, 997):
            date = datetime.datetime(1899, 12, 30) + datetime.timedelta(days=day, milliseconds=day * 7919 % 86_400_000)
            self.assertEqual(_dates.date_of(_dates.days_of(date)), date)

    def test_what_is_finer_than_a_millisecond_is_cut_off(self):
        self.assert_echoed(datetime.datetime(2001, 2, 3, 4, 5, 6, 250999), DATE, datetime.datetime(2001, 2, 3, 4, 5, 6, 250000))
        self.assert_echoed(datetime.datetime(9999, 12, 31, 23, 59, 59, 999999), DATE, datetime.datetime(9999, 12, 31, 23, 59, 59, 999000))

    def test_a_day_is_its_midnight(self):
        self.assert_echoed(datetime.date(2001, 2, 3), DATE, datetime.datetime(2001, 2, 3))

    def test_dates_that_the_library_cannot_hold_are_refused(self):
        for date in (datetime.datetime(99, 12, 31), datetime.datetime(2001, 2, 3, tzinfo=datetime.timezone.utc)):
            with self.assertRaises(ValueError):
                self.echo.When = date
        for days in (math.nan, math.inf, -657_436.0, 2_958_466.0, 1e300):
            with self.assertRaises(ValueError):
                _dates.date_of(days)
        self.echo.When = 36925.25
        self.assertEqual(self.echo.When, datetime.datetime(2001, 2, 3, 6))

    def test_a_time_alone_is_no_value(self):
        with self.assertRaises(TypeError):
            self.echo.Echo(datetime.time(1, 2))


class Bytes(EchoTest):
    def test_bytes_come_through(self):
        for raw in (b"", b"\0", b"abc", bytes(range(256)) * 1000):
            self.assert_echoed(raw, ARRAY | BYTE)

    def test_anything_with_a_buffer_of_bytes_is_taken(self):
        for value in (bytearray(b"abc"), memoryview(b"abc"), memoryview(b"axbxcx")[::2], array.array("B", b"abc"),
                      (ctypes.c_ubyte * 3)(*b"abc"), (ctypes.c_char * 3)(*b"abc")):
            with self.subTest(type(value)):
                self.assert_echoed(value, ARRAY | BYTE, b"abc")

    def test_a_buffer_of_ctypes_is_copied_as_it_lies(self):
        # It names the order of bytes, as in "<h". Entry by entry a list would have 8 bytes for each, before any number.
        for kind, number in ((ctypes.c_char, BYTE), (ctypes.c_ubyte, BYTE), (ctypes.c_byte, SIGNED_BYTE), (ctypes.c_int16, SHORT),
                             (ctypes.c_int32, LONG), (ctypes.c_float, FLOAT)):
            value = (kind * 100_000)()
            tracemalloc.start()
            try:
                self.assertEqual(self.echo.TypeOf(value), ARRAY | number)
                peak = tracemalloc.get_traced_memory()[1]
            finally:
                tracemalloc.stop()
            with self.subTest(kind):
                # One copy of the buffer, and for an array the memory of that.
                self.assertLess(peak, 2 * ctypes.sizeof(value) + 50_000)

    def test_the_order_of_bytes_that_a_buffer_names_is_minded(self):
        for kind, name, values in ((ctypes.c_int16, "short", [1, -2]), (ctypes.c_int32, "long", [1, -2]), (ctypes.c_double, "double", [0.1, 2])):
            for order in ("__ctype_le__", "__ctype_be__"):
                with self.subTest(kind, order=order):
                    back = self.echo.Echo((getattr(kind, order) * 2)(*values))
                    self.assertEqual((back.type, back.tolist()), (name, values))

    def test_bytes_with_bounds_of_their_own_or_dimensions_are_an_array(self):
        self.assert_echoed(tessaret.Array(b"abc"), ARRAY | BYTE, b"abc")
        self.assert_echoed(tessaret.Array(b"abc", lower=(1,)), ARRAY | BYTE, tessaret.Array(b"abc", lower=(1,)))
        square = tessaret.Array([[1, 2], [3, 4]], "byte")
        self.assert_echoed(square, ARRAY | BYTE, square)


class Arrays(EchoTest):
    TYPES = (("short", SHORT, [-2**15, 0, 2**15 - 1]), ("long", LONG, [-2**31, 0, 2**31 - 1]), ("float", FLOAT, [0.5, -math.inf, 0.0]),
             ("double", DOUBLE, [0.1, math.inf, -0.0]), ("bool", BOOL, [True, False, True]),
             ("date", DATE, [datetime.datetime(1899, 12, 29, 6), datetime.datetime(1899, 12, 30), datetime.datetime(2001, 2, 3, 6)]),
             ("signed byte", SIGNED_BYTE, [-128, 0, 127]))

    def test_arrays_of_every_type_and_bound_come_through(self):
        for name, number, values in self.TYPES:
            for lower in (0, 1, -1, -2**31, 2**31 - 3):
                with self.subTest(name, lower=lower):
                    made = tessaret.Array(values, name, (lower,))
                    self.assert_echoed(made, ARRAY | number)
                    back = self.echo.Echo(made)
                    self.assertEqual((back.type, back.shape, back.lower, back.tolist()), (name, (3,), (lower,), values))
                    self.assertEqual(list(back), values)

    def test_the_first_index_runs_fastest(self):
        back = self.echo.Echo([[1, 2, 3], [4, 5, 6]])
        self.assertEqual((back.type, back.shape, back.ndim, len(back)), ("long", (2, 3), 2, 2))
        self.assertEqual(list(back.memory), [1, 4, 2, 5, 3, 6])
        self.assertEqual(back.tolist(), [[1, 2, 3], [4, 5, 6]])
        self.assertEqual((back[0, 0], back[1, 0], back[0, 2], back[-1, -1], back[1]), (1, 4, 3, 6, [4, 5, 6]))

    def test_three_dimensions_with_bounds_keep_every_place(self):
        nested = [[[100 * i + 10 * j + k for k in range(4)] for j in range(3)] for i in range(2)]
        made = tessaret.Array(nested, "short", (1, -5, 7))
        self.assert_echoed(made, ARRAY | SHORT)
        back = self.echo.Echo(made)
        self.assertEqual(back.tolist(), nested)
        self.assertEqual(back.lower, (1, -5, 7))
        self.assertTrue(all(back[i, j, k] == nested[i][j][k] for i in range(2) for j in range(3) for k in range(4)))
        # By hand: the index of the first dimension counts 1, of the second 2, of the third 6.
        self.assertEqual(back.memory[1 + 2 * 2 + 3 * 6], 123)

    def test_arrays_without_entries_keep_their_shape(self):
        for shape, nested in (((0,), []), ((0, 0), []), ((2, 0), [[], []]), ((0, 3), []), ((3, 0, 2), [[], [], []])):
            with self.subTest(shape):
                made = tessaret.Array([], "double")
                made._shape, made._lower = shape, (1,) * len(shape)
                back = self.echo.Echo(made)
                self.assertEqual((back.shape, back.lower, back.tolist(), list(back.memory)), (shape, made.lower, nested, []))

    def test_an_array_without_dimensions_has_nothing_in_it(self):
        made = tessaret.Array([], "short")
        made._shape = made._lower = ()
        back = self.echo.Echo(made)
        self.assertEqual((back.shape, back.tolist(), len(back), back.type), ((), [], 0, "short"))

    def test_lists_get_the_type_that_fits_their_values(self):
        dates = [datetime.datetime(2001, 2, 3), datetime.datetime(2001, 2, 4)]
        for values, name in (([1, 2], "long"), ([1, 2.5], "double"), ([True, False], "bool"), ([1, True], "long"), (dates, "date"),
                             ([2**31], "double"), ((1, 2), "long"), ([], "long")):
            with self.subTest(values):
                self.assertEqual(self.echo.Echo(values).type, name)
                self.assertEqual(self.echo.Echo(values).tolist(), list(values))
        for wrong, error in (([["a"]], TypeError), (["a", 1], TypeError), ([None], TypeError), ([2**60], OverflowError),
                             ([[1, 2], [3]], ValueError), ([[1], 2], ValueError), ([1, [2]], ValueError), ([{}], TypeError)):
            with self.subTest(wrong), self.assertRaises(error):
                self.echo.Echo(wrong)

    def test_buffers_of_numbers_get_the_type_that_keeps_their_values(self):
        for letter, name, values in (("h", "short", [-5, 5]), ("i", "long", [-5, 5]), ("f", "float", [0.5, 2]), ("d", "double", [0.1, 2]),
                                     ("b", "signed byte", [-5, 5]), ("H", "long", [0, 65535]), ("q", "long", [-5, 5]),
                                     ("I", "long", [0, 5]), ("I", "double", [0, 2**32 - 1]), ("Q", "double", [0, 2**53])):
            with self.subTest(letter, values=values):
                back = self.echo.Echo(array.array(letter, values))
                self.assertEqual((back.type, back.tolist()), (name, values))
        with self.assertRaises(OverflowError):
            self.echo.Echo(array.array("Q", [2**64 - 1]))

    def test_buffers_of_characters_and_truths_are_bytes_and_truths(self):
        self.assertEqual(self.echo.Echo((ctypes.c_bool * 2)(True, False)), tessaret.Array([True, False], "bool"))
        characters = memoryview(b"abcd").cast("c")
        self.assertEqual(tessaret.Array(characters, "short").tolist(), [97, 98, 99, 100])
        self.assertEqual(tessaret.Array(memoryview(characters).cast("B").cast("c", (2, 2))), tessaret.Array([[97, 98], [99, 100]], "byte"))
        self.assert_echoed(ctypes.c_char(b"a"), LONG, 97)

    def test_entries_that_do_not_fit_a_type_are_refused(self):
        for values, name in (([2**15], "short"), ([256], "byte"), ([-1], "byte"), ([2**31], "long")):
            with self.subTest(name), self.assertRaises(OverflowError):
                tessaret.Array(values, name)
        with self.assertRaisesRegex(ValueError, "no array holds entries of the type 'text'"):
            tessaret.Array([1], "text")
        with self.assertRaisesRegex(ValueError, "1 dimensions cannot begin with 2 indices"):
            tessaret.Array([1], lower=(1, 1))
        for lower, error in ((2**31, OverflowError), (-2**31 - 1, OverflowError), (2**64, OverflowError), (1.5, TypeError),
                             ("1", TypeError)):
            with self.subTest(lower), self.assertRaises(error):
                tessaret.Array([1], lower=(lower,))
        ring = []
        ring.append(ring)
        for use in (tessaret.Array, self.echo.Echo):
            with self.assertRaisesRegex(ValueError, "an array has at most 64 dimensions"):
                use(ring)

    def test_entries_of_another_kind_are_refused(self):
        for values, name in (([1.5], "short"), ([2.0], "byte"), ([datetime.date(2001, 2, 3)], "long"), ([datetime.date(2001, 2, 3)], "double")):
            with self.subTest(values), self.assertRaises(TypeError):
                tessaret.Array(values, name)
        made = tessaret.Array([1, 2], "short")
        for value, error in ((1.5, TypeError), ("1", TypeError), (None, TypeError), (2**15, OverflowError)):
            with self.subTest(value), self.assertRaises(error):
                made[0] = value
        self.assertEqual(made.tolist(), [1, 2])
        with self.assertRaises(TypeError):
            tessaret.Array([datetime.date(2001, 2, 3)])[0] = "2001-02-03"

    def test_a_single_number_is_no_array(self):
        for value in (5, 1.5, ctypes.c_int(5), "text", range(3)):
            with self.subTest(value), self.assertRaisesRegex(TypeError, "is made of lists or a buffer with dimensions"):
                tessaret.Array(value)
        released = memoryview(b"abc")
        released.release()
        for use in (tessaret.Array, self.echo.Echo):
            with self.assertRaisesRegex(ValueError, "released"):
                use(released)

    def test_copies_and_pickles_keep_bounds_and_entries_of_every_kind(self):
        empty = tessaret.Array([], "double", (1,))
        for shape in ((0,), (0, 3), (3, 0), (2, 0, 2), ()):
            empty._shape, empty._lower = shape, (1,) * len(shape)
            for made in (copy.copy(empty), copy.deepcopy(empty), pickle.loads(pickle.dumps(empty)), tessaret.Array(empty)):
                self.assertEqual((made, made.shape, made.lower), (empty, shape, (1,) * len(shape)))
        for name, _, values in self.TYPES:
            given = tessaret.Array([values, values], name, (1, -1))
            for made in (copy.copy(given), pickle.loads(pickle.dumps(given)), tessaret.Array(given)):
                self.assertEqual(made, given)
                made[0, 0] = values[1]
                self.assertNotEqual(made, given)

    def test_numbers_that_are_no_date_can_be_kept_and_shown(self):
        given = tessaret.Array([math.nan, 1e300], "date")
        for made in (given, tessaret.Array(given), pickle.loads(pickle.dumps(given)), self.echo.Echo(given)):
            self.assertTrue(math.isnan(made.memory[0]))
            self.assertEqual((made.memory[1], repr(made)), (1e300, "<tessaret.Array of type 'date', shape (2,)>"))
            with self.assertRaises(ValueError):
                made.tolist()

    def test_what_is_shown_of_an_array_makes_it_again_or_says_that_it_does_not(self):
        for made in (tessaret.Array([]), tessaret.Array([[], []]), tessaret.Array([[1, 2]], "short", (1, 0))):
            self.assertEqual(eval(repr(made)), made)
        made = tessaret.Array([], "double")
        made._shape, made._lower = (0, 3), (0, 0)
        self.assertEqual(repr(made), "<tessaret.Array of type 'double', shape (0, 3)>")
        made._shape, made._lower = (10**9, 0), (0, 0)
        self.assertEqual(repr(made), "<tessaret.Array of type 'double', shape (1000000000, 0)>")

    def test_an_array_is_indexed_as_a_list_is(self):
        made = tessaret.Array([10, 20, 30], lower=(5,))
        self.assertEqual((made[0], made[-1], made[1:], list(made)), (10, 30, [20, 30], [10, 20, 30]))
        for index in (3, -4, (0, 0)):
            with self.assertRaises(IndexError):
                made[index]
        with self.assertRaises(TypeError):
            made["1"]
        made[1] = 25
        self.assertEqual(self.echo.Echo(made).tolist(), [10, 25, 30])
        truths = tessaret.Array([True, False])
        truths[1] = True
        self.assertEqual(list(truths.memory), [-1, -1])

    def test_arrays_are_equal_by_type_bounds_and_entries(self):
        made = tessaret.Array([1, 2])
        self.assertEqual(made, tessaret.Array((1, 2)))
        for other in (tessaret.Array([1, 3]), tessaret.Array([1, 2], "short"), tessaret.Array([1, 2], lower=(1,)), [1, 2]):
            self.assertNotEqual(made, other)

    def test_an_array_says_what_it_is(self):
        self.assertEqual(repr(tessaret.Array([[1, 2]], lower=(1, 0))), "tessaret.Array([[1, 2]], 'long', lower=(1, 0))")
        self.assertEqual(repr(tessaret.Array(range(0) and [] or [0] * 30)), "<tessaret.Array of type 'long', shape (30,)>")

    def test_what_an_array_shows_outlives_it(self):
        view = self.echo.Echo([1, 2, 3]).memory
        self.echo.Echo([9] * 1000)
        self.assertEqual(list(view), [1, 2, 3])

    def test_a_shape_that_lies_is_refused(self):
        made = tessaret.Array([1, 2])
        with self.assertRaises(AttributeError):
            made.shape = (1000,)
        made._shape = (1000,)
        with self.assertRaises(tessaret.BadArgument):
            self.echo.Echo(made)

    def test_lists_may_hold_numbers_of_numpy(self):
        self.assertEqual(self.echo.Echo([numpy.int16(1), 2]).tolist(), [1, 2])
        self.assertEqual(self.echo.Echo([numpy.float32(0.5), 2]).tolist(), [0.5, 2.0])
        self.assertEqual(self.echo.Echo([numpy.bool_(True), False]), tessaret.Array([True, False]))
        self.assertEqual(self.echo.Echo([numpy.bool_(True), 2]).tolist(), [1, 2])

    def test_numpy_takes_an_array_without_a_copy(self):
        for name, _, values in self.TYPES:
            with self.subTest(name):
                back = self.echo.Echo(tessaret.Array(values, name))
                taken = numpy.asarray(back)
                self.assertEqual(taken.ctypes.data, back._address)
                self.assertEqual(taken.tolist(), list(back.memory))
        grid = self.echo.Echo([[1, 2, 3], [4, 5, 6]])
        taken = numpy.asarray(grid)
        self.assertEqual((taken.shape, taken.dtype, taken.flags.f_contiguous), ((2, 3), numpy.dtype("int32"), True))
        self.assertEqual(taken.tolist(), grid.tolist())
        taken[1, 2] = 60
        self.assertEqual(grid[1, 2], 60)
        del grid
        self.echo.Echo([[9] * 100] * 100)
        self.assertEqual(taken.tolist(), [[1, 2, 3], [4, 5, 60]])
        self.assertEqual(numpy.asarray(self.echo.Echo(tessaret.Array([], "float"))).shape, (0,))

    def test_arrays_of_numpy_come_through_in_any_order(self):
        grid = numpy.arange(24, dtype=numpy.int16).reshape(2, 3, 4)
        for given in (grid, numpy.asfortranarray(grid), grid[::-1, ::2], grid.astype(">i2"), grid.T, grid.astype(numpy.float32),
                      grid.astype(numpy.float16), grid.astype(numpy.int64), grid > 5):
            with self.subTest(given.dtype, shape=given.shape):
                back = self.echo.Echo(given)
                self.assertEqual(back.shape, given.shape)
                self.assertEqual(back.tolist(), given.tolist())
        with self.assertRaises(TypeError):
            self.echo.Echo(grid.astype(complex))


class Objects(EchoTest):
    def test_an_object_comes_through_as_itself(self):
        other = package.new_echo()
        self.assertIs(self.echo.Echo(other), other)
        self.assertEqual(self.echo.TypeOf(other), OBJECT)
        self.assertIs(self.echo.Itself(), self.echo)
        self.echo.Friend = other
        self.assertIs(self.echo.Friend, other)
        self.echo.Friend = self.echo
        self.assertIs(self.echo.Friend, self.echo)
        self.echo.Friend = None
        self.assertIsNone(self.echo.Friend)

    def test_none_is_no_object_and_no_value(self):
        self.assertIsNone(self.echo.Friend)
        self.assertIsNone(self.echo.Echo(None))
        self.assertEqual(self.echo.TypeOf(None), 0)

    def test_what_is_no_value_is_refused(self):
        for value in (object(), {}, {1}, 1j, lambda: None, type):
            with self.subTest(value), self.assertRaisesRegex(TypeError, "the library has no value for "):
                self.echo.Echo(value)

    def test_an_object_of_another_kind_is_refused(self):
        with tessaret.create("Tessaret.DcmDictionary") as dictionary, self.assertRaises(tessaret.NoInterface) as caught:
            type(self.echo).Friend.fset(self.echo, dictionary)
        self.assertEqual(caught.exception.status, 0x80004002)


if __name__ == "__main__":
    unittest.main()
