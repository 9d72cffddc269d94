#!/usr/bin/env python3
"""Answers POST /align with the timings of a recording: the form fields `audio`, a file, and `text`."""

import asyncio
import os
import tempfile
import time

import tessarin
from aiohttp import web

MAX_BYTES = 20 << 20  # of a request
MAX_SECONDS = 30  # of a search
engine = tessarin.Engine()
cores = asyncio.Semaphore(os.cpu_count() or 1)


def align(content: bytes, text: str) -> dict:
    end = time.monotonic() + MAX_SECONDS
    with tempfile.NamedTemporaryFile(suffix=".audio") as file:
        file.write(content)
        file.flush()
        audio = tessarin.Audio.from_file(file.name)
    result = engine.align(audio, text, progress=lambda done, total: time.monotonic() > end)
    return {"verdict": result.match.verdict if result.match else None,
            "words": [[word.text, word.start_ms, word.end_ms] for word in result.words],
            "phonemes": [[sound.label, sound.start_ms, sound.end_ms] for sound in result.phonemes]}


async def answer(request: web.Request) -> web.Response:
    form = await request.post()  # answers 413 when it is larger than MAX_BYTES
    if not isinstance(form.get("audio"), web.FileField) or not isinstance(form.get("text"), str):
        return web.json_response({"error": "give the fields audio, a file, and text"}, status=400)
    async with cores:  # others wait for their turn
        try:
            content = form["audio"].file.read()
            return web.json_response(await asyncio.to_thread(align, content, form["text"]))
        except tessarin.Cancelled:
            return web.json_response({"error": "it took too long"}, status=503)
        except tessarin.TessarinError as error:
            return web.json_response({"error": str(error)}, status=422)


app = web.Application(client_max_size=MAX_BYTES)
app.router.add_post("/align", answer)
if __name__ == "__main__":
    web.run_app(app, host="127.0.0.1", port=int(os.environ.get("PORT", "8080")))
