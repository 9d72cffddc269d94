#!/usr/bin/env python3
"""A batch that is killed again and again ends with the results of one that is not:
batch_kill.py TOOL SOURCE_DIR [LINES [KILLS]]."""

import filecmp
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
import batch_lines  # noqa: E402

tool, source = sys.argv[1], pathlib.Path(sys.argv[2])
count = int(sys.argv[3]) if len(sys.argv) > 3 else 60
kills = int(sys.argv[4]) if len(sys.argv) > 4 else 5


def files_in(folder: pathlib.Path) -> set:
    return {str(path.relative_to(folder)) for path in folder.rglob("*")
            if path.is_file() and not path.name.startswith("journal")}


def run(lines: pathlib.Path, out: pathlib.Path) -> subprocess.Popen:
    return subprocess.Popen([tool, "batch", str(lines), "--out", str(out), "--resume", "-q", "--jobs",
                             "2", "--format", "json", "--format", "tsv", "--pages", "flagged"],
                            stderr=subprocess.DEVNULL)


def done(out: pathlib.Path) -> int:
    journal = out / "journal.jsonl"
    return journal.read_bytes().count(b"\n") if journal.exists() else 0


with tempfile.TemporaryDirectory() as scratch:
    folder = pathlib.Path(scratch)
    batch_lines.make_lines(tool, str(source / "data/demo/echo-test"), folder / "in", count)
    lines = folder / "in" / "lines.csv"
    begin = time.monotonic()
    code = run(lines, folder / "plain").wait()
    assert code == 3, f"the damaged lines must be found, with 3, not {code}"
    took = time.monotonic() - begin
    chance = random.Random(kills)
    killed_at = []
    for k in range(kills):
        process = run(lines, folder / "killed")
        # Until it has done its share, and at any time after.
        share = count * (k + 1) // (kills + 1)
        while process.poll() is None and done(folder / "killed") < share:
            time.sleep(0.001)
        time.sleep(chance.random() * took / count)
        process.kill()
        process.wait()
        killed_at.append(done(folder / "killed"))
    assert run(lines, folder / "killed").wait() == code
    names = files_in(folder / "plain")
    assert names == files_in(folder / "killed"), names ^ files_in(folder / "killed")
    _, different, unread = filecmp.cmpfiles(folder / "plain", folder / "killed", names, shallow=False)
    assert not different and not unread, (different, unread)
    print(f"{count} lines, killed after {killed_at} of them: {len(names)} files are the same")
