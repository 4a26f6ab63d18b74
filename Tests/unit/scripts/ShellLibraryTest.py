"""scripts/lib.sh: steps, errors and process groups, each case in a shell of its own."""

import os
import pathlib
import pwd
import signal
import subprocess
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]
SHELL = ["bash", "-c"]


def source(root, text):
    """A script that works on a copy of the tree's scripts, so that logs go there."""
    return f'. "{root}/scripts/lib.sh"\n{text}\n'


class ShellLibraryTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        (self.root / "scripts").mkdir()
        (self.root / "scripts" / "lib.sh").write_text((PROJECT / "scripts" / "lib.sh").read_text())

    def run_script(self, text, environment=None):
        return subprocess.run([*SHELL, source(self.root, text)], capture_output=True, text=True, check=False,
                              env=environment)

    def run_read_only(self, text):
        """The tree looks read-only to this script, in a view of the files of its own."""
        mount = 'mount --bind "$1" "$1" && mount -o remount,bind,ro "$1" && exec bash -c "$2"'
        return subprocess.run(["unshare", "--mount", "--map-root-user", *SHELL, mount, "bash", self.root,
                               source(self.root, text)], capture_output=True, text=True, check=False)

    def start_script(self, text):
        """Starts a script whose first line of output is waited for and returned with the process."""
        process = subprocess.Popen([*SHELL, source(self.root, text)], stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        return process, process.stdout.readline().strip()

    def assert_ended(self, pid):
        """A process that ended may wait to be collected by its new parent; that is not ours to see to."""
        try:
            state = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()[0]
        except OSError:
            return
        self.assertEqual(state, "Z")

    def test_fail_prints_one_line_and_ends_with_one(self):
        done = self.run_script('fail "no camera: start one"\necho not reached')

        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", "error: no camera: start one\n"))

    def test_a_step_is_quiet_and_says_that_it_is_done(self):
        done = self.run_script('run_step "making tea" "$VX_LOGS/tea.log" echo hot')

        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"^  making tea: done in \d+ s\n$")
        self.assertEqual((self.root / "build/logs/tea.log").read_text(), "hot\n")

    def test_a_step_runs_a_function(self):
        done = self.run_script('brew() { echo "$1"; }\nrun_step tea "$VX_LOGS/tea.log" brew green')

        self.assertEqual(done.returncode, 0)
        self.assertEqual((self.root / "build/logs/tea.log").read_text(), "green\n")

    def test_a_failed_step_shows_its_last_lines_and_where_the_rest_is(self):
        done = self.run_script('brew() { seq 100; false; echo no; }\nrun_step tea "$VX_LOGS/tea.log" brew')

        self.assertEqual(done.returncode, 1)
        lines = done.stderr.splitlines()
        self.assertEqual(lines[-2], "100")
        self.assertEqual(lines[-1], f"error: tea failed; the whole output is in {self.root}/build/logs/tea.log")
        self.assertLess(len(lines), 50)

    def test_a_failed_step_names_the_remedy_that_it_was_given(self):
        done = self.run_script('VX_REMEDY="heat the water" run_step tea "$VX_LOGS/tea.log" false')

        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "error: tea failed: heat the water; the whole output is in "
                                      f"{self.root}/build/logs/tea.log\n")

    def test_a_remedy_is_for_one_step_only(self):
        done = self.run_script('VX_REMEDY="heat the water" run_step water "$VX_LOGS/water.log" true\n'
                               'run_step tea "$VX_LOGS/tea.log" false')

        self.assertTrue(done.stderr.startswith("error: tea failed; "), done.stderr)

    def test_a_tree_without_a_place_for_logs_is_one_line(self):
        (self.root / "build").write_text("not a folder")

        done = self.run_script("echo not reached")

        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, f"error: cannot write to {self.root}/build/logs: make room on its disk, or use a "
                                      "tree that you may write to, and run again\n")

    def test_a_tree_that_may_only_be_read_is_one_line(self):
        for has_logs in (False, True):
            with self.subTest(has_logs=has_logs):
                if has_logs:
                    (self.root / "build/logs").mkdir(parents=True)

                done = self.run_read_only("echo not reached")

                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertRegex(done.stderr, r"^error: cannot write to \S+/build/logs: .*\n$")

    def test_the_end_of_a_script_ends_its_groups_with_all_descendants(self):
        process, grandchild = self.start_script('''
            at_end stop_all_groups
            parent() { sleep 1000 & echo $!; wait; }
            start_group parent
            sleep 0.5''')

        process.wait(30)

        self.assert_ended(int(grandchild))

    def test_a_signal_ends_a_step_with_all_descendants(self):
        for number, code in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with self.subTest(number):
                process, grandchild = self.start_script('''
                    at_end stop_all_groups
                    parent() { sleep 1000 & echo $! >&3; wait; }
                    run_step tea "$VX_LOGS/tea.log" parent 3>&1''')

                process.send_signal(number)

                self.assertEqual(process.wait(30), code)
                self.assert_ended(int(grandchild))

    def test_a_signal_while_a_group_starts_ends_it_as_well(self):
        # The signal comes with the group started and not in the list yet: start_group leaves job control just then.
        process, grandchild = self.start_script('''
            set() { builtin set "$@"; if [ "$1" = +m ]; then sleep 0.2; kill -TERM $$; fi; }
            at_end stop_all_groups
            parent() { sleep 1000 & echo $!; wait; }
            start_group parent
            echo not reached''')

        self.assertEqual(process.wait(30), 143)
        self.assert_ended(int(grandchild))
        self.assertEqual(process.stdout.read(), "")

    def test_a_group_that_ignores_the_polite_signal_is_ended_anyway(self):
        process, stubborn = self.start_script('''
            VX_STOP_SECONDS=1
            at_end stop_all_groups
            parent() { trap "" TERM; sleep 1000 & echo $!; while :; do wait || true; done; }
            start_group parent
            sleep 0.5''')

        process.wait(30)

        self.assert_ended(int(stubborn))

    def test_a_home_that_is_not_set_is_the_users(self):
        environment = {name: value for name, value in os.environ.items() if name != "HOME"}

        done = self.run_script('bash -c \'echo "$HOME"\'', environment)

        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, pwd.getpwuid(os.getuid()).pw_dir + "\n", ""))

    def test_a_home_that_is_set_stays(self):
        done = self.run_script('echo "$HOME"', {**os.environ, "HOME": "/somewhere/else"})

        self.assertEqual((done.returncode, done.stdout), (0, "/somewhere/else\n"))

    def test_missing_disk_space_is_one_line(self):
        done = self.run_script('need_disk "$VX_BUILD/not/there/yet" 1000000')

        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"^error: only \d+ MiB are free under \S+, 1000000 GiB are needed: .*\n$")

    def test_enough_disk_space_is_silent(self):
        done = self.run_script('need_disk "$VX_BUILD" 0')

        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))


if __name__ == "__main__":
    vx_unittest.main()
