"""Maps from phonemes to the shapes of a face, in the form of the files in shapes/."""

from __future__ import annotations

import pathlib
from dataclasses import dataclass, field

_HERE = pathlib.Path(__file__).resolve().parent


class ShapeMapError(Exception):
    """A map that does not read; the text names the line."""


@dataclass
class ShapeMap:
    name: str = ""
    shapes: list[str] = field(default_factory=list)
    rest: str = ""
    shares: dict[str, dict[str, float]] = field(default_factory=dict)

    def mix(self, weights: dict[str, float]) -> dict[str, float]:
        """The weight of each shape that a mixture of phonemes shows, 0 to 1."""
        shown: dict[str, float] = {}
        for phoneme, weight in weights.items():
            for shape, share in self.shares.get(phoneme, {}).items():
                shown[shape] = shown.get(shape, 0.0) + weight * share
        return {shape: min(1.0, weight) for shape, weight in shown.items()}


def _shares(words: list[str], shapes: list[str]) -> dict[str, float]:
    shares: dict[str, float] = {}
    shape = ""
    for word in words:
        if word in shapes:
            shape = word
            shares[shape] = 1.0
        elif shape:
            shares[shape] = float(word)
        else:
            raise ValueError(f"{word} is not one of the shapes")
    return shares


def read_shape_map(text: str) -> ShapeMap:
    """Raises ShapeMapError."""
    result = ShapeMap()
    for number, line in enumerate(text.splitlines(), 1):
        words = line.split("#", 1)[0].split()
        if not words:
            continue
        head, *rest = words
        try:
            if head == "set":
                result.name = rest[0]
            elif head == "shapes":
                result.shapes += rest
            elif head == "rest":
                result.rest = rest[0]
            elif head != "closed":
                result.shares[head] = _shares(rest, result.shapes)
        except (IndexError, ValueError) as error:
            raise ShapeMapError(f"line {number} of the shape map: {error}") from error
    if not result.shapes:
        raise ShapeMapError("the shape map has no line that begins with shapes")
    result.rest = result.rest or result.shapes[0]
    return result


def load_shape_map(name: str) -> ShapeMap:
    """A built-in map by the name of its set. The archive has the maps beside this file; a working
    tree has them in data/."""
    for folder in (_HERE / "shapes", _HERE.parents[2] / "data" / "shapes"):
        path = folder / f"{name}.shapes"
        if path.exists():
            return read_shape_map(path.read_text(encoding="utf-8"))
    raise ShapeMapError(f"the shape map {name} is missing; install the add-on again from its zip")


SETS = ("visemes", "arkit", "vrm", "switches", "preston-blair")
