#!/usr/bin/python3
"""Runs clang-tidy over sources named on the command line, relative to the top: tidy.py BUILD FILE...

clang-tidy spends most of its time in the headers that a source includes, over and over again. So sources of one folder
are read several at a time, as one unit that includes them. Sources that use the same names for themselves go into
different units, and where a unit does not compile after all, or anything is found in it, its sources are read one by
one. Only a needless using-declaration can hide in a unit, where another source uses the name.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MOST_IN_A_UNIT = 12
OWN_SCOPE = re.compile(r"^namespace \{$(.*?)^\}  // namespace$", re.M | re.S)
DECLARED = re.compile(r"(\w+)(?= ?(?:[({;=]|\[|$))", re.M)
MACRO = re.compile(r"^#define (\w+)", re.M)
# The analyser takes all that is included for headers, which it passes over unless it is told not to.
WITH_INCLUDED = ("--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers")
INCLUDED_SOURCES = r"^.*/(src|include/tessaret|tools|bench|fuzz|codecs)/.*\.(h|hpp|cpp)$"


def own_names(source):
    """What a source declares for itself alone, and would meet in another's unit."""
    text = (ROOT / source).read_text()
    names = set(MACRO.findall(text))
    for scope in OWN_SCOPE.findall(text):
        for line in scope.split("\n"):
            if line[:1].isalpha():
                names.update(DECLARED.findall(line)[:1])
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


def units(sources, commands):
    """Lists of sources with the same folder and command, and no name in common."""
    made = []
    for source in sources:
        place = (pathlib.PurePath(source).parent, commands[source])
        names = own_names(source)
        for unit in made:
            if unit["place"] == place and len(unit["sources"]) < MOST_IN_A_UNIT and not unit["names"] & names:
                break
        else:
            unit = {"place": place, "sources": [], "names": set()}
            made.append(unit)
        unit["sources"].append(source)
        unit["names"] |= names
    return [unit["sources"] for unit in made]


def tidy(build, arguments):
    result = subprocess.run(["clang-tidy", "-p", str(build), "--quiet", *arguments], cwd=ROOT,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return result.returncode == 0, result.stdout


def tidy_alone(build, sources):
    results = [tidy(build, [source]) for source in sources]
    return all(well for well, _ in results), "".join(words for _, words in results)


def tidy_unit(build, place, number, sources, commands):
    """Whether all is well in a unit, and what clang-tidy says."""
    if len(sources) == 1:
        return tidy_alone(build, sources)
    folder = place / str(number)
    folder.mkdir(parents=True, exist_ok=True)
    unit = folder / "unit.cpp"
    unit.write_text("".join(f'#include "{ROOT / source}"  // NOLINT\n' for source in sources))
    directory, command = commands[sources[0]]
    # Compilers have looked at each source alone for names that hide others.
    entry = {"directory": directory, "file": str(unit), "command": f"{command} -Wno-shadow -c {unit}"}
    (folder / "compile_commands.json").write_text(json.dumps([entry]))
    configuration = f"--config-file={ROOT / '.clang-tidy'}"
    well, _ = tidy(folder, [configuration, f"--header-filter={INCLUDED_SOURCES}", *WITH_INCLUDED, str(unit)])
    return (True, "") if well else tidy_alone(build, sources)


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
