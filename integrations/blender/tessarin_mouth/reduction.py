"""Keys where a curve bends, in place of one for every frame."""

from __future__ import annotations

from typing import Sequence

Key = tuple[float, float]


def reduce_keys(keys: Sequence[Key], tolerance: float) -> list[Key]:
    """The fewest keys that Douglas and Peucker's method finds so that straight lines between them
    stay within `tolerance` of all of `keys`, which are in order of time."""
    if len(keys) < 3:
        return list(keys)
    kept = {0, len(keys) - 1}
    open_stretches = [(0, len(keys) - 1)]
    while open_stretches:
        first, last = open_stretches.pop()
        (x0, y0), (x1, y1) = keys[first], keys[last]
        worst, farthest = tolerance, None
        for i in range(first + 1, last):
            x, y = keys[i]
            distance = abs(y0 + (y1 - y0) * (x - x0) / (x1 - x0) - y)
            if distance > worst:
                worst, farthest = distance, i
        if farthest is not None:
            kept.add(farthest)
            open_stretches += [(first, farthest), (farthest, last)]
    return [keys[i] for i in sorted(kept)]
