"""An independent capture program finds the registered filter by its name and captures from the camera of the saved
default: ffmpeg's own build for Windows, under Wine.

Works on the registry of the Wine prefix in which it runs, so it has one of its own (run-in-own-prefix).
Environment: VX_NATIVE_BIN and VX_WINDOWS_BIN name the folders of what was built.
"""

import os
import pathlib
import subprocess
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
NATIVE = pathlib.Path(os.environ.get("VX_NATIVE_BIN", PROJECT / "build/linux-asan/bin"))
WINDOWS = pathlib.Path(os.environ.get("VX_WINDOWS_BIN", PROJECT / "build/windows-release/bin"))
FFMPEG = PROJECT / "build/test-peers/node_modules/@ffmpeg-installer/win32-x64/ffmpeg.exe"
NAME = "Vexa DirectShow Source"
WIDTH, HEIGHT = 320, 240
PATIENCE = 100    # seconds; chosen: far above what a loaded machine needs


def wine(*arguments):
    return subprocess.run(["wine", *map(str, arguments)], capture_output=True, text=True, check=False, timeout=PATIENCE,
                          stdin=subprocess.DEVNULL, errors="replace")


def checksum(number):
    """CRC-16 with the polynomial 0x1021 from 0xFFFF on over the 32 bits of the number."""
    crc = 0xFFFF
    for bit in range(31, -1, -1):
        crc = (crc << 1) ^ (0x1021 if (crc >> 15) ^ (number >> bit) & 1 else 0)
        crc &= 0xFFFF
    return crc


def frame_number(picture):
    """The number that the simulated camera shows in the lower right corner: 4 rows of 12 blocks of 8 x 8 pixels, 32
    bits of number and 16 of check sum. None when the picture is damaged, upside down or mirrored.

    @param picture  rows from the top down, three bytes a pixel
    """
    bits = 0
    for row in range(4):
        for column in range(12):
            x, y = WIDTH - 96 + column * 8 + 4, HEIGHT - 32 + row * 8 + 4
            bits = bits << 1 | (picture[(y * WIDTH + x) * 3] >= 128)
    number = bits >> 16
    return number if bits & 0xFFFF == checksum(number) else None


class FfmpegTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        assert FFMPEG.is_file(), f"{FFMPEG} is missing: run scripts/test-peers"
        cls.camera = subprocess.Popen([NATIVE / "vxsim", "--address", "127.0.0.1", "--format", "BGR8", "--width",
                                       str(WIDTH), "--height", str(HEIGHT), "--fps", "30"], stdout=subprocess.PIPE,
                                      text=True, stdin=subprocess.DEVNULL)
        cls.addClassCleanup(cls.end_camera)
        assert cls.camera.stdout.readline().startswith("ready 127.0.0.1"), "the camera does not start"
        cls.addClassCleanup(wine, "regsvr32", "/s", "/u", WINDOWS / "VxDSSource.dll")
        cls.addClassCleanup(wine, WINDOWS / "vxgrab.exe", "--dll", WINDOWS / "VxDSSource.dll", "--clear-default")
        registered = wine("regsvr32", "/s", WINDOWS / "VxDSSource.dll")
        assert registered.returncode == 0, "the filter cannot be registered"
        saved = wine(WINDOWS / "vxgrab.exe", "--device-id", "127.0.0.1", "--save-default")
        assert saved.returncode == 0, saved.stderr

    @classmethod
    def end_camera(cls):
        cls.camera.terminate()
        cls.camera.wait(30)
        cls.camera.stdout.close()

    def ffmpeg(self, *arguments):
        return wine(FFMPEG, "-hide_banner", "-nostdin", *arguments)

    def test_lists_the_filter_by_its_name(self):
        done = self.ffmpeg("-f", "dshow", "-list_devices", "true", "-i", "dummy")

        self.assertEqual(done.stderr.count(f'"{NAME}"'), 1, done.stderr)
        video = done.stderr.index("DirectShow video devices")
        self.assertLess(video, done.stderr.index(f'"{NAME}"'))
        self.assertGreater(done.stderr.index("DirectShow audio devices"), done.stderr.index(f'"{NAME}"'))

    def test_lists_the_formats(self):
        done = self.ffmpeg("-f", "dshow", "-list_options", "true", "-i", f"video={NAME}")

        self.assertIn('Pin "Output"', done.stderr)
        self.assertIn(f"max s={WIDTH}x{HEIGHT}", done.stderr)

    def test_captures_a_hundred_whole_frames(self):
        with tempfile.TemporaryDirectory() as folder:
            film = pathlib.Path(folder) / "film.raw"

            done = self.ffmpeg("-f", "dshow", "-i", f"video={NAME}", "-frames:v", "100", "-vsync", "passthrough",
                               "-pix_fmt", "bgr24", "-f", "rawvideo", "Z:" + str(film))

            self.assertEqual(done.returncode, 0, done.stderr)
            content = film.read_bytes()
        picture_bytes = WIDTH * HEIGHT * 3
        self.assertEqual(len(content), 100 * picture_bytes)
        numbers = [frame_number(content[i * picture_bytes:(i + 1) * picture_bytes]) for i in range(100)]
        self.assertNotIn(None, numbers, f"damaged frames: {numbers}")
        self.assertEqual(numbers, sorted(set(numbers)), "frames came twice or out of order")

    def test_writes_an_ordinary_film(self):
        with tempfile.TemporaryDirectory() as folder:
            film = pathlib.Path(folder) / "film.avi"

            done = self.ffmpeg("-f", "dshow", "-i", f"video={NAME}", "-frames:v", "100", "Z:" + str(film))

            self.assertEqual(done.returncode, 0, done.stderr)
            read = self.ffmpeg("-i", "Z:" + str(film), "-f", "null", "-")
        self.assertIn(f"{WIDTH}x{HEIGHT}", read.stderr)
        self.assertRegex(read.stderr, r"frame= *100 ")


if __name__ == "__main__":
    vx_unittest.main()
