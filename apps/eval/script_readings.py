#!/usr/bin/env python3
"""Measures how often an alignment finds out which reading of a number was said.

    PYTHONPATH=bindings/python TESSARIN_LIBRARY=build/dev/libtessarin.so \
        apps/eval/script_readings.py [--show]

Each sentence is spoken by espeak-ng in every way that is listed for its number, and aligned with the
text in digits. The share of 10 ms with the phoneme of an alignment with the spoken words is
reported, too: with one reading, the usual one, and with the choice.
"""

from __future__ import annotations

import array
import pathlib
import subprocess
import sys

import tessarin

ROOT = pathlib.Path(__file__).resolve().parents[2]
RATE = 22050
WAV_HEADER = 44

# The sentence, with a place for the number; the number; and how it is said.
CASES = (
    ("We will meet at {} tomorrow.", "9:00", ("nine o'clock", "nine")),
    ("The train leaves at {} in the morning.", "10:05", ("ten oh five", "five past ten")),
    ("It was {} when they came home.", "3:30", ("three thirty", "half past three")),
    ("Dinner will be ready at {} tonight.", "6:45", ("six forty five", "a quarter to seven")),
    ("She was waiting until {} for us.", "12:15", ("twelve fifteen", "quarter past twelve")),
    ("The house was built in {} by his father.", "1905",
     ("nineteen oh five", "nineteen hundred five", "nineteen five")),
    ("They moved away in {} with the children.", "2010",
     ("twenty ten", "two thousand ten", "two thousand and ten")),
    ("The company was sold in {} after all.", "2008", ("two thousand eight", "two thousand and eight")),
    ("Our room is number {} on the left.", "101",
     ("one oh one", "one hundred one", "one hundred and one")),
    ("He lives in apartment {} upstairs.", "305", ("three oh five", "three hundred five")),
    ("Take flight {} to London.", "447", ("four forty seven", "four four seven")),
    ("There were {} people in the hall.", "120", ("one hundred twenty", "one hundred and twenty")),
    ("I have told you {} times already.", "100", ("one hundred", "a hundred")),
    ("It is {} miles from here to the sea.", "1000", ("one thousand", "a thousand")),
    ("We sold {} tickets last night.", "1500", ("fifteen hundred", "one thousand five hundred")),
    ("The score was {} at the end.", "0", ("zero", "oh")),
    ("The answer is {} as far as I know.", "0.5", ("zero point five", "point five")),
    ("That will be {} please.", "$2.50",
     ("two dollars and fifty cents", "two fifty", "two dollars fifty")),
    ("The ticket costs {} at the door.", "$7.95", ("seven dollars and ninety five cents",
                                                   "seven ninety five")),
    ("She was born on May {} in Boston.", "5", ("fifth", "the fifth", "five")),
    ("Agent {} never came back.", "007", ("double oh seven", "zero zero seven")),
    ("Dial {} for an outside line.", "911", ("nine one one", "nine eleven")),
    ("Exactly {} books were lost.", "3,250",
     ("three thousand two hundred fifty", "three thousand two hundred and fifty")),
)


def speak(text: str) -> tessarin.Audio:
    wav = subprocess.run(["espeak-ng", "-v", "en-us", "--stdout", text], check=True,
                         stdout=subprocess.PIPE).stdout
    return tessarin.Audio.from_samples(array.array("h", wav[WAV_HEADER:len(wav) // 2 * 2]), RATE)


def track(result: tessarin.Result) -> dict[int, str]:
    return {time: each.label for each in result.phonemes
            for time in range(each.start_ms // 10, each.end_ms // 10)}


def agreement(found: dict[int, str], truth: dict[int, str]) -> float:
    return sum(found.get(time) == label for time, label in truth.items()) / max(len(truth), 1)


def main() -> int:
    engine = tessarin.Engine(data=ROOT / "data")
    right = {True: [0, 0], False: [0, 0]}  # by whether the usual reading was said
    shares: dict[str, list[float]] = {"one reading": [], "choice": []}
    for sentence, written, readings in CASES:
        for i, reading in enumerate(readings):
            said, text = sentence.format(reading), sentence.format(written)
            audio = speak(said)
            truth = track(engine.align(audio, said, literal=True))
            result = engine.align(audio, text)
            usual = engine.align(audio, text, one_reading=True)
            shares["one reading"].append(agreement(track(usual), truth))
            shares["choice"].append(agreement(track(result), truth))
            chosen = next((word.reading for word in result.words if word.reading), "")
            is_right = chosen.replace("uh clock", "o'clock") == reading
            right[i == 0][0] += is_right
            right[i == 0][1] += 1
            if "--show" in sys.argv[1:] and not is_right:
                print(f"{text}\n    said {reading}, found {chosen or 'nothing'}")
    for is_usual, (count, total) in right.items():
        print(f"{'first' if is_usual else 'other'} readings: {count} of {total} found")
    for way, found in shares.items():
        print(f"{way}: {100 * sum(found) / len(found):.1f} % of the time as in the truth")
    return 0


if __name__ == "__main__":
    sys.exit(main())
