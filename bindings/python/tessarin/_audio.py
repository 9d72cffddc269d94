"""Recordings in memory."""

from __future__ import annotations

import array
import ctypes
import math
import operator
import os
import weakref
from typing import TYPE_CHECKING, Any, Sequence, Union

from tessarin import _sndfile
from tessarin._arrays import numpy
from tessarin._errors import FILE_NOT_FOUND, OUT_OF_MEMORY, OUT_OF_RANGE, TessarinError
from tessarin._library import GateOptions, Library

if TYPE_CHECKING:
    import numpy.typing

Path = Union[str, "os.PathLike[str]"]

HIGHEST_RATE_HZ = 65535  # that the library takes


def sample_buffer(samples: Any) -> tuple[int, int, bool, Any]:
    """The address and the number of samples of one channel, whether they are 16-bit integers or
    else floats, and what has to live as long as the address is used."""
    if numpy is None:
        is_int16 = isinstance(samples, array.array) and samples.typecode == "h"
        values = samples if is_int16 else array.array("f", samples)
        return (*values.buffer_info(), is_int16, values)
    values = numpy.asarray(samples)
    if values.ndim != 1:
        raise ValueError("give the samples of one channel")
    if values.dtype != numpy.int16:
        if not numpy.issubdtype(values.dtype, numpy.floating):
            raise TypeError("samples are 16-bit integers, or floats from -1 to 1")
        values = values.astype(numpy.float32)
    values = numpy.ascontiguousarray(values)
    return values.ctypes.data, len(values), values.dtype == numpy.int16, values


class Audio:
    """One channel of a recording. Made by `from_file` or `from_samples`; several threads may use
    it."""

    def __init__(self, handle: int, name: str) -> None:
        self._library = Library.get()
        self._handle = handle
        self.name = name
        weakref.finalize(self, self._library.free_audio, handle)

    @classmethod
    def from_file(cls, path: Path, channel: int = 1) -> Audio:
        """Reads `channel` of a file, counted from 1; 0 is the mean of all. The library reads
        16-bit WAV and Sphere; FLAC, Ogg, MP3, other WAV and rates above 65535 Hz are read by
        libsndfile, which wheels have inside, or the package soundfile, whose absence the error
        names. Raises TessarinError."""
        library = Library.get()
        if channel < 0:
            raise ValueError("channels count from 1, and 0 is the mean of all")
        name = os.fspath(path)
        try:
            handle = library.create("create_audio_from_file", name, os.fsencode(path), channel)
        except TessarinError as error:
            if error.code in (FILE_NOT_FOUND, OUT_OF_MEMORY, OUT_OF_RANGE):
                raise
            return cls._from_other_file(name, channel, error)
        return cls(handle, name)

    @classmethod
    def _from_other_file(cls, name: str, channel: int, why_not: TessarinError) -> Audio:
        if _sndfile.is_there():
            try:
                chosen, rate, channels = _sndfile.read(name, channel)
            except RuntimeError as unreadable:
                raise why_not.with_remedy(str(unreadable)) from None
            if channel > channels:
                raise Library.get().error(f"{name}: channel {channel}", OUT_OF_RANGE)
            return cls._at_a_rate_that_fits(chosen, rate, name)
        try:
            import soundfile  # type: ignore[import]
        except ImportError:
            raise why_not.with_remedy(
                "install the Python package soundfile (Debian: python3-soundfile) to read FLAC, "
                "Ogg, MP3, float, 24-bit and high-rate recordings") from None
        try:
            samples, rate = soundfile.read(name, dtype="float32", always_2d=True)
        except RuntimeError as unreadable:
            raise why_not.with_remedy(f"soundfile cannot read it either: {unreadable}") from None
        if channel > samples.shape[1]:
            raise Library.get().error(f"{name}: channel {channel}", OUT_OF_RANGE)
        chosen = samples.mean(axis=1) if channel == 0 else samples[:, channel - 1]
        return cls._at_a_rate_that_fits(chosen, rate, name)

    @classmethod
    def _at_a_rate_that_fits(cls, samples: Any, rate: int, name: str) -> Audio:
        while rate > HIGHEST_RATE_HZ and len(samples) > 0:
            samples, rate = _at_half_the_rate(samples), rate // 2
        return cls.from_samples(samples, rate, name)

    @classmethod
    def from_samples(cls, samples: Sequence[float] | numpy.typing.ArrayLike, rate: int,
                     name: str = "samples") -> Audio:
        """Copies one channel of samples at `rate` Hz: an array of 16-bit integers, or floats from
        -1 to 1. Raises TessarinError for a rate above 65535."""
        address, count, is_int16, _keep = sample_buffer(samples)
        function = "create_audio_from_int16" if is_int16 else "create_audio_from_float"
        return cls(Library.get().create(function, name, address, count, rate), name)

    @property
    def rate(self) -> int:
        """Samples a second."""
        return int(self._library.get_audio_rate_hz(self._handle))

    @property
    def samples(self) -> Any:
        """A copy of the samples, 16-bit: a NumPy array, or an array.array without NumPy."""
        count = ctypes.c_uint32()
        first = self._library.get_audio_samples(self._handle, ctypes.byref(count))
        content = ctypes.string_at(first, 2 * count.value) if count.value else b""
        if numpy is not None:
            return numpy.frombuffer(content, dtype=numpy.int16).copy()
        return array.array("h", content)

    @property
    def duration_ms(self) -> int:
        """Its length in whole milliseconds."""
        count = ctypes.c_uint32()
        self._library.get_audio_samples(self._handle, ctypes.byref(count))
        return count.value * 1000 // self.rate

    def gated(self, threshold_db: float = 0, *, percentile: float = 0, ramp_ms: int = 0,
              max_blip_ms: int = 0, min_quiet_ms: int = 0) -> Audio:
        """A copy whose quiet stretches are silenced. Quiet is what is below `threshold_db` of full
        scale; with 0, the quietest `percentile` (0.28) of the audio. A stretch fades out and in
        within `ramp_ms`; sounds shorter than `max_blip_ms` (150) go with the quiet around them,
        if that lasts `min_quiet_ms` (220) on both sides. Raises TessarinError."""
        options = GateOptions(ctypes.sizeof(GateOptions), threshold_db, percentile, ramp_ms,
                              max_blip_ms, min_quiet_ms)
        return Audio(self._library.create("create_gated_audio", self.name, self._handle,
                                          ctypes.byref(options), None), self.name)


def _at_half_the_rate(samples: Any) -> Any:
    """Every second sample after a windowed-sinc low-pass that ends at the new Nyquist frequency
    (Oppenheim and Schafer, Discrete-Time Signal Processing, 7.5 and 4.6). It is symmetric, so no
    sound moves in time."""
    low_pass = [(math.sin(0.45 * math.pi * n) / (math.pi * n) if n else 0.45)
                * (0.54 + 0.46 * math.cos(math.pi * n / 32)) for n in range(-32, 33)]
    total = sum(low_pass)
    low_pass = [value / total for value in low_pass]
    if numpy is not None:
        return numpy.convolve(samples, low_pass)[32:-32][::2].astype(numpy.float32)
    silence = array.array("f", bytes(4 * 32))
    padded = silence + samples + silence
    return array.array("f", (sum(map(operator.mul, low_pass, padded[at:at + 65]))
                             for at in range(0, len(samples), 2)))
