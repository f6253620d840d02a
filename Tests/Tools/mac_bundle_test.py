"""The application bundle of the Mac, as far as it is text: property lists, build commands, icon."""

import pathlib
import plistlib
import re
import struct
import subprocess
import tempfile
import unittest
import zlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
RESOURCES = ROOT / "Unlock/macOS/Resources"
CLANG = "/usr/bin/clang++-19"
# Stands for Apple's tools, so that CMake believes to be on a Mac.
FAKE_MAC = ["CMAKE_SYSTEM_NAME=Darwin", f"CMAKE_CXX_COMPILER={CLANG}", f"CMAKE_OBJCXX_COMPILER={CLANG}",
            "CMAKE_CXX_COMPILER_WORKS=1", "CMAKE_OBJCXX_COMPILER_WORKS=1", "CMAKE_INSTALL_NAME_TOOL=/bin/true",
            "CMAKE_HAVE_LIBC_PTHREAD=1", "CMAKE_OSX_DEPLOYMENT_TARGET=14.0", "CMAKE_OSX_ARCHITECTURES=arm64",
            "CMAKE_OSX_SYSROOT=/"]


def output(*command):
    run = subprocess.run(command, capture_output=True, text=True)
    if run.returncode != 0:
        raise AssertionError(f"{command}: {run.stdout}{run.stderr}")
    return run.stdout


def pixels(png):
    """Rows of RGBA of a picture whose rows are not filtered."""
    width, height = struct.unpack(">II", png[16:24])
    begin = png.index(b"IDAT")
    length = struct.unpack(">I", png[begin - 4:begin])[0]
    data = zlib.decompress(png[begin + 4:begin + 4 + length])
    stride = 1 + 4 * width
    return [[tuple(data[y * stride + 1 + 4 * x:][:4]) for x in range(width)] for y in range(height)]


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
        self.assertEqual(info["CFBundleIdentifier"], "app.quenby.unlock")
        self.assertEqual(info["CFBundlePackageType"], "APPL")
        self.assertEqual(info["CFBundleExecutable"], "Marrowby Unlock")
        self.assertIs(info["LSUIElement"], True)
        self.assertRegex(info["NSCameraUsageDescription"], r"^Marrowby Unlock .*\.$")
        for key in ("CFBundleVersion", "CFBundleShortVersionString", "LSMinimumSystemVersion"):
            self.assertRegex(info[key], r"^\d+(\.\d+){1,2}$")

    def test_may_use_the_camera_and_is_not_sandboxed(self):
        entitlements = plistlib.loads((RESOURCES / "MarrowbyUnlock.entitlements").read_bytes())
        self.assertEqual(entitlements, {"com.apple.security.device.camera": True})

    def test_signs_what_is_complete_and_packs_what_is_signed(self):
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

    def test_draws_an_icon_of_a_keyhole_in_nine_dots(self):
        folder = self.folder / "icon"
        output(ROOT / "Tools/draw-icon", folder, "64")
        self.assertEqual(sorted(path.name for path in folder.iterdir()),
                         ["icon_16x16.png", "icon_16x16@2x.png", "icon_32x32.png", "icon_32x32@2x.png"])
        rows = pixels((folder / "icon_32x32@2x.png").read_bytes())
        self.assertEqual(rows[0][0][3], 0)
        self.assertEqual(rows[32][32], (245, 247, 255, 255))
        dots = sum(1 for row in rows for red, green, blue, alpha in row if green > 190 > red)
        self.assertTrue(9 * 8 < dots < 9 * 20, dots)


if __name__ == "__main__":
    unittest.main()
