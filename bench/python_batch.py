#!/usr/bin/env python3
"""Measures how a batch of alignments through the Python package scales with threads.

usage: python_batch.py MANIFEST [MOST_THREADS]

Each line of MANIFEST is the path of a recording, a tab, and its text.
"""

import os
import pathlib
import sys
import time

import tessarin


def main() -> None:
    lines = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()
    jobs = [tuple(line.split("\t", 1)) for line in lines if line]
    most = int(sys.argv[2]) if len(sys.argv) > 2 else os.cpu_count() or 1
    seconds = sum(tessarin.Audio.from_file(path).duration_ms for path, _ in jobs) / 1000
    tessarin.align(*jobs[0])  # the engine is made
    print(f"{len(jobs)} recordings, {seconds:.0f} s of speech")
    alone = 0.0
    for threads in range(1, most + 1):
        begin = time.perf_counter()
        results = list(tessarin.align_many(jobs, threads=threads, return_errors=True))
        wall = time.perf_counter() - begin
        alone = alone or wall
        failed = sum(isinstance(result, tessarin.TessarinError) for result in results)
        print(f"{threads} threads  {wall:6.2f} s  {seconds / wall:7.1f} times real time  "
              f"speed-up {alone / wall:.2f}  ({failed} lost)")


if __name__ == "__main__":
    main()
