#!/usr/bin/python3
"""Prints the JSON lines of the measuring program (standard input) as a table of medians."""

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


def main():
    print(f"{'job':24} {'median':>12} {'fastest':>12} {'peak MiB':>9}  rate")
    for line in sys.stdin:
        row = json.loads(line)
        median = statistics.median(row["samples"])
        peak = f"{row['peak_kib'] / 1024:.0f}" if "peak_kib" in row else ""
        unit = row.get("unit", "s")
        times = [f"{value * 1e3:,.3f} ms" if unit == "s" else f"{value:,.1f} {unit}"
                 for value in (median, min(row["samples"]))]
        speed = rate(row, median) if unit == "s" and median > 0 else ""
        print(f"{row['job']:24} {times[0]:>12} {times[1]:>12} {peak:>9}  {speed}", flush=True)


if __name__ == "__main__":
    main()
