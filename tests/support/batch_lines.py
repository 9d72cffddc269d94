#!/usr/bin/env python3
"""Makes recordings to try `tessarin batch` on: batch_lines.py TOOL DEMO FOLDER COUNT.

They are phrases cut out of the demo recording, at the words that `tessarin align` finds, and, where
espeak-ng is installed, sentences that it says. Of each kind of damage there is about one in a hundred,
but at least one. The list is FOLDER/lines.csv.
"""

import csv
import json
import pathlib
import random
import shutil
import struct
import subprocess
import sys

KINDS_OF_DAMAGE = ("missing", "empty", "prose", "header only", "cut in the header", "no text file",
                   "blank text", "bad options", "two texts", "same name")
PHRASES = ("Where did you put the {}?", "I have never seen a {} like that.", "Open the {} at once.",
           "The {} is on the second floor.", "They sold the {} in the spring.",
           "Nobody told me about the {}.")
THINGS = ("lantern", "green door", "letter", "boat", "old clock", "garden", "key", "Zorvath", "bridge",
          "kettle", "Quellin map", "horse", "engine", "market", "window", "silver coin")


def wav_bytes(samples: bytes, rate: int) -> bytes:
    form = struct.pack("<4sIHHIIHH", b"fmt ", 16, 1, 1, rate, 2 * rate, 2, 16)
    data = struct.pack("<4sI", b"data", len(samples)) + samples
    return struct.pack("<4sI4s", b"RIFF", 4 + len(form) + len(data), b"WAVE") + form + data


def cut_phrase(chance: random.Random, samples: bytes, words: list) -> tuple:
    first = chance.randrange(len(words) - 4)
    last = min(len(words) - 1, first + chance.randrange(3, 9))
    start = max(0, words[first]["start_ms"] - chance.randrange(50))
    end = words[last]["end_ms"] + chance.randrange(50)
    return (wav_bytes(samples[32 * start:32 * end], 16000),
            " ".join(word["text"] for word in words[first:last + 1]))


def damage(kind: str, folder: pathlib.Path, path: pathlib.Path, row: dict) -> None:
    content = path.read_bytes()
    if kind == "missing":
        path.unlink()
    elif kind == "empty":
        path.write_bytes(b"")
    elif kind == "prose":
        path.write_text("This is not a recording.\n")
    elif kind == "header only":
        path.write_bytes(content[:44])
    elif kind == "cut in the header":
        path.write_bytes(content[:30])
    elif kind == "no text file":
        row.update(text="", text_file="no-such.txt")
    elif kind == "blank text":
        (folder / "blank.txt").write_text(" \n")
        row.update(text="", text_file="blank.txt")
    elif kind == "bad options":
        row["options"] = "--beam 7"
    elif kind == "two texts":
        row["text_file"] = "blank.txt"
    else:
        row["name"] = "0000/same"


def make_lines(tool: str, demo: str, folder: pathlib.Path, count: int) -> None:
    chance = random.Random(count)
    aligned = json.loads(subprocess.run(
        [tool, "align", f"{demo}.wav", "--text-file", f"{demo}.txt", "-q"], check=True,
        capture_output=True).stdout)
    samples = pathlib.Path(f"{demo}.wav").read_bytes()[44:]
    speaker = shutil.which("espeak-ng")
    rows = []
    for i in range(count):
        path = folder / f"{i // 100:04}" / f"line{i:06}.wav"
        path.parent.mkdir(parents=True, exist_ok=True)
        if speaker is not None and i % 2 == 1:
            text = chance.choice(PHRASES).format(chance.choice(THINGS))
            subprocess.run([speaker, "-v", f"en-us+m{1 + i % 7}", "-s", str(chance.randrange(130, 200)),
                            "-w", str(path), text], check=True)
        else:
            content, text = cut_phrase(chance, samples, aligned["words"])
            path.write_bytes(content)
        rows.append({"audio": str(path.relative_to(folder)), "text": text, "text_file": "",
                     "options": "", "name": ""})
    (folder / "blank.txt").write_text(" \n")
    for k, kind in enumerate(KINDS_OF_DAMAGE):
        for i in range(k, count, max(100, len(KINDS_OF_DAMAGE))):
            damage(kind, folder, folder / rows[i]["audio"], rows[i])
    with open(folder / "lines.csv", "w", encoding="utf-8", newline="") as file:
        writer = csv.DictWriter(file, rows[0])
        writer.writeheader()
        writer.writerows(rows)


if __name__ == "__main__":
    make_lines(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]), int(sys.argv[4]))
