"""Results of the tool, as JSON."""

from __future__ import annotations

import json
import pathlib

VERSION = 1
LOST_TEXT = 8


class ResultError(Exception):
    """What is not a result that this add-on reads; the text says what to do."""


def check_result(data: object, name: str) -> dict:
    """The result itself. Raises ResultError."""
    if not isinstance(data, dict) or not isinstance(data.get("version"), int):
        raise ResultError(f"{name} is not a result of tessarin: it has no version. Make one with "
                          "tessarin align RECORDING --text-file TEXT -o RESULT.json")
    version = data["version"]
    if version > VERSION:
        raise ResultError(f"{name} has version {version} and this add-on reads version {VERSION}: "
                          "install the add-on that came with your tessarin")
    if version < VERSION:
        raise ResultError(f"{name} has version {version}, older than {VERSION}: make it again "
                          "with a newer tessarin")
    frames = data.get("frames")
    if not isinstance(frames, list) or not all(_is_frame(each) for each in frames):
        raise ResultError(f"{name} has frames that do not read: make it again")
    return data


def _is_frame(frame: object) -> bool:
    return (isinstance(frame, dict) and isinstance(frame.get("start_ms"), int)
            and isinstance(frame.get("end_ms"), int) and isinstance(frame.get("weights"), dict)
            and all(isinstance(weight, (int, float)) for weight in frame["weights"].values()))


def load_result(path: pathlib.Path) -> dict:
    """Raises ResultError."""
    try:
        return check_result(json.loads(path.read_text(encoding="utf-8")), path.name)
    except OSError as error:
        raise ResultError(f"{path.name} does not open: {error.strerror}") from error
    except ValueError as error:
        raise ResultError(f"{path.name} is not JSON: {error}") from error


def warning_of(result: dict) -> str:
    """What a person should know of how well text and recording fit; empty when all is well."""
    if result.get("code") == LOST_TEXT:
        end = max((each["end_ms"] for each in result.get("phonemes", [])), default=0)
        return (f"the search lost the text at {end / 1000:.1f} s, and the mouth rests from there: "
                "compare text and recording")
    match = result.get("match", {})
    if match.get("verdict") in ("doubtful", "poor"):
        return f"the text fits the recording badly: {match.get('reason', '')}"
    return ""
