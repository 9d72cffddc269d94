#!/usr/bin/env python3
"""Measures what reading a text as a script does to its alignment.

    PYTHONPATH=bindings/python TESSARIN_LIBRARY=build/dev/libtessarin.so \
        apps/eval/script_alignments.py

The truth is the alignment of what is said, in words. The same recording is aligned with the text as
it is written: literal, as a script with one reading, and as a script whose readings the recording
chooses from. The shares of 10 ms that have the same phoneme are compared. Recordings are the
prompts of the trainer's development set, with their transcript as it comes with them, and the lines
of tests/text/script_lines.tsv that are held out, spoken by espeak-ng.
"""

from __future__ import annotations

import array
import gzip
import pathlib
import subprocess
import sys
import zlib
from typing import Iterator

import tessarin

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "apps/train/corpus"))
import prompts  # noqa: E402  pylint: disable=wrong-import-position

ESPEAK_RATE = 22050
WAYS = {"literal": {"literal": True}, "one reading": {"one_reading": True}, "script": {}}
WAV_HEADER = 44
Spoken = tuple[tessarin.Audio, int, str, str]


def development_prompts() -> Iterator[Spoken]:
    """Recording, its length in ms, what is written and what is said."""
    with gzip.open(prompts.TRANSCRIPT, "rt", encoding="utf-8") as lines:
        written = dict(line.rstrip("\n").split(": ", 1) for line in lines if ": " in line)
    for name, said in prompts.read_prompts():
        if prompts.is_development(name):
            samples = array.array("h", prompts.read_recording(name))
            yield (tessarin.Audio.from_samples(samples, prompts.RATE),
                   len(samples) * 1000 // prompts.RATE, written[name], said)


def held_out_lines() -> Iterator[Spoken]:
    table = ROOT / "tests/text/script_lines.tsv"
    for line in table.read_text(encoding="utf-8").splitlines():
        written, _, readings = line.partition("\t")
        said = readings.split(" | ")[0]
        if not said or zlib.crc32(written.encode()) % 3 != 0:
            continue
        wav = subprocess.run(["espeak-ng", "-v", "en-us", "--stdout", said], check=True,
                             stdout=subprocess.PIPE).stdout
        samples = array.array("h", wav[WAV_HEADER:len(wav) // 2 * 2])
        yield (tessarin.Audio.from_samples(samples, ESPEAK_RATE),
               len(samples) * 1000 // ESPEAK_RATE, written.replace("\\n", "\n"), said)


def phonemes(engine: tessarin.Engine, audio: tessarin.Audio, length: int, text: str,
             **reading: bool) -> list[str]:
    """The phoneme of each 10 ms; silence where the text is lost."""
    track = ["x"] * (length // 10 + 1)
    try:
        result = engine.align(audio, text, **reading)
    except tessarin.RecognitionFailed as failure:
        result = failure.result
    except tessarin.TessarinError:
        return track
    for phoneme in result.phonemes:
        for i in range(phoneme.start_ms // 10, min(phoneme.end_ms // 10, len(track))):
            track[i] = phoneme.label
    return track


def main() -> int:
    engine = tessarin.Engine(data=ROOT / "data")
    for name, recordings in (("prompts", development_prompts()), ("lines", held_out_lines())):
        shares: dict[str, list[float]] = {way: [] for way in WAYS}
        for audio, length, written, said in recordings:
            truth = phonemes(engine, audio, length, said, literal=True)
            for way, found in shares.items():
                track = phonemes(engine, audio, length, written, **WAYS[way])
                found.append(sum(a == b for a, b in zip(track, truth)) / len(truth))
        for way, found in shares.items():
            whole = sum(share > 0.95 for share in found)
            print(f"{name}, {way}: {100 * sum(found) / len(found):.1f} % of the time as in the "
                  f"truth; {whole} of {len(found)} recordings nearly whole")
    return 0


if __name__ == "__main__":
    sys.exit(main())
