#!/usr/bin/env python3
"""Holds the #include lines to the order of the folders.

A folder uses itself, the folders to its left and include/. A folder's exports.cpp belongs to the
shared library and may use every folder. include/ uses only itself and the standard library, and the
command-line tool only include/ and itself.
"""

import pathlib
import re
import sys

FOLDERS = ["platform", "base", "audio", "features", "model", "adaptation", "results",
           "articulation", "text", "recognition", "commands", "mouth", "session", "c_api"]
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def allowed_roots(path: pathlib.PurePath) -> list[str]:
    if path.parts[0] == "include":
        return ["tessarin"]
    if path.parts[:2] == ("apps", "tessarin"):
        return ["tessarin", "apps"]
    top = path.parts[1]
    if path.name.endswith("exports.cpp"):
        return ["tessarin", *FOLDERS]
    return ["tessarin", *FOLDERS[:FOLDERS.index(top) + 1]]


def main() -> int:
    root = pathlib.Path(sys.argv[1])
    checked = 0
    faults = []
    for top in ["include", *(f"src/{folder}" for folder in FOLDERS), "apps/tessarin"]:
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            checked += 1
            relative = path.relative_to(root)
            roots = allowed_roots(relative)
            for included in INCLUDE.findall(path.read_text(encoding="utf-8")):
                if included.split("/")[0] not in roots:
                    faults.append(f"{relative}: may not include {included}")
    if checked == 0:
        faults.append("no source files found")
    print("\n".join(faults) or f"{checked} files keep the order of the folders")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
