#!/usr/bin/env python3
"""Tests of what the measures are made of, on cases small enough to work out by hand."""

import array
import pathlib
import random
import tempfile
import unittest
import wave

import boundaries
import independent_words
import judge
import phoneme_errors


def intervals(labels: str, length: float = 100.0):
    return [(i * length, (i + 1) * length, label) for i, label in enumerate(labels.split())]


class Boundaries(unittest.TestCase):
    def test_only_equal_phones_are_paired(self):
        pairs = boundaries.pair(intervals("k AE t s"), intervals("k AH t s"))
        self.assertEqual([found[2] for _, found in pairs], ["k", "t", "s"])

    def test_errors_are_ours_less_the_known_and_the_end_before_silence_counts(self):
        labels = [(0, 100, "x"), (100, 200, "AE"), (200, 300, "t"), (300, 400, "x")]
        found = [(0, 95, "x"), (95, 215, "AE"), (215, 330, "t"), (330, 400, "x")]
        result = boundaries.measure(labels, [], found, [], 0)
        self.assertEqual(sorted(result["errors"]), [-5, 15, 30])
        self.assertEqual(result["stops"], [15])


class PhonemeErrors(unittest.TestCase):
    def test_the_cheapest_alternative_counts(self):
        said = [[["t", "AH"], ["t", "EY"]], [["m"]]]
        self.assertEqual(phoneme_errors.errors(said, ["t", "EY", "n"])[0], 1)
        self.assertEqual(phoneme_errors.errors(said, [])[:5], (3, 0, 3, 0, 3))


class IndependentWords(unittest.TestCase):
    def test_segments_of_a_line(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "segments"
            path.write_text("7 S 0 T -9 A -8 L -1 0 -2 -3 <sil> 10 -2 0 w7_0(2) 40 -4 0 w7_1 89\n"
                            "8 (null)\n", encoding="ascii")
            self.assertEqual(list(independent_words.read_segments(path)), [
                ("7", [("<sil>", 0, 10), ("w7_0(2)", 10, 40), ("w7_1", 40, 89)])])


class Rises(unittest.TestCase):
    def test_speech_that_begins_too_late_by_thirty_milliseconds(self):
        noise = random.Random(1)
        samples = array.array("h", (int(noise.gauss(0, 10 if i < 8000 else 3000))
                                    for i in range(16000)))
        with tempfile.TemporaryDirectory() as folder:
            path = str(pathlib.Path(folder) / "a.wav")
            with wave.open(path, "wb") as output:
                output.setnchannels(1)
                output.setsampwidth(2)
                output.setframerate(16000)
                output.writeframes(samples)
            phonemes = [{"label": "x", "start_ms": 5, "end_ms": 530},
                        {"label": "AA", "start_ms": 530, "end_ms": 995}]
            recording, result = {"path": path}, {"phonemes": phonemes}
            self.assertEqual(judge.rises(recording, result, 525), [(530, 500, "AA")])
            self.assertEqual(judge.rises(recording, result, 526), [])

            pathlib.Path(folder, "a.words").write_text("440.0 995.0 aah\n", encoding="ascii")
            result["words"] = [{"start_ms": 530, "end_ms": 995, "text": "aah"}]
            self.assertEqual(judge.disputed(recording, result), [(30, -60.0)])


if __name__ == "__main__":
    unittest.main()
