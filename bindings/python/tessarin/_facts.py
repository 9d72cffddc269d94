"""What models, lexicons and recordings hold."""

from __future__ import annotations

import contextlib
import ctypes
import os
from dataclasses import dataclass
from typing import Iterator

from tessarin._audio import Audio, Path
from tessarin import _library
from tessarin._library import Library


@contextlib.contextmanager
def _opened(kind: str, create: str, path: Path) -> Iterator[tuple[Library, int]]:
    """The library and the handle of a file, freed at the end. Raises TessarinError."""
    library = Library.get()
    handle = library.create(create, os.fspath(path), os.fsencode(path))
    try:
        yield library, handle
    finally:
        getattr(library, f"free_{kind}")(handle)


@dataclass(frozen=True)
class ModelFacts:
    """What a model holds: `labels` of its phonemes, of `num_states` states with `num_mixtures` each;
    observations of `num_features` values, from windows of `window_size` samples at `rate_hz`, of
    which `window_overlap` are also in the next."""

    version: int
    labels: tuple[str, ...]
    num_states: int
    num_mixtures: int
    num_features: int
    num_cepstra: int
    num_bands: int
    flags: int
    window_size: int
    window_overlap: int
    rate_hz: float
    pre_emphasis: float

    @classmethod
    def from_file(cls, path: Path) -> ModelFacts:
        """Raises TessarinError."""
        with _opened("model", "create_model_from_file", path) as (library, model):
            raw = library.get_model_facts(model).contents
            labels = tuple(raw.labels[i].decode("ascii") for i in range(raw.num_phonemes))
            return cls(labels=labels, **{field: getattr(raw, field)
                                         for field in cls.__dataclass_fields__ if field != "labels"})


@dataclass(frozen=True)
class LexiconFacts:
    """What a lexicon file says of itself and holds: `entry_count` pronunciations of `word_count`
    words; other words go through a decision tree of `leaf_count` leaves, or else `rule_count`
    rules. `language` is a primary language number, such as 9 for English."""

    version: int
    rules_version: int
    language: int
    code_page: int
    flags: int
    entry_count: int
    word_count: int
    rule_count: int
    leaf_count: int
    has_tree: bool
    name: str
    locale: str
    comment: str
    information: str

    @classmethod
    def from_file(cls, path: Path) -> LexiconFacts:
        """Raises TessarinError, also for a text of words."""
        with _opened("lexicon", "create_lexicon_from_file", path) as (library, lexicon):
            raw = library.get_lexicon_facts(lexicon).contents
            values = {field: getattr(raw, field) for field in cls.__dataclass_fields__}
            values["has_tree"] = values["has_tree"] != 0
            # The library, too, takes any other code page for 1252.
            encoding = f"cp{raw.code_page}" if raw.code_page in (1250, 1251) else "cp1252"
            return cls(**{field: value.decode(encoding, "replace")
                          if isinstance(value, bytes) else value
                          for field, value in values.items()})


@dataclass(frozen=True)
class AudioFacts:
    """What a recording is like. Levels are in dB of full scale: `level_db` that of the speech,
    `noise_db` what the quietest tenth stays below, `peak_db` the largest sample. The wave is cut off
    `clip_count` times, for `clipped_samples` samples."""

    duration_ms: int
    rate_hz: int
    level_db: float
    noise_db: float
    peak_db: float
    clip_count: int
    clipped_samples: int

    @classmethod
    def of(cls, audio: Audio) -> AudioFacts:
        """Raises TessarinError."""
        library = Library.get()
        raw = _library.AudioFacts()
        code = library.measure_audio(audio._handle, ctypes.byref(raw))
        if code != 0:
            raise library.error(audio.name, code)
        return cls(*(getattr(raw, field) for field in cls.__dataclass_fields__))


ALPHABETS = ("labels", "ipa", "arpabet", "sampa")
"""How phonemes can be written."""


def phoneme_symbol(label: str, alphabet: str = "ipa") -> str:
    """How a phoneme, given by its label, is written in one of ALPHABETS: `ɑ`, `AA` or `A` for the
    label `AA`. Raises ValueError for what is not known."""
    if alphabet not in ALPHABETS:
        raise ValueError(f"no alphabet {alphabet}; there are {', '.join(ALPHABETS)}")
    symbol = Library.get().get_phoneme_symbol(label.encode("utf-8"), ALPHABETS.index(alphabet))
    if symbol is None:
        raise ValueError(f"{label} is not the label of a phoneme")
    return symbol.decode("utf-8")
