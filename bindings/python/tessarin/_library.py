"""The shared library and its functions, as tessarin_c.h declares them."""

from __future__ import annotations

import ctypes
import ctypes.util
import os
import pathlib
import sys
import threading
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_char_p, c_double, c_float, c_int16,
                    c_int32, c_int64, c_uint32, c_uint64, c_void_p)
from typing import Any, Iterator

from tessarin._errors import Cancelled, TessarinError, CANCELLED


class Phoneme(Structure):
    _fields_ = [("start_ms", c_int32), ("end_ms", c_int32), ("score", c_float),
                ("label", c_char * 8)]


class Span(Structure):
    _fields_ = [("kind", c_int32), ("start_ms", c_int32), ("end_ms", c_int32),
                ("text_offset", c_int32), ("text_length", c_int32), ("text", c_char_p)]


class Token(Structure):
    _fields_ = [("kind", c_int32), ("text_offset", c_int32), ("text_length", c_int32),
                ("cut_ms", c_int32), ("text", c_char_p), ("phonemes", c_char_p)]


class Weight(Structure):
    _fields_ = [("label", c_char * 4), ("weight", c_float)]


class Frame(Structure):
    _fields_ = [("start_ms", c_int32), ("end_ms", c_int32), ("count", c_int32),
                ("weights", Weight * 10)]


STATUS_FUNCTION = CFUNCTYPE(None, c_void_p, c_char_p)
PROGRESS_FUNCTION = CFUNCTYPE(c_int32, c_void_p, c_uint32, c_uint32)


class Progress(Structure):
    _fields_ = [("user", c_void_p), ("on_status", STATUS_FUNCTION),
                ("on_progress", PROGRESS_FUNCTION)]


class ScriptOptions(Structure):
    _fields_ = [("size", c_uint32), ("flags", c_uint32), ("format", c_uint32),
                ("speaker", c_char_p), ("table", c_char_p)]


class SearchOptions(Structure):
    _fields_ = [("size", c_uint32), ("beam_width", c_int32), ("from_ms", c_int32),
                ("to_ms", c_int32), ("flags", c_uint32), ("match_mode", c_uint32),
                ("script", POINTER(ScriptOptions)), ("adapt_mode", c_uint32)]


class Match(Structure):
    _fields_ = [("verdict", c_int32), ("score", c_float), ("is_loose", c_int32),
                ("unscripted_ms", c_int32), ("margin", c_float), ("fit", c_float),
                ("duration", c_float), ("spread", c_float)]


class WordMatch(Structure):
    _fields_ = [("is_said", c_int32), ("index", c_uint32), ("confidence", c_float),
                ("margin", c_float)]


class Gain(Structure):
    _fields_ = [("phonemes", c_char_p), ("factor", c_float)]


class Strength(Structure):
    _fields_ = [("parts", c_uint32), ("factor", c_float)]


class TrackOptions(Structure):
    _fields_ = [("size", c_uint32), ("flags", c_uint32), ("frame_rate", c_float),
                ("slope", c_float), ("max_weights", c_int32), ("rules_length", c_int32),
                ("rules", c_char_p), ("gains", POINTER(Gain)), ("gain_count", c_uint32),
                ("strengths", POINTER(Strength)), ("strength_count", c_uint32)]


class Key(Structure):
    _fields_ = [("time_ms", c_int32), ("weight", c_float)]


class Curve(Structure):
    _fields_ = [("label", c_char * 8), ("start_ms", c_int32), ("end_ms", c_int32),
                ("key_count", c_uint32), ("keys", POINTER(Key))]


class Switch(Structure):
    _fields_ = [("start_ms", c_int32), ("shape", c_uint32)]


class GateOptions(Structure):
    _fields_ = [("size", c_uint32), ("threshold_db", c_float), ("percentile", c_float),
                ("ramp_ms", c_int32), ("max_blip_ms", c_int32), ("min_quiet_ms", c_int32)]


class LiveOptions(Structure):
    _fields_ = [("size", c_uint32), ("rate_hz", c_uint32), ("format", c_uint32),
                ("channels", c_uint32), ("delay_ms", c_int32), ("overlap_ms", c_int32),
                ("frame_rate", c_float), ("look_ahead_ms", c_int32), ("strength_count", c_uint32),
                ("strengths", POINTER(Strength))]


class LivePhoneme(Structure):
    _fields_ = [("start_ms", c_int64), ("end_ms", c_int64), ("score", c_float),
                ("label", c_char * 8)]


class LiveFrame(Structure):
    _fields_ = [("start_ms", c_int64), ("end_ms", c_int64), ("count", c_int32),
                ("weights", Weight * 10)]


class LiveStretch(Structure):
    _fields_ = [("start_ms", c_int64), ("end_ms", c_int64), ("waiting_ms", c_int64),
                ("phonemes", POINTER(LivePhoneme)), ("frames", POINTER(LiveFrame)),
                ("phoneme_count", c_uint32), ("frame_count", c_uint32)]


class Sentence(Structure):
    _fields_ = [("score", c_double), ("text", c_char_p), ("is_found", c_int32),
                ("start_ms", c_int32), ("end_ms", c_int32), ("text_offset", c_int32),
                ("text_length", c_int32)]


class CommandOptions(Structure):
    _fields_ = [("size", c_uint32), ("rate_hz", c_uint32), ("floor_db", c_float)]


class CommandMatch(Structure):
    _fields_ = [("score", c_double), ("name", c_char_p)]


class ModelFacts(Structure):
    _fields_ = [("version", c_int32), ("num_phonemes", c_int32), ("num_states", c_int32),
                ("num_mixtures", c_int32), ("num_features", c_int32), ("num_cepstra", c_int32),
                ("num_bands", c_int32), ("flags", c_uint32), ("window_size", c_int32),
                ("window_overlap", c_int32), ("rate_hz", c_float), ("pre_emphasis", c_float),
                ("labels", POINTER(c_char_p))]


class LexiconFacts(Structure):
    _fields_ = [("version", c_int32), ("rules_version", c_int32), ("language", c_uint32),
                ("code_page", c_uint32), ("flags", c_uint32), ("entry_count", c_uint32),
                ("word_count", c_uint32), ("rule_count", c_uint32), ("leaf_count", c_uint32),
                ("has_tree", c_int32), ("name", c_char_p), ("locale", c_char_p),
                ("comment", c_char_p), ("information", c_char_p)]


class AudioFacts(Structure):
    _fields_ = [("duration_ms", c_int32), ("rate_hz", c_uint32), ("level_db", c_float),
                ("noise_db", c_float), ("peak_db", c_float), ("clip_count", c_uint32),
                ("clipped_samples", c_uint32)]


WORD = 1
TAG = 2
CUT = 3
PUNCTUATION = 4
SPEAKER = 6
DIRECTION = 7
ACTION = 8
HEADING = 9
WORD_EMPHASIS = 1
WORD_DRAWL = 2
SCRIPT_LITERAL = 1
SCRIPT_CUE_TIMES = 2
SCRIPT_ONE_READING = 4
UNSCRIPTED = 5
MATCH_MODES = {"auto": 0, "exact": 1, "loose": 2}

#: By the names of Engine.recognize.
ADAPT_MODES = {"auto": 0, "off": 1, "on": 2}
VERDICTS = ("unknown", "good", "doubtful", "poor")
FLOAT = 2
SEARCH_RETRY = 1
TRACK_SMOOTH = 1
TRACK_COMMON_KEYS = 2
TRACK_CURVES = 256
TRACK_PLAIN = 512
PARTS = {"vowels": 1, "consonants": 2, "lips": 4, "teeth": 8}

_OUT = POINTER(c_void_p)
_COUNT = POINTER(c_uint32)
_SIGNATURES: dict[str, tuple[object, list[object]]] = {
    "get_error_text": (c_char_p, [c_int32]),
    "get_version": (c_char_p, []),
    "create_model_from_file": (c_int32, [c_char_p, _OUT]),
    "read_model_statistics": (c_int32, [c_void_p, c_char_p, c_int32]),
    "read_model_limits": (c_int32, [c_void_p, c_char_p]),
    "read_model_calibration": (c_int32, [c_void_p, c_char_p]),
    "free_model": (None, [c_void_p]),
    "create_language_from_file": (c_int32, [c_char_p, _OUT]),
    "set_word": (c_int32, [c_void_p, c_char_p, c_char_p]),
    "get_language_name": (c_char_p, [c_void_p]),
    "free_language": (None, [c_void_p]),
    "create_audio_from_file": (c_int32, [c_char_p, c_uint32, _OUT]),
    "create_audio_from_int16": (c_int32, [c_void_p, c_uint32, c_uint32, _OUT]),
    "create_audio_from_float": (c_int32, [c_void_p, c_uint32, c_uint32, _OUT]),
    "get_audio_samples": (POINTER(c_int16), [c_void_p, _COUNT]),
    "get_audio_rate_hz": (c_uint32, [c_void_p]),
    "free_audio": (None, [c_void_p]),
    "check_script_table": (c_int32, [c_char_p, c_char_p, c_uint32]),
    "create_script_transcript": (c_int32, [c_void_p, c_char_p, POINTER(ScriptOptions), _OUT]),
    "get_transcript_tokens": (POINTER(Token), [c_void_p, _COUNT]),
    "free_transcript": (None, [c_void_p]),
    "create_alignment": (c_int32, [c_void_p, c_void_p, c_void_p, c_char_p,
                                   POINTER(SearchOptions), POINTER(Progress), _OUT]),
    "create_recognition": (c_int32, [c_void_p, c_void_p, POINTER(SearchOptions),
                                     POINTER(Progress), _OUT]),
    "get_phonemes": (POINTER(Phoneme), [c_void_p, _COUNT]),
    "get_words": (POINTER(Span), [c_void_p, _COUNT]),
    "get_word_flags": (c_uint32, [c_void_p, c_uint32]),
    "get_word_reading": (c_char_p, [c_void_p, c_uint32]),
    "get_events": (POINTER(Span), [c_void_p, _COUNT]),
    "get_match": (POINTER(Match), [c_void_p]),
    "get_word_matches": (POINTER(WordMatch), [c_void_p, _COUNT]),
    "get_unsaid_words": (POINTER(Span), [c_void_p, _COUNT]),
    "get_phoneme_confidences": (POINTER(c_float), [c_void_p, _COUNT]),
    "free_result": (None, [c_void_p]),
    "create_track": (c_int32, [c_void_p, POINTER(TrackOptions), _OUT]),
    "get_track_frames": (POINTER(Frame), [c_void_p, _COUNT]),
    "free_track": (None, [c_void_p]),
    "create_result_from_phonemes": (c_int32, [POINTER(Phoneme), c_uint32, _OUT]),
    "get_adaptation_gain": (c_float, [c_void_p]),
    "get_loudness": (POINTER(c_float), [c_void_p, _COUNT]),
    "set_loudness": (c_int32, [c_void_p, POINTER(c_float), c_uint32]),
    "get_curves": (POINTER(Curve), [c_void_p, _COUNT]),
    "quantize_track": (c_int32, [c_void_p, c_int32, c_int32, c_int32, POINTER(Frame)]),
    "create_shapes": (c_int32, [c_char_p, _OUT]),
    "create_shapes_from_text": (c_int32, [c_char_p, c_char_p, c_uint32, _OUT]),
    "get_shape_set": (c_char_p, [c_void_p]),
    "get_shape_count": (c_uint32, [c_void_p]),
    "get_shape_name": (c_char_p, [c_void_p, c_uint32]),
    "is_closed_shape": (c_int32, [c_void_p, c_uint32]),
    "get_rest_shape": (c_uint32, [c_void_p]),
    "mix_shapes": (c_int32, [c_void_p, POINTER(Frame), c_uint32, POINTER(c_double)]),
    "reduce_keys": (c_int32, [POINTER(c_int32), POINTER(c_double), c_uint32, c_uint32, c_double,
                              POINTER(c_uint32), _COUNT]),
    "free_shapes": (None, [c_void_p]),
    "create_switches": (c_int32, [c_void_p, POINTER(Frame), c_uint32, c_int32, _OUT]),
    "get_switches": (POINTER(Switch), [c_void_p, _COUNT]),
    "free_switches": (None, [c_void_p]),
    "create_gated_audio": (c_int32, [c_void_p, POINTER(GateOptions), POINTER(c_float), _OUT]),
    "create_live": (c_int32, [c_void_p, POINTER(LiveOptions), _OUT]),
    "push_live_audio": (c_int32, [c_void_p, c_void_p, c_uint32]),
    "push_live_samples": (c_int32, [c_void_p, c_void_p, c_uint32]),
    "get_lost_live_ms": (c_int64, [c_void_p]),
    "take_live_weights": (c_int32, [c_void_p, c_int64, POINTER(c_float), POINTER(c_int64)]),
    "take_live": (c_int32, [c_void_p, POINTER(LiveStretch)]),
    "finish_live": (c_int32, [c_void_p, POINTER(LiveStretch)]),
    "free_live": (None, [c_void_p]),
    "create_sentence_search": (c_int32, [c_void_p, c_void_p, c_void_p, c_char_p, c_float,
                                         POINTER(SearchOptions), POINTER(Progress), _OUT]),
    "get_sentences": (POINTER(Sentence), [c_void_p, _COUNT]),
    "free_sentence_search": (None, [c_void_p]),
    "get_model_facts": (POINTER(ModelFacts), [c_void_p]),
    "get_phoneme_label": (c_char_p, [c_uint32]),
    "get_phoneme_symbol": (c_char_p, [c_char_p, c_uint32]),
    "create_lexicon_from_file": (c_int32, [c_char_p, _OUT]),
    "get_lexicon_facts": (POINTER(LexiconFacts), [c_void_p]),
    "free_lexicon": (None, [c_void_p]),
    "measure_audio": (c_int32, [c_void_p, POINTER(AudioFacts)]),
    "has_word": (c_int32, [c_void_p, c_char_p, POINTER(c_int32)]),
    "create_commands": (c_int32, [c_void_p, POINTER(CommandOptions), _OUT]),
    "add_command_text": (c_int32, [c_void_p, c_void_p, c_char_p, c_char_p]),
    "add_command_phonemes": (c_int32, [c_void_p, c_char_p, c_char_p]),
    "add_command_sample": (c_int32, [c_void_p, c_char_p, c_void_p, POINTER(SearchOptions)]),
    "add_packed_command_samples": (c_int32, [c_void_p, c_char_p, c_uint64]),
    "pack_command_samples": (c_int32, [c_void_p, POINTER(c_uint64), _OUT]),
    "rank_commands": (c_int32, [c_void_p, c_void_p, POINTER(SearchOptions), POINTER(Progress)]),
    "push_command_audio": (c_int32, [c_void_p, c_void_p, c_uint32, POINTER(c_int32)]),
    "rank_utterance": (c_int32, [c_void_p, POINTER(Progress)]),
    "get_command_ranking": (POINTER(CommandMatch), [c_void_p, _COUNT]),
    "free_commands": (None, [c_void_p]),
}


def _folders_above() -> Iterator[pathlib.Path]:
    yield from pathlib.Path(__file__).resolve().parents


def _library_names() -> list[str]:
    if sys.platform == "win32":
        return ["tessarin.dll"]
    return ["libtessarin.0.dylib"] if sys.platform == "darwin" else ["libtessarin.so.0"]


def _find_library() -> str:
    """The library that TESSARIN_LIBRARY names, else that of the installation which this package is
    part of, else the system's."""
    named = os.environ.get("TESSARIN_LIBRARY")
    if named:
        return named
    for folder in _folders_above():
        for name in _library_names():
            for place in ("lib", "lib64", "bin"):
                for candidate in (folder / place / name, *folder.glob(f"{place}/*-*/{name}")):
                    if candidate.exists():
                        return str(candidate)
    return ctypes.util.find_library("tessarin") or _library_names()[0]


def find_data_folder() -> pathlib.Path:
    """The folder of the model and the lexicon: the one that TESSARIN_DATA names, else the one
    beside this package. Raises FileNotFoundError."""
    named = os.environ.get("TESSARIN_DATA")
    if named:
        return pathlib.Path(named)
    system = [pathlib.Path(prefix) for prefix in ("/usr/local", "/usr")]
    for folder in (*_folders_above(), *system):
        for place in ("share/tessarin", "data"):
            if (folder / place / "en-us.model").exists():
                return folder / place
    raise FileNotFoundError("no folder with en-us.model beside the package tessarin; name one in "
                            "TESSARIN_DATA or give the files to Engine")


class Library:
    """The loaded library. Its functions are members without their prefix."""

    _loaded: Library | None = None
    _lock = threading.Lock()

    def __init__(self, path: str) -> None:
        try:
            loaded = ctypes.CDLL(path)
        except OSError as error:
            raise ImportError(f"the library tessarin does not load: {error}; name it in "
                              "TESSARIN_LIBRARY") from error
        for name, (result, arguments) in _SIGNATURES.items():
            function = getattr(loaded, "tessarin_" + name)
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)

    @classmethod
    def get(cls) -> Library:
        with cls._lock:
            if cls._loaded is None:
                cls._loaded = cls(_find_library())
            return cls._loaded

    def __getattr__(self, name: str) -> Any:  # what __init__ has set; for type checkers
        raise AttributeError(name)

    def error(self, subject: str, code: int) -> TessarinError:
        text = self.get_error_text(code).decode("utf-8", "replace")
        kind = Cancelled if code == CANCELLED else TessarinError
        return kind(subject, code, text)

    def create(self, function: str, subject: str, *arguments: object) -> int:
        """The handle that a create function gives. Raises TessarinError."""
        handle = c_void_p()
        code = getattr(self, function)(*arguments, ctypes.byref(handle))
        if code != 0:
            raise self.error(subject, code)
        return handle.value  # type: ignore[return-value]

    def items(self, function: str, handle: int) -> list[Any]:
        """The structs that a get function lends, as a list that lives as long as their owner."""
        count = c_uint32()
        first = getattr(self, function)(handle, ctypes.byref(count))
        return list(first[:count.value]) if count.value else []
