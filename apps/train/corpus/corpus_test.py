#!/usr/bin/env python3
"""Tests of the corpus scripts and of the data they made. Needs no synthesiser.

usage: corpus_test.py TOOL
"""

import array
import pathlib
import re
import subprocess
import sys
import unittest

import compose_sentences
import espeak_voice
import prompts
from make_lexicon import build_lexicon, read_entries
from phonemes import SYMBOLS, from_arpabet
from utterance import Interval, tidy

DATA = pathlib.Path(__file__).resolve().parents[3] / "data"


def read_lines(name):
    return (DATA / name).read_text(encoding="ascii").splitlines()


def read_lexicon():
    """The entries of the shipped lexicon, as its text."""
    return subprocess.run([sys.argv[1], "lexicon", "export", DATA / "en-us.lexicon"], check=True,
                          stdout=subprocess.PIPE, encoding="ascii").stdout.splitlines()


class Phonemes(unittest.TestCase):
    def test_every_arpabet_phone_has_its_label(self):
        phones = ("AA AE AH AO AW AX AXR AY B CH D DH EH ER EY F G HH IH IX IY JH K L M N NG OW OY "
                  "P PAU R S SH T TH UH UW V W Y Z ZH").split()
        self.assertEqual({from_arpabet(phone) for phone in phones}, set(SYMBOLS))
        self.assertEqual(from_arpabet("ow1"), "OW")

    def test_an_unknown_phone_is_refused(self):
        for phone in ("Q", "XX", ""):
            with self.assertRaises(ValueError):
                from_arpabet(phone)


class Lexicon(unittest.TestCase):
    def test_both_forms_of_the_dictionary_give_the_same_entries(self):
        text = ["either IY DH ER", "either(2) AY DH ER", "joule JH UW L # unit"]
        script = ["export const dictionary = {", "  either: 'IY1 DH ER0',",
                  "  \"either(2)\": 'AY1 DH ER0',", "  joule: 'JH UW1 L # unit'", "}"]
        expected = {"EITHER": ["IYDHER", "AYDHER"], "JOULE": ["jUWl"]}
        for lines in (text, script):
            self.assertEqual(build_lexicon(read_entries(lines)), expected)

    def test_pronunciations_that_differ_in_stress_alone_become_one(self):
        entries = read_entries(["record R EH1 K ER0 D", "record(2) R EH0 K ER1 D"])
        self.assertEqual(build_lexicon(entries), {"RECORD": ["rEHkERd"]})

    def test_the_lexicon_can_be_searched_and_read_by_the_engine(self):
        entries = [line.split("=") for line in read_lexicon()]
        words = [word for word, _ in entries]
        self.assertGreater(len(set(words)), 120000)
        self.assertEqual(words, sorted(words, key=str.lower))
        self.assertEqual(words, [word.upper() for word in words])
        self.assertEqual(len(entries), len({tuple(entry) for entry in entries}))
        label = "|".join(sorted(SYMBOLS[1:], key=len, reverse=True))
        pronunciation = re.compile(rf"({label})+")
        self.assertEqual([w for w, p in entries if not pronunciation.fullmatch(p)], [])
        self.assertEqual([p for w, p in entries if w == "THE"], ["DHAH", "DHIY"])


class Sentences(unittest.TestCase):
    def test_nothing_is_both_trained_and_judged_on(self):
        lists = [read_lines(f"sentences/{name}.txt")
                 for name in ("written", "composed", "evaluation")]
        everything = [re.sub(r"\W", "", line).lower() for lines in lists for line in lines]
        self.assertEqual(len(everything), len(set(everything)))
        self.assertGreater(len(everything), 1650)

    def test_every_phoneme_occurs_often_and_between_many_others(self):
        lexicon = compose_sentences.read_lexicon(read_lexicon())
        runs = [run for name in ("written", "composed")
                for line in read_lines(f"sentences/{name}.txt")
                for run in compose_sentences.contexts(line, lexicon)]
        for symbol in SYMBOLS[1:]:
            with self.subTest(symbol):
                around = [(run[0], run[2]) for run in runs if run[1] == symbol]
                self.assertGreater(len(around), 200)
                self.assertGreater(len(set(around)), 35)

    def test_a_form_is_not_used_twice_in_a_sentence(self):
        grammar = compose_sentences.read_grammar("sentence = <a> <a>.\na = one\n    | two\n")
        chance = compose_sentences.random.Random(7)
        made = {compose_sentences.compose(grammar, chance) for _ in range(50)}
        self.assertEqual(made, {"One two.", "Two one."})


class Prompts(unittest.TestCase):
    def test_the_text_is_what_is_said(self):
        for written, spoken in {
            "[ascending tones]": "",
            "<beep decending>": "",
            "at [@]": "at",
            "...to exit the menu.": "to exit the menu.",
            "press * or #": "press star or pound",
            "IAX (note: does not say \"2\")": "I A X",
            "dial 8500, not 2": "dial eight five zero zero, not 2",
        }.items():
            self.assertEqual(prompts.spoken_text(written), spoken)

    def test_the_development_set_is_told_by_the_base_name(self):
        self.assertTrue(prompts.is_development("demo-echotest"))
        self.assertFalse(prompts.is_development("demo-instruct"))
        self.assertEqual(prompts.is_development("digits/1"), prompts.is_development("letters/1"))


class Intervals(unittest.TestCase):
    def test_tidy_covers_the_recording_without_gaps(self):
        phones = [Interval(0, 40, "x"), Interval(40, 60, "x"), Interval(62, 100, "AA"),
                  Interval(100, 100, "l"), Interval(101, 130, "t"), Interval(130, 300, "x")]
        self.assertEqual(
            [(phone.start_ms, phone.end_ms, phone.label) for phone in tidy(phones, 250.0)],
            [(0.0, 60, "x"), (60, 100, "AA"), (100, 130, "t"), (130, 250.0, "x")])
        self.assertEqual(tidy([], 10.0), [Interval(0.0, 10.0, "x")])

    def test_coloured_vowels_are_parted_unless_an_r_follows(self):
        parted = espeak_voice._part("A@", "k", 0, 100)
        self.assertEqual([(p.label, p.end_ms) for p in parted], [("AA", 60), ("r", 100)])
        self.assertEqual([p.label for p in espeak_voice._part("A@", "r-", 0, 100)], ["AA"])

    def test_a_stop_begins_with_its_closure(self):
        samples = array.array("h", [900] * 100 + [0] * 50 + [900] * 50)
        phones = [Interval(0, 150, "AA"), Interval(150, 200, "t")]
        espeak_voice._move_boundaries(phones, samples, 1000)
        self.assertEqual((phones[0].end_ms, phones[1].start_ms), (100, 100))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
