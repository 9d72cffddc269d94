"""What searches find, as plain objects."""

from __future__ import annotations

import ctypes
import itertools
import os
import weakref
from dataclasses import dataclass, field
from typing import Any, Mapping, Sequence, Union

from tessarin import _library
from tessarin._arrays import numpy
from tessarin._library import Library
from tessarin._shapes import Shapes, Switch


@dataclass(frozen=True)
class Phoneme:
    """A sound; "x" is silence. `score` is its strength, 0 to 100; `confidence`, 0 to 1, how likely
    it is that it was said there, None where that is not known."""

    label: str
    start_ms: int
    end_ms: int
    score: float
    confidence: float | None = None


@dataclass(frozen=True)
class Word:
    """A word, as it is spelled in the text; `offset` and `length` count characters there. It is
    `emphasised` in capitals or between stars, and `drawn_out` where a letter is repeated.
    `confidence`, 0 to 1, is how likely it is that it was said there, None where that is not
    known. Where a reader has several ways to say it, such as nine o'clock or nine, `reading` is
    the one that was said."""

    text: str
    start_ms: int
    end_ms: int
    offset: int
    length: int
    emphasised: bool = False
    drawn_out: bool = False
    confidence: float | None = None
    reading: str = ""


@dataclass(frozen=True)
class UnsaidWord:
    """A word of the text that was not heard."""

    text: str
    offset: int
    length: int
    confidence: float | None = None


@dataclass(frozen=True)
class Event(Word):
    """Something that is not a word that is said; `kind` is "punctuation", "tag", "speaker",
    "direction", "action" or "heading", or, for speech that is not in the text, "unscripted"."""

    kind: str = "tag"


@dataclass(frozen=True)
class Match:
    """How well a text and a recording fit. `verdict` is "good", "doubtful", "poor" or, for a model
    without a calibration and where no word was looked at, "unknown"; `score`, 0 to 1, how likely it
    is that they belong together, None where that is not known. `is_loose` says that times are those
    of the search that may leave words out; the other numbers are the evidence: the higher `margin`
    (0 to 100) and `fit` (hardly above 0) and the lower `duration`, the better."""

    verdict: str
    score: float | None
    is_loose: bool
    unscripted_ms: int
    margin: float
    fit: float
    duration: float | None
    spread: float


@dataclass(frozen=True)
class Sentence:
    """A sentence of a text; `offset` and `length` count characters there. One that was not said has
    no times and no score. `score` is how much better it fits than noise does."""

    text: str
    offset: int
    length: int
    start_ms: int | None = None
    end_ms: int | None = None
    score: float | None = None


@dataclass(frozen=True)
class Token:
    """A piece of a text and how it is said. `phonemes` has a tuple of alternatives for each
    stretch; `kind` is "word", "tag", "cut" or "punctuation", and `cut_ms` the time of a cut."""

    text: str
    kind: str
    offset: int
    length: int
    phonemes: tuple[tuple[str, ...], ...]
    cut_ms: int | None = None


@dataclass(frozen=True)
class Frame:
    """One video frame: the phonemes that shape the mouth with their weights, the heaviest first.
    The weights sum to 1."""

    start_ms: int
    end_ms: int
    weights: Mapping[str, float]


@dataclass(frozen=True)
class Curve:
    """The weight of one occurrence of a phoneme over time: straight lines between the `keys`, which
    are pairs of milliseconds and weight."""

    label: str
    start_ms: int
    end_ms: int
    keys: Sequence[tuple[int, float]]


@dataclass(frozen=True)
class Track:
    """The mouth, frame by frame."""

    frames: Sequence[Frame]
    labels: Sequence[str] = field(default=())
    """The phonemes that have a weight in any frame, in the order of the alphabet."""
    curves: Sequence[Curve] = field(default=())
    """The weight of each occurrence of a phoneme as keys, if they were asked for."""

    def shapes(self, shapes: Shapes) -> Any:
        """The weights of mouth shapes: a row for each frame and a column for each of
        `shapes.names`. `track.shapes(tessarin.Shapes("visemes"))` moves most game faces."""
        return shapes.mix(self.frames)

    def switches(self, shapes: Shapes, hold_ms: int = 0) -> list[Switch]:
        """One shape at a time for 2-D mouths, each for at least `hold_ms` milliseconds."""
        return shapes.switches(self.frames, hold_ms)

    @property
    def weights(self) -> Any:
        """A row for each frame and a column for each of `labels`: a NumPy array of float32, or a
        list of lists without NumPy."""
        columns = {label: column for column, label in enumerate(self.labels)}
        rows = [[0.0] * len(columns) for _ in self.frames]
        for row, frame in zip(rows, self.frames):
            for label, weight in frame.weights.items():
                row[columns[label]] = weight
        if numpy is None:
            return rows
        return numpy.asarray(rows, dtype=numpy.float32).reshape(len(rows), len(columns))

    @property
    def times_ms(self) -> Any:
        """Start and end of each frame in milliseconds: a NumPy array of two columns, or a list of
        pairs without NumPy."""
        times = [(frame.start_ms, frame.end_ms) for frame in self.frames]
        return times if numpy is None else numpy.asarray(times, dtype=numpy.int32).reshape(-1, 2)


KINDS = {_library.WORD: "word", _library.TAG: "tag", _library.CUT: "cut",
         _library.PUNCTUATION: "punctuation",
         _library.SPEAKER: "speaker", _library.DIRECTION: "direction",
         _library.ACTION: "action", _library.HEADING: "heading", _library.UNSCRIPTED: "unscripted"}


def _known(number: float) -> float | None:
    return number if number >= 0 else None


class TextPlaces:
    """From bytes of a text in UTF-8 to its characters."""

    def __init__(self, text: str) -> None:
        if "\0" in text:
            raise ValueError("the text has a zero character")
        self.content = text.encode("utf-8")
        begins = ((byte & 0xC0) != 0x80 for byte in self.content)
        self._before = list(itertools.accumulate(begins, initial=0))

    def characters(self, offset: int, length: int) -> tuple[int, int]:
        first = self._before[offset]
        return first, self._before[offset + length] - first


def make_token(raw: _library.Token, places: TextPlaces) -> Token:
    offset, length = places.characters(raw.text_offset, raw.text_length)
    groups = tuple(tuple(group.split("|")) for group in raw.phonemes.decode("ascii").split(" ")
                   if group)
    return Token(raw.text.decode("utf-8"), KINDS.get(raw.kind, "tag"), offset, length, groups,
                 raw.cut_ms if raw.kind == _library.CUT else None)


def make_sentence(raw: _library.Sentence, places: TextPlaces) -> Sentence:
    place = places.characters(raw.text_offset, raw.text_length)
    found = (raw.start_ms, raw.end_ms, raw.score) if raw.is_found else ()
    return Sentence(raw.text.decode("utf-8"), *place, *found)


def raw_strengths(strength: float | Mapping[str, float]) -> tuple[Any, int]:
    """The library's array and its length. Raises ValueError for what is not a part."""
    strengths = strength if isinstance(strength, Mapping) else {
        "vowels": strength, "consonants": strength}
    unknown = set(strengths) - set(_library.PARTS)
    if unknown:
        raise ValueError(f"not a part of the mouth: {', '.join(sorted(unknown))}; there are "
                         f"{', '.join(_library.PARTS)}")
    return (_library.Strength * len(strengths))(
        *((_library.PARTS[part], factor) for part, factor in strengths.items())), len(strengths)


class Result:
    """What a search found. Lists are in order of time; `unsaid` has the words of the text that were
    not heard, and `match` how well it fits, where that was looked for."""

    phonemes: list[Phoneme]
    words: list[Word]
    events: list[Event]
    loudness: list[float]
    """The loudness of each 10 ms of the audio in dB of full scale, -100 to 0; empty when it is not
    known."""
    unsaid: list[UnsaidWord]
    match: Match | None
    adaptation_gain: float | None
    """By how much the logarithm of the likelihood of an observation grew, on average, when the
    model was fitted to the voice; None when it was not."""

    def __init__(self, handle: int, places: TextPlaces | None) -> None:
        self._library = Library.get()
        self._handle = handle
        weakref.finalize(self, self._library.free_result, handle)
        confidences = [_known(each)
                       for each in self._library.items("get_phoneme_confidences", handle)]
        self.phonemes = [
            Phoneme(raw.label.decode("ascii"), raw.start_ms, raw.end_ms, raw.score, confidence)
            for raw, confidence in itertools.zip_longest(
                self._library.items("get_phonemes", handle), confidences)]
        said: dict[int, float | None] = {}
        unsaid: dict[int, float | None] = {}
        for each in self._library.items("get_word_matches", handle):
            (said if each.is_said else unsaid)[each.index] = _known(each.confidence)
        self.words = [self._word(raw, places, self._library.get_word_flags(handle, i), said.get(i),
                                 self._library.get_word_reading(handle, i).decode("utf-8", "replace"))
                      for i, raw in enumerate(self._library.items("get_words", handle))]
        self.events = [Event(*self._span(raw, places), kind=KINDS.get(raw.kind, "tag"))
                       for raw in self._library.items("get_events", handle)]
        self.unsaid = []
        for i, raw in enumerate(self._library.items("get_unsaid_words", handle)):
            text, _, _, offset, length = self._span(raw, places)
            self.unsaid.append(UnsaidWord(text, offset, length, unsaid.get(i)))
        match = self._library.get_match(handle)
        self.match = self._match(match.contents) if match else None
        self.loudness = self._library.items("get_loudness", handle)
        self.adaptation_gain = _known(self._library.get_adaptation_gain(handle))

    @classmethod
    def from_phonemes(cls, phonemes: Sequence[Phoneme],
                      loudness: Sequence[float] = ()) -> Result:
        """A result of timings from elsewhere, in order of time, to make a track of. `loudness` is
        that of each 10 ms of the audio in dB of full scale; without it the scores say how loud
        phonemes are. Raises TessarinError for what is not a phoneme."""
        raw = (_library.Phoneme * len(phonemes))(
            *((each.start_ms, each.end_ms, each.score, each.label.encode("ascii"))
              for each in phonemes))
        library = Library.get()
        result = cls(library.create("create_result_from_phonemes", "phonemes", raw,
                                    len(phonemes)), None)
        code = library.set_loudness(result._handle, (ctypes.c_float * len(loudness))(*loudness),
                                    len(loudness))
        if code != 0:
            raise library.error("loudness", code)
        result.loudness = library.items("get_loudness", result._handle)
        return result

    @classmethod
    def _word(cls, raw: _library.Span, places: TextPlaces | None, flags: int,
              confidence: float | None, reading: str) -> Word:
        return Word(*cls._span(raw, places), emphasised=bool(flags & _library.WORD_EMPHASIS),
                    drawn_out=bool(flags & _library.WORD_DRAWL), confidence=confidence,
                    reading=reading)

    @staticmethod
    def _match(raw: _library.Match) -> Match:
        return Match(_library.VERDICTS[raw.verdict], _known(raw.score), raw.is_loose != 0,
                     raw.unscripted_ms, raw.margin, raw.fit, _known(raw.duration), raw.spread)

    @staticmethod
    def _span(raw: _library.Span, places: TextPlaces | None) -> tuple[str, int, int, int, int]:
        place = (raw.text_offset, raw.text_length)
        if places is not None:
            place = places.characters(*place)
        return (raw.text.decode("utf-8", "replace"), raw.start_ms, raw.end_ms, *place)

    def track(self, fps: float | None = None, *, smooth: bool = False, slope: float | None = None,
              max_weights: int | None = None, gains: Mapping[str, float] | None = None,
              curves: bool = False, common_keys: bool = False,
              strength: float | Mapping[str, float] = 1.0, plain: bool = False,
              rules: Union[str, "os.PathLike[str]", None] = None) -> Track:
        """Makes the mouth track at `fps` frames a second (30). `smooth` has closed lips close in
        at least one frame and no weight change by more than `slope` (0.25) a frame; a frame has at
        most `max_weights` (10); `rules` is a file of articulation rules. `strength` is a factor, 0
        to 4, on how far the mouth leaves rest, lips and teeth excepted, or one for each of "vowels",
        "consonants", "lips" and "teeth". `gains` is added to the level of phonemes, 0 to 1, such as
        `{"AEAH": 0.2}`, or `{"": 0.1}` for all. With `curves` the track also has curves, whose keys
        `common_keys` puts at the same times. A phoneme is as strong as it is loud against the voice;
        in a `plain` track it is as strong as its score. Raises TessarinError."""
        options = _library.TrackOptions(
            size=ctypes.sizeof(_library.TrackOptions),
            flags=((_library.TRACK_SMOOTH if smooth else 0)
                   | (_library.TRACK_CURVES if curves or common_keys else 0)
                   | (_library.TRACK_COMMON_KEYS if common_keys else 0)
                   | (_library.TRACK_PLAIN if plain else 0)),
            frame_rate=fps or 0, slope=slope or 0, max_weights=max_weights or 0)
        if rules is not None:
            with open(rules, "rb") as file:
                content = file.read()
            options.rules = content
            options.rules_length = len(content)
        if gains:
            raw_gains = (_library.Gain * len(gains))(
                *((phonemes.encode("ascii"), factor) for phonemes, factor in gains.items()))
            options.gains, options.gain_count = raw_gains, len(gains)
        options.strengths, options.strength_count = raw_strengths(strength)
        handle = self._library.create("create_track", "track", self._handle, ctypes.byref(options))
        try:
            frames = [Frame(raw.start_ms, raw.end_ms,
                            {entry.label.decode("ascii"): entry.weight
                             for entry in raw.weights[:raw.count]})
                      for raw in self._library.items("get_track_frames", handle)]
            made = [Curve(raw.label.decode("ascii"), raw.start_ms, raw.end_ms,
                          [(key.time_ms, key.weight) for key in raw.keys[:raw.key_count]])
                    for raw in self._library.items("get_curves", handle)]
        finally:
            self._library.free_track(handle)
        return Track(frames, sorted({label for frame in frames for label in frame.weights}),
                     made)
