"""Values, from Python to the library and back.

Values stand in blocks: slot 0 is for a result, slot n for argument n - 1. A block has views of its memory by which single fields are
read and written without any object being made.
"""

import ctypes
import datetime
import os

from . import _dates, _library
from ._arrays import EXACT_RANGE, NAMES, Array, format_of, number_of_buffer, view_of

_LONG_RANGE = range(-2**31, 2**31)

# How objects travel: see know_objects.
_object_address = None
_wrap = None


def know_objects(object_address, wrap):
    """Tells how objects travel: `object_address` gives the address of one, or None for what is none; `wrap` takes over an address
    with its reference."""
    global _object_address, _wrap
    _object_address, _wrap = object_address, wrap


class Block:
    """Room for a result and `count` arguments. Of slot n: q[2n] type, owned and length in one; q, d[2n+1] content; i[4n+1] length,
    i, f[4n+2] content; h[8n] type, h[8n+4] content; b[16n+8] content; s[2n+1] content as text."""

    __slots__ = ("memory", "q", "d", "i", "f", "h", "b", "s", "at", "result", "arguments")

    def __init__(self, count):
        self.memory = ctypes.create_string_buffer(_library.VALUE_SIZE * (count + 1))
        self._view(count + 1)

    @classmethod
    def copy_of(cls, address, count):
        """With `count` values of the library as arguments. What they point to stays the library's."""
        made = cls(count)
        if count:
            ctypes.memmove(made.arguments, address, _library.VALUE_SIZE * count)
        for slot in range(1, count + 1):
            made.h[8 * slot + 1] = 0
        return made

    def _view(self, slots):
        raw = memoryview(self.memory).cast("B")
        self.q, self.d, self.i, self.f, self.h = (raw.cast(letter) for letter in "qdifh")
        self.b = raw
        self.s = (ctypes.c_char_p * (2 * slots)).from_buffer(self.memory)
        self.at = [ctypes.byref(self.memory, _library.VALUE_SIZE * slot) for slot in range(slots)]
        self.result = self.at[0]
        self.arguments = self.at[1] if slots > 1 else None


# From the library. What a slot owned is freed or has passed on when it was read; what is left there nobody looks at.


def _bytes_at(address, size):
    if size > 0x7FFFFFFF:
        # More than ctypes.string_at counts. ctypes makes a type for every size, which takes far longer than short bytes do.
        return (ctypes.c_char * size).from_address(address).raw
    return ctypes.string_at(address, size) if size else b""


def read_text(block, slot):
    text = block.s[2 * slot + 1]
    if text is None:
        return None
    if len(text) != block.i[4 * slot + 1]:
        # Text with a 0 in it: ctypes sees only what stands before.
        text = _bytes_at(block.q[2 * slot + 1], block.i[4 * slot + 1] & 0xFFFFFFFF)
    _library.clear_text(block.at[slot])
    return text.decode("utf-8", "surrogateescape")


def read_date(block, slot):
    return _dates.date_of(block.d[2 * slot + 1])


def read_object(block, slot):
    address = block.q[2 * slot + 1]
    if address == 0:
        return None
    if not block.h[8 * slot + 1]:
        _library.retain(address)
    return _wrap(address)


class _Held:
    """A value that the library filled, for as long as somebody looks at its content."""

    __slots__ = ("value",)

    def __init__(self, raw):
        self.value = ctypes.create_string_buffer(raw, _library.VALUE_SIZE)

    def __del__(self, clear=_library.clear):
        clear(self.value)


def _read_array(block, slot):
    array = _library.ArrayValue.from_address(block.q[2 * slot + 1])
    number = block.q[2 * slot] & 0xFFFF & ~_library.ARRAY
    bounds = [(array.bounds[at].lower, array.bounds[at].count) for at in range(array.dimensions)]
    size = array.count * _ENTRY_SIZES[number]
    owned = block.h[8 * slot + 1]
    if number == _library.BYTE and len(bounds) == 1 and bounds[0][0] == 0:
        made = _bytes_at(array.entries, size)
        if owned:
            _library.clear(block.at[slot])
        return made
    if owned and size:
        held = (ctypes.c_char * size).from_address(array.entries)
        held.owner = _Held(block.memory[16 * slot:16 * slot + 16])
        return Array._over(number, bounds, held, size)
    content = _bytes_at(array.entries, size)
    if owned:
        _library.clear(block.at[slot])
    return Array._over(number, bounds, ctypes.create_string_buffer(content, max(size, 1)), size)


_ENTRY_SIZES = {_library.SHORT: 2, _library.LONG: 4, _library.FLOAT: 4, _library.DOUBLE: 8, _library.DATE: 8, _library.BOOL: 2,
                _library.SIGNED_BYTE: 1, _library.BYTE: 1}

_READERS = {
    _library.EMPTY: lambda block, slot: None,
    _library.SHORT: lambda block, slot: block.h[8 * slot + 4],
    _library.LONG: lambda block, slot: block.i[4 * slot + 2],
    _library.FLOAT: lambda block, slot: block.f[4 * slot + 2],
    _library.DOUBLE: lambda block, slot: block.d[2 * slot + 1],
    _library.DATE: read_date,
    _library.STRING: read_text,
    _library.OBJECT: read_object,
    _library.BOOL: lambda block, slot: block.h[8 * slot + 4] != 0,
    _library.SIGNED_BYTE: lambda block, slot: block.b[16 * slot + 8] - (block.b[16 * slot + 8] & 0x80) * 2,
    _library.BYTE: lambda block, slot: block.b[16 * slot + 8],
    **{_library.ARRAY | number: _read_array for number in NAMES},
}


def read_any(block, slot):
    return _READERS[block.q[2 * slot] & 0xFFFF](block, slot)


# To the library.


def put_text(block, slot, text):
    """What the block then needs to be kept, which is all that these functions give back."""
    raw = text.encode("utf-8", "surrogateescape")
    if len(raw) > 0xFFFFFFFF:
        raise OverflowError("a text of the library has less than 2^32 bytes")
    block.s[2 * slot + 1] = raw
    block.q[2 * slot] = _library.STRING
    block.i[4 * slot + 1] = len(raw) - (len(raw) & 0x80000000) * 2
    return raw


def _put_null_text(block, slot):
    block.q[2 * slot] = _library.STRING
    block.q[2 * slot + 1] = 0


def _put_whole(block, slot, number):
    number = number.__index__()
    if number in _LONG_RANGE:
        block.q[2 * slot] = _library.LONG
        block.i[4 * slot + 2] = number
    elif number in EXACT_RANGE:
        _put_double(block, slot, number)
    else:
        raise OverflowError(f"{number} is too large for the library")


def _put_double(block, slot, number):
    block.q[2 * slot] = _library.DOUBLE
    block.d[2 * slot + 1] = number


def _put_date(block, slot, date):
    block.d[2 * slot + 1] = _dates.days_of(date)
    block.q[2 * slot] = _library.DATE


def _put_bool(block, slot, truth):
    block.q[2 * slot] = _library.BOOL
    block.h[8 * slot + 4] = -1 if truth else 0


def _put_object(block, slot, value):
    block.q[2 * slot] = _library.OBJECT
    block.q[2 * slot + 1] = 0 if value is None else _object_address(value)
    return value


def _put_array_value(block, slot, number, bounds, address, count, kept):
    bound_values = (_library.Bound * max(len(bounds), 1))(*bounds)
    array = _library.ArrayValue(bound_values, address, count, len(bounds))
    block.q[2 * slot] = _library.ARRAY | number
    block.q[2 * slot + 1] = ctypes.addressof(array)
    return array, kept


def _put_bytes(block, slot, raw):
    pointer = ctypes.c_char_p(raw)
    address = ctypes.cast(pointer, ctypes.c_void_p)
    return _put_array_value(block, slot, _library.BYTE, [(0, len(raw))], address, len(raw), pointer)


def _put_array(block, slot, array):
    number = next(number for number, name in NAMES.items() if name == array.type)
    bounds = list(zip(array.lower, array.shape))
    return _put_array_value(block, slot, number, bounds, array._address, len(array.memory), array)


def _put_buffer(block, slot, view):
    if view.ndim == 1 and format_of(view) in ("B", "c"):
        return _put_bytes(block, slot, view.tobytes())
    return _put_array(block, slot, Array(view))


def put_any(block, slot, value):
    """Puts a value of the type that Python gives it. TypeError for what the library has no type for."""
    if value is None:
        block.q[2 * slot] = _library.EMPTY
        return None
    for kind, put in _PUTTERS:
        if isinstance(value, kind):
            return put(block, slot, value)
    if _object_address(value) is not None:
        return _put_object(block, slot, value)
    view = view_of(value)
    if view is not None:
        return put_any(block, slot, number_of_buffer(value)) if view.ndim == 0 else _put_buffer(block, slot, view)
    if hasattr(value, "__index__"):
        return _put_whole(block, slot, value)
    if hasattr(value, "__fspath__"):
        return put_text(block, slot, os.fsdecode(value))
    if hasattr(value, "__float__"):
        return _put_double(block, slot, float(value))
    raise TypeError(f"the library has no value for {type(value).__name__}")


_PUTTERS = (
    (str, put_text),
    (bool, _put_bool),
    (int, _put_whole),
    (float, _put_double),
    (datetime.date, _put_date),
    (bytes, _put_bytes),
    (Array, _put_array),
    ((list, tuple), lambda block, slot, value: _put_array(block, slot, Array(value))),
)
_NUMBERS = (_library.SHORT, _library.LONG, _library.FLOAT, _library.DOUBLE, _library.BYTE, _library.SIGNED_BYTE)


def put_as(block, slot, value, wanted, name):
    """Puts a value for a parameter of the type `wanted`; the library turns it into that where it can."""
    if wanted == _library.ANY:
        return put_any(block, slot, value)
    if wanted == _library.OBJECT:
        if value is not None and _object_address(value) is None:
            raise TypeError(f"{name} has to be an object of the library, not {type(value).__name__}")
        return _put_object(block, slot, value)
    if value is None:
        if wanted != _library.STRING:
            raise TypeError(f"{name} may not be None")
        return _put_null_text(block, slot)
    if wanted in _NUMBERS:
        single = number_of_buffer(value)
        value = value if single is None else single
        if isinstance(value, bool):
            return _put_whole(block, slot, int(value))
    if wanted == _library.STRING and isinstance(value, (bytes, bytearray, memoryview)):
        raise TypeError(f"{name} has to be text, not {type(value).__name__}")
    return put_any(block, slot, value)
