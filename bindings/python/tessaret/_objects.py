"""Objects of the library as objects of Python: a class for each interface, made when the first object with it is met."""

import atexit
import ctypes
import functools
import weakref

from . import _events, _library, _members, _values
from ._errors import check, closed, not_in_this_library

_METHOD, _GET, _PUT, _PUTREF = _library.METHOD, _library.GET, _library.PUT, _library.PUTREF


class Handle(ctypes.c_void_p):
    """A reference to an object of the library, which it gives back once: when it dies, or before by give_back."""

    def __init__(self, address):
        super().__init__(address)
        self.held = [address]
        self.cookies = set()

    def give_back(self, release=_library.release, unadvise=_library.unadvise):
        try:
            address = self.held.pop()
        except IndexError:
            return
        self.value = None
        while self.cookies:
            unadvise(address, self.cookies.pop())
        release(address)

    __del__ = give_back


# The objects that Python has, by address: the same one is the same object in Python as well.
_living = {}


class Object:
    """What all objects of the library have in Python, besides their members. Names of members may be written with letters of either
    case. An object belongs to the thread that made it; only giving it back may happen on any."""

    __slots__ = ("_handle", "_connections", "__weakref__")
    _members = {}

    def __init__(self, *_, **__):
        raise TypeError("objects of the library are made by tessaret.create")

    def __getattr__(self, name):
        exact = type(self)._spellings.get(name.lower())
        if exact is None or exact == name:
            raise AttributeError(f"{type(self).__name__} has no member {name!r}", name=name, obj=self)
        return getattr(self, exact)

    def __setattr__(self, name, value):
        exact = type(self)._spellings.get(name.lower())
        if exact is None:
            raise AttributeError(f"{type(self).__name__} has no member {name!r} that can be set", name=name, obj=self)
        object.__setattr__(self, exact, value)

    def query(self, interface):
        """Another interface of the same object, such as obj.query("IDcmObjectManager"). tessaret.Error where it has none of that
        name."""
        where = f"{type(self).__name__}.query"
        if _library.query is None:
            raise not_in_this_library(where)
        if not self._handle:
            raise closed(where)
        found = ctypes.c_void_p()
        check(_library.query(self._handle, _name(interface), found), where)
        return wrap(found.value)

    def on(self, event, function):
        """Has `function` called for each event of this name, with the values that the event carries. Answers a connection, whose
        disconnect() ends it; it lasts until then, or until this object is given back. It is called on the thread that this object
        belongs to, within a call or within tessaret.pump. What it raises goes to sys.unraisablehook; Ctrl-C is raised by that call,
        when it has come to its end.

            connection = image.on("OnDrawOverlay", lambda surface, x0, y0, x1, y1: print(x0, y0, x1, y1))
        """
        return _events.connect(self, event, function)

    def close(self):
        """Gives the object back now; nothing else can be done with it afterwards. Further calls do nothing."""
        self._connections.clear()
        self._handle.give_back()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __repr__(self):
        address = self._handle.value
        return f"<tessaret.{type(self).__name__} " + (f"at 0x{address:x}>" if address else "closed>")

    def __dir__(self):
        return sorted({*type(self)._spellings.values(), *(name for name in super().__dir__() if name not in _HIDDEN)})

    def __reduce_ex__(self, _):
        raise TypeError(f"{type(self).__name__} cannot be copied or pickled by Python")


_HIDDEN = ("_handle", "_connections", "_members", "_spellings")


class Indexed(functools.partial):
    """A property with arguments: called or indexed to be read, indexed to be set."""

    __slots__ = ()
    _put = None
    # Without these Python would ask for one index after the other, without an end.
    __iter__ = None
    __contains__ = None

    def __getitem__(self, arguments):
        return self(*arguments) if isinstance(arguments, tuple) else self(arguments)

    def __setitem__(self, arguments, value):
        self.put(*(arguments if isinstance(arguments, tuple) else (arguments,)), value)

    def put(self, *arguments, **named):
        """Sets the property; the last argument is the new value. Arguments in front of it may be left away."""
        self._put(self.args[0], arguments, named)

    def __repr__(self):
        return f"<property {type(self).__name__} of {self.args[0]!r}>"


def _putter(members):
    """Sets a property by the way that fits the value: by reference where it is an object, or none, and there is such a way."""
    functions = {member.kind: _members.function_of(member) for member in members}
    if _PUTREF not in functions:
        return functions.get(_PUT)
    by_reference, by_value = functions[_PUTREF], functions.get(_PUT)
    if by_value is None:
        return by_reference

    @functools.wraps(by_value)
    def put(self, *arguments, **named):
        last = arguments[-1] if arguments else next(reversed(named.values()), None)
        (by_reference if last is None or isinstance(last, Object) else by_value)(self, *arguments, **named)
    return put


def _filled_up(put, member):
    """Puts empty values for arguments that were left away between those that were given and the new value."""
    names = [parameter.name for parameter in member.given]

    def fill_up(self, arguments, named):
        missing = len(names) - len(arguments)
        if missing > 0 and named and names[-1] not in named:
            # None would do for it as well, and empty what was to be set.
            raise TypeError(f"{member.name}.put() needs {names[-1]}, by its name where others have theirs")
        if missing > 0 and arguments and not named:
            arguments = (*arguments[:-1], *(None,) * missing, arguments[-1])
        put(self, *arguments, **named)
    return fill_up


def _writable(name):
    def refuse(self, value):
        raise AttributeError(f"{name} has arguments: set it as in {name}[...] = value", name=name, obj=self)
    return refuse


def _indexed_help(getter, putters):
    """The text for help() of a property with arguments."""
    lines = []
    if getter:
        lines += [f"{getter.name}({getter.signature()}) -> {getter.answer_annotation}", "", getter.help]
    for putter in putters:
        names = ", ".join(parameter.name for parameter in putter.given)
        indices = ", ".join(parameter.name for parameter in putter.given[:-1])
        lines += [*([""] if lines else []), f"{putter.name}[{indices}] = value, or {putter.name}.put({names})", "", putter.help]
    return "\n".join(lines)


def _indexed_property(name, getter, putters):
    put, text = _putter(putters), _indexed_help(getter, putters)
    kind = type(name, (Indexed,), {"__slots__": (), "__module__": "tessaret", "__doc__": text,
                                   "_put": staticmethod(_filled_up(put, putters[0]) if put else _unwritable(name))})
    get = _members.function_of(getter) if getter else _unreadable(name)
    return property(functools.partial(kind, get), _writable(name), doc=text)


def _unwritable(name):
    def put(self, arguments, named):
        raise AttributeError(f"{name} cannot be set", name=name, obj=self)
    return put


def _unreadable(name):
    def get(self, *arguments):
        raise AttributeError(f"{name} cannot be read", name=name, obj=self)
    return get


def _plain_property(getter, putters):
    texts = [member.help for member in ([getter] if getter else []) + putters]
    return property(_members.function_of(getter) if getter else None, _putter(putters), doc="\n\n".join(texts))


def _attribute_of(name, members):
    """The attribute for all members of one name: a method, or a property with its ways of reading and setting."""
    if members[0].kind == _METHOD:
        return _members.function_of(members[0])
    getter = next((member for member in members if member.kind == _GET), None)
    putters = [member for member in members if member.kind in (_PUT, _PUTREF)]
    if (getter and getter.given) or any(len(putter.given) > 1 for putter in putters):
        return _indexed_property(name, getter, putters)
    return _plain_property(getter, putters)


_classes = {}


def class_at(address):
    """The class for the interface that the library describes at this address: the same for all threads."""
    found = _classes.get(address)
    return found if found is not None else _classes.setdefault(address, _class_for(address))


def _class_for(address):
    info = _library.InterfaceInfo.from_address(address)
    by_name = {}
    for member in _members.members_of(info):
        by_name.setdefault(member.name, []).append(member)
    name = _library.text_of(info.name)
    attributes = {member: _attribute_of(member, found) for member, found in by_name.items()}
    own = {"__slots__": (), "__module__": "tessaret", "__doc__": _library.text_of(info.help) or f"The interface {name}.",
           "_members": by_name, "_spellings": {member.lower(): member for member in by_name}}
    return type(name, (Object,), {**attributes, **own})


_set_handle = Object._handle.__set__
_set_connections = Object._connections.__set__


def wrap(address):
    """The object at this address, of which a reference is taken over."""
    known = _living.get(address)
    found = known() if known is not None else None
    if found is not None and found._handle:
        _library.release(address)
        return found
    kind = class_at(_library.describe(address))
    made = kind.__new__(kind)
    _set_connections(made, {})
    _set_handle(made, Handle(address))
    _living[address] = weakref.ref(made, functools.partial(_forget, address))
    return made


def _forget(address, reference):
    if _living.get(address) is reference:
        del _living[address]


def _address_of(value):
    """The address of an object of the library; None for anything else."""
    if not isinstance(value, Object):
        return None
    address = value._handle.value
    if address is None:
        raise ValueError(f"{value!r} cannot be used any more")
    return address


_values.know_objects(_address_of, wrap)


@atexit.register
def _give_all_back():
    for reference in list(_living.values()):
        found = reference()
        if found is not None:
            found.close()


def _name(text):
    """A name as the library takes it."""
    if not isinstance(text, str):
        raise TypeError(f"a name has to be text, not {type(text).__name__}")
    if "\0" in text:
        raise ValueError("a name has no 0 in it")
    return text.encode("utf-8", "surrogateescape")


def create(name):
    """Makes an object of the class `name`, such as "Tessaret.DCMObject", with or without ".1" behind it. tessaret.Error says why where
    that is not possible."""
    made = ctypes.c_void_p()
    check(_library.create(_name(name), made), name)
    return wrap(made.value)
