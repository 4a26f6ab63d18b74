"""What ./fuzz says before it builds anything."""

import pathlib
import subprocess
import unittest

import vx_unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]


def fuzz(*arguments):
    return subprocess.run([ROOT / "fuzz", *arguments], capture_output=True, text=True, timeout=60,
                          stdin=subprocess.DEVNULL)


class FuzzCommandTest(unittest.TestCase):
    def test_every_target_of_the_sources_has_inputs_and_is_listed(self):
        listed = fuzz("--list").stdout.split()
        registered = []
        for source in (ROOT / "Tests/fuzz").glob("*Target.cpp"):
            registered += [line.split('"')[1] for line in source.read_text(encoding="utf-8").splitlines()
                           if "fuzz::Registration" in line]
        self.assertEqual(listed, sorted(registered))

    def test_every_listed_target_can_be_built(self):
        lists = (ROOT / "Tests/fuzz/CMakeLists.txt").read_text(encoding="utf-8")
        for target in fuzz("--list").stdout.split():
            self.assertRegex(lists, rf"(?m)^  {target} \w+Target\b")

    def test_help_names_the_targets(self):
        done = fuzz("--help")
        self.assertEqual(done.returncode, 0)
        self.assertIn("Usage: ./fuzz TARGET SECONDS", done.stdout)
        self.assertIn("\n  configuration\n", done.stdout)

    def test_an_unknown_target_is_named_with_those_that_there_are(self):
        done = fuzz("nonsense", "10")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("there is no fuzz target 'nonsense'; there are: ack-header configuration ", done.stderr)

    def test_seconds_are_a_number(self):
        for seconds in ("0", "ten", "-1", "1.5", ""):
            with self.subTest(seconds=seconds):
                done = fuzz("configuration", seconds)
                self.assertEqual(done.returncode, 2)
                self.assertIn(f"not '{seconds}'", done.stderr)

    def test_without_arguments_the_usage_is_an_error(self):
        done = fuzz()
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("Usage:", done.stderr)


if __name__ == "__main__":
    vx_unittest.main()
