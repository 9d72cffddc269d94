#!/usr/bin/env python3
"""Makes a Python wheel with the library and the data inside.

usage: wheel.py LIBRARY LIBSNDFILE LICENSES_OF_READERS SOURCE_FOLDER OUTPUT_FOLDER
"""

import base64
import hashlib
import pathlib
import platform
import re
import subprocess
import sys
import zipfile

# What a manylinux system has, by PEP 600; the library brings all else.
ALLOWED = {"libc.so.6", "libm.so.6", "libpthread.so.0", "libdl.so.2", "libz.so.1",
           "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}
MOMENT = (2020, 1, 1, 0, 0, 0)  # the same wheel from the same files


def tag_of(libraries: list[pathlib.Path]) -> str:
    """manylinux_2_N for the newest symbol of the C library that is used."""
    listing = "".join(subprocess.run(["objdump", "-p", str(library)], check=True,
                                     capture_output=True, text=True).stdout
                      for library in libraries)
    foreign = set(re.findall(r"NEEDED\s+(\S+)", listing)) - ALLOWED
    if foreign:
        sys.exit(f"the wheel needs {', '.join(sorted(foreign))}, which not every system has")
    newest = max((int(minor) for minor in re.findall(r"GLIBC_2\.(\d+)", listing)), default=17)
    return f"manylinux_2_{max(newest, 17)}_{platform.machine()}"


def contents(library: pathlib.Path, sndfile: pathlib.Path,
             source: pathlib.Path) -> dict[str, bytes]:
    files = {f"tessarin/{path.name}": path.read_bytes()
             for path in (source / "bindings/python/tessarin").iterdir()
             if path.suffix in (".py", ".typed")}
    files["tessarin/lib/libtessarin.so.0"] = library.read_bytes()
    files["tessarin/lib/libsndfile.so.1"] = sndfile.read_bytes()
    data = source / "data"
    for path in data.rglob("*"):
        if path.is_file() and "sentences" not in path.parts:
            files[f"tessarin/data/{path.relative_to(data).as_posix()}"] = path.read_bytes()
    return files


def record_line(name: str, content: bytes) -> str:
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(content)}\n"


def main() -> None:
    library, sndfile, licenses, source, output = map(pathlib.Path, sys.argv[1:])
    project = (source / "bindings/python/pyproject.toml").read_text(encoding="utf-8")
    version = re.search(r'^version = "(.*)"', project, re.M)[1]
    summary = re.search(r'^description = "(.*)"', project, re.M)[1]
    needs = re.search(r'^requires-python = "(.*)"', project, re.M)[1]
    tag = tag_of([library, sndfile])
    info = f"tessarin-{version}.dist-info"
    files = contents(library, sndfile, source)
    files[f"{info}/LICENSE"] = (source / "LICENSE").read_bytes()
    files[f"{info}/LICENSES-of-readers.txt"] = licenses.read_bytes()
    files[f"{info}/METADATA"] = (
        f"Metadata-Version: 2.1\nName: tessarin\nVersion: {version}\nSummary: {summary}\n"
        f"License: MIT\nRequires-Python: {needs}\n"
        'Provides-Extra: arrays\nRequires-Dist: numpy; extra == "arrays"\n'
        "Description-Content-Type: text/markdown\n\n").encode() + (source / "README.md").read_bytes()
    files[f"{info}/WHEEL"] = (f"Wheel-Version: 1.0\nGenerator: tessarin\nRoot-Is-Purelib: false\n"
                              f"Tag: py3-none-{tag}\n").encode()
    record = "".join(record_line(name, files[name]) for name in sorted(files))
    files[f"{info}/RECORD"] = (record + f"{info}/RECORD,,\n").encode()
    output.mkdir(parents=True, exist_ok=True)
    path = output / f"tessarin-{version}-py3-none-{tag}.whl"
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name in sorted(files):
            entry = zipfile.ZipInfo(name, MOMENT)
            entry.external_attr = (0o755 if ".so" in name else 0o644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            wheel.writestr(entry, files[name])
    print(path)


if __name__ == "__main__":
    main()
