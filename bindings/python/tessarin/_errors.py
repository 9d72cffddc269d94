"""What goes wrong, as exceptions."""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from tessarin._results import Result

CANCELLED = 5
NOT_AVAILABLE = 6
RECOGNITION_FAILED = 8
INVALID_FILE = 12
COMPRESSED_FILE = 13


class TessarinError(Exception):
    """The library could not do what was asked. `code` is its number for why."""

    def __init__(self, subject: str, code: int, text: str) -> None:
        super().__init__(f"{subject}: {text} (code {code})")
        self.code = code


class Cancelled(TessarinError):
    """The progress function asked to stop."""


class RecognitionFailed(TessarinError):
    """The search lost the text: text and recording differ, or the beam is too narrow. `result` has
    what was found before."""

    def __init__(self, subject: str, code: int, text: str, result: Result) -> None:
        super().__init__(subject, code, text)
        self.result = result
