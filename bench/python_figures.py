#!/usr/bin/python3
"""Figures of the Python package, beside pydicom in the same run.

    bench/python_figures.py [--build DIR] [--files N] [--rounds N] [--folder DIR]

Reads of one element a second; then opening N files (400) without pixels and reading 20 attributes of each, in turns with pydicom, so that
a drift of the machine meets both; then loading files of 0.5, 2 and 8 MB in one thread and in two, and in as
many processes. Medians of the rounds (5). The files are a series that `tessaret phantom` makes.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import timeit

SOURCE_DIR = pathlib.Path(__file__).resolve().parents[1]
READS = 100_000
# Rows and columns of a file that threads load, and how often: so many that the start of a thread or a process is no part of what is
# measured.
LOADS = {512: 2000, 1024: 1500, 2048: 400}

# Attributes that a series of CT slices has, with the keywords that pydicom knows them by.
ATTRIBUTES = (
    (0x0008, 0x0016, "SOPClassUID"), (0x0008, 0x0018, "SOPInstanceUID"), (0x0008, 0x0020, "StudyDate"), (0x0008, 0x0060, "Modality"),
    (0x0010, 0x0010, "PatientName"), (0x0010, 0x0020, "PatientID"), (0x0018, 0x0050, "SliceThickness"),
    (0x0020, 0x000D, "StudyInstanceUID"), (0x0020, 0x000E, "SeriesInstanceUID"), (0x0020, 0x0013, "InstanceNumber"),
    (0x0020, 0x0032, "ImagePositionPatient"), (0x0020, 0x0052, "FrameOfReferenceUID"), (0x0028, 0x0002, "SamplesPerPixel"),
    (0x0028, 0x0004, "PhotometricInterpretation"), (0x0028, 0x0010, "Rows"), (0x0028, 0x0011, "Columns"),
    (0x0028, 0x0100, "BitsAllocated"), (0x0028, 0x0103, "PixelRepresentation"), (0x0028, 0x1052, "RescaleIntercept"),
    (0x0028, 0x1053, "RescaleSlope"))


def make_series(build, folder, count, size=64):
    subprocess.run([build / "bin" / "tessaret", "phantom", "-q", "--kind", "ct", "--slices", str(count), "--size", str(size), folder],
                   check=True)
    return [str(path) for path in sorted(pathlib.Path(folder).rglob("*")) if path.is_file()]


def read_by_tessaret(tessaret, files):
    """How many of the attributes were there."""
    there = 0
    for path in files:
        data_set = tessaret.create("Tessaret.DCMObject")
        data_set.Load(path, False)
        read = data_set.VR
        for group, element, _ in ATTRIBUTES:
            there += read(group, element) is not None
    return there


def read_by_pydicom(pydicom, files):
    there = 0
    for path in files:
        data_set = pydicom.dcmread(path, stop_before_pixels=True)
        for _, _, keyword in ATTRIBUTES:
            there += getattr(data_set, keyword) is not None
    return there


def seconds(function, *arguments):
    begin = time.perf_counter()
    answer = function(*arguments)
    return time.perf_counter() - begin, answer


def reads_a_second(statement, names, rounds):
    return READS / statistics.median(timeit.repeat(statement, globals=names, number=READS, repeat=rounds))


def show_reads(tessaret, path, rounds):
    data_set = tessaret.create("Tessaret.DCMObject")
    data_set.Load(path, False)
    for what, statement in (("US", "o.VR(0x0028, 0x0010)"), ("PN", "o.VR(0x0010, 0x0010)"), ("DS", "o.VR(0x0028, 0x1052)"),
                            ("UI", "o.VR(0x0008, 0x0018)"), ("none", "o.VR(0x0009, 0x0009)"),
                            ("a PN put", "o.VR[0x0010, 0x0010] = 'Doe^Jane'")):
        print(f"reading {what:10} {reads_a_second(statement, {'o': data_set}, rounds):12,.0f} a second")
    made = reads_a_second("create('Tessaret.DCMObject')", {"create": tessaret.create}, rounds)
    print(f"making and giving back an object {made:12,.0f} a second")


def show_files(tessaret, pydicom, files, rounds):
    ours, theirs = [], []
    for _ in range(rounds):
        for samples, read, module in ((ours, read_by_tessaret, tessaret), (theirs, read_by_pydicom, pydicom)):
            took, there = seconds(read, module, files)
            if there != len(files) * len(ATTRIBUTES):
                sys.exit(f"{module.__name__} found {there} attributes instead of {len(files) * len(ATTRIBUTES)}")
            samples.append(took)
    ours, theirs = statistics.median(ours), statistics.median(theirs)
    print(f"{len(files)} files, {len(ATTRIBUTES)} attributes each: tessaret {ours * 1000:.1f} ms, pydicom {theirs * 1000:.1f} ms,"
          f" {theirs / ours:.1f} times as fast")


def load_all(tessaret, path, count):
    for _ in range(count):
        tessaret.create("Tessaret.DCMObject").Load(path, True)


def loads_a_second(tessaret, path, loads, threads):
    """Each thread loads the file into objects of its own."""
    workers = [threading.Thread(target=load_all, args=(tessaret, path, loads)) for _ in range(threads)]
    begin = time.perf_counter()
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return threads * loads / (time.perf_counter() - begin)


def loads_by_processes(tessaret, path, loads, processes):
    """The same in processes, which have nothing in common but the machine."""
    begin = time.perf_counter()
    children = []
    for _ in range(processes):
        child = os.fork()
        if child == 0:
            load_all(tessaret, path, loads)
            os._exit(0)
        children.append(child)
    for child in children:
        os.waitpid(child, 0)
    return processes * loads / (time.perf_counter() - begin)


def show_threads(tessaret, path, loads, rounds):
    """In turns, so that a drift of the machine meets all."""
    samples = [[function(tessaret, path, loads, workers) for function in (loads_a_second, loads_by_processes) for workers in (1, 2)]
               for _ in range(rounds)]
    one, two, process, processes = (statistics.median(column) for column in zip(*samples))
    print(f"a file of {os.path.getsize(path):,} bytes loaded: one thread {one:,.0f} a second, two {two:,.0f}, {two / one:.2f} times as many;"
          f" two processes {processes / process:.2f} times as many as one")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, default=SOURCE_DIR / "build" / "release")
    parser.add_argument("--files", type=int, default=400)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", type=pathlib.Path, help="where the files that threads load lie, as /dev/shm")
    options = parser.parse_args()
    os.environ.setdefault("TESSARET_LIBRARY", str(options.build / "lib" / "libtessaret.so"))
    sys.path.insert(0, str(SOURCE_DIR / "bindings" / "python"))
    import pydicom
    import tessaret
    with tempfile.TemporaryDirectory() as folder:
        files = make_series(options.build, folder, options.files)
        show_reads(tessaret, files[0], options.rounds)
        show_files(tessaret, pydicom, files, options.rounds)
    with tempfile.TemporaryDirectory(dir=options.folder) as folder:
        for size, loads in LOADS.items():
            show_threads(tessaret, make_series(options.build, pathlib.Path(folder) / str(size), 1, size)[0], loads, options.rounds)


if __name__ == "__main__":
    main()
