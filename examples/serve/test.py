#!/usr/bin/env python3
"""Starts serve.py and asks it what it answers and what it refuses: test.py DEMO, a recording without
its .wav. Exits with 77 without aiohttp."""

import asyncio
import sys

try:
    from aiohttp import FormData
    from aiohttp.test_utils import TestClient, TestServer
except ImportError:
    print("skipped: no python3-aiohttp; ./dev cluster-test installs it", file=sys.stderr)
    sys.exit(77)
import serve
import tessarin


def form(audio: bytes, text: str) -> FormData:
    data = FormData()
    data.add_field("audio", audio, filename="a.wav")
    data.add_field("text", text)
    return data


async def ask() -> None:
    with open(sys.argv[1] + ".wav", "rb") as file:
        recording = file.read()
    with open(sys.argv[1] + ".txt", encoding="utf-8") as file:
        text = file.read()
    expected = [[word.text, word.start_ms, word.end_ms]
                for word in tessarin.align(sys.argv[1] + ".wav", text).words]
    async with TestClient(TestServer(serve.app)) as client:
        async def post(data: FormData) -> tuple:
            response = await client.post("/align", data=data)
            return response.status, await response.json() if response.status != 413 else {}

        answers = await asyncio.gather(*(post(form(recording, text)) for _ in range(3)))
        assert all(status == 200 and body["words"] == expected for status, body in answers)
        assert (await post(form(b"no recording", text)))[0] == 422
        assert (await post(form(bytes(serve.MAX_BYTES + 1), text)))[0] == 413
        assert (await post(FormData({"text": text})))[0] == 400
        serve.MAX_SECONDS = 0
        assert (await post(form(recording, text)))[0] == 503
    print("ok: it answers, and refuses what is too large, too slow or no recording")


asyncio.run(ask())
