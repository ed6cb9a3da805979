"""Files written anew by dcmconv in all native encodings, with both kinds of length, with and without group lengths."""

import peers

OPTIONS = {
    "implicit-defined": ("+ti", "+e", "-g"),
    "implicit-undefined-groups": ("+ti", "-e", "+g"),
    "little-undefined": ("+te", "-e", "-g"),
    "little-defined-groups": ("+te", "+e", "+g"),
    "big-defined": ("+tb", "+e", "-g"),
    "big-undefined-groups": ("+tb", "-e", "+g"),
}


def make(files, folder):
    """{file: [(name, path)]} with a variant for each of OPTIONS; without the files that dcmconv cannot write anew."""
    folder.mkdir(exist_ok=True)
    commands, variants = [], {}
    for number, file in enumerate(files):
        for name, options in OPTIONS.items():
            path = folder / f"{number}-{name}.dcm"
            variants.setdefault(file, []).append((name, path))
            commands.append(["dcmconv", "-q", *options, file, path])
    peers.run_all(commands)
    return {file: made for file, made in variants.items() if all(path.exists() for _, path in made)}
