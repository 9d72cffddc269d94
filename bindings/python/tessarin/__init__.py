"""Finds when every phoneme and word of a recording was spoken, and the mouth shapes for it.

    >>> import tessarin
    >>> result = tessarin.align("hello.wav", "Hello world.")
    >>> [(word.text, word.start_ms, word.end_ms) for word in result.words]
    >>> result.track(fps=24).frames[0].weights

The functions use one Engine for the whole process, with the model and the lexicon that come with
the library; make an Engine for others. An engine may be used by several threads at once: the
interpreter is free while a search runs.
"""

from tessarin._audio import Audio
from tessarin._batch import BatchItem
from tessarin._commands import CommandMatch, Commands
from tessarin._engine import (SCRIPT_FORMATS, Engine, align, align_many, batch,
                              default_engine,
                              find_sentences, recognize,
                              transcribe, version)
from tessarin._errors import Cancelled, RecognitionFailed, TessarinError
from tessarin._facts import ALPHABETS, AudioFacts, LexiconFacts, ModelFacts, phoneme_symbol
from tessarin._live import VISEMES, Live, LiveStretch, LiveWeights
from tessarin._results import (Curve, Event, Frame, Match, Phoneme, Result, Sentence, Token, Track,
                               UnsaidWord, Word)
from tessarin._shapes import Shapes, Switch, reduce_keys

__all__ = [
    "ALPHABETS", "Audio", "AudioFacts", "BatchItem", "Cancelled", "CommandMatch", "Commands",
    "Curve", "Engine", "Event", "Frame", "LexiconFacts", "Live", "LiveStretch", "LiveWeights",
    "Match", "ModelFacts", "Phoneme", "RecognitionFailed", "Result", "SCRIPT_FORMATS", "Sentence",
    "Shapes", "Switch", "TessarinError", "Token", "Track", "UnsaidWord", "VISEMES", "Word", "align",
    "align_many", "batch", "default_engine", "find_sentences", "phoneme_symbol", "recognize",
    "reduce_keys",
    "transcribe", "version",
]
