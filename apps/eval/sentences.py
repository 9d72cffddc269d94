#!/usr/bin/env python3
"""Measures how well sentences are found among other speech.

usage: sentences.py TOOL FOLDER [--rounds N] [--between N] [--unsaid N] [--least-score X]

Each round puts a recording together from prompts of one speaker: twelve that the model was not
trained on, of four words and more, with up to N prompts of other words between each two. The text
has the sentences in the order in which they are said and, among them, N that are not said. A
sentence is found when what is reported overlaps the middle of it; false is what is reported of one
that is not said, or elsewhere. Times are compared with where the prompt is louder than its silence.

FOLDER receives the recordings, their texts and what the tool finds.
"""

import argparse
import array
import json
import pathlib
import random
import re
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "train" / "corpus"))
import prompts  # noqa: E402
from utterance import write_wave  # noqa: E402

SENTENCES = 12
FEWEST_WORDS = 4
GAP_MS = 300
FRAME = prompts.RATE // 100
LOUD = 300  # mean of the magnitudes of 16-bit samples


def loud_part(samples):
    """The first and the last frame of 10 ms that are not silence, in samples."""
    loud = [i for i in range(0, len(samples), FRAME)
            if sum(map(abs, samples[i:i + FRAME])) > LOUD * FRAME]
    return loud[0], loud[-1] + FRAME


def sentence_of(text):
    return re.sub(r"[.?!;:,\s]+", " ", text).strip()


def milliseconds(samples):
    return samples * 1000 // prompts.RATE


def assemble(chance, said, others, between):
    """The samples of a recording, and the place of each sentence that is said."""
    samples = array.array("h")
    places = []

    def add(name):
        recording = array.array("h", prompts.read_recording(name))
        first, last = loud_part(recording)
        places.append((milliseconds(len(samples) + first), milliseconds(len(samples) + last)))
        samples.extend(recording)
        samples.extend([0] * (GAP_MS * prompts.RATE // 1000))
        return places.pop()

    for name, _ in said:
        for _ in range(chance.randint(min(between, 1), between)):
            add(chance.choice(others)[0])
        places.append(add(name))
    return samples, places


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("tool")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--between", type=int, default=1)
    parser.add_argument("--unsaid", type=int, default=SENTENCES)
    parser.add_argument("--least-score", default="5.5")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)

    usable = {}
    for name, text in prompts.read_prompts():
        sentence = sentence_of(text)
        if len(sentence.split()) >= FEWEST_WORDS:
            usable.setdefault(sentence.lower(), (name, sentence))
    ours = [entry for entry in usable.values() if prompts.is_development(entry[0])]
    others = [entry for entry in usable.values() if not prompts.is_development(entry[0])]

    found = missed = false = 0
    starts, ends = [], []
    scores = {"said": [], "not said": []}
    for number in range(arguments.rounds):
        chance = random.Random(number)
        chosen = chance.sample(ours, SENTENCES + arguments.unsaid)
        is_said = [i < SENTENCES for i in range(len(chosen))]
        chance.shuffle(is_said)
        said = [entry for entry, yes in zip(chosen, is_said) if yes]
        samples, places = assemble(chance, said, others, arguments.between)
        recording = arguments.folder / f"{number}.wav"
        write_wave(recording, prompts.RATE, samples.tobytes())
        text = recording.with_suffix(".txt")
        text.write_text("".join(f"{sentence}.\n" for _, sentence in chosen), encoding="utf-8")
        done = subprocess.run([arguments.tool, "align", recording, "--text-file", text, "-q",
                               "--sentences", "--least-score", arguments.least_score],
                              capture_output=True, text=True, check=True)
        recording.with_suffix(".json").write_text(done.stdout, encoding="utf-8")
        told = json.loads(done.stdout)["sentences"]
        left = iter(places)
        for entry, yes in zip(told, is_said, strict=True):
            place = next(left) if yes else None
            if not entry["found"]:
                missed += yes
                continue
            middle = sum(place) / 2 if yes else -1
            hit = entry["start_ms"] <= middle <= entry["end_ms"]
            scores["said" if hit else "not said"].append(entry["score"])
            if hit:
                found += 1
                starts.append(entry["start_ms"] - place[0])
                ends.append(entry["end_ms"] - place[1])
            else:
                false += 1
                missed += yes
        print(f"{recording.name}: {milliseconds(len(samples)) / 1000:.0f} s", file=sys.stderr)

    print(f"found {found}, missed {missed}, false {false} "
          f"(of {SENTENCES * arguments.rounds} said, {arguments.unsaid * arguments.rounds} not)")
    for name, errors in (("starts", starts), ("ends", ends)):
        sizes = sorted(map(abs, errors))
        if sizes:
            print(f"{name} off by {statistics.median(sizes):.0f} ms in the median, "
                  f"{sizes[int(len(sizes) * 0.95)]} ms at 95 percent, "
                  f"{statistics.mean(errors):+.0f} ms on average")
    for name, values in scores.items():
        values.sort()
        print(f"scores {name}: {' '.join(f'{value:.2f}' for value in values)}")


if __name__ == "__main__":
    main()
