"""Failures of the library as exceptions."""

from . import _library

EXCEPTION = 0x80020009


class Error(Exception):
    """A failure of the library.

    status: its number, such as 0x80020009
    source: the class that it comes from, such as "Tessaret.DCMObject"
    words: what happened, for people
    """

    def __init__(self, status, source, words):
        super().__init__(status, source, words)
        self.status = status
        self.source = source
        self.words = words

    def __str__(self):
        return f"{self.source}: {self.words}" if self.source else self.words


class NotAvailable(Error, NotImplementedError):
    """This version of the library cannot do it."""


class NoInterface(Error, TypeError):
    """An object is not of the kind that is needed."""


class UnknownMember(Error, AttributeError):
    """The object has no such member."""


class WrongType(Error, TypeError):
    """A value cannot be turned into what is needed."""


class WrongCount(Error, TypeError):
    """Too few or too many arguments."""


class OutOfRange(Error, OverflowError):
    """A number does not fit."""


class BadIndex(Error, IndexError):
    """An index lies outside an array."""


class BadArgument(Error, ValueError):
    """An argument makes no sense."""


class NoMemory(Error, MemoryError):
    """No memory."""


class Closed(Error, ValueError):
    """The object was given back: close() was called, or its with block has ended."""


# What a status means where the library says nothing of its own.
_KINDS = {
    0x80004001: (NotAvailable, "this is not available in this version"),
    0x80004002: (NoInterface, "an object does not have the interface that is needed"),
    0x80004003: (Error, "something that is needed is missing"),
    0x80004005: (Error, "it failed"),
    0x8000FFFF: (Error, "this cannot be done now"),
    0x80020003: (UnknownMember, "there is no such member"),
    0x80020005: (WrongType, "a value cannot be turned into the type that is needed"),
    0x80020006: (UnknownMember, "there is no such name"),
    0x80020009: (Error, "it failed"),
    0x8002000A: (OutOfRange, "a number does not fit the type that is needed"),
    0x8002000B: (BadIndex, "an index lies outside the bounds of an array"),
    0x8002000E: (WrongCount, "too few or too many arguments"),
    0x80040111: (Error, "the library could not start"),
    0x80040154: (Error, "there is no such class"),
    0x80040200: (Error, "there is no such connection"),
    0x80040202: (Error, "nobody can listen to this object in that way"),
    0x80070006: (Error, "there is no such object"),
    0x8007000E: (NoMemory, "no memory"),
    0x80070057: (BadArgument, "an argument makes no sense"),
}

# With these the library leaves words; with others those of an older failure may still stand.
_WITH_WORDS = (EXCEPTION, 0x80004001, 0x80040111, 0x80040154)


def error_of(status, where):
    """The exception for a failed call of the calling thread; `where` names what was called."""
    status &= 0xFFFFFFFF
    kind, words = _KINDS.get(status, (Error, f"it failed with status 0x{status:08X}"))
    source = where
    if status in _WITH_WORDS:
        said = _library.text_of(_library.last_error_text())
        if said:
            words, source = said, _library.text_of(_library.last_error_source()) or where
    return kind(status, source, words)


def not_in_this_library(where):
    """The exception for what the library in use has no function for."""
    return NotAvailable(0x80004001, where, "the library in use is too old for this")


def closed(where):
    """The exception for the use of an object that was given back."""
    return Closed(0x80004003, where, "the object was closed")


def check(status, where):
    if status < 0:
        raise error_of(status, where)
