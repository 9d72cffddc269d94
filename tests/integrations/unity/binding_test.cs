// binding_test.exe DATA FOLDER: FOLDER has what the tool wrote of the demo recording.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.IO;
using System.Reflection;
using System.Runtime.InteropServices;
using Tessarin;
using Tessarin.Editor;
using UnityEditor.AssetImporters;
using UnityEngine;

internal static unsafe class BindingTest
{
    private static string data, folder;
    private static int checks, failures;

    private static void Check(bool holds, string what)
    {
        ++checks;
        if (holds) return;
        ++failures;
        if (failures < 30) Console.WriteLine("FAILED: " + what);
    }

    private static void CheckNear(double found, double expected, double slack, string what)
    {
        Check(Math.Abs(found - expected) <= slack, what + ": " + found + ", not " + expected);
    }

    private static void CheckThrows<T>(Action action, string part) where T : Exception
    {
        try
        {
            action();
            Check(false, "nothing was thrown; expected " + part);
        }
        catch (T error)
        {
            Check(error.Message.Contains(part), error.Message + " lacks " + part);
        }
    }

    private static string At(string name) { return Path.Combine(folder, name); }
    private static Dictionary<string, object> Load(string name)
    {
        return (Dictionary<string, object>)Json.Parse(File.ReadAllText(At(name)));
    }
    private static List<object> List(object of, string name)
    {
        return (List<object>)((Dictionary<string, object>)of)[name];
    }
    private static double Number(object of, string name) { return (double)((Dictionary<string, object>)of)[name]; }
    private static string Text(object of, string name) { return (string)((Dictionary<string, object>)of)[name]; }

    /// <summary>The rows of one of the tool's tables, without the time.</summary>
    private static List<double[]> Table(string name)
    {
        var rows = new List<double[]>();
        foreach (string line in File.ReadAllLines(At(name)))
        {
            if (char.IsDigit(line[0]))
                rows.Add(Array.ConvertAll(line.Substring(line.IndexOf(',') + 1).Split(','),
                                          each => double.Parse(each, CultureInfo.InvariantCulture)));
        }
        return rows;
    }

    private static void EveryFunctionIsInTheLibrary()
    {
        Type native = typeof(Engine).Assembly.GetType("Tessarin.Native");
        int count = 0;
        foreach (MethodInfo method in native.GetMethods(BindingFlags.Static | BindingFlags.Public))
        {
            if (!method.Name.StartsWith("tessarin_")) continue;
            Marshal.Prelink(method);
            ++count;
        }
        Check(count > 85, "only " + count + " functions");
        Check(Engine.Version.Contains("."), "version " + Engine.Version);
    }

    private static void CheckFrames(RawFrame[] frames, List<object> expected)
    {
        Check(frames.Length == expected.Count, frames.Length + " frames, not " + expected.Count);
        for (int i = 0; i < frames.Length && i < expected.Count; ++i)
        {
            var weights = (Dictionary<string, object>)((Dictionary<string, object>)expected[i])["weights"];
            Check(frames[i].StartMs == Number(expected[i], "start_ms") && frames[i].EndMs == Number(expected[i], "end_ms"),
                  "times of frame " + i);
            Check(frames[i].Count == weights.Count, "weights of frame " + i);
            for (int j = 0; j < frames[i].Count; ++j)
            {
                object weight;
                string label = Frames.GetLabel(ref frames[i], j);
                Check(weights.TryGetValue(label, out weight), label + " in frame " + i);
                CheckNear(Frames.GetWeight(ref frames[i], j), weight == null ? -1 : (double)weight, 6e-5, "frame " + i);
            }
        }
    }

    private static void CheckSpans(Span[] spans, List<object> expected)
    {
        Check(spans.Length == expected.Count, spans.Length + " spans, not " + expected.Count);
        for (int i = 0; i < spans.Length && i < expected.Count; ++i)
        {
            Check(spans[i].Text == Text(expected[i], "text"), spans[i].Text);
            Check(spans[i].TextOffset == Number(expected[i], "text_offset"), "place of " + spans[i].Text);
            if (!((Dictionary<string, object>)expected[i]).ContainsKey("start_ms")) continue;
            Check(spans[i].StartMs == Number(expected[i], "start_ms") && spans[i].EndMs == Number(expected[i], "end_ms"),
                  "times of " + spans[i].Text);
        }
    }

    private static void AlignmentsAreThoseOfTheTool(Engine engine, Recording recording)
    {
        Dictionary<string, object> expected = Load("demo.json");
        uint calls = 0;
        var options = new SearchOptions { Progress = (done, total) => { ++calls; return false; } };
        using (Result result = engine.Align(recording, File.ReadAllText(At("demo.txt")), options))
        {
            Check(result.Code == 0 && calls > 0, "code " + result.Code + " after " + calls + " reports");
            Phoneme[] phonemes = result.GetPhonemes();
            List<object> listed = List(expected, "phonemes");
            Check(phonemes.Length == listed.Count, phonemes.Length + " phonemes, not " + listed.Count);
            for (int i = 0; i < phonemes.Length; ++i)
            {
                Check(phonemes[i].Label == Text(listed[i], "label") && phonemes[i].EndMs == Number(listed[i], "end_ms"),
                      "phoneme " + i);
                CheckNear(phonemes[i].Score, Number(listed[i], "score"), 1e-3, "score " + i);
                if (phonemes[i].Label != "x")
                    CheckNear(phonemes[i].Confidence, Number(listed[i], "confidence"), 6e-5, "confidence " + i);
            }
            CheckSpans(result.GetWords(), List(expected, "words"));
            CheckNear(result.GetWords()[0].Confidence, Number(List(expected, "words")[0], "confidence"), 6e-5, "word");
            CheckSpans(result.GetEvents(), List(expected, "events"));
            Check(result.GetUnsaidWords().Length == 0, "unsaid words");
            CheckNear(result.GetMatch().Value.Score, Number(expected["match"], "score"), 6e-5, "match");
            Check(result.GetMatch().Value.Verdict == (int)Verdict.Good, "verdict");
            float[] loudness = result.GetLoudness();
            Check(loudness.Length == List(expected["loudness"], "db").Count, "loudness");
            using (Track track = result.MakeTrack(24, 1, true))
            {
                CheckFrames(track.GetFrames(), List(expected, "frames"));
                CheckSwitches(track.GetFrames());
                CheckCurves(track.GetCurves(), List(expected, "curves"));
                RawFrame found = track.Quantize(900, 1100, 3);
                CheckFrames(new[] { found }, List(expected, "stretches"));
            }
            using (Result again = Result.FromPhonemes(phonemes, loudness))
            using (Track track = again.MakeTrack(24))
            {
                CheckFrames(track.GetFrames(), List(expected, "frames"));
            }
        }
    }

    private static void CheckCurves(Curve[] curves, List<object> expected)
    {
        Check(curves.Length == expected.Count, curves.Length + " curves, not " + expected.Count);
        for (int i = 0; i < curves.Length; ++i)
        {
            List<object> keys = List(expected[i], "keys");
            Check(curves[i].Label == Text(expected[i], "label") && curves[i].Keys.Length == keys.Count, "curve " + i);
            for (int j = 0; j < curves[i].Keys.Length; ++j)
                CheckNear(curves[i].Keys[j].Weight, (double)((List<object>)keys[j])[1], 6e-5, "key of curve " + i);
        }
    }

    private static void RecognitionIsThatOfTheTool(Recording recording)
    {
        using (Engine engine = Engine.ForHearing(data))
        {
            using (Result result = engine.Recognize(recording))
            {
                List<object> listed = List(Load("heard.json"), "phonemes");
                Phoneme[] phonemes = result.GetPhonemes();
                Check(phonemes.Length == listed.Count, phonemes.Length + " heard, not " + listed.Count);
                for (int i = 0; i < phonemes.Length && i < listed.Count; ++i)
                    Check(phonemes[i].Label == Text(listed[i], "label"), "heard " + i);
            }
        }
    }

    private static void ShapesAreThoseOfTheTool()
    {
        RawFrame[] frames = ResultReader.ReadFrames(File.ReadAllText(At("demo.json")), "demo.json");
        foreach (string set in new[] { "visemes", "arkit", "vrm" })
        {
            using (var shapes = new Shapes(set))
            {
                List<double[]> table = Table("demo." + set + ".csv");
                var weights = new double[frames.Length * shapes.Names.Length];
                shapes.Mix(frames, frames.Length, weights);
                Check(table.Count == frames.Length, "rows of " + set);
                for (int i = 0; i < weights.Length; ++i)
                    CheckNear(weights[i], table[i / shapes.Names.Length][i % shapes.Names.Length], 2e-4, set + " " + i);
                CheckThrows<ArgumentException>(() => shapes.Mix(frames, frames.Length, new double[3]), "room");
            }
        }
        CheckThrows<TessarinException>(() => Shapes.FromText("set a\nshapes B\nAA C"), "line 3");
        using (Shapes own = Shapes.FromText("set own\nshapes OPEN\nAA OPEN 0.5\n")) Check(own.Set == "own", own.Set);
    }

    private static void CheckSwitches(RawFrame[] frames)
    {
        using (var shapes = new Shapes("switches"))
        {
            string[] lines = File.ReadAllLines(At("demo.switches.tsv"));
            RawSwitch[] switches = shapes.MakeSwitches(frames);
            Check(switches.Length > 50 && lines.Length >= switches.Length, switches.Length + " switches");
            for (int i = 0; i < switches.Length; ++i)
                Check(lines[i].EndsWith("\t" + shapes.Names[switches[i].Shape]), "switch " + i + ": " + lines[i]);
            Check(shapes.AreClosed[0] && shapes.Names[shapes.Rest] == "X", "closed and rest");
        }
    }

    private static void LiveAudioMakesNoGarbage(Recording recording)
    {
        short[] samples = recording.GetSamples();
        Check(samples.Length > 100000 && recording.RateHz == 16000, "samples");
        float[] block = new float[160];
        RawLiveStretch stretch;
        long frames = 0, heardMs = 0;
        var heard = new byte[30000 / 10]; // the first letter of what is heard, for each 10 ms
        using (Engine engine = Engine.ForHearing(data))
        using (var live = new Live(engine, recording.RateHz))
        {
            int before = GC.CollectionCount(0);
            for (int at = 0; at + block.Length <= samples.Length; at += block.Length)
            {
                for (int i = 0; i < block.Length; ++i) block[i] = samples[at + i] / 32768f;
                live.Push(block, 0, block.Length);
                // Far more calls than a game makes, so that one small object for each would be collected.
                for (int i = 0; i < 200; ++i)
                {
                    live.Take(out stretch);
                    Check(stretch.FrameCount == 0 || stretch.Frames[0].StartMs >= 0, "");
                    frames += stretch.FrameCount;
                    Note(ref stretch, heard, ref heardMs);
                }
            }
            Check(GC.CollectionCount(0) == before, "garbage was collected while audio was followed");
            live.Finish(out stretch);
            frames += stretch.FrameCount;
            Note(ref stretch, heard, ref heardMs);
            CheckThrows<ArgumentOutOfRangeException>(() => live.Push(block, 100, 100), "count");
        }
        long expectedFrames = 0;
        int same = 0;
        foreach (string line in File.ReadAllLines(At("live.jsonl")))
        {
            expectedFrames += List(Json.Parse(line), "frames").Count;
            foreach (object phoneme in List(Json.Parse(line), "phonemes"))
                for (int i = (int)Number(phoneme, "start_ms") / 10; i < (int)Number(phoneme, "end_ms") / 10; ++i)
                    same += heard[i] == Text(phoneme, "label")[0] ? 1 : 0;
        }
        Check(frames == expectedFrames, frames + " live frames, not " + expectedFrames);
        CheckNear(heardMs, samples.Length / 16, 40, "live audio ends");
        // What is heard depends a little on how fast the audio comes.
        Check(same > 0.7 * heardMs / 10, same + " of " + heardMs / 10 + " stretches of 10 ms are as the tool hears them");
    }

    private static void Note(ref RawLiveStretch stretch, byte[] heard, ref long endMs)
    {
        for (uint i = 0; i < stretch.PhonemeCount; ++i)
        {
            RawLivePhoneme* phoneme = stretch.Phonemes + i;
            Check(phoneme->StartMs == endMs, "a gap in live phonemes");
            endMs = phoneme->EndMs;
            for (long j = phoneme->StartMs / 10; j < endMs / 10; ++j) heard[j] = phoneme->Label[0];
        }
    }

    private static void TextsAreReadAsTheToolReadsThem(Engine engine, Recording recording)
    {
        Token[] tokens = engine.Transcribe("I paid $5 on May 3rd, 1905.", new ScriptOptions());
        string[] lines = File.ReadAllLines(At("transcript.tsv"));
        var phonemes = new List<string>();
        foreach (Token token in tokens)
        {
            if (token.Kind == SpanKind.Word) phonemes.Add(token.Phonemes);
        }
        string listed = string.Join("\n", lines);
        Check(phonemes.Count > 6, phonemes.Count + " words");
        foreach (string each in phonemes) Check(listed.Contains(each.Split('|')[0].Trim()), each + " is not in " + listed);
        Check(engine.Transcribe("Hello, world.").Length >= 2, "a plain transcript");
        using (Script script = engine.ReadScript("MARY (low): It is $5.\nTOM: No.", new ScriptOptions { Speaker = "MARY" }))
        {
            Check(script.Text.Contains("five dollars") && !script.Text.Contains("No"), script.Text);
            Check(script.GetWords().Length == 3 && script.GetWords()[2].Spoken == "five dollars" && script.GetCues().Length == 0, "words of a script");
            Check(Array.Exists(script.GetEvents(), each => each.Kind == SpanKind.Speaker), "the name is an event");
            ScriptPart part = script.FindPart(script.Text.IndexOf("is "), 2);
            Check(part.TextOffset == 15 && part.TextLength == 2 && part.Spoken == "is", part.TextOffset + " " + part.Spoken);
            Check(script.GetUnsaid().Length == 0, "all characters are said");
        }
        CheckThrows<TessarinException>(() => engine.ReadScript("a", new ScriptOptions { Table = "what is this" }), "(code 12)");
        Check(Engine.GetNearText(0xE9) == "e" && Engine.GetNearText(0x4E00) == null, "near texts");

        Sentence[] sentences = engine.FindSentences(recording, File.ReadAllText(At("demo.txt")));
        List<string> found = new List<string>(File.ReadAllLines(At("sentences.tsv")));
        Check(sentences.Length > 2 && sentences[0].IsFound, sentences.Length + " sentences");
        foreach (Sentence each in sentences)
            Check(found.Exists(line => line.StartsWith(each.StartMs + "\t" + each.EndMs + "\t") && line.EndsWith(each.Text)), each.Text);
    }

    private static void CommandsAreHeard(Engine engine, Recording recording)
    {
        using (var commands = new Commands(engine))
        {
            commands.AddText("echo", "You are about to enter an echo test.");
            commands.AddText("stop", "Stop the music.");
            commands.AddPhonemes("go", "gOW");
            int end = engine.FindSentences(recording, "You are about to enter an echo test.")[0].EndMs;
            CommandMatch[] ranking = commands.Rank(recording, 0, end);
            Check(ranking.Length == 3 && ranking[0].Name == "echo" && ranking[0].Score > ranking[1].Score, "ranking");
            short[] samples = recording.GetSamples();
            bool hasEnded = false;
            for (int at = 0; at < end * 16 + 16000 && !hasEnded; at += 160) hasEnded = commands.Push(samples, at, 160);
            Check(commands.RankUtterance()[0].Name == "echo", "an utterance");
            CheckThrows<TessarinException>(() => commands.AddSample("echo", recording, 0, end), "echo");
        }
        using (var commands = new Commands(engine))
        using (var again = new Commands(engine))
        {
            commands.AddSample("first", recording, 0, 2500);
            commands.AddSample("second", recording, 2500, 5000);
            again.AddPackedSamples(commands.PackSamples());
            CommandMatch[] ranking = again.Rank(recording, 2500, 5000);
            Check(ranking.Length == 2 && ranking[0].Name == "second" && ranking[0].Score < ranking[1].Score, "samples");
            CheckThrows<TessarinException>(() => again.AddPackedSamples(new byte[] { 1, 2, 3 }), "samples");
        }
    }

    private static void FactsAndSoundAreMeasured(Engine engine, Recording recording)
    {
        Check(engine.GetLabels().Length == 40 && engine.Facts.RateHz == 16000, "facts of a model");
        string lexicon = Path.Combine(data, "en-us.lexicon");
        LexiconFacts facts = LexiconFacts.FromFile(lexicon);
        Check(facts.WordCount > 10000 && facts.EntryCount >= facts.WordCount && facts.HasTree, "facts of a lexicon");
        Check(LexiconFacts.FromMemory(File.ReadAllBytes(lexicon)).Name == facts.Name && facts.Name.Length > 0, facts.Name);
        float[] loudness = Recording.MeasureLoudness(recording.GetSamples(), recording.RateHz);
        List<object> expected = List(Load("demo.json")["loudness"], "db");
        Check(loudness.Length == expected.Count, loudness.Length + " values of loudness, not " + expected.Count);
        for (int i = 0; i < loudness.Length; ++i) CheckNear(loudness[i], (double)expected[i], 0.06, "loudness " + i);
        float levelDb;
        using (Recording gated = recording.MakeGated(-40, 0, out levelDb))
        {
            CheckNear(levelDb, -40, 0.01, "level of the gate");
            int silent = Array.FindAll(gated.GetSamples(), each => each == 0).Length;
            Check(silent > Array.FindAll(recording.GetSamples(), each => each == 0).Length + 1600, "the gate silences");
        }
        File.WriteAllText(At("own.shapes"), "set own\nshapes OPEN\nAA OPEN 0.5\n");
        using (Shapes own = Shapes.FromFile(At("own.shapes"))) Check(own.Names[0] == "OPEN", "shapes of a file");
        using (var packed = new Engine(File.ReadAllBytes(Path.Combine(data, "en-us.model")), File.ReadAllBytes(lexicon),
                                       File.ReadAllBytes(Path.Combine(data, "en-us.calibration"))))
        using (var samples = new Recording(Array.ConvertAll(recording.GetSamples(), each => each / 32768f), 16000))
        using (Result result = packed.Align(samples, File.ReadAllText(At("demo.txt"))))
        {
            Check(result.GetWords().Length == List(Load("demo.json"), "words").Count, "an engine in memory");
        }
    }

    private static void FailuresSayWhatToDo(Engine engine, Recording recording)
    {
        CheckThrows<TessarinException>(() => new Recording(At("missing.wav")), "missing.wav");
        CheckThrows<TessarinException>(() => new Engine(At("demo.txt"), At("demo.txt")), "demo.txt");
        CheckThrows<TessarinException>(() => new Shapes("none"), "none");
        CheckThrows<TessarinException>(() => engine.Align(recording, "Hello.", new SearchOptions { Progress = (a, b) => true }),
                                       "(code 5)");
        CheckThrows<InvalidOperationException>(
            () => engine.Align(recording, "Hello.", new SearchOptions { Progress = (a, b) => { throw new InvalidOperationException("own"); } }),
            "own");
        CheckThrows<FormatException>(() => ResultReader.ReadFrames("{\"version\": 2}", "a.json"), "install the package");
        CheckThrows<FormatException>(() => ResultReader.ReadFrames("{}", "a.json"), "no version");
        CheckThrows<FormatException>(() => ResultReader.ReadFrames("{\"version\": 1, \"frames\": [{}]}", "a.json"), "do not read");
        CheckThrows<FormatException>(() => ResultReader.ReadFrames("{\"version\": 1", "a.json"), "is not JSON");
        CheckThrows<FormatException>(() => Json.Parse(new string('[', 100000)), "too deep");
        var closed = new Recording(new short[16000], 16000);
        closed.Dispose();
        closed.Dispose();
        CheckThrows<ObjectDisposedException>(() => closed.GetSamples(), "");
        engine.SetWord("Tessarin", "tEHsAHrIHn");
        Check(engine.Language.Length > 0, "language");
    }

    private static void Send(Mouth mouth, string message, params object[] arguments)
    {
        typeof(Mouth).GetMethod(message, BindingFlags.Instance | BindingFlags.NonPublic).Invoke(mouth, arguments);
    }

    private static Mouth MakeMouth(AudioSource source, params string[] keys)
    {
        var mouth = new Mouth { name = "head", face = new SkinnedMeshRenderer { sharedMesh = new Mesh() } };
        mouth.face.sharedMesh.Keys.AddRange(keys);
        mouth.Components.Add(source);
        return mouth;
    }

    private static void TheComponentPlaysAnImportedTrack()
    {
        File.Copy(At("demo.json"), At("demo.tessarin"), true);
        var context = new AssetImportContext { assetPath = At("demo.tessarin") };
        new ResultImporter().OnImportAsset(context);
        Check(context.Errors.Count == 0, string.Join(" ", context.Errors));
        var source = new AudioSource { clip = new AudioClip { frequency = 16000 }, isPlaying = true };
        Mouth mouth = MakeMouth(source, "brow", "viseme_PP", "viseme_aa");
        mouth.track = (MouthTrack)context.Main;
        mouth.strength = 0.5f;
        Send(mouth, "OnEnable");
        List<double[]> table = Table("demo.visemes.csv");
        for (int i = 0; i < table.Count; i += 7)
        {
            source.timeSamples = (int)((i + 0.5) * 16000 / 24); // the middle of a frame
            Send(mouth, "LateUpdate");
            CheckNear(mouth.face.Weights[1], 50 * table[i][1], 0.2, "PP in frame " + i);
            CheckNear(mouth.face.Weights[2], 50 * table[i][10], 0.2, "aa in frame " + i);
        }
        source.isPlaying = false;
        Send(mouth, "LateUpdate");
        Check(mouth.face.Weights[2] == 0, "the mouth rests when nothing plays");
        Send(mouth, "OnDisable");

        File.WriteAllText(At("bad.tessarin"), "{\"version\": 7}");
        context = new AssetImportContext { assetPath = At("bad.tessarin") };
        new ResultImporter().OnImportAsset(context);
        Check(context.Main == null && context.Errors[0].Contains("version 7"), "a newer version is refused");
    }

    private static void TheComponentFollowsWhatIsHeard(Recording recording)
    {
        Application.streamingAssetsPath = Path.GetDirectoryName(data);
        AudioSettings.outputSampleRate = recording.RateHz;
        Mouth mouth = MakeMouth(new AudioSource(), "viseme_sil", "viseme_aa");
        mouth.dataFolder = Path.GetFileName(data);
        Send(mouth, "OnEnable");
        Check(Debug.Errors.Count == 0, string.Join(" ", Debug.Errors));
        short[] samples = recording.GetSamples();
        float open = 0;
        foreach (int channels in new[] { 2, 1 })
        {
            var block = new float[533 * channels];
            for (int at = 0; at < 5 * recording.RateHz; at += 533)
            {
                for (int i = 0; i < block.Length; ++i) block[i] = samples[at + i / channels] / 32768f;
                Send(mouth, "OnAudioFilterRead", block, channels);
                System.Threading.Thread.Sleep(5); // the search keeps up
                Send(mouth, "LateUpdate");
                open = Math.Max(open, mouth.face.Weights[1]);
            }
        }
        Check(open > 25 && open <= 100, "the mouth opens to " + open);
        Send(mouth, "OnDisable");
        Send(mouth, "OnAudioFilterRead", new float[32], 2);

        mouth = MakeMouth(new AudioSource(), "viseme_aa");
        mouth.dataFolder = "nowhere";
        Send(mouth, "OnEnable");
        Check(!mouth.enabled && Debug.Errors[0].Contains("StreamingAssets/nowhere"), "a missing folder is named");
        Send(mouth, "OnDisable");
    }

    private static int Main(string[] arguments)
    {
        data = arguments[0].TrimEnd('/');
        folder = arguments[1];
        EveryFunctionIsInTheLibrary();
        using (Engine engine = Engine.FromFolder(data))
        using (var recording = new Recording(At("demo.wav")))
        {
            AlignmentsAreThoseOfTheTool(engine, recording);
            RecognitionIsThatOfTheTool(recording);
            ShapesAreThoseOfTheTool();
            LiveAudioMakesNoGarbage(recording);
            TextsAreReadAsTheToolReadsThem(engine, recording);
            CommandsAreHeard(engine, recording);
            FactsAndSoundAreMeasured(engine, recording);
            FailuresSayWhatToDo(engine, recording);
            TheComponentPlaysAnImportedTrack();
            TheComponentFollowsWhatIsHeard(recording);
        }
        Console.WriteLine(checks + " checks, " + failures + " failed");
        return failures == 0 ? 0 : 1;
    }
}
