"""Steps that fetch something and cannot: scripts/setup, scripts/third-party and scripts/test-peers end with one line that
names the remedy. Whoever would fetch is replaced by a program that fails."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]


class FetchStepsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for part in ("scripts", "cmake", "Tests/peers"):
            shutil.copytree(PROJECT / part, self.root / part, ignore=shutil.ignore_patterns("__pycache__"))
        self.programs = self.root / "programs"
        self.programs.mkdir()
        for name in ("apt-get", "npm"):
            self.program(name, "echo no route to host; exit 1")
        self.program("df", "echo Avail; echo 100000")

    def program(self, name, text):
        path = self.programs / name
        path.write_text(f"#!/bin/bash\n{text}\n", encoding="utf-8")
        path.chmod(0o755)

    def assert_names_the_remedy(self, script, step, log):
        done = subprocess.run([self.root / "scripts" / script], capture_output=True, text=True, check=False,
                              env={**os.environ, "VX_CACHE_DIR": str(self.root / "cache"),
                                   "PATH": f"{self.programs}:{os.environ['PATH']}"})

        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.splitlines()[-2:],
                         ["no route to host", f"error: {step} failed: check the network and run again; the whole output "
                                              f"is in {self.root}/build/logs/{log}"])

    def test_packages(self):
        self.program("dpkg-query", "exit 1")
        self.program("id", "echo 0")
        self.program("dpkg", "exit 0")
        self.program("apt-cache", "exit 0")

        self.assert_names_the_remedy("setup", "packages", "setup.log")

    def test_index_of_sources(self):
        self.assert_names_the_remedy("third-party", "index of Debian's sources", "third-party/index.log")

    def test_sources(self):
        self.program("apt-get", '[[ " $* " != *" source "* ]] || { echo no route to host; exit 1; }')
        self.program("apt-cache", 'printf "Package: %s\\nVersion: 1-1\\n" libpng1.6 pugixml opencv benchmark')

        self.assert_names_the_remedy("third-party", "sources", "third-party/sources.log")

    def test_programs_from_npm(self):
        self.assert_names_the_remedy("test-peers", "test programs from npm", "test-peers.log")


if __name__ == "__main__":
    vx_unittest.main()
