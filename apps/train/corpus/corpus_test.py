#!/usr/bin/env python3
"""Tests of the corpus scripts and of the data they made. Needs no synthesiser.

usage: corpus_test.py TOOL
"""

import array
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import compose_sentences
import dialogue
import drascula_dialogue
import espeak_voice
import prompts
import rnc
import sky_dialogue
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


class RncWriter:
    """The bytes of a packed file: bits in words that stand where their first bit was wanted."""

    def __init__(self, size):
        self.out = bytearray(rnc.MAGIC + size.to_bytes(4, "big") + bytes(10))
        self.free = 0
        self.bits(2, 0)

    def bits(self, count, value):
        for bit in range(count):
            if not self.free:
                self.word, self.free = len(self.out), 16
                self.out += b"\0\0"
            place = 16 - self.free
            self.out[self.word + place // 8] |= (value >> bit & 1) << place % 8
            self.free -= 1

    def code(self, lengths):
        self.bits(5, len(lengths))
        for length in lengths:
            self.bits(4, length)


def packed_sample():
    """`abcde`, then three of them and what that repeats: `cdecdecd`, then `z`."""
    file = RncWriter(14)
    file.code([0, 2, 0, 1])  # 10: number 1, 0: number 4 and two bits
    file.code([0, 0, 1])     # 0: number 2 and one bit
    file.code([0, 0, 0, 1])  # 0: number 4 and two bits
    file.bits(16, 2)
    file.bits(1, 0)
    file.bits(2, 1)          # five literals
    file.out += b"abcde"
    file.bits(1, 0)
    file.bits(1, 0)          # from 3 before
    file.bits(1, 0)
    file.bits(2, 2)          # 8 of them
    file.bits(2, 1)          # one literal: 10, highest bit first
    file.out += b"z"
    return bytes(file.out)


class Rnc(unittest.TestCase):
    def test_literals_lie_between_the_words_and_repeats_may_overlap(self):
        self.assertEqual(rnc.unpack(packed_sample()), b"abcdecdecdecdz")

    def test_damage_is_refused(self):
        whole = packed_sample()
        for size in range(len(whole)):
            with self.assertRaises(rnc.Damaged, msg=size):
                rnc.unpack(whole[:size])
        for change in ({4: 0x7F}, {7: 13}, {18: 0x7C}):
            damaged = bytearray(whole)
            for place, value in change.items():
                damaged[place] = value
            with self.assertRaises(rnc.Damaged, msg=change):
                rnc.unpack(bytes(damaged))
        before_the_beginning = whole.replace(b"abcde", b"")
        with self.assertRaises(rnc.Damaged):
            rnc.unpack(before_the_beginning)


class Dialogue(unittest.TestCase):
    TREE = sky_dialogue.Tree(["1\t2\t0", "0\t0\t97", "3\t4\t0", "0\t0\t98", "0\t0\t0"])

    def test_messages_are_found_by_their_lengths(self):
        # a is 0, b is 10, the end is 11: `a` 0110, and 33 times `ab` 010110 with two bits free
        bits = "0110" + "01011000" * 33
        lengths = [2] + [4] * 31 + [4, 4]
        bits = bits.ljust((len(bits) + 7) // 8 * 8, "0")
        data = bytes([6, 0, 40, 0, 126, 0, *lengths])
        data += bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8))
        self.assertEqual(sky_dialogue.read_messages(data, self.TREE), ["a"] + ["ab"] * 33)
        long = bytes([4, 0, 6, 0, 0x81, 2, 0b01100000, 0, 0b10110000])
        self.assertEqual(sky_dialogue.read_messages(long, self.TREE), ["a", "b"])
        for size in range(len(data) - 1):
            with self.assertRaises(rnc.Damaged, msg=size):
                sky_dialogue.read_messages(data[:size], self.TREE)

    def test_a_tree_that_leads_back_is_refused(self):
        for line in ("0\t1\t0", "1\t7\t0", "1\t0\t0"):
            with self.assertRaises(rnc.Damaged, msg=line):
                sky_dialogue.Tree([line, "0\t0\t0"])
        self.assertEqual(len(sky_dialogue.english_tree().nodes), 245)

    def test_an_archive_is_read_by_its_index(self):
        packed = packed_sample()
        stored = bytes(sky_dialogue.HEADER_BYTES) + b"stored"
        first = b"\x80" + bytes(21) + packed
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "sky.dsk").write_bytes(first.ljust(112, b"?") + stored)

            def write(entries, count=None):
                (folder / "sky.dnr").write_bytes(
                    (count or len(entries)).to_bytes(4, "little") + b"".join(
                        number.to_bytes(2, "little") + offset.to_bytes(3, "little")
                        + size.to_bytes(3, "little") for number, offset, size in entries))
                return sky_dialogue.Archive(folder)

            archive = write([(50005, 0, len(first)), (50006, 1 << 23 | 7, len(stored) | 1 << 23)])
            self.assertEqual(archive.read(50005), b"abcdecdecdecdz")
            self.assertEqual(archive.read(50006), b"stored")
            with self.assertRaises(rnc.Damaged):
                write([(50005, 100, 1000)]).read(50005)
            with self.assertRaises(rnc.Damaged):
                write([(50005, 0, len(first))], count=2)

    def test_texts_of_voices_are_found_by_their_distances(self):
        block = b"\0\0\0\x04\0\0\0\x06HELLO\0BYE\0"
        self.assertEqual(drascula_dialogue.read_block(block, 3), ["", "HELLO", "BYE"])
        table = b"\0\3" + (len(block).to_bytes(2, "big") + block) * drascula_dialogue.NUM_LANGUAGES
        data = bytes(drascula_dialogue.FIRST_TABLE) + table * len(drascula_dialogue.VOICES)
        tables = drascula_dialogue.read_tables(data)
        self.assertEqual(tables["VB"], ["", "HELLO", "BYE"])
        for size in range(drascula_dialogue.FIRST_TABLE, len(data), 7):
            with self.assertRaises(rnc.Damaged, msg=size):
                drascula_dialogue.read_tables(data[:size])

    def test_text_in_ordinary_case(self):
        for written, plain in {
            "Who's GALLAGHER?": "Who's gallagher?",
            "WELL, I DON'T. PLAY A SONG": "Well, I don't. Play a song",
            "...FOR  HIM.": "...For him.",
        }.items():
            self.assertEqual(dialogue.plain_text(written), plain)

    def test_lines_that_do_not_fit_are_left_out(self):
        def said(seconds):
            return b"\x80" * 9000 + b"\xff\0" * int(seconds * 500) + b"\x82" * 9000

        text = "Twenty letters are in here"
        self.assertTrue(dialogue.fits(text, said(2), 1000))
        for seconds in (0, 0.3, 0.8, 6):
            self.assertFalse(dialogue.fits(text, said(seconds), 1000), seconds)
        self.assertEqual(dialogue.to_16_bits(b"\0\x80\xff"), b"\x00\x80\x00\x00\x00\x7f")


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
