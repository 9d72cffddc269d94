"""Runs the tool, or the Python package, for one recording on a thread of its own."""

from __future__ import annotations

import importlib.util
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
from dataclasses import dataclass

from .result import VERSION, ResultError, check_result, load_result

_REMEDY = ("Install tessarin, or give the path of the program in Edit > Preferences > Add-ons > "
           "Tessarin")


class SearchError(Exception):
    """Why there is no result, and what to do."""


@dataclass
class Request:
    audio: pathlib.Path
    fps: float
    text: str | None = None  # what is said; None with no text_file: heard without a text
    text_file: pathlib.Path | None = None
    from_ms: int = 0
    to_ms: int = 0  # 0: to the end
    strength: float = 1.0


def find_tool(named: str) -> str:
    """The program: the one that is named, else that on PATH; empty when there is none. Raises
    SearchError when the named one is not a program."""
    if not named:
        return shutil.which("tessarin") or ""
    found = shutil.which(named)
    if not found:
        raise SearchError(f"{named} is not a program. {_REMEDY}")
    return found


def has_package() -> bool:
    return importlib.util.find_spec("tessarin") is not None


def tool_command(tool: str, request: Request, text_file: pathlib.Path | None,
                 output: pathlib.Path) -> list[str]:
    command = [tool, "align" if text_file else "recognize", str(request.audio),
               "--fps", f"{request.fps:.6g}", "--progress-lines", "-o", str(output)]
    if text_file:
        command += ["--text-file", str(text_file)]
    if request.from_ms > 0:
        command += ["--from", str(request.from_ms)]
    if request.to_ms > 0:
        command += ["--to", str(request.to_ms)]
    if request.strength != 1.0:
        command += ["--strength", f"{request.strength:.6g}"]
    return command


class Search:
    """`start`, then `poll` until it is true; then there is a `result`, or `error` says why not."""

    def __init__(self, request: Request, tool: str) -> None:
        self.request = request
        self.progress = 0.0
        self.result: dict | None = None
        self.error = ""
        self.is_cancelled = False
        self._tool = tool
        self._process: subprocess.Popen | None = None
        self._thread = threading.Thread(target=self._run, daemon=True)

    def start(self) -> None:
        self._thread.start()

    def poll(self) -> bool:
        return not self._thread.is_alive()

    def wait(self) -> None:
        self._thread.join()

    def cancel(self) -> None:
        """Ends the search soon; `poll` says when."""
        self.is_cancelled = True
        process = self._process
        if process is not None and process.poll() is None:
            if os.name == "nt":
                process.terminate()
            else:
                process.send_signal(signal.SIGINT)

    def _run(self) -> None:
        try:
            if self._tool:
                self.result = self._run_tool()
            elif has_package():
                self.result = self._run_package()
            else:
                raise SearchError(f"The program tessarin was not found. {_REMEDY}")
        except (SearchError, ResultError, OSError) as error:
            self.error = str(error)
        except Exception as error:  # from the package, or a result of an unexpected form
            self.error = f"{type(error).__name__}: {error}"
        if self.is_cancelled:
            self.result, self.error = None, "cancelled"

    def _run_tool(self) -> dict:
        with tempfile.TemporaryDirectory(prefix="tessarin-") as folder:
            output = pathlib.Path(folder) / "result.json"
            text_file = self.request.text_file
            if text_file is None and self.request.text is not None:
                text_file = pathlib.Path(folder) / "text.txt"
                text_file.write_text(self.request.text, encoding="utf-8")
            self._process = subprocess.Popen(
                tool_command(self._tool, self.request, text_file, output), text=True,
                encoding="utf-8", errors="replace", stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                creationflags=getattr(subprocess, "CREATE_NO_WINDOW", 0))
            if self.is_cancelled:  # between the start of the thread and here
                self.cancel()
            messages = self._follow(self._process)
            code = self._process.wait()
            if output.exists():  # also where the text was lost, with what was found before
                return load_result(output)
            raise SearchError(_explain(code, messages))

    def _follow(self, process: subprocess.Popen) -> list[str]:
        messages = []
        for line in process.stderr:
            found = re.fullmatch(r"progress (\d+)", line.strip())
            if found:
                self.progress = int(found[1]) / 100
            elif line.strip():
                messages.append(line.strip())
        return messages

    def _run_package(self) -> dict:
        import tessarin
        request = self.request
        text = request.text
        if request.text_file is not None:
            text = request.text_file.read_text(encoding="utf-8")
        options = {"from_ms": request.from_ms, "to_ms": request.to_ms or None,
                   "progress": self._on_progress}
        code = 0
        try:
            found = (tessarin.recognize(str(request.audio), **options) if text is None else
                     tessarin.align(str(request.audio), text, **options))
        except tessarin.RecognitionFailed as error:
            found, code = error.result, error.code
        track = found.track(request.fps, strength=request.strength)
        match = found.match and {"verdict": found.match.verdict,
                                 "reason": "look at the confidences of its words"}
        return check_result({
            "version": VERSION, "code": code, "match": match or {},
            "words": [_times(each, "text") for each in found.words],
            "phonemes": [_times(each, "label") for each in found.phonemes],
            "frames": [{"start_ms": each.start_ms, "end_ms": each.end_ms,
                        "weights": dict(each.weights)} for each in track.frames],
        }, "the result")

    def _on_progress(self, done: int, total: int) -> bool:
        self.progress = done / total if total else 0.0
        return self.is_cancelled


def _times(span: object, name: str) -> dict:
    return {name: getattr(span, name), "start_ms": span.start_ms, "end_ms": span.end_ms}


def _explain(code: int, messages: list[str]) -> str:
    text = " ".join(messages[-3:]) or f"tessarin ended with code {code} and said nothing"
    if "--progress-lines" in text:
        return f"this tessarin is older than the add-on: install a newer one ({text})"
    return text


def add_package_folder(folder: str) -> None:
    """Lets `import tessarin` find the package there."""
    if folder and folder not in sys.path:
        sys.path.append(folder)
