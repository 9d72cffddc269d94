#!/usr/bin/env python3
"""Has another aligner find the words of recordings of which only the text is known.

usage: independent_words.py TOOL CORPUS [--set dev]

Writes NAME.words beside each NAME.wav of the set: lines `start_ms end_ms word`, as they stand beside
speech whose times are known. The aligner is pocketsphinx with its own model of American English;
only the words and their possible pronunciations are ours (from `TOOL transcribe`), so that both
aligners look for the same thing. A recording in which it does not find all words is left out, and
reported.
"""

import argparse
import itertools
import pathlib
import subprocess
import tempfile

from boundaries import read_corpus
from phoneme_errors import run, split_labels

MODEL = "/usr/share/pocketsphinx/model/en-us/en-us"
FRAME_MS = 10
# Its own 0.005 is meant for recognition, where a pause competes with words; a language weight makes
# 1e-15 of it, so a forced aligner drops short pauses and draws the words beside them over them. On
# speech whose times are known, 96 % of the ends of words at a pause are within 50 ms with 1, and
# 60 % with 0.005 (awb).
PAUSE_PROBABILITY = "1"
ARPABET = {"h": "HH", "j": "JH"}
MOST_PRONUNCIATIONS = 16


def spoken_words(tool: str, text: str) -> list[tuple[str, list[str]]]:
    """Each word with its pronunciations, as phones in ARPAbet with blanks between them."""
    words = []
    for token in run(tool, "transcribe", "--format", "json", "--text", text)["tokens"]:
        if token["kind"] == "word" and token["phonemes"]:
            ways = itertools.islice(itertools.product(*token["phonemes"]), MOST_PRONUNCIATIONS)
            phones = [[ARPABET.get(label, label.upper()) for label in split_labels("".join(way))]
                      for way in ways]
            words.append((token["text"], [" ".join(way) for way in phones if way]))
    return words


def name_of(utterance: int, word: int) -> str:
    return f"w{utterance}_{word}"


def grammar(utterance: int, num_words: int) -> str:
    """The words one after the other; the aligner puts silence between them where it hears some."""
    lines = [f"FSG_BEGIN u{utterance}", f"NUM_STATES {num_words + 1}", "START_STATE 0",
             f"FINAL_STATE {num_words}"]
    lines += [f"TRANSITION {i} {i + 1} 1.0 {name_of(utterance, i)}" for i in range(num_words)]
    return "\n".join([*lines, "FSG_END", ""])


def read_segments(path: pathlib.Path):
    """Yields the number of an utterance and its (word, first frame, frame after the last).

    A line has `number S score T score A score L score`, then for each word its first frame, two
    scores and its name, and at last the number of frames.
    """
    for line in path.read_text(encoding="utf-8").splitlines():
        fields = line.split()
        if "T" not in fields:
            continue
        number, fields = fields[0], fields[1:]
        while fields and fields[0] in "STAL":
            fields = fields[2:]
        starts, names = fields[0::4], fields[3::4]
        yield number, [(name, int(start), int(end)) for name, start, end
                       in zip(names, starts[:-1], starts[1:])]


def align(tool: str, recordings: list[dict]) -> None:
    """Aligns all recordings in one run, and writes what was found beside each."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        entries, texts = [], []
        for number, recording in enumerate(recordings):
            words = spoken_words(tool, recording["text"])
            texts.append([word for word, _ in words])
            for place, (_, ways) in enumerate(words):
                entries += [name_of(number, place) + (f"({way + 1})" if way else "") + f" {phones}"
                            for way, phones in enumerate(ways)]
            (folder / f"u{number}.fsg").write_text(grammar(number, len(words)), encoding="ascii")
        (folder / "words.dict").write_text("\n".join(entries) + "\n", encoding="ascii")
        (folder / "audio.ctl").write_text(
            "".join(f"{pathlib.Path(r['path']).resolve().with_suffix('')} 0 -1 {number}\n"
                    for number, r in enumerate(recordings)), encoding="utf-8")
        (folder / "grammar.ctl").write_text(
            "".join(f"u{number}\n" for number in range(len(recordings))), encoding="ascii")
        subprocess.run(
            ["pocketsphinx_batch", "-hmm", MODEL, "-dict", folder / "words.dict", "-adcin", "yes",
             "-adchdr", "44", "-cepext", ".wav", "-ctl", folder / "audio.ctl",
             "-fsgctl", folder / "grammar.ctl", "-fsgdir", folder, "-fsgext", ".fsg",
             "-hypseg", folder / "segments", "-beam", "1e-80", "-pbeam", "1e-80", "-wbeam", "1e-60",
             "-bestpath", "no", "-cmn", "batch", "-silprob", PAUSE_PROBABILITY,
             "-logfn", folder / "log"], check=True)
        found = dict(read_segments(folder / "segments"))
    for number, (recording, text) in enumerate(zip(recordings, texts)):
        target = pathlib.Path(recording["path"]).with_suffix(".words")
        segments = {name.split("(")[0]: times for name, *times in found.get(str(number), [])}
        try:
            times = [segments[name_of(number, place)] for place in range(len(text))]
        except KeyError:
            print(f"not found: {recording['path']}")
            target.unlink(missing_ok=True)
            continue
        target.write_text("".join(
            f"{start * FRAME_MS:.3f} {end * FRAME_MS:.3f} {word}\n"
            for (start, end), word in zip(times, text)), encoding="utf-8")


def main() -> None:
    parser = argparse.ArgumentParser(description="Find words with another aligner.")
    parser.add_argument("tool")
    parser.add_argument("corpus", type=pathlib.Path)
    parser.add_argument("--set", default="dev")
    arguments = parser.parse_args()
    recordings = [row for row in read_corpus(arguments.corpus)
                  if row["set"] == arguments.set and row["kind"] == "text"]
    if not recordings:
        raise SystemExit("no recordings of which only the text is known in this set")
    align(arguments.tool, recordings)


if __name__ == "__main__":
    main()
