"""The enumerations of the library as classes of Python, and their values by name."""

import ctypes
import enum

from . import _library


class _Enumerator(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("help", ctypes.c_char_p), ("value", ctypes.c_int32)]


class _Enumeration(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("members", ctypes.POINTER(_Enumerator)), ("member_count", ctypes.c_uint32),
                ("help", ctypes.c_char_p)]


def _class_of(described):
    members = [(_library.text_of(described.members[at].name), described.members[at].value) for at in range(described.member_count)]
    made = enum.IntEnum(_library.text_of(described.name), members, module="tessaret")
    made.__doc__ = _library.text_of(described.help)
    return made


def _all_classes():
    listing = _library.function("tessaret_enumerations", ctypes.POINTER(_Enumeration), ctypes.POINTER(ctypes.c_uint32))
    if listing is None:
        return []
    count = ctypes.c_uint32()
    first = listing(count)
    return [_class_of(first[at]) for at in range(count.value)]


# By name: the enumerations, and all their values, whose names are unique.
classes = {made.__name__: made for made in _all_classes()}
values = {member.name: member for made in classes.values() for member in made}
# Of each enumeration: its members by number.
enumerators = {made: {int(member): member for member in made} for made in classes.values()}


def named(name):
    """The enumeration of this name, or None."""
    return classes.get(name)
