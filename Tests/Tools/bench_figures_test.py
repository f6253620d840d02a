# SPDX-License-Identifier: Apache-2.0
"""What Benchmarks/figures.py makes of the files that ./bench leaves."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

FIGURES = Path(__file__).resolve().parents[2] / "Benchmarks" / "figures.py"


def rounds(name, unit, times, **more):
    return [{"run_name": name, "run_type": "iteration", "time_unit": unit, "real_time": time, "cpu_time": 2 * time} | more
            for time in times]


class BenchFigures(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def print(self, *files):
        paths = []
        for number, content in enumerate(files):
            paths.append(Path(self.folder.name) / f"{number}.json")
            paths[-1].write_text(content if isinstance(content, str) else json.dumps(content))
        done = subprocess.run([sys.executable, FIGURES, *paths], capture_output=True, text=True, timeout=30)
        return done.returncode, done.stdout + done.stderr

    def file(self, benchmarks, machine="here", models="Models"):
        return {"context": {"commit": "abc", "machine": machine, "models": models, "load_avg": [0.5]},
                "benchmarks": benchmarks}

    def rows(self, printed):
        return {cells[1].strip(): [cell.strip() for cell in cells[2:-1]] for cells in
                (line.split("|") for line in printed.splitlines() if line.startswith("|"))}

    def test_medians_of_the_rounds_in_one_unit(self):
        before = self.file(rounds("frame/2/real_time", "ms", [30, 20, 90]) + rounds("gone", "ns", [1]) +
                           rounds("failed", "ns", [5], error_occurred=True))
        after = self.file(rounds("frame/2/real_time", "us", [9000, 10000, 11000]) + rounds("new", "s", [2]) +
                          [{"run_name": "new", "run_type": "aggregate", "time_unit": "s", "real_time": 99, "cpu_time": 9}])
        code, printed = self.print(before, after)
        self.assertEqual(code, 0, printed)
        self.assertEqual(self.rows(printed)["frame/2"], ["30 ms", "10 ms", "0.33", "60 ms", "20 ms", "0.33"])
        self.assertIn("Before only: gone\n", printed)
        self.assertIn("After only: new\n", printed)
        self.assertNotIn("Not the same", printed)
        self.assertEqual(self.rows(self.print(after)[1])["new"], ["2e+03 ms", "4e+03 ms"])

    def test_says_when_the_ratios_say_little(self):
        one = self.file(rounds("frame", "ms", [1]))
        for other, told in [(self.file(one["benchmarks"], machine="there"), "machine"),
                            (self.file(one["benchmarks"], models="other"), "models")]:
            with self.subTest(told):
                self.assertIn(f"Not the same {told}: ", self.print(one, other)[1])

    def test_refuses_what_is_no_file_of_figures(self):
        for content in ("", "[", "{}", '{"context": {}, "benchmarks": [{}]}'):
            with self.subTest(content):
                code, printed = self.print(content)
                self.assertEqual(code, 1)
                self.assertTrue(printed.startswith("These figures can’t be read: "), printed)


unittest.main()
