#!/usr/bin/python3
"""Makes src/facade/tables from the interfaces in include/tessaret: the tables by which members are described and called, and those
of all interfaces and all enumerations by name.

With --check nothing is written; a table that is not as it would be made is named, and the end is 1.
"""

import pathlib
import sys

import interfaces

# Members whose arguments cannot travel as values by themselves, with the functions that call them, and where these stand.
OWN_CALLS = {f"IDcmObjectManager.{name}": f"Call{name}" for name in ("GetPtr", "PutPtr", "GetVR", "PutVR")}
OWN_CALL_HEADERS = {"IDcmObjectManager": "facade/object_manager_calls.h"}

TABLES = interfaces.ROOT / "src" / "facade" / "tables"


def quoted(text):
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    return "\n        ".join(f'"{line}"' for line in escaped.replace("\n", "\\n\n").split("\n")) if text else '""'


def argument_of(parameter, enumerations):
    """Types come from the compiler, but for the names of enumerations, which it does not tell."""
    enumeration = f', 0, "{parameter.type}"' if parameter.type in enumerations else ""
    return f'{{"{parameter.name}", ArgumentFlow::{parameter.flow}{enumeration}}}'


def table_of(interface, enumerations):
    """One function that holds all of it, so that several tables can be compiled as one unit."""
    lines = ["template <>", f"const InterfaceTable& TableOf<{interface.name}>() {{", f"using I = {interface.name};", ""]
    for number, member in enumerate(interface.members):
        arguments = ", ".join(argument_of(parameter, enumerations) for parameter in member.parameters)
        lines.append(f"static constexpr auto kArguments{number} = Signature<decltype(&I::{member.function})>::Describe("
                     + (f"{{{{{arguments}}}}});" if arguments else "{});"))
    count = len(interface.members)
    if count:
        lines += ["", "static constexpr MemberInfo kMembers[] = {"]
        for number, member in enumerate(interface.members):
            lines.append(f'{{"{member.name}", MemberKind::{member.kind}, kArguments{number}.data(), kArguments{number}.size(),'
                         f" {quoted(member.help)}}},")
        lines += ["};", "static constexpr MemberCall kCalls[] = {"]
        lines += [f"&{OWN_CALLS.get(f'{interface.name}.{member.function}', f'CallMember<&I::{member.function}>')},"
                  for member in interface.members]
        lines += ["};"]
    members, calls = ("kMembers", "kCalls") if count else ("nullptr", "{}")
    return lines + [
        "",
        f"static constexpr InterfaceTable kTable = {{{{I::kName, I::kId, {members}, {count}, {quoted(interface.help)}}}, {calls}}};",
        "return kTable;", "}"]


def made_from(what, includes, *body):
    return "\n".join([
        f"// Made by scripts/make_interface_tables.py from {what}; not to be edited.",
        "// clang-format off", *(f'#include "{name}"' for name in includes), "", "namespace tessaret {", *body, "}  // namespace tessaret", ""])


def source_of(stem, interface, enumerations):
    own_calls = [header for name, header in OWN_CALL_HEADERS.items() if name == interface.name]
    return made_from(f"include/tessaret/{stem}.hpp", ["component/call_by_name.h", *own_calls, f"tessaret/{stem}.hpp"],
                     "", *table_of(interface, enumerations), "")


def interfaces_by_name(found):
    """Those that can be called by name, which events cannot."""
    rows = [(stem, interface.name) for stem, all_of in found.items() for interface in all_of if not interface.name.startswith("_")]
    return made_from("include/tessaret", ["facade/named_interface.h", *(f"tessaret/{stem}.hpp" for stem in dict(rows))],
                     "namespace {", "", "constexpr NamedInterface kInterfaces[] = {", "RowOf<IDispatch>(),",
                     *(f"RowOf<{name}>()," for _, name in rows), "};", "", "}  // namespace", "",
                     "std::span<const NamedInterface> AllInterfaces() { return kInterfaces; }", "")


def enumerations_by_name(found):
    body = ["namespace {", ""]
    rows = []
    for number, enumeration in enumerate(found):
        members = [f'{{"{member.name}", {quoted(member.help)}, {member.name}}},' for member in enumeration.members]
        if members:
            body += [f"constexpr tessaret_enumerator kMembers{number}[] = {{", *members, "};"]
        rows.append(f'{{"{enumeration.name}", {f"kMembers{number}" if members else "nullptr"}, {len(members)},'
                    f" {quoted(enumeration.help)}}},")
    headers = [f"tessaret/{name}" for name in sorted({enumeration.header for enumeration in found if enumeration.members})]
    return made_from("include/tessaret", ["facade/enumerations.h", *headers],
                     *body, "constexpr tessaret_enumeration kEnumerations[] = {", *rows, "};", "", "}  // namespace", "",
                     "std::span<const tessaret_enumeration> AllEnumerations() { return kEnumerations; }", "")


def all_sources():
    found, enumerations = interfaces.read_all(), interfaces.all_enumerations()
    names = {enumeration.name for enumeration in enumerations}
    sources = {"interfaces": interfaces_by_name(found), "enumerations": enumerations_by_name(enumerations)}
    for stem, all_of in found.items():
        for interface in all_of:
            events = "_events" if interface.name.startswith("_") else ""
            sources[f"{stem}{events}"] = source_of(stem, interface, names)
    return {TABLES / f"{name}.cpp": text for name, text in sources.items()}


def main():
    check = "--check" in sys.argv[1:]
    wanted = all_sources()
    stale = [path for path, text in wanted.items() if not path.exists() or path.read_text() != text]
    stale += [path for path in TABLES.glob("*.cpp") if path not in wanted]
    if check:
        for path in stale:
            print(f"{path.relative_to(interfaces.ROOT)}: not as scripts/make_interface_tables.py makes it", file=sys.stderr)
        return 1 if stale else 0
    TABLES.mkdir(parents=True, exist_ok=True)
    for path in stale:
        if path in wanted:
            path.write_text(wanted[path])
        else:
            path.unlink()
    return 0


if __name__ == "__main__":
    sys.exit(main())
