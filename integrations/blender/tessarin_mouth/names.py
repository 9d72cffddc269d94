"""Which shape key shows which shape, guessed from names."""

from __future__ import annotations

import re
from typing import Iterable

# What rigs put before the name of a mouth shape.
_PREFIXES = ("", "v", "vrcv", "viseme", "vis", "mouth", "lip", "phoneme", "phn", "fclmth",
             "blendshape", "blendshape1")

# Other names that rigs use, in the order in which they are tried.
_ALIASES = {
    "visemes": {"sil": ("silence", "rest", "neutral"), "PP": ("mbp", "bmp", "pbm"),
                "FF": ("fv", "f"), "DD": ("tdn",), "kk": ("kg", "k"), "CH": ("chjsh", "shch"),
                "SS": ("sz", "s"), "nn": ("nl", "n"), "RR": ("r",), "aa": ("ah", "a"),
                "E": ("eh", "ee"), "ih": ("i", "iy"), "oh": ("o", "ao"), "ou": ("u", "oo", "uw")},
    "vrm": {"aa": ("a",), "ih": ("i",), "ou": ("u",), "ee": ("e",), "oh": ("o",)},
    "preston-blair": {"MBP": ("pbm", "bmp"), "AI": ("a", "ai"), "WQ": ("w", "oo"),
                      "FV": ("f", "vf"), "etc": ("consonants", "cdgk"),
                      "rest": ("sil", "neutral")},
}


def _plain(name: str) -> str:
    return re.sub("[^a-z0-9]", "", name.lower())


def _side(name: str) -> str:
    """Left and right by one letter, as rigs write them."""
    return re.sub("(left|right)$", lambda side: side[0][0], name)


def guess_names(set_name: str, shapes: Iterable[str], keys: Iterable[str]) -> dict[str, str]:
    """The key for each shape that has one."""
    plain = {}
    for key in keys:
        plain.setdefault(_side(_plain(key)), key)
    found = {}
    for shape in shapes:
        names = (shape, *_ALIASES.get(set_name, {}).get(shape, ()))
        candidates = (prefix + _side(_plain(name)) for name in names for prefix in _PREFIXES)
        key = next((plain[each] for each in candidates if each in plain), None)
        if key is not None and key not in found.values():
            found[shape] = key
    return found
