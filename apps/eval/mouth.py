#!/usr/bin/env python3
"""Measures whether the mouth that a recording drives can be believed.

usage: mouth.py FOLDER... --tool TOOL [--options "--strength 1.3"] [--fps N] [--limit N] [--list]
                [--live[="--delay 60"]] [--speed N]

FOLDER holds pairs NAME.wav (one channel, 16 bits) and NAME.txt, what is said in it, or is a corpus
of apps/train/corpus, of which the set `dev` is taken. Each folder is a column of the table, with
the number of cases beside each figure. TOOL aligns the recordings, and what is measured is its own
output: phonemes and words, the weights of the fifteen visemes, and the switches of a 2-D mouth.

closed     p, b and m of 40 ms and more with PP at 0.8 or above in a frame of theirs, in percent
teeth      f and v likewise, with FF at 0.5 or above
open       median over the vowels of 80 ms and more of the highest aa + E + ih + oh + ou in them
rest-in    words of 150 ms and more, without a pause of 60 ms in them, in which the switch rests
           (X), in percent
sil-in     mean weight of sil inside words
sil-out    mean weight of sil in pauses of 200 ms and more, 100 ms off their ends
flips      switches a second of speech, which is the sum of the words
short      switches that last one frame, in percent
loudness   rank correlation of the level of a vowel with the highest opening in it: the median over
           the recordings that have at least 8 such vowels; one that always opens alike counts 0

With --live the frames are those of `live`, which hears the recording without its text and without what
is still to come; --live="--delay 60" passes options to it. It has no switches, so the rows of these are
left out, and what it mishears counts against it. --speed says how many times faster than real time it
hears; more than the machine keeps up with loses nothing.

A frame lasts from its time to the time of the next one. A phoneme's frames are those that it
overlaps; those of a word or a pause have their middle in it, so that a frame counts on one side of
a boundary.
"""

import argparse
import array
import concurrent.futures
import csv
import json
import math
import pathlib
import shlex
import statistics
import subprocess
import tempfile
import wave

import boundaries

LIPS = set("p b m".split())
TEETH = set("f v".split())
VOWELS = set("AA AE AH AO AW AY EH ER EY IH IY OW OY UH UW".split())
OPENING = "aa E ih oh ou".split()
SILENCE = "x"
REST = "X"
CLOSED = 0.8
ON_TEETH = 0.5
SHORTEST_CONSONANT_MS = 40
SHORTEST_VOWEL_MS = 80
SHORTEST_WORD_MS = 150
PAUSE_IN_WORD_MS = 60
CLEAR_PAUSE_MS = 200
PAUSE_EDGE_MS = 100
FEWEST_VOWELS = 8
OF_SWITCHES = ("rest-in", "flips", "short")
PROCESSES = 2


def length_ms(part: dict) -> float:
    return part["end_ms"] - part["start_ms"]


def overlapping(frames: list[dict], start_ms: float, end_ms: float) -> list[dict]:
    return [frame for frame in frames if frame["start_ms"] < end_ms and frame["end_ms"] > start_ms]


def centred(frames: list[dict], start_ms: float, end_ms: float) -> list[dict]:
    return [frame for frame in frames
            if start_ms <= (frame["start_ms"] + frame["end_ms"]) / 2 < end_ms]


def highest(frames: list[dict], phoneme: dict, shapes: list[str]) -> float:
    return max((sum(frame[shape] for shape in shapes) for frame
                in overlapping(frames, phoneme["start_ms"], phoneme["end_ms"])), default=0.0)


def ranks(values: list[float]) -> list[float]:
    """The place of each value in their order; equal ones share the mean of their places."""
    order = sorted(values)
    return [order.index(value) + (order.count(value) - 1) / 2 for value in values]


def rank_correlation(first: list[float], second: list[float]) -> float:
    """Spearman's coefficient; 0 where one side is the same throughout."""
    a, b = ranks(first), ranks(second)
    if len(set(a)) < 2 or len(set(b)) < 2:
        return 0.0
    return statistics.correlation(a, b)


def level_db(samples, rate: int, start_ms: float, end_ms: float) -> float:
    part = samples[int(start_ms * rate / 1000):int(end_ms * rate / 1000)]
    return 10 * math.log10(1 + sum(s * s for s in part) / max(len(part), 1))


def with_mouths(frames: list[dict], switches: list[dict]) -> list[dict]:
    """The frames, each with the 2-D mouth that stands in its middle."""
    def mouth(middle_s):
        return next((cue["value"] for cue in switches if cue["start"] <= middle_s < cue["end"]),
                    REST)

    return [frame | {"mouth": mouth((frame["start_ms"] + frame["end_ms"]) / 2000)}
            for frame in frames]


def measure(result: dict, frames: list[dict], switches: list[dict], level) -> dict:
    """The counts of one recording. `frames` have their times and the weight of each shape,
    `switches` start, end (in seconds) and value; `level(start_ms, end_ms)` is in dB."""
    phonemes, words = result["phonemes"], boundaries.said_words(result)
    frames = with_mouths(frames, switches)
    silences = [phoneme for phoneme in phonemes if phoneme["label"] == SILENCE]

    def peaks(labels, shortest_ms, shapes):
        return [(phoneme, highest(frames, phoneme, shapes)) for phoneme in phonemes
                if phoneme["label"] in labels and length_ms(phoneme) >= shortest_ms]

    def within(word):
        return centred(frames, word["start_ms"], word["end_ms"])

    def has_pause(word):
        return any(min(pause["end_ms"], word["end_ms"]) - max(pause["start_ms"], word["start_ms"])
                   >= PAUSE_IN_WORD_MS for pause in silences)

    vowels = peaks(VOWELS, SHORTEST_VOWEL_MS, OPENING)
    openings = [opening for _, opening in vowels]
    levels = [level(vowel["start_ms"], vowel["end_ms"]) for vowel, _ in vowels]
    frame_s = length_ms(frames[0]) / 1000 if frames else 0.0
    return {
        "closed": [(phoneme, peak >= CLOSED) for phoneme, peak
                   in peaks(LIPS, SHORTEST_CONSONANT_MS, ["PP"])],
        "teeth": [(phoneme, peak >= ON_TEETH) for phoneme, peak
                  in peaks(TEETH, SHORTEST_CONSONANT_MS, ["FF"])],
        "open": openings,
        "rest-in": [(word, any(frame["mouth"] == REST for frame in within(word)))
                    for word in words
                    if length_ms(word) >= SHORTEST_WORD_MS and not has_pause(word)],
        "sil-in": [frame["sil"] for word in words for frame in within(word)],
        "sil-out": [frame["sil"] for pause in silences if length_ms(pause) >= CLEAR_PAUSE_MS
                    for frame in centred(frames, pause["start_ms"] + PAUSE_EDGE_MS,
                                         pause["end_ms"] - PAUSE_EDGE_MS)],
        "flips": max(len(switches) - 1, 0),
        "speech_s": sum(length_ms(word) for word in words) / 1000,
        "short": [cue["end"] - cue["start"] < 1.5 * frame_s for cue in switches],
        "loudness": rank_correlation(levels, openings) if len(vowels) >= FEWEST_VOWELS else None,
    }


def read_frames(path: pathlib.Path, frame_ms: float) -> list[dict]:
    with open(path, encoding="utf-8", newline="") as lines:
        rows = [{name: float(value) for name, value in row.items()}
                for row in csv.DictReader(lines)]
    starts = [row.pop("time_ms") for row in rows]
    return [row | {"start_ms": start, "end_ms": end} for row, start, end
            in zip(rows, starts, starts[1:] + [starts[-1] + frame_ms])]


def read_level(path: pathlib.Path):
    with wave.open(str(path)) as source:
        if source.getsampwidth() != 2 or source.getnchannels() != 1:
            raise SystemExit(f"{path}: not one channel of 16 bits")
        rate = source.getframerate()
        samples = array.array("h", source.readframes(source.getnframes()))
    return lambda start_ms, end_ms: level_db(samples, rate, start_ms, end_ms)


def recordings_in(folder: pathlib.Path) -> list[tuple[pathlib.Path, str]]:
    """The recordings of a folder, each with its text."""
    if (folder / "corpus.tsv").exists():
        found = [(pathlib.Path(row["path"]), row["text"])
                 for row in boundaries.read_corpus(folder) if row["set"] == "dev"]
    else:
        found = [(audio, audio.with_suffix(".txt").read_text(encoding="utf-8").strip())
                 for audio in sorted(folder.glob("*.wav")) if audio.with_suffix(".txt").exists()]
    if not found:
        raise SystemExit(f"{folder}: no recordings with a text")
    return found


def live_frames(tool: str, audio: pathlib.Path, fps: float, options: list[str]) -> list[dict]:
    with tempfile.TemporaryDirectory() as scratch:
        path = pathlib.Path(scratch) / "live.csv"
        with open(path, "wb") as output:
            subprocess.run([tool, "live", str(audio), "--format", "visemes", "--fps", str(fps),
                            *options], check=True, stdout=output, stderr=subprocess.DEVNULL)
        return read_frames(path, 1000 / fps)


def measure_recording(tool: str, audio: pathlib.Path, text: str, fps: float,
                      options: list[str], live: list[str] | None) -> dict:
    with tempfile.TemporaryDirectory() as scratch:
        base = pathlib.Path(scratch) / "mouth"
        outputs = [base.with_suffix(ending)
                   for ending in (".json", ".visemes.csv", ".switches.json")]
        run = subprocess.run(
            [tool, "align", str(audio), "-q", f"--text={text}", "--fps", str(fps), *options,
             *(part for output in outputs for part in ("-o", str(output)))],
            capture_output=True, text=True)
        if not all(output.exists() for output in outputs):
            raise SystemExit(f"{audio}: {run.stderr.strip()}")
        result, switches = (json.loads(outputs[i].read_text(encoding="utf-8")) for i in (0, 2))
        frames = read_frames(outputs[1], 1000 / fps)
    if result["code"] != 0:
        return {"lost": str(audio)}
    if live is not None:
        return measure(result, live_frames(tool, audio, fps, live), [], read_level(audio))
    return measure(result, frames, switches["mouthCues"], read_level(audio))


def together(measured: list[dict], name: str) -> list:
    return [each for one in measured for each in one[name]]


def percent(judged: list[bool]) -> float:
    return 100.0 * sum(judged) / max(len(judged), 1)


def summarize(measured: list[dict]) -> dict[str, tuple[float, int, str]]:
    """Of each row of the table the figure, over how many, and how it is written."""
    rows = {}
    for name in ("closed", "teeth"):
        judged = [closes for _, closes in together(measured, name)]
        rows[name] = percent(judged), len(judged), "{:.1f} %"
    openings = together(measured, "open")
    rows["open"] = statistics.median(openings or [0.0]), len(openings), "{:.2f}"
    judged = [rests for _, rests in together(measured, "rest-in")]
    rows["rest-in"] = percent(judged), len(judged), "{:.1f} %"
    for name in ("sil-in", "sil-out"):
        weights = together(measured, name)
        rows[name] = statistics.mean(weights or [0.0]), len(weights), "{:.2f}"
    flips = sum(one["flips"] for one in measured)
    rows["flips"] = flips / max(sum(one["speech_s"] for one in measured), 1e-3), flips, "{:.1f}"
    short = together(measured, "short")
    rows["short"] = percent(short), len(short), "{:.1f} %"
    correlations = [one["loudness"] for one in measured if one["loudness"] is not None]
    rows["loudness"] = statistics.median(correlations or [0.0]), len(correlations), "{:.2f}"
    return rows


def list_faults(audio: pathlib.Path, one: dict) -> None:
    for name, wanted in (("closed", True), ("teeth", True), ("rest-in", False)):
        for part, is_so in one[name]:
            if is_so != wanted:
                print(f"{name}: {audio} {part['start_ms']}-{part['end_ms']} "
                      f"{part.get('label') or part.get('text')}")


def main() -> None:
    parser = argparse.ArgumentParser(description="Measure whether a mouth can be believed.")
    parser.add_argument("folders", nargs="+", type=pathlib.Path, metavar="FOLDER")
    parser.add_argument("--tool", required=True)
    parser.add_argument("--options", default="", help="passed to `align`")
    parser.add_argument("--fps", type=float, default=30)
    parser.add_argument("--limit", type=int)
    parser.add_argument("--list", action="store_true", help="name what is open, or rests, wrongly")
    parser.add_argument("--live", nargs="?", const="", help="passed to `live`, which makes the frames")
    parser.add_argument("--speed", type=float, default=8, help="of `live` [8]")
    arguments = parser.parse_args()
    options = shlex.split(arguments.options)
    live = None if arguments.live is None else ["--speed", str(arguments.speed),
                                                *shlex.split(arguments.live)]
    columns = []
    for folder in arguments.folders:
        recordings = recordings_in(folder)[:arguments.limit]
        with concurrent.futures.ThreadPoolExecutor(max_workers=PROCESSES) as pool:
            measured = list(pool.map(lambda recording: measure_recording(
                arguments.tool, *recording, arguments.fps, options, live), recordings))
        kept = [(audio, one) for (audio, _), one in zip(recordings, measured) if "lost" not in one]
        for one in measured:
            if "lost" in one:
                print(f"{one['lost']}: the text was lost, left out")
        if arguments.list:
            for audio, one in kept:
                list_faults(audio, one)
        columns.append(summarize([one for _, one in kept]))
    print(f"{'':9}" + "".join(f" {folder.name[:20]:>20}" for folder in arguments.folders))
    for name in columns[0]:
        if live is not None and name in OF_SWITCHES:
            continue
        print(f"{name:9}" + "".join(
            f" {form.format(figure) + f' ({count})':>20}" for figure, count, form
            in (column[name] for column in columns)))


if __name__ == "__main__":
    main()
