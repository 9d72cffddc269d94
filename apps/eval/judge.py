#!/usr/bin/env python3
"""Judges an acoustic model: one table, the same for any model.

usage: judge.py BUILD CORPUS [--model FILE] [--trigrams FILE] [--limit N] [CONDITION ...]

CORPUS is the folder that apps/train/corpus/collect.py fills. Each row is a condition: the same
recordings as they are, in noise (dB that the speech is above it), by telephone, in a room, at other
levels, slower and faster.

awb    the voice that was never trained on, aligned to the phones that are really said: boundaries
       within 10, 20 and 50 ms of the known ones in percent, mean distance in ms, closures (p, b and
       m of which at least half is covered) in percent; then phonemes wrong, missing and superfluous
       in percent of those said, when they are heard without the text
person the prompts kept out of training, aligned to their texts: ends of words within 50 ms of those
       of an independent aligner in percent; files in which the text was lost, and words that were
       lost or swapped; phoneme errors as above

Below the table: how far from the rise of the level speech begins after a pause; how the boundary
between a vowel and p, t or k scatters; and the words again, those ends apart that lie at a pause,
where the independent aligner itself is coarse, and how far its beginnings and ours are from the rise of
the level, where they differ by more than 50 ms.
"""

import argparse
import array
import concurrent.futures
import json
import math
import pathlib
import statistics
import subprocess
import wave

import boundaries
import independent_words
import phoneme_errors

CONDITIONS = {"none": 1.0, "noise-20": 1.0, "noise-10": 1.0, "noise-5": 1.0, "pink-10": 1.0,
              "telephone": 1.0, "echo": 1.0, "softer": 1.0, "louder": 1.0, "slower": 0.9,
              "faster": 1.1}
WORD_TOLERANCE_MS = 50
PAUSE_MS = 120
SHORT_PAUSE_MS = 60
STOPS = set("p b t d k g".split()) | {"CH", "j"}


def in_parallel(work, items) -> list:
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        return list(pool.map(work, items))


def worsen(program: pathlib.Path, recording: dict, corpus: pathlib.Path, condition: str) -> dict:
    """The recording under a condition, with its times; made once and kept in the corpus."""
    source = pathlib.Path(recording["path"])
    target = corpus / "worse" / condition / source.relative_to(corpus)
    if not target.exists():
        target.parent.mkdir(parents=True, exist_ok=True)
        samples = subprocess.run([program, condition, source], check=True,
                                 stdout=subprocess.PIPE).stdout
        with wave.open(str(source)) as original, wave.open(str(target), "wb") as output:
            output.setnchannels(1)
            output.setsampwidth(2)
            output.setframerate(original.getframerate())
            output.writeframes(samples)
    speed = CONDITIONS[condition]
    for kind in (".lab", ".words"):
        if source.with_suffix(kind).exists():
            target.with_suffix(kind).write_text("".join(
                f"{start / speed:.3f} {end / speed:.3f} {label}\n" for start, end, label
                in boundaries.read_labels(source.with_suffix(kind))), encoding="utf-8")
    return recording | {"path": str(target)}


def align(tool: str, recording: dict, options: list[str]) -> dict:
    run = subprocess.run([tool, "align", recording["path"], "-q", "--text", recording["text"],
                          *options], capture_output=True, text=True)
    return json.loads(run.stdout) if run.stdout else {"code": -1, "words": [], "phonemes": []}


def words_of(recording: dict, result: dict) -> tuple[list, list]:
    """The words of the independent aligner, and ours."""
    times = pathlib.Path(recording["path"]).with_suffix(".words")
    return (boundaries.read_labels(times) if times.exists() else [],
            [(word["start_ms"], word["end_ms"], word["text"]) for word in boundaries.said_words(result)])


def compare_words(recording: dict, result: dict) -> dict:
    known, ours = words_of(recording, result)
    pairs = boundaries.pair(known, ours)
    starts, ends = ({word[side] for word in ours} for side in (0, 1))
    between, at_pauses = [], []
    for true, found in pairs:
        for side, others in ((0, ends), (1, starts)):
            (between if found[side] in others else at_pauses).append(found[side] - true[side])
    return {"between": between, "at_pauses": at_pauses, "astray": len(known) - len(pairs), "lost": result["code"] != 0}


def hear(tool: str, recording: dict, options: list[str]) -> tuple:
    heard = phoneme_errors.run(tool, "recognize", recording["path"], "-q", *options)["phonemes"]
    labels = [phoneme["label"] for phoneme in heard
              if phoneme["label"] != boundaries.SILENCE]
    return phoneme_errors.errors(recording["said"], labels)


def error_rate(costs: list[tuple]) -> float:
    return 100.0 * sum(cost[0] for cost in costs) / sum(cost[4] for cost in costs)


def share(errors, limit: float) -> float:
    return 100.0 * sum(abs(error) <= limit for error in errors) / max(len(errors), 1)


def levels(path: str, step_ms: int) -> list[float]:
    """The level in dB of each stretch of `step_ms`."""
    with wave.open(path) as source:
        step = source.getframerate() * step_ms // 1000
        samples = array.array("h", source.readframes(source.getnframes()))
    return [10 * math.log10(1 + sum(s * s for s in samples[i:i + step]) / step)
            for i in range(0, len(samples) - step + 1, step)]


def rises(recording: dict, result: dict, shortest_ms: int) -> list[tuple[int, int, str]]:
    """Where speech begins after a pause that is long enough: our time, that of the rise, and the first phoneme.

    The level rises where it first stands a third of the way (in dB) from that of the pause to the
    highest of the next 150 ms. What rises by less than 20 dB is not clear, and left out.
    """
    step = 5
    level = levels(recording["path"], step)
    found = []
    phones = result["phonemes"]
    for pause, first in zip(phones, phones[1:]):
        length_ms = pause["end_ms"] - pause["start_ms"]
        if pause["label"] != "x" or first["label"] == "x" or length_ms < shortest_ms:
            continue
        middle = (pause["start_ms"] + pause["end_ms"]) // 2 // step
        end = pause["end_ms"] // step
        floor = statistics.median(level[max(middle - 6, 0):middle + 6])
        after = level[end:end + 150 // step]
        if not after or max(after) < floor + 20:
            continue
        risen = floor + (max(after) - floor) / 3
        at = next(i for i in range(middle, end + len(after)) if level[i] >= risen)
        found.append((pause["end_ms"], at * step, first["label"]))
    return found


def disputed(recording: dict, result: dict) -> list[tuple[float, float]]:
    """Where the two aligners begin a word after a clear pause by more than the tolerance apart: the
    distances of our time and of the other's from the rise."""
    risen = {begin: rise for begin, rise, _ in rises(recording, result, SHORT_PAUSE_MS)}
    return [(found - risen[found], true - risen[found]) for (true, _, _), (found, _, _)
            in boundaries.pair(*words_of(recording, result))
            if found in risen and abs(found - true) > WORD_TOLERANCE_MS]


class Judge:
    def __init__(self, arguments):
        self.tool = str(arguments.build / "apps/tessarin/tessarin")
        self.worsener = arguments.build / "apps/train/tessarin-worsen"
        self.corpus = arguments.corpus
        self.model = ["--model", arguments.model] if arguments.model else []
        self.trigrams = (["--trigrams", arguments.trigrams, "--counts"] if arguments.trigrams
                         else [])
        rows = boundaries.read_corpus(self.corpus)
        self.timed = [r for r in rows if r["set"] == "eval"][:arguments.limit]
        self.prompts = [r for r in rows if r["set"] == "dev"][:arguments.limit]
        missing = [r for r in self.prompts
                   if not pathlib.Path(r["path"]).with_suffix(".words").exists()]
        if missing:
            independent_words.align(self.tool, self.prompts)
        for recording in self.timed + self.prompts:
            recording["said"] = phoneme_errors.reference(self.tool, recording)

    def row(self, condition: str) -> str:
        def changed(recordings):
            return in_parallel(
                lambda r: worsen(self.worsener, r, self.corpus, condition), recordings)

        timed, prompts = changed(self.timed), changed(self.prompts)
        known = [result for _, result in in_parallel(
            lambda r: boundaries.align(self.tool, r, True, self.model), timed)]
        errors = [error for result in known for error in result["errors"]]
        closures = (100.0 * sum(result["closures_found"] for result in known)
                    / sum(result["closures"] for result in known))
        aligned = in_parallel(lambda r: align(self.tool, r, self.model), prompts)
        words = [compare_words(r, result) for r, result in zip(prompts, aligned)]
        between, at_pauses = ([error for each in words for error in each[where]]
                              for where in ("between", "at_pauses"))
        options = self.model + self.trigrams
        rates = [error_rate(in_parallel(lambda r: hear(self.tool, r, options), recordings))
                 for recordings in (timed, prompts)]
        if condition == "none":
            self.begins = [(ours - rise, label) for r, result in zip(prompts, aligned)
                           for ours, rise, label in rises(r, result, PAUSE_MS)]
            self.disputed = [each for r, result in zip(prompts, aligned)
                             for each in disputed(r, result)]
            self.between, self.at_pauses = between, at_pauses
            self.stops = [error for result in known for error in result["stops"]]
        return (f"{condition:10} {share(errors, 10):6.1f} {share(errors, 20):6.1f} "
                f"{share(errors, 50):6.1f} {statistics.mean(map(abs, errors)):6.1f} "
                f"{closures:8.1f} {rates[0]:7.1f}   {share(between + at_pauses, WORD_TOLERANCE_MS):6.1f} "
                f"{sum(each['lost'] for each in words):5} "
                f"{sum(each['astray'] for each in words):6} {rates[1]:7.1f}")

    def footnotes(self) -> str:
        clear = [error for error, label in self.begins if label not in STOPS]
        deviations = statistics.quantiles(self.stops, n=100)
        return (f"speech after a pause begins within 20 ms of the rise of the level: "
                f"{share([error for error, _ in self.begins], 20):.1f} % of {len(self.begins)}, "
                f"{share(clear, 20):.1f} % of the {len(clear)} that do not begin with a closure\n"
                f"vowel to p, t, k (awb): spread {(deviations[83] - deviations[15]) / 2:.1f} ms "
                f"(half of the middle 68 %), {len(self.stops)} boundaries\n"
                f"words: {share(self.between, WORD_TOLERANCE_MS):.1f} % of {len(self.between)} "
                f"ends between two words, {share(self.at_pauses, WORD_TOLERANCE_MS):.1f} % of "
                f"{len(self.at_pauses)} at a pause\n"
                f"of {len(self.disputed)} beginnings after a clear pause that differ by more, "
                f"{sum(abs(ours) <= 20 for ours, _ in self.disputed)} of ours and "
                f"{sum(abs(theirs) <= 20 for _, theirs in self.disputed)} of the independent "
                f"aligner's are within 20 ms of the rise of the level")


def main() -> None:
    parser = argparse.ArgumentParser(description="Judge an acoustic model.")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("corpus", type=pathlib.Path)
    parser.add_argument("--model")
    parser.add_argument("--trigrams")
    parser.add_argument("--limit", type=int)
    parser.add_argument("conditions", nargs="*", metavar="CONDITION")
    arguments = parser.parse_intermixed_args()
    conditions = arguments.conditions or list(CONDITIONS)
    judge = Judge(arguments)
    print(f"{'':10} {'awb':>6} {'':48} {'person':>6}\n"
          f"{'condition':10} {'10 ms':>6} {'20 ms':>6} {'50 ms':>6} {'mean':>6} {'closures':>8} "
          f"{'errors%':>7}   {'50 ms':>6} {'lost':>5} {'astray':>6} {'errors%':>7}")
    for condition in conditions:
        print(judge.row(condition), flush=True)
    if "none" in conditions:
        print(judge.footnotes())


if __name__ == "__main__":
    main()
