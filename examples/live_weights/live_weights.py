"""The mouth of a voice that is still being heard: the microphone, where the package sounddevice and a
microphone are there, or a recording at its own speed.

usage: live_weights.py [AUDIO [SECONDS]]
"""

import sys
import threading
import time

import tessarin


def show(live: tessarin.Live) -> None:
    mouth = live.weights()
    shape = max(mouth.weights, key=mouth.weights.__getitem__)
    print(f"{mouth.time_ms:6d}  {shape:3} {'#' * int(40 * mouth.weights[shape])}")


def follow_microphone() -> None:
    import sounddevice

    live = tessarin.Live(rate=48000, fps=60)
    with sounddevice.InputStream(
            samplerate=48000, channels=1, blocksize=480, dtype="float32",
            callback=lambda block, *_: live.push_from_callback(block[:, 0])):
        while True:
            show(live)
            time.sleep(1 / 60)


def follow_recording(path: str, seconds: float) -> None:
    audio = tessarin.Audio.from_file(path)
    live = tessarin.Live(rate=audio.rate, fps=60)
    samples = audio.samples[:int(seconds * audio.rate)]

    def card() -> None:
        block = audio.rate // 100
        begin = time.monotonic()
        for at in range(0, len(samples), block):
            time.sleep(max(0.0, begin + (at + block) / audio.rate - time.monotonic()))
            live.push_from_callback(samples[at:at + block])

    thread = threading.Thread(target=card)
    thread.start()
    while thread.is_alive():
        show(live)
        time.sleep(1 / 60)
    print(f"lost {live.lost_ms} ms")


if __name__ == "__main__":
    if len(sys.argv) > 1:
        follow_recording(sys.argv[1], float(sys.argv[2]) if len(sys.argv) > 2 else 1e6)
    else:
        follow_microphone()
