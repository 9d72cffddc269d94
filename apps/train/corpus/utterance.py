"""A spoken utterance with its times, and the files it is kept in.

Beside `NAME.wav` (16 bits, one channel, the rate of its source) stand two texts of lines
`start_ms end_ms label`, with times in milliseconds from the start of the recording: `NAME.lab` has
the phones, which follow each other without gaps from 0 to the end, silence being `x`; `NAME.words`
has the words as they are written in the text, without the pauses between them, where the source
gives them.
"""

import dataclasses
import wave

from phonemes import SILENCE


@dataclasses.dataclass
class Interval:
    start_ms: float
    end_ms: float
    label: str


@dataclasses.dataclass
class Utterance:
    rate: int
    samples: bytes  # 16 bits, little-endian
    phones: list
    words: list

    @property
    def duration_ms(self):
        return len(self.samples) / 2 / self.rate * 1000


def tidy(phones, duration_ms):
    """The phones as their ends give them, without gaps over the whole recording. Silences that
    follow each other become one, and what would last no time is left out."""
    result = []
    reached_ms = 0.0
    for phone in phones:
        end_ms = min(phone.end_ms, duration_ms)
        if end_ms <= reached_ms:
            continue
        if result and result[-1].label == phone.label == SILENCE:
            result[-1].end_ms = end_ms
        else:
            result.append(Interval(reached_ms, end_ms, phone.label))
        reached_ms = end_ms
    if result and result[-1].label == SILENCE:
        result[-1].end_ms = duration_ms
    elif reached_ms < duration_ms:
        result.append(Interval(reached_ms, duration_ms, SILENCE))
    return result


def write_wave(path, rate, samples):
    with wave.open(str(path), "wb") as output:
        output.setnchannels(1)
        output.setsampwidth(2)
        output.setframerate(rate)
        output.writeframes(samples)


def write_intervals(path, intervals):
    with open(path, "w", encoding="utf-8", newline="\n") as output:
        for interval in intervals:
            output.write(f"{interval.start_ms:.3f} {interval.end_ms:.3f} {interval.label}\n")


def read_intervals(path):
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            start_ms, end_ms, label = line.split()
            yield Interval(float(start_ms), float(end_ms), label)
