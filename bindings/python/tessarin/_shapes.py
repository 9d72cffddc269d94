"""Sets of mouth shapes, and the mouths that show them."""

from __future__ import annotations

import ctypes
import os
import weakref
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Sequence, Union

from tessarin import _library
from tessarin._arrays import numpy
from tessarin._errors import INVALID_FILE, TessarinError
from tessarin._library import Library

if TYPE_CHECKING:
    from tessarin._results import Frame

_REASON_BYTES = 256


@dataclass(frozen=True)
class Switch:
    """From `start_ms` on, the mouth shows `shape`, until the next switch."""

    start_ms: int
    shape: str


class Shapes:
    """A map from phonemes to a set of mouth shapes. `Shapes("visemes")` is built in, as are
    `"arkit"`, `"vrm"`, `"switches"` and `"preston-blair"`. Several threads may use one."""

    set: str
    """The name of the set."""
    names: Sequence[str]
    """The shapes, in the order of the columns of `mix`."""
    closed: frozenset[str]
    """Those with closed lips."""
    rest: str
    """That of a resting mouth."""

    def __init__(self, name: str) -> None:
        """Raises TessarinError for a name that is not a built-in set."""
        self._open(Library.get().create("create_shapes", f"mouth shapes {name}",
                                        name.encode("utf-8")))

    @classmethod
    def from_text(cls, text: str, name: str = "mouth shapes") -> Shapes:
        """Reads a map: lines such as `shapes REST OPEN`, `rest REST` and `AA OPEN 0.8`. Raises
        TessarinError, which names the line that cannot be read."""
        reason = ctypes.create_string_buffer(_REASON_BYTES)
        try:
            handle = Library.get().create("create_shapes_from_text", name, text.encode("utf-8"),
                                          reason, _REASON_BYTES)
        except TessarinError as error:
            if error.code == INVALID_FILE:
                raise error.with_remedy(reason.value.decode("utf-8", "replace")) from None
            raise
        shapes = cls.__new__(cls)
        shapes._open(handle)
        return shapes

    @classmethod
    def from_file(cls, path: Union[str, "os.PathLike[str]"]) -> Shapes:
        """The same from a file in UTF-8."""
        with open(path, encoding="utf-8") as file:
            return cls.from_text(file.read(), os.fspath(path))

    def _open(self, handle: int) -> None:
        library = self._library = Library.get()
        self._handle = handle
        weakref.finalize(self, library.free_shapes, handle)
        self.set = library.get_shape_set(handle).decode("utf-8")
        numbers = range(library.get_shape_count(handle))
        self.names = [library.get_shape_name(handle, i).decode("utf-8") for i in numbers]
        self.closed = frozenset(self.names[i] for i in numbers
                                if library.is_closed_shape(handle, i))
        self.rest = self.names[library.get_rest_shape(handle)]

    def mix(self, frames: Sequence[Frame]) -> Any:
        """The weight of each shape, 0 to 1, a row for each frame and a column for each of `names`:
        a NumPy array of float64, or a list of lists without NumPy."""
        width = len(self.names)
        weights = (ctypes.c_double * (len(frames) * width))()
        code = self._library.mix_shapes(self._handle, _raw_frames(frames), len(frames), weights)
        if code != 0:
            raise self._library.error("mouth shapes", code)
        if numpy is not None:
            return numpy.ctypeslib.as_array(weights).reshape(len(frames), width).copy()
        return [list(weights[i * width:(i + 1) * width]) for i in range(len(frames))]

    def keys(self, frames: Sequence[Frame],
             tolerance: float = 0.005) -> dict[str, list[tuple[int, float]]]:
        """Keys for the curve of each shape, as milliseconds and weight, where the curve bends:
        straight lines between them stay within `tolerance` (0 to 1) of the weights of `mix`.
        Shapes that never show are left out."""
        times = [frame.start_ms for frame in frames]
        rows = self.mix(frames)
        curves = {}
        for number, name in enumerate(self.names):
            weights = [float(row[number]) for row in rows]
            if any(weights):
                curves[name] = [(times[i], weights[i])
                                for i in reduce_keys(times, weights, tolerance)]
        return curves

    def switches(self, frames: Sequence[Frame], hold_ms: int = 0) -> list[Switch]:
        """One shape at a time. The first switch is at 0 ms. Each shape stays for at least 50 ms,
        and for at least `hold_ms` (0 to 10000) unless closed lips come or the frames end; both
        times are rounded up to whole frames of the length of the first one."""
        handle = self._library.create("create_switches", "hold_ms", self._handle,
                                      _raw_frames(frames), len(frames), hold_ms)
        try:
            return [Switch(raw.start_ms, self.names[raw.shape])
                    for raw in self._library.items("get_switches", handle)]
        finally:
            self._library.free_switches(handle)


def reduce_keys(times_ms: Sequence[int], weights: Sequence[Any],
                tolerance: float = 0.005) -> list[int]:
    """Numbers of the times that a curve needs as keys, so that straight lines between them stay
    within `tolerance` (0 to 1) of every weight. `weights` has a number for each time or, for curves
    that share their keys, a row of numbers. Times must rise."""
    rows = [row if hasattr(row, "__len__") else (row,) for row in weights]
    if len(rows) != len(times_ms):
        raise ValueError("reduce_keys: as many weights as times are needed")
    width = len(rows[0]) if rows else 1
    if any(len(row) != width for row in rows):
        raise ValueError("reduce_keys: all rows must have the same length")
    count = len(rows)
    library = Library.get()
    kept, kept_count = (ctypes.c_uint32 * count)(), ctypes.c_uint32()
    code = library.reduce_keys((ctypes.c_int32 * count)(*times_ms),
                               (ctypes.c_double * (count * width))(*(w for row in rows for w in row)),
                               count, width, tolerance, kept, ctypes.byref(kept_count))
    if code != 0:
        raise library.error("reduce_keys", code)
    return list(kept[:kept_count.value])


def _raw_frames(frames: Sequence[Frame]) -> Any:
    raw = (_library.Frame * len(frames))()
    for target, frame in zip(raw, frames):
        target.start_ms, target.end_ms = frame.start_ms, frame.end_ms
        target.count = len(frame.weights)
        for entry, (label, weight) in zip(target.weights, frame.weights.items()):
            entry.label, entry.weight = label.encode("ascii"), weight
    return raw
