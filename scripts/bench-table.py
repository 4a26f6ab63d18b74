#!/usr/bin/env python3
"""Prints one table of the medians that Google Benchmark measured natively and under Wine.

usage: bench-table.py FOLDER      (with native-NAME.json and wine-NAME.json)
"""

import json
import os
import pathlib
import subprocess
import sys

UNIT_SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def medians_of(path):
    """Seconds of real time by benchmark name; a benchmark that reported an error has its text instead."""
    medians = {}
    for run in json.loads(path.read_text(encoding="utf-8"))["benchmarks"]:
        name = run.get("run_name", run["name"])
        if run.get("error_occurred"):
            medians[name] = run.get("error_message", "error")
        elif run.get("aggregate_name") == "median":
            medians[name] = run["real_time"] * UNIT_SECONDS[run["time_unit"]]
    return medians


def text_of(value):
    if value is None:
        return "-"
    if isinstance(value, str):
        return f"error: {value}"
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if value >= scale:
            return f"{value / scale:.3f} {unit}"
    return f"{value / 1e-9:.1f} ns"


def first_line(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def machine():
    models = [line.split(":", 1)[1].strip() for line in
              pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines() if line.startswith("model name")]
    return [
        f"machine:   {models[0] if models else 'unknown'}, {os.cpu_count()} cores",
        f"compilers: {first_line('g++', '--version')}; "
        f"{first_line('x86_64-w64-mingw32-g++-posix', '--version')}",
        f"wine:      {first_line('wine', '--version')}",
    ]


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    columns = {"native": {}, "wine": {}}
    for path in sorted(pathlib.Path(sys.argv[1]).glob("*.json")):
        columns[path.name.split("-", 1)[0]].update(medians_of(path))
    names = list(dict.fromkeys([*columns["native"], *columns["wine"]]))
    if not names:
        print("error: nothing was measured: does the pattern of --only fit any benchmark?", file=sys.stderr)
        return 1

    rows = [("median of real time", "native", "Wine")]
    rows += [(name, text_of(columns["native"].get(name)), text_of(columns["wine"].get(name))) for name in names]
    widths = [max(len(row[i]) for row in rows) for i in range(3)]
    print("\n".join(machine()))
    for number, row in enumerate(rows):
        print(f"{row[0]:<{widths[0]}}  {row[1]:>{widths[1]}}  {row[2]:>{widths[2]}}")
        if number == 0:
            print("  ".join("-" * width for width in widths))
    has_errors = any(isinstance(value, str) for column in columns.values() for value in column.values())
    return 1 if has_errors else 0


if __name__ == "__main__":
    sys.exit(main())
