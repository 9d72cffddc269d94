#!/usr/bin/env python3
"""Makes recordings with their texts from the dialogue of two voiced games.

    dialogue.py DIRECTORY

The Debian packages beneath-a-steel-sky and drascula are read where they are installed; one that is
not is left out, with a message. DIRECTORY receives `judge` and `train`, folders of pairs NAME.wav
(one channel, 16 bits, 11025 Hz) and NAME.txt, with a `corpus.tsv` as collect.py writes it. What is
in `judge` must never be trained on: of the first game the lines whose file has a number divisible
by 5, of the second the voices VB, BJ, L, B and T.

Actors sometimes say something other than the text, or nothing. A line is left out where its letters
do not fit the time in which somebody speaks.
"""

import argparse
import math
import pathlib
import re
import sys

import drascula_dialogue
import rnc
import sky_dialogue
from utterance import write_wave

SHORTEST_S = 0.4
LOWEST_LETTERS_PER_S, HIGHEST_LETTERS_PER_S = 5.0, 25.0
FEWEST_LETTERS = 4
# A sample this far from the middle is heard; the hiss of these recordings stays below.
AUDIBLE = 6
_SILENT = bytes(range(128 - AUDIBLE, 128 + AUDIBLE + 1))
_TO_SIGNED = bytes(value ^ 0x80 for value in range(256))


def to_16_bits(speech: bytes) -> bytes:
    samples = bytearray(2 * len(speech))
    samples[1::2] = speech.translate(_TO_SIGNED)
    return bytes(samples)


def plain_text(written: str) -> str:
    """The text in ordinary case: capitals are emphasis there, or all there is."""
    text = re.sub(r"[A-Z][A-Z']*[A-Z]|\bA\b", lambda word: word[0].lower(),
                  " ".join(written.split()))
    text = re.sub(r"\bi\b", "I", text.replace("`", "'"))
    return re.sub(r"(^\W*|[.!?]\s+)([a-z])", lambda start: start[1] + start[2].upper(), text)


def letters_per_second(text: str, speech: bytes, rate: int) -> float:
    heard = len(speech.strip(_SILENT)) / rate
    return len(re.findall("[A-Za-z]", text)) / heard if heard >= SHORTEST_S else math.inf


def fits(text: str, speech: bytes, rate: int) -> bool:
    return (len(re.findall("[A-Za-z]", text)) >= FEWEST_LETTERS and text.isascii()
            and LOWEST_LETTERS_PER_S <= letters_per_second(text, speech, rate)
            <= HIGHEST_LETTERS_PER_S)


def sky_lines():
    """(name, speaker, whether it is kept out, speech, text) of each line."""
    archive = sky_dialogue.Archive()
    tree = sky_dialogue.english_tree()
    for section, first in enumerate(sky_dialogue.SPEECH_OF_SECTION):
        messages = sky_dialogue.read_messages(
            archive.read(sky_dialogue.ENGLISH_TEXTS + section), tree)
        for number, text in enumerate(messages, first):
            if number in archive.entries:
                yield (f"sky-{number}", "sky", sky_dialogue.is_kept_out(number),
                       archive.read(number), text)


def drascula_lines():
    folder = drascula_dialogue.FOLDER
    tables = drascula_dialogue.read_tables((folder / "drascula.dat").read_bytes())
    for voice, messages in tables.items():
        for number, text in enumerate(messages):
            path = folder / f"{voice}{number}.ALS"
            if path.exists():
                yield (f"drascula-{voice}{number}", f"drascula-{voice or 'hero'}",
                       voice in drascula_dialogue.KEPT_OUT,
                       drascula_dialogue.speech(path.read_bytes()), text)


def write_set(lines, rate: int, directory: pathlib.Path, rows: dict) -> tuple[int, int]:
    """Writes the lines that fit; how many were written, and left out."""
    kept = left_out = 0
    for name, speaker, kept_out, speech, written in lines:
        text = plain_text(written)
        if not fits(text, speech, rate):
            left_out += 1
            continue
        kept += 1
        folder = "judge" if kept_out else "train"
        write_wave(directory / folder / f"{name}.wav", rate, to_16_bits(speech))
        (directory / folder / f"{name}.txt").write_text(f"{text}\n", encoding="ascii")
        rows[folder].append((f"{name}.wav", speaker, "dev" if kept_out else "train", "text", text))
    return kept, left_out


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("directory", type=pathlib.Path)
    directory = parser.parse_args().directory
    rows = {"judge": [], "train": []}
    for folder in rows:
        (directory / folder).mkdir(parents=True, exist_ok=True)
    for package, source, lines in (("beneath-a-steel-sky", sky_dialogue, sky_lines),
                                   ("drascula", drascula_dialogue, drascula_lines)):
        if not source.FOLDER.exists():
            print(f"{source.FOLDER} is missing: install the package {package}", file=sys.stderr)
            continue
        try:
            kept, left_out = write_set(lines(), source.RATE, directory, rows)
        except rnc.Damaged as reason:
            raise SystemExit(f"{source.FOLDER}: {reason}") from reason
        print(f"{package}: {kept} lines, without {left_out} whose text does not fit the speech",
              file=sys.stderr)
    for folder, lines in rows.items():
        with open(directory / folder / "corpus.tsv", "w", encoding="utf-8", newline="\n") as output:
            output.writelines("\t".join(row) + "\n" for row in lines)


if __name__ == "__main__":
    main()
