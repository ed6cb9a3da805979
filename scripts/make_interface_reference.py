#!/usr/bin/python3
"""Makes docs/interfaces.md, the reference of the public interfaces for hosts that work by name, from include/tessaret.

With --check nothing is written; the end is 1 where the file is not as it would be made.
"""

import re
import sys

import interfaces

REFERENCE = interfaces.ROOT / "docs" / "interfaces.md"

TYPES = {"std::int16_t": "short", "std::int32_t": "long", "std::uint8_t": "byte", "float": "float", "double": "double",
         "VariantBool": "bool", "String": "string", "Variant": "any", "Date": "date", "DICOMObject*": "IDataSetHandle",
         "_VR_RECORD_TYPE": "IVRRecord"}
WORDS = {"kIn": "", "kOptional": "optional ", "kInOut": "in and out ", "kOut": "out "}

INTRODUCTION = """# Interfaces

Every class of the library with its interfaces, as hosts meet them that call members by name: from C (`tessaret.h`), from Python, or
through `IDispatch`. C++ programs include the header that stands above each interface and find the same members with the same words there.
How a member is used stands before its name: **get**, **put** and **putref** are properties, all others methods. `long` has 32 bits,
`short` 16; a `Handle` is the number of a drawing surface or a window; `any` is a value of any type; what stands behind the arrow is what a call gives back. `docs/user-guide.md` has examples.

This file is made by `scripts/make_interface_reference.py`.
"""


def type_of(parameter):
    plain = re.sub(r"^const |&$", "", parameter.type).strip()
    pointed = plain.removesuffix("*").strip()
    if plain in TYPES:
        return TYPES[plain]
    if pointed in TYPES:
        return TYPES[pointed]
    return pointed


def signature_of(member):
    taken = [f"{WORDS[p.flow]}{p.name} {type_of(p)}" for p in member.parameters if p.flow != "kResult"]
    given = [type_of(p) for p in member.parameters if p.flow == "kResult"]
    kind = {"kGet": "**get** ", "kPut": "**put** ", "kPutRef": "**putref** "}.get(member.kind, "")
    return f"{kind}`{member.name}({', '.join(taken)})`" + (f" → `{given[0]}`" if given else "")


def section_of(interface):
    lines = [f"## {interface.name}", "", f"`tessaret/{interface.header}`", ""]
    if interface.help:
        lines += [interface.help, ""]
    for member in interface.members:
        lines += [signature_of(member), ""]
        lines += [f"> {line}" if line else ">" for line in member.help.splitlines()] + [""]
    return lines


def enumeration_of(enumeration):
    lines = [f"## {enumeration.name}", "", f"`tessaret/{enumeration.header}`", ""]
    if enumeration.help:
        lines += [enumeration.help, ""]
    lines += ["| Name | Value | Meaning |", "|---|---|---|"]
    lines += [f"| `{each.name}` | {each.value} | {' '.join(each.help.split())} |" for each in enumeration.members]
    return lines + [""]


def reference():
    lines = INTRODUCTION.splitlines() + [""]
    every = [interface for found in interfaces.read_all().values() for interface in found]
    # By name, the events of a class behind its interface.
    for interface in sorted(every, key=lambda each: (each.name.strip("_").removesuffix("Events").lower(), each.name.startswith("_"))):
        lines += section_of(interface)
    for enumeration in interfaces.all_enumerations():
        lines += enumeration_of(enumeration)
    return "\n".join(lines).rstrip("\n") + "\n"


def main():
    made = reference()
    if "--check" in sys.argv[1:]:
        if REFERENCE.exists() and REFERENCE.read_text() == made:
            return 0
        print("docs/interfaces.md: not as scripts/make_interface_reference.py makes it", file=sys.stderr)
        return 1
    REFERENCE.write_text(made)
    return 0


if __name__ == "__main__":
    sys.exit(main())
