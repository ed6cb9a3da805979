"""Events: functions that are called when an object of the library tells something."""

import ctypes
import functools
import itertools
import weakref

from . import _interrupts, _library, _members, _values
from ._errors import check, closed, not_in_this_library


class Connection:
    """A function that hears an event of an object. It lasts until disconnect() is called, the with block of the connection ends, or
    the object is given back; the function is kept as long."""

    __slots__ = ("event", "cookie", "_number", "_function", "_source", "_key", "__weakref__")

    def __init__(self, source, event, number, function):
        self.event = event
        self._number = number
        self._function = function
        self._source = weakref.ref(source)
        self._key = next(_keys)
        _listening[self._key] = self
        cookie = ctypes.c_uint32()
        check(_library.advise(source._handle, _heard, self._key, cookie), f"{type(source).__name__}.on")
        self.cookie = cookie.value
        source._handle.cookies.add(self.cookie)
        source._connections[self.cookie] = self

    @property
    def connected(self):
        """Whether the function still hears the event."""
        source = self._source()
        return source is not None and source._connections.get(self.cookie) is self

    def disconnect(self):
        """Ends the connection. Further calls do nothing."""
        source = self._source()
        if not self.connected or source._connections.pop(self.cookie, None) is None:
            return
        source._handle.cookies.discard(self.cookie)
        check(_library.unadvise(source._handle, self.cookie), f"{type(source).__name__}.disconnect")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.disconnect()

    def __repr__(self):
        return f"<tessaret.Connection {self.cookie} for {self.event}{'' if self.connected else ', ended'}>"


_keys = itertools.count(1)
# What the library is given for a connection is a number: it may tell of an event while the connection comes to its end.
_listening = weakref.WeakValueDictionary()


def _hear(key, number, values, count):
    try:
        connection = _listening.get(key)
        if connection is None or connection._number != number:
            return
        block = _values.Block.copy_of(values, count)
        # What this raises goes from here to sys.unraisablehook, not into the library.
        connection._function(*[_values.read_any(block, slot) for slot in range(1, count + 1)])
    except KeyboardInterrupt as interrupt:
        if not _interrupts.keep(interrupt):
            raise


_heard = _library.EVENT_FUNCTION(_hear)


@functools.cache
def _prepare():
    """For the first connection of all."""
    _interrupts.keep_from_beginning_of(_hear)


@functools.lru_cache(maxsize=None)
def _events_at(address):
    info = _library.InterfaceInfo.from_address(address)
    return {member.name.lower(): (member.name, member.index) for member in _members.members_of(info)}


def events_of(source):
    """The events of an object: their names, with their numbers."""
    address = _library.describe_events(source._handle)
    return _events_at(address) if address else {}


def connect(source, event, function):
    if not isinstance(event, str):
        raise TypeError(f"the name of an event has to be text, not {type(event).__name__}")
    if not callable(function):
        raise TypeError(f"what hears {event} has to be callable, which {type(function).__name__} is not")
    if not source._handle:
        raise closed(f"{type(source).__name__}.on")
    found = events_of(source).get(event.lower())
    if found is None:
        raise AttributeError(f"{type(source).__name__} has no event {event!r}", name=event, obj=source)
    _prepare()
    return Connection(source, *found, function)


# So long the library waits at a time, so that Python gets to see signals.
_LONGEST_WAIT = 100


def pump(timeout=0):
    """Tells the events that wait for this thread, and waits up to `timeout` seconds for one; None waits without end. Answers how many
    were told."""
    if _library.pump is None:
        raise not_in_this_library("pump")
    remaining = None if timeout is None else max(0, round(timeout * 1000))
    while True:
        wait = _LONGEST_WAIT if remaining is None else min(remaining, _LONGEST_WAIT)
        told = _library.pump(wait)
        _interrupts.raise_kept()
        check(told, "pump")
        if remaining is not None:
            remaining -= wait
        if told or remaining == 0:
            return told


def events_descriptor():
    """A file descriptor that can be read from while events wait for this thread, for select or an event loop: then call pump()."""
    if _library.events_descriptor is None:
        raise not_in_this_library("events_descriptor")
    descriptor = _library.events_descriptor()
    check(descriptor, "events_descriptor")
    return descriptor
