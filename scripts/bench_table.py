#!/usr/bin/python3
"""Prints the JSON lines of the measuring program (standard input) as a table of medians.

With --peers there are lines of several programs and rounds: once they are complete, a row for each job and program, with how
many times as long it took as Tessaret, and "other pixels" where the sums of what was decoded differ.
"""

import json
import statistics
import sys


def rate(row, seconds):
    """Megabytes a second where the job moves bytes, and items a second."""
    words = []
    if row.get("bytes"):
        words.append(f"{row['bytes'] / seconds / 1e6:,.0f} MB/s")
    if row.get("items", 1) > 1:
        words.append(f"{row['items'] / seconds:,.0f} items/s")
    return ", ".join(words)


def columns(row):
    """Median, fastest, peak and rate."""
    median = statistics.median(row["samples"])
    peak = f"{row['peak_kib'] / 1024:.0f}" if "peak_kib" in row else ""
    unit = row.get("unit", "s")
    times = [f"{value * 1e3:,.3f} ms" if unit == "s" else f"{value:,.1f} {unit}"
             for value in (median, min(row["samples"]))]
    speed = rate(row, median) if unit == "s" and median > 0 else ""
    return f"{times[0]:>12} {times[1]:>12} {peak:>9}  {speed}"


def merged(lines):
    """One row for each job and program, with the samples of all rounds."""
    rows = {}
    for line in lines:
        row = json.loads(line)
        known = rows.setdefault((row["job"], row["peer"]), row)
        if known is not row:
            known["samples"] += row["samples"]
    return rows


def print_peers(rows):
    print(f"{'job':24} {'program':10} {'as long':>8} {'median':>12} {'fastest':>12} {'peak MiB':>9}  rate")
    for (job, peer), row in rows.items():
        own = rows.get((job, "tessaret"))
        times = statistics.median(row["samples"]) / statistics.median(own["samples"]) if own else None
        ratio = "" if times is None else f"{times:.2f}"
        differs = own and job.endswith(".decode") and row.get("check") != own.get("check")
        print(f"{job:24} {peer:10} {ratio:>8} {columns(row)}{'  other pixels' if differs else ''}")


def main():
    if sys.argv[1:] == ["--peers"]:
        print_peers(merged(sys.stdin))
        return
    print(f"{'job':24} {'median':>12} {'fastest':>12} {'peak MiB':>9}  rate")
    for line in sys.stdin:
        row = json.loads(line)
        print(f"{row['job']:24} {columns(row)}", flush=True)


if __name__ == "__main__":
    main()
