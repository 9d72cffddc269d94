"""Audio that is still coming in."""

from __future__ import annotations

import ctypes
import weakref
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Mapping, Sequence

from tessarin import _library
from tessarin._arrays import numpy
from tessarin._audio import sample_buffer
from tessarin._errors import OUT_OF_RANGE
from tessarin._library import Library
from tessarin._results import Frame, Phoneme, raw_strengths

if TYPE_CHECKING:
    from tessarin._engine import Engine


VISEMES = ("sil", "PP", "FF", "TH", "DD", "kk", "CH", "SS", "nn", "RR", "aa", "E", "ih", "oh", "ou")
"""The fifteen shapes of live weights, in the order of the library."""


@dataclass(frozen=True)
class LiveStretch:
    """What became final of live audio, in milliseconds since it began. Phonemes and frames follow
    each other without gaps from one stretch to the next. `waiting_ms` is how much more audio was
    pushed than was heard up to `end_ms`."""

    start_ms: int
    end_ms: int
    waiting_ms: int
    phonemes: Sequence[Phoneme]
    frames: Sequence[Frame]


@dataclass(frozen=True)
class LiveWeights:
    """A mouth of live audio: the weight of each of the fifteen visemes, and the time that they are
    for, in milliseconds since the audio began."""

    time_ms: int
    weights: Mapping[str, float]


class Live:
    """Hears audio while it comes in, and makes the mouth for it.

        >>> live = tessarin.Live(rate=16000)
        >>> for block in microphone:
        ...     live.push(block)
        ...     show(live.take().frames)
        >>> show(live.finish().frames)

    A thread of the library does the search. One thread may push while another takes."""

    def __init__(self, engine: Engine | None = None, *, rate: int = 16000, delay_ms: int = 25,
                 overlap_ms: int = 0, fps: float | None = None, look_ahead_ms: int = 20,
                 strength: float | Mapping[str, float] = 1.0) -> None:
        """Hears with the model of `engine`, or of the default one. A sound is weighed for
        `delay_ms` (20 to 10000), and results lag by up to twice that; `overlap_ms` of the past are
        weighed again; `fps` is the number of frames a second (30). The mouth prepares for a sound
        `look_ahead_ms` (0 to 120) before it begins, for which frames wait; `strength` is that of
        Result.track. Raises TessarinError."""
        if engine is None:
            from tessarin._engine import default_engine
            engine = default_engine()
        self._library = Library.get()
        # As floats, every block is of one format, whatever it comes as.
        options = _library.LiveOptions(ctypes.sizeof(_library.LiveOptions), rate, _library.FLOAT, 1,
                                       delay_ms, overlap_ms, fps or 0, look_ahead_ms or -1)
        options.strengths, options.strength_count = raw_strengths(strength)
        self._handle = self._library.create("create_live", "live audio", engine.model_for_hearing(),
                                            ctypes.byref(options))
        weakref.finalize(self, self._library.free_live, self._handle)

    def push(self, samples: Any) -> None:
        """Takes a copy of the next samples: floats from -1 to 1, or an array of 16-bit integers.
        Never waits for the search; hold back while `waiting_ms` of what is taken is large. Raises
        TessarinError."""
        address, count, _keep = self._floats(samples)
        self._check(self._library.push_live_audio(self._handle, address, 4 * count))

    def push_from_callback(self, samples: Any) -> bool:
        """The same for the callback of a sound card: never waits, and lets the library allocate
        nothing. Push live audio in one of the two ways. Returns whether all samples had room; what
        had none is lost, see `lost_ms`. Raises TessarinError once it is finished."""
        address, count, _keep = self._floats(samples)
        code = self._library.push_live_samples(self._handle, address, count)
        if code != OUT_OF_RANGE:
            self._check(code)
        return bool(code == 0)

    @property
    def lost_ms(self) -> int:
        """How much of what push_from_callback was given was lost."""
        return int(self._library.get_lost_live_ms(self._handle))

    def weights(self, time_ms: int | None = None) -> LiveWeights:
        """The visemes at a time: the newest ones, or those of `time_ms`, below 0 counted from the
        end of what was pushed. A time that is not known yet gets the newest. Does not wait. It
        takes what became final as `take` does, unless that is used. Raises TessarinError for a time
        more than ten seconds older than the newest."""
        values = (ctypes.c_float * len(VISEMES))()
        at_ms = ctypes.c_int64()
        newest = 2 ** 63 - 1
        self._check(self._library.take_live_weights(
            self._handle, newest if time_ms is None else time_ms, values, ctypes.byref(at_ms)))
        return LiveWeights(at_ms.value, dict(zip(VISEMES, values)))

    def take(self) -> LiveStretch:
        """What became final since the last call, which may be nothing. Raises TessarinError."""
        return self._stretch(self._library.take_live)

    def finish(self) -> LiveStretch:
        """Ends the audio, waits until all of it was heard, and returns what was not yet taken.
        Raises TessarinError."""
        return self._stretch(self._library.finish_live)

    @staticmethod
    def _floats(samples: Any) -> tuple[int, int, Any]:
        """Their address, how many there are, and what has to live as long as the address is used."""
        address, count, is_int16, values = sample_buffer(samples)
        if is_int16:
            values = ([value / 32768 for value in values] if numpy is None
                      else values / numpy.float32(32768))
            address, count, _, values = sample_buffer(values)
        return address, count, values

    def _check(self, code: int) -> None:
        if code != 0:
            raise self._library.error("live audio", code)

    def _stretch(self, function: Any) -> LiveStretch:
        raw = _library.LiveStretch()
        self._check(function(self._handle, ctypes.byref(raw)))
        phonemes = [Phoneme(each.label.decode("ascii"), each.start_ms, each.end_ms, each.score)
                    for each in raw.phonemes[:raw.phoneme_count]]
        frames = [Frame(each.start_ms, each.end_ms,
                        {entry.label.decode("ascii"): entry.weight
                         for entry in each.weights[:each.count]})
                  for each in raw.frames[:raw.frame_count]]
        return LiveStretch(raw.start_ms, raw.end_ms, raw.waiting_ms, phonemes, frames)
