#!/usr/bin/env python3
"""Measures how far the mouth of live audio lags: from the push of a sample to the frame that shows
it.

usage: live_delay.py AUDIO.wav [--push MS] [--delay MS]... [--look-ahead MS]... [--fps N]...

AUDIO is 16-bit and plays at its own speed, so each row takes as long as it lasts. Milliseconds:
median, 95th and 99th percentile over all samples. The package of bindings/python must be found
(PYTHONPATH), and TESSARIN_LIBRARY and TESSARIN_DATA may name the library and the data.
"""

import argparse
import array
import itertools
import pathlib
import sys
import threading
import time
import wave

import tessarin

TAKE_EVERY_S = 0.002


def read_samples(path: pathlib.Path) -> tuple[array.array, int]:
    """The first channel, as floats, which are pushed without being changed."""
    with wave.open(str(path)) as recording:
        samples = array.array("h", recording.readframes(recording.getnframes()))
        first = samples[::recording.getnchannels()]
        return array.array("f", (sample / 32768 for sample in first)), recording.getframerate()


def measure(samples: array.array, rate: int, push_ms: int, **options: int) -> list[float]:
    live = tessarin.Live(rate=rate, **options)
    length_ms = len(samples) * 1000 // rate // push_ms * push_ms
    pushed_at = [0.0] * length_ms
    begin = time.perf_counter()

    def listen() -> None:
        for ms in range(0, length_ms, push_ms):
            time.sleep(max(begin + (ms + push_ms) / 1000 - time.perf_counter(), 0))
            live.push(samples[ms * rate // 1000:(ms + push_ms) * rate // 1000])
            pushed_at[ms:ms + push_ms] = [time.perf_counter()] * push_ms

    microphone = threading.Thread(target=listen)
    microphone.start()
    delays: list[float] = []

    def take() -> None:
        frames, now = live.take().frames, time.perf_counter()
        for frame in frames:
            delays.extend(1000 * (now - pushed)
                          for pushed in pushed_at[frame.start_ms:frame.end_ms] if pushed > 0)

    while microphone.is_alive():
        take()
        time.sleep(TAKE_EVERY_S)
    microphone.join()
    take()  # what the last push completed
    return sorted(delays)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("audio", type=pathlib.Path)
    parser.add_argument("--push", type=int, default=10)
    parser.add_argument("--delay", type=int, action="append")
    parser.add_argument("--look-ahead", type=int, action="append")
    parser.add_argument("--fps", type=int, action="append")
    arguments = parser.parse_args()
    samples, rate = read_samples(arguments.audio)
    print("delay  look-ahead  fps  median  95 %  99 %")
    for delay, look_ahead, fps in itertools.product(
            arguments.delay or [25], arguments.look_ahead or [20], arguments.fps or [30]):
        delays = measure(samples, rate, arguments.push, delay_ms=delay, look_ahead_ms=look_ahead,
                         fps=fps)
        if not delays:
            sys.exit(f"{arguments.audio}: is too short: it lasts {len(samples) / rate:.2f} s and "
                     "ends before the first frame is shown; give some seconds of speech")
        at = [delays[int(share * (len(delays) - 1))] for share in (0.5, 0.95, 0.99)]
        print(f"{delay:5d}  {look_ahead:10d}  {fps:3d}  {at[0]:6.0f}  {at[1]:4.0f}  {at[2]:4.0f}")


if __name__ == "__main__":
    main()
