#!/usr/bin/env python3
"""Learns what the scores of an acoustic model mean, for the confidences of its alignments.

usage: calibrate.py TOOL MODEL FOLDER [-o FILE] [--seed N] [--limit N]

FOLDER has recordings, NAME.wav, and what is said in each, NAME.txt: voices that the model knows and
others, as many of each as the confidence is meant for. Texts are changed as
apps/eval/mismatch.py changes them, aligned, and three things fitted to what is right: the confidence
of a word by its margin, the score of a file by its evidence (logistic regressions), and how long
phonemes usually are. The file, MODEL with the ending .calibration where none is named, is described
in src/recognition/loose/calibration.h.
"""

import argparse
import math
import pathlib
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "eval"))
import mismatch  # noqa: E402

MOST_MARGIN = 200.0
# Of the phonemes of awb, a voice that the model does not know, 44.4 % are heard wrongly without a
# text and without statistics (data/README.md, "Hearing without a text").
HEARD = 0.556
SILENCE = "x"
UNUSUAL_DURATION = 2.0
FEWEST_PHONEMES = 20
PENALTY = 1e-3
# Of right texts at most so many may be poor, and of wrong ones at most so many may be good.
POOR_SHARE = 0.02
GOOD_SHARE = 0.005


def logistic(value):
    return 1.0 / (1.0 + math.exp(-max(min(value, 500.0), -500.0)))


def solve(matrix, right):
    """Gaussian elimination with pivots."""
    rows = [row[:] + [value] for row, value in zip(matrix, right)]
    size = len(rows)
    for i in range(size):
        pivot = max(range(i, size), key=lambda r: abs(rows[r][i]))
        rows[i], rows[pivot] = rows[pivot], rows[i]
        for r in range(i + 1, size):
            factor = rows[r][i] / rows[i][i]
            for c in range(i, size + 1):
                rows[r][c] -= factor * rows[i][c]
    values = [0.0] * size
    for i in reversed(range(size)):
        left = sum(rows[i][c] * values[c] for c in range(i + 1, size))
        values[i] = (rows[i][size] - left) / rows[i][i]
    return values


def regress(evidence, truths, weights=None):
    """Weights of a logistic regression, by Newton's method with a small penalty."""
    evidence = [[1.0, *row] for row in evidence]
    weights = weights or [1.0] * len(truths)
    size = len(evidence[0])
    found = [0.0] * size
    for _ in range(30):
        hessian = [[PENALTY * len(truths) / 100 * (i == j) for j in range(size)]
                   for i in range(size)]
        slope = [-hessian[i][i] * found[i] for i in range(size)]
        for row, truth, weight in zip(evidence, truths, weights):
            share = logistic(sum(w * x for w, x in zip(found, row)))
            spread = weight * max(share * (1 - share), 1e-9)
            for i in range(size):
                slope[i] += weight * (truth - share) * row[i]
                for j in range(size):
                    hessian[i][j] += spread * row[i] * row[j]
        step = solve(hessian, slope)
        found = [w + s for w, s in zip(found, step)]
        if max(map(abs, step)) < 1e-9:
            break
    return found


def usual_durations(rows):
    """(label, mean, deviation) of the logarithm of milliseconds, silence left out, of right texts as
    the exact search aligns them: it is the lengths of that search that are judged later."""
    lengths = {}
    for row in rows:
        for label, ms in row["exact_phones"] if row["kind"] == "right" else []:
            if label != SILENCE and ms > 0:
                lengths.setdefault(label, []).append(math.log(ms))
    every = [value for values in lengths.values() for value in values]
    for label, values in sorted(lengths.items()):
        own = values if len(values) >= FEWEST_PHONEMES else every
        yield label, statistics.mean(own), max(statistics.pstdev(own), 0.1)


def duration_distance(row, durations):
    """As the engine has it (calibration::DurationDistance, FileScore): phonemes whose length is not
    known are at no distance, and a text without a phoneme is unusual."""
    distances = [abs(math.log(ms) - durations[label][0]) / durations[label][1]
                 if label in durations and ms > 0 else 0.0
                 for label, ms in row["exact_phones"] if label != SILENCE]
    return statistics.mean(distances) if distances else UNUSUAL_DURATION


def evidence_of(row, durations):
    return [row["margin"], row["said"], row["fit"], duration_distance(row, durations)]


def quantile(values, share):
    return sorted(values)[min(int(share * len(values)), len(values) - 1)]


def write_calibration(fingerprint, rows):
    """The lines of the file."""
    usual = list(usual_durations(rows))
    durations = {label: (mean, deviation) for label, mean, deviation in usual}
    words = [(max(min(margin, MOST_MARGIN), -MOST_MARGIN), right)
             for row in rows if row["kind"] != "wrong" for margin, right in row["words"]]
    word = regress([[margin] for margin, _ in words], [float(right) for _, right in words])
    files = [row for row in rows if row["kind"] in ("right", "less", "more", "around", "wrong")]
    truths = [float(row["kind"] != "wrong") for row in files]
    wrong = truths.count(0.0)
    weights = [1.0 if truth else (len(truths) - wrong) / max(wrong, 1) for truth in truths]
    file = regress([evidence_of(row, durations) for row in files], truths, weights)
    scores = {kind: [logistic(sum(w * x for w, x in zip(file, [1.0, *evidence_of(row, durations)])))
                     for row in rows if row["kind"] == kind] for kind in ("right", "wrong")}
    poor = quantile(scores["right"], POOR_SHARE)
    good = max(poor, quantile(scores["wrong"], 1 - GOOD_SHARE))
    yield "tessarin calibration 1"
    yield f"model {fingerprint}"
    yield f"word {word[0]:.4f} {word[1]:.5f}"
    yield f"heard {HEARD}"
    yield "file " + " ".join(f"{weight:.5f}" for weight in file)
    yield f"verdict {min(poor, 0.5):.4f} {min(max(good, 0.5), 0.95):.4f}"
    for label, mean, deviation in usual:
        yield f"duration {label} {mean:.4f} {deviation:.4f}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("tool")
    parser.add_argument("model", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("-o", "--output", type=pathlib.Path)
    parser.add_argument("--seed", type=int, default=2)
    parser.add_argument("--limit", type=int)
    arguments = parser.parse_args()
    inspected = subprocess.run([arguments.tool, "inspect", arguments.model], capture_output=True,
                               text=True, check=True).stdout
    fingerprint = next(line.split()[-1] for line in inspected.splitlines()
                       if line.startswith("fingerprint"))
    options = ["--model", str(arguments.model)]
    lines = [line for line in mismatch.read_lines(arguments.folder, arguments.limit, arguments.seed)
             if mismatch.find_truth(line, arguments.tool, options)]
    rows = []

    def keep(kind, line, found, offsets, sources, later, exact):
        if found and "match" in found:
            row = mismatch.evidence_row(kind, line, found, offsets, sources, later)
            row["exact_phones"] = [[p["label"], p["end_ms"] - p["start_ms"]]
                                   for p in (exact or {"phonemes": []})["phonemes"]]
            rows.append(row)

    mismatch.measure(arguments.tool, lines, mismatch.KINDS, arguments.seed, options, keep)
    output = arguments.output or arguments.model.with_suffix(".calibration")
    output.write_text("\n".join(write_calibration(fingerprint, rows)) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
