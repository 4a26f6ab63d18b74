#!/usr/bin/env python3
"""Checks every #include below Libraries/ and Programs/ against the table in cmake/include-rules.

usage: check-includes.py [PROJECT_FOLDER] [--rules FILE]

Prints one line for each include that is not allowed and ends with 1 if there is any.
"""

import argparse
import dataclasses
import pathlib
import re
import sys

SUFFIXES = {".h", ".hpp", ".inl", ".cpp", ".c", ".rc"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')

# Headers that start threads, read clocks or touch files. <chrono> has durations, too, and <cstdio> formats,
# too: what else they have is looked for by name, see CLOCK and FILE below.
IMPURE = {
    "thread", "future", "condition_variable", "stop_token", "semaphore", "barrier", "latch", "ctime",
    "fstream", "filesystem", "iostream", "syncstream", "csignal", "execution",
}
STANDARD = IMPURE | set("""
    algorithm any array atomic bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
    climits clocale cmath cstdio codecvt compare complex concepts coroutine csetjmp cstdarg cstddef cstdint
    cstdlib cstring cuchar cwchar cwctype deque exception expected format forward_list functional
    initializer_list iomanip ios iosfwd istream iterator limits list locale map memory memory_resource
    mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator set
    shared_mutex source_location span sstream stack stdexcept streambuf string string_view system_error
    tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
    version""".split())
POSIX = re.compile(
    r"(sys|net|netinet|netpacket|arpa|linux)/.*|(unistd|fcntl|poll|pthread|ifaddrs|signal|dlfcn|time|errno|sched|netdb)\.h")
# Neither the standard's nor the system's, or so special that a row has to name it.
NAMED_ONLY = re.compile(
    r"(opencv2|CLI|gtest|gmock|benchmark)/.*|pugixml\.hpp|zlib\.h|png\.h|gdiplus.*"
    r"|winsock2?\.h|ws2.*\.h|mswsock\.h|iphlpapi\.h|.*intrin\.h")
CLOCK = re.compile(r"\b\w*_clock\s*::\s*now\b")
FILE = re.compile(r"\b(fopen|freopen|tmpfile|printf|fprintf|puts|fputs)\s*\(")


@dataclasses.dataclass
class Row:
    files: str
    may: list
    system: list
    patterns: list = dataclasses.field(default_factory=list)


def pattern(name):
    """A rule's name as a regular expression over paths from Libraries/."""
    if "*" not in name and "." not in name.rsplit("/", 1)[-1]:
        return re.compile(re.escape(name) + "/.*")
    parts = (".*" if part == "**" else "[^/]*" if part == "*" else re.escape(part)
             for part in re.split(r"(\*\*|\*)", name))
    return re.compile("".join(parts))


def fits(patterns, path):
    return any(each.fullmatch(path) for each in patterns)


class Rules:
    def __init__(self, text):
        self.rows = []
        self.lists = {}
        for number, line in enumerate(text.splitlines(), 1):
            line = line.split("#", 1)[0].strip()
            if not line:
                continue
            if line.startswith("@") and "|" not in line:
                name, _, names = line.partition("=")
                self.lists[name.strip()] = names.split()
                continue
            cells = [cell.strip() for cell in line.split("|")]
            if len(cells) != 3:
                raise ValueError(f"include-rules:{number}: a row has three cells")
            self.rows.append(Row(cells[0], cells[1].split(), cells[2].split()))
        for row in self.rows:
            row.patterns = [pattern(name) for name in self.names([row.files])]

    def names(self, names):
        return [each for name in names for each in self.lists.get(name, [name])]

    def row_of(self, path):
        return next((row for row in self.rows if fits(row.patterns, path)), None)

    def allows(self, row, path):
        target = self.row_of(path)
        if target is row:
            return True
        # Whoever may include a whole folder still does not get a single file of it that has a row of its
        # own: nobody includes the composition root.
        names = self.names(row.may)
        if target is not None and "." in target.files:
            names = [name for name in names if "." in name or "*" in name]
        return fits([pattern(name) for name in names], path)

    def allows_system(self, row, header):
        if fits([pattern(name) for name in row.system if "." in name or "/" in name], header):
            return True
        if NAMED_ONLY.fullmatch(header):
            return "any" in row.system
        if header in STANDARD:
            return "any" in row.system or "standard" in row.system or (
                "pure" in row.system and header not in IMPURE)
        if POSIX.fullmatch(header) and "posix" in row.system:
            return True
        return "any" in row.system or ("windows" in row.system and header.split("/")[0] not in ("sys", "net"))


class Check:
    def __init__(self, root, rules):
        self.root = root
        self.rules = rules
        self.complaints = []

    def complain(self, file, number, what, remedy):
        place = file.relative_to(self.root).as_posix()
        self.complaints.append(f"{place}:{number}: {what}; {remedy} (the table is cmake/include-rules)")

    def quoted(self, file, number, row, path):
        # A program's own headers are nobody else's business: either way of naming them is clear.
        if row.files == "Programs" and ((file.parent / path).is_file() or (self.root / "Programs" / path).is_file()):
            return
        if not (self.root / "Libraries" / path).is_file():
            self.complain(file, number, f'"{path}" is no file below Libraries/',
                          "write the path from Libraries/, and <...> for headers that are not ours")
        elif not self.rules.allows(row, path):
            may = " ".join(self.rules.names(row.may)) or "nothing else of ours"
            self.complain(file, number, f'{row.files} may not include "{path}"',
                          f"it may include: {may}. Move the code, or take what is needed as an argument")

    def angled(self, file, number, row, header):
        if (self.root / "Libraries" / header).is_file():
            self.complain(file, number, f"<{header}> is ours", f'write "{header}"')
        elif not self.rules.allows_system(row, header):
            self.complain(file, number, f"{row.files} may not include <{header}>",
                          f"it may include: {' '.join(row.system)}. Move the code, or take what is needed "
                          "as an argument")

    def check_file(self, file, path):
        row = self.rules.row_of(path)
        if row is None:
            self.complain(file, 1, "no row fits this file", "add one, and tell Docs/Architecture.md")
            return
        text = file.read_text(encoding="utf-8", errors="replace")
        for number, line in enumerate(text.splitlines(), 1):
            found = INCLUDE.match(line)
            if found and found[1]:
                self.quoted(file, number, row, found[1])
            elif found:
                self.angled(file, number, row, found[2])
            elif "pure" in row.system and CLOCK.search(line):
                self.complain(file, number, f"{row.files} may not read a clock", "take the time as an argument")
            elif "pure" in row.system and FILE.search(line):
                self.complain(file, number, f"{row.files} may not touch files", "take or return the contents")

    def run(self):
        for top, prefix in (("Libraries", ""), ("Programs", "Programs/")):
            for file in sorted((self.root / top).rglob("*")):
                if file.suffix in SUFFIXES:
                    self.check_file(file, prefix + file.relative_to(self.root / top).as_posix())
        return self.complaints


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    here = pathlib.Path(__file__).resolve().parent
    parser.add_argument("root", nargs="?", type=pathlib.Path, default=here.parent)
    parser.add_argument("--rules", type=pathlib.Path, default=here / "include-rules")
    arguments = parser.parse_args()

    complaints = Check(arguments.root.resolve(), Rules(arguments.rules.read_text(encoding="utf-8"))).run()
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
