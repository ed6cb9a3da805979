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
                      WrongType)
from ._events import Connection, events_descriptor, pump
from ._objects import Object, create

__all__ = ["Array", "BadArgument", "BadIndex", "Closed", "Connection", "Error", "NoInterface", "NoMemory", "NotAvailable", "Object",
           "OutOfRange", "UnknownMember", "WrongCount", "WrongType", "can_unload", "create", "events_descriptor", "pump"]

# The version of the library in use, such as "0.1.0".
__version__ = _library.text_of(_library.version())


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
