"""Counting test cases: what CTest and the result files say, turned into one line."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import vx_unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[3] / "scripts" / "test-summary.py"

RESULTS = """<testsuites><testsuite name="S">
  <testcase name="Good" status="run" result="completed" classname="S"/>
  <testcase name="AlsoGood" status="run" result="completed" classname="S"/>
  {more}
</testsuite></testsuites>"""
FAILED_CASE = '<testcase name="Bad" status="run" result="completed" classname="S"><failure message="x"/></testcase>'
SKIPPED_CASE = '<testcase name="Lazy" status="run" result="skipped" classname="S"><skipped message="x"/></testcase>'
OFF_CASE = '<testcase name="DISABLED_Off" status="notrun" result="suppressed" classname="S"/>'


def writes(more="", after=""):
    """A test program, in shell: writes a result file and then does something else."""
    return f"printf '%s' '{RESULTS.format(more=more)}' > \"${{GTEST_OUTPUT#xml:}}\"; {after}"


class TestSummaryTest(unittest.TestCase):
    def summary_of(self, programs, *options, pattern=""):
        """Runs programs (name: shell text, or None for one that was not built) by CTest.

        @return  exit code and printed lines
        """
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder) / "linux"
            (folder / "test-results").mkdir(parents=True)
            lines = []
            for name, text in programs.items():
                program = folder / f"{name}.sh"
                if text is not None:
                    program.write_text("#!/bin/sh\n" + text + "\n", encoding="utf-8")
                    program.chmod(0o755)
                lines.append(f'add_test({name} "{program}")')
                if not name.startswith("Plain"):
                    lines.append(f'set_tests_properties({name} PROPERTIES ENVIRONMENT '
                                 f'"GTEST_OUTPUT=xml:test-results/{name}.xml" WORKING_DIRECTORY "{folder}")')
            (folder / "CTestTestfile.cmake").write_text("\n".join(lines), encoding="utf-8")
            subprocess.run(["ctest", "--test-dir", folder, "--output-junit", folder / "tests-unit.xml"],
                           capture_output=True, check=False)
            done = subprocess.run([sys.executable, SCRIPT, *options, f"{folder}={pattern}" if pattern else folder],
                                  capture_output=True, text=True, check=False)
            return done.returncode, done.stdout.splitlines()

    def test_counts_single_cases(self):
        self.assertEqual(self.summary_of({"A": writes(), "B": writes()}), (0, ["4 passed, 0 failed"]))

    def test_names_failed_cases(self):
        self.assertEqual(self.summary_of({"A": writes(FAILED_CASE, "exit 1")}),
                         (1, ["FAILED: linux: A: S.Bad", "2 passed, 1 failed"]))

    def test_counts_a_skipped_case_as_failed(self):
        self.assertEqual(self.summary_of({"A": writes(SKIPPED_CASE)}),
                         (1, ["FAILED: linux: A: S.Lazy (skipped)", "2 passed, 1 failed"]))

    def test_does_not_count_a_case_that_is_switched_off(self):
        self.assertEqual(self.summary_of({"A": writes(OFF_CASE)}), (0, ["2 passed, 0 failed"]))

    def test_counts_a_crash_as_failed(self):
        self.assertEqual(self.summary_of({"A": "kill -SEGV $$"}),
                         (1, ["FAILED: linux: A: crashed, was ended, or wrote no results",
                              "0 passed, 1 failed"]))

    def test_counts_a_missing_result_as_failed_even_if_the_program_ended_well(self):
        self.assertEqual(self.summary_of({"A": "exit 0", "B": writes()})[1][-1], "2 passed, 1 failed")

    def test_counts_an_error_after_the_last_case(self):
        self.assertEqual(self.summary_of({"A": writes(after="exit 23")}),
                         (1, ["FAILED: linux: A: ended with an error after its last case",
                              "2 passed, 1 failed"]))

    def test_counts_a_program_that_was_not_built(self):
        self.assertEqual(self.summary_of({"A": None, "B": writes()})[1],
                         ["FAILED: linux: A: was not run", "2 passed, 1 failed"])

    def test_counts_a_program_without_cases_as_failed(self):
        self.assertEqual(self.summary_of({"A": "echo '<testsuites/>' > \"${GTEST_OUTPUT#xml:}\""})[1],
                         ["FAILED: linux: A: has no case", "0 passed, 1 failed"])

    def test_counts_a_plain_entry_as_one_case(self):
        self.assertEqual(self.summary_of({"PlainGood": "exit 0", "PlainBad": "exit 1"}),
                         (1, ["FAILED: linux: PlainBad: failed", "1 passed, 1 failed"]))

    def test_counts_only_what_was_asked_for(self):
        self.assertEqual(self.summary_of({"A": writes(), "B": writes(FAILED_CASE, "exit 1")}, "--only", "^A"),
                         (0, ["2 passed, 0 failed"]))

    def test_counts_only_what_a_folder_is_asked_for(self):
        self.assertEqual(self.summary_of({"A": writes(), "B": None}, pattern="^A$"), (0, ["2 passed, 0 failed"]))
        self.assertEqual(self.summary_of({"A": None, "B": writes()}, pattern="^A$"),
                         (1, ["FAILED: linux: A: was not run", "0 passed, 1 failed"]))

    def test_ends_with_an_error_when_nothing_ran(self):
        self.assertEqual(self.summary_of({}), (1, ["0 passed, 0 failed"]))


if __name__ == "__main__":
    vx_unittest.main()
