#!/usr/bin/env python3
"""Makes the lexicon text of the engine from the CMU pronouncing dictionary.

    make_lexicon.py DICTIONARY OUTPUT

DICTIONARY is a text of lines `word PH0 PH1 ...` (the dictionary's own form), or the index.js of
the npm package cmu-pronouncing-dictionary, which has lines `word: 'PH0 PH1 ...',`. A second
pronunciation of a word is called `word(2)`. OUTPUT has lines `WORD=phonemes`, sorted without
regard to case; the pronunciations of a word stay together and in the dictionary's order, the
preferred one first. Stress is dropped, and with it pronunciations that differ in nothing else.
"""

import argparse
import re
import sys

from phonemes import from_arpabet

_TEXT_LINE = re.compile(r"(?P<word>\S+)\s+(?P<phones>[A-Z].*)")
_SCRIPT_LINE = re.compile(r"""\s+(["']?)(?P<word>\S+)\1: ["'](?P<phones>[^"']+)["'],?""")
_VARIANT_NUMBER = re.compile(r"\(\d+\)$")


def read_entries(lines):
    """The (word, phones) pairs of a dictionary, in its order."""
    for line in lines:
        match = _SCRIPT_LINE.match(line) or _TEXT_LINE.match(line)
        if match:
            word = _VARIANT_NUMBER.sub("", match["word"]).upper()
            yield word, match["phones"].split("#")[0].split()


def build_lexicon(entries):
    """Word -> its different pronunciations, the preferred one first."""
    lexicon = {}
    for word, phones in entries:
        pronunciation = "".join(map(from_arpabet, phones))
        variants = lexicon.setdefault(word, [])
        if pronunciation not in variants:
            variants.append(pronunciation)
    return lexicon


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("dictionary")
    parser.add_argument("output")
    arguments = parser.parse_args()

    with open(arguments.dictionary, encoding="utf-8") as source:
        lexicon = build_lexicon(read_entries(source))
    if len(lexicon) < 100000:
        sys.exit(f"{arguments.dictionary}: only {len(lexicon)} words, not the whole dictionary")
    with open(arguments.output, "w", encoding="ascii", newline="\n") as output:
        # The look-up compares bytes, so the order is that of the bytes and not of a locale.
        for word in sorted(lexicon, key=lambda word: word.encode("ascii")):
            output.writelines(f"{word}={pronunciation}\n" for pronunciation in lexicon[word])


if __name__ == "__main__":
    main()
