"""The Python package against the tool, with and without NumPy."""

import array
import gc
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest
import wave

import tessarin

try:
    import numpy
except ImportError:
    numpy = None

DATA = pathlib.Path(os.environ["TESSARIN_DATA"])
WAV = str(DATA / "demo" / "echo-test.wav")
TOOL = os.environ["TESSARIN_TOOL"]
TEXT = (DATA / "demo" / "echo-test.txt").read_text(encoding="utf-8")


def tool(*arguments: str) -> dict:
    run = subprocess.run([os.environ["TESSARIN_TOOL"], *arguments, "-q", "--format", "json"],
                         check=True, capture_output=True)
    return json.loads(run.stdout)


def write_wav(path: str, channels: int, rate: int, samples: array.array) -> None:
    with wave.open(path, "wb") as out:
        out.setparams((channels, 2, rate, 0, "NONE", "none"))
        out.writeframes(samples.tobytes())


class SameAsTheTool(unittest.TestCase):
    def assert_same(self, result: tessarin.Result, expected: dict) -> None:
        self.assertEqual([(p.label, p.start_ms, p.end_ms) for p in result.phonemes],
                         [(p["label"], p["start_ms"], p["end_ms"]) for p in expected["phonemes"]])
        self.assertEqual([(w.text, w.start_ms, w.end_ms) for w in result.words],
                         [(w["text"], w["start_ms"], w["end_ms"]) for w in expected["words"]])
        self.assertEqual([(e.text, e.kind, e.start_ms) for e in result.events],
                         [(e["text"], e["type"], e["start_ms"]) for e in expected["events"]])

    def assert_same_frames(self, track: tessarin.Track, expected: dict) -> None:
        self.assertEqual(len(track.frames), len(expected["frames"]))
        for frame, other in zip(track.frames, expected["frames"]):
            self.assertEqual((frame.start_ms, frame.end_ms), (other["start_ms"], other["end_ms"]))
            self.assertEqual(list(frame.weights), list(other["weights"]))
            for label, weight in other["weights"].items():
                self.assertAlmostEqual(frame.weights[label], weight, places=4)

    def test_alignment(self) -> None:
        expected = tool("align", WAV, "--text", TEXT, "--fps", "24")
        result = tessarin.align(WAV, TEXT)
        self.assertGreater(len(result.words), 20)
        self.assert_same(result, expected)
        self.assert_same_frames(result.track(fps=24), expected)

    def test_a_text_that_is_not_what_was_said(self) -> None:
        text = TEXT.replace("echo test.", "echo umbrella test.")
        text = text[:text.index("You may end")]
        expected = tool("align", WAV, "--text", text)
        result = tessarin.align(WAV, text)
        self.assertEqual([(w.text, w.offset) for w in result.unsaid],
                         [(w["text"], w["text_offset"]) for w in expected["words"]
                          if not w["said"]])
        self.assertIn("umbrella", [w.text for w in result.unsaid])
        self.assertEqual(result.match.verdict, expected["match"]["verdict"])
        self.assertEqual(result.match.verdict, "doubtful")
        self.assertAlmostEqual(result.match.score, expected["match"]["score"], places=3)
        for words, others in ((result.words, [w for w in expected["words"] if w["said"]]),
                              (result.phonemes, expected["phonemes"])):
            self.assertEqual(len(words), len(others))
            for word, other in zip(words, others):
                self.assertEqual(word.confidence is None, "confidence" not in other)
                self.assertAlmostEqual(word.confidence or 0.0, other.get("confidence", 0.0),
                                       places=3)
        self.assertIn("unscripted", [event.kind for event in result.events])
        exact = tessarin.align(WAV, text, match="exact")
        self.assertEqual((exact.match, exact.unsaid), (None, []))
        with self.assertRaises(ValueError):
            tessarin.align(WAV, text, match="sometimes")

    def test_recognition(self) -> None:
        expected = tool("recognize", WAV)
        result = tessarin.recognize(WAV)
        self.assert_same(result, expected)
        self.assert_same_frames(result.track(), expected)
        for adapt in ("on", "off"):
            expected = tool("recognize", WAV, "--adapt", adapt)
            result = tessarin.recognize(WAV, adapt=adapt)
            self.assert_same(result, expected)
            self.assertEqual(result.adaptation_gain is None, "adaptation" not in expected)
            self.assertAlmostEqual(result.adaptation_gain or 0.0,
                                   expected.get("adaptation", {}).get("gain", 0.0), places=3)
        with self.assertRaises(ValueError):
            tessarin.recognize(WAV, adapt="perhaps")

    def test_sentences(self) -> None:
        text = TEXT + "\nThe children built a boat – of “paper” – by the river. "
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "text")
            pathlib.Path(path).write_text(text, encoding="utf-8")
            for stretch in ((), (1000, 12000)):
                options = [f"--{name}={ms}" for name, ms in zip(("from", "to"), stretch)]
                expected = json.loads(subprocess.run(
                    [os.environ["TESSARIN_TOOL"], "align", WAV, "--text-file", path, "--sentences",
                     "-q", *options], check=True, capture_output=True).stdout)["sentences"]
                found = tessarin.Engine().find_sentences(
                    WAV, text, **dict(zip(("from_ms", "to_ms"), stretch)))
                self.assertEqual([(s.text, s.start_ms, s.end_ms) for s in found],
                                 [(s["text"], s.get("start_ms"), s.get("end_ms"))
                                  for s in expected])
                for sentence, other in zip(found, expected):
                    self.assertAlmostEqual(sentence.score or 0, other.get("score", 0), places=3)
                    self.assertEqual(text[sentence.offset:sentence.offset + sentence.length],
                                     sentence.text)
                self.assertGreater(sum(s.start_ms is not None for s in found), 1)
                self.assertIsNone(found[-1].start_ms)
        with self.assertRaises(tessarin.Cancelled):
            tessarin.find_sentences(WAV, text, progress=lambda done, total: True)

    def test_a_stretch(self) -> None:
        expected = tool("recognize", WAV, "--from", "1234", "--to", "3456")
        result = tessarin.recognize(WAV, from_ms=1234, to_ms=3456)
        self.assert_same(result, expected)
        self.assert_same_frames(result.track(), expected)

    def test_the_mean_of_two_channels(self) -> None:
        with wave.open(WAV) as source:
            rate = source.getframerate()
            first = array.array("h", source.readframes(source.getnframes()))
        both = array.array("h")
        for i, sample in enumerate(first):
            both.extend((sample, first[i - 1] // 2))
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "both.wav")
            write_wav(path, 2, rate, both)
            for channel, name in ((0, "mix"), (2, "2")):
                with self.subTest(channel=channel):
                    self.assert_same(tessarin.align(path, TEXT, channel=channel),
                                     tool("align", path, "--text", TEXT, "--channel", name))


class SpokenCommands(unittest.TestCase):
    def test_texts_that_are_said(self) -> None:
        said = "you are about to enter an echo test"
        commands = tessarin.Commands()
        commands.add_text("open the garage door")
        commands.add_text("enter", said)
        commands.add_phonemes("lights", "l AY t s, AO f")
        ranking = commands.rank(WAV, to_ms=2400)
        self.assertEqual(ranking[0].name, "enter")
        self.assertEqual(sorted(match.name for match in ranking),
                         ["enter", "lights", "open the garage door"])
        self.assertGreater(ranking[0].score, ranking[1].score)
        with tempfile.TemporaryDirectory() as folder:
            names = os.path.join(folder, "commands.txt")
            pathlib.Path(names).write_text(f"open the garage door\n{said}\n", encoding="utf-8")
            run = subprocess.run([TOOL, "commands", names, WAV], check=True, capture_output=True)
        row = run.stdout.decode().splitlines()[1].split("\t")
        whole = commands.rank(WAV)[0]
        self.assertEqual((whole.name, f"{whole.score:.6g}"), ("enter", row[2]))
        with self.assertRaises(tessarin.Cancelled):
            commands.rank(WAV, progress=lambda done, total: True)
        for bad in (lambda: commands.add_phonemes("no", "QQ"), lambda: commands.add_text(""),
                    lambda: commands.add_sample("no", WAV), lambda: commands.load_samples(WAV)):
            self.assertRaises(tessarin.TessarinError, bad)

    def test_samples_are_heard_live(self) -> None:
        audio = tessarin.Audio.from_file(WAV)
        commands = tessarin.Commands(rate=audio.rate)
        commands.add_sample("enter", WAV, to_ms=2400)
        commands.add_sample("rest", audio, from_ms=5000, to_ms=7000)
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "samples")
            commands.save_samples(path)
            commands = tessarin.Commands(rate=audio.rate)
            commands.load_samples(path)
        self.assertEqual(commands.rank(audio, to_ms=2400)[0],
                         tessarin.CommandMatch("enter", 0.0))
        live = list(audio.samples[:audio.rate * 24 // 10]) + [0] * audio.rate
        for start in range(0, len(live), 320):
            block = live[start:start + 320]
            if start % 640 == 0:
                pushed = commands.push([sample / 32768 for sample in block])
            else:
                pushed = commands.push(array.array("h", block))
            if pushed:
                break
        self.assertTrue(pushed)
        self.assertEqual(commands.rank_utterance()[0].name, "enter")
        self.assertEqual(commands.rank_utterance(), [])


class Facts(unittest.TestCase):
    def test_phonemes_have_symbols(self) -> None:
        self.assertEqual([tessarin.phoneme_symbol("NG", alphabet) for alphabet in tessarin.ALPHABETS],
                         ["NG", "ŋ", "NG", "N"])
        with self.assertRaisesRegex(ValueError, "QQ is not"):
            tessarin.phoneme_symbol("QQ")
        with self.assertRaisesRegex(ValueError, "no alphabet runes"):
            tessarin.phoneme_symbol("AA", "runes")

    def test_are_what_the_tool_shows(self) -> None:
        def inspect(name: str) -> str:
            return subprocess.run([TOOL, "inspect", str(DATA / name)], check=True,
                                  capture_output=True).stdout.decode()

        lexicon = tessarin.LexiconFacts.from_file(DATA / "en-us.lexicon")
        self.assertIn(f"{lexicon.entry_count} of {lexicon.word_count} words",
                      inspect("en-us.lexicon"))
        self.assertEqual((lexicon.language, lexicon.code_page), (9, 1252))
        model = tessarin.ModelFacts.from_file(DATA / "en-us.model")
        self.assertIn(f"{len(model.labels)}: {' '.join(model.labels)}\n", inspect("en-us.model"))
        self.assertEqual(model.rate_hz, 16000)
        for facts, name in ((tessarin.LexiconFacts, "en-us.model"),
                            (tessarin.ModelFacts, "en-us.lexicon")):
            with self.assertRaises(tessarin.TessarinError) as caught:
                facts.from_file(DATA / name)
            self.assertEqual(caught.exception.code, 12)

    def test_names_are_in_the_code_page_of_the_lexicon_or_in_1252(self) -> None:
        content = (DATA / "en-us.lexicon").read_bytes()
        for page, spelled in ((1252, "\u20ac"), (1251, "\u0402"), (1253, "\u20ac")):
            own = content.replace(b"English", b"\x80nglish", 1)
            own = own.replace((1252).to_bytes(4, "little"), page.to_bytes(4, "little"), 1)
            with tempfile.TemporaryDirectory() as folder:
                path = pathlib.Path(folder) / "own.lexicon"
                path.write_bytes(own)
                lexicon = tessarin.LexiconFacts.from_file(path)
                self.assertEqual((lexicon.code_page, lexicon.name[0]), (page, spelled))


    def test_a_recording_is_measured(self) -> None:
        facts = tessarin.AudioFacts.of(tessarin.Audio.from_file(WAV))
        self.assertEqual(facts.duration_ms, tessarin.Audio.from_file(WAV).duration_ms)
        self.assertTrue(-100 <= facts.noise_db < facts.level_db < facts.peak_db <= 0)
        self.assertEqual(facts.clip_count, 0)

    def test_of_words_are_known(self) -> None:
        engine = tessarin.Engine()
        self.assertEqual([engine.has_word(word) for word in ("Hello", "grobnik")], [True, False])
        engine.set_word("grobnik", "grAAbnIHk")
        self.assertTrue(engine.has_word("GROBNIK"))


class Batches(unittest.TestCase):
    def test_give_each_job_as_it_comes(self) -> None:
        expected = tessarin.align(WAV, TEXT)
        jobs = [(WAV, TEXT), "no-such.wav", {"audio": WAV, "text": TEXT, "match": "sideways"},
                {"text": TEXT}, tessarin.Audio.from_file(WAV), (WAV, TEXT)]
        items = {item.index: item for item in tessarin.batch(jobs, threads=2)}
        self.assertEqual(sorted(items), list(range(len(jobs))))
        for index in (0, 5):
            self.assertEqual(items[index].result.words, expected.words)
            self.assertGreater(items[index].facts.level_db, -60)
        self.assertIsInstance(items[1].error, tessarin.TessarinError)
        self.assertIsInstance(items[2].error, ValueError)
        self.assertIsInstance(items[3].error, KeyError)
        self.assertGreater(len(items[4].result.phonemes), 0)

    def test_take_no_more_jobs_than_they_need(self) -> None:
        taken = []

        def endless():
            while True:
                taken.append(len(taken))
                yield "no-such.wav"

        items = tessarin.batch(endless(), threads=2)
        for _ in range(3):
            next(items)
        items.close()
        self.assertLess(len(taken), 20)


class Texts(unittest.TestCase):
    def test_places_are_characters_of_the_text(self) -> None:
        text = "Zoë — “is” 😀 in"
        tokens = [token for token in tessarin.transcribe(text) if token.kind == "word"]
        self.assertEqual([token.text for token in tokens], ["Zoë", "is", "in"])
        for token in tokens:
            self.assertEqual(text[token.offset:token.offset + token.length], token.text)
        self.assertEqual(tokens[0].phonemes, (("zOWIY",),))

    def test_scripts_are_read_as_people_write_them(self):
        script = "JOHN (low): It is 1905 — NOOO!\nMARY: Ohé, Dr. Who."
        tokens = tessarin.transcribe(script)
        self.assertEqual([(token.kind, token.text) for token in tokens
                          if token.kind != "punctuation"],
                         [("speaker", "JOHN (low):"), ("word", "It"), ("word", "is"),
                          ("word", "1905"), ("word", "NOOO"), ("speaker", "MARY:"),
                          ("word", "Ohé"), ("word", "Dr."), ("word", "Who")])
        for token in tokens:
            self.assertEqual(script[token.offset:token.offset + token.length], token.text)
        said = [token.text for token in tessarin.transcribe(script, speaker="Mary")
                if token.kind == "word"]
        self.assertEqual(said, ["Ohé", "Dr.", "Who"])
        self.assertEqual(tessarin.transcribe("1905", literal=True)[0].phonemes,
                         tessarin.transcribe("19 hundred 5", literal=True)[0].phonemes
                         + (("hAHndrEHd",), ("fAYv",)))
        table = "[units]\nlg\tleague\tleagues\n"
        self.assertEqual(len(tessarin.transcribe("20 lg", script_table=table)), 1)
        with self.assertRaisesRegex(tessarin.TessarinError, "line 2: an entry"):
            tessarin.transcribe("20 lg", script_table="[units]\nlg\n")
        self.assertEqual(tessarin.transcribe("0", one_reading=True)[0].phonemes,
                         (("zIHrOW", "zIYrOW"),))
        self.assertIn("OW", tessarin.transcribe("0")[0].phonemes[0])
        with self.assertRaises(ValueError):
            tessarin.transcribe("x", script_format="odt")

    def test_words_of_ones_own(self) -> None:
        engine = tessarin.Engine(words={"Siobhán": "SHIHvAOn", "tomato": "tAHmAAtOW|tAHmEYtOW"})
        for text in ("Siobhan", "Siobhán", "SIOBHAN"):
            self.assertEqual(engine.transcribe(text)[0].phonemes, (("SHIHvAOn",),))
        self.assertEqual(engine.transcribe("tomato")[0].phonemes,
                         (("tAHmAAtOW", "tAHmEYtOW"),))
        engine.set_word("tomato", "tAHmAAtOW")
        self.assertEqual(engine.transcribe("tomato")[0].phonemes, (("tAHmAAtOW",),))
        self.assertEqual(engine.transcribe("potato"), tessarin.transcribe("potato"))
        for bad in (("", "AH"), ("a=b", "AH"), ("word", ""), ("word", "AH|"), ("word", "Q")):
            with self.assertRaises(tessarin.TessarinError):
                engine.set_word(*bad)

    def test_a_zero_is_refused(self) -> None:
        with self.assertRaises(ValueError):
            tessarin.transcribe("a\0b")


class Documents(unittest.TestCase):
    def test_the_example_of_the_readme_runs(self) -> None:
        readme = (DATA.parent / "README.md").read_text(encoding="utf-8")
        program = readme.split("```python\n", 1)[1].split("```", 1)[0]
        self.assertIn('"speech.wav", "What is said in it."', program)
        program = program.replace('"speech.wav", "What is said in it."', f"{WAV!r}, {TEXT!r}")
        names: dict = {"print": lambda *columns: self.assertEqual(len(columns), 3)}
        exec(program, names)  # pylint: disable=exec-used
        self.assertGreater(len(names["track"].frames), 100)


class LongCalls(unittest.TestCase):
    def test_progress_is_told_and_cancels(self) -> None:
        seen = []
        tessarin.align(WAV, TEXT, progress=lambda done, total: seen.append((done, total)))
        self.assertGreater(len(seen), 10)
        self.assertTrue(all(done <= total for done, total in seen))
        seen.clear()

        def stop(done: int, total: int) -> bool:
            seen.append(done)
            return len(seen) == 3

        with self.assertRaises(tessarin.Cancelled) as caught:
            tessarin.align(WAV, TEXT, progress=stop)
        self.assertEqual((len(seen), caught.exception.code), (3, 5))

    def test_what_a_progress_function_raises_comes_through(self) -> None:
        def fail(done: int, total: int) -> None:
            raise KeyError("mine")

        with self.assertRaisesRegex(KeyError, "mine"):
            tessarin.recognize(WAV, progress=fail)

    def test_the_interpreter_is_free_while_a_search_runs(self) -> None:
        with wave.open(WAV) as source:
            rate = source.getframerate()
            samples = array.array("h", source.readframes(source.getnframes()))
        audio = tessarin.Audio.from_samples(samples * 20, rate)
        worker = threading.Thread(target=tessarin.align, args=(audio, " ".join([TEXT] * 20)))
        steps = 0
        worker.start()
        while worker.is_alive():
            steps += 1
        # A locked interpreter would let this thread run only before and after.
        self.assertGreater(steps, 1000)

    def test_threads_find_what_one_finds(self) -> None:
        alone = tessarin.align(WAV, TEXT)
        results = list(tessarin.align_many([(WAV, TEXT)] * 8, threads=4))
        self.assertEqual(len(results), 8)
        for result in results:
            self.assertEqual(result.phonemes, alone.phonemes)
            self.assertEqual(result.words, alone.words)

    def test_a_recording_that_fails_stays_at_its_place(self) -> None:
        jobs = [(WAV, TEXT), ("no-such.wav", TEXT), (WAV, TEXT)]
        results = list(tessarin.align_many(jobs, return_errors=True))
        self.assertEqual([type(result) for result in results],
                         [tessarin.Result, tessarin.TessarinError, tessarin.Result])
        with self.assertRaises(tessarin.TessarinError):
            list(tessarin.align_many(jobs))

    def test_a_stretch_that_is_none_is_refused(self) -> None:
        for bad in ({"from_ms": 2000, "to_ms": 1000}, {"from_ms": 5, "to_ms": 0}):
            with self.assertRaises(ValueError):
                tessarin.recognize(WAV, **bad)
        with self.assertRaises(tessarin.TessarinError):
            tessarin.recognize(WAV, from_ms=10_000_000)


class Mouth(unittest.TestCase):
    """The mouth of a recording in shapes that engines and 2-D tools show."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.result = tessarin.align(WAV, TEXT)

    def test_makes_the_visemes_that_the_tool_writes(self) -> None:
        track = self.result.track()
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "line.visemes.csv")
            subprocess.run([TOOL, "align", WAV, "--text", TEXT, "-q", "-o", path], check=True)
            header, *rows = pathlib.Path(path).read_text().splitlines()
        visemes = tessarin.Shapes("visemes")
        self.assertEqual(header.split(",")[1:], visemes.names)
        mixed = [[f"{weight:.4f}" for weight in row] for row in track.shapes(visemes)]
        self.assertEqual([row.split(",")[1:] for row in rows], mixed)

    def test_shows_one_shape_at_a_time(self) -> None:
        track = self.result.track()
        mouths = tessarin.Shapes("switches")
        switches = track.switches(mouths, hold_ms=80)
        self.assertEqual((switches[0].start_ms, mouths.rest, mouths.closed),
                         (0, "X", frozenset("A")))
        for before, after in zip(switches, switches[1:]):
            self.assertNotEqual(before.shape, after.shape)
            self.assertTrue(after.start_ms - before.start_ms >= 80 or after.shape == "A")

    def test_keys_stand_where_the_curves_bend(self) -> None:
        frames = self.result.track().frames
        visemes = tessarin.Shapes("visemes")
        curves = visemes.keys(frames, tolerance=0.02)
        times = [frame.start_ms for frame in frames]
        for name, column in zip(visemes.names, zip(*visemes.mix(frames))):
            self.assertEqual(name in curves, any(column))
            keys = curves.get(name, [(0, 0.0), (times[-1], 0.0)])
            for (start, a), (end, b) in zip(keys, keys[1:]):
                for ms, weight in zip(times, column):
                    if start <= ms <= end:
                        line = a + (b - a) * (ms - start) / (end - start)
                        self.assertAlmostEqual(line, weight, delta=0.0201)
        self.assertLess(sum(map(len, curves.values())), len(curves) * len(frames) / 2)
        self.assertEqual(tessarin.reduce_keys([0, 5, 9], [[0, 1], [0, 0], [0, 1]]), [0, 1, 2])
        with self.assertRaises(tessarin.TessarinError):
            tessarin.reduce_keys([0, 0], [1, 1])
        with self.assertRaisesRegex(ValueError, "as many weights as times"):
            tessarin.reduce_keys([0, 1], [1])

    def test_gains_and_common_keys_reach_the_curves(self) -> None:
        plain = self.result.track(curves=True)
        louder = self.result.track(gains={"EYIHEH": 1.0}, common_keys=True)
        peak = lambda track: max(weight for curve in track.curves if curve.label in ("EY", "EH")
                                 for _, weight in curve.keys)
        self.assertGreater(peak(louder), peak(plain))
        self.assertGreater(len(louder.curves), len(plain.curves))  # each shows at all keys
        self.assertEqual(self.result.track().curves, [])

    def test_leaves_rest_as_far_as_it_is_asked_to(self) -> None:
        def moving(**options: object) -> float:
            return sum(1 - frame.weights.get("x", 0) for frame in self.result.track(**options).frames)
        self.assertLess(moving(strength=0.5), moving() * 0.7)
        self.assertLess(moving(strength=0.5), moving(strength={"vowels": 0.5}))
        self.assertEqual(moving(strength=0.5, plain=True), moving(plain=True))
        with self.assertRaisesRegex(ValueError, "jaw; there are vowels"):
            self.result.track(strength={"jaw": 1})
        with self.assertRaises(tessarin.TessarinError):
            self.result.track(strength=5)

    def test_moves_by_timings_from_elsewhere(self) -> None:
        mouth = tessarin.Result.from_phonemes(self.result.phonemes, self.result.loudness).track()
        self.assertEqual(mouth, self.result.track())
        with self.assertRaises(tessarin.TessarinError):
            tessarin.Result.from_phonemes([tessarin.Phoneme("QQ", 0, 100, 50.0)])

    def test_a_map_of_ones_own_counts_and_a_wrong_one_names_its_line(self) -> None:
        own = tessarin.Shapes.from_text("shapes shut open\nclosed shut\nrest shut\nAA open 0.5\n")
        frame = tessarin.Frame(0, 33, {"AA": 0.5, "t": 0.5})
        self.assertEqual([list(row) for row in own.mix([frame])], [[0.0, 0.25]])
        with self.assertRaisesRegex(tessarin.TessarinError, "line 2: there is no shape wide"):
            tessarin.Shapes.from_text("shapes shut\nAA wide\n")
        with self.assertRaises(tessarin.TessarinError):
            tessarin.Shapes("no such set")


class LiveAudio(unittest.TestCase):
    def test_it_is_heard_as_the_tool_hears_it(self) -> None:
        audio = tessarin.Audio.from_file(WAV)
        samples = audio.samples[:5 * audio.rate]
        # All is weighed to the end, so that nothing depends on when it is taken.
        run = subprocess.run([os.environ["TESSARIN_TOOL"], "live", "--delay", "10000"], check=True,
                             input=samples.tobytes(), capture_output=True)
        expected = [json.loads(line) for line in run.stdout.splitlines()]
        live = tessarin.Live(rate=audio.rate, delay_ms=10000)
        stretches = []
        for first in range(0, len(samples), 1600):
            live.push(samples[first:first + 1600])
            stretches.append(live.take())
        stretches.append(live.finish())
        self.assertEqual([(p.label, p.start_ms, p.end_ms) for s in stretches for p in s.phonemes],
                         [(p["label"], p["start_ms"], p["end_ms"])
                          for line in expected for p in line["phonemes"]])
        frames = [frame for s in stretches for frame in s.frames]
        others = [frame for line in expected for frame in line["frames"]]
        self.assertEqual([(f.start_ms, list(f.weights)) for f in frames],
                         [(f["start_ms"], list(f["weights"])) for f in others])
        self.assertEqual(stretches[-1].end_ms, 5000)
        with self.assertRaises(tessarin.TessarinError) as caught:
            live.push(samples)
        self.assertEqual(caught.exception.code, 6)

    def test_a_callback_feeds_weights(self) -> None:
        samples = tessarin.Audio.from_file(WAV).samples[:16 * 2500]
        live = tessarin.Live(delay_ms=10000)
        self.assertTrue(live.push_from_callback(samples[:16 * 1900]))
        self.assertFalse(live.push_from_callback(samples[16 * 1900:]))
        self.assertEqual(live.lost_ms, 500)
        shapes = tessarin.Shapes("visemes")
        self.assertEqual(tuple(shapes.names), tessarin.VISEMES)
        frames = live.finish().frames
        for frame in frames:
            middle = (frame.start_ms + frame.end_ms) // 2
            given = live.weights(middle)
            self.assertEqual(given.time_ms, middle)
            for weight, expected in zip(given.weights.values(), shapes.mix([frame])[0]):
                self.assertAlmostEqual(weight, expected, places=5)
        newest = (frames[-1].start_ms + frames[-1].end_ms) // 2
        self.assertEqual(live.weights().time_ms, newest)

    def test_the_gate_silences_what_is_quiet(self) -> None:
        audio = tessarin.Audio.from_file(WAV)
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "gated.wav")
            subprocess.run([os.environ["TESSARIN_TOOL"], "gate", WAV, "-o", path, "--gate=-45"],
                           check=True, capture_output=True)
            self.assertEqual(list(audio.gated(-45, ramp_ms=10).samples),
                             list(tessarin.Audio.from_file(path).samples))


class Failures(unittest.TestCase):
    def test_files_that_do_not_read(self) -> None:
        with self.assertRaisesRegex(tessarin.TessarinError, "no-such.wav") as caught:
            tessarin.align("no-such.wav", TEXT)
        self.assertEqual(caught.exception.code, 10)
        with self.assertRaises(tessarin.TessarinError) as caught:
            tessarin.Engine(model=WAV)
        self.assertEqual(caught.exception.code, 12)
        with self.assertRaises(tessarin.TessarinError):
            tessarin.Audio.from_file(WAV, channel=2)

    def test_reads_what_studios_keep_or_names_what_to_install(self) -> None:
        original = tessarin.Audio.from_file(WAV)
        try:
            import soundfile
        except ImportError:
            with tempfile.NamedTemporaryFile(suffix=".flac") as flac:
                flac.write(b"fLaC" + bytes(100))
                flac.flush()
                with self.assertRaisesRegex(tessarin.TessarinError, "python3-soundfile"):
                    tessarin.Audio.from_file(flac.name)
            return
        samples = original.samples / 32768.0
        both = numpy.stack([samples * 0.0, samples], axis=1)
        high = numpy.interp(numpy.arange(6 * len(samples)) / 6.0, numpy.arange(len(samples)),
                            samples)
        recordings = {  # each as it is written, and the largest noise beside its level
            "film.wav": (both, original.rate, "PCM_24", 2, 0.001),
            "float.wav": (samples, original.rate, "FLOAT", 1, 0.001),
            "lossless.flac": (both, original.rate, "PCM_16", 2, 0.001),
            "small.ogg": (samples, original.rate, "VORBIS", 1, 0.3),
            "studio.wav": (high, 6 * original.rate, "PCM_24", 1, 0.1),
        }
        with tempfile.TemporaryDirectory() as folder:
            for name, (content, rate, subtype, channel, tolerance) in recordings.items():
                with self.subTest(name):
                    path = os.path.join(folder, name)
                    soundfile.write(path, content, rate, subtype=subtype)
                    read = tessarin.Audio.from_file(path, channel)
                    step = read.rate // original.rate
                    self.assertLessEqual(abs(read.duration_ms - original.duration_ms), 1)
                    noise = (read.samples[::step][:len(samples)].astype(float)
                             - original.samples)
                    self.assertLess(noise.std(), tolerance * original.samples.std())

    def test_a_lost_text_has_what_was_found(self) -> None:
        foreign = "completely different words that nobody said here " * 300
        with self.assertRaises(tessarin.RecognitionFailed) as caught:
            tessarin.align(WAV, foreign)
        self.assertEqual(caught.exception.code, 8)
        self.assertIsInstance(caught.exception.result, tessarin.Result)

    def test_tracks_out_of_range(self) -> None:
        result = tessarin.align(WAV, TEXT)
        for bad in ({"fps": 2000}, {"max_weights": 11}, {"slope": -1, "smooth": True}):
            with self.assertRaises(tessarin.TessarinError):
                result.track(**bad)
        two = result.track(max_weights=2)
        self.assertEqual(max(len(frame.weights) for frame in two.frames), 2)

    def test_objects_outlive_what_they_came_from(self) -> None:
        engine = tessarin.Engine()
        result = engine.align(WAV, TEXT)
        del engine
        gc.collect()
        self.assertEqual(result.words[0].text, TEXT.split()[0])
        self.assertGreater(len(result.track().frames), 0)


@unittest.skipIf(numpy is None, "NumPy is not installed")
class Arrays(unittest.TestCase):
    def test_weights_are_a_matrix(self) -> None:
        track = tessarin.align(WAV, TEXT).track()
        self.assertEqual(track.weights.shape, (len(track.frames), len(track.labels)))
        numpy.testing.assert_allclose(track.weights.sum(axis=1), 1, atol=1e-4)
        self.assertEqual(track.times_ms.shape, (len(track.frames), 2))

    def test_samples_go_in_and_come_out(self) -> None:
        audio = tessarin.Audio.from_file(WAV)
        whole = tessarin.align(audio, TEXT)
        for samples in (audio.samples, audio.samples / 32768.0, audio.samples[::-1][::-1]):
            again = tessarin.Audio.from_samples(samples, audio.rate)
            numpy.testing.assert_array_equal(again.samples, audio.samples)
            self.assertEqual(tessarin.align(again, TEXT).phonemes, whole.phonemes)
        with self.assertRaises(TypeError):
            tessarin.Audio.from_samples(audio.samples.astype(numpy.int32), audio.rate)
        with self.assertRaises(ValueError):
            tessarin.Audio.from_samples(numpy.zeros((2, 2)), audio.rate)

    def test_without_numpy_there_are_lists(self) -> None:
        program = ("import sys; sys.modules['numpy'] = None\n"
                   "import tessarin\n"
                   f"result = tessarin.align({WAV!r}, {TEXT!r})\n"
                   "track = result.track()\n"
                   "assert type(track.weights) is list and len(track.weights) > 100\n"
                   "audio = tessarin.Audio.from_file(" + repr(WAV) + ")\n"
                   "again = tessarin.Audio.from_samples(audio.samples, audio.rate)\n"
                   "assert again.samples == audio.samples\n"
                   f"assert tessarin.align(again, {TEXT!r}).words == result.words\n")
        subprocess.run([sys.executable, "-c", program], check=True)


if __name__ == "__main__":
    unittest.main()
