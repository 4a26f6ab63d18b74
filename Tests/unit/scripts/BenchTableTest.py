"""The table of ./bench, made of result files."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import vx_unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[3] / "scripts" / "bench-table.py"


def median(name, value, unit="us"):
    return {"name": f"{name}_median", "run_name": name, "aggregate_name": "median", "real_time": value,
            "time_unit": unit}


def mean(name, value):
    return {**median(name, value), "name": f"{name}_mean", "aggregate_name": "mean"}


def table_of(files):
    """@return  exit code, rows of the table as lists of cells, error output"""
    with tempfile.TemporaryDirectory() as folder:
        for name, (context, runs) in files.items():
            text = json.dumps({"context": context, "benchmarks": runs})
            (pathlib.Path(folder) / name).write_text(text, encoding="utf-8")
        done = subprocess.run([sys.executable, SCRIPT, folder], capture_output=True, text=True, check=False)
        rows = [[cell.strip() for cell in line.split("  ") if cell.strip()] for line in done.stdout.splitlines()]
        return done.returncode, rows, done.stderr


class BenchTableTest(unittest.TestCase):
    def test_compares_ours_with_the_better_of_the_others(self):
        code, rows, _ = table_of({"native-A.json": ({"peer of Copy": "memcpy/6"}, [
            median("Copy/ours/real_time", 150), median("Copy/OpenCV/real_time", 300),
            median("memcpy/6/real_time", 100), median("memcpy/8/real_time", 1)])})

        self.assertEqual(code, 0)
        self.assertIn(["Copy", "native", "150.000 us", "-", "100.000 us", "300.000 us", "-", "1.50", "0.50",
                       "-", "-"],
                      rows)

    def goal_cells(self, ours, goal):
        """The last three cells of a work that is compared with a copy of 100 us."""
        code, rows, _ = table_of({"native-A.json": ({"peer of Copy": "memcpy/6", "goal of Copy": goal}, [
            median("Copy/ours/real_time", ours), median("memcpy/6/real_time", 100)])})

        self.assertEqual(code, 0)
        return next(row for row in rows if row and row[0] == "Copy")[-3:]

    def test_judges_a_multiple_of_the_better_of_the_others(self):
        self.assertEqual(self.goal_cells(130, "1.3 x"), ["-", "1.3 x", "met"])
        self.assertEqual(self.goal_cells(131, "1.3 x"), ["-", "1.3 x", "missed"])

    def test_judges_a_time(self):
        self.assertEqual(self.goal_cells(9999, "10 ms"), ["-", "10 ms", "met"])
        self.assertEqual(self.goal_cells(10001, "10 ms"), ["-", "10 ms", "missed"])

    def verdict_beside_open_cv(self, ours, goal):
        _, rows, _ = table_of({"native-A.json": ({"peer of Copy": "memcpy/6", "goal of Copy": goal}, [
            median("Copy/ours/real_time", ours), median("Copy/OpenCV/real_time", 300),
            median("memcpy/6/real_time", 100)])})
        return next(row for row in rows if row and row[0] == "Copy")[-1]

    def test_judges_a_multiple_of_one_of_the_others(self):
        self.assertEqual(self.verdict_beside_open_cv(300, "1 x OpenCV"), "met")
        self.assertEqual(self.verdict_beside_open_cv(301, "1 x OpenCV"), "missed")
        self.assertEqual(self.goal_cells(1, "1 x OpenCV"), ["-", "1 x OpenCV", "-"])

    def test_several_goals_must_all_be_met(self):
        self.assertEqual(self.verdict_beside_open_cv(200, "1 x OpenCV, 0.2 ms"), "met")
        self.assertEqual(self.verdict_beside_open_cv(201, "1 x OpenCV, 0.2 ms"), "missed")
        self.assertEqual(self.verdict_beside_open_cv(301, "1 x OpenCV, 1 ms"), "missed")

    def test_does_not_judge_a_multiple_when_the_others_were_not_measured(self):
        _, rows, _ = table_of({"native-A.json": ({"goal of Copy": "1.3 x"}, [median("Copy/ours/real_time", 1)])})

        self.assertIn(["Copy", "native", "1.000 us", "-", "-", "-", "-", "-", "-", "1.3 x", "-"], rows)

    def test_a_missed_goal_is_no_error(self):
        code, _, errors = table_of({"native-A.json": ({"goal of Copy": "1 us"}, [median("Copy/ours/real_time", 2)])})

        self.assertEqual((code, errors), (0, ""))

    def test_shows_gigabytes_per_second_where_bytes_were_counted(self):
        _, rows, _ = table_of({"native-A.json": ({}, [
            {**median("Copy/ours", 2, "ms"), "bytes_per_second": 3.1e9}])})

        self.assertIn(["Copy", "native", "2.000 ms", "3.10", "-", "-", "-", "-", "-", "-", "-"], rows)

    def rows_of_two(self, runs):
        """@return  the names in the first column, of two works that share a row."""
        context = {f"{kind} of {work}": value for work in ("RGGB", "BGGR")
                   for kind, value in (("row", "Bayer"), ("goal", "1 x OpenCV"))}
        _, rows, _ = table_of({"native-A.json": (context, runs)})
        return [row[0] for row in rows if len(row) > 1 and row[1] == "native"]

    def test_works_of_one_row_stand_in_one_line_with_the_worst(self):
        slower = [median("RGGB/ours", 150), median("BGGR/ours", 160)]
        self.assertEqual(self.rows_of_two(slower), ["BGGR, worst of 2"])
        slower_beside = slower + [median("RGGB/OpenCV", 300), median("BGGR/OpenCV", 400)]
        self.assertEqual(self.rows_of_two(slower_beside), ["RGGB, worst of 2"])
        slower_than_all = slower + [median("RGGB/OpenCV", 300), median("BGGR/OpenCV", 159)]
        self.assertEqual(self.rows_of_two(slower_than_all), ["BGGR, worst of 2"])
        self.assertEqual(self.rows_of_two(slower[:1]), ["RGGB"])

    def test_shows_both_systems_beside_each_other(self):
        _, rows, _ = table_of({"native-A.json": ({}, [median("Start", 2, "ms")]),
                               "wine-A.json": ({}, [median("Start", 3, "s")])})

        self.assertIn(["Start", "2.000 ms", "3.000 s"], rows)

    def test_leaves_a_gap_where_nothing_was_measured(self):
        _, rows, _ = table_of({"wine-A.json": ({}, [median("Start", 5, "ns")])})

        self.assertIn(["Start", "-", "5.0 ns"], rows)

    def test_takes_medians_only(self):
        _, rows, _ = table_of({"native-A.json": ({}, [mean("Start", 7), median("Start", 5)])})

        self.assertIn(["Start", "5.000 us", "-"], rows)

    def test_names_the_machine(self):
        _, rows, _ = table_of({"native-A.json": ({}, [median("Start", 5)])})

        self.assertRegex(rows[0][0] + " " + " ".join(rows[0][1:]), r"^machine: .+, \d+ cores$")

    def test_ends_with_an_error_when_a_benchmark_failed(self):
        code, _, errors = table_of({"native-A.json": ({}, [
            {"name": "Start", "run_name": "Start", "error_occurred": True, "error_message": "no camera"},
            median("Copy", 5)])})

        self.assertEqual((code, errors), (1, "error: Start (native): no camera\n"))

    def test_ends_with_an_error_when_nothing_was_measured(self):
        code, _, errors = table_of({})

        self.assertEqual(code, 1)
        self.assertIn("nothing was measured", errors)


if __name__ == "__main__":
    vx_unittest.main()
