"""Functions for the members of an interface, made from its description.

Each is written out for its own parameters and compiled, so that a call of it fills a prepared block, calls the library and reads what
comes back, and nothing else. What does not fit the prepared types goes the longer way through put_as, where the library converts.
"""

import datetime
import keyword
import typing

from . import _enumerations, _interrupts, _library, _values
from ._errors import closed, error_of

ANNOTATIONS = {_library.SHORT: "int", _library.LONG: "int", _library.FLOAT: "float", _library.DOUBLE: "float",
               _library.DATE: "datetime", _library.STRING: "str", _library.BOOL: "bool", _library.SIGNED_BYTE: "int",
               _library.BYTE: "int", _library.ANY: "Any"}

# Texts up to this length may stay behind in a block that waits for its next use.
_KEPT_TEXT = 4096
# What filling a block raises where a value is not of the type that it was prepared for; NumPy only warns of its truth as a number.
_UNFIT = (TypeError, ValueError, AttributeError, OverflowError, DeprecationWarning)


class Parameter:
    """A parameter of a member: name as a Python name, flow, type, and the interface that an object has to have."""

    def __init__(self, info):
        name = _library.text_of(info.name)
        self.name = name + "_" if keyword.iskeyword(name) or name == "self" else name
        self.flow = info.flow
        self.type = info.type
        self.interface = _library.text_of(info.interface_name)

    @property
    def is_given(self):
        """Whether a caller gives a value for it."""
        return self.flow in (_library.IN, _library.OPTIONAL, _library.INOUT)

    @property
    def is_answered(self):
        return self.flow in (_library.INOUT, _library.OUT)

    @property
    def enumeration(self):
        """The enumeration that a number is of, or None."""
        return _enumerations.named(self.interface) if self.type == _library.LONG and self.interface else None

    @property
    def annotation(self):
        if self.type == _library.OBJECT:
            return "Any" if self.interface in ("", "IDispatch") else repr(self.interface)
        return self.enumeration.__name__ if self.enumeration else ANNOTATIONS.get(self.type, "Any")


class Member:
    """A member as the library describes it. parameters: without the result, which is None where there is none."""

    def __init__(self, interface, index, info):
        self.interface = interface
        self.index = index
        self.name = _library.text_of(info.name)
        self.kind = info.kind
        self.help = _library.text_of(info.help)
        found = [Parameter(info.arguments[at]) for at in range(info.argument_count)]
        self.parameters = [parameter for parameter in found if parameter.flow != _library.RESULT]
        self.result = next((parameter for parameter in found if parameter.flow == _library.RESULT), None)

    @property
    def given(self):
        return [parameter for parameter in self.parameters if parameter.is_given]

    @property
    def answers(self):
        """What a call gives back, the result first."""
        return ([self.result] if self.result else []) + [parameter for parameter in self.parameters if parameter.is_answered]

    @property
    def answer_annotation(self):
        names = [parameter.annotation for parameter in self.answers]
        if not names:
            return "bool" if self.kind == _library.METHOD else "None"
        return names[0] if len(names) == 1 else f"tuple[{', '.join(names)}]"

    def signature(self):
        """The parameters as they stand in a def."""
        parts, may_be_left = [], False
        for parameter in self.given:
            # After one that may be left away the others have to be as well; the library says where one is missing.
            may_be_left = may_be_left or parameter.flow == _library.OPTIONAL
            parts.append(f"{parameter.name}: {parameter.annotation}" + (" = None" if may_be_left else ""))
        return ", ".join(parts)


# Of each type: the view, the index in it of the content of slot n, and the type to be sent. The library makes a float of a double, and
# says so where it cannot.
_CONTENT = {
    _library.SHORT: ("h", lambda slot: 8 * slot + 4, _library.SHORT),
    _library.LONG: ("i", lambda slot: 4 * slot + 2, _library.LONG),
    _library.FLOAT: ("d", lambda slot: 2 * slot + 1, _library.DOUBLE),
    _library.DOUBLE: ("d", lambda slot: 2 * slot + 1, _library.DOUBLE),
    _library.BYTE: ("b", lambda slot: 16 * slot + 8, _library.BYTE),
}


def _fill_text(slot, name):
    return [f"_raw = {name}.encode('utf-8', 'surrogateescape')",
            f"_block.s[{2 * slot + 1}] = _raw",
            f"_block.q[{2 * slot}] = {_library.STRING} | len(_raw) << 32",
            f"if len(_raw) > {_KEPT_TEXT}: _home = []"]


def _indent(lines):
    return ["    " + line for line in lines]


def _fill_any(slot, name):
    """The types that come most; all others the longer way."""
    return [f"_kind = type({name})",
            "if _kind is int:",
            f"    _block.q[{2 * slot}] = {_library.LONG}",
            f"    _block.i[{4 * slot + 2}] = {name}",
            "elif _kind is str:", *_indent(_fill_text(slot, name)),
            "elif _kind is float:",
            f"    _block.q[{2 * slot}] = {_library.DOUBLE}",
            f"    _block.d[{2 * slot + 1}] = {name}",
            "else: raise TypeError"]


def _fill_lines(slot, parameter):
    """Puts one parameter into its slot where it is of the type that is expected, and raises where it is not."""
    name = parameter.name
    if parameter.type in _CONTENT:
        view, index, sent = _CONTENT[parameter.type]
        # The type stands there from the beginning, except where the library or another value may have replaced it.
        again = [f"_block.q[{2 * slot}] = {sent}"] if parameter.flow != _library.IN else []
        lines = again + [f"_block.{view}[{index(slot)}] = {name}"]
    elif parameter.type == _library.BOOL:
        lines = [f"if {name} is not True and {name} is not False: raise TypeError",
                 f"_block.q[{2 * slot}] = {_library.BOOL}",
                 f"_block.h[{8 * slot + 4}] = -{name}"]
    elif parameter.type == _library.STRING:
        lines = _fill_text(slot, name)
    elif parameter.type == _library.ANY:
        lines = _fill_any(slot, name)
    else:
        lines = ["raise TypeError"]
    if parameter.flow == _library.OPTIONAL:
        return [f"if {name} is None: _block.q[{2 * slot}] = 0", "else:", *_indent(lines)]
    return lines


_READ = {
    _library.SHORT: lambda slot: f"_block.h[{8 * slot + 4}]",
    _library.LONG: lambda slot: f"_block.i[{4 * slot + 2}]",
    _library.FLOAT: lambda slot: f"_block.f[{4 * slot + 2}]",
    _library.DOUBLE: lambda slot: f"_block.d[{2 * slot + 1}]",
    _library.BYTE: lambda slot: f"_block.b[{16 * slot + 8}]",
    _library.BOOL: lambda slot: f"_block.h[{8 * slot + 4}] != 0",
    _library.STRING: lambda slot: f"_read_text(_block, {slot})",
    _library.DATE: lambda slot: f"_read_date(_block, {slot})",
    _library.OBJECT: lambda slot: f"_read_object(_block, {slot})",
}


def _read_expression(slot, parameter):
    if parameter.enumeration:
        return f"_enumerators[{parameter.enumeration.__name__}].get({_READ[_library.LONG](slot)}, {_READ[_library.LONG](slot)})"
    return _READ.get(parameter.type, lambda at: f"_read_any(_block, {at})")(slot)


def _count_lines(member):
    """How many arguments are passed: optional ones at the end that nobody gave are left away."""
    total = len(member.parameters)
    first = total
    while first and member.parameters[first - 1].flow == _library.OPTIONAL:
        first -= 1
    left = [parameter.name for parameter in member.parameters[first:]]
    return first, " and ".join(f"{name} is None" for name in left)


def _filling(member):
    first, nothing_left = _count_lines(member)
    slots = list(enumerate(member.parameters, 1))
    lines = [line for slot, parameter in slots[:first] if parameter.is_given for line in _fill_lines(slot, parameter)]
    if nothing_left:
        rest = [line for slot, parameter in slots[first:] for line in _fill_lines(slot, parameter)]
        lines += [f"if {nothing_left}: _count = {first}", "else:", *_indent([f"_count = {len(slots)}", *rest])]
    else:
        lines += [f"_count = {len(slots)}"]
    return lines


def _reading(member):
    lines, answers = [], []
    if member.result:
        lines.append(f"_answer = {_read_expression(0, member.result)}")
        answers.append("_answer")
    for slot, parameter in enumerate(member.parameters, 1):
        if parameter.is_answered:
            # Empty for the next call: what a member leaves alone must not come back from this one.
            lines += [f"_answer{slot} = {_read_expression(slot, parameter)}", f"_block.q[{2 * slot}] = 0"]
            answers.append(f"_answer{slot}")
    if not answers:
        answers = ["_status == 0"] if member.kind == _library.METHOD else ["None"]
    return lines, answers[0] if len(answers) == 1 else f"({', '.join(answers)})"


def source_of(member):
    """The function for a member, as Python."""
    names = "".join(f"{parameter.name}, " for parameter in member.given)
    reading, answer = _reading(member)
    parameters = member.signature()
    return "\n".join([
        f"def {member.name}(self{', ' + parameters if parameters else ''}) -> {member.answer_annotation}:",
        "    try: _block = _pool.pop()",
        "    except IndexError: _block = _make()",
        "    _home = _pool",
        "    try:",
        *_indent(_indent(_filling(member))),
        "    except _UNFIT: _home = None",
        "    if _home is None:",
        "        _pool.append(_block)",
        f"        _block, _count, _kept = _fill(({names}))",
        "        _home = []",
        f"    _status = _call(self._handle, {member.index}, _block.arguments, _count, _block.result)",
        "    if _status < 0:",
        "        _home.append(_block)",
        "        raise _failure(self, _status)",
        *_indent(reading),
        "    _home.append(_block)",
        "    if _kept_interrupts: _raise_kept()",
        f"    return {answer}", ""])


def _maker(member):
    """Makes the blocks of a member, with the types that its parameters always have."""
    prepared = [(slot, _CONTENT[parameter.type][2]) for slot, parameter in enumerate(member.parameters, 1)
                if parameter.flow == _library.IN and parameter.type in _CONTENT]

    def make():
        block = _values.Block(len(member.parameters))
        for slot, kind in prepared:
            block.q[2 * slot] = kind
        return block
    return make


def _filler(member):
    """The longer way: a block of its own with any values, how many they are, and what has to be kept while they are used."""

    def fill(values):
        block, kept, remaining = _values.Block(len(member.parameters)), [], iter(values)
        for slot, parameter in enumerate(member.parameters, 1):
            if not parameter.is_given:
                continue
            value = next(remaining)
            if value is not None or parameter.flow != _library.OPTIONAL:
                kept.append(_values.put_as(block, slot, value, parameter.type, parameter.name))
        return block, len(member.parameters), kept
    return fill


def _failing(member):
    where = f"{member.interface}.{member.name}"

    def failure(self, status):
        if not self._handle:
            return closed(where)
        error = error_of(status, where)
        _interrupts.raise_kept(error)
        return error
    return failure


def help_of(member):
    """The text for help(): what the member does, and what comes back where that is more than one."""
    names = ["the result" if parameter is member.result else parameter.name for parameter in member.answers]
    return member.help + (f"\n\nReturns ({', '.join(names)})." if len(names) > 1 else "")


def function_of(member):
    """The function for a member."""
    names = {"_pool": [], "_make": _maker(member), "_fill": _filler(member), "_failure": _failing(member), "_call": _library.call,
             "_UNFIT": _UNFIT, "_read_any": _values.read_any, "_read_text": _values.read_text, "_read_date": _values.read_date,
             "_read_object": _values.read_object, "__name__": "tessaret", "datetime": datetime.datetime, "Any": typing.Any,
             "_kept_interrupts": _interrupts.kept, "_raise_kept": _interrupts.raise_kept, "_enumerators": _enumerations.enumerators,
             **_enumerations.classes}
    exec(compile(source_of(member), f"<{member.interface}.{member.name}>", "exec"), names)
    function = names[member.name]
    function.__qualname__ = f"{member.interface}.{member.name}"
    function.__doc__ = help_of(member)
    return function


def members_of(info):
    """All members of an interface."""
    name = _library.text_of(info.name)
    return [Member(name, index, info.members[index]) for index in range(info.member_count)]
