"""scripts/own-world: which network a world has. What it would start is replaced by programs that tell."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]
REFUSES = "exit 1"
ALLOWS = 'while [ "${1#--}" != "$1" ]; do shift; done; exec "$@"'


class OwnWorldTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "scripts").mkdir()
        for name in ("lib.sh", "own-world"):
            shutil.copy(PROJECT / "scripts" / name, self.root / "scripts")
        self.programs = self.root / "programs"
        self.programs.mkdir()
        for name in ("wine", "Xvfb", "ip"):
            self.program(name, "exit 0")
        # The last thing that happens outside of the world: it becomes what is named here.
        self.program("setpriv", 'echo "world $VX_WORLD: $*"')

    def program(self, name, text):
        path = self.programs / name
        path.write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
        path.chmod(0o755)

    def run_shell(self, text, unshare, **environment):
        self.program("unshare", unshare)
        return subprocess.run(["bash", "-c", text], capture_output=True, text=True, check=False, cwd=self.root,
                              env={**os.environ, "PATH": f"{self.programs}:{os.environ['PATH']}",
                                   "VX_HOST_NETWORK": "", **environment})

    def own_world(self, *arguments, unshare, **environment):
        return self.run_shell(" ".join(["scripts/own-world", *arguments]), unshare, **environment)

    def assert_is_one_line_error(self, done, *texts):
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        self.assertTrue(done.stderr.startswith("error: "), done.stderr)
        for text in texts:
            self.assertIn(text, done.stderr)

    def test_has_a_network_of_its_own_where_it_can(self):
        for options in ([], ["--or-host-network"]):
            done = self.own_world(*options, "true", unshare=ALLOWS)

            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertRegex(done.stdout, r"^world own: --pdeathsig KILL unshare --net .* --inside true\n$")

    def test_stops_with_one_line_that_says_what_to_do_where_it_cannot(self):
        done = self.own_world("true", unshare=REFUSES)

        self.assert_is_one_line_error(done, "no network of our own", "run as root", "user namespaces")

    def test_falls_back_to_the_machines_network_only_when_told_that_it_may(self):
        done = self.own_world("--or-host-network", "true", unshare=REFUSES)

        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout, r"^world host: --pdeathsig TERM \S+own-world --inside true\n$")

    def test_stays_on_the_machines_network_on_demand_where_it_may(self):
        done = self.own_world("--or-host-network", "true", unshare=ALLOWS, VX_HOST_NETWORK="1")

        self.assertIn("world host:", done.stdout)

    def test_refuses_the_machines_network_where_it_may_not(self):
        done = self.own_world("true", unshare=ALLOWS, VX_HOST_NETWORK="1")

        self.assert_is_one_line_error(done, "VX_HOST_NETWORK is for ./demo only", "unset it")

    def test_names_a_program_that_is_missing(self):
        for name in ("bash", "sh", "dirname", "mkdir", "id"):
            os.symlink(shutil.which(name), self.programs / name)
        (self.programs / "Xvfb").unlink()

        done = self.own_world("--or-host-network", "true", unshare=ALLOWS, PATH=str(self.programs))

        self.assert_is_one_line_error(done, "Xvfb is missing: run scripts/setup as root")

    def marked_processes(self):
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if f"VX_WORLD_MARK={self.root}".encode() in (folder / "environ").read_bytes():
                    found.append(folder.name)
            except OSError:
                continue    # it has just ended
        return found

    def assert_all_end(self):
        deadline = time.monotonic() + 30
        while self.marked_processes() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(self.marked_processes(), [])

    def start_world(self, text):
        """A real world with a display and a Wine that do nothing. Returns when the text has printed a line."""
        (self.programs / "setpriv").unlink()
        self.program("Xvfb", "echo 77 >&3\nsleep 1000")
        self.program("wineserver", "exit 0")
        prefix = self.root / "build" / "wine"
        prefix.mkdir(parents=True)
        number = re.search(r'^PREFIX_VERSION="(\d+) ', (PROJECT / "scripts/own-world").read_text(encoding="utf-8"), re.M)
        (prefix / "vx-version").write_text(f"{number[1]} \n", encoding="utf-8")
        process = subprocess.Popen(["scripts/own-world", "bash", "-c", text], stdout=subprocess.PIPE, text=True,
                                   cwd=self.root,
                                   env={**os.environ, "PATH": f"{self.programs}:{os.environ['PATH']}",
                                        "VX_HOST_NETWORK": "", "VX_WORLD_MARK": str(self.root)})
        self.addCleanup(process.stdout.close)
        self.assertEqual(process.stdout.readline(), "ready\n")
        return process

    def test_ends_with_the_commands_code_and_leaves_no_process(self):
        process = self.start_world("sleep 1000 & setsid sleep 1000 & echo ready; exit 5")

        self.assertEqual(process.wait(60), 5)
        self.assert_all_end()

    def test_leaves_no_process_even_when_it_is_killed(self):
        process = self.start_world("setsid sleep 1000 & echo ready; sleep 1000")
        self.assertGreater(len(self.marked_processes()), 3, "they cannot be seen")

        process.kill()

        self.assertEqual(process.wait(60), -signal.SIGKILL)
        self.assert_all_end()

    def test_has_nothing_but_loopback(self):
        (self.programs / "ip").unlink()
        process = self.start_world("echo ready; cat /proc/net/dev")

        names = [line.split(":")[0].strip() for line in process.stdout if ":" in line]
        process.wait(60)

        self.assertEqual(names, ["lo"])

    def test_the_tests_ask_for_a_network_before_anything_is_built(self):
        for command in ("test", "bench"):
            with self.subTest(command):
                shutil.copy(PROJECT / command, self.root)
                for name in ("setup", "third-party"):
                    step = self.root / "scripts" / name
                    step.write_text(f"#!/bin/sh\necho {name} >>steps\n", encoding="utf-8")
                    step.chmod(0o755)

                done = self.run_shell(f"./{command}", REFUSES)

                self.assert_is_one_line_error(done, "no network of our own")
                self.assertEqual((self.root / "steps").read_text(), "setup\n")
                (self.root / "steps").unlink()


if __name__ == "__main__":
    vx_unittest.main()
