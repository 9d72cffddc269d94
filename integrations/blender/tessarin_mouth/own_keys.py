"""Keys of a speech in an action, told apart from those of the animator.

The action has a property with the frames and values that were written for each speech. A key that
has another value since then is the animator's, as is every key that is not listed."""

from __future__ import annotations

import json
from typing import NamedTuple

PROPERTY = "tessarin_keys"
_FRAME_SLACK = 1e-3
_VALUE_SLACK = 1e-4


class Channel(NamedTuple):
    """One animated number of a datablock."""

    path: str
    index: int  # in an array; -1 for a single number


Keys = list  # of (frame, value), in order of frames


def replace_keys(datablock, owner: str, keys: dict[Channel, Keys], action_name: str) -> int:
    """Puts `keys` in place of those that `owner` has in the datablock's action, which is made when
    there is none. Keys that are there already stay. Returns how many were written."""
    import bpy
    animation = datablock.animation_data or datablock.animation_data_create()
    if animation.action is None:
        animation.action = bpy.data.actions.new(action_name)
    action = animation.action
    record = _read(action)
    for name, written in record.pop(owner, {}).items():
        _remove(action, datablock, _channel(name), written)
    written = {_name(channel): _insert(_curve(action, datablock, channel), channel_keys)
               for channel, channel_keys in keys.items()}
    record[owner] = {name: each for name, each in written.items() if each}
    action[PROPERTY] = json.dumps(record)
    return sum(len(each) for each in record[owner].values())


def owners(datablock) -> list[str]:
    """The speeches that have keys in the datablock's action."""
    animation = datablock.animation_data
    return list(_read(animation.action)) if animation and animation.action else []


def _read(action) -> dict:
    try:
        record = json.loads(action.get(PROPERTY, "{}"))
    except ValueError:  # someone has edited it
        return {}
    return record if isinstance(record, dict) else {}


def _name(channel: Channel) -> str:
    return f"{channel.index} {channel.path}"


def _channel(name: str) -> Channel:
    index, path = name.split(" ", 1)
    return Channel(path, int(index))


def _curve(action, datablock, channel: Channel):
    index = max(0, channel.index)
    if hasattr(action, "fcurve_ensure_for_datablock"):  # Blender 4.4, whose actions have layers
        return action.fcurve_ensure_for_datablock(datablock, channel.path, index=index)
    return (action.fcurves.find(channel.path, index=index)
            or action.fcurves.new(channel.path, index=index))


def _remove(action, datablock, channel: Channel, written: Keys) -> None:
    curve = _curve(action, datablock, channel)
    own = {round(frame): value for frame, value in written}
    points = curve.keyframe_points
    for i in range(len(points) - 1, -1, -1):
        frame, value = points[i].co
        expected = own.get(round(frame))
        if (expected is not None and abs(frame - round(frame)) < _FRAME_SLACK
                and abs(value - expected) < _VALUE_SLACK):
            points.remove(points[i], fast=True)
    curve.update()
    if not points and hasattr(action, "fcurves"):
        action.fcurves.remove(curve)


def _insert(curve, keys: Keys) -> Keys:
    taken = {round(point.co[0]) for point in curve.keyframe_points}
    written = [(frame, value) for frame, value in keys if round(frame) not in taken]
    for frame, value in written:
        point = curve.keyframe_points.insert(frame, value, options={"FAST"})
        point.interpolation = "LINEAR"
        point.type = "JITTER"  # a colour of its own in the dope sheet
    curve.update()
    return written
