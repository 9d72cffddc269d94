#!/usr/bin/env python3
"""Compares what the shared library exports with what the public headers declare.

usage: check_exports.py HEADER_FOLDER LIBRARY
"""

import pathlib
import re
import subprocess
import sys

DECLARATION = re.compile(r"\bTESSARIN_API\b(?!\s+extern)[^;(]*?\b(\w+)\s*\(")
# Weak symbols of the C++ runtime that a shared library carries whatever its visibility is.
RUNTIME = re.compile(r"^_Z|^__")


def declared(folder: pathlib.Path) -> set[str]:
    names = set()
    for header in folder.glob("*.h"):
        if header.name != "export.h":
            names.update(DECLARATION.findall(header.read_text(encoding="utf-8")))
    return names


def exported(library: str) -> set[str]:
    listing = subprocess.run(["nm", "--dynamic", "--defined-only", "--format=posix", library],
                             check=True, capture_output=True, text=True).stdout
    symbols = (line.split() for line in listing.splitlines())
    # A versioned library also lists the version itself, as an absolute symbol.
    return {name.split("@")[0] for name, kind, *_ in symbols if kind != "A"}


def main() -> int:
    published = declared(pathlib.Path(sys.argv[1]))
    found = exported(sys.argv[2])
    foreign = {name for name in found - published if not RUNTIME.match(name)}
    for name in sorted(published - found):
        print(f"declared but not exported: {name}")
    for name in sorted(foreign):
        print(f"exported but not declared: {name}")
    engine = sorted(name for name in found if name.startswith("_Z") and "tessarin" in name)
    for name in engine:
        print(f"engine symbol is visible: {name}")
    print(f"{len(published)} exports are declared")
    return 1 if not published or published - found or foreign or engine else 0


if __name__ == "__main__":
    sys.exit(main())
