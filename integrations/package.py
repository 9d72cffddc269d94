#!/usr/bin/env python3
"""Makes the archive of an integration: package.py blender|godot|unity OUTPUT.zip [LIBRARY]

LIBRARY is the shared library that goes into the package for Unity."""

import pathlib
import sys
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
SOURCES = (".py", ".toml", ".cs", ".asmdef", ".json", ".gd", ".cfg", ".md")


def sources(folder, place):
    for path in sorted(folder.rglob("*")):
        if path.suffix in SOURCES and "__pycache__" not in path.parts:
            yield path, f"{place}/{path.relative_to(folder)}"


def shapes(place):
    for path in sorted((ROOT / "data" / "shapes").glob("*.shapes")):
        yield path, f"{place}/{path.name}"


def blender(_library):
    yield from sources(HERE / "blender" / "tessarin_mouth", "tessarin_mouth")
    yield from shapes("tessarin_mouth/shapes")
    yield ROOT / "LICENSE", "tessarin_mouth/LICENSE"


def godot(_library):
    for engine in ("godot3", "godot4"):
        addon = f"{engine}/addons/tessarin"
        yield from sources(HERE / "godot" / engine, addon)
        yield from shapes(f"{addon}/shapes")
        yield ROOT / "LICENSE", f"{addon}/LICENSE"


def unity(library):
    place = "com.tessarin.mouth"
    yield from sources(HERE / "unity" / place, place)
    yield ROOT / "LICENSE", f"{place}/LICENSE.md"
    for name in ("en-us.model", "en-us-hearing.model", "en-us.calibration", "en-us.lexicon",
                 "en-us.trigrams"):
        yield ROOT / "data" / name, f"{place}/Data~/{name}"
    yield ROOT / "data" / "LICENSES.md", f"{place}/Data~/LICENSES.md"
    if library:
        # Without the version in its name, which is how Unity looks for it.
        name = library.name.split(".so")[0] + (".so" if ".so" in library.name else "")
        yield library.resolve(), f"{place}/Plugins/x86_64/{name}"


CONTENTS = {"blender": blender, "godot": godot, "unity": unity}


def main() -> int:
    if len(sys.argv) not in (3, 4) or sys.argv[1] not in CONTENTS:
        print(__doc__, file=sys.stderr)
        return 1
    output = pathlib.Path(sys.argv[2])
    library = pathlib.Path(sys.argv[3]) if len(sys.argv) == 4 else None
    output.parent.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(output, "w", zipfile.ZIP_DEFLATED) as archive:
        for path, name in CONTENTS[sys.argv[1]](library):
            archive.write(path, name)
    return 0


if __name__ == "__main__":
    sys.exit(main())
