# SPDX-License-Identifier: Apache-2.0
"""What ./bench has measured, as a table.

figures.py FILE          the medians of a build/bench.json
figures.py BEFORE AFTER  those of two side by side, and how many times as long it takes after
"""

import json
import re
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
UNITS = [("ms", 1e6), ("us", 1e3), ("ns", 1)]


class Figures:
    def __init__(self, path):
        with open(path) as file:
            read = json.load(file)
        self.context = read["context"]
        rounds = {}
        for one in read["benchmarks"]:
            if one["run_type"] == "iteration" and not one.get("error_occurred"):
                rounds.setdefault(one["run_name"], []).append(one)
        self.times = {name: {kind: statistics.median(one[kind] for one in all_) * NANOSECONDS[all_[0]["time_unit"]]
                             for kind in ("real_time", "cpu_time")} for name, all_ in rounds.items()}

    def told(self):
        load = self.context.get("load_avg") or ["unknown"]
        return ", ".join([str(self.context.get("commit", "unknown commit")), "models " +
                          str(self.context.get("models", "unknown")), f"load {load[0]}", self.machine()])

    def machine(self):
        return self.context.get("machine") or self.context.get("host_name", "unknown machine")


def text(nanoseconds):
    unit, size = next((pair for pair in UNITS if nanoseconds >= pair[1]), UNITS[-1])
    return f"{nanoseconds / size:.3g} {unit}"


def short(name):
    """Without how it is measured."""
    return re.sub("/(process_time|real_time|manual_time|iterations:[0-9]+)", "", name)


def table(head, rows):
    widths = [max(map(len, column)) for column in zip(head, *rows)]
    for row in [head, ["-" * width for width in widths], *rows]:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")


def show(figures):
    print(figures.told() + "\n")
    table(["", "time", "of a processor"],
          [[short(name), text(times["real_time"]), text(times["cpu_time"])] for name, times in sorted(figures.times.items())])


def compare(before, after):
    print(f"before: {before.told()}\nafter:  {after.told()}")
    for what in ("machine", "models"):
        if before.context.get(what) != after.context.get(what):
            print(f"Not the same {what}: the ratios say little.")
    print()
    rows = []
    for name, times in sorted(after.times.items()):
        if name not in before.times:
            continue
        row = [short(name)]
        for kind in ("real_time", "cpu_time"):
            row += [text(before.times[name][kind]), text(times[kind]), f"{times[kind] / before.times[name][kind]:.2f}"]
        rows.append(row)
    table(["", "time before", "after", "ratio", "processor before", "after", "ratio"], rows)
    for title, one, other in [("Before only", before, after), ("After only", after, before)]:
        names = [short(name) for name in one.times if name not in other.times]
        if names:
            print(f"\n{title}: {', '.join(names)}")


def main():
    try:
        figures = [Figures(path) for path in sys.argv[1:]]
    except (OSError, ValueError, KeyError) as error:
        sys.exit(f"These figures can’t be read: {error}")
    if len(figures) == 1:
        show(figures[0])
    elif len(figures) == 2:
        compare(*figures)
    else:
        sys.exit(__doc__)


main()
