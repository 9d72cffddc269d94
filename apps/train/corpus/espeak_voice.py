"""Speech with known phone times from the espeak-ng synthesiser.

espeak-ng reports when it begins a phone, but by its own idea of a beginning, which differs from
what is heard in three ways that were measured on its waveforms. The closure of a stop is silence
in front of the reported time. The transition out of a nasal or a glide already belongs to the
reported consonant, up to VOWEL_LEAD_MS into the vowel. An `l` after a vowel is reported when it
is nearly over. What is reported is moved accordingly; the times that result are good to about
15 ms, not exact as flite's are. Vowels that espeak-ng colours with an `r` are one phone to it and
two to us, and are divided at fixed shares.

Its pauses and closures are exact zeros, which no recording has: the logarithm of their spectrum
would teach a model nothing about silence. Faint noise is put under the speech.
"""

import array
import ctypes
import itertools
import random

from native import declare, load
from utterance import Interval, Utterance, tidy

# Voices that differ in size and manner of voice; a name is a language and a variant. Variants
# with an echo would fill the closures, by which stops are found.
AMERICAN_VOICES = ("en-us+m3", "en-us+f1", "en-us+m7", "en-us+linda", "en-us+klatt4", "en-us+m1")
# Another accent that says its `r` everywhere, as American English does, so that the phonemes agree.
SCOTTISH_VOICES = ("en-gb-scotland+m3", "en-gb-scotland+f1", "en-gb-scotland+m7",
                   "en-gb-scotland+klatt4")
ESPEAK_VOICES = AMERICAN_VOICES + SCOTTISH_VOICES

NOISE_PEAK = 12  # of 32768, uniformly distributed

QUIET = 16  # largest sample value of a closure; the synthesiser writes zeros and rings out
LONGEST_INITIAL_CLOSURE_MS = 50.0
VOWEL_LEAD_MS = {"m": 27.0, "n": 27.0, "NG": 27.0, "w": 20.0, "l": 20.0, "r": 20.0, "y": 20.0}
LATE_L_MS = 40.0
L_BEHIND_VOWEL_MS = 80.0

# espeak-ng's names for both accents, where they are not our own symbols.
_SYMBOLS = {
    "_": "x", "_:": "x", "_!": "x", "n-": "n", "N": "NG", "D": "DH", "T": "TH", "S": "SH",
    "Z": "ZH", "tS": "CH", "dZ": "j", "j": "y", "r-": "r", "t#": "t", "t2": "t", "?": "t",
    "a": "AE", "aa": "AE", "E": "EH", "V": "AH", "@": "AH", "@2": "AH", "@-": "AH", "a#": "AH",
    "I": "IH", "I2": "IH", "I#": "IH", "i": "IY", "i:": "IY", "u:": "UW", "U": "UH", "A:": "AA",
    "0": "AA", "O:": "AO", "O2": "AO", "3": "ER", "3:": "ER", "eI": "EY", "aI": "AY", "oU": "OW",
    "aU": "AW", "OI": "OY", "IR": "ER", "VR": "ER", "aI2": "AY", "w#": "w",
}
# Two symbols and the first one's share; the second is `r` unless an `r` follows anyway.
_COLOURED = {
    "A@": ("AA", "r", 0.6), "O@": ("AO", "r", 0.6), "o@": ("AO", "r", 0.6), "e@": ("EH", "r", 0.6),
    "i@3": ("IH", "r", 0.6), "U@": ("UH", "r", 0.6), "aI3": ("AY", "ER", 0.6),
}
_DOUBLE = {"i@": ("IY", "AH", 0.6), "aI@": ("AY", "AH", 0.65), "@L": ("AH", "l", 0.4)}

_GLIDE_MARK = ";"  # belongs to the vowel in front of it
_STOPS = {"p", "b", "t", "d", "k", "g", "CH", "j"}

_OUTPUT_SYNCHRONOUS = 2
_INITIALIZE_PHONEME_EVENTS, _INITIALIZE_DONT_EXIT = 0x0001, 0x8000
_POSITION_CHARACTER, _CHARS_UTF8 = 1, 1
_EVENT_END_OF_LIST, _EVENT_PHONEME = 0, 7


class _EventId(ctypes.Union):
    _fields_ = [("number", ctypes.c_int), ("name", ctypes.c_char_p), ("text", ctypes.c_char * 8)]


class _Event(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("unique_identifier", ctypes.c_uint),
        ("text_position", ctypes.c_int),
        ("length", ctypes.c_int),
        ("audio_position", ctypes.c_int),
        ("sample", ctypes.c_int),
        ("user_data", ctypes.c_void_p),
        ("id", _EventId),
    ]


_CALLBACK = ctypes.CFUNCTYPE(
    ctypes.c_int, ctypes.POINTER(ctypes.c_short), ctypes.c_int, ctypes.POINTER(_Event))

_PROTOTYPES = {
    "espeak_Initialize": (ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.c_char_p, ctypes.c_int),
    "espeak_SetSynthCallback": (None, _CALLBACK),
    "espeak_SetVoiceByName": (ctypes.c_int, ctypes.c_char_p),
    "espeak_Synth": (ctypes.c_int, ctypes.c_char_p, ctypes.c_size_t, ctypes.c_uint, ctypes.c_int,
                     ctypes.c_uint, ctypes.c_uint, ctypes.c_void_p, ctypes.c_void_p),
    "espeak_Synchronize": (ctypes.c_int,),
}


class _Engine:
    """The library, which is one per process, and what its last synthesis gave."""

    def __init__(self):
        self.library = load("libespeak-ng.so.1")
        declare(self.library, _PROTOTYPES)
        options = _INITIALIZE_PHONEME_EVENTS | _INITIALIZE_DONT_EXIT
        self.rate = self.library.espeak_Initialize(_OUTPUT_SYNCHRONOUS, 0, None, options)
        self.callback = _CALLBACK(self._receive)
        self.library.espeak_SetSynthCallback(self.callback)

    def speak(self, voice, text):
        self.samples = array.array("h")
        self.phones = []  # (espeak-ng's name, first sample)
        if self.library.espeak_SetVoiceByName(voice.encode("ascii")) != 0:
            raise ValueError(f"espeak-ng has no voice {voice!r}")
        written = text.encode("ascii")
        self.library.espeak_Synth(
            written, len(written) + 1, 0, _POSITION_CHARACTER, 0, _CHARS_UTF8, None, None)
        self.library.espeak_Synchronize()

    def _receive(self, samples, count, events):
        if samples and count > 0:
            self.samples.extend(samples[:count])
        for event in events:
            if event.type == _EVENT_END_OF_LIST:
                break
            if event.type == _EVENT_PHONEME:
                self.phones.append((event.id.text.decode("utf-8"), event.sample))
        return 0


_engine = None


class EspeakVoice:
    def __init__(self, name):
        global _engine
        _engine = _engine or _Engine()
        self._name = name

    def speak(self, text):
        _engine.speak(self._name, text)
        samples, rate = _engine.samples, _engine.rate
        starts = [start for _, start in _engine.phones] + [len(samples)]
        phones = []
        for place, (name, start) in enumerate(_engine.phones):
            if name == _GLIDE_MARK:
                phones[-1].end_ms = starts[place + 1] * 1000 / rate
                continue
            following = _engine.phones[place + 1][0] if place + 1 < len(_engine.phones) else ""
            phones += _part(name, following, start * 1000 / rate, starts[place + 1] * 1000 / rate)
        if phones and phones[0].start_ms > 0:
            phones.insert(0, Interval(0.0, phones[0].start_ms, "x"))
        _move_boundaries(phones, samples, rate)
        utterance = Utterance(rate, _with_noise(samples).tobytes(), phones, [])
        utterance.phones = tidy(phones, utterance.duration_ms)
        return utterance


def _part(name, following, start_ms, end_ms):
    """The one or two phones that espeak-ng's phone is to us."""
    if name in _COLOURED:
        first, second, share = _COLOURED[name]
        if second == "r" and following in ("r", "r-"):
            return [Interval(start_ms, end_ms, first)]
    elif name in _DOUBLE:
        first, second, share = _DOUBLE[name]
    else:
        return [Interval(start_ms, end_ms, _SYMBOLS.get(name, name))]
    middle_ms = start_ms + share * (end_ms - start_ms)
    return [Interval(start_ms, middle_ms, first), Interval(middle_ms, end_ms, second)]


def _is_vowel(phone):
    return len(phone.label) == 2 and phone.label[0] in "AEIOU"


def _move_boundaries(phones, samples, rate):
    for before, phone in zip(phones, phones[1:]):
        start_ms = phone.start_ms
        if phone.label in _STOPS:
            start_ms = _closure_start_ms(samples, rate, before.start_ms, phone.start_ms)
            if before.label == "x":
                start_ms = max(start_ms, phone.start_ms - LONGEST_INITIAL_CLOSURE_MS)
        elif _is_vowel(phone) and before.label in VOWEL_LEAD_MS:
            start_ms -= min(VOWEL_LEAD_MS[before.label], (start_ms - before.start_ms) / 2)
        elif (phone.label == "l" and _is_vowel(before)
              and phone.end_ms - phone.start_ms < LATE_L_MS):
            both_ms = phone.end_ms - before.start_ms
            start_ms = phone.end_ms - min(L_BEHIND_VOWEL_MS, 0.4 * both_ms)
        before.end_ms = phone.start_ms = start_ms


_chance = random.Random(1)
_NOISE = [_chance.randint(-NOISE_PEAK, NOISE_PEAK) for _ in range(16381)]


def _with_noise(samples):
    return array.array("h", (max(-32768, min(32767, sample + noise))
                             for sample, noise in zip(samples, itertools.cycle(_NOISE))))


def _closure_start_ms(samples, rate, from_ms, to_ms):
    first, place = int(from_ms * rate / 1000), int(to_ms * rate / 1000)
    # The reported time may lie a few samples after the first of the burst.
    while place > first and abs(samples[min(place, len(samples)) - 1]) <= QUIET:
        place -= 1
    return place * 1000 / rate
