"""The C library below the package: where it lies, how its values are laid out, and its functions."""

import ctypes
import os
import pathlib
import sysconfig

# Of libraries with another first number in their version the layouts and functions are others.
MAJOR = "0"
NAME = f"libtessaret.so.{MAJOR}"
VARIABLE = "TESSARET_LIBRARY"

# What a value holds.
EMPTY = 0
SHORT = 2
LONG = 3
FLOAT = 4
DOUBLE = 5
DATE = 7
STRING = 8
OBJECT = 9
BOOL = 11
SIGNED_BYTE = 16
BYTE = 17
ARRAY = 0x2000
ANY = 0xFFFF

# How a member is used.
METHOD, GET, PUT, PUTREF = 1, 2, 4, 8

# What an argument is for.
IN, OPTIONAL, INOUT, OUT, RESULT = range(5)


class ArgumentInfo(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("flow", ctypes.c_int32), ("type", ctypes.c_uint16),
                ("interface_name", ctypes.c_char_p)]


class MemberInfo(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("kind", ctypes.c_int32), ("arguments", ctypes.POINTER(ArgumentInfo)),
                ("argument_count", ctypes.c_uint32), ("help", ctypes.c_char_p)]


class InterfaceInfo(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("id", ctypes.c_uint64 * 2), ("members", ctypes.POINTER(MemberInfo)),
                ("member_count", ctypes.c_uint32), ("help", ctypes.c_char_p)]


class Bound(ctypes.Structure):
    _fields_ = [("lower", ctypes.c_int32), ("count", ctypes.c_uint32)]


class ArrayValue(ctypes.Structure):
    _fields_ = [("bounds", ctypes.POINTER(Bound)), ("entries", ctypes.c_void_p), ("count", ctypes.c_uint64),
                ("dimensions", ctypes.c_uint32)]


VALUE_SIZE = 16  # bytes of a value: type and owned in 16 bits each, length in 32, content in 64


def places():
    """Where the library may lie, the likeliest first. A name without a folder is for the loader to find."""
    named = os.environ.get(VARIABLE)
    if named:
        # Once it is loaded the library finds its dictionaries by the name that it was loaded by, from wherever the program has gone.
        return [os.path.abspath(named) if os.sep in named else named]
    package = pathlib.Path(__file__).resolve().parent
    folders = [package]
    # An installed copy: PREFIX/lib/python3/dist-packages/tessaret, with the library in one of the folders for libraries.
    if package.parent.name in ("dist-packages", "site-packages") and len(package.parents) > 3:
        prefix = package.parents[3]
        multiarch = sysconfig.get_config_var("MULTIARCH") or ""
        folders += [prefix / "lib" / multiarch, prefix / "lib", prefix / "lib64"]
    return [str(folder / NAME) for folder in folders if (folder / NAME).exists()] + [NAME]


def _version_of(found):
    found.tessaret_version.restype = ctypes.c_char_p
    return found.tessaret_version().decode("ascii", "replace")


# All that the package cannot do without.
_NEEDED = ("tessaret_call", "tessaret_clear", "tessaret_create", "tessaret_retain", "tessaret_release", "tessaret_describe",
           "tessaret_describe_events", "tessaret_advise", "tessaret_unadvise", "tessaret_last_error_text", "tessaret_last_error_source",
           "tessaret_can_unload", "tessaret_version")


def load():
    """The library. ImportError with words for people where there is none that can be used."""
    failures = []
    for place in places():
        try:
            found = ctypes.CDLL(place)
        except OSError as error:
            failures.append(str(error))
            continue
        if not all(hasattr(found, name) for name in _NEEDED):
            raise ImportError(f"{place} is not the Tessaret library")
        other = _version_of(found)
        if other.partition(".")[0] != MAJOR:
            raise ImportError(f"{place} is version {other} of the Tessaret library: this package needs version {MAJOR}")
        return found
    words = "; ".join(failures)
    if os.environ.get(VARIABLE):
        raise ImportError(f"the Tessaret library that {VARIABLE} names cannot be loaded: {words}")
    raise ImportError(f"the Tessaret library cannot be loaded: {words}. {VARIABLE} can name the file")


def function(name, result, *arguments, within=None):
    """A function of the library, or None where this version of it has none."""
    found = getattr(within or library, name, None)
    if found is not None:
        found.restype = result
        found.argtypes = arguments
    return found


def text_of(pointer_text):
    return (pointer_text or b"").decode("utf-8", "surrogateescape")


library = load()
# The same library for what neither waits nor lets anything die: it is done before Python's lock could be let go and taken again, for
# which threads would queue.
_at_once = ctypes.PyDLL(library._name, handle=library._handle)

# These two are called all the time. Without types for their arguments ctypes passes on what it is given, which has to be a Handle,
# an int of 32 bits or a byref, in half the time.
call = library.tessaret_call
clear = library.tessaret_clear
clear_text = _at_once.tessaret_clear

_POINTER = ctypes.c_void_p
_OUT_POINTER = ctypes.POINTER(ctypes.c_void_p)
EVENT_FUNCTION = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int32, ctypes.c_void_p, ctypes.c_uint32)

create = function("tessaret_create", ctypes.c_int32, ctypes.c_char_p, _OUT_POINTER)
retain = function("tessaret_retain", None, _POINTER, within=_at_once)
release = function("tessaret_release", None, _POINTER)
# Of an object whose reference the caller has, and keeps meanwhile.
describe = function("tessaret_describe", _POINTER, _POINTER, within=_at_once)
describe_events = function("tessaret_describe_events", _POINTER, _POINTER)
query = function("tessaret_query", ctypes.c_int32, _POINTER, ctypes.c_char_p, _OUT_POINTER)
advise = function("tessaret_advise", ctypes.c_int32, _POINTER, EVENT_FUNCTION, _POINTER, ctypes.POINTER(ctypes.c_uint32))
unadvise = function("tessaret_unadvise", ctypes.c_int32, _POINTER, ctypes.c_uint32)
pump = function("tessaret_pump", ctypes.c_int32, ctypes.c_int32)
events_descriptor = function("tessaret_events_descriptor", ctypes.c_int32)
last_error_text = function("tessaret_last_error_text", ctypes.c_char_p, within=_at_once)
last_error_source = function("tessaret_last_error_source", ctypes.c_char_p, within=_at_once)
start = function("tessaret_start", ctypes.c_int32)
cancel_files = function("tessaret_cancel_files", None, ctypes.c_int32)
can_unload = function("tessaret_can_unload", ctypes.c_int32)
version = function("tessaret_version", ctypes.c_char_p)
