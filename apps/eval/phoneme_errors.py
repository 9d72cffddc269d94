#!/usr/bin/env python3
"""Measures how well phonemes are heard without a text, with and without statistics of sequences.

usage: phoneme_errors.py TOOL CORPUS [--set dev] [--speaker NAME] [--limit N] [--trigrams FILE]
                         [-- options for `recognize`]

CORPUS is the folder that apps/train/corpus/collect.py fills. What `recognize` hears is held
against the phones of the synthesiser where they are known, else against what `transcribe` makes of
the text: of each word the pronunciation that costs the fewest errors. Silence is left out on both
sides. The rate is the sum of wrong, missing and superfluous phones in percent of those that were
said; it can exceed 100.

FILE is read in each way that `recognize` knows: its numbers as counts or as weights, and the
statistics as trigrams (version 1) or as bigrams (version 0), whichever its own first line says.
"""

import argparse
import concurrent.futures
import json
import pathlib
import subprocess
import tempfile

from boundaries import SILENCE, read_corpus, read_labels

TRIGRAMS = pathlib.Path(__file__).resolve().parents[2] / "data" / "en-us.trigrams"


def run(tool: str, *arguments: str) -> dict:
    done = subprocess.run([tool, *arguments], capture_output=True, text=True)
    if not done.stdout:
        raise SystemExit(f"{' '.join(arguments)}: {done.stderr.strip()}")
    return json.loads(done.stdout)


def split_labels(phonemes: str) -> list[str]:
    """Labels are one lower-case letter, or an upper-case letter and one more."""
    labels, at = [], 0
    while at < len(phonemes):
        size = 2 if phonemes[at].isupper() else 1
        labels.append(phonemes[at:at + size])
        at += size
    return [label for label in labels if label != SILENCE]


def reference(tool: str, recording: dict) -> list[list[list[str]]]:
    """What is said: a list of stretches, each a list of alternatives, each a list of labels."""
    if recording["kind"] == "timed":
        labels = read_labels(pathlib.Path(recording["path"]).with_suffix(".lab"))
        return [[[label for _, _, label in labels if label != SILENCE]]]
    tokens = run(tool, "transcribe", "--format", "json", "--text", recording["text"])["tokens"]
    return [[split_labels(alternative) for alternative in group]
            for token in tokens for group in token["phonemes"]]


def extend(costs: list[tuple], label: str, heard: list[str]) -> list[tuple]:
    """The next row of an edit distance. A cost is (errors, wrong, missing, superfluous, said)."""
    def plus(cost, wrong, missing, superfluous, said):
        return (cost[0] + wrong + missing + superfluous, cost[1] + wrong, cost[2] + missing,
                cost[3] + superfluous, cost[4] + said)

    row = [plus(costs[0], 0, 1, 0, 1)]
    for place, other in enumerate(heard):
        row.append(min(plus(costs[place], int(label != other), 0, 0, 1),
                       plus(costs[place + 1], 0, 1, 0, 1), plus(row[place], 0, 0, 1, 0)))
    return row


def errors(said: list[list[list[str]]], heard: list[str]) -> tuple:
    """The cost of the path through the alternatives that has the fewest errors."""
    costs = [(place, 0, 0, place, 0) for place in range(len(heard) + 1)]
    for alternatives in said:
        rows = []
        for alternative in alternatives:
            row = costs
            for label in alternative:
                row = extend(row, label, heard)
            rows.append(row)
        costs = [min(column) for column in zip(*rows)]
    return costs[-1]


def print_row(name: str, tool: str, recordings: list[dict], options: list[str]) -> None:
    def measure(recording):
        phonemes = run(tool, "recognize", recording["path"], "-q", *options)["phonemes"]
        heard = [phoneme["label"] for phoneme in phonemes if phoneme["label"] != SILENCE]
        return errors(recording["said"], heard)

    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        total = [sum(column) for column in zip(*pool.map(measure, recordings))]
    rates = [100.0 * count / total[4] for count in total[:4]]
    print(f"{name:28} {total[4]:6} " + " ".join(f"{rate:7.1f}" for rate in rates), flush=True)


def main() -> None:
    parser = argparse.ArgumentParser(description="Measure what is heard without a text.")
    parser.add_argument("tool")
    parser.add_argument("corpus", type=pathlib.Path)
    parser.add_argument("--set", default="dev")
    parser.add_argument("--speaker")
    parser.add_argument("--limit", type=int)
    parser.add_argument("--trigrams", type=pathlib.Path, default=TRIGRAMS)
    parser.add_argument("options", nargs="*", help="passed to `recognize`, after --")
    arguments = parser.parse_args()

    recordings = [row for row in read_corpus(arguments.corpus) if row["set"] == arguments.set
                  and arguments.speaker in (None, row["speaker"])][:arguments.limit]
    if not recordings:
        raise SystemExit("no recordings in this set")
    for recording in recordings:
        recording["said"] = reference(arguments.tool, recording)

    print(f"{len(recordings)} recordings")
    print(f"{'statistics':28} {'phones':>6} {'errors%':>7} {'wrong':>7} {'missing':>7} {'superfl':>7}")
    print_row("none", arguments.tool, recordings, ["--no-trigrams", *arguments.options])
    lines = arguments.trigrams.read_text(encoding="utf-8").splitlines(keepends=True)
    entries = "".join(line for line in lines if not line.startswith("version"))
    with tempfile.TemporaryDirectory() as folder:
        for version, kind in ((1, "trigrams"), (0, "bigrams")):
            path = pathlib.Path(folder) / f"version{version}"
            path.write_text(f"version {version}\n{entries}", encoding="utf-8")
            for numbers, options in (("weights", []), ("counts", ["--counts"])):
                print_row(f"{kind} (version {version}), {numbers}", arguments.tool, recordings,
                          ["--trigrams", str(path), *options, *arguments.options])


if __name__ == "__main__":
    main()
