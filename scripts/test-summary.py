#!/usr/bin/env python3
"""Counts the test cases of build folders after CTest ran, names what failed, and prints the last line.

usage: test-summary.py [--only PATTERN] BUILD_FOLDER[=PATTERN]...

A case is one GoogleTest case (or one case of a Python script), read from test-results/NAME.xml; a CTest
entry that writes no such file counts as one case. A program that crashed, was not built, wrote no results
or ended with an error after its last case counts as a failure, and so does a case that was skipped.
With a pattern behind its name only the entries of a folder that fit it count.
Ends with 0 only if something passed and nothing failed.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
from xml.etree import ElementTree


def entries_of(folder):
    """Name and, if there is one, result file of each CTest entry."""
    done = subprocess.run(["ctest", "--test-dir", folder, "--show-only=json-v1"],
                          capture_output=True, text=True, check=True)
    for test in json.loads(done.stdout)["tests"]:
        properties = {each["name"]: each["value"] for each in test.get("properties", [])}
        environment = dict(each.partition("=")[::2] for each in properties.get("ENVIRONMENT", []))
        output = environment.get("GTEST_OUTPUT", "").removeprefix("xml:")
        where = pathlib.Path(properties.get("WORKING_DIRECTORY", folder))
        yield test["name"], where / output if output else None


def statuses_of(folder):
    """What CTest says of each entry: 'run', 'fail', 'notrun' or 'disabled'."""
    statuses = {}
    for path in folder.glob("tests-*.xml"):
        try:
            tree = ElementTree.parse(path)
        except (OSError, ElementTree.ParseError):
            continue
        statuses.update((case.get("name"), case.get("status")) for case in tree.iter("testcase"))
    return statuses


def cases_of(path):
    """Passed cases and the names of the failed ones; None when there is no result that can be read."""
    try:
        tree = ElementTree.parse(path)
    except (OSError, ElementTree.ParseError):
        return None
    passed, failed = 0, []
    for case in tree.iter("testcase"):
        name = f"{case.get('classname')}.{case.get('name')}"
        if case.find("failure") is not None or case.find("error") is not None:
            failed.append(name)
        elif case.get("status") == "notrun":
            continue    # switched off by name, or not picked by a filter
        elif case.find("skipped") is not None or case.get("result") == "skipped":
            failed.append(f"{name} (skipped)")
        else:
            passed += 1
    return passed, failed


def judge(status, path):
    """Passed cases and failures of one CTest entry."""
    if status not in ("run", "fail"):
        return 0, ["was not run"]
    if path is None:
        return (1, []) if status == "run" else (0, ["failed"])
    cases = cases_of(path)
    if cases is None:
        return 0, ["crashed, was ended, or wrote no results"]
    passed, failed = cases
    if not passed and not failed:
        failed.append("has no case")
    elif status == "fail" and not failed:
        failed.append("ended with an error after its last case")
    return passed, failed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--only", default="")
    parser.add_argument("folders", nargs="+")
    arguments = parser.parse_args()

    passed, failed = 0, 0
    for each in arguments.folders:
        name_of_folder, _, pattern = each.partition("=")
        folder = pathlib.Path(name_of_folder)
        statuses = statuses_of(folder)
        for name, path in entries_of(folder):
            if not re.search(pattern or arguments.only, name):
                continue
            good, bad = judge(statuses.get(name), path)
            passed += good
            failed += len(bad)
            for reason in bad:
                print(f"FAILED: {folder.name}: {name}: {reason}")
    print(f"{passed} passed, {failed} failed")
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main())
