# SPDX-License-Identifier: Apache-2.0
"""The Mac's property lists, build commands, sources and tests, checked without a Mac."""

import json
import pathlib
import plistlib
import re
import runpy
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
RESOURCES = ROOT / "Unlock/macOS/Resources"
CLANG = "/usr/bin/clang++-19"
# Stand-ins for Apple's tools, so that CMake detects a Mac.
FAKE_MAC = ["CMAKE_SYSTEM_NAME=Darwin", f"CMAKE_CXX_COMPILER={CLANG}", f"CMAKE_OBJCXX_COMPILER={CLANG}",
            "CMAKE_CXX_COMPILER_WORKS=1", "CMAKE_OBJCXX_COMPILER_WORKS=1", "CMAKE_INSTALL_NAME_TOOL=/bin/true",
            "CMAKE_HAVE_LIBC_PTHREAD=1", "CMAKE_OSX_DEPLOYMENT_TARGET=14.0", "CMAKE_OSX_ARCHITECTURES=arm64",
            "CMAKE_OSX_SYSROOT=/", f"GTest_DIR={next(pathlib.Path('/usr/lib').glob('*/cmake/GTest'))}"]


def output(*command):
    run = subprocess.run(command, capture_output=True, text=True)
    if run.returncode != 0:
        raise AssertionError(f"{command}: {run.stdout}{run.stderr}")
    return run.stdout


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.place = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.place.name)
        for name in ("SFace", "MiniFASNet"):
            (cls.folder / "models" / f"{name}.mlmodelc").mkdir(parents=True)
        output("cmake", "-S", ROOT, "-B", cls.folder / "build", "-G", "Ninja",
               *(f"-D{setting}" for setting in FAKE_MAC), f"-DMARROWBY_MAC_MODELS={cls.folder / 'models'}")
        cls.commands = output("ninja", "-C", cls.folder / "build", "-t", "commands", "MarrowbyUnlock", "dmg")

    @classmethod
    def tearDownClass(cls):
        cls.place.cleanup()

    def test_says_what_the_system_asks_of_an_agent_application_with_a_camera(self):
        path = self.folder / "build/Unlock/macOS/Marrowby Unlock.app/Contents/Info.plist"
        text = path.read_text()
        info = plistlib.loads(text.encode())
        self.assertNotIn("${", text)
        keys = re.findall(r"<key>(.*?)</key>", text)
        self.assertEqual(len(keys), len(set(keys)), "a key that stands twice hides the first")
        version = re.search(r"VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text().split("project(")[1])[1]
        self.assertEqual([info["CFBundleShortVersionString"], info["CFBundleVersion"]], [version] * 2)
        self.assertIs(info["LSUIElement"], True)
        self.assertRegex(info["NSCameraUsageDescription"], r"^Marrowby Unlock .*\.$")

    def test_may_use_the_camera_and_is_not_sandboxed(self):
        entitlements = plistlib.loads((RESOURCES / "MarrowbyUnlock.entitlements").read_bytes())
        self.assertEqual(entitlements, {"com.apple.security.device.camera": True})

    def test_signs_what_is_complete_and_packs_what_is_signed(self):
        for name in ("LICENSE", "NOTICE"):
            self.assertIn(f"Resources/{name}", self.commands)
        steps = [r"SFace\.mlmodelc", r"MiniFASNet\.mlmodelc", "plutil -lint",
                 r"codesign --force .*--options runtime .*MarrowbyUnlock\.entitlements .*--sign -",
                 "codesign --verify", "ditto", "hdiutil create"]
        places = []
        for step in steps:
            found = re.search(step, self.commands)
            self.assertTrue(found, step)
            places.append(found.start())
        self.assertEqual(places, sorted(places))
        self.assertRegex(self.commands, r"libcrypto\.a\b")

    def test_takes_a_model_that_comes_after_the_configuration(self):
        model = self.folder / "models/SFace.mlmodelc"
        for changes in (model.rmdir, model.mkdir):
            changes()
            # The build reruns this step first by itself.
            output("ninja", "-C", self.folder / "build", "build.ninja")
            commands = output("ninja", "-C", self.folder / "build", "-t", "commands", "MarrowbyUnlock")
            self.assertEqual("Resources/SFace.mlmodelc" in commands, model.is_dir())

    def test_builds_the_tests_of_the_core_and_what_the_type_check_sees(self):
        built = {str(pathlib.Path(entry["file"]).relative_to(ROOT))
                 for entry in json.loads((self.folder / "build/compile_commands.json").read_text())}
        tests = [*ROOT.glob("Tests/UnlockCore/*/*.cpp"), *ROOT.glob("Tests/Kit/*.cpp"), *ROOT.glob("Tests/Unlock/*.cpp"),
                 *ROOT.glob("Tests/Tools/*.cpp"), *ROOT.glob("Tests/Platforms/macOS/*.mm")]
        self.assertGreater(len(tests), 50)
        self.assertEqual({str(path.relative_to(ROOT)) for path in tests} - built, set())
        names = runpy.run_path(str(ROOT / "Tools/check-mac"))
        patterns = names["LINKED"] + names["TESTS"]
        checked = {str(path.relative_to(ROOT)) for pattern in patterns for path in ROOT.glob(pattern)}
        self.assertEqual(built, checked)


if __name__ == "__main__":
    unittest.main()
