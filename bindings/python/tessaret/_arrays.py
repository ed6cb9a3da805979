"""Arrays of numbers, booleans and dates, as the library lays them out: the first index runs fastest."""

import array
import ctypes
import datetime
import itertools
import math
import operator
import struct

from . import _dates, _library

# Of each type: its name, its number, the letter of the struct module for one entry, and what NumPy calls it.
_TYPES = (
    ("short", _library.SHORT, "h", "i2"),
    ("long", _library.LONG, "i", "i4"),
    ("float", _library.FLOAT, "f", "f4"),
    ("double", _library.DOUBLE, "d", "f8"),
    ("date", _library.DATE, "d", "f8"),
    ("bool", _library.BOOL, "h", "i2"),
    ("signed byte", _library.SIGNED_BYTE, "b", "i1"),
    ("byte", _library.BYTE, "B", "u1"),
)
_BY_NAME = {name: (number, letter, numpy) for name, number, letter, numpy in _TYPES}
NAMES = {number: name for name, number, _, _ in _TYPES}

# What a buffer of another program holds, by its letter: the type that keeps all its values. Other whole numbers are looked at.
_SAME = {"h": "short", "i": "long", "f": "float", "d": "double", "b": "signed byte", "B": "byte", "c": "byte"}
_OF_FORMAT = {**_SAME, "H": "long", "e": "float", "?": "bool"}
_WHOLE = "IlLqQnN"
_LONG_RANGE = range(-2**31, 2**31)
# As many as NumPy takes. A list that lies in itself has no end of them.
_MOST_DIMENSIONS = 64
EXACT_RANGE = range(-2**53, 2**53 + 1)
_OWN_ORDERS = "@=" + ("<" if struct.pack("=h", 1)[0] else ">")


def _native(kind):
    number, letter, numpy = _BY_NAME[kind]
    return number, letter, "|" + numpy if numpy.endswith("1") else ("<" if struct.pack("=h", 1)[0] else ">") + numpy


def _type_of_whole(values):
    if all(value in _LONG_RANGE for value in values):
        return "long"
    if all(value in EXACT_RANGE for value in values):
        return "double"
    raise OverflowError("a whole number is too large for an array of the library")


def _type_of_values(values):
    """The type for entries that are Python's own."""
    if all(isinstance(value, bool) for value in values) and values:
        return "bool"
    if all(isinstance(value, datetime.date) for value in values) and values:
        return "date"
    if all(isinstance(value, int) for value in values):
        return _type_of_whole(values)
    if not all(isinstance(value, (int, float)) for value in values):
        raise TypeError("the entries of an array have to be of one kind")
    return "double"


def _plain(value):
    """A number of another kind, such as NumPy's, as Python's own."""
    if isinstance(value, (int, float, datetime.date)):
        return value
    single = number_of_buffer(value)
    if single is not None:
        return single
    if hasattr(value, "__index__"):
        return value.__index__()
    if hasattr(value, "__float__"):
        return float(value)
    raise TypeError(f"an array of the library holds numbers, booleans or dates, no {type(value).__name__}")


def _entries_of(values, kind):
    """What Python holds, as entries of this type."""
    if kind == "date":
        return [value if isinstance(value, (int, float)) else _dates.days_of(value) for value in values]
    if kind == "bool":
        return [-1 if value else 0 for value in values]
    if kind in ("float", "double"):
        return [float(value) for value in values]
    return [operator.index(value) for value in values]


def _packed(values, kind):
    """The bytes of entries of this type."""
    try:
        return struct.pack(f"={len(values)}{_BY_NAME[kind][1]}", *_entries_of(values, kind))
    except struct.error as error:
        raise OverflowError(f"an entry does not fit the type {kind!r}: {error}") from None


def _flatten(nested):
    """Lists in lists as (entries with the first index fastest, shape)."""
    shape, level = [], nested
    while isinstance(level, (list, tuple)):
        if len(shape) == _MOST_DIMENSIONS:
            raise ValueError(f"an array has at most {_MOST_DIMENSIONS} dimensions")
        shape.append(len(level))
        level = level[0] if level else None
    rows = [nested]
    for count in shape:
        inner = []
        for row in rows:
            if not isinstance(row, (list, tuple)) or len(row) != count:
                raise ValueError("the lists of an array have to be of one length")
            inner += row
        rows = inner
    if any(isinstance(entry, (list, tuple)) for entry in rows):
        raise ValueError("the lists of an array have to be of one length")
    # Rows lie one behind the other now: the last index runs fastest.
    return _turned(rows, shape), tuple(shape)


def _turned(entries, shape):
    """The order in which the last index runs fastest turned into the one in which the first does."""
    if len(shape) < 2:
        return entries
    strides = [math.prod(shape[at + 1:]) for at in range(len(shape))]
    places = itertools.product(*(range(count) for count in reversed(shape)))
    return [entries[sum(index * stride for index, stride in zip(reversed(place), strides))] for place in places]


def format_of(view):
    """The format of the entries of a memoryview; its letter alone where the order of bytes in front of it, which ctypes always names, is
    this machine's."""
    order, letter = view.format[:1], view.format[1:]
    return letter if letter in _SAME and order in _OWN_ORDERS else view.format


def _unpack_buffer(view):
    """The values of a memoryview in the order first index fastest; its letter."""
    order, letter = ("@", view.format) if view.format[0] not in "@=<>!" else (view.format[0], view.format[1:])
    if letter not in _OF_FORMAT and letter not in _WHOLE:
        raise TypeError(f"no array of the library takes entries of the format {view.format!r}")
    raw = view.tobytes("F")
    if letter == "c":
        return list(raw), letter
    return list(struct.unpack(f"{order}{len(raw) // view.itemsize}{letter}", raw)), letter


def _name_of(value):
    return type(value).__name__


def view_of(value):
    """A view of anything with the buffer protocol; None for all else. TypeError for dates of NumPy: it shows the bare bytes of one, and
    none of many."""
    try:
        view = memoryview(value)
    except TypeError:
        return None
    except ValueError:
        if isinstance(value, memoryview):  # it was released
            raise
        view = None
    if view is None or getattr(value, "ndim", view.ndim) != view.ndim:
        raise TypeError(f"the library has no value for {_name_of(value)} of the type {getattr(value, 'dtype', None)}")
    return view


def number_of_buffer(value):
    """The number that a buffer without dimensions has, such as the scalars of NumPy are; None for all else."""
    view = view_of(value)
    return _unpack_buffer(view)[0][0] if view is not None and view.ndim == 0 else None


class Array:
    """Numbers, booleans or dates of one type, in any number of dimensions.

    It is indexed as lists are, from 0: array[2], array[1, 0]. `lower` has the index that each dimension begins with in the library.
    numpy.asarray(array) takes it without a copy (booleans as -1 and 0, dates as days since 1899-12-30); so does `memory`.

        >>> array = Array([[1, 2, 3], [4, 5, 6]])
        >>> array.type, array.shape, array.lower
        ('long', (2, 3), (0, 0))
        >>> array[1, 0]
        4
        >>> list(array.memory)
        [1, 4, 2, 5, 3, 6]
    """

    __slots__ = ("_type", "_shape", "_lower", "_memory", "_address", "__weakref__")

    def __init__(self, values, type=None, lower=None):
        """From lists (of lists), or anything with the buffer protocol, such as a NumPy array.

        type: "short", "long", "float", "double", "date", "bool", "signed byte" or "byte"; what fits the values where it is None
        lower: the first index of each dimension in the library, 0 where it is None
        """
        if isinstance(values, Array):
            lower = values.lower if lower is None else lower
            if type in (None, values.type):
                self._set_copy(values.type, values.shape, lower, values.memory.tobytes())
                return
            entries, shape, natural = values._flat(), values.shape, values.type
        elif isinstance(values, (list, tuple)):
            entries, shape = _flatten(values)
            entries = [_plain(entry) for entry in entries]
            natural = None
        else:
            view = view_of(values)
            if view is None or view.ndim == 0:
                raise TypeError(f"an array of the library is made of lists or a buffer with dimensions, not of {_name_of(values)}")
            natural = _SAME.get(format_of(view))
            if natural is not None and type in (None, natural):
                self._set_copy(natural, view.shape, lower, view.tobytes("F"))
                return
            entries, letter = _unpack_buffer(view)
            shape = view.shape
            natural = _OF_FORMAT[letter] if letter in _OF_FORMAT else _type_of_whole(entries)
        kind = type or natural or _type_of_values(entries)
        if kind not in _BY_NAME:
            raise ValueError(f"no array holds entries of the type {kind!r}: {', '.join(_BY_NAME)}")
        self._set_copy(kind, shape, lower, _packed(entries, kind))

    def _set_copy(self, kind, shape, lower, packed):
        held = ctypes.create_string_buffer(packed, max(len(packed), 1))
        first = (0,) * len(shape) if lower is None else tuple(map(operator.index, lower))
        if any(index not in _LONG_RANGE for index in first):
            raise OverflowError("the first index of a dimension has at most 32 bits")
        self._set(kind, shape, first, held, len(packed))

    def _set(self, kind, shape, lower, held, size):
        if len(lower) != len(shape):
            raise ValueError(f"{len(shape)} dimensions cannot begin with {len(lower)} indices")
        self._type = kind
        self._shape = shape
        self._lower = lower
        letter = _BY_NAME[kind][1]
        # A view of nothing cannot be cast.
        self._memory = memoryview(held).cast("B")[:size].cast(letter) if size else memoryview(array.array(letter))
        self._address = ctypes.addressof(held)

    @classmethod
    def _over(cls, number, bounds, held, size):
        """Over entries that `held` keeps."""
        made = cls.__new__(cls)
        made._set(NAMES[number], tuple(count for _, count in bounds), tuple(lower for lower, _ in bounds), held, size)
        return made

    @property
    def type(self):
        """The type of its entries, such as "short"."""
        return self._type

    @property
    def shape(self):
        """How many entries each dimension has."""
        return self._shape

    @property
    def lower(self):
        """The index that each dimension begins with in the library."""
        return self._lower

    @property
    def memory(self):
        """The entries as they lie, as a memoryview, which keeps them: the first index runs fastest."""
        return self._memory

    @property
    def ndim(self):
        """How many dimensions it has."""
        return len(self.shape)

    @property
    def __array_interface__(self):
        _, letter, numpy = _native(self.type)
        size = struct.calcsize("=" + letter)
        strides = tuple(size * math.prod(self.shape[:at]) for at in range(len(self.shape)))
        return {"version": 3, "typestr": numpy, "shape": self.shape if self.shape else (0,), "strides": strides if self.shape else None,
                "data": (self._address, False)}

    def _value(self, entry):
        if self.type == "bool":
            return entry != 0
        return _dates.date_of(entry) if self.type == "date" else entry

    def _flat(self):
        """The values in the order in which they lie."""
        return [self._value(entry) for entry in self.memory]

    def __len__(self):
        return self.shape[0] if self.shape else 0

    def __iter__(self):
        return iter(self.tolist())

    def __getitem__(self, index):
        if isinstance(index, slice):
            return self.tolist()[index]
        places = index if isinstance(index, tuple) else (index,)
        if len(places) < len(self.shape) and len(places) == 1:
            return self.tolist()[index]
        return self._value(self.memory[self._place(places)])

    def __setitem__(self, index, value):
        place = self._place(index if isinstance(index, tuple) else (index,))
        size = self.memory.itemsize
        self.memory.cast("B")[place * size:(place + 1) * size] = _packed([_plain(value)], self.type)

    def _place(self, places):
        if len(places) != len(self.shape):
            raise IndexError(f"an array of {len(self.shape)} dimensions needs as many indices")
        flat, stride = 0, 1
        for place, count in zip(places, self.shape):
            place = operator.index(place)
            if not -count <= place < count:
                raise IndexError(f"index {place} lies outside a dimension of {count}")
            flat += (place % count) * stride
            stride *= count
        return flat

    def tolist(self):
        """The values as lists in lists: tolist()[i][j] is array[i, j]."""
        if not self.shape:
            return []
        level = self._flat()
        strides = [math.prod(self.shape[:at]) for at in range(len(self.shape))]

        def part(start, at):
            places = range(start, start + self.shape[at] * strides[at], strides[at])
            return [level[place] for place in places] if at + 1 == len(self.shape) else [part(place, at + 1) for place in places]

        return part(0, 0) if level else _empty_lists(self.shape)

    def __eq__(self, other):
        if not isinstance(other, Array):
            return NotImplemented
        return (self.type, self.shape, self.lower) == (other.type, other.shape, other.lower) and self.memory == other.memory

    __hash__ = None

    def __repr__(self):
        lower = f", lower={self.lower}" if any(self.lower) else ""
        # Neither many entries or lists, nor what no list can show.
        if not (self.shape and 0 < math.prod(self.shape[:-1]) <= 20 and len(self.memory) <= 20 and self._are_dates_in_range()):
            return f"<tessaret.Array of type {self.type!r}, shape {self.shape}{lower}>"
        return f"tessaret.Array({self.tolist()}, {self.type!r}{lower})"

    def _are_dates_in_range(self):
        try:
            self._flat()
        except ValueError:
            return False
        return True

    def __reduce__(self):
        return _array_of, (self.type, self.shape, self.lower, self.memory.tobytes())


def _array_of(kind, shape, lower, packed):
    """An array from its parts, as it comes out of a pickle."""
    made = Array.__new__(Array)
    made._set_copy(kind, shape, lower, packed)
    return made


def _empty_lists(shape):
    """Lists for a shape in which some dimension has no entries."""
    return [_empty_lists(shape[1:]) for _ in range(shape[0])] if len(shape) > 1 else []
