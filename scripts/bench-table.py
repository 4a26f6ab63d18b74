#!/usr/bin/env python3
"""Prints one table of the medians that Google Benchmark measured natively and under Wine.

usage: bench-table.py FOLDER      (with native-NAME.json and wine-NAME.json)
"""

import json
import os
import pathlib
import subprocess
import sys

# Whom our time is compared with, if they were measured.
PEERS = ("memcpy", "OpenCV", "Aravis")
UNIT_SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


class Results:
    """Of one system: seconds of real time by name, error texts by name, peers, goals and rows by work."""

    def __init__(self):
        self.medians = {}
        self.rates = {}
        self.errors = {}
        self.peers = {}
        self.goals = {}
        self.rows = {}

    def add(self, text):
        results = json.loads(text)
        for key, value in results["context"].items():
            if key.startswith("peer of "):
                self.peers[key.removeprefix("peer of ")] = value
            elif key.startswith("goal of "):
                self.goals[key.removeprefix("goal of ")] = value
            elif key.startswith("row of "):
                self.rows[key.removeprefix("row of ")] = value
        for run in results["benchmarks"]:
            name = run.get("run_name", run["name"]).removesuffix("/real_time")
            if run.get("error_occurred"):
                self.errors[name] = run.get("error_message", "error")
            elif run.get("aggregate_name") == "median":
                self.medians[name] = run["real_time"] * UNIT_SECONDS[run["time_unit"]]
                self.rates[name] = run.get("bytes_per_second")

    def compared(self, work):
        """Seconds by who did the work, the work's peer included, under the first part of the peer's name."""
        seconds = {name.removeprefix(work + "/"): value for name, value in self.medians.items()
                   if name.startswith(work + "/")}
        peer = self.peers.get(work)
        if peer in self.medians:
            seconds[peer.split("/", 1)[0]] = self.medians[peer]
        return seconds


def text_of(seconds):
    if seconds is None:
        return "-"
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= scale:
            return f"{seconds / scale:.3f} {unit}"
    return f"{seconds / 1e-9:.1f} ns"


def rate_of(bytes_per_second):
    return "-" if bytes_per_second is None else f"{bytes_per_second / 1e9:.2f}"


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


def value_for(goal, seconds, ratio):
    """@return  what is compared with the goal's number; none when it was not measured"""
    _, unit, *peer = goal.split()
    if unit != "x":
        return seconds["ours"] / UNIT_SECONDS[unit]
    if not peer:
        return ratio
    return seconds["ours"] / seconds[peer[0]] if peer[0] in seconds else None


def judged(goals, seconds, ratio):
    """Whether goals ("1.3 x" the better of the others, "1 x OpenCV", or a time: "10 ms"; several with commas between)
    were met. Shown, never an error: how fast a machine is, and what else it does, is not ours to fail for."""
    if goals is None:
        return "-"
    values = [(value_for(goal, seconds, ratio), float(goal.split()[0])) for goal in goals.split(",")]
    if any(value is None for value, _ in values):
        return "-"
    return "met" if all(value <= most for value, most in values) else "missed"


class Line:
    """How one work went on one system."""

    def __init__(self, results, work):
        self.work = work
        self.seconds = results.compared(work)
        self.rate = results.rates[work + "/ours"]
        self.goal = results.goals.get(work)
        others = [self.seconds[who] for who in PEERS if who in self.seconds]
        self.ratio = self.ours / min(others) if others else None
        self.of_open_cv = self.ours / self.seconds["OpenCV"] if "OpenCV" in self.seconds else None
        self.verdict = judged(self.goal, self.seconds, self.ratio)

    @property
    def ours(self):
        return self.seconds["ours"]

    def badness(self):
        """What misses its goal is worst, then what is slowest beside OpenCV, then what is slowest."""
        return self.verdict == "missed", self.of_open_cv or 0, self.ours

    def cells(self, system, count):
        name = self.work if count == 1 else f"{self.work}, worst of {count}"
        return (name, system, text_of(self.ours), rate_of(self.rate),
                *(text_of(self.seconds.get(who)) for who in PEERS),
                *("-" if value is None else f"{value:.2f}" for value in (self.ratio, self.of_open_cv)),
                self.goal or "-", self.verdict)


def comparison_rows(systems):
    """For each row (of one work, or of several that hardly differ: then the worst of them) and system: ours and its
    output, the others, ours as a multiple of the best of them and of OpenCV, the goal."""
    rows = {}
    for results in systems.values():
        for name in results.medians:
            work = name.removesuffix("/ours")
            if work != name:
                rows.setdefault(results.rows.get(work, work), set()).add(work)
    # The programs measure in an order made by chance.
    for works in sorted(rows.values(), key=min):
        for system, results in systems.items():
            lines = [Line(results, work) for work in sorted(works) if work + "/ours" in results.medians]
            if lines:
                yield max(lines, key=Line.badness).cells(system, len(lines))


def single_rows(systems):
    """What is compared with nothing: time natively and under Wine."""
    works = {name.removesuffix("/ours") for results in systems.values() for name in results.medians
             if name.endswith("/ours")}
    names = {name for results in systems.values() for name in results.medians
             if name.split("/", 1)[0] not in works and name.split("/", 1)[0] not in PEERS}
    for name in sorted(names):
        yield (name, *(text_of(results.medians.get(name)) for results in systems.values()))


def print_table(rows):
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for number, row in enumerate(rows):
        print("  ".join([f"{row[0]:<{widths[0]}}",
                         *(f"{cell:>{width}}" for cell, width in zip(row[1:], widths[1:]))]))
        if number == 0:
            print("  ".join("-" * width for width in widths))


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    systems = {"native": Results(), "Wine": Results()}
    for path in sorted(pathlib.Path(sys.argv[1]).glob("*-*.json")):
        systems["Wine" if path.name.startswith("wine-") else "native"].add(path.read_text(encoding="utf-8"))

    compared, single = list(comparison_rows(systems)), list(single_rows(systems))
    if not compared and not single:
        print("error: nothing was measured: does the pattern of --only fit any benchmark?", file=sys.stderr)
        return 1
    print("\n".join([*machine(), ""]))
    if compared:
        print_table([("median of real time", "on", "ours", "GB/s", *PEERS, "ours / better", "ours / OpenCV", "goal",
                      "goal is"),
                     *compared])
    if single:
        print_table([("median of real time", *systems), *single])

    for system, results in systems.items():
        for name, text in results.errors.items():
            print(f"error: {name} ({system}): {text}", file=sys.stderr)
    return 1 if any(results.errors for results in systems.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
