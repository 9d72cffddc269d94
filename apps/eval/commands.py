#!/usr/bin/env python3
"""Measures how well spoken commands are distinguished, by their text and by recorded samples.

usage: commands.py TOOL FOLDER

Twenty commands of one to four words are taken from the prompts that the model was not trained on,
so that there is a recording of a person for each; the synthesisers say them too. FOLDER receives
the recordings. Each is also made a second time, as somebody may say it again: slower or faster by
an eighth, at half the level, in noise 30 dB below the speech. Of synthesised speech no other
second recording is to be had, since it is the same each time.

Three tables are printed, each with a line a voice and with what was taken for what: commands by
their text; by one sample each, said again by the voice of the samples; by one sample each, said by
the other voices.
"""

import argparse
import array
import collections
import csv
import io
import math
import pathlib
import random
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "train" / "corpus"))
import prompts  # noqa: E402
from espeak_voice import AMERICAN_VOICES, EspeakVoice  # noqa: E402
from flite_voice import FliteVoice  # noqa: E402
from utterance import write_wave  # noqa: E402

COMMANDS = {
    "dictate/record": "record",
    "dictate/playback": "playback",
    "digits/0": "zero",
    "digits/7": "seven",
    "digits/11": "eleven",
    "digits/30": "thirty",
    "digits/day-1": "Monday",
    "digits/today": "today",
    "digits/star": "star",
    "vm-extension": "extension",
    "dictate/playback_mode": "playback mode",
    "hello-world": "hello world",
    "conf-errormenu": "invalid choice",
    "dictate/truncating_audio": "truncating audio",
    "letters/ascii62": "greater than",
    "vm-changeto": "change to which folder",
    "vm-star-cancel": "press star to cancel",
    "vm-isonphone": "is on the phone",
    "conf-unmuted": "you are now unmuted",
    "something-terribly-wrong": "something is terribly wrong",
}
FLITE_VOICES = ("slt", "rms", "kal16", "awb")
PERSON = "allison"
VOICES = (PERSON, *FLITE_VOICES, *AMERICAN_VOICES)
NOISE_DB = -30.0


def decode(path, tempo):
    """The samples of a recording at 16 kHz, spoken `tempo` times as fast."""
    done = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(path), "-af", f"atempo={tempo}", "-ac", "1", "-ar",
         str(prompts.RATE), "-f", "s16le", "-"], check=True, capture_output=True)
    return array.array("h", done.stdout)


def said_again(path, place):
    chance = random.Random(place)
    samples = decode(path, 9 / 8 if place % 2 == 0 else 7 / 8)
    power = sum(sample * sample for sample in samples) / len(samples)
    noise = math.sqrt(power) * 10 ** (NOISE_DB / 20)
    return array.array("h", (max(-32768, min(32767, round((sample + chance.gauss(0, noise)) / 2)))
                             for sample in samples)).tobytes()


def recording(folder, voice, place, again=False):
    return folder / voice / f"{place:02d}{'-again' if again else ''}.wav"


def make_recordings(folder):
    for voice in VOICES:
        if recording(folder, voice, len(COMMANDS) - 1, again=True).exists():
            continue
        (folder / voice).mkdir(parents=True, exist_ok=True)
        speaker = None
        if voice != PERSON:
            speaker = EspeakVoice(voice) if voice in AMERICAN_VOICES else FliteVoice(voice)
        for place, (name, text) in enumerate(COMMANDS.items()):
            path = recording(folder, voice, place)
            if speaker is None:
                write_wave(path, prompts.RATE, prompts.read_recording(name))
            else:
                utterance = speaker.speak(text)
                write_wave(path, utterance.rate, utterance.samples)
            write_wave(recording(folder, voice, place, again=True), prompts.RATE,
                       said_again(path, place))


def recognize(tool, *arguments):
    """The command that is found for each recording, in their order."""
    done = subprocess.run([tool, "commands", "--quiet", *map(str, arguments)],
                          capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(done.stderr.strip())
    return [row["command"] for row in csv.DictReader(io.StringIO(done.stdout), delimiter="\t")]


class Confusions:
    """What was taken for what."""

    def __init__(self, title):
        self.title = title
        self.lines = []
        self.wrong = collections.Counter()
        self.count = 0

    def add(self, voice, said, heard):
        pairs = list(zip(said, heard, strict=True))
        errors = [pair for pair in pairs if pair[0] != pair[1]]
        self.lines.append(f"  {voice:14} {len(pairs) - len(errors):5} of {len(pairs)}")
        self.wrong.update(errors)
        self.count += len(pairs)

    def print(self):
        right = self.count - self.wrong.total()
        print(f"{self.title}: {right} of {self.count}, {100 * right / self.count:.1f} percent")
        print("\n".join(self.lines))
        for (said, heard), times in self.wrong.most_common():
            print(f"  {said} -> {heard or 'nothing'}: {times}")
        print()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("tool")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--floor", help="energy floor in decibels, for all [the tool's own]")
    arguments = parser.parse_args()
    tool, folder = arguments.tool, arguments.folder
    floor = ("--floor", arguments.floor) if arguments.floor else ()
    make_recordings(folder)

    texts = list(COMMANDS.values())
    places = range(len(texts))
    commands = folder / "commands.txt"
    commands.write_text("\n".join(texts) + "\n", encoding="ascii")

    by_text = Confusions("commands by their text")
    again = Confusions("by a sample each, the same voice again")
    others = Confusions("by a sample each, the other voices")
    for voice in VOICES:
        said = [recording(folder, voice, place) for place in places]
        by_text.add(voice, texts, recognize(tool, commands, *said, *floor))
        samples = folder / voice / "samples"
        recognize(tool, *floor, "--save", samples, "--record",
                  *(f"{text}={path}" for text, path in zip(texts, said)))
        said_again_paths = [recording(folder, voice, place, again=True) for place in places]
        again.add(voice, texts, recognize(tool, *floor, "--load", samples, *said_again_paths))
        strange = [(texts[place], recording(folder, other, place))
                   for other in VOICES if other != voice for place in places]
        heard = recognize(tool, *floor, "--load", samples, *(path for _, path in strange))
        others.add(voice, [text for text, _ in strange], heard)
    for table in (by_text, again, others):
        table.print()


if __name__ == "__main__":
    main()
