#!/usr/bin/env python3
"""Prints apt sources for Debian's source packages, derived from the machine's own apt sources.

Reads /etc/apt/sources.list and sources.list.d (both formats) and keeps, of every enabled binary entry,
the main suite and the component main. Updates and security are left out on purpose: one suite always
serves the source that belongs to its index.

usage: source-lists.py SUITE... [--root DIRECTORY]     (for instance: source-lists.py bookworm stable)
"""

import argparse
import pathlib
import re
import sys


def stanzas_of(text):
    """The deb822 stanzas of a file, as lists of (field, value with its continuation lines)."""
    for block in re.split(r"\n[ \t]*\n", text):
        fields = []
        for line in block.splitlines():
            if line.startswith("#"):
                continue
            if line[:1] in " \t" and fields:
                fields[-1][1] += "\n" + line
            elif ":" in line:
                name, value = line.split(":", 1)
                fields.append([name.strip(), value.strip()])
        if fields:
            yield {name.lower(): (name, value) for name, value in fields}


def from_deb822(text, suites):
    for stanza in stanzas_of(text):
        def value(field, default="", stanza=stanza):
            return stanza.get(field, (field, default))[1]

        if value("enabled", "yes").lower() in ("no", "false", "off", "0", "without", "disable"):
            continue
        kept = [suite for suite in value("suites").split() if suite in suites]
        if "deb" not in value("types").split() or not kept or "main" not in value("components").split():
            continue
        stanza["types"] = ("Types", "deb-src")
        stanza["suites"] = ("Suites", " ".join(kept))
        stanza["components"] = ("Components", "main")
        stanza.pop("architectures", None)
        stanza.pop("enabled", None)
        yield "\n".join(f"{name}: {text}" for name, text in stanza.values())


def from_list(text, suites):
    for line in text.splitlines():
        match = re.match(r"\s*deb\s+(?:\[([^\]]*)\]\s*)?(\S+)\s+(\S+)\s+([^#]*)", line)
        if not match:
            continue
        options, address, suite, components = match.groups()
        if address.startswith("cdrom:") or suite not in suites or "main" not in components.split():
            continue
        lines = ["Types: deb-src", f"URIs: {address}", f"Suites: {suite}", "Components: main"]
        for option in (options or "").split():
            name, _, value = option.partition("=")
            if name == "signed-by":
                lines.append(f"Signed-By: {value}")
            elif name == "trusted":
                lines.append(f"Trusted: {value}")
        yield "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("suites", nargs="+")
    parser.add_argument("--root", default="/etc/apt", type=pathlib.Path)
    arguments = parser.parse_args()

    found = []
    lists = [arguments.root / "sources.list", *sorted((arguments.root / "sources.list.d").glob("*.list"))]
    for path in lists:
        if path.is_file():
            found += from_list(path.read_text(encoding="utf-8"), arguments.suites)
    for path in sorted((arguments.root / "sources.list.d").glob("*.sources")):
        found += from_deb822(path.read_text(encoding="utf-8"), arguments.suites)

    if not found:
        print(f"no entry for the suite {arguments.suites[0]} with the component main", file=sys.stderr)
        return 1
    print("\n\n".join(dict.fromkeys(found)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
