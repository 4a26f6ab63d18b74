"""scripts/run-demo, which is what ./demo does once everything is built: both cameras, the summary, the files, the
errors, and what is left behind. Works on a copy of the scripts, so that its logs and files are its own, with the
programs as they were built.

Environment (set by the build): VX_NATIVE_BIN, VX_WINDOWS_BIN and, from scripts/own-world, the Wine prefix.
"""

import os
import pathlib
import re
import shutil
import socket
import struct
import subprocess
import tempfile
import time
import unittest
import uuid
import zlib

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
NATIVE = pathlib.Path(os.environ.get("VX_NATIVE_BIN", PROJECT / "build/linux-asan/bin"))
WINDOWS = pathlib.Path(os.environ.get("VX_WINDOWS_BIN", PROJECT / "build/windows-release/bin"))
CAMERA = ("127.0.0.1", 3956)    # fixed by the protocol: where cameras listen
# Fixed: the filter's class (Libraries/VxDSSource/filter/Identifiers.h).
CLASS_KEY = r"HKEY_CLASSES_ROOT\CLSID\{939C9A55-207C-4024-8B29-38D22449994D}"


def read_png(path):
    """@return  width, height and the bytes of all rows with their filter bytes; raises on a broken file"""
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
    width = height = None
    packed, position, kind = b"", 8, b""
    while kind != b"IEND":
        length, kind = struct.unpack_from(">I4s", data, position)
        body = data[position + 8:position + 8 + length]
        check, = struct.unpack_from(">I", data, position + 8 + length)
        assert check == zlib.crc32(kind + body), "broken chunk"
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack_from(">IIBB", body)
            assert (depth, colour) == (8, 2), "not 24 bits a pixel"
        elif kind == b"IDAT":
            packed += body
        position += 12 + length
    rows = zlib.decompress(packed)
    assert len(rows) == height * (1 + width * 3), "rows are missing"
    return width, height, rows


def count_frames(path):
    """@return  how many frames an AVI file with plain bitmaps has"""
    data = path.read_bytes()
    assert data[:4] == b"RIFF" and data[8:12] == b"AVI ", "no AVI"
    assert struct.unpack_from("<I", data, 4)[0] + 8 == len(data), "the file is longer or shorter than it says"
    movie = data.index(b"movi")
    end = movie + struct.unpack_from("<I", data, movie - 4)[0]
    position, frames = movie + 4, 0
    while position + 8 <= end:
        kind, length = struct.unpack_from("<4sI", data, position)
        frames += kind in (b"00db", b"00dc")
        position += 8 + length + length % 2
    return frames


class DemoTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        shutil.copytree(PROJECT / "scripts", self.root / "scripts")
        for preset, built, names in (("linux-release", NATIVE, ["vxsim"]),
                                     ("windows-release", WINDOWS, ["VxDSSource.dll", "vxgrab.exe"])):
            target = self.root / "build" / preset / "bin"
            target.mkdir(parents=True)
            for name in names:
                self.assertTrue((built / name).is_file(), f"{built / name} is not built")
                (target / name).symlink_to(built / name)
        self.mark = uuid.uuid4().hex

    def run_demo(self, camera, seconds="1"):
        return subprocess.run([self.root / "scripts" / "run-demo", camera, seconds], capture_output=True, text=True,
                              check=False, stdin=subprocess.DEVNULL, env={**os.environ, "VX_DEMO_MARK": self.mark})

    def marked_processes(self):
        """Command lines of everything that the demo has started and that still runs."""
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if self.mark.encode() in (folder / "environ").read_bytes():
                    found.append((folder / "cmdline").read_bytes().replace(b"\0", b" ").decode())
            except OSError:
                continue    # it has just ended
        return found

    def assert_leaves_nothing_behind(self):
        deadline = time.monotonic() + 10    # the system ends a Windows program a moment after it is told so
        while self.marked_processes() and time.monotonic() < deadline:
            time.sleep(0.1)
        self.assertEqual(self.marked_processes(), [])
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(CAMERA)    # nobody listens there any more
        query = subprocess.run(["wine", "reg", "query", CLASS_KEY], capture_output=True, check=False)
        self.assertNotEqual(query.returncode, 0, "the filter is still registered")

    def assert_shows(self, done, camera_words):
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        summary = done.stdout[done.stdout.index("One frame's road"):].splitlines()
        self.assertEqual(summary[0], f"One frame's road: {camera_words} -> UDP -> VxDSSource.dll -> DirectShow graph -> "
                                     "files")
        values = dict(re.fullmatch(r"  (\S+(?: \S+)*?) {2,}(\S.*)", line).groups() for line in summary[1:])
        self.assertEqual(list(values), ["camera", "format", "frames delivered", "frames per second", "frames dropped",
                                        "zero frames", "picture", "film"])
        self.assertRegex(values["camera"], r"^127\.0\.0\.1 \(.+\)$")
        size = re.fullmatch(r"RGB24 (\d+) x (\d+)", values["format"])
        pictures = int(values["frames delivered"]) - int(values["zero frames"])
        self.assertGreater(pictures, 0)
        self.assertGreater(float(values["frames per second"]), 0)
        self.assertGreaterEqual(int(values["frames dropped"]), 0)
        width, height, rows = read_png(self.root / values["picture"])
        self.assertEqual((str(width), str(height)), size.groups())
        self.assertGreater(len(set(rows)), 10, "an empty picture")
        self.assertEqual(count_frames(self.root / values["film"]), int(values["frames delivered"]))
        return values

    def assert_is_error(self, done, pattern):
        """The last line says what is wrong and what to do; nothing comes after it."""
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr.splitlines()[-1], f"^error: {pattern}$")
        self.assertNotIn("One frame's road", done.stdout)

    def test_shows_the_simulated_cameras_pictures_again_and_again(self):
        for _ in range(2):
            values = self.assert_shows(self.run_demo("sim"), "simulated camera (vxsim)")
            self.assertEqual(values["format"], "RGB24 640 x 480")
            self.assert_leaves_nothing_behind()

    def test_shows_the_independent_cameras_pictures(self):
        self.assert_shows(self.run_demo("fake"), "fake camera (aravis-tools)")

        self.assert_leaves_nothing_behind()

    def test_says_who_uses_the_cameras_port(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as other:
            other.bind(CAMERA)

            done = self.run_demo("sim")

        self.assert_is_error(done, rf"the camera port 3956/udp is in use \(\S+, process {os.getpid()}\): "
                                   "end that program and run again")
        self.assertEqual(done.stderr.count("\n"), 1)
        self.assert_leaves_nothing_behind()

    def test_says_that_the_camera_did_not_start(self):
        camera = self.root / "build/linux-release/bin/vxsim"
        camera.unlink()
        camera.write_text("#!/bin/sh\necho broken lens >&2\nexit 3\n", encoding="utf-8")
        camera.chmod(0o755)

        done = self.run_demo("sim")

        self.assert_is_error(done, r"the camera \(vxsim\) did not start: see \S+/demo-camera\.log")
        self.assertIn("broken lens\n", done.stderr)
        self.assert_leaves_nothing_behind()

    def test_says_that_the_filter_cannot_be_registered(self):
        module = self.root / "build/windows-release/bin/VxDSSource.dll"
        module.unlink()
        module.write_bytes(b"no module")

        done = self.run_demo("sim")

        self.assert_is_error(done, r"the filter could not be registered: see \S+/demo-regsvr32\.log")
        self.assert_leaves_nothing_behind()

    def test_says_that_capturing_failed(self):
        self.deaf_camera()

        done = self.run_demo("sim")

        self.assert_is_error(done, r"capturing failed; the camera's output is in \S+/demo-camera\.log")
        self.assertIn("no connection to camera '127.0.0.1'", done.stderr)
        self.assertFalse((self.root / "out/demo/frame.png").exists())
        self.assert_leaves_nothing_behind()

    def deaf_camera(self):
        """A camera that listens and never answers."""
        camera = self.root / "build/linux-release/bin/vxsim"
        camera.unlink()
        camera.write_text("#!/usr/bin/env python3\nimport socket, time\n"
                          "deaf = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
                          f"deaf.bind({CAMERA})\ntime.sleep(1000)\n", encoding="utf-8")
        camera.chmod(0o755)

    def test_ends_everything_when_it_is_ended(self):
        process = subprocess.Popen([self.root / "scripts" / "run-demo", "sim", "60"], stdout=subprocess.PIPE, text=True,
                                   stdin=subprocess.DEVNULL, env={**os.environ, "VX_DEMO_MARK": self.mark})
        self.addCleanup(process.stdout.close)
        for line in process.stdout:
            if line.startswith("Capturing"):
                break
        # The camera, the script and its capture: the last one starts after the line.
        deadline = time.monotonic() + 30
        while len(self.marked_processes()) <= 2 and time.monotonic() < deadline:
            time.sleep(0.1)
        seen = self.marked_processes()

        process.terminate()

        self.assertEqual(process.wait(60), 143)
        self.assertGreater(len(seen), 2, "they cannot be seen")
        self.assert_leaves_nothing_behind()


if __name__ == "__main__":
    vx_unittest.main()
