# SPDX-License-Identifier: Apache-2.0
"""Tools/release in a small project with stand-ins for its builds and tests."""

import pathlib
import shutil
import subprocess
import tarfile
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
STEADY = 'echo same >build/x.deb'
UNSTEADY = 'pwd >build/x.deb'
TIMED = 'echo $SOURCE_DATE_EPOCH >build/x.deb'


class Release(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.root = pathlib.Path(place.name)
        for name in ("Tools", ".ci", "docs"):
            (self.root / name).mkdir()
        shutil.copy(ROOT / "Tools/release", self.root / "Tools")
        self.write("CMakeLists.txt", "project(Small VERSION 3.1.4 LANGUAGES CXX)\n")
        self.write("docs/CHANGELOG.md", "## 3.1.4 (1 May 2030)\n")
        self.write(".gitignore", "/build/\n")
        self.program(".ci/run", "exit 0")
        self.package(STEADY)
        self.git("init", "-q")

    def write(self, name, text):
        (self.root / name).write_text(text)

    def program(self, name, command):
        self.write(name, f'#!/bin/sh\ncd "$(dirname "$0")/.."\n{command}\n')
        (self.root / name).chmod(0o755)

    def package(self, build):
        self.program("Tools/package", f'mkdir -p build && {build} && ls "$PWD"/build/*.deb')

    def git(self, *arguments):
        return subprocess.run(["git", "-c", "user.name=N", "-c", "user.email=e@example.invalid", *arguments],
                              cwd=self.root, check=True, capture_output=True, text=True).stdout

    def release(self, *arguments, commit=True):
        if commit:
            self.git("add", "-A")
            self.git("commit", "-q", "--allow-empty", "-m", "All of it")
        return subprocess.run([self.root / "Tools/release", *arguments], capture_output=True, text=True, timeout=60)

    def made(self, folder):
        return sorted(path.name for path in (self.root / "build" / folder).glob("*"))

    def test_makes_archive_package_and_checksums_that_hold(self):
        self.package(TIMED)
        run = self.release()
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.made("dist"), ["SHA256SUMS", "marrowby-unlock-3.1.4.tar.gz", "x.deb"])
        folder = self.root / "build/dist"
        subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=folder, check=True)
        with tarfile.open(folder / "marrowby-unlock-3.1.4.tar.gz") as archive:
            self.assertIn("marrowby-unlock-3.1.4/Tools/release", archive.getnames())
        first = {path.name: path.read_bytes() for path in folder.glob("*")}
        self.assertEqual(self.release(commit=False).returncode, 0)
        self.assertEqual({path.name: path.read_bytes() for path in folder.glob("*")}, first)

    def test_refuses_what_nobody_could_make_again_or_nobody_tested(self):
        cases = [
            ("differ", lambda: self.package(UNSTEADY), True),
            ("The tests failed", lambda: self.program(".ci/run", "exit 3"), True),
            ("no entry with a date for 3.1.4", lambda: self.write("docs/CHANGELOG.md", "## 3.1.4 (unreleased)\n"), True),
            ("Commit or remove first", lambda: self.write("left", "over"), False),
        ]
        for sentence, change, commit in cases:
            with self.subTest(sentence):
                self.git("add", "-A")
                self.git("commit", "-q", "--allow-empty", "-m", "Before")
                before = self.git("rev-parse", "HEAD").strip()
                change()
                run = self.release(commit=commit)
                self.assertNotEqual(run.returncode, 0)
                self.assertIn(sentence, run.stderr)
                self.assertNotIn("SHA256SUMS", self.made("dist"))
                self.git("reset", "-q", "--hard", before)
                self.git("clean", "-qfd")

    def test_a_trial_tests_nothing_and_says_so(self):
        self.program(".ci/run", "exit 3")
        self.write("docs/CHANGELOG.md", "")
        run = self.release("--trial")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("nothing was tested", run.stdout)
        self.assertEqual((self.made("dist"), len(self.made("trial"))), ([], 3))


if __name__ == "__main__":
    unittest.main()
