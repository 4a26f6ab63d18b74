"""cmake/make-idl.py: the interface definition that is made of the header of the control interface."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import vx_unittest

PROJECT = pathlib.Path(__file__).resolve().parents[3]
SCRIPT = PROJECT / "cmake" / "make-idl.py"
FILTER = PROJECT / "Libraries/VxDSSource/filter"

HEADER = """DECLARE_INTERFACE_IID_(IThing, IUnknown, "08C27C57-0C37-4D3D-8CE1-CC88E00A57C9")
{
#ifndef __cplusplus
    STDMETHOD(QueryInterface)(THIS_ REFIID riid, void** object) PURE;
#endif

    LINE
};
"""
IDENTIFIERS = """inline constexpr GUID CLSID_VxDSSource = {
    0x00000001, 0x0002, 0x0003, {0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B}};
inline constexpr GUID LIBID_VxDSSource = {
    0x865A9CD3, 0x0585, 0x4753, {0x8D, 0xF7, 0x9E, 0xCE, 0x74, 0x4F, 0xAF, 0x74}};
"""


class MakeIdlTest(unittest.TestCase):
    def idl_of(self, line, identifiers=IDENTIFIERS):
        """@return  exit code, interface definition, error output for a header with one line inside"""
        with tempfile.TemporaryDirectory() as folder:
            header = pathlib.Path(folder) / "IThing.h"
            header.write_text(HEADER.replace("LINE", line), encoding="utf-8")
            other = pathlib.Path(folder) / "Identifiers.h"
            other.write_text(identifiers, encoding="utf-8")
            return self.run_script(header, other, pathlib.Path(folder) / "IThing.idl")

    def run_script(self, header, identifiers, output):
        done = subprocess.run([sys.executable, SCRIPT, header, identifiers, output], capture_output=True, text=True,
                              check=False)
        return done.returncode, output.read_text(encoding="utf-8") if output.exists() else "", done.stderr

    def method_of(self, line):
        code, idl, errors = self.idl_of(line)
        self.assertEqual((code, errors), (0, ""))
        # Behind the system's own interface, which has methods as well.
        return [each.strip() for each in idl.split("interface IThing")[1].splitlines() if "HRESULT" in each]

    def test_an_argument_that_is_a_value_goes_in(self):
        self.assertEqual(self.method_of("STDMETHOD(Set)(THIS_ UINT number, BSTR text, BOOL flag, INT size) PURE;"),
                         ["HRESULT Set([in] unsigned int number, [in] BSTR text, [in] long flag, [in] int size);"])

    def test_an_argument_that_is_a_pointer_comes_out(self):
        self.assertEqual(self.method_of("STDMETHOD(Get)(THIS_ UINT index, BSTR* text) PURE;"),
                         ["HRESULT Get([in] unsigned int index, [out] BSTR* text);"])

    def test_a_method_may_have_no_arguments(self):
        self.assertEqual(self.method_of("STDMETHOD(Connect)(THIS) PURE;"), ["HRESULT Connect();"])

    def test_the_one_flag_that_is_read_first_goes_both_ways(self):
        self.assertEqual(self.method_of("STDMETHOD(IsParameterArrayAvailable)(THIS_ BOOL* available) PURE;"),
                         ["HRESULT IsParameterArrayAvailable([in, out] long* available);"])

    def test_a_comment_of_several_lines_becomes_the_help(self):
        _, idl, _ = self.idl_of('/// Reads "a": one\n    /// or two.\n    STDMETHOD(Get)(THIS) PURE;')

        self.assertIn(r'[helpstring("Reads \"a\": one or two.")]', idl)

    def test_identifiers_are_those_of_the_headers(self):
        _, idl, _ = self.idl_of("")

        self.assertIn("[uuid(865A9CD3-0585-4753-8DF7-9ECE744FAF74)", idl)
        self.assertIn("uuid(08C27C57-0C37-4D3D-8CE1-CC88E00A57C9)", idl)
        self.assertIn("[uuid(00000001-0002-0003-0405-060708090A0B)", idl)

    def test_what_is_not_understood_is_an_error(self):
        for line in ("STDMETHOD(Get)(THIS_ DOUBLE x) PURE;", "STDMETHOD_(ULONG, Get)(THIS) PURE;", "int strange;"):
            with self.subTest(line):
                code, idl, errors = self.idl_of(line)

                self.assertEqual((code, idl), (1, ""))
                self.assertIn("not understood", errors)

    def test_a_missing_identifier_is_an_error(self):
        code, _, errors = self.idl_of("", "nothing")

        self.assertEqual((code, errors), (1, "make-idl.py: there is no LIBID_VxDSSource\n"))

    def test_understands_the_header_that_is_delivered(self):
        with tempfile.TemporaryDirectory() as folder:
            code, idl, errors = self.run_script(FILTER / "IVxDSSource.h", FILTER / "Identifiers.h",
                                                pathlib.Path(folder) / "VxDSSource.idl")

        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(idl.split("interface IVxDSSource")[1].count("HRESULT"), 55)


if __name__ == "__main__":
    vx_unittest.main()
