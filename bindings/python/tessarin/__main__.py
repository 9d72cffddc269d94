"""Finds the words of a recording: `python -m tessarin [AUDIO [TEXT]]`. Without a text the phonemes that
are heard; without a recording the demo."""

from __future__ import annotations

import argparse
import pathlib
import sys

import tessarin
from tessarin._library import find_data_folder


def main() -> int:
    parser = argparse.ArgumentParser(prog="python -m tessarin", description=__doc__)
    parser.add_argument("audio", nargs="?", help="a recording; the demo if there is none")
    parser.add_argument("text", nargs="?", help="what is said in it")
    parser.add_argument("--version", action="version", version=tessarin.version())
    given = parser.parse_args()
    audio, text = given.audio, given.text
    if audio is None:
        demo = find_data_folder() / "demo" / "echo-test.wav"
        audio, text = str(demo), demo.with_suffix(".txt").read_text(encoding="utf-8")
        print(f"{demo}: {pathlib.Path(demo).with_suffix('.txt').name} says: {text.strip()}",
              file=sys.stderr)
    try:
        result = tessarin.align(audio, text) if text else tessarin.recognize(audio)
    except tessarin.TessarinError as error:
        print(error, file=sys.stderr)
        return 1
    for span in result.words if text else result.phonemes:
        print(span.start_ms, span.end_ms, span.text if text else span.label, sep="\t")
    return 0


if __name__ == "__main__":
    sys.exit(main())
