"""Speech with known phone times from the flite synthesiser.

flite plans every segment before it makes the waveform, and the voices keep to the plan: what the
Segment relation says is when the phone sounds. Two limits were measured. The clustergen voices
(slt, rms, awb) render whole frames of 5 ms, so that a sound may stand up to 5 ms from its planned
time. The diphone voice (kal16) drops about half of the last pause.
"""

import ctypes

from native import declare, load
from phonemes import from_arpabet
from utterance import Interval, Utterance, tidy

_POINTER = ctypes.c_void_p
_TEXT = ctypes.c_char_p

_PROTOTYPES = {
    "flite_init": (ctypes.c_int,),
    "flite_synth_text": (_POINTER, _TEXT, _POINTER),
    "delete_utterance": (None, _POINTER),
    "utt_wave": (_POINTER, _POINTER),
    "utt_relation": (_POINTER, _POINTER, _TEXT),
    "relation_head": (_POINTER, _POINTER),
    "item_next": (_POINTER, _POINTER),
    "item_feat_string": (_TEXT, _POINTER, _TEXT),
    "item_feat_float": (ctypes.c_float, _POINTER, _TEXT),
    "flite_path_to_item": (_POINTER, _POINTER, _TEXT),
}


class _Wave(ctypes.Structure):
    _fields_ = [
        ("type", _TEXT),
        ("sample_rate", ctypes.c_int),
        ("num_samples", ctypes.c_int),
        ("num_channels", ctypes.c_int),
        ("samples", _POINTER),
    ]


class FliteVoice:
    def __init__(self, name):
        self._flite = load("libflite.so.1")
        declare(self._flite, _PROTOTYPES)
        self._flite.flite_init()
        load("libflite_usenglish.so.1")
        load("libflite_cmulex.so.1")
        voice = load(f"libflite_cmu_us_{name}.so.1")
        declare(voice, {f"register_cmu_us_{name}": (_POINTER, _TEXT)})
        self._voice = getattr(voice, f"register_cmu_us_{name}")(None)

    def speak(self, text):
        spoken = self._flite.flite_synth_text(text.encode("ascii"), self._voice)
        wave = ctypes.cast(self._flite.utt_wave(spoken), ctypes.POINTER(_Wave)).contents
        samples = ctypes.string_at(wave.samples, wave.num_samples * 2)
        utterance = Utterance(wave.sample_rate, samples, *self._intervals(spoken))
        utterance.phones = tidy(utterance.phones, utterance.duration_ms)
        self._flite.delete_utterance(spoken)
        return utterance

    def _intervals(self, spoken):
        phones, words = [], []
        start_ms, last_token = 0.0, None
        segment = self._flite.relation_head(self._flite.utt_relation(spoken, b"Segment"))
        while segment:
            end_ms = self._flite.item_feat_float(segment, b"end") * 1000
            phone = self._flite.item_feat_string(segment, b"name").decode("ascii")
            phones.append(Interval(start_ms, end_ms, from_arpabet(phone)))
            # A segment is a daughter of a syllable of a word, a word one of a token of the text.
            token = self._flite.flite_path_to_item(
                segment, b"R:SylStructure.parent.parent.R:Token.parent")
            if token and token == last_token:
                words[-1].end_ms = end_ms
            elif token:
                name = self._flite.item_feat_string(token, b"name").decode("ascii")
                words.append(Interval(start_ms, end_ms, name))
            last_token = token
            start_ms = end_ms
            segment = self._flite.item_next(segment)
        return phones, words
