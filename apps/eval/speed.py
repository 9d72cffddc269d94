#!/usr/bin/env python3
"""Measures the tool on a long recording: start-up, speed on one core and peak memory.

usage: speed.py TOOL RECORDING.wav TEXT [MINUTES]

The long recording is RECORDING over and over, and its text likewise.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time
import wave


def run(command: list[str]) -> tuple[float, float, float]:
    """Runs to the end; returns wall seconds, processor seconds and peak memory in MB."""
    begin = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - begin
    if status != 0:
        sys.exit(f"{' '.join(command)}: ended with status {status}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main() -> None:
    tool, recording, text = sys.argv[1:4]
    minutes = float(sys.argv[4]) if len(sys.argv) > 4 else 10.0
    words = pathlib.Path(text).read_text(encoding="utf-8").strip()
    with wave.open(recording) as source:
        parameters = source.getparams()
        samples = source.readframes(parameters.nframes)
    seconds = parameters.nframes / parameters.framerate
    repeats = int(minutes * 60 / seconds) + 1

    startup = min(run([tool, "transcribe", "--text", "one"])[0] for _ in range(5))
    short = min(run([tool, "align", recording, "--text-file", text])[0] for _ in range(5))
    with tempfile.TemporaryDirectory() as folder:
        long_recording = os.path.join(folder, "long.wav")
        long_text = os.path.join(folder, "long.txt")
        with wave.open(long_recording, "wb") as out:
            out.setparams(parameters)
            for _ in range(repeats):
                out.writeframes(samples)
        pathlib.Path(long_text).write_text(" ".join([words] * repeats), encoding="utf-8")
        runs = [run([tool, "align", long_recording, "--text-file", long_text, "-q"])
                for _ in range(3)]
    wall, processor, memory = min(runs)
    audio = repeats * seconds
    print(f"start, lexicon and one word      {startup * 1000:8.1f} ms")
    print(f"align, {seconds:5.1f} s of audio          {short * 1000:8.1f} ms")
    print(f"align, {audio:5.1f} s of audio          {wall:8.2f} s "
          f"({processor:.2f} s of processor time)")
    print(f"times real time                  {audio / processor:8.1f}")
    print(f"peak memory                      {memory:8.1f} MB")


if __name__ == "__main__":
    main()
