"""The reader of recordings that a wheel brings, libsndfile; elsewhere the package soundfile is it."""

from __future__ import annotations

import array
import ctypes
import os
import pathlib
from ctypes import POINTER, c_char_p, c_float, c_int, c_int64, c_void_p
from typing import Any

from tessarin._arrays import numpy

_READ = 0x10
_BLOCK_FRAMES = 65536


class _Info(ctypes.Structure):
    _fields_ = [("frames", c_int64), ("samplerate", c_int), ("channels", c_int), ("format", c_int),
                ("sections", c_int), ("seekable", c_int)]


def _load() -> Any:
    path = pathlib.Path(__file__).resolve().parent / "lib" / "libsndfile.so.1"
    if not path.exists():
        return None
    library = ctypes.CDLL(str(path))
    library.sf_open.restype = c_void_p
    library.sf_open.argtypes = [c_char_p, c_int, POINTER(_Info)]
    library.sf_readf_float.restype = c_int64
    library.sf_readf_float.argtypes = [c_void_p, POINTER(c_float), c_int64]
    library.sf_strerror.restype = c_char_p
    library.sf_strerror.argtypes = [c_void_p]
    library.sf_close.argtypes = [c_void_p]
    return library


_library = _load()


def is_there() -> bool:
    return _library is not None


def read(path: str, channel: int) -> tuple[Any, int, int]:
    """The samples of a channel, counted from 1, or the mean of all for 0; how many there are a
    second; and the number of channels, where a channel beyond gives no samples. Raises RuntimeError
    for what is not a recording."""
    info = _Info()
    handle = _library.sf_open(os.fsencode(path), _READ, ctypes.byref(info))
    if not handle:
        raise RuntimeError(_library.sf_strerror(None).decode("utf-8", "replace"))
    try:
        channels = info.channels
        samples = array.array("f")
        block = (c_float * (_BLOCK_FRAMES * channels))()
        while channel <= channels:
            count = _library.sf_readf_float(handle, block, _BLOCK_FRAMES)
            if count <= 0:
                break
            samples.extend(_one_of(array.array("f", bytes(block)[:4 * count * channels]), channels,
                                   channel))
    finally:
        _library.sf_close(handle)
    chosen = samples if numpy is None else numpy.frombuffer(samples, dtype=numpy.float32)
    return chosen, info.samplerate, channels


def _one_of(interleaved: array.array[float], channels: int, channel: int) -> array.array[float]:
    if channel > 0:
        return interleaved[channel - 1::channels]
    columns = (interleaved[each::channels] for each in range(channels))
    return array.array("f", (sum(values) / channels for values in zip(*columns)))
