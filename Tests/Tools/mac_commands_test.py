# SPDX-License-Identifier: Apache-2.0
"""./run and ./test as on a Mac, with stand-ins for its tools and Homebrew's."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMANDS = ["run", "test", "bench", "Tools/on-a-mac", "Tools/build", "Tools/ensure-packages", "Tools/packages.txt"]
# Tools of both systems, without GNU tools that macOS lacks.
SHARED = ["bash", "env", "dirname", "mkdir", "cat", "rm", "touch", "awk", "grep"]
APP = "build/macos/Unlock/macOS/Marrowby Unlock.app"
ALL = ["cmake", "ninja", "openssl@3", "nlohmann-json", "googletest"]
# Newer than the bash 3.2 of macOS.
NEW_BASH = re.compile(r"\b(mapfile|readarray|coproc)\b|declare -A|local -n|wait -n|\[ -v |\|&|&>>|\$\{\w+(,,?|\^\^?|@\w)\}")

CONFIGURE, TEST = "cmake --preset macos", "ctest --preset macos --parallel 2 --progress"
OPEN = f"open {APP}"


def build(target):
    return f"ninja -C build/macos {target}"


class MacCommands(unittest.TestCase):
    def play(self, command, state):
        """The exit status, the output, and the stand-ins that were called."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            for path in COMMANDS:
                (folder / path).parent.mkdir(exist_ok=True)
                shutil.copy(ROOT / path, folder / path)
            tools = folder / "bin"
            tools.mkdir()
            for tool in SHARED:
                (tools / tool).symlink_to(shutil.which(tool))
            for package in state.get("packages", ALL):
                (folder / "brew/opt" / package).mkdir(parents=True)
            log = folder / "calls"
            log.touch()
            fails = state.get("fails", "nothing")

            def stand_in(tool, text):
                (tools / tool).write_text(f"#!/bin/sh\n{text}\n")
                (tools / tool).chmod(0o755)
            stand_in("uname", f'[ "$1" = -m ] && echo {state.get("processor", "arm64")} || echo Darwin')
            stand_in("xcode-select", f"exit {0 if state.get('xcode', True) else 2}")
            stand_in("clang++", f"echo {state.get('compiler', '17.0.0')}")
            stand_in("pgrep", f"exit {0 if state.get('running') else 1}")
            if state.get("brew", True):
                stand_in("brew", f"echo {folder}/brew")
            for tool in ("cmake", "ninja", "ctest", "open"):
                work = {"cmake": "echo configuring; touch build/macos/build.ninja",
                        "ninja": "echo '[1/1] Linking'; mkdir -p "
                                 + " ".join(f"'{APP}/Contents/Resources/{model}.mlmodelc'"
                                            for model in state.get("models", ["SFace", "MiniFASNet"]))}
                if tool not in state.get("absent", []):
                    stand_in(tool, f'echo "{tool} $*" >>{log}; {work.get(tool, ":")}; [ {fails} != {tool} ]')
            run = subprocess.run([folder / command[0], *command[1:]], cwd=folder, capture_output=True, text=True,
                                 env={"PATH": str(tools), "HOME": str(folder)})
            return run.returncode == 0, run.stdout + run.stderr, log.read_text().splitlines()

    def test_build_and_start_or_name_what_is_missing(self):
        everything = [CONFIGURE, build("MarrowbyUnlock"), OPEN]
        cases = [
            ("opens the application", ["run"], {}, True, "Opening", everything),
            ("without models", ["run"], {"models": ["SFace"]}, True, "MiniFASNet.mlmodelc is missing", everything),
            ("builds and runs all tests", ["test"], {}, True, "Linking", [CONFIGURE, build("all"), TEST]),
            ("tests fail", ["test"], {"fails": "ctest"}, False, "", [CONFIGURE, build("all"), TEST]),
            ("can't configure", ["run"], {"fails": "cmake"}, False, "configuring", [CONFIGURE]),
            ("can't build", ["run"], {"fails": "ninja"}, False, "Linking", everything[:2]),
            ("runs already", ["run"], {"running": True}, False, "Quit it", []),
            ("no Apple silicon", ["run"], {"processor": "x86_64"}, False, "Apple silicon", []),
            ("no compiler", ["test"], {"xcode": False}, False, "xcode-select --install", []),
            ("old compiler", ["test"], {"compiler": "15.0.0"}, False, "This needs Xcode 16", []),
            ("no Homebrew", ["run"], {"brew": False}, False, "https://brew.sh", []),
            ("bare Homebrew", ["run"], {"packages": [], "absent": ["cmake", "ninja"]}, False,
             "brew install " + " ".join(ALL), []),
            ("tools from elsewhere", ["run"], {"packages": ALL[2:4]}, False, "brew install googletest\n", []),
            ("what is Linux's", ["bench"], {}, False, "This is for Linux", []),
        ]
        for name, command, state, succeeds, said, called in cases:
            with self.subTest(name):
                succeeded, output, calls = self.play(command, state)
                self.assertEqual(succeeded, succeeds, output)
                self.assertIn(said, output)
                self.assertEqual(calls, called)

    def test_keep_to_the_bash_of_macos(self):
        for path in ("run", "test", "Tools/on-a-mac", "Tools/build"):
            self.assertNotRegex((ROOT / path).read_text(), NEW_BASH, path)


if __name__ == "__main__":
    unittest.main()
