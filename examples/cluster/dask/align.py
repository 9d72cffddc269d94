#!/usr/bin/env python3
"""Aligns the lines of a list on the workers of a Dask cluster, with results as they come:

    align.py LIST --out results.jsonl [--scheduler tcp://HOST:8786]

Without a scheduler it starts two workers on this machine. A worker that dies takes nothing with it:
Dask gives its line to another. The list is CSV with the columns audio and text; all workers must see
the recordings, and have the package tessarin.
"""

from __future__ import annotations

import argparse
import csv
import json
import pathlib
import sys
from typing import Any, Iterator

import distributed
import tessarin

RETRIES = 3  # of what fails for another reason than the line itself


def align(line: dict[str, str]) -> dict[str, Any]:
    """What a worker does. The model and the lexicon are loaded once in each process; what is wrong
    with a line is a result like any other, since a second try would not mend it."""
    engine = tessarin.default_engine()
    try:
        result = (engine.align(line["audio"], line["text"]) if line.get("text")
                  else engine.recognize(line["audio"]))
    except (tessarin.TessarinError, OSError) as error:
        return {"audio": line["audio"], "error": str(error)}
    return {"audio": line["audio"],
            "verdict": result.match.verdict if result.match else None,
            "words": [[word.text, word.start_ms, word.end_ms] for word in result.words],
            "phonemes": [[sound.label, sound.start_ms, sound.end_ms] for sound in result.phonemes]}


def read_list(path: pathlib.Path) -> list[dict[str, str]]:
    with open(path, encoding="utf-8", newline="") as file:
        return [{**row, "audio": str((path.parent / row["audio"]).resolve())}
                for row in csv.DictReader(file)]


def results_as_they_come(client: distributed.Client,
                         lines: list[dict[str, str]]) -> Iterator[dict[str, Any]]:
    futures = client.map(align, lines, retries=RETRIES, pure=False)
    for future, result in distributed.as_completed(futures, with_results=True):
        future.release()
        yield result


def main() -> int:
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("list", type=pathlib.Path)
    arguments.add_argument("--out", type=pathlib.Path, required=True)
    arguments.add_argument("--scheduler")
    given = arguments.parse_args()
    lines = read_list(given.list)
    failed = 0
    with distributed.Client(given.scheduler or distributed.LocalCluster(
            n_workers=2, threads_per_worker=1, dashboard_address=None)) as client, \
            open(given.out, "w", encoding="utf-8") as out:
        for done, result in enumerate(results_as_they_come(client, lines), start=1):
            failed += "error" in result
            out.write(json.dumps(result) + "\n")
            out.flush()
            print(f"{done} of {len(lines)}, {failed} failed", end="\r", file=sys.stderr)
    print(file=sys.stderr)
    return 3 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
