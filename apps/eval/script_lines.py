#!/usr/bin/env python3
"""Measures how many lines that people write are read as a person would say them.

    PYTHONPATH=bindings/python TESSARIN_LIBRARY=build/dev/libtessarin.so \
        apps/eval/script_lines.py [--literal] [--show] [--least PERCENT] [TABLE]

TABLE has a line, a tab and its readings; without one it is tests/text/script_lines.tsv. A line is
right when what it says can be what one of its readings says, phoneme by phoneme, pauses left out.
A third of the lines is held out by a checksum: `--show` lists failures among the others only, so
that rules are not written for the lines that judge them.
"""

from __future__ import annotations

import argparse
import pathlib
import re
import sys
import zlib

import tessarin

ROOT = pathlib.Path(__file__).resolve().parents[2]
PHONEME = re.compile(r"[A-Z]{2}|[a-z]")
UNITS = ("zero one two three four five six seven eight nine ten eleven twelve thirteen fourteen "
         "fifteen sixteen seventeen eighteen nineteen").split()
TENS = "twenty thirty forty fifty sixty seventy eighty ninety".split()
ORDINALS = "first second third fourth fifth sixth seventh eighth ninth tenth".split()


def said_differently() -> dict[str, str]:
    """Number words whose names in the language differ from their entries in the lexicon, and a
    text that says the former."""
    texts = {word: str(number) for number, word in enumerate(UNITS)}
    texts |= {word: str(20 + 10 * number) for number, word in enumerate(TENS)}
    texts |= {word: f"{number + 1}{'st nd rd'.split()[number] if number < 3 else 'th'}"
              for number, word in enumerate(ORDINALS)}
    return texts | {"twentieth": "20th"}


def scale_words(engine: tessarin.Engine, literal: dict[str, bool]) -> dict[str, str]:
    """Likewise for words that only stand beside a number: what follows the one that is said."""
    texts = {"hundred": "100", "thousand": "1000", "million": "1000000", "billion": "1000000000",
             "dollar": "$1", "dollars": "$2", "percent": "1%"}
    return {word: phonemes(engine, text, **literal)[-1][0] for word, text in texts.items()}


def phonemes(engine: tessarin.Engine, text: str, **options: bool) -> list[tuple[str, ...]]:
    return [group for token in engine.transcribe(text, **options) for group in token.phonemes]


def make_engine(literal: dict[str, bool]) -> tessarin.Engine:
    engine = tessarin.Engine(data=ROOT / "data")
    names = {word: phonemes(engine, text, **literal)[0][0]
             for word, text in said_differently().items()}
    names |= scale_words(engine, literal)
    for word, name in names.items():
        known = phonemes(engine, word, **literal)[0]
        engine.set_word(word, "|".join(dict.fromkeys((*known, name))))
    return engine


class Sounds:
    """What a text may say, as states between phonemes: a group, an alternative and a place in it."""

    def __init__(self, groups: list[tuple[str, ...]]) -> None:
        self._groups = [[[p for p in PHONEME.findall(each) if p != "x"] for each in group]
                        for group in groups]
        self._groups = [[each for each in group] for group in self._groups if any(group)]

    def start(self) -> tuple[int, int, int]:
        return (0, -1, 0)

    def step(self, state: tuple[int, int, int]) -> list[tuple[str | None, tuple[int, int, int]]]:
        """The next phonemes, or None for what takes none, and the states after them."""
        group, alternative, place = state
        if group == len(self._groups):
            return []
        if alternative < 0:
            return [(None, (group, i, 0)) for i in range(len(self._groups[group]))]
        sounds = self._groups[group][alternative]
        if place == len(sounds):
            return [(None, (group + 1, -1, 0))]
        return [(sounds[place], (group, alternative, place + 1))]

    def is_end(self, state: tuple[int, int, int]) -> bool:
        return state[0] == len(self._groups)


def may_be_same(left: Sounds, right: Sounds) -> bool:
    """Whether both can say the same."""
    waiting = [(left.start(), right.start())]
    seen = set(waiting)
    while waiting:
        a, b = waiting.pop()
        if left.is_end(a) and right.is_end(b):
            return True
        pairs = []
        for sound, after in left.step(a):
            if sound is None:
                pairs.append((after, b))
            else:
                pairs += [(after, behind) for other, behind in right.step(b) if other == sound]
        pairs += [(a, behind) for other, behind in right.step(b) if other is None]
        for pair in pairs:
            if pair not in seen:
                seen.add(pair)
                waiting.append(pair)
    return False


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("table", nargs="?", default=ROOT / "tests/text/script_lines.tsv")
    parser.add_argument("--literal", action="store_true", help="without the reader of scripts")
    parser.add_argument("--show", action="store_true", help="list the failures that may be seen")
    parser.add_argument("--least", type=float, default=0.0, metavar="PERCENT",
                        help="fail when fewer are right")
    options = parser.parse_args()
    can_choose = hasattr(tessarin, "SCRIPT_FORMATS")
    plain = {"literal": True} if can_choose else {}
    usual = {"one_reading": True} if can_choose else {}  # the reading that is judged is the first
    engine = make_engine(plain)
    counts = {True: [0, 0], False: [0, 0]}
    for line in pathlib.Path(options.table).read_text(encoding="utf-8").splitlines():
        if line.startswith("# ") and "\t" not in line:
            continue
        written, _, readings = line.partition("\t")
        said = Sounds(phonemes(engine, written.replace("\\n", "\n"),
                               **(plain if options.literal else usual)))
        right = any(may_be_same(said, Sounds(phonemes(engine, each, **plain)))
                    for each in readings.split(" | "))
        is_held_out = zlib.crc32(written.encode()) % 3 == 0
        counts[is_held_out][0] += right
        counts[is_held_out][1] += 1
        if options.show and not right and not is_held_out:
            print(f"{written}\n    {readings}")
    for name, (right, count) in (("seen", counts[False]), ("held out", counts[True])):
        print(f"{name}: {right} of {count} lines right, {100 * right / count:.1f} %")
    right, count = (sum(each) for each in zip(*counts.values()))
    print(f"all: {right} of {count} lines right, {100 * right / count:.1f} %")
    return 0 if 100 * right >= options.least * count else 1


if __name__ == "__main__":
    sys.exit(main())
