#!/usr/bin/env python3
"""Tests of what the measures are made of, on cases small enough to work out by hand."""

import array
import math
import pathlib
import random
import sys
import tempfile
import unittest
import wave

import boundaries
import independent_words
import judge
import mismatch
import mouth
import phoneme_errors

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "train"))
import calibrate  # noqa: E402


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


class Mismatch(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.lines = []
        for name, text in (("a", "one two three four five"), ("b", "Six seven, eight.")):
            path = pathlib.Path(self.folder.name) / f"{name}.wav"
            with wave.open(str(path), "wb") as audio:
                audio.setparams((1, 2, 8000, 0, "NONE", "none"))
                audio.writeframes(bytes(16000))
            path.with_suffix(".txt").write_text(text, encoding="utf-8")
            self.lines.append(mismatch.Line(path))

    def tearDown(self):
        self.folder.cleanup()

    def case(self, kind):
        return mismatch.make_case(kind, self.lines[0], self.lines[1:], random.Random(1),
                                  self.folder.name)

    def test_each_chunk_of_a_changed_text_knows_where_it_comes_from(self):
        own = self.lines[0].chunks
        for kind in mismatch.KINDS:
            with self.subTest(kind):
                audio, chunks, sources, later = self.case(kind)
                self.assertEqual(len(chunks), len(sources))
                for chunk, source in zip(chunks, sources):
                    if source is not None:
                        self.assertEqual(chunk, own[source])
                self.assertEqual(later, 1300 if kind == "around" else 0)
        self.assertLess(len(self.case("less")[1]), 5)
        self.assertEqual(self.case("swap")[2].count(None), 2)
        with wave.open(str(self.case("around")[0])) as audio:
            self.assertEqual(audio.getnframes(), 3 * 8000 + 2 * 2400)

    def test_words_count_as_kept_marked_and_denied(self):
        line = self.lines[0]
        line.starts = {(0, 0): 100, (1, 0): 300}
        words = [{"text_offset": 0, "said": True, "start_ms": 150, "confidence": 0.9},
                 {"text_offset": 4, "said": False, "confidence": 0.2},
                 {"text_offset": 9, "said": False, "confidence": 0.1}]
        measured = mismatch.Measured()
        measured.add({"words": words, "match": {"verdict": "doubtful", "score": 0.7}}, 1.0, line,
                     [0, 4, 9], [0, 1, None], 0)
        self.assertEqual((measured.kept, measured.common), (1, 2))
        self.assertEqual((measured.denied, measured.said), (1, 2))
        self.assertEqual((measured.marked, measured.unsaid), (1, 1))
        self.assertEqual(measured.confidences, [(0.9, True), (0.2, False), (0.1, False)])

    def test_the_area_counts_ties_as_half(self):
        self.assertEqual(mismatch.area([0.9, 0.5], [0.5, 0.1]), 0.875)


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


class Mouth(unittest.TestCase):
    """A track of 50 ms frames: a pause of 400 ms, `pa` of 300 ms, and a pause of 300 ms."""

    PHONEMES = [{"label": label, "start_ms": start, "end_ms": end} for label, start, end in (
        ("x", 0, 400), ("p", 400, 500), ("AA", 500, 700), ("x", 700, 1000))]
    WORDS = [{"text": "pa", "start_ms": 400, "end_ms": 700}]

    def measure(self, weights, switches, phonemes=PHONEMES, words=WORDS):
        shapes = {shape: 0.0 for shape in ("sil", "PP", "FF", *mouth.OPENING)}
        frames = [shapes | {"sil": 1.0} | weights.get(i, {}) | {"start_ms": 50 * i,
                                                                "end_ms": 50 * i + 50}
                  for i in range(20)]
        cues = [{"start": start, "end": end, "value": value} for start, end, value in switches]
        return mouth.measure({"phonemes": phonemes, "words": words}, frames, cues,
                             lambda start_ms, _: start_ms)

    def test_each_figure_counts_the_frames_that_it_names(self):
        track = {6: {"sil": 0.9}, 7: {"sil": 0.5}, 8: {"sil": 0.2, "PP": 0.75},
                 9: {"sil": 0.2, "PP": 0.8}, 10: {"sil": 0.4, "aa": 0.6},
                 11: {"sil": 0.1, "aa": 0.5, "E": 0.4}, 12: {"sil": 0.0, "aa": 0.8},
                 13: {"sil": 0.3, "aa": 0.7}, 16: {"sil": 0.5}}
        found = self.measure(track, [(0, 0.4, "X"), (0.4, 0.5, "A"), (0.5, 0.55, "C"),
                                     (0.55, 0.7, "D"), (0.7, 1, "X")])
        self.assertEqual([is_so for _, is_so in found["closed"]], [True])
        self.assertEqual(found["open"], [0.9])
        self.assertAlmostEqual(sum(found["sil-in"]), 0.2 + 0.2 + 0.4 + 0.1 + 0.3)
        self.assertEqual(len(found["sil-in"]), 6)
        self.assertEqual(found["sil-out"], [1, 1, 1, 1, 0.5, 1])
        self.assertEqual((found["flips"], found["speech_s"]), (4, 0.3))
        self.assertEqual(found["short"], [False, False, True, False, False])
        self.assertEqual([is_so for _, is_so in found["rest-in"]], [False])
        self.assertIsNone(found["loudness"])

        track[9]["PP"] = 0.79
        found = self.measure(track, [(0, 0.45, "X"), (0.45, 0.7, "D"), (0.7, 1, "X")])
        self.assertEqual([is_so for _, is_so in found["closed"]], [False])
        self.assertEqual([is_so for _, is_so in found["rest-in"]], [True])

    def test_a_word_with_a_pause_in_it_may_rest(self):
        phonemes = [*self.PHONEMES[:2], {"label": "x", "start_ms": 500, "end_ms": 560},
                    {"label": "AA", "start_ms": 560, "end_ms": 700}, self.PHONEMES[3]]
        self.assertEqual(self.measure({}, [(0, 1, "X")], phonemes)["rest-in"], [])
        phonemes[2]["end_ms"] = 559
        self.assertEqual(len(self.measure({}, [(0, 1, "X")], phonemes)["rest-in"]), 1)

    def test_loudness_is_the_order_of_levels_and_openings(self):
        phonemes = [{"label": "AA", "start_ms": 100 * i, "end_ms": 100 * i + 100} for i in range(8)]

        def loudness(openings):
            track = {2 * i: {"aa": opening} for i, opening in enumerate(openings)}
            return self.measure(track, [], phonemes, [])["loudness"]

        self.assertAlmostEqual(loudness([0.1, 0.2, 0.3, 0.5, 0.6, 0.7, 0.8, 1]), 1)
        self.assertAlmostEqual(loudness([0.2, 0.1, 0.3, 0.5, 0.6, 0.7, 0.8, 1]), 1 - 12 / 504)
        self.assertEqual(loudness([1] * 8), 0)
        self.assertAlmostEqual(mouth.rank_correlation([1, 2, 2, 3], [1, 2, 3, 4]), 0.9486833)


class Calibrate(unittest.TestCase):
    def test_lengths_are_those_that_the_engine_judges(self):
        # Of right texts, by the exact search, without silence.
        rows = [{"kind": "right", "phones": [["AA", 900]],
                 "exact_phones": [["x", 10]] + [["AA", 80], ["AA", 120]] * 10},
                {"kind": "less", "phones": [], "exact_phones": [["s", 500]]}]
        usual = {label: (mean, dev) for label, mean, dev in calibrate.usual_durations(rows)}
        self.assertEqual(list(usual), ["AA"])
        self.assertAlmostEqual(usual["AA"][0], math.log(80 * 120) / 2)
        # One that is unknown is at no distance, but counts; silence does not.
        found = {"exact_phones": [["AA", 100 * math.e], ["s", 5], ["x", 900]]}
        self.assertAlmostEqual(calibrate.duration_distance(found, {"AA": (math.log(100), 0.5)}), 1)
        self.assertEqual(calibrate.duration_distance({"exact_phones": []}, {}), 2)


if __name__ == "__main__":
    unittest.main()
