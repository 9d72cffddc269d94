#!/usr/bin/env python3
"""What a batch costs beside one process for each recording: batch.py TOOL FOLDER [COUNT].

FOLDER gets COUNT recordings (2000; tests/support/batch_lines.py makes them) and stays. The measure of
work is processor time, which other work on the machine hardly changes.
"""

import csv
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(SOURCE / "tests" / "support"))
import batch_lines  # noqa: E402

SINGLES = 100  # recordings that get a process of their own
SAMPLE_SECONDS = 0.2


def processor_seconds() -> float:
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def timed(function) -> tuple:
    begin, used = time.monotonic(), processor_seconds()
    result = function()
    return time.monotonic() - begin, processor_seconds() - used, result


def memory_mb(process: int) -> float:
    try:
        with open(f"/proc/{process}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024
    except (OSError, StopIteration):
        return 0.0


def run_batch(tool: str, lines: pathlib.Path, out: pathlib.Path) -> list:
    process = subprocess.Popen([tool, "batch", str(lines), "--out", str(out), "-q"],
                               stderr=subprocess.DEVNULL)
    memory = []
    while process.poll() is None:
        memory.append(memory_mb(process.pid))
        time.sleep(SAMPLE_SECONDS)
    assert process.returncode == 3, process.returncode
    return memory


def run_singles(tool: str, rows: list, folder: pathlib.Path) -> None:
    waiting = []
    for row in rows:
        waiting.append(subprocess.Popen(
            [tool, "align", str(folder / row["audio"]), "--text", row["text"], "-q", "-o",
             str(folder / "single.json")], stderr=subprocess.DEVNULL))
        if len(waiting) >= (os.cpu_count() or 1):
            waiting.pop(0).wait()
    for process in waiting:
        process.wait()


def main() -> None:
    tool, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    count = int(sys.argv[3]) if len(sys.argv) > 3 else 2000
    lines = folder / "lines.csv"
    if not lines.exists():
        batch_lines.make_lines(tool, str(SOURCE / "data/demo/echo-test"), folder, count)
    with open(lines, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    shutil.rmtree(folder / "out", ignore_errors=True)
    took, used, memory = timed(lambda: run_batch(tool, lines, folder / "out"))
    good = [row for row in rows if row["text"] and not row["options"] and not row["name"]]
    singles = [row for row in good if (folder / row["audio"]).exists()][10:10 + SINGLES]
    single_took, single_used, _ = timed(lambda: run_singles(tool, singles, folder))
    cores = os.cpu_count() or 1
    print(f"batch: {len(rows)} recordings, {len(rows) / took:.1f} a second, "
          f"{1000 * used / len(rows):.1f} ms of processor time each, "
          f"{100 * used / took / cores:.0f} % of {cores} cores")
    print(f"one process each: {len(singles) / single_took:.1f} a second, "
          f"{1000 * single_used / len(singles):.1f} ms of processor time each")
    quarters = [memory[len(memory) * k // 4:len(memory) * (k + 1) // 4] for k in range(4)]
    print("memory at most, by quarters of the time: "
          + ", ".join(f"{max(each, default=0):.0f}" for each in quarters) + " MB")


if __name__ == "__main__":
    main()
