"""Reads the interfaces and enumerations in include/tessaret: the one place that says what they have.

An interface is a class that derives from IDispatch or, for events, from IObject and has a kName. Each member is a pure virtual
function with a comment above it; get_, put_ and putref_ before a name make it a property, and Out<>, InOut<>, Result<> and
Optional<> say what a parameter is for.

An enumeration is an enum of std::int32_t whose name begins with an underscore; each of its members stands on a line of its own, with its
value and, where the name does not say it all, a comment above.
"""

import dataclasses
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
FLOWS = {"Out": "kOut", "InOut": "kInOut", "Result": "kResult", "Optional": "kOptional"}
KINDS = {"get_": "kGet", "put_": "kPut", "putref_": "kPutRef"}

CLASS = re.compile(r"((?:^///[^\n]*\n)*)(?:^// NOLINT[^\n]*\n)?^class (_?I\w+) : public (?:IDispatch|IObject) \{\n(.*?)^\};", re.M | re.S)
ENUMERATION = re.compile(r"((?:^///[^\n]*\n)*)(?:^// NOLINT[^\n]*\n)?^enum (_\w+) : std::int32_t \{(.*?)\};", re.M | re.S)
ENUMERATOR = re.compile(r"((?:^  ///[^\n]*\n)*)^  (\w+) = (-?\d+),$", re.M)
MEMBER = re.compile(r"((?:^  ///[^\n]*\n)*)^  virtual Status (\w+)\((.*?)\) = 0;", re.M | re.S)


@dataclasses.dataclass
class Parameter:
    name: str
    type: str
    flow: str


@dataclasses.dataclass
class Member:
    function: str
    name: str
    kind: str
    parameters: list
    help: str


@dataclasses.dataclass
class Interface:
    header: str
    name: str
    members: list
    help: str


@dataclasses.dataclass
class Enumerator:
    name: str
    value: int
    help: str


@dataclasses.dataclass
class Enumeration:
    header: str
    name: str
    members: list
    help: str


def comment_text(lines):
    return "\n".join(re.sub(r"^\s*///\s?", "", line) for line in lines.splitlines())


def parameters_of(text):
    """Splits at commas outside angle brackets."""
    parts, depth = [""], 0
    for character in " ".join(text.split()):
        depth += (character == "<") - (character == ">")
        if character == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += character
    for part in filter(None, map(str.strip, parts)):
        type_text, name = re.fullmatch(r"(.*[ >&*])(\w+)", part).groups()
        wrapped = re.fullmatch(r"(\w+)<(.*)>", type_text.strip())
        if wrapped and wrapped[1] in FLOWS:
            yield Parameter(name, wrapped[2], FLOWS[wrapped[1]])
        else:
            yield Parameter(name, type_text.strip(), "kIn")


def member_of(comment, function, parameters):
    for prefix, kind in KINDS.items():
        if function.startswith(prefix):
            return Member(function, function[len(prefix):], kind, list(parameters_of(parameters)), comment_text(comment))
    return Member(function, function, "kMethod", list(parameters_of(parameters)), comment_text(comment))


def read_header(path):
    text = path.read_text()
    for comment, name, body in CLASS.findall(text):
        if "kName" not in body:
            continue
        members = [member_of(*found) for found in MEMBER.findall(body)]
        declared = body.count("virtual ")
        if declared != len(members):
            raise SystemExit(f"{path.name}: {name} has {declared} members, of which {len(members)} can be read")
        for member in members:
            if not member.help:
                raise SystemExit(f"{path.name}: {name}.{member.function} has no comment")
        yield Interface(path.name, name, members, comment_text(comment))


def read_enumerations(path):
    for comment, name, body in ENUMERATION.findall(path.read_text()):
        members = [Enumerator(member, int(value), comment_text(help)) for help, member, value in ENUMERATOR.findall(body)]
        if body.count("=") != len(members):
            raise SystemExit(f"{path.name}: {name} has {body.count('=')} members, of which {len(members)} can be read")
        yield Enumeration(path.name, name, members, comment_text(comment))


def all_enumerations():
    """The enumerations of all public headers, in the order of their names."""
    found = [e for path in (ROOT / "include" / "tessaret").glob("*.hpp") for e in read_enumerations(path)]
    return sorted(found, key=lambda enumeration: enumeration.name)


def read_all():
    """The interfaces of all public headers, by header."""
    found = {}
    for path in sorted((ROOT / "include" / "tessaret").glob("*.hpp")):
        interfaces = list(read_header(path))
        if interfaces:
            found[path.stem] = interfaces
    return found
