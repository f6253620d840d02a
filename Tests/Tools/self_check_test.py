# SPDX-License-Identifier: Apache-2.0
"""The program's command line, and its self-check on a private desktop without bus, keyring and models."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

if not shutil.which("Xvfb"):
    print("Skipped: needs Xvfb.")
    sys.exit(0)

for flag, beginning in (("--help", "marrowby-unlock [COMMAND"), ("--version", f"marrowby-unlock {sys.argv[2]}\n")):
    answer = subprocess.run([sys.argv[1], flag], env={}, capture_output=True, text=True, timeout=60)
    assert answer.returncode == 0 and answer.stdout.startswith(beginning), answer

# The man page and the completion name what the program knows.
help_text = subprocess.run([sys.argv[1], "--help"], env={}, capture_output=True, text=True, timeout=60).stdout
known = set(re.findall(r"^  (\S+)", help_text, re.MULTILINE))
resources = pathlib.Path(__file__).parents[2] / "Unlock/Linux/Resources"
manual = (resources / "marrowby-unlock.1").read_text().replace("\\-", "-")
completed = subprocess.run(
    ["bash", "-c", '. "$1"; COMP_CWORD=1 COMP_WORDS=(x ""); _marrowby_unlock; echo "${COMPREPLY[@]}"', "bash",
     str(resources / "marrowby-unlock.bash")], capture_output=True, text=True, timeout=60).stdout.split()
assert len(known) > 8 and known == set(completed), (known, completed)
assert not [word for word in known if word not in manual], manual

with tempfile.TemporaryDirectory() as home:
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "640x480x24", "-nolisten", "tcp",
                               "-noreset"],
                              pass_fds=[write], stderr=subprocess.DEVNULL)
    try:
        os.close(write)
        with os.fdopen(read) as number:
            display = ":" + number.readline().strip()
        nowhere = "unix:path=" + home + "/nowhere"
        environment = {"DISPLAY": display, "HOME": home, "XDG_RUNTIME_DIR": home, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                 "QT_QPA_PLATFORM": "xcb", "DBUS_SESSION_BUS_ADDRESS": nowhere, "DBUS_SYSTEM_BUS_ADDRESS": nowhere}
        unknown = subprocess.run([sys.argv[1], "--no-such-thing"], env=environment, capture_output=True, text=True,
                                 timeout=60)
        assert unknown.returncode == 2 and "knows no “--no-such-thing”" in unknown.stderr, unknown
        # Displays that are gone end in a sentence; one that is there is enough.
        for gone, sentence in (
                ({"DISPLAY": ":7777"}, "graphical session. "),
                ({"DISPLAY": ":7777", "LANGUAGE": "de"}, "Sitzung. Die Anzeige „:7777“ lässt sich nicht öffnen."),
                ({"DISPLAY": ""}, "Neither DISPLAY nor WAYLAND_DISPLAY"),
                ({"DISPLAY": "", "WAYLAND_DISPLAY": "wayland-7"}, "display “wayland-7” doesn’t answer"),
                ({"QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": "wayland-7"}, "“wayland-7” doesn’t answer"),
                ({"QT_QPA_PLATFORM": "xcb", "DISPLAY": ":7777", "WAYLAND_DISPLAY": "wayland-7"}, "graphical session. ")):
            refused = subprocess.run([sys.argv[1]], env={**environment, "QT_QPA_PLATFORM": "", **gone}, capture_output=True,
                                     text=True, timeout=60)
            assert refused.returncode == 1 and sentence in refused.stderr, (gone, refused)
            assert len(refused.stderr.splitlines()) == 1, refused
        environment.update({"QT_QPA_PLATFORM": "", "WAYLAND_DISPLAY": "wayland-7"})

        program = subprocess.Popen([sys.argv[1], "--self-check"], stdout=subprocess.PIPE, text=True,
                                   start_new_session=True, env=environment)
        output, _ = program.communicate(timeout=240)
        print(output, end="")
        lines = output.splitlines()
        assert "ok  Typing: allowed." in lines, "taken for a Wayland session"
        for subject in ("Camera permission", "Permission to type", "Watching keys", "Session", "Models", "Key store",
                        "Owner’s check", "Typing", "Space above the lock screen", "Camera"):
            found = [line for line in lines if line[4:].startswith(subject + ": ")]
            assert len(found) == 1 and found[0].endswith("."), subject
        assert len(lines) == 10, lines
        assert program.returncode == 1, program.returncode
        try:
            os.killpg(program.pid, 0)
            raise AssertionError("Something of it still runs.")
        except ProcessLookupError:
            pass
        left = [str(path) for path in pathlib.Path(home).rglob("*") if path.is_file()]
        assert not left, left
    finally:
        server.terminate()
        server.wait()
