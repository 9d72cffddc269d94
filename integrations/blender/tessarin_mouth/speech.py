"""What is to be animated: recordings with their texts and places in time."""

from __future__ import annotations

import pathlib
from dataclasses import dataclass

import bpy

from .search import Request, SearchError

_TEXT_ENDINGS = (".txt", ".srt", ".vtt")


@dataclass
class Speech:
    name: str  # owner of the keys
    request: Request
    start_frame: float  # where the recording's time 0 is
    strip_name: str = ""


def scene_fps(scene) -> float:
    return scene.render.fps / scene.render.fps_base


def collect_speeches(context, target) -> list[Speech]:
    """Raises SearchError."""
    settings = target.tessarin
    if settings.source == "STRIP":
        strips = sorted((each for each in context.scene.sequence_editor_create().sequences_all
                         if each.type == "SOUND" and each.select),
                        key=lambda each: each.frame_final_start)
        if not strips:
            raise SearchError("Select one or more sound strips in the sequencer, or choose a file")
        if len(strips) > 1 and settings.text_from in ("BLOCK", "TYPED"):
            raise SearchError("One text cannot be that of several strips: put texts beside the "
                              "recordings, or name text blocks as the strips are named")
        return [_strip_speech(context.scene, settings, each) for each in strips]
    path = _existing(settings.audio, "Choose a recording")
    request = Request(path, scene_fps(context.scene), strength=settings.strength)
    _add_text(settings, request, path.stem)
    return [Speech(path.name, request, settings.start_frame)]


def _strip_speech(scene, settings, strip) -> Speech:
    if strip.sound.packed_file:
        raise SearchError(f"The sound of {strip.name} is packed into the file: unpack it with "
                          "File > External Data > Unpack Resources")
    path = _existing(strip.sound.filepath, f"{strip.name} has no file")
    fps = scene_fps(scene)
    # Trimmed parts of a strip are not searched; its beginning is still the recording's.
    from_ms = round(max(0.0, strip.frame_final_start - strip.frame_start) * 1000 / fps)
    to_ms = round(max(0.0, strip.frame_final_end - strip.frame_start) * 1000 / fps)
    full_ms = round(strip.frame_duration * 1000 / fps)
    request = Request(path, fps, from_ms=from_ms, to_ms=to_ms if to_ms < full_ms else 0,
                      strength=settings.strength)
    _add_text(settings, request, strip.name)
    return Speech(strip.name, request, strip.frame_start, strip.name)


def _existing(named: str, otherwise: str) -> pathlib.Path:
    if not named:
        raise SearchError(otherwise)
    path = pathlib.Path(bpy.path.abspath(named))
    if not path.is_file():
        raise SearchError(f"The recording {path} does not exist: choose it again")
    return path


def _add_text(settings, request: Request, name: str) -> None:
    if settings.text_from == "TYPED":
        request.text = settings.text
    elif settings.text_from == "BLOCK":
        if settings.text_block is None:
            raise SearchError("Choose a text block")
        request.text = settings.text_block.as_string()
    elif settings.text_from == "BESIDE":
        _add_text_beside(request, name)
    if request.text is not None and not request.text.strip():
        raise SearchError("The text is empty: write what is said, or choose None to hear without")


def _add_text_beside(request: Request, name: str) -> None:
    block = bpy.data.texts.get(name) or bpy.data.texts.get(name + ".txt")
    if block is not None:
        request.text = block.as_string()
        return
    for ending in _TEXT_ENDINGS:
        path = request.audio.with_suffix(ending)
        if path.is_file():
            request.text_file = path
            return
    raise SearchError(f"There is no text for {name}: write {request.audio.stem}.txt beside the "
                      f"recording, or name a text block {name}, or choose another Text")
