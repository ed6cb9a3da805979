#!/usr/bin/python3
"""Makes bindings/python/tessaret/__init__.pyi from the interfaces in include/tessaret: what editors and type checkers know of the Python
package.

With --check nothing is written; a file that is not as it would be made is named, and the end is 1.
"""

import keyword
import re
import sys

import interfaces

STUB = interfaces.ROOT / "bindings" / "python" / "tessaret" / "__init__.pyi"
GENERAL = STUB.with_name("_general.pyi.in")

TYPES = {"std::int16_t": "int", "std::int32_t": "int", "std::uint8_t": "int", "std::uint16_t": "int", "Handle": "int", "float": "float",
         "double": "float", "Date": "datetime", "VariantBool": "bool", "String": "str", "Variant": "Any",
         # Their stand-ins for calls by name.
         "DICOMObject": "IDataSetHandle", "_VR_RECORD_TYPE": "IVRRecord",
         # Any object at all.
         "IDispatch": "Object"}
TAKEN = {"str": "str | PathLike[str] | None", "float": "float", "datetime": "date", "Any": "Any"}
ANSWERED = ("kInOut", "kOut")


def type_of(text, enumerations):
    name = re.sub(r"^const |[ *&]+$", "", text)
    if name in TYPES:
        return TYPES[name]
    if name in enumerations or re.fullmatch(r"I\w+", name):
        return name
    raise SystemExit(f"no Python type for {text!r}")


class Function:
    """A member as Python calls it."""

    def __init__(self, member, enumerations):
        self.member = member
        self.given = [(self.name_of(p.name), self.taken(p, enumerations), p.flow == "kOptional") for p in member.parameters
                      if p.flow not in ("kOut", "kResult")]
        answers = [p for p in member.parameters if p.flow == "kResult"] + [p for p in member.parameters if p.flow in ANSWERED]
        # What an object of any kind can do nobody knows beforehand.
        self.answers = [{"Object": "Any"}.get(name, name) for name in (type_of(p.type, enumerations) for p in answers)]

    @staticmethod
    def name_of(name):
        return name + "_" if keyword.iskeyword(name) or name == "self" else name

    @staticmethod
    def taken(parameter, enumerations):
        name = type_of(parameter.type, enumerations)
        if name in enumerations:
            return f"{name} | int"
        return f"{name} | None" if re.match("I[A-Z]|Object$", name) else TAKEN.get(name, name)

    def parameters(self):
        parts, may_be_left = ["self"], False
        for name, kind, optional in self.given:
            may_be_left = may_be_left or optional
            none = " | None" if may_be_left and not kind.endswith("None") and kind != "Any" else ""
            parts.append(f"{name}: {kind}{none}" + (" = ..." if may_be_left else ""))
        return ", ".join(parts)

    def answer(self):
        if not self.answers:
            return "bool" if self.member.kind == "kMethod" else "None"
        return self.answers[0] if len(self.answers) == 1 else f"tuple[{', '.join(self.answers)}]"

    def lines(self, name=None):
        return [f"def {name or self.member.name}({self.parameters()}) -> {self.answer()}:", *indented(docstring(self.member.help)), "    ..."]


def indented(lines):
    return [f"    {line}" if line else "" for line in lines]


def docstring(text):
    lines = text.replace("\\", "\\\\").replace('"""', "'''").splitlines()
    if not lines:
        return []
    quoted = [*lines[:-1], lines[-1]]
    quoted[0] = f'"""{quoted[0]}'
    # A quote before the closing ones would join them.
    closing = ' """' if quoted[-1].endswith('"') else '"""'
    return [*quoted[:-1], quoted[-1] + closing] if len(lines) == 1 else [*quoted, '"""']


def indexed_lines(name, getter, putters):
    """A property with arguments: a class of its own."""
    body = []
    if getter:
        body += getter.lines("__call__")
        body += [f"def __getitem__(self, arguments: Any) -> {getter.answer()}: ..."]
    for putter in putters[:1]:
        value = " | ".join(dict.fromkeys(function.given[-1][1] for function in putters))
        body += [f"def __setitem__(self, arguments: Any, value: {value}) -> None: ...", *putter.lines("put")]
    return [f"class _{name}:", *indented(body), "@property", f"def {name}(self) -> _{name}: ..."]


def plain_lines(name, getter, putters):
    lines = []
    if getter:
        lines += ["@property", *getter.lines()]
    if putters:
        value = " | ".join(dict.fromkeys(function.given[-1][1] for function in putters))
        if not getter:
            lines += ["@property", f"def {name}(self) -> Never: ..."]
        lines += [f"@{name}.setter", f"def {name}(self, newVal: {value}) -> None:",
                  *indented(docstring("\n\n".join(function.member.help for function in putters))), "    ..."]
    return lines


def attribute_lines(name, functions):
    by_kind = {kind: [f for f in functions if f.member.kind == kind] for kind in ("kMethod", "kGet", "kPut", "kPutRef")}
    if by_kind["kMethod"]:
        return by_kind["kMethod"][0].lines()
    getter, putters = next(iter(by_kind["kGet"]), None), by_kind["kPut"] + by_kind["kPutRef"]
    indexed = getter and getter.given or any(len(putter.given) > 1 for putter in putters)
    return (indexed_lines if indexed else plain_lines)(name, getter, putters)


def class_lines(interface, enumerations):
    by_name = {}
    for member in interface.members:
        by_name.setdefault(member.name, []).append(Function(member, enumerations))
    body = [line for name, functions in by_name.items() for line in (*attribute_lines(name, functions), "")]
    return ["@type_check_only", f"class {interface.name}(Object):", *indented(docstring(interface.help)), *indented(body or ["..."]), ""]


def created_classes(found):
    """Names of classes with the interfaces that they have, as the headers say."""
    for stem, all_of in found.items():
        text = (interfaces.ROOT / "include" / "tessaret" / f"{stem}.hpp").read_text()
        named = re.search(r'^///.* Class "(Tessaret\.\w+)"', text, re.M)
        if named:
            yield named[1], next(i.name for i in all_of if not i.name.startswith("_"))


def enumeration_lines(enumeration):
    members = [f"{member.name} = {member.value}" for member in enumeration.members]
    return [f"class {enumeration.name}(IntEnum):", *indented(docstring(enumeration.help)), *indented(members or ["..."]), "",
            *(f"{member.name}: Final = {enumeration.name}.{member.name}" for member in enumeration.members), ""]


QUERY = "    def query(self, interface: str) -> Any: ..."


def query_lines(found):
    """Which interface the function answers for which name."""
    names = sorted(interface.name for all_of in found.values() for interface in all_of if not interface.name.startswith("_"))
    return [line for name in names for line in ("    @overload", f'    def query(self, interface: Literal["{name}"]) -> {name}: ...')] + [
        "    @overload", QUERY]


def stub():
    found = interfaces.read_all()
    enumerations = interfaces.all_enumerations() if hasattr(interfaces, "all_enumerations") else []
    names = {enumeration.name for enumeration in enumerations}
    creates = [line for name, interface in created_classes(found)
               for line in ("@overload", f'def create(name: Literal["{name}", "{name}.1"]) -> {interface}: ...')]
    return "\n".join([
        "# Made by scripts/make_python_stubs.py from include/tessaret and _general.pyi.in; not to be edited.",
        GENERAL.read_text().replace(QUERY, "\n".join(query_lines(found))), *creates, "@overload", "def create(name: str) -> Any: ...", "",
        *(line for enumeration in enumerations for line in enumeration_lines(enumeration)),
        *(line for all_of in found.values() for interface in all_of if not interface.name.startswith("_")
          for line in class_lines(interface, names))]).rstrip("\n") + "\n"


def main():
    wanted = stub()
    if STUB.exists() and STUB.read_text() == wanted:
        return 0
    if "--check" in sys.argv[1:]:
        print(f"{STUB.relative_to(interfaces.ROOT)}: not as scripts/make_python_stubs.py makes it", file=sys.stderr)
        return 1
    STUB.write_text(wanted)
    return 0


if __name__ == "__main__":
    sys.exit(main())
