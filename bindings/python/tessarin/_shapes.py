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


def _raw_frames(frames: Sequence[Frame]) -> Any:
    raw = (_library.Frame * len(frames))()
    for target, frame in zip(raw, frames):
        target.start_ms, target.end_ms = frame.start_ms, frame.end_ms
        target.count = len(frame.weights)
        for entry, (label, weight) in zip(target.weights, frame.weights.items()):
            entry.label, entry.weight = label.encode("ascii"), weight
    return raw
