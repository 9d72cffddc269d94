"""What goes wrong, as exceptions."""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from tessarin._results import Result

OUT_OF_MEMORY = 1
OUT_OF_RANGE = 3
INVALID_ARGUMENT = 2
CANCELLED = 5
RECOGNITION_FAILED = 8
FILE_NOT_FOUND = 10
INVALID_FILE = 12


class TessarinError(Exception):
    """The library could not do what was asked. `code` is its number for why."""

    def __init__(self, subject: str, code: int, text: str) -> None:
        super().__init__(f"{subject}: {text} (code {code})")
        self.code = code

    def with_remedy(self, remedy: str) -> TessarinError:
        """The same error with what to do about it in its text."""
        self.args = (f"{self.args[0]}; {remedy}",)
        return self


class Cancelled(TessarinError):
    """The progress function asked to stop."""


class RecognitionFailed(TessarinError):
    """The search lost the text: text and recording differ, or the beam is too narrow. `result` has
    what was found before."""

    def __init__(self, subject: str, code: int, text: str, result: Result) -> None:
        super().__init__(subject, code, text)
        self.result = result
