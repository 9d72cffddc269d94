"""Spoken commands: which one of a few phrases was said."""

from __future__ import annotations

import ctypes
import os
import pathlib
import weakref
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

from tessarin import _library
from tessarin._audio import Audio, Path, sample_buffer
from tessarin._library import Library
from tessarin._results import TextPlaces

if TYPE_CHECKING:
    from tessarin._engine import Engine, ProgressFunction, Recording


@dataclass(frozen=True)
class CommandMatch:
    """A command, and how well it fits what was said: where commands are known by their sounds, the
    score is a logarithm, the higher the better; where by samples, a distance, 0 for the same
    recording."""

    name: str
    score: float


class Commands:
    """Knows which one of a few commands was said, by their texts or by samples of them.

        >>> commands = tessarin.Commands()
        >>> commands.add_text("open the garage door")
        >>> commands.add_text("lights off")
        >>> commands.rank("one.wav")[0].name

    There is no threshold: the best command is the nearest, however far it is. Commands of one
    object are all known by their sounds or all by samples. One thread at a time may use it."""

    def __init__(self, engine: Engine | None = None, *, rate: int = 16000,
                 floor_db: float = 0) -> None:
        """Hears with the model of `engine`, or of the default one, and reads texts in its language.
        `rate` is that of what is pushed. What is not louder than `floor_db` is ignored; live audio
        wants the noise of its room, and 35 is above that of a quiet one. Raises TessarinError."""
        if engine is None:
            from tessarin._engine import default_engine
            engine = default_engine()
        self._engine = engine
        self._library = Library.get()
        options = _library.CommandOptions(ctypes.sizeof(_library.CommandOptions), rate, floor_db)
        self._handle = self._library.create("create_commands", "commands", engine._model,
                                            ctypes.byref(options))
        weakref.finalize(self, self._library.free_commands, self._handle)

    def add_text(self, name: str, text: str | None = None) -> None:
        """Adds a command that is said as `text`, or as its name. A name may come again, for another
        way to say the command. Raises TessarinError for what cannot be said."""
        said = name if text is None else text
        self._check(said, self._library.add_command_text(
            self._handle, self._engine._language, TextPlaces(name).content,
            TextPlaces(said).content))

    def add_phonemes(self, name: str, phonemes: str) -> None:
        """Adds a command that is said as `phonemes`, such as "l AY t s, AO f". Raises TessarinError
        for what is not phonemes."""
        self._check(phonemes, self._library.add_command_phonemes(
            self._handle, TextPlaces(name).content, TextPlaces(phonemes).content))

    def add_sample(self, name: str, audio: Recording, *, channel: int = 1, from_ms: int = 0,
                   to_ms: int | None = None) -> None:
        """Adds a recording of a command, or a stretch of it. A name may have several. Raises
        TessarinError for a recording that cannot be used."""
        recording = self._audio(audio, channel)
        self._check(recording.name, self._library.add_command_sample(
            self._handle, TextPlaces(name).content, recording._handle,
            self._engine._options(from_ms, to_ms, None)))

    def save_samples(self, path: Path) -> None:
        """Writes all samples to a file. Raises TessarinError without any, and OSError."""
        size = ctypes.c_uint64()
        data = ctypes.c_void_p()
        self._check(os.fspath(path), self._library.pack_command_samples(
            self._handle, ctypes.byref(size), ctypes.byref(data)))
        pathlib.Path(path).write_bytes(ctypes.string_at(data, size.value))

    def load_samples(self, path: Path) -> None:
        """Adds the samples of a file that `save_samples` or the tool wrote. Raises TessarinError
        and OSError."""
        data = pathlib.Path(path).read_bytes()
        self._check(os.fspath(path), self._library.add_packed_command_samples(self._handle, data,
                                                                              len(data)))

    def rank(self, audio: Recording, *, channel: int = 1, from_ms: int = 0,
             to_ms: int | None = None,
             progress: ProgressFunction | None = None) -> list[CommandMatch]:
        """The commands for a recording of one of them, the best one first; none when it is too
        short. Arguments and errors are those of `Engine.align`."""
        recording = self._audio(audio, channel)
        options = self._engine._options(from_ms, to_ms, None)
        return self._rank(recording.name, progress,
                          lambda watch: self._library.rank_commands(
                              self._handle, recording._handle, options, watch))

    def push(self, samples: Any) -> bool:
        """Takes the next samples of live audio: floats from -1 to 1, or an array of 16-bit
        integers. Returns whether the utterance has ended, with the speech or after 20 seconds; what
        is pushed then is not heard until `rank_utterance`. Raises TessarinError."""
        address, count, is_int16, values = sample_buffer(samples)
        if not is_int16:
            address, count, _, values = sample_buffer(Audio.from_samples(values, 16000).samples)
        ended = ctypes.c_int32()
        self._check("live audio", self._library.push_command_audio(
            self._handle, address, count, ctypes.byref(ended)))
        return ended.value != 0

    def rank_utterance(self, *, progress: ProgressFunction | None = None) -> list[CommandMatch]:
        """Ends the utterance that was pushed and ranks the commands for it; the next one begins.
        Else as `rank`."""
        return self._rank("live audio", progress,
                          lambda watch: self._library.rank_utterance(self._handle, watch))

    def _audio(self, audio: Recording, channel: int) -> Audio:
        return self._engine._audio(audio, channel)

    def _check(self, subject: str, code: int) -> None:
        if code != 0:
            raise self._library.error(subject, code)

    def _rank(self, subject: str, progress: ProgressFunction | None,
              rank: Any) -> list[CommandMatch]:
        from tessarin._engine import _Watch
        watch = _Watch(progress)
        code = rank(watch.pointer())
        watch.raise_error()
        self._check(subject, code)
        return [CommandMatch(each.name.decode("utf-8"), each.score)
                for each in self._library.items("get_command_ranking", self._handle)]
