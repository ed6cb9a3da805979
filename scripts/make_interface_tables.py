#!/usr/bin/python3
"""Makes src/facade/tables from the interfaces in include/tessaret: the tables by which members are described and called.

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


def table_of(interface):
    lines = [f"using I = {interface.name};", ""]
    for number, member in enumerate(interface.members):
        arguments = ", ".join(f'{{"{p.name}", ArgumentFlow::{p.flow}}}' for p in member.parameters)
        lines.append(f"constexpr auto kArguments{number} = Signature<decltype(&I::{member.function})>::Describe("
                     + (f"{{{{{arguments}}}}});" if arguments else "{});"))
    count = len(interface.members)
    if count:
        lines += ["", "constexpr MemberInfo kMembers[] = {"]
        for number, member in enumerate(interface.members):
            lines.append(f'{{"{member.name}", MemberKind::{member.kind}, kArguments{number}.data(), kArguments{number}.size(),'
                         f" {quoted(member.help)}}},")
        lines += ["};", "constexpr MemberCall kCalls[] = {"]
        lines += [f"&{OWN_CALLS.get(f'{interface.name}.{member.function}', f'CallMember<&I::{member.function}>')},"
                  for member in interface.members]
        lines += ["};"]
    members, calls = ("kMembers", "kCalls") if count else ("nullptr", "{}")
    return lines, [
        "template <>", f"const InterfaceTable& TableOf<{interface.name}>() {{",
        f"static constexpr InterfaceTable kTable = {{{{I::kName, I::kId, {members}, {count}, {quoted(interface.help)}}}, {calls}}};",
        "return kTable;", "}"]


def source_of(stem, interface):
    body, table = table_of(interface)
    return "\n".join([
        f"// Made by scripts/make_interface_tables.py from include/tessaret/{stem}.hpp; not to be edited.",
        "// clang-format off", '#include "component/call_by_name.h"',
        *(f'#include "{header}"' for name, header in OWN_CALL_HEADERS.items() if name == interface.name),
        f'#include "tessaret/{stem}.hpp"', "", "namespace tessaret {", "namespace {", "", *body, "", "}  // namespace", "", *table, "",
        "}  // namespace tessaret", ""])


def main():
    check = "--check" in sys.argv[1:]
    wanted = {}
    for stem, found in interfaces.read_all().items():
        for interface in found:
            events = "_events" if interface.name.startswith("_") else ""
            wanted[TABLES / f"{stem}{events}.cpp"] = source_of(stem, interface)
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
