# SPDX-License-Identifier: Apache-2.0
"""What the typing of the password gives away when lockers are killed meanwhile, and what it costs the honest.

hostile.py WORKER [--kills N] [--honest N] [--load N] [--lockers A,B] [--seed N]

Kills each locker N times at random moments of the typing, and types N times into each on every layout, the
latter beside N busy processes for each core; prints two tables. The exit status is 0 only when not one character
came to the terminal below.
"""

import argparse
import collections
import concurrent.futures
import os
import random
import subprocess
import sys

LOCKERS = ["i3lock", "i3lock-background", "xsecurelock", "mate-screensaver", "xscreensaver"]
LAYOUTS = ["us", "de", "fr", "ru"]


def work(worker, *words):
    done = subprocess.run([worker, *map(str, words)], capture_output=True, text=True)
    if done.returncode != 0:
        print(done.stderr.strip(), file=sys.stderr)
    return [line.split() for line in done.stdout.splitlines()]


def at_the_same_time(jobs, workers):
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        for lines in pool.map(lambda job: work(*job), jobs):
            yield from lines


def print_table(head, rows):
    rows = [list(map(str, row)) for row in rows]
    widths = [max(map(len, column)) for column in zip(head, *rows)]
    for row in [head, ["-" * width for width in widths], *rows]:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
    print(flush=True)


def kill(options):
    # In pieces, so that what was found stands even when somebody stops this.
    jobs = [(options.worker, "kills", locker, min(100, options.kills - done), options.seed + done)
            for done in range(0, options.kills, 100) for locker in options.lockers]
    sums = collections.defaultdict(lambda: [0] * 6)
    for _, locker, signal, gap, *counts in at_the_same_time(jobs, len(options.lockers)):
        key = (options.lockers.index(locker), locker, signal, gap)
        sums[key] = [a + int(b) for a, b in zip(sums[key], counts)]
    print(f"Killed while 22 characters are typed, seed {options.seed}:\n")
    print_table(["locker", "signal", "gap (ms)", "kills", "while typing", "noticed", "leaks", "characters leaked",
                 "keyboards changed"], [key[1:] + tuple(sums[key]) for key in sorted(sums)])
    return sum(counts[4] for counts in sums.values())


def type_honestly(options):
    jobs = [(options.worker, "honest", locker, layout, options.honest) for locker in options.lockers
            for layout in LAYOUTS]
    busy = [subprocess.Popen([sys.executable, "-c", "while True: pass"])
            for _ in range(options.load * os.cpu_count())]
    try:
        rows = [line[1:] for line in at_the_same_time(jobs, 1)]
    finally:
        for process in busy:
            process.kill()
    print(f"Typed into a locker that nobody disturbs, beside {options.load} busy processes for each core:\n")
    print_table(["locker", "layout", "field", "typed", "accepted", "median (ms)", "characters leaked"], rows)
    return sum(int(row[-1]) for row in rows)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("worker")
    parser.add_argument("--kills", type=int, default=1000)
    parser.add_argument("--honest", type=int, default=200)
    parser.add_argument("--load", type=int, default=4)
    parser.add_argument("--lockers", type=lambda text: text.split(","), default=LOCKERS)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    options = parser.parse_args()
    leaked = kill(options) if options.kills > 0 else 0
    if options.honest > 0:
        leaked += type_honestly(options)
    sys.exit(1 if leaked else 0)


main()
