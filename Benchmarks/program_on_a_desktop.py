# SPDX-License-Identifier: Apache-2.0
"""The program itself on a private desktop: a real X server, session bus, keyring and screen locker; only the
cameras, the account and who confirms the owner are made up. Sets it up through its windows with the keyboard
alone, unlocks, ends it, starts it again, passes the owner check, unlocks again, and kills it while it saves.

program_on_a_desktop.py PROGRAM ON_STAGE [KILLS]

ON_STAGE is the program with made-up cameras; PROGRAM, the shipped one, only waits on what the former saved.
"""

import os
import queue
import random
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

PASSWORD = "Corr3ct-HoRse_b@ttery!"
ROOT = Path(__file__).resolve().parent.parent
MODELS = ROOT / "Models"
# Seconds.
IDLE = 60
TOOLS = ["Xvfb", "dbus-daemon", "gnome-keyring-daemon", "i3lock", "xdotool"]

CHECKER = '#!/bin/sh\nsleep 0.2\ntr -d "\\000" | cmp -s - "{folder}/password"\n'
RULES = "auth required pam_exec.so expose_authtok quiet /bin/sh {folder}/checker\naccount required pam_permit.so\n"


def check(holds, sentence):
    if not holds:
        raise AssertionError(sentence)


class Desktop:
    def __init__(self, folder):
        self.folder, self.children = folder, []
        for name in ("home", "run", "services"):
            (folder / name).mkdir(mode=0o700)
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("XDG_", "DBUS_", "QT_")) and name != "WAYLAND_DISPLAY"}
        self.environment |= {"HOME": str(folder / "home"), "XDG_RUNTIME_DIR": str(folder / "run"),
                             "MARROWBY_MODELS": str(folder / "models"), "LC_ALL": "C.UTF-8"}
        # The shipped program refuses the rehearsal's models by their name.
        shutil.copytree(MODELS, folder / "models")
        pack = folder / "models/pack.json"
        pack.write_text(pack.read_text().replace('"name": "rehearsal"', '"name": "measured"'))
        reading, writing = os.pipe()
        self.start(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x800x24", "-nolisten", "tcp",
                    "-noreset"], pass_fds=[writing])
        self.environment["DISPLAY"] = ":" + os.read(reading, 16).decode().strip()
        for which in ("SESSION", "SYSTEM"):
            bus = self.start(["dbus-daemon", "--session", "--nofork", "--print-address=1"], stdout=subprocess.PIPE)
            self.environment[f"DBUS_{which}_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        keyring = self.start(["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets"],
                             stdin=subprocess.PIPE)
        keyring.stdin.write(b"keyring")
        keyring.stdin.close()
        (folder / "password").write_text(PASSWORD)
        (folder / "checker").write_text(CHECKER.format(folder=folder))
        for service in ("i3lock", "other"):
            (folder / "services" / service).write_text(RULES.format(folder=folder))
        time.sleep(1)

    def start(self, command, **options):
        child = subprocess.Popen(command, env=self.environment, stderr=subprocess.DEVNULL,
                                 **{"stdout": subprocess.DEVNULL} | options)
        self.children.append(child)
        return child

    def lock(self):
        wrapper = {"LD_PRELOAD": "libpam_wrapper.so", "PAM_WRAPPER": "1",
                   "PAM_WRAPPER_SERVICE_DIR": str(self.folder / "services")}
        locker = subprocess.Popen(["i3lock", "-n", "-c", "204060"], env=self.environment | wrapper,
                                  stderr=subprocess.DEVNULL)
        self.children.append(locker)
        return locker

    def keys(self, *keys, pause=0.25):
        for key in keys:
            time.sleep(pause)
            subprocess.run(["xdotool", "key", key], env=self.environment, check=True)

    def write(self, text):
        time.sleep(0.4)
        subprocess.run(["xdotool", "type", "--delay", "30", text], env=self.environment, check=True)

    def come_back(self):
        """Touches the pointer after a quiet moment."""
        time.sleep(4)
        at = [str(random.randrange(100, 700)) for _ in range(2)]
        subprocess.run(["xdotool", "mousemove", *at], env=self.environment, check=True)

    def end(self):
        for child in reversed(self.children):
            child.kill()
            child.wait()


class Program:
    def __init__(self, desktop, path, *arguments):
        self.desktop = desktop
        place = desktop.folder / "journal"
        place.unlink(missing_ok=True)
        self.journal = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.journal.bind(str(place))
        self.process = subprocess.Popen([path, *arguments], env=desktop.environment | {"MARROWBY_JOURNAL": str(place)},
                                        text=True, bufsize=1, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        desktop.children.append(self.process)
        self.lines, self.seen = queue.Queue(), []
        threading.Thread(target=self.read, daemon=True).start()
        threading.Thread(target=self.follow, daemon=True).start()
        self.wait("launched")
        self.order("password " + PASSWORD)

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line.strip())

    def follow(self):
        """The events of its journal, as lines."""
        while True:
            for field in self.journal.recv(4096).decode().splitlines():
                if field.startswith("MARROWBY_EVENT="):
                    self.lines.put("event: " + field.partition("=")[2])

    def order(self, order):
        self.process.stdin.write(order + "\n")
        self.process.stdin.flush()
        self.wait("done: ")

    def wait(self, beginning, limit=20):
        end = time.monotonic() + limit
        while True:
            try:
                line = self.lines.get(timeout=max(0.01, end - time.monotonic()))
            except queue.Empty:
                raise AssertionError(f"Waited in vain for {beginning} after {self.seen[-5:]}.") from None
            self.seen.append(line)
            if line.startswith(beginning):
                return line

    def press(self, *keys, page):
        self.desktop.keys(*keys)
        self.wait("page: " + page)

    def open_settings(self, path):
        second = subprocess.run([path], env=self.desktop.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, timeout=20)
        check(second.returncode == 0, "The second start did not hand over.")
        self.wait("page: Marrowby Unlock")
        self.wait("focus: Unlock with your face")

    def focus(self, name):
        """Presses Tab until the control has the focus; what it is called, and whether it is on."""
        for _ in range(40):
            self.desktop.keys("Tab", pause=0.05)
            line = self.wait("focus: ")
            if line.startswith("focus: " + name):
                return line
        raise AssertionError(f"Tab does not lead to {name}.")

    def confirm_owner(self, path):
        self.open_settings(path)
        self.focus("Confirm Password")
        self.desktop.keys("space")
        self.wait("focus: ")

    def end(self):
        self.process.terminate()
        check(self.process.wait(10) == 0, "The program did not end in order.")


def wake_ups(process):
    """Of all its threads together."""
    total = 0
    for path in Path(f"/proc/{process.pid}/task").glob("*/status"):
        total += sum(int(line.split()[1]) for line in path.read_text().splitlines()
                     if line.startswith("voluntary_ctxt_switches:"))
    return total


def memory(process):
    """Resident, and of that its own alone, in MB."""
    rollup = dict(line.split()[:2] for line in Path(f"/proc/{process.pid}/smaps_rollup").read_text().splitlines()[1:])
    return tuple(int(rollup[name]) / 1000 for name in ("Rss:", "Anonymous:"))


def waits(desktop, program):
    """The shipped program, set up, while the screen is unlocked."""
    models = desktop.folder / "home/.local/share/marrowby-unlock/models"
    models.parent.mkdir(parents=True, exist_ok=True)
    models.symlink_to(desktop.folder / "models")
    process = desktop.start([program, "--at-login"])
    time.sleep(10)
    before = wake_ups(process)
    time.sleep(IDLE)
    woken = wake_ups(process) - before
    resident, own = memory(process)
    print(f"waiting, set up: {resident:.0f} MB resident, {own:.0f} MB of them its own; "
          f"{woken} wake-ups of its threads in {IDLE} s")
    check(process.poll() is None, "It has ended.")
    check(resident < 60, "It takes more memory than it may.")
    process.terminate()
    check(process.wait(10) == 0, "It did not end in order.")


def set_up(program):
    program.order("seat 4")
    program.wait("page: Welcome to Marrowby Unlock")
    program.press("Return", page="What it keeps")
    program.press("space", "Return", page="Allow the camera")
    program.press("Return", page="Allow typing")
    program.press("Return", page="Save your face")
    program.wait("page: Name this look", limit=240)
    program.desktop.write("Ada")
    program.press("Return", page="Save your login password")
    program.desktop.write(PASSWORD)
    program.press("Return", page="When should it look")
    program.press("Return", page="That’s it")
    program.desktop.keys("Return")


def unlocks(desktop, program):
    locker = desktop.lock()
    program.wait("event: locked")
    program.order("scene live-normal 4")
    # On a busy machine a look may end before it has seen enough.
    for _ in range(4):
        desktop.come_back()
        if program.wait(("event: unlocked", "event: failed")) == "event: unlocked":
            break
    check(locker.wait(5) == 0, "The locker did not end by the password.")


def stays_locked(desktop, program):
    locker = desktop.lock()
    for _ in range(2):
        desktop.come_back()
    time.sleep(2)
    check(locker.poll() is None, "It unlocked before the owner was asked.")
    while not program.lines.empty():
        program.seen.append(program.lines.get())
    check(not any("Looking" in line or "Typed" in line for line in program.seen),
          "It looked before the owner was asked.")
    locker.kill()
    locker.wait()
    time.sleep(1)


def survives_kills(desktop, path, count):
    """Killed while it writes settings and faces, it finds all that was saved."""
    chance = random.Random(4711)
    data = desktop.folder / "home/.local/share/Marrowby Unlock"
    for _ in range(count):
        program = Program(desktop, path, "--at-login")
        program.confirm_owner(path)
        program.focus("Ada")
        switching = subprocess.Popen(["xdotool", "key", "--delay", "20", *["space"] * 40],
                                     env=desktop.environment)
        time.sleep(chance.uniform(0, 1.2))
        program.process.kill()
        program.process.wait()
        switching.wait()
        check((data / "Faces.sealed").stat().st_size > 40000, "The faces are gone.")
        check((data / "Password.sealed").stat().st_size > 40, "The password is gone.")


def play(desktop, shipped, path, kills):
    program = Program(desktop, path)
    set_up(program)
    unlocks(desktop, program)
    program.end()
    print("set up, unlocked, ended")

    waits(desktop, shipped)
    program = Program(desktop, path, "--at-login")
    stays_locked(desktop, program)
    program.confirm_owner(path)
    unlocks(desktop, program)
    program.end()
    print("unlocked again, after the owner check only")

    survives_kills(desktop, path, kills)
    program = Program(desktop, path, "--at-login")
    program.confirm_owner(path)
    if program.focus("Ada").endswith("(off)"):
        desktop.keys("space")
    unlocks(desktop, program)
    program.end()
    print(f"killed {kills} times, and unlocked")


def main():
    shipped, path, kills = *sys.argv[1:3], int(sys.argv[3]) if len(sys.argv) > 3 else 3
    missing = [tool for tool in TOOLS if shutil.which(tool) is None]
    if missing:
        print("Skipped: needs", ", ".join(missing))
        return
    with tempfile.TemporaryDirectory(prefix="marrowby-program-") as folder:
        desktop = Desktop(Path(folder))
        try:
            play(desktop, shipped, path, kills)
        finally:
            desktop.end()


main()
