#!/usr/bin/env python3
"""Writes the interface definition (IDL) of the control interface, made of the header that clients include.

usage: make-idl.py IVxDSSource.h Identifiers.h OUTPUT.idl

The header is the one source: C and C++ clients include it, and all others get the type library that is compiled from
this output. A line of the header that is not understood is an error.
"""

import pathlib
import re
import sys

INTERFACE = re.compile(r'DECLARE_INTERFACE_IID_\((\w+), IUnknown, "([0-9A-F-]{36})"\)\s*\{(.*?)\n\};', re.S)
C_ONLY = re.compile(r"#ifndef __cplusplus\n.*?#endif\n", re.S)
METHOD = re.compile(r"STDMETHOD\((\w+)\)\(THIS(?:_ (.*))?\) PURE;")
IDENTIFIER = r"GUID {} = \{{\s*0x(\w+), 0x(\w+), 0x(\w+), \{{(.*?)\}}\}};"
TYPES = {"UINT": "unsigned int", "INT": "int", "BOOL": "long", "BSTR": "BSTR"}
# What is read before it is written; all other pointers only take a result.
IN_OUT = {"IsParameterArrayAvailable"}


def argument(method, text):
    found = re.fullmatch(r"(\w+)(\*?) (\w+)", text.strip())
    if not found or found[1] not in TYPES:
        raise ValueError(f"argument '{text}' of {method} is not understood")
    direction = "in" if not found[2] else "in, out" if method in IN_OUT else "out"
    return f"[{direction}] {TYPES[found[1]]}{found[2]} {found[3]}"


def methods(body):
    comment = []
    for line in map(str.strip, C_ONLY.sub("", body).splitlines()):
        found = METHOD.fullmatch(line)
        if found:
            text = " ".join(comment).replace("\\", "\\\\").replace('"', '\\"')
            arguments = ", ".join(argument(found[1], each) for each in found[2].split(",")) if found[2] else ""
            yield f'        [helpstring("{text}")]\n        HRESULT {found[1]}({arguments});\n'
            comment = []
        elif line.startswith("///"):
            comment.append(line.removeprefix("///").strip())
        elif line:
            raise ValueError(f"'{line}' is not understood")


def identifier(name, text):
    found = re.search(IDENTIFIER.format(name), text)
    if not found:
        raise ValueError(f"there is no {name}")
    last = [byte.strip().removeprefix("0x") for byte in found[4].split(",")]
    return "-".join([found[1], found[2], found[3], "".join(last[:2]), "".join(last[2:])])


def main():
    if len(sys.argv) != 4:
        print(__doc__, file=sys.stderr)
        return 2
    header, identifiers = (pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:3])
    found = INTERFACE.search(header)
    if not found:
        raise ValueError(f"there is no interface in {sys.argv[1]}")
    pathlib.Path(sys.argv[3]).write_text(f"""// Made of IVxDSSource.h by cmake/make-idl.py.

// What the system's own interface definitions say; they do not come with the cross compiler.
typedef wchar_t* BSTR;
typedef long HRESULT;
[local, object, uuid(00000000-0000-0000-C000-000000000046), pointer_default(unique)]
interface IUnknown
{{
    HRESULT QueryInterface([in] const void* riid, [out] void** object);
    unsigned long AddRef();
    unsigned long Release();
}};

[uuid({identifier("LIBID_VxDSSource", identifiers)}), version(1.0), helpstring("Vexa DirectShow Source")]
library VxDSSourceLib
{{
    importlib("stdole2.tlb");

    [object, uuid({found[2]}), pointer_default(unique), helpstring("Control of the filter and its camera")]
    interface {found[1]} : IUnknown
    {{
{"".join(methods(found[3]))}    }};

    [uuid({identifier("CLSID_VxDSSource", identifiers)}), helpstring("Vexa DirectShow Source")]
    coclass VxDSSource
    {{
        [default] interface {found[1]};
    }};
}};
""", encoding="utf-8")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except ValueError as error:
        sys.exit(f"make-idl.py: {error}")
