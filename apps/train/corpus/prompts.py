"""The voice prompts of the Debian package asterisk-core-sounds-en: a person speaking, with text.

The recordings of asterisk-core-sounds-en-g722 are G.722 at 16 kHz; ffmpeg decodes them. The
transcript has lines `name: text`. Notes in brackets say what else is heard; prompts that are
only a note are tones or silence. The speaker spells names that are written as one word, and the
text says how.
"""

import gzip
import hashlib
import pathlib
import re
import subprocess

RATE = 16000
RECORDINGS = pathlib.Path("/usr/share/asterisk/sounds/en_US_f_Allison")
TRANSCRIPT = pathlib.Path("/usr/share/doc/asterisk-core-sounds-en/core-sounds-en.txt.gz")

# Prompts with a tone in them, and those of which the transcript does not say what is said.
_UNUSABLE = {"vm-intro", "spy-dahdi", "spy-h323", "spy-sip", "spy-unistim", "spy-zap"}

_NOTE = re.compile(r"\[[^]]*\]|\([^)]*\)|<[^>]*>|\.\.\.")
_DIGITS = "zero one two three four five six seven eight nine".split()

# What is written, and what is said. Slips of spelling would mislead a pronunciation rule.
_SPOKEN = {
    "*": "star", "#": "pound", "PBX": "P B X", "IVR": "I V R", "IAX": "I A X", "MGCP": "M G C P",
    "USB": "U S B", "IP": "I P", "3D": "three D", "28.8": "twenty eight point eight",
    "www.asterisk.org": "W W W dot asterisk dot org", "umute": "unmute", "decending": "descending",
    "represenatives": "representatives", "Un-indentified": "Unidentified", "witheld": "withheld",
    "fourtieth": "fortieth", "exclaimation-point": "exclamation point", "xray": "x-ray",
}
_WRITTEN = re.compile("|".join(
    re.escape(written) if written in "*#" else rf"\b{re.escape(written)}\b" for written in _SPOKEN))


def spoken_text(written):
    text = _WRITTEN.sub(lambda word: _SPOKEN[word[0]], _NOTE.sub(" ", written))
    # Long numbers are extensions and passwords, said digit by digit.
    text = re.sub(r"\b\d{3,}\b", lambda number: " ".join(_DIGITS[int(d)] for d in number[0]), text)
    return " ".join(text.split())


def base_name(name):
    return name.rsplit("/", 1)[-1]


def is_development(name):
    """A fifth of the prompts is never trained on."""
    return int(hashlib.md5(base_name(name).encode("ascii")).hexdigest(), 16) % 5 == 0


def read_prompts():
    """(name, text) of each prompt in which somebody speaks."""
    with gzip.open(TRANSCRIPT, "rt", encoding="utf-8") as lines:
        for line in lines:
            name, colon, written = line.partition(": ")
            text = spoken_text(written)
            usable = base_name(name) not in _UNUSABLE and recording_path(name).exists()
            if colon and usable and re.search("[A-Za-z0-9]", text):
                yield name, text


def recording_path(name):
    return RECORDINGS / f"{name}.g722"


def read_recording(name):
    """The samples of a prompt, 16 bits, at RATE."""
    return subprocess.run(
        ["ffmpeg", "-v", "error", "-f", "g722", "-i", recording_path(name),
         "-f", "s16le", "-ar", str(RATE), "-ac", "1", "-"],
        check=True, stdout=subprocess.PIPE, stdin=subprocess.DEVNULL).stdout
