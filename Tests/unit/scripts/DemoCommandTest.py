"""./demo: its arguments, the order of its steps, and what it says when something is missing. The steps themselves are
replaced by programs that tell that they were called; Tests/system/DemoTest.py runs the real last one."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]


class DemoCommandTest(unittest.TestCase):
    # cmake -S ROOT --preset NAME --fresh
    CONFIGURE = '[ "$3" != --preset ] || { mkdir -p "build/$4"; touch "build/$4/build.ninja"; }'

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "scripts").mkdir()
        shutil.copy(PROJECT / "demo", self.root)
        for name in ("lib.sh", "setup"):
            shutil.copy(PROJECT / "scripts" / name, self.root / "scripts")
        shutil.copy(PROJECT / "CMakePresets.json", self.root)
        (self.root / "cmake").mkdir()
        shutil.copy(PROJECT / "cmake/mingw-w64.cmake", self.root / "cmake")
        (self.root / "build").mkdir()
        (self.root / "build/third-party").symlink_to("nowhere")
        self.programs = self.root / "programs"
        self.programs.mkdir()
        for name in ("third-party", "own-world"):
            self.step(self.root / "scripts" / name)
        self.step(self.programs / "cmake", self.CONFIGURE)
        # Everything is installed, in this story.
        self.step(self.programs / "dpkg-query", 'shift 3; printf "%s installed\\n" "$@"', is_told=False)

    def step(self, path, text="", is_told=True):
        """A program that writes down how it was called."""
        told = f'echo "{path.name} $*" >>"{self.root}/steps"\n' if is_told else ""
        path.write_text(f"#!/bin/bash\n{told}{text}\n", encoding="utf-8")
        path.chmod(0o755)

    def run_demo(self, *arguments):
        return subprocess.run([self.root / "demo", *arguments], capture_output=True, text=True, check=False,
                              cwd=self.root, env={**os.environ, "PATH": f"{self.programs}:{os.environ['PATH']}"})

    def steps(self):
        path = self.root / "steps"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else []

    def assert_is_refused(self, done, message):
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"error: {message}\n"))
        self.assertEqual(self.steps(), [], "it has begun all the same")

    def test_refuses_another_camera(self):
        self.assert_is_refused(self.run_demo("--camera", "real"), "--camera is 'sim' or 'fake', not 'real'")

    def test_refuses_a_camera_without_a_name(self):
        self.assert_is_refused(self.run_demo("--camera"), "--camera is 'sim' or 'fake', not ''")

    def test_refuses_seconds_that_are_no_number_from_1_to_60(self):
        for text in ("0", "61", "-1", "1.5", "five", "", "007", "1000"):
            with self.subTest(text):
                self.assert_is_refused(self.run_demo("--seconds", text),
                                       f"--seconds is a number from 1 to 60, not '{text}'")

    def test_refuses_seconds_without_a_number(self):
        self.assert_is_refused(self.run_demo("--seconds"), "--seconds is a number from 1 to 60, not ''")

    def test_shows_how_it_is_used_when_it_does_not_know_an_argument(self):
        done = self.run_demo("--fast")

        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertTrue(done.stderr.startswith("Usage: ./demo "))
        self.assertEqual(self.steps(), [])

    def test_helps(self):
        done = self.run_demo("--help")

        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("--camera fake", done.stdout)
        self.assertEqual(self.steps(), [])

    def test_builds_what_it_needs_and_captures(self):
        for arguments, told in (([], "sim 5"), (["--camera", "fake", "--seconds", "60"], "fake 60"),
                                (["--seconds", "1"], "sim 1")):
            with self.subTest(told):
                (self.root / "steps").unlink(missing_ok=True)

                done = self.run_demo(*arguments)

                self.assertEqual((done.returncode, done.stderr), (0, ""))
                steps = self.steps()
                self.assertTrue(steps[0].startswith("third-party "), steps)
                self.assertEqual(steps[-1], f"own-world --or-host-network {self.root}/scripts/run-demo {told}")
                built = [step.rsplit("--target ", 1)[1] for step in steps if "--target" in step]
                self.assertEqual(built, ["vxsim", "VxDSSource vxgrab"])

    def test_ends_as_the_capture_ends(self):
        self.step(self.root / "scripts/own-world", "exit 7")

        self.assertEqual(self.run_demo().returncode, 7)

    def test_stops_where_packages_are_missing_and_nobody_may_install_them(self):
        self.step(self.programs / "dpkg-query", "exit 1", is_told=False)
        self.step(self.programs / "id", "echo 1000", is_told=False)

        done = self.run_demo()

        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"^error: packages are missing and only root can install them: "
                                      r"run 'sudo apt-get install .*\bwine\b.*'\n$")
        self.assertEqual(self.steps(), [])

    def test_names_only_what_is_missing(self):
        self.step(self.programs / "dpkg-query", 'shift 3; printf "%s installed\\n" "$@" | grep -v "^tshark "',
                  is_told=False)
        self.step(self.programs / "id", "echo 1000", is_told=False)

        self.assertTrue(self.run_demo().stderr.endswith("run 'sudo apt-get install tshark'\n"))

    def test_stops_where_the_disk_is_full(self):
        self.step(self.programs / "df", "echo Avail; echo 100", is_told=False)

        done = self.run_demo()

        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, f"error: only 100 MiB are free under {self.root}/build, 2 GiB are needed: make "
                                      "room and run again\n")

    def run_again_with_little_room(self, plan):
        """@param plan  what the build says when it is asked what it would do"""
        self.step(self.programs / "df", "echo Avail; echo 100000", is_told=False)
        self.assertEqual(self.run_demo().returncode, 0)
        self.step(self.programs / "df", "echo Avail; echo 1900", is_told=False)
        self.step(self.programs / "ninja", f'echo "{plan}"', is_told=False)
        (self.root / "steps").unlink()
        return self.run_demo()

    def test_needs_no_room_where_everything_is_built(self):
        for plan in ("ninja: no work to do.", "[1/1] Checking who includes whom"):
            with self.subTest(plan):
                done = self.run_again_with_little_room(plan)

                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertTrue(self.steps()[-1].startswith("own-world "))

    def test_needs_room_where_something_has_changed(self):
        for plan in ("[1/2] Checking who includes whom\n[2/2] Linking vxsim", "[0/1] Re-running CMake..."):
            with self.subTest(plan):
                done = self.run_again_with_little_room(plan)

                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertRegex(done.stderr, "^error: only 1900 MiB are free under ")

    def test_shows_the_end_of_a_build_that_fails(self):
        self.step(self.programs / "cmake", self.CONFIGURE + "\n[ $1 != --build ] || { echo broken code; exit 1; }")

        done = self.run_demo()

        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, f"broken code\nerror: build linux-release failed; the whole output is in "
                                      f"{self.root}/build/logs/build-linux-release.log\n")


if __name__ == "__main__":
    vx_unittest.main()
