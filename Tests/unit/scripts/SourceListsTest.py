"""apt sources for source packages, derived from the machine's own, in both of apt's formats."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import vx_unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[3] / "scripts" / "source-lists.py"


def run(files, *suites):
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "sources.list.d").mkdir()
        for path, text in files.items():
            (root / path).write_text(text, encoding="utf-8")
        return subprocess.run([sys.executable, SCRIPT, *(suites or ("bookworm",)), "--root", root],
                              capture_output=True, text=True, check=False)


def derived(files, *suites):
    """The stanzas printed, each as a dictionary."""
    done = run(files, *suites)
    if done.returncode != 0:
        return []
    return [dict(line.split(": ", 1) for line in stanza.splitlines() if not line.startswith(" "))
            for stanza in done.stdout.strip().split("\n\n")]


STANZA = """Types: deb
URIs: http://mirror.invalid/debian
Suites: bookworm bookworm-updates
Components: main contrib
Architectures: amd64
Signed-By: /usr/share/keyrings/k.gpg
"""


class SourceListsTest(unittest.TestCase):
    def test_turns_a_stanza_into_sources_of_the_main_suite(self):
        self.assertEqual(derived({"sources.list.d/debian.sources": "# comment\n" + STANZA}), [{
            "Types": "deb-src", "URIs": "http://mirror.invalid/debian", "Suites": "bookworm",
            "Components": "main", "Signed-By": "/usr/share/keyrings/k.gpg"}])

    def test_turns_a_line_into_sources_of_the_main_suite(self):
        line = "deb [arch=amd64 signed-by=/k.gpg] http://mirror.invalid/debian bookworm main contrib # ours\n"
        self.assertEqual(derived({"sources.list": line}), [{
            "Types": "deb-src", "URIs": "http://mirror.invalid/debian", "Suites": "bookworm",
            "Components": "main", "Signed-By": "/k.gpg"}])

    def test_leaves_out_security_updates_and_strangers(self):
        self.assertEqual(derived({
            "sources.list": "deb http://mirror.invalid/security bookworm-security main\n"
                            "deb http://stranger.invalid/apt tool-bookworm main\n",
            "sources.list.d/stranger.sources": STANZA.replace("bookworm bookworm-updates", "nodistro")}), [])

    def test_leaves_out_what_is_switched_off(self):
        self.assertEqual(derived({
            "sources.list": "# deb http://mirror.invalid/debian bookworm main\n"
                            "deb cdrom:[Debian]/ bookworm main\n",
            "sources.list.d/debian.sources": STANZA + "Enabled: no\n"}), [])

    def test_does_not_need_source_entries_nor_repeat_them(self):
        stanza = STANZA.replace("Types: deb", "Types: deb deb-src")
        self.assertEqual(len(derived({"sources.list.d/a.sources": stanza + "\n" + stanza})), 1)

    def test_keeps_a_key_that_is_written_into_the_stanza(self):
        text = STANZA.replace("/usr/share/keyrings/k.gpg", "\n -----BEGIN\n .\n abc\n -----END")
        self.assertIn("Signed-By: \n -----BEGIN\n .\n abc\n -----END",
                      run({"sources.list.d/debian.sources": text}).stdout)

    def test_accepts_the_suite_under_another_name(self):
        text = STANZA.replace("bookworm bookworm-updates", "stable")
        self.assertEqual(derived({"sources.list.d/debian.sources": text}, "bookworm", "stable")[0]["Suites"],
                         "stable")

    def test_says_what_is_missing(self):
        done = run({})

        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, "no entry for the suite bookworm with the component main\n")


if __name__ == "__main__":
    vx_unittest.main()
