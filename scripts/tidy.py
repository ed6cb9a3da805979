#!/usr/bin/python3
"""Runs clang-tidy over sources named on the command line, relative to the top: tidy.py BUILD FILE...

clang-tidy spends most of its time in the headers that a source includes, over and over again. So sources of one folder
are read several at a time, as one unit that includes them. Sources that use the same names for themselves go into
different units, and where a unit does not compile after all, or anything is found in it, its halves are read, and so on
down to single sources. Only a needless using-declaration can hide in a unit, where another source uses the name.
"""

import concurrent.futures
import functools
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MOST_IN_A_UNIT = 24
OWN_SCOPE = re.compile(r"^namespace \{$(.*?)^\}  // namespace$", re.M | re.S)
DECLARED = re.compile(r"(\w+)(?= ?(?:[({;=]|\[|$))", re.M)
ENUMERATORS = re.compile(r"^enum \w+[^{]*\{([^}]*)\}", re.M)
MACRO = re.compile(r"^#define (\w+)", re.M)
INCLUDED = re.compile(r'^#include "(.+)"', re.M)
# What may be said again: names of others, and short names of namespaces.
SAID_AGAIN = re.compile(r"using [\w:]*::\w+;|using namespace |namespace ")
FOLDERS = ("src", "include", "codecs", "tools", "bench", "fuzz")
# The one name that each fuzz target gives to all.
ENTRANCE = "LLVMFuzzerTestOneInput"
# The analyser takes all that is included for headers, which it passes over unless it is told not to.
WITH_INCLUDED = ("--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers")
INCLUDED_SOURCES = r"^.*/(src|include/tessaret|tools|bench|fuzz|codecs)/.*\.(h|hpp|cpp)$"


def declared(text):
    """What lines at the left edge declare."""
    names = {name for line in text.split("\n") if line[:1].isalpha() and not SAID_AGAIN.match(line)
             for name in DECLARED.findall(line)[:1]}
    for enumerators in ENUMERATORS.findall(text):
        names.update(re.findall(r"\w+", enumerators))
    return names


def own_names(source):
    """What a source declares for itself alone, and would meet in another's unit."""
    text = (ROOT / source).read_text()
    return set(MACRO.findall(text)).union(*map(declared, OWN_SCOPE.findall(text)))


@functools.cache
def included(file):
    """What may be meant by the names that a file includes."""
    places = [ROOT / folder / name for name in INCLUDED.findall(file.read_text()) for folder in FOLDERS]
    return [place for place in places if place.exists()]


@functools.cache
def names_of_header(header):
    return frozenset(declared(header.read_text()))


def names_of_headers(source):
    """What the headers of this tree declare that a source includes, itself or by others."""
    headers, names, left = set(), set(), included(ROOT / source)
    while left:
        header = left.pop()
        if header not in headers:
            headers.add(header)
            names |= names_of_header(header)
            left = left + included(header)
    return names


def compile_commands(build):
    """The compiler's arguments of each source, without those that name the source and the result."""
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = entry["command"].split()
        words = words[:words.index("-o")] + words[words.index("-o") + 2:]
        words = words[:words.index("-c")] + words[words.index("-c") + 2:]
        source = os.path.relpath(entry["file"], ROOT)
        commands.setdefault(source, (entry["directory"], " ".join(words)))
    return commands


class Unit:
    """Sources with the same folder and command, of which none declares for itself what another has or hears of."""

    def __init__(self, place):
        self.place = place
        self.sources = []
        self.names = set()
        self.heard = set()

    def takes(self, place, names, heard):
        return (place == self.place and len(self.sources) < MOST_IN_A_UNIT and not names & self.names
                and not names & (self.heard - heard) and not self.names & (heard - self.heard))

    def add(self, source, names, heard):
        self.sources.append(source)
        self.names |= names
        self.heard |= heard


def units(sources, commands):
    """Lists of sources that are read together, the longest first, which leaves least to wait for in the end."""
    made = []
    for source in sources:
        place = (pathlib.PurePath(source).parent, commands[source])
        names, heard = own_names(source), names_of_headers(source)
        unit = next((unit for unit in made if unit.takes(place, names, heard)), None)
        if not unit:
            unit = Unit(place)
            made.append(unit)
        unit.add(source, names, heard)
    return sorted((unit.sources for unit in made), key=len, reverse=True)


def tidy(build, arguments):
    result = subprocess.run(["clang-tidy", "-p", str(build), "--quiet", *arguments], cwd=ROOT,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return result.returncode == 0, result.stdout


def tidy_parts(build, place, number, sources, commands):
    """Both halves of a unit in which something was found, down to the source that it is in."""
    middle = len(sources) // 2
    results = [tidy_unit(build, place, f"{number}{half}", part, commands)
               for half, part in (("a", sources[:middle]), ("b", sources[middle:]))]
    return all(well for well, _ in results), "".join(words for _, words in results)


def tidy_unit(build, place, number, sources, commands):
    """Whether all is well in a unit, and what clang-tidy says."""
    if len(sources) == 1:
        return tidy(build, sources)
    folder = place / str(number)
    folder.mkdir(parents=True, exist_ok=True)
    unit = folder / "unit.cpp"
    unit.write_text("".join(f'#define {ENTRANCE} {ENTRANCE}{position}\n#include "{ROOT / source}"  // NOLINT\n#undef {ENTRANCE}\n'
                            for position, source in enumerate(sources)))
    directory, command = commands[sources[0]]
    # Compilers have looked at each source alone for names that hide others.
    entry = {"directory": directory, "file": str(unit), "command": f"{command} -Wno-shadow -c {unit}"}
    (folder / "compile_commands.json").write_text(json.dumps([entry]))
    configuration = f"--config-file={ROOT / '.clang-tidy'}"
    well, _ = tidy(folder, [configuration, f"--header-filter={INCLUDED_SOURCES}", *WITH_INCLUDED, str(unit)])
    return (True, "") if well else tidy_parts(build, place, number, sources, commands)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    commands = compile_commands(build)
    sources = [source for source in sys.argv[2:] if source in commands]
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        jobs = [workers.submit(tidy_unit, build, build / "tidy", number, unit, commands)
                for number, unit in enumerate(units(sources, commands))]
        for job in jobs:
            well, words = job.result()
            if not well:
                failed = True
                print(words, end="")
    sys.exit(failed)


if __name__ == "__main__":
    main()
