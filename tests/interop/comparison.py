"""What a save in mode 3 changes, and how views of files are compared."""

import re

import peers

TAG = re.compile(r"\(([0-9a-f]{4}),([0-9a-f]{4})\)")
PIXEL_DATA = "(7fe0,0010)"
FRAGMENT = "(fffe,e000)"


def last_tag(element):
    return TAG.findall(element.path)[-1]


def standard_vrs(element):
    """What the standard allows for the element; empty for a tag that it does not know."""
    return [vr for vr in peers.known_vr(int("".join(last_tag(element)), 16)).split(" or ") if vr]


def data_set(view):
    """Without group 2, which is made anew."""
    return [element for element in view if not element.path.startswith("(0002,")]


def without_group_lengths(view):
    return [element for element in view if last_tag(element)[1] != "0000"]


def private_sequences(view):
    """Their paths. In the implicit form they look like any value where their length is defined."""
    return {element.path for element in view if element.value is None and int(last_tag(element)[0], 16) % 2}


def without(view, paths):
    """Without the elements of these paths and all that is in them."""
    return [
        element
        for element in view
        if not any(element.path == path or element.path.startswith(path + "[") for path in paths)
    ]


def saved_form(view, implicit):
    """What the view of a file has to be after it was saved: without group 2 and group lengths (the implicit form keeps
    those of the top level behind the first other element, which brings that form in), values of odd length with a NUL
    more, and UIDs in sequences with a NUL at their end rather than a blank."""
    form = []
    switched = False
    for element in data_set(view):
        group, number = last_tag(element)
        is_nested = "[" in element.path
        switched = switched or (group > "0002" and number != "0000")
        keeps_group_lengths = implicit and (group == "0000" if is_nested else switched)
        if number != "0000" or keeps_group_lengths:
            form.append(element._replace(value=saved_value(element)))
    return form


def saved_value(element):
    value = element.value
    if not isinstance(value, bytes) or element.path.endswith(FRAGMENT):
        return value
    if len(value) % 2:
        value += b"\0"
    vrs = [element.vr] if element.vr else standard_vrs(element)
    if "[" in element.path and value.endswith(b" ") and "UI" in vrs:
        value = value[:-1] + b"\0"
    return value


def first_difference(expected, actual, values_agree=lambda before, after: before.value == after.value):
    """In words, or empty."""
    for before, after in zip(expected, actual):
        if before.path != after.path:
            return f"{before.path} is missing, or {after.path} is too much"
        if not types_agree(before, after):
            return f"{before.path}: type {before.vr} became {after.vr}"
        if not values_agree(before, after):
            return f"{before.path}: value {before.value!r:.60} became {after.value!r:.60}"
    if len(expected) > len(actual):
        return f"{expected[len(actual)].path} is missing"
    if len(actual) > len(expected):
        return f"{actual[len(expected)].path} is too much"
    return ""


def types_agree(before, after):
    """Pixel data become OB or OW by their Bits Allocated; what was UN gets the type that the standard gives it, or SQ
    where it holds items."""
    if before.vr == after.vr or None in (before.vr, after.vr):
        return True
    if before.path == PIXEL_DATA:
        return {before.vr, after.vr} == {"OB", "OW"}
    if before.value is None and after.value is None:
        return {before.vr, after.vr} == {"UN", "SQ"}
    return before.vr == "UN" and after.vr in standard_vrs(before)


def texts_agree(before, after):
    """Of dcmdump, which words a value by its type. Padding is left to the comparison of bytes."""
    return before.vr != after.vr or unpadded(before.value) == unpadded(after.value)


def unpadded(text):
    return re.sub(r"(\\000| )(?=\]$)|\\00$", "", text) if text is not None else None


def first_type_that_is_not_standard(view):
    """In words, or empty. Private elements, and what pydicom does not know, may have any."""
    for element in view:
        standard = standard_vrs(element)
        if element.vr and standard and element.vr not in standard:
            return f"{element.path}: type {element.vr} rather than {standard}"
    return ""
