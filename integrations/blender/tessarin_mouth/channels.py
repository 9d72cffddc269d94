"""What the shapes of a mouth move: shape keys, or the bones of a pose library."""

from __future__ import annotations

import re
from dataclasses import dataclass, field

from .own_keys import Channel
from .reduction import reduce_keys
from .shape_map import ShapeMap

_QUATERNION_REST = (1.0, 0.0, 0.0, 0.0)


@dataclass
class Blend:
    """A number that is `base` at rest, to which each shape adds its share."""

    base: float = 0.0
    shares: dict[str, float] = field(default_factory=dict)

    def value(self, weights: dict[str, float]) -> float:
        return self.base + sum(share * weights.get(shape, 0.0)
                               for shape, share in self.shares.items())


def key_channels(mapping: dict[str, tuple[str, float]], escape) -> dict[Channel, Blend]:
    """A channel for each shape key of `mapping`, from a shape to a key and a factor; `escape`
    makes a name fit for a data path."""
    channels: dict[Channel, Blend] = {}
    for shape, (key, factor) in mapping.items():
        channel = Channel(f'key_blocks["{escape(key)}"].value', -1)
        channels.setdefault(channel, Blend()).shares[shape] = factor
    return channels


def pose_channels(poses: dict[str, tuple[object, float]]) -> dict[Channel, Blend]:
    """A channel for each number that the pose of a shape sets. `poses` leads from a shape to an
    action, whose first frame is the pose, and a factor. A bone is at rest without a pose."""
    channels: dict[Channel, Blend] = {}
    for shape, (action, factor) in poses.items():
        numbers = {(curve.data_path, curve.array_index): curve.evaluate(action.frame_range[0])
                   for curve in action_curves(action) if curve.data_path.startswith("pose.")}
        for (path, index), value in numbers.items():
            if path.endswith("rotation_quaternion") and numbers.get((path, 0), 1.0) < 0:
                value = -value  # the same rotation, on the near side
            blend = channels.setdefault(Channel(path, index), Blend(_rest(path, index)))
            blend.shares[shape] = factor * (value - blend.base)
    return channels


def action_curves(action) -> list:
    """All curves, also of the layered actions of Blender 4.4 and later."""
    if hasattr(action, "fcurves"):
        return list(action.fcurves)
    return [curve for layer in action.layers for strip in layer.strips
            for bag in strip.channelbags for curve in bag.fcurves]


def _rest(path: str, index: int) -> float:
    if path.endswith("rotation_quaternion"):
        return _QUATERNION_REST[index]
    return 1.0 if re.search(r"\bscale$", path) else 0.0


def make_keys(result: dict, shape_map: ShapeMap, channels: dict[Channel, Blend], fps: float,
              start_frame: float, tolerance: float) -> dict[Channel, list]:
    """The keys of each channel for the frames of a result whose audio begins at `start_frame`. A
    key at rest stands before the first and after the last frame, so that nothing of one speech
    reaches into the next."""
    frames = result["frames"]
    if not frames:
        return {}
    numbers = [round(start_frame + each["start_ms"] * fps / 1000) for each in frames]
    shown = [shape_map.mix(each["weights"]) for each in frames]
    keys = {}
    for channel, blend in channels.items():
        track = dict(zip(numbers, (blend.value(weights) for weights in shown)))
        track.setdefault(numbers[0] - 1, blend.base)
        track.setdefault(numbers[-1] + 1, blend.base)
        if any(abs(value - blend.base) > 1e-6 for value in track.values()):
            keys[channel] = reduce_keys(sorted(track.items()), tolerance)
    return keys
