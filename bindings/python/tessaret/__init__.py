"""Tessaret: objects of the DICOM component library by name.

    import tessaret

    with tessaret.create("Tessaret.DcmDictionary") as dictionary:
        found, letters, name = dictionary.GetVRDescription(0x0010, 0x0010)

Members are attributes: methods are called, properties read and set. Properties with arguments are called or indexed to be read, and
indexed to be set. What a method writes to its arguments comes back in a tuple behind its result. help(obj) shows them all.
"""

from . import _enumerations, _library
from ._arrays import Array
from ._errors import (BadArgument, BadIndex, Closed, Error, NoInterface, NoMemory, NotAvailable, OutOfRange, UnknownMember, WrongCount,
                      WrongType, check, not_in_this_library)
from ._events import Connection, events_descriptor, pump
from ._objects import Object, create

__all__ = ["Array", "BadArgument", "BadIndex", "Closed", "Connection", "Error", "NoInterface", "NoMemory", "NotAvailable", "Object",
           "OutOfRange", "UnknownMember", "WrongCount", "WrongType", "can_unload", "cancel_files", "create", "events_descriptor", "pump",
           "start"]

# The version of the library in use, such as "0.1.0".
__version__ = _library.text_of(_library.version())


def start():
    """Starts the library now, as the first object that is made does otherwise. It reads its dictionaries: a program that has them elsewhere
    names their folder in os.environ["TESSARET_DATA_DIR"] before. tessaret.Error has the file, the line and the reason where they cannot
    be read; nothing is written to standard error then, as is done when an object is the first to ask. What it answers stays so for
    the process."""
    if _library.start is None:
        raise not_in_this_library("start")
    check(_library.start(), "start")


def cancel_files(cancel=True):
    """Has everything fail that the library does with files, in all threads, as cancelled by the user, until cancel_files(False) lets it work
    again; what is half done is tidied up. It is for a thread beside the one that loads or saves: Python runs a signal handler only
    when a call of the library has come to its end. A call that waits goes on waiting until there is something. The library has to
    have started before: its dictionaries are files too."""
    if _library.cancel_files is None:
        raise not_in_this_library("cancel_files")
    _library.cancel_files(1 if cancel else 0)


def can_unload():
    """Whether no object of the library exists any more, and nobody holds a lock on it."""
    return _library.can_unload() != 0


def __getattr__(name):
    """Enumerations and their values, such as tessaret.FLOAT_VOXEL."""
    for found in (_enumerations.values, _enumerations.classes):
        if name in found:
            return found[name]
    raise AttributeError(f"module 'tessaret' has no attribute {name!r}", name=name)


def __dir__():
    return sorted({*globals(), *_enumerations.values, *_enumerations.classes})
