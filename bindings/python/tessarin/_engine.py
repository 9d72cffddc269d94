"""The engine: a model and a language, and what is done with them."""

from __future__ import annotations

import concurrent.futures
import ctypes
import os
import pathlib
import threading
import weakref
from typing import Any, Callable, Iterable, Iterator, Mapping, Optional, Union

from tessarin import _library
from tessarin._audio import Audio, Path
from tessarin._batch import BatchItem, BatchJob, run_batch
from tessarin._errors import (CANCELLED, INVALID_ARGUMENT, RECOGNITION_FAILED, RecognitionFailed, TessarinError)
from tessarin._library import Library
from tessarin._results import (Result, Sentence, TextPlaces, Token, make_sentence, make_token)

Recording = Union[Path, Audio]
ProgressFunction = Callable[[int, int], Optional[bool]]


def version() -> str:
    """The version of the library."""
    return str(Library.get().get_version(), "ascii")


class _Watch:
    """Calls a progress function out of a search. What it raises ends the search and is raised
    again after it; so does Ctrl-C, which only the main thread hears."""

    def __init__(self, progress: ProgressFunction | None) -> None:
        self._progress = progress
        self._error: BaseException | None = None
        self._is_wanted = (progress is not None
                           or threading.current_thread() is threading.main_thread())
        self._struct = _library.Progress(on_progress=_library.PROGRESS_FUNCTION(self._on_progress))

    def _on_progress(self, _user: int, done: int, total: int) -> int:
        try:
            return 1 if self._progress is not None and self._progress(done, total) else 0
        except BaseException as error:  # pylint: disable=broad-except
            self._error = error
            return 1

    def pointer(self) -> Any:
        return ctypes.byref(self._struct) if self._is_wanted else None

    def raise_error(self) -> None:
        if self._error is not None:
            raise self._error


#: The forms of a script that `script_format` names.
SCRIPT_FORMATS = ("auto", "plain", "fountain", "srt", "vtt", "textgrid")


class Engine:
    """Aligns and recognizes with one model and one language. Files that are not named are those
    that come with the library. Several threads may use an engine at once. Raises TessarinError or
    FileNotFoundError when its files do not read."""

    def __init__(self, *, data: Path | None = None, model: Path | None = None,
                 lexicon: Path | None = None, statistics: Path | None = None,
                 words: Mapping[str, str] | None = None) -> None:
        """`data` is a folder with en-us.model, en-us.lexicon and en-us.trigrams, and perhaps
        en-us-hearing.model, which `recognize` prefers; `lexicon` is a lexicon file or a text of
        lines WORD=phonemes; `statistics` are counts of phoneme sequences, for `recognize`; `words`
        are for `set_word`."""
        self._library = Library.get()
        self._data = pathlib.Path(data) if data is not None else None
        self._model_path = self._path(model, "en-us.model")
        self._hearing_path = self._path(model, "en-us-hearing.model")
        self._statistics = statistics
        self._model = self._open_model(self._model_path)
        self._read_calibration(self._model_path)
        self._language = self._open("create_language_from_file",
                                    self._path(lexicon, "en-us.lexicon"),
                                    self._library.free_language)
        self._hearing_model: int | None = None  # with statistics, made when it is needed
        self._lock = threading.Lock()
        for word, phonemes in (words or {}).items():
            self.set_word(word, phonemes)

    def _path(self, given: Path | None, name: str) -> str:
        if given is not None:
            return os.fspath(given)
        if self._data is None:
            self._data = _library.find_data_folder()
        return str(self._data / name)

    def _open(self, function: str, path: str, free: Callable[[int], None]) -> int:
        handle = self._library.create(function, path, os.fsencode(path))
        weakref.finalize(self, free, handle)
        return handle

    def _open_model(self, path: str) -> int:
        return self._open("create_model_from_file", path, self._library.free_model)

    def _read_calibration(self, model_path: str) -> None:
        """The file beside the model, which only its model takes; without one there is no
        confidence."""
        path = str(pathlib.Path(model_path).with_suffix(".calibration"))
        if os.path.exists(path):
            code = self._library.read_model_calibration(self._model, os.fsencode(path))
            if code not in (0, INVALID_ARGUMENT):
                raise self._library.error(path, code)

    def model_for_hearing(self) -> int:
        """The handle of the model with statistics, for the package itself."""
        with self._lock:
            if self._hearing_model is None:
                has_own = os.path.exists(self._hearing_path)
                model = self._open_model(self._hearing_path if has_own else self._model_path)
                path = self._path(self._statistics, "en-us.trigrams")
                code = self._library.read_model_statistics(model, os.fsencode(path), 1)
                if code != 0:
                    raise self._library.error(path, code)
                self._hearing_model = model
            return self._hearing_model

    def set_word(self, word: str, phonemes: str) -> None:
        """Has a word of one's own said as `phonemes`, such as "SHIHvAOn", in place of what the
        lexicon says. Alternatives are separated by bars. Raises TessarinError for what is not a
        word or not phonemes."""
        code = self._library.set_word(self._language, TextPlaces(word).content,
                                      TextPlaces(phonemes).content)
        if code != 0:
            raise self._library.error(f"{word}={phonemes}", code)

    def has_word(self, word: str) -> bool:
        """Whether the lexicon or `set_word` has a word; others are said by rules, or by a tree."""
        has = ctypes.c_int32()
        code = self._library.has_word(self._language, TextPlaces(word).content, ctypes.byref(has))
        if code != 0:
            raise self._library.error(word, code)
        return has.value != 0

    @property
    def language(self) -> str:
        """The name of the language."""
        return str(self._library.get_language_name(self._language), "ascii", "replace")

    def align(self, audio: Recording, text: str, *, channel: int = 1, from_ms: int = 0,
              to_ms: int | None = None, beam_width: int | None = None, retry: bool = False,
              match: str = "auto", progress: ProgressFunction | None = None,
              **reading: Any) -> Result:
        """Finds when each phoneme and word of `text` was spoken.

        `match` is "exact" where all of the text was said and nothing else, "loose" where words may
        be missing and other speech may stand between them, and "auto" to let the recording decide.

        `audio` is a path or an Audio; `channel` of a file counts from 1, and 0 is the mean of all.
        `from_ms` and `to_ms` bound the stretch that is searched; times count from the beginning of
        the audio all the same. `beam_width`, 500 to 8000 (2000), widens a search that loses the
        text, and `retry` goes on after the loss. `progress(done, total)` is called now and then and cancels by returning True.

        The text is read as people write it: numbers by their kind, abbreviations, and names and
        stage directions as events. `literal=True` has it read as it stands; `speaker="NAME"` takes
        the lines of one role; `script_format` names the form of the text (SCRIPT_FORMATS);
        `cue_times=True` lets the times of subtitles divide it; `script_table` is a text of entries
        in the form of data/en-us.script. What may be said in several ways, such as 9:00 or 1905,
        is said as in the recording (Word.reading); with `one_reading=True`, in the usual way.

        Raises Cancelled; RecognitionFailed, which has what was found; or TessarinError.
        """
        places = TextPlaces(text)
        recording = self._audio(audio, channel)
        return self._search("create_alignment", recording.name, places, progress,
                            self._model, self._language, recording._handle, places.content,
                            self._options(from_ms, to_ms, beam_width, retry, match, reading))

    def find_sentences(self, audio: Recording, text: str, *, min_score: float = 5.5,
                       channel: int = 1, from_ms: int = 0, to_ms: int | None = None,
                       beam_width: int | None = None,
                       progress: ProgressFunction | None = None,
                       **reading: Any) -> list[Sentence]:
        """Finds which sentences of `text` were said, and when, in audio that may hold anything
        else, too. A sentence is found when it scores `min_score`. Other arguments and errors are
        those of `align`."""
        places = TextPlaces(text)
        recording = self._audio(audio, channel)
        watch = _Watch(progress)
        try:
            handle = self._library.create(
                "create_sentence_search", recording.name, self._model, self._language,
                recording._handle, places.content, min_score,
                self._options(from_ms, to_ms, beam_width, False, "exact", reading), watch.pointer())
        except TessarinError:
            watch.raise_error()
            raise
        try:
            return [make_sentence(raw, places)
                    for raw in self._library.items("get_sentences", handle)]
        finally:
            self._library.free_sentence_search(handle)

    def recognize(self, audio: Recording, *, channel: int = 1, from_ms: int = 0,
                  to_ms: int | None = None, adapt: str = "auto",
                  progress: ProgressFunction | None = None) -> Result:
        """Hears the phonemes of a recording without a text. Arguments and errors are those of
        `align`; there are no words. `adapt` is "on" to fit the model to the voice first, "off", or
        "auto", which does so for voices that the model does not know."""
        recording = self._audio(audio, channel)
        return self._search("create_recognition", recording.name, None, progress,
                            self.model_for_hearing(), recording._handle,
                            self._options(from_ms, to_ms, None, adapt=adapt))

    def transcribe(self, text: str, **reading: Any) -> list[Token]:
        """Reports how a text is said; `literal` and its like are those of `align`. Raises
        TessarinError."""
        places = TextPlaces(text)
        handle = self._library.create("create_script_transcript", "text", self._language,
                                      places.content, ctypes.byref(self._script(**reading)))
        try:
            return [make_token(raw, places)
                    for raw in self._library.items("get_transcript_tokens", handle)]
        finally:
            self._library.free_transcript(handle)

    def align_many(self, jobs: Iterable[tuple[Recording, str]], *, threads: int | None = None,
                   return_errors: bool = False) -> Iterator[Result | TessarinError]:
        """Aligns many recordings with their texts, as many at a time as there are processors, and
        gives their results in the same order. A recording that fails raises at its place, or, with
        `return_errors`, has its TessarinError there, and the others go on."""
        def run(job: tuple[Recording, str]) -> Result | TessarinError:
            try:
                return self.align(*job)
            except TessarinError as error:
                if return_errors:
                    return error
                raise

        with concurrent.futures.ThreadPoolExecutor(threads or os.cpu_count()) as pool:
            yield from pool.map(run, jobs)

    def batch(self, jobs: Iterable[BatchJob], *, threads: int | None = None) -> Iterator[BatchItem]:
        """Works on many recordings, as many at a time as there are processors, and gives what
        became of each as it comes, in no order; `index` says which it is. A job is a recording, a
        pair of a recording and its text, or a mapping of arguments of `align`, such as {"audio":
        ..., "text": ..., "beam_width": ...}; without a text a recording is recognized. What goes
        wrong with one stands in its item, and the others go on. Jobs are taken from the iterable as
        they are needed, so it may be endless."""
        return run_batch(self, jobs, threads)

    @staticmethod
    def _audio(audio: Recording, channel: int) -> Audio:
        return audio if isinstance(audio, Audio) else Audio.from_file(audio, channel)

    @staticmethod
    def _script(*, literal: bool = False, speaker: str = "", script_format: str = "auto",
                cue_times: bool = False, script_table: str | None = None,
                one_reading: bool = False) -> Any:
        if script_table is not None:
            reason = ctypes.create_string_buffer(200)
            library = _library.Library.get()
            code = library.check_script_table(TextPlaces(script_table).content, reason, 200)
            if code != 0:
                raise TessarinError("script_table", code, reason.value.decode("utf-8", "replace"))
        if script_format not in SCRIPT_FORMATS:
            raise ValueError(f"{script_format} is not one of {', '.join(SCRIPT_FORMATS)}")
        return _library.ScriptOptions(
            size=ctypes.sizeof(_library.ScriptOptions),
            flags=((_library.SCRIPT_LITERAL if literal else 0)
                   | (_library.SCRIPT_CUE_TIMES if cue_times else 0)
                   | (_library.SCRIPT_ONE_READING if one_reading else 0)),
            format=SCRIPT_FORMATS.index(script_format), speaker=TextPlaces(speaker).content,
            table=None if script_table is None else TextPlaces(script_table).content)

    @classmethod
    def _options(cls, from_ms: int, to_ms: int | None, beam_width: int | None,
                 retry: bool = False, match: str = "auto",
                 reading: Mapping[str, Any] | None = None, adapt: str = "auto") -> Any:
        if adapt not in _library.ADAPT_MODES:
            raise ValueError('adapt is "auto", "on" or "off"')
        if match not in _library.MATCH_MODES:
            raise ValueError('match is "auto", "exact" or "loose"')
        if to_ms is not None and to_ms <= from_ms:
            raise ValueError("to_ms must be after from_ms")
        return ctypes.byref(_library.SearchOptions(
            size=ctypes.sizeof(_library.SearchOptions), beam_width=beam_width or 0,
            from_ms=from_ms, to_ms=to_ms or 0, flags=_library.SEARCH_RETRY if retry else 0,
            match_mode=_library.MATCH_MODES[match],
            script=ctypes.pointer(cls._script(**(reading or {}))),
            adapt_mode=_library.ADAPT_MODES[adapt]))

    def _search(self, function: str, subject: str, places: TextPlaces | None,
                progress: ProgressFunction | None, *arguments: Any) -> Result:
        watch = _Watch(progress)
        handle = ctypes.c_void_p()
        code = getattr(self._library, function)(*arguments, watch.pointer(), ctypes.byref(handle))
        if code == CANCELLED:
            watch.raise_error()
        result = Result(handle.value, places) if handle.value else None
        if code == 0 and result is not None:
            return result
        error = self._library.error(subject, code)
        if code == RECOGNITION_FAILED and result is not None:
            raise RecognitionFailed(subject, code, self._library.get_error_text(code).decode(),
                                    result)
        raise error


_default: Engine | None = None
_default_lock = threading.Lock()


def default_engine() -> Engine:
    """The engine of the functions of this module, made at its first use."""
    global _default  # pylint: disable=global-statement
    with _default_lock:
        if _default is None:
            _default = Engine()
        return _default


def align(audio: Recording, text: str, **options: Any) -> Result:
    """Finds when each phoneme and word of `text` was spoken; see Engine.align."""
    return default_engine().align(audio, text, **options)


def align_many(jobs: Iterable[tuple[Recording, str]],
               **options: Any) -> Iterator[Result | TessarinError]:
    """Aligns many recordings at a time; see Engine.align_many."""
    return default_engine().align_many(jobs, **options)


def batch(jobs: Iterable[BatchJob], **options: Any) -> Iterator[BatchItem]:
    """Works on many recordings and gives results as they come; see Engine.batch."""
    return default_engine().batch(jobs, **options)


def recognize(audio: Recording, **options: Any) -> Result:
    """Hears the phonemes of a recording without a text; see Engine.recognize."""
    return default_engine().recognize(audio, **options)


def transcribe(text: str, **reading: Any) -> list[Token]:
    """Reports how a text is said; see Engine.transcribe."""
    return default_engine().transcribe(text, **reading)


def find_sentences(audio: Recording, text: str, **options: Any) -> list[Sentence]:
    """Finds which sentences of a text were said, and when; see Engine.find_sentences."""
    return default_engine().find_sentences(audio, text, **options)
