#!/usr/bin/python3
"""A host in Python: shows what is in a DICOM file, makes a changed copy of it, and hears a failure in words.

    walk.py IN OUT      OUT gets another patient's name, a remark about where it came from, and the explicit little endian encoding
"""

from __future__ import annotations

import sys
from collections.abc import Iterator

import tessaret

EXPLICIT_LITTLE_ENDIAN = "1.2.840.10008.1.2.1"


def tags_of(data_set: tessaret.IDCMObject) -> Iterator[tuple[int, int]]:
    """The tags of a data set from the first to the last."""
    found, group, element = data_set.GetFirstVR()
    while found:
        yield group, element
        found, group, element = data_set.GetNextVR(group, element)


def values_of(data_set: tessaret.IDCMObject, group: int, element: int, type_code: str) -> str:
    """The values of an element as text; of bytes only how many they are."""
    if type_code == "SQ":
        return f"{data_set.SequencesCount(group, element)} items"
    values = [data_set.VR(group, element, None, number) for number in range(max(1, data_set.VRMultiplicity(group, element)))]
    if isinstance(values[0], bytes):
        return f"{len(values[0])} bytes"
    return "\\".join("" if value is None else str(value) for value in values)


def shown(text: str) -> str:
    """Text of a file has a character a byte: what is not printable is written with an escape."""
    return "".join(letter if " " <= letter <= "~" else f"\\x{ord(letter):02x}" for letter in text)


def show(data_set: tessaret.IDCMObject, indent: str = "") -> None:
    """One element a line, the items of sequences below it."""
    for group, element in tags_of(data_set):
        _, name, type_code, _, _ = data_set.GetVRDescr(group, element)
        value = shown(values_of(data_set, group, element, type_code)[:60])
        print(f"{indent}({group:04x},{element:04x}) {type_code} {name}: {value}")
        for index in range(data_set.SequencesCount(group, element)):
            show(data_set.Sequence(group, element, index), indent + "    ")


def change(data_set: tessaret.IDCMObject) -> None:
    """Another name, and an item that says what the data set was made from."""
    source = tessaret.create("Tessaret.DCMObject")
    source.VR[0x0008, 0x1150] = data_set.VR(0x0008, 0x0016)
    source.VR[0x0008, 0x1155] = data_set.VR(0x0008, 0x0018)
    data_set.Sequence[0x0008, 0x2112, -1] = source  # behind the items that are there
    data_set.VR[0x0010, 0x0010] = "Walked^Through"
    data_set.VR[0x0008, 0x0008, None, 0] = "DERIVED"
    data_set.RemoveVR(0x0010, 0x0030)


def main(path: str, changed_path: str) -> int:
    with tessaret.create("Tessaret.DCMObject") as data_set:
        try:
            data_set.Load(path, True)
            show(data_set)
            change(data_set)
            data_set.Translate(EXPLICIT_LITTLE_ENDIAN)
        except tessaret.Error as error:
            print(f"{path}: {error.words}", file=sys.stderr)
            return 1
        try:
            data_set.Save(changed_path)
        except tessaret.Error as error:
            print(f"{changed_path}: {error.words}", file=sys.stderr)
            return 5
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
