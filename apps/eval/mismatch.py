#!/usr/bin/env python3
"""Measures alignments of texts that are not quite what was said.

usage: mismatch.py TOOL FOLDER [--truth FOLDER] [--seed N] [--limit N] [-- tool options]

FOLDER has recordings, NAME.wav, and what is said in each, NAME.txt. Where the words really begin is
read from NAME.TextGrid or NAME.json in the folder of --truth, and else taken from an exact
alignment with the right text. From each recording are made:

  right   nothing is changed
  less    one to three words in a row are missing from the text
  more    one to three words that nobody says are put into the text
  swap    two words are replaced
  around  another recording stands before and after it, 300 ms apart, and is not in the text
  tail    the text goes on with a sentence that is not said
  wrong   the text is that of another recording

Printed are, before (--match exact) and after (--match auto): of the words that text and recording
have in common, how many begin within 50 ms of where they do; of those that nobody says, how many
are marked so; of those that are said, how many are marked as not said; how the verdicts are shared
out; the area under the ROC curve of the score of right texts against that of wrong ones; how often
words of each confidence are right; and the time.
"""

import argparse
import collections
import concurrent.futures
import json
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import time
import wave

KINDS = ("right", "less", "more", "swap", "around", "tail", "wrong")
KEPT_MS = 50
GAP_MS = 300
VERDICTS = ("good", "doubtful", "poor")


class Line:
    """A recording, its text in chunks without blanks, and where its words begin."""

    def __init__(self, path):
        self.path = path
        text = path.with_suffix(".txt").read_text(encoding="utf-8")
        self.chunks = text.split()
        self.starts = {}  # (chunk, offset within it) -> ms


def join(chunks):
    """The text of chunks, and the offset of each in bytes."""
    offsets, at = [], 0
    for chunk in chunks:
        offsets.append(at)
        at += len(chunk.encode()) + 1
    return " ".join(chunks), offsets


def find_place(offsets, offset):
    """Which chunk an offset is in, and where."""
    chunk = max(i for i, start in enumerate(offsets) if start <= offset)
    return chunk, offset - offsets[chunk]


def run_tool(tool, audio, text, options):
    started = time.perf_counter()
    run = subprocess.run([tool, "align", str(audio), "-q", "--text", text, *options],
                         capture_output=True, text=True)
    seconds = time.perf_counter() - started
    return (json.loads(run.stdout) if run.stdout else None), seconds


def read_truth(line, folder):
    """Sets the times of a line from a file, by the order of the words; False without one."""
    grid = folder / (line.path.stem + ".TextGrid")
    if grid.exists():
        tier = re.search(r'name = "words"(.*?)(?:item \[|\Z)', grid.read_text(encoding="utf-8"),
                         re.S)
        rows = re.findall(r'xmin = ([\d.]+)\s+xmax = [\d.]+\s+text = "([^"]+)"', tier[1])
        starts = [float(start) * 1000 for start, _ in rows]
    elif (folder / (line.path.stem + ".json")).exists():
        found = json.loads((folder / (line.path.stem + ".json")).read_text(encoding="utf-8"))
        starts = [word["start_ms"] for word in found["words"]]
    else:
        return False
    if len(starts) != len(line.chunks):
        return False  # its words are not those of the text
    line.starts = {(i, 0): start for i, start in enumerate(starts)}
    return True


def find_truth(line, tool, options):
    text, offsets = join(line.chunks)
    found, _ = run_tool(tool, line.path, text, ["--match", "exact", *options])
    if found and found["code"] == 0:
        line.starts = {find_place(offsets, word["text_offset"]): word["start_ms"]
                       for word in found["words"]}
    return bool(line.starts)


def read_samples(path):
    with wave.open(str(path), "rb") as audio:
        return audio.getparams(), audio.readframes(audio.getnframes())


def put_around(line, other, folder):
    """A recording with another before and after it; its path, and by how much it is later."""
    format_, samples = read_samples(line.path)
    other_format, other_samples = read_samples(other.path)
    if (format_.framerate, format_.nchannels, format_.sampwidth) != (
            other_format.framerate, other_format.nchannels, other_format.sampwidth):
        return None, 0
    gap = bytes(format_.framerate * GAP_MS // 1000 * format_.sampwidth * format_.nchannels)
    path = pathlib.Path(folder) / f"{line.path.stem}-around.wav"
    with wave.open(str(path), "wb") as audio:
        audio.setparams(format_)
        audio.writeframes(other_samples + gap + samples + gap + other_samples)
    return path, other_format.nframes * 1000 / format_.framerate + GAP_MS


def plain(chunk):
    return re.sub(r"\W", "", chunk).lower()


def make_case(kind, line, others, chance, folder):
    """(audio, chunks, the chunk of the line that each is or None, ms) of a kind, or None."""
    count = len(line.chunks)
    own = list(range(count))
    other = chance.choice(others)
    if kind == "right":
        return line.path, line.chunks, own, 0
    if kind == "wrong":
        return line.path, other.chunks, [None] * len(other.chunks), 0
    if kind == "around":
        path, later = put_around(line, other, folder)
        return (path, line.chunks, own, later) if path else None
    if kind == "tail":
        added = ["."] if not line.chunks[-1].endswith((".", "!", "?")) else []
        return (line.path, line.chunks + added + other.chunks,
                own + [None] * (len(added) + len(other.chunks)), 0)
    if kind == "less":
        left_out = chance.randint(1, min(3, count - 1)) if count > 1 else 0
        if left_out == 0:
            return None
        at = chance.randint(0, count - left_out)
        kept = own[:at] + own[at + left_out:]
        return line.path, [line.chunks[i] for i in kept], kept, 0
    if kind == "more":
        first = chance.randrange(len(other.chunks))
        words = [plain(c) for c in other.chunks[first:first + chance.randint(1, 3)]]
        words = [word for word in words if word]
        at = chance.randint(0, count)
        return (line.path, line.chunks[:at] + words + line.chunks[at:],
                own[:at] + [None] * len(words) + own[at:], 0)
    if kind == "swap":
        if count < 4:
            return None
        chunks, sources = list(line.chunks), list(own)
        for at in chance.sample(range(count), 2):
            choice = [plain(c) for c in other.chunks if plain(c) not in ("", plain(chunks[at]))]
            if not choice:
                return None
            chunks[at], sources[at] = chance.choice(choice), None
        return line.path, chunks, sources, 0
    raise ValueError(kind)


class Measured:
    """What one kind gave."""

    def __init__(self):
        self.kept = self.common = self.marked = self.unsaid = self.denied = self.said = 0
        self.files = self.seconds = 0
        self.verdicts = collections.Counter()
        self.scores = []
        self.confidences = []  # (confidence, was right)

    def add(self, found, seconds, line, offsets, sources, later):
        self.files += 1
        self.seconds += seconds
        words = {}
        for word in (found or {"words": []})["words"]:
            words[find_place(offsets, word["text_offset"])] = word
        own = {source: chunk for chunk, source in enumerate(sources) if source is not None}
        for (source, within), start in line.starts.items():
            if source in own:
                word = words.get((own[source], within))
                self.common += 1
                is_kept = (word is not None and word.get("said", True)
                           and abs(word["start_ms"] - later - start) <= KEPT_MS)
                self.kept += is_kept
                if word is not None:
                    self.said += 1
                    self.denied += not word.get("said", True)
                    self.note(word, is_kept)
        for (chunk, _), word in words.items():
            if sources[chunk] is None:
                self.unsaid += 1
                self.marked += not word.get("said", True)
                self.note(word, False)
        match = (found or {}).get("match")
        if match:
            self.verdicts[match["verdict"]] += 1
            self.scores.append(match.get("score", 0.0))

    def note(self, word, is_right):
        if "confidence" in word:
            self.confidences.append((word["confidence"], is_right))


def area(positive, negative):
    """Under the ROC curve."""
    if not positive or not negative:
        return float("nan")
    wins = sum((p > n) + 0.5 * (p == n) for p in positive for n in negative)
    return wins / (len(positive) * len(negative))


def share(part, whole):
    return f"{100 * part / whole:6.1f}" if whole else f"{'-':>6}"


def print_table(before, after, out=sys.stdout):
    def write(text=""):
        print(text, file=out)

    write(f"{'kind':8}{'files':>6}{'before':>8}{'kept':>7}{'marked':>8}{'denied':>8}   "
          + "".join(f"{verdict:>10}" for verdict in VERDICTS))
    for kind, now in after.items():
        old = before[kind]
        is_wrong = kind == "wrong"
        write(f"{kind:8}{now.files:6}"
              f"{share(0, 0) if is_wrong else share(old.kept, old.common):>8}"
              f"{share(0, 0) if is_wrong else share(now.kept, now.common):>7}"
              f"{share(now.marked, now.unsaid):>8}{share(now.denied, now.said):>8}   "
              + "".join(f"{now.verdicts[verdict]:10}" for verdict in VERDICTS))
    if "right" in after and "wrong" in after:
        write(f"area under the ROC curve, files: "
              f"{area(after['right'].scores, after['wrong'].scores):.4f}")
    pairs = [pair for kind, now in after.items() if kind != "wrong" for pair in now.confidences]
    if pairs:
        write(f"area under the ROC curve, words: "
              f"{area([c for c, right in pairs if right][:4000], [c for c, right in pairs if not right][:4000]):.4f}")
        write("confidence   words  right")
        for tenth in range(10):
            inside = [right for c, right in pairs if tenth <= min(c * 10, 9.99) < tenth + 1]
            write(f"{tenth / 10:.1f} to {tenth / 10 + 0.1:.1f} {len(inside):7} "
                  f"{share(sum(inside), len(inside))}  {'#' * round(40 * sum(inside) / max(len(inside), 1))}")
    old, new = (sum(m.seconds for m in side.values()) for side in (before, after))
    write(f"time {new:.1f} s, of the exact search {old:.1f} s: {new / old:.2f} times")


def read_lines(folder, limit, seed):
    paths = [path for path in sorted(folder.rglob("*.wav")) if path.with_suffix(".txt").exists()]
    random.Random(seed).shuffle(paths)
    lines = [Line(path) for path in paths]
    return [line for line in lines if line.chunks][:limit]


def measure(tool, lines, kinds, seed, options, each=None):
    """Runs all cases; `each` is called with what came of them."""
    before = {kind: Measured() for kind in kinds}
    after = {kind: Measured() for kind in kinds}
    with tempfile.TemporaryDirectory() as folder:
        def run(job):
            kind, line = job
            # Each case has its own chance, so that a choice of kinds does not change it.
            chance = random.Random(f"{seed} {kind} {line.path.name}")
            others = [other for other in lines if other is not line]
            case = make_case(kind, line, others, chance, folder)
            if case is None:
                return None
            audio, chunks, sources, later = case
            text, offsets = join(chunks)
            sides = [run_tool(tool, audio, text, ["--match", mode, *options])
                     for mode in ("exact", "auto")]
            return kind, line, offsets, sources, later, sides

        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            for done in pool.map(run, [(kind, line) for kind in kinds for line in lines]):
                if done:
                    kind, line, offsets, sources, later, sides = done
                    for side, (found, seconds) in zip((before, after), sides):
                        side[kind].add(found, seconds, line, offsets, sources, later)
                    if each:
                        each(kind, line, sides[1][0], offsets, sources, later, sides[0][0])
    return before, after


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("tool")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--truth", type=pathlib.Path)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--limit", type=int)
    parser.add_argument("--kinds", default=",".join(KINDS))
    parser.add_argument("options", nargs="*", help="passed to the tool, after --")
    arguments = parser.parse_args()

    lines = []
    for line in read_lines(arguments.folder, arguments.limit, arguments.seed):
        if (arguments.truth and read_truth(line, arguments.truth)) or find_truth(
                line, arguments.tool, arguments.options):
            lines.append(line)
    if len(lines) < 2:
        raise SystemExit(f"{arguments.folder}: there are no recordings with texts")
    before, after = measure(arguments.tool, lines, arguments.kinds.split(","), arguments.seed,
                            arguments.options)
    print_table(before, after)


def evidence_row(kind, line, found, offsets, sources, later):
    """What apps/train/calibrate.py learns from."""
    words = []
    for word in found["words"]:
        chunk, within = find_place(offsets, word["text_offset"])
        start = line.starts.get((sources[chunk], within))
        is_right = (start is not None and word.get("said", True)
                    and abs(word["start_ms"] - later - start) <= KEPT_MS)
        if "margin" in word:
            words.append([word["margin"], is_right])
    match = found["match"]
    return {"kind": kind, "name": line.path.stem, "words": words,
            "said": sum(word.get("said", True) for word in found["words"]) / max(
                len(found["words"]), 1),
            **{name: match.get(name) for name in ("margin", "fit", "duration", "spread", "loose")},
            "phones": [[p["label"], p["end_ms"] - p["start_ms"]] for p in found["phonemes"]]
            if kind == "right" else []}


if __name__ == "__main__":
    main()
