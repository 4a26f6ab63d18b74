"""What the module's file shows to the system: exports, imports, time, version."""

import datetime
import os
import re
import subprocess
import unittest

import vx_unittest

# Windows' own: on every installation, in system32.
SYSTEM_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "gdi32.dll", "gdiplus.dll", "iphlpapi.dll", "kernel32.dll", "msvcrt.dll",
    "ole32.dll", "oleaut32.dll", "setupapi.dll", "shell32.dll", "user32.dll", "winusb.dll", "ws2_32.dll",
}


def headers_of(module):
    return subprocess.run([os.environ["VX_OBJDUMP"], "-p", module], check=True, capture_output=True,
                          text=True).stdout


class ModuleFileTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.module = os.environ["VX_MODULE"]
        cls.headers = headers_of(cls.module)

    def test_exports_exactly_five_names(self):
        table = self.headers.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
        names = re.findall(r"\[\s*\d+\]\s+(\S+)$", table, re.MULTILINE)
        self.assertEqual(sorted(names), ["DllCanUnloadNow", "DllGetClassObject", "DllMain", "DllRegisterServer",
                                         "DllUnregisterServer"])
        addresses = re.search(r"Export Address Table\s+(\w+)", self.headers)
        self.assertEqual(int(addresses.group(1), 16), 5, "something is exported without a name")

    def test_imports_from_windows_only(self):
        libraries = {name.lower() for name in re.findall(r"DLL Name: (\S+)", self.headers)}
        self.assertIn("kernel32.dll", libraries)
        self.assertEqual(libraries - SYSTEM_LIBRARIES, set())

    def test_is_a_64_bit_library(self):
        self.assertIn("file format pei-x86-64", self.headers)
        self.assertRegex(self.headers, r"Characteristics 0x\w*2\w{3}\b")
        self.assertIn("DLL", self.headers.split("Time/Date")[0])

    def test_carries_the_time_it_was_linked(self):
        text = re.search(r"Time/Date\s+(.+)", self.headers).group(1).strip()
        linked = datetime.datetime.strptime(text, "%a %b %d %H:%M:%S %Y").timestamp()
        written = os.stat(self.module).st_mtime
        self.assertLess(abs(written - linked), 600, f"linked {text}, written {written}")

    def test_carries_its_manifest(self):
        with open(self.module, "rb") as file:
            content = file.read()
        for text in ("Microsoft.Windows.Common-Controls", "PerMonitorV2"):
            self.assertIn(text.encode(), content)

    def test_carries_its_version(self):
        with open(self.module, "rb") as file:
            content = file.read()
        for text in ("Vexa DirectShow Source", "VxDSSource.dll", os.environ["VX_VERSION"]):
            self.assertIn(text.encode("utf-16-le"), content)


if __name__ == "__main__":
    vx_unittest.main()
