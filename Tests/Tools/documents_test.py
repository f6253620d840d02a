# SPDX-License-Identifier: Apache-2.0
"""README and docs: files, tests and tools that they name are there."""

import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = {path.relative_to(ROOT).as_posix(): path.read_text()
         for path in [ROOT / "README.md", *ROOT.glob("docs/*.md")]}
PATH = re.compile(r"(?<![\w/.~-])((?:Tools|docs|Tests|Fuzz|Models|Simulation|Benchmarks|Platforms|Unlock|UnlockCore|Kit|cmake|\.ci)"
                  r"/[\w/@.-]*\w|\./(?:run|test|bench))")


class Documents(unittest.TestCase):
    def test_names_files_that_are_there(self):
        # The history names what has gone.
        found = {(page, name) for page, text in PAGES.items() if page != "docs/CHANGELOG.md"
                 for name in PATH.findall(text)}
        self.assertGreater(len(found), 40)
        # A room's class may be named without its suffix.
        missing = [pair for pair in found if not (ROOT / pair[1]).exists() and not list(ROOT.glob(pair[1] + ".*"))]
        self.assertEqual(missing, [])

    def test_names_tests_that_are_there(self):
        there = set(subprocess.run(["git", "-C", ROOT, "grep", "-hoP", r"^TEST(_F|_P)?\(\K\w+", "--", "Tests"],
                                   check=True, capture_output=True, text=True).stdout.split())
        named = {name for names in re.findall(r"-R '?([\w\\|]+)", PAGES["docs/measured.md"])
                 for name in names.split("\\|")}
        self.assertGreater(len(named), 20)
        self.assertLessEqual(named, {test.removesuffix("Test") for test in there} | there)

    def test_the_readme_is_short(self):
        self.assertLess(len(PAGES["README.md"].split()), 1000)


if __name__ == "__main__":
    unittest.main()
