"""The speech and the text of the game in the Debian package drascula.

`[PREFIX]N.ALS` is what a voice says as its message N: 32 bytes, the speech as unsigned bytes, and
32 bytes. Its texts are tables in `drascula.dat`: how many there are (u16, big-endian as all
numbers), then for each language the size of its block (u16) and the block. The first text of a
block is at 0. Each other one is found from the one before, the second from byte 4, by the distance
(u16) that stands before that place. All end with a zero.
"""

import pathlib

from rnc import Damaged

RATE = 11025
FOLDER = pathlib.Path("/usr/share/scummvm/drascula/en")
FIRST_TABLE = 7253
NUM_LANGUAGES = 6  # English comes first
# The voices in the order of their tables; others that follow have no speech.
VOICES = ("", "D", "B", "BJ", "E", "I", "L", "P", "T", "VB")
# Voices that are never trained on.
KEPT_OUT = ("VB", "BJ", "L", "B", "T")
EDGE_BYTES = 32


def _number(data: bytes, at: int) -> int:
    if at + 2 > len(data):
        raise Damaged("the texts end too early")
    return int.from_bytes(data[at:at + 2], "big")


def read_block(block: bytes, count: int) -> list[str]:
    texts, at = [], 0
    for place in range(count):
        if place > 0:
            at = max(at, 4)
            at += _number(block, at - 2)
        end = block.find(b"\0", at)
        if end < 0:
            raise Damaged("a text without an end")
        texts.append(block[at:end].decode("cp850"))
    return texts


def read_tables(data: bytes) -> dict[str, list[str]]:
    """The English messages of each voice; message N is the one at N."""
    tables, at = {}, FIRST_TABLE
    for voice in VOICES:
        count = _number(data, at)
        at += 2
        for language in range(NUM_LANGUAGES):
            size = _number(data, at)
            block = data[at + 2:at + 2 + size]
            if len(block) < size:
                raise Damaged("the texts end too early")
            if language == 0:
                tables[voice] = read_block(block, count)
            at += 2 + size
    return tables


def speech(file: bytes) -> bytes:
    return file[EDGE_BYTES:-EDGE_BYTES]
