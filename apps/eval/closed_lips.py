#!/usr/bin/env python3
"""Measures whether the mouth closes where p, b and m are said.

usage: closed_lips.py TOOL CORPUS [--set dev] [--limit N] [--fps N] [--list]

CORPUS is the folder that apps/train/corpus/collect.py fills. Each p, b and m of 50 ms or more
counts as closed when in at least one frame that it touches the phonemes of closed lips, p, b, m and
silence, together weigh more than any other; and as clear when p, b or m also outweighs every other
sound. Both are given in percent, with smoothing and without. --list names those that stay open.
"""

import argparse
import json
import pathlib
import subprocess

import boundaries

LIPS = ("p", "b", "m")
SHORTEST_MS = 50


def align(tool: str, recording: dict, options: list[str]) -> dict:
    run = subprocess.run([tool, "align", recording["path"], "-q", "--text", recording["text"],
                          *options], capture_output=True, text=True, check=True)
    return json.loads(run.stdout)


def judge(phoneme: dict, frames: list[dict]) -> tuple[bool, bool]:
    closed = clear = False
    for frame in frames:
        if frame["end_ms"] <= phoneme["start_ms"] or frame["start_ms"] >= phoneme["end_ms"]:
            continue
        weights = frame["weights"]
        lips = sum(weights.get(label, 0.0) for label in LIPS)
        others = max((weight for label, weight in weights.items()
                      if label not in LIPS and label != "x"), default=0.0)
        closed = closed or lips > 0.0 and lips + weights.get("x", 0.0) > others
        clear = clear or lips > others
    return closed, clear


def main() -> None:
    parser = argparse.ArgumentParser(description="Measure closed lips.")
    parser.add_argument("tool")
    parser.add_argument("corpus", type=pathlib.Path)
    parser.add_argument("--set", default="dev")
    parser.add_argument("--limit", type=int)
    parser.add_argument("--fps", type=int, default=30)
    parser.add_argument("--list", action="store_true")
    arguments = parser.parse_args()
    recordings = [recording for recording in boundaries.read_corpus(arguments.corpus)
                  if recording["set"] == arguments.set][:arguments.limit]
    for name, options in (("as mixed", []), ("smooth", ["--smooth"])):
        judged = []
        for recording in recordings:
            result = align(arguments.tool, recording, ["--fps", str(arguments.fps), *options])
            for phoneme in result["phonemes"]:
                if (phoneme["label"] in LIPS
                        and phoneme["end_ms"] - phoneme["start_ms"] >= SHORTEST_MS):
                    judged.append(judge(phoneme, result["frames"]))
                    if arguments.list and not judged[-1][1]:
                        print(name, recording["path"], phoneme)
        closed, clear = (100.0 * sum(each[i] for each in judged) / max(len(judged), 1)
                         for i in (0, 1))
        print(f"{name}: {len(judged)} of p, b and m, {closed:.1f} % closed, {clear:.1f} % clear")


if __name__ == "__main__":
    main()
