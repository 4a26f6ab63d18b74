"""The check of the include rules, on small trees of its own and on its own table."""

import importlib.util
import pathlib
import subprocess
import sys
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]
SCRIPT = PROJECT / "cmake" / "check-includes.py"
RULES = PROJECT / "cmake" / "include-rules"

spec = importlib.util.spec_from_file_location("check_includes", SCRIPT)
check_includes = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_includes)


def complaints_about(files):
    """Runs the check as the build does, on a project of the given files.

    @return  its exit code and the lines it printed
    """
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for path, text in files.items():
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(text, encoding="utf-8")
        done = subprocess.run([sys.executable, SCRIPT, root, "--rules", RULES],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stderr.splitlines()


BASE = {"Libraries/VxBase/VxResult.h": "#include <cstdint>\n"}


class CheckIncludesTest(unittest.TestCase):
    def assert_allowed(self, files):
        self.assertEqual(complaints_about({**BASE, **files}), (0, []))

    def assert_refused(self, files, place, *words):
        code, lines = complaints_about({**BASE, **files})
        self.assertEqual(code, 1)
        self.assertEqual(len(lines), 1, lines)
        self.assertTrue(lines[0].startswith(place + ": "), lines[0])
        for word in words:
            self.assertIn(word, lines[0])

    def test_allows_what_the_table_allows(self):
        self.assert_allowed({
            "Libraries/VxCamera/wire/gvcp/A.h": "#pragma once\n",
            "Libraries/VxCamera/wire/gvcp/A.cpp":
                '#include "VxCamera/wire/gvcp/A.h"\n#include <span>\n#include "VxBase/VxResult.h"\n',
            "Libraries/VxCamera/control/B.cpp": '#include "VxCamera/wire/gvcp/A.h"\n#include <thread>\n',
        })

    def test_names_file_and_line_and_rule_and_remedy(self):
        self.assert_refused(
            {"Libraries/VxCamera/control/B.h": "",
             "Libraries/VxCamera/wire/A.cpp": '#include <span>\n\n#include "VxCamera/control/B.h"\n'},
            "Libraries/VxCamera/wire/A.cpp:3",
            'VxCamera/wire may not include "VxCamera/control/B.h"', "it may include: VxBase", "Move the code")

    def test_refuses_an_arrow_against_the_order(self):
        self.assert_refused(
            {"Libraries/VxCamera/wire/A.h": "", "Libraries/VxBase/B.h": '#include "VxCamera/wire/A.h"\n'},
            "Libraries/VxBase/B.h:1")

    def test_refuses_threads_clocks_and_files_in_pure_code(self):
        for header in ("thread", "condition_variable", "ctime", "fstream", "filesystem", "iostream"):
            with self.subTest(header):
                self.assert_refused({"Libraries/VxCamera/genapi/A.cpp": f"#include <{header}>\n"},
                                    "Libraries/VxCamera/genapi/A.cpp:1", f"<{header}>")

    def test_refuses_reading_a_clock_in_pure_code_but_not_durations(self):
        self.assert_allowed({"Libraries/VxCamera/wire/A.h": "#include <chrono>\n"})
        self.assert_refused(
            {"Libraries/VxCamera/wire/A.cpp": "#include <chrono>\nauto t = std::chrono::steady_clock::now();\n"},
            "Libraries/VxCamera/wire/A.cpp:2", "clock", "argument")

    def test_refuses_files_in_pure_code_but_not_formatting(self):
        self.assert_allowed({"Libraries/VxCamera/wire/A.cpp": "#include <cstdio>\nint n = std::snprintf(a, b, c);\n"})
        self.assert_refused({"Libraries/VxCamera/wire/A.cpp": '#include <cstdio>\nauto f = std::fopen("a", "r");\n'},
                            "Libraries/VxCamera/wire/A.cpp:2", "files")

    def test_refuses_sockets_in_pure_code(self):
        for header in ("sys/socket.h", "winsock2.h", "windows.h", "unistd.h"):
            with self.subTest(header):
                self.assert_refused({"Libraries/VxCamera/wire/A.cpp": f"#include <{header}>\n"},
                                    "Libraries/VxCamera/wire/A.cpp:1")

    def test_allows_system_headers_of_the_transport_only_in_the_systems_folder(self):
        self.assert_allowed({"Libraries/VxCamera/transport/posix/A.cpp": "#include <sys/socket.h>\n",
                             "Libraries/VxCamera/transport/win/A.cpp": "#include <winsock2.h>\n"})
        self.assert_refused({"Libraries/VxCamera/transport/A.cpp": "#include <sys/socket.h>\n"},
                            "Libraries/VxCamera/transport/A.cpp:1", "<sys/socket.h>")
        self.assert_refused({"Libraries/VxCamera/transport/win/A.cpp": "#include <sys/socket.h>\n"},
                            "Libraries/VxCamera/transport/win/A.cpp:1")
        self.assert_refused({"Libraries/VxCamera/transport/posix/A.cpp": "#include <winsock2.h>\n"},
                            "Libraries/VxCamera/transport/posix/A.cpp:1")

    def test_shows_of_the_transport_only_its_interfaces(self):
        transport = {"Libraries/VxCamera/transport/IUdpSocket.h": "",
                     "Libraries/VxCamera/transport/posix/UdpSocket.h": ""}
        self.assert_allowed(
            {**transport, "Libraries/VxSimulator/A.cpp": '#include "VxCamera/transport/IUdpSocket.h"\n'})
        self.assert_refused(
            {**transport, "Libraries/VxSimulator/A.cpp": '#include "VxCamera/transport/posix/UdpSocket.h"\n'},
            "Libraries/VxSimulator/A.cpp:1")

    def test_keeps_the_camera_library_out_of_the_module(self):
        self.assert_refused(
            {"Libraries/VxCamera/control/A.h": "",
             "Libraries/VxDSSource/stream/B.cpp": '#include "VxCamera/control/A.h"\n'},
            "Libraries/VxDSSource/stream/B.cpp:1")

    def test_shows_of_the_filter_only_its_settings(self):
        module = {"Libraries/VxDSSource/filter/IVxDSSource.h": "", "Libraries/VxDSSource/filter/VxFilter.h": ""}
        self.assert_allowed(
            {**module, "Libraries/VxDSSource/stream/A.cpp": '#include "VxDSSource/filter/IVxDSSource.h"\n'})
        self.assert_refused(
            {**module, "Libraries/VxDSSource/stream/A.cpp": '#include "VxDSSource/filter/VxFilter.h"\n'},
            "Libraries/VxDSSource/stream/A.cpp:1")

    def test_lets_nobody_include_the_composition_root(self):
        self.assert_refused(
            {"Libraries/VxDSSource/filter/Exports.h": "",
             "Libraries/VxDSSource/filter/A.cpp": '#include "VxDSSource/filter/Exports.h"\n'},
            "Libraries/VxDSSource/filter/A.cpp:1")

    def test_lets_programs_include_their_own_headers(self):
        self.assert_allowed({"Programs/a/A.h": "",
                             "Programs/a/A.cpp": '#include "A.h"\n#include "a/A.h"\n#include "VxBase/VxResult.h"\n'})

    def test_lets_nobody_include_tests(self):
        self.assert_refused(
            {"Tests/support/Fake.h": "", "Libraries/VxBase/A.cpp": '#include "Tests/support/Fake.h"\n'},
            "Libraries/VxBase/A.cpp:1", "no file below Libraries/")

    def test_refuses_paths_that_do_not_start_at_the_libraries_folder(self):
        self.assert_refused({"Libraries/VxBase/A.cpp": '#include "VxResult.h"\n'},
                            "Libraries/VxBase/A.cpp:1", "write the path from Libraries/")

    def test_refuses_our_headers_in_angle_brackets(self):
        self.assert_refused({"Libraries/VxBase/A.cpp": "#include <VxBase/VxResult.h>\n"},
                            "Libraries/VxBase/A.cpp:1", 'write "VxBase/VxResult.h"')

    def test_allows_libraries_of_others_only_where_they_are_named(self):
        self.assert_allowed({"Libraries/VxCamera/pixel/A.cpp": "#include <opencv2/imgproc.hpp>\n",
                             "Libraries/VxCamera/genapi/xml/A.cpp": "#include <pugixml.hpp>\n"})
        self.assert_refused({"Libraries/VxCamera/wire/A.cpp": "#include <opencv2/core.hpp>\n"},
                            "Libraries/VxCamera/wire/A.cpp:1")
        self.assert_refused({"Libraries/VxDSSource/Utils/A.cpp": "#include <gdiplus.h>\n"},
                            "Libraries/VxDSSource/Utils/A.cpp:1")

    def test_refuses_a_folder_that_no_row_knows(self):
        self.assert_refused({"Libraries/VxNew/A.cpp": ""}, "Libraries/VxNew/A.cpp:1", "no row")

    def test_ignores_neither_indentation_nor_spaces(self):
        self.assert_refused({"Libraries/VxCamera/wire/A.cpp": "  #  include  <thread>\n"},
                            "Libraries/VxCamera/wire/A.cpp:1")


class IncludeRulesTest(unittest.TestCase):
    """The table itself."""

    def setUp(self):
        self.rules = check_includes.Rules(RULES.read_text(encoding="utf-8"))

    def arrows(self):
        """For every row the rows whose files it may include."""
        def sample(name):
            name = name.replace("*", "X")
            return name if "." in name.rsplit("/", 1)[-1] else name + "/X.h"

        samples = {row.files: sample(self.rules.names([row.files])[0]) for row in self.rules.rows}
        return {row.files: [other for other, path in samples.items()
                            if other != row.files and self.rules.allows(row, path)]
                for row in self.rules.rows}

    def test_has_no_cycle(self):
        arrows = self.arrows()

        def visit(row, path):
            self.assertNotIn(row, path, f"cycle: {' -> '.join([*path, row])}")
            for other in arrows[row]:
                visit(other, [*path, row])

        for row in arrows:
            visit(row, [])

    def test_has_the_arrows_that_the_cycle_check_relies_on(self):
        arrows = self.arrows()

        self.assertIn("VxBase", arrows["VxCamera/wire"])
        self.assertIn("VxDSSource/stream", arrows["VxDSSource/filter"])
        self.assertIn("@settings", arrows["VxDSSource/stream"])
        self.assertNotIn("VxDSSource/filter", arrows["VxDSSource/stream"])

    def test_has_only_folders_that_come_before_the_rows_that_would_hide_them(self):
        for row in self.rules.rows:
            name = self.rules.names([row.files])[0].replace("*", "X")
            path = name if "." in name.rsplit("/", 1)[-1] else name + "/X.h"
            self.assertIs(self.rules.row_of(path), row, row.files)


if __name__ == "__main__":
    vx_unittest.main()
