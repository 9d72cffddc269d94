#!/usr/bin/env python3
"""Collects the speech that the acoustic model is trained and judged on.

    collect.py DIRECTORY

Synthesisers speak the sentences of data/sentences, and recorded prompts are decoded. DIRECTORY
receives one folder per speaker and `corpus.tsv`, one line an utterance, its columns separated by
tabs:

    path      of the WAV file, relative to DIRECTORY
    speaker   name of the voice
    set       `train`, or `dev` (prompts kept out of training), or `eval` (the left-out voice), or
              `heard` (what that one says, said by the voices that are trained on)
    kind      `timed`: the phones and their times are known, or `text`: only what is said
    text      what is said

utterance.py describes the files beside a `timed` recording. An utterance is named after its
text, and one that exists is not made again: after a change to the collecting code, start with an
empty directory. The result depends neither on the number of processes nor on their order.
"""

import argparse
import functools
import hashlib
import multiprocessing
import os
import pathlib
import sys
import traceback

import prompts
from espeak_voice import AMERICAN_VOICES, ESPEAK_VOICES, SCOTTISH_VOICES, EspeakVoice
from flite_voice import FliteVoice
from utterance import write_intervals, write_wave

SENTENCES = pathlib.Path(__file__).resolve().parents[3] / "data" / "sentences"
TRAINING_VOICES = ("slt", "rms", "kal16")
LEFT_OUT_VOICE = "awb"
PROMPT_SPEAKER = "allison"
PROCESSES = 2


def read_sentences(*names):
    return [line for name in names
            for line in (SENTENCES / f"{name}.txt").read_text(encoding="ascii").splitlines()]


def plan():
    """(path, speaker, set, kind, text) of every utterance."""
    def synthesised(speaker, purpose, text):
        digest = hashlib.md5(text.encode("ascii")).hexdigest()[:12]
        return f"{speaker}/{digest}.wav", speaker, purpose, "timed", text

    training = read_sentences("written", "composed")
    for speaker in TRAINING_VOICES:
        yield from (synthesised(speaker, "train", text) for text in training)
    for place, text in enumerate(training):
        for voices in (AMERICAN_VOICES, SCOTTISH_VOICES):
            yield synthesised(voices[place % len(voices)], "train", text)
    for text in read_sentences("evaluation"):
        yield synthesised(LEFT_OUT_VOICE, "eval", text)
        yield from (synthesised(speaker, "heard", text) for speaker in TRAINING_VOICES)
    for name, text in prompts.read_prompts():
        purpose = "dev" if prompts.is_development(name) else "train"
        yield f"{PROMPT_SPEAKER}/{name}.wav", PROMPT_SPEAKER, purpose, "text", text


@functools.cache
def voice(speaker):
    return EspeakVoice(speaker) if speaker in ESPEAK_VOICES else FliteVoice(speaker)


def make(directory, row):
    """Makes an utterance if it is missing. The synthesisers carry random numbers and phases from
    one utterance to the next, so each is spoken by a process that has not spoken yet."""
    path, speaker, _, kind, _ = row
    if (directory / path).exists():
        return
    if kind == "timed":
        voice(speaker)
    child = os.fork()
    if child == 0:
        status = 1
        try:
            write(directory, row)
            status = 0
        except Exception:
            traceback.print_exc()
        finally:
            os._exit(status)
    if os.waitpid(child, 0)[1] != 0:
        raise RuntimeError(f"{path} could not be made")


def write(directory, row):
    path, speaker, _, kind, text = row
    target = directory / path
    target.parent.mkdir(parents=True, exist_ok=True)
    # The recording appears last and at once, so a broken run leaves no half an utterance.
    unfinished = target.with_suffix(".part")
    if kind == "timed":
        utterance = voice(speaker).speak(text)
        write_intervals(target.with_suffix(".lab"), utterance.phones)
        if utterance.words:
            write_intervals(target.with_suffix(".words"), utterance.words)
        write_wave(unfinished, utterance.rate, utterance.samples)
    else:
        name = path.removeprefix(f"{PROMPT_SPEAKER}/").removesuffix(".wav")
        write_wave(unfinished, prompts.RATE, prompts.read_recording(name))
    unfinished.rename(target)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("directory", type=pathlib.Path)
    directory = parser.parse_args().directory

    rows = list(plan())
    directory.mkdir(parents=True, exist_ok=True)
    with multiprocessing.Pool(PROCESSES) as pool:
        finished = pool.imap(functools.partial(make, directory), rows, chunksize=25)
        for count, _ in enumerate(finished, 1):
            if count % 250 == 0 or count == len(rows):
                print(f"collected {count} of {len(rows)} utterances", file=sys.stderr)
    with open(directory / "corpus.tsv", "w", encoding="utf-8", newline="\n") as output:
        output.writelines("\t".join(row) + "\n" for row in rows)


if __name__ == "__main__":
    main()
