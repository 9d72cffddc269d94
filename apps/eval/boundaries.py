#!/usr/bin/env python3
"""Measures alignments against speech whose phone times are known.

usage: boundaries.py TOOL CORPUS [--set eval] [--known-phones] [--limit N] [-- tool options]

CORPUS is the folder that apps/train/corpus/collect.py fills. Each timed recording of the set is
aligned by the tool, from its text (so that lexicon and rules choose the phones) or, with
--known-phones, from the phones that were really spoken (so that only the times are judged).

Phones are paired by edit distance over their labels, silence left out; a boundary is the start of a
paired phone, and its end where a silence follows. Words are paired likewise; both ends count.
Closures are p, b and m: one counts as found when at least half of its true interval lies under p, b
or m of ours.
"""

import argparse
import concurrent.futures
import json
import pathlib
import statistics
import subprocess
import tempfile

CLOSURES = {"p", "b", "m"}
VOICELESS_STOPS = {"p", "t", "k"}
VOWELS = set("AA AE AH AO AW AY EH ER EY IH IY OW OY UH UW".split())
SILENCE = "x"
TOLERANCES_MS = (10, 20, 50)
COLUMNS = ("path", "speaker", "set", "kind", "text")


def read_labels(path: pathlib.Path) -> list[tuple[float, float, str]]:
    rows = (line.split() for line in path.read_text(encoding="utf-8").splitlines() if line)
    return [(float(start), float(end), label) for start, end, label in rows]


def read_corpus(folder: pathlib.Path) -> list[dict]:
    """The rows of corpus.tsv, with paths that can be opened."""
    with open(folder / "corpus.tsv", encoding="utf-8") as lines:
        rows = [dict(zip(COLUMNS, line.rstrip("\n").split("\t"))) for line in lines]
    return [row | {"path": str(folder / row["path"])} for row in rows]


def said_words(result: dict) -> list[dict]:
    """The words of a result that were heard: others have no times."""
    return [word for word in result["words"] if word.get("said", True)]


def letters(number: int) -> str:
    """A word that no lexicon knows and that holds no digits, which are read as numbers."""
    text = ""
    while True:
        text = chr(ord("A") + number % 26) + text
        number //= 26
        if number == 0:
            return "QZ" + text


def known_phone_options(labels, folder: pathlib.Path) -> list[str]:
    """The spoken phones as a lexicon and a text: one word for each stretch between silences."""
    stretches = [""]
    for _, _, label in labels:
        if label == SILENCE:
            stretches.append("")
        else:
            stretches[-1] += label
    stretches = [stretch for stretch in stretches if stretch]
    lexicon = folder / "phones.txt"
    lexicon.write_text("".join(f"{letters(i)}={phones}\n" for i, phones in enumerate(stretches)),
                       encoding="utf-8")
    text = " ".join(letters(i) for i in range(len(stretches)))
    return ["--text", text, "--lexicon", str(lexicon)]


def align(tool: str, recording: dict, known_phones: bool, options: list[str]):
    audio = pathlib.Path(recording["path"])
    labels = read_labels(audio.with_suffix(".lab"))
    with tempfile.TemporaryDirectory() as folder:
        said = (known_phone_options(labels, pathlib.Path(folder)) if known_phones
                else ["--text", recording["text"]])
        run = subprocess.run([tool, "align", str(audio), "-q", *said, *options],
                             capture_output=True, text=True)
    if not run.stdout:
        raise SystemExit(f"{audio}: {run.stderr.strip()}")
    result = json.loads(run.stdout)
    phones = [(p["start_ms"], p["end_ms"], p["label"]) for p in result["phonemes"]]
    words = [(w["start_ms"], w["end_ms"], w["text"].upper()) for w in said_words(result)]
    true_words = [(start, end, word.upper())
                  for start, end, word in read_labels(audio.with_suffix(".words"))]
    return recording, measure(labels, true_words, phones, words, result["code"])


def pair(truth, found):
    """Pairs of equal phones on a path of least edit distance."""
    rows, columns = len(truth), len(found)
    cost = [[i + j if i == 0 or j == 0 else 0 for j in range(columns + 1)]
            for i in range(rows + 1)]
    for i in range(1, rows + 1):
        for j in range(1, columns + 1):
            same = truth[i - 1][2] == found[j - 1][2]
            cost[i][j] = min(cost[i - 1][j - 1] + (0 if same else 1), cost[i - 1][j] + 1,
                             cost[i][j - 1] + 1)
    pairs = []
    i, j = rows, columns
    while i > 0 and j > 0:
        same = truth[i - 1][2] == found[j - 1][2]
        if cost[i][j] == cost[i - 1][j - 1] + (0 if same else 1):
            if same:
                pairs.append((truth[i - 1], found[j - 1]))
            i, j = i - 1, j - 1
        elif cost[i][j] == cost[i - 1][j] + 1:
            i -= 1
        else:
            j -= 1
    return pairs[::-1]


def spoken(phones):
    """Each phone with the mark whether a silence or the end follows."""
    marked = []
    for index, (start, end, label) in enumerate(phones):
        if label != SILENCE:
            last = index + 1 == len(phones) or phones[index + 1][2] == SILENCE
            marked.append((start, end, label, last))
    return marked


def closure_found(interval, found) -> bool:
    start, end, _ = interval
    covered = sum(max(0.0, min(end, e) - max(start, s)) for s, e, label in found
                  if label in CLOSURES)
    return covered >= (end - start) / 2


def measure(labels, true_words, phones, words, code) -> dict:
    truth = spoken(labels)
    pairs = pair(truth, spoken(phones))
    before = {start: label for (_, start, label) in labels}
    errors, stops = [], []
    for (t_start, t_end, label, t_last), (f_start, f_end, _, f_last) in pairs:
        errors.append(f_start - t_start)
        if label in VOICELESS_STOPS and before.get(t_start) in VOWELS:
            stops.append(f_start - t_start)
        if t_last and f_last:
            errors.append(f_end - t_end)
    word_errors = [f - t for true, ours in pair(true_words, words)
                   for t, f in zip(true[:2], ours[:2])]
    closures = [interval for interval in labels if interval[2] in CLOSURES]
    return {"errors": errors, "stops": stops, "word_errors": word_errors, "phones": len(truth),
            "paired": len(pairs), "closures": len(closures),
            "closures_found": sum(closure_found(c, phones) for c in closures),
            "lost": code != 0}


def error_columns(errors) -> str:
    sizes = [abs(error) for error in errors]
    shares = [100.0 * sum(size <= limit for size in sizes) / len(sizes)
              for limit in TOLERANCES_MS]
    return (f"{len(sizes):7} {statistics.mean(sizes):7.1f} {statistics.median(sizes):7.1f} "
            f"{statistics.mean(errors):+7.1f} " + " ".join(f"{share:6.1f}" for share in shares))


def print_rows(name: str, measured: list) -> None:
    def total(key):
        return sum(m[key] for m in measured)

    errors = [error for m in measured for error in m["errors"]]
    words = [error for m in measured for error in m["word_errors"]]
    print(f"{name:12} phones {error_columns(errors)} "
          f"{100.0 * total('closures_found') / max(total('closures'), 1):8.1f} "
          f"{100.0 * total('paired') / total('phones'):7.1f} {len(measured):6} {total('lost'):5}")
    if words:
        print(f"{'':12} words  {error_columns(words)}")


HEADER = (f"{'speaker':12} {'':6} {'bounds':>7} {'mean':>7} {'median':>7} {'bias':>7} "
          + " ".join(f"{'<=' + str(limit):>6}" for limit in TOLERANCES_MS)
          + f" {'closures':>8} {'paired':>7} {'files':>6} {'lost':>5}")


def main() -> None:
    parser = argparse.ArgumentParser(description="Measure alignments against known phone times.")
    parser.add_argument("tool")
    parser.add_argument("corpus", type=pathlib.Path)
    parser.add_argument("--set", default="eval")
    parser.add_argument("--speaker")
    parser.add_argument("--known-phones", action="store_true")
    parser.add_argument("--limit", type=int)
    parser.add_argument("options", nargs="*", help="passed to the tool, after --")
    arguments = parser.parse_args()

    recordings = [row for row in read_corpus(arguments.corpus)
                  if row["set"] == arguments.set and row["kind"] == "timed"
                  and arguments.speaker in (None, row["speaker"])][:arguments.limit]
    if not recordings:
        raise SystemExit("no timed recordings in this set")

    measured = {}
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for recording, result in pool.map(
                lambda r: align(arguments.tool, r, arguments.known_phones, arguments.options),
                recordings):
            measured.setdefault(recording["speaker"], []).append(result)
    print(HEADER)
    for speaker in sorted(measured):
        print_rows(speaker, measured[speaker])


if __name__ == "__main__":
    main()
