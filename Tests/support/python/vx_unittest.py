"""Runs the unittest cases of a script and writes their results the way GoogleTest does.

./test counts single cases; this makes cases in Python count like those in C++: the file named by the
environment variable GTEST_OUTPUT (xml:PATH) gets one element for each case.
"""

import os
import pathlib
import sys
import time
import unittest
from xml.etree import ElementTree


class _Result(unittest.TextTestResult):
    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self.cases = []
        self._started = 0.0

    def startTest(self, test):
        super().startTest(test)
        self._started = time.monotonic()
        self.cases.append([test, 0.0, []])

    def stopTest(self, test):
        self.cases[-1][1] = time.monotonic() - self._started
        super().stopTest(test)

    def addError(self, test, err):
        super().addError(test, err)
        # An error outside of any case (in setUpClass) becomes a case of its own.
        if not self.cases or self.cases[-1][0] is not test:
            self.cases.append([test, 0.0, []])
        self.cases[-1][2].append(self.errors[-1][1])

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self.addFailure(test, (AssertionError, AssertionError(f"skipped: {reason}"), None))

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self.cases[-1][2].append(self.failures[-1][1])


def _write(cases, path):
    root = ElementTree.Element("testsuites", tests=str(len(cases)),
                               failures=str(sum(bool(failures) for _, _, failures in cases)))
    suite = ElementTree.SubElement(root, "testsuite", name=pathlib.Path(sys.argv[0]).stem)
    for test, seconds, failures in cases:
        name = test.id().split(".")
        case = ElementTree.SubElement(suite, "testcase", name=name[-1], classname=".".join(name[1:-1]),
                                      status="run", result="completed", time=f"{seconds:.3f}")
        for text in failures:
            ElementTree.SubElement(case, "failure", message=text)
    path.parent.mkdir(parents=True, exist_ok=True)
    ElementTree.ElementTree(root).write(path, encoding="utf-8", xml_declaration=True)


def main():
    suite = unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"])
    result = unittest.TextTestRunner(resultclass=_Result, verbosity=2).run(suite)
    output = os.environ.get("GTEST_OUTPUT", "")
    if output.startswith("xml:"):
        _write(result.cases, pathlib.Path(output[len("xml:"):]))
    sys.exit(0 if result.wasSuccessful() and result.testsRun else 1)
