"""Many recordings at a time."""

from __future__ import annotations

import concurrent.futures
import os
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Iterable, Iterator, Mapping, Optional, Tuple, Union

from tessarin._audio import Audio, Path
from tessarin._errors import TessarinError
from tessarin._facts import AudioFacts
from tessarin._results import Result

if TYPE_CHECKING:
    from tessarin._engine import Engine

#: A recording; one with its text; or arguments of `align` by their names, `audio` among them.
BatchJob = Union[Path, Audio, Tuple[Union[Path, Audio], Optional[str]], Mapping[str, Any]]

_JOBS_PER_THREAD = 2  # that are taken from the caller ahead of their turn


@dataclass(frozen=True)
class BatchItem:
    """What became of one job: its place among the jobs, from 0, and a `result` or an `error`. A
    search that lost the text has both. `facts` are those of its recording, which may be missing with
    an error."""

    index: int
    job: BatchJob
    result: Result | None
    error: Exception | None
    facts: AudioFacts | None


def _arguments(job: BatchJob) -> dict[str, Any]:
    if isinstance(job, Mapping):
        return dict(job)
    if isinstance(job, tuple):
        return {"audio": job[0], "text": job[1]}
    return {"audio": job}


def _run(engine: Engine, index: int, job: BatchJob) -> BatchItem:
    facts = None
    try:
        arguments = _arguments(job)
        text = arguments.pop("text", None)
        audio = engine._audio(arguments.pop("audio"), arguments.pop("channel", 1))
        facts = AudioFacts.of(audio)
        result = (engine.recognize(audio, **arguments) if text is None
                  else engine.align(audio, text, **arguments))
        return BatchItem(index, job, result, None, facts)
    except (TessarinError, OSError, TypeError, ValueError, KeyError) as error:
        return BatchItem(index, job, getattr(error, "result", None), error, facts)


def run_batch(engine: Engine, jobs: Iterable[BatchJob], threads: int | None) -> Iterator[BatchItem]:
    """See Engine.batch."""
    count = threads or os.cpu_count() or 1
    waiting = enumerate(jobs)
    with concurrent.futures.ThreadPoolExecutor(count) as pool:
        running: set[concurrent.futures.Future[BatchItem]] = set()
        try:
            while True:
                while len(running) < count * _JOBS_PER_THREAD:
                    job = next(waiting, None)
                    if job is None:
                        break
                    running.add(pool.submit(_run, engine, *job))
                if not running:
                    return
                done, running = concurrent.futures.wait(
                    running, return_when=concurrent.futures.FIRST_COMPLETED)
                for future in done:
                    yield future.result()
        finally:
            for future in running:
                future.cancel()
