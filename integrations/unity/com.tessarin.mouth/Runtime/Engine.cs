using System;
using System.IO;
using System.Runtime.InteropServices;

namespace Tessarin
{
    /// <summary>A recording in memory.</summary>
    public sealed unsafe class Recording : IDisposable
    {
        internal AudioHandle Handle;

        /// <summary>Reads a WAV file; a channel counts from 1, and 0 is the mean of all.</summary>
        public Recording(string path, int channel = 1)
        {
            TessarinException.ThrowUnlessDone(
                path, Native.tessarin_create_audio_from_file(Texts.Bytes(path), (uint)channel, out Handle));
        }

        /// <summary>Copies samples of one channel, from -1 to 1.</summary>
        public Recording(float[] samples, int rateHz)
        {
            TessarinException.ThrowUnlessDone("samples", Native.tessarin_create_audio_from_float(
                samples, (uint)samples.Length, (uint)rateHz, out Handle));
        }

        public Recording(short[] samples, int rateHz)
        {
            TessarinException.ThrowUnlessDone("samples", Native.tessarin_create_audio_from_int16(
                samples, (uint)samples.Length, (uint)rateHz, out Handle));
        }

        private Recording(AudioHandle made) { Handle = made; }

        /// <summary>A copy whose quiet stretches are silenced; 0 lets the quietest `share` of it decide what is
        /// quiet, and a share of 0 is 0.28.</summary>
        public Recording MakeGated(float thresholdDb, float share, out float levelDb)
        {
            var options = new RawGateOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawGateOptions)), ThresholdDb = thresholdDb, Percentile = share
            };
            AudioHandle made;
            TessarinException.ThrowUnlessDone(
                "gate", Native.tessarin_create_gated_audio(Handle, ref options, out levelDb, out made));
            return new Recording(made);
        }

        /// <summary>The loudness of each 10 ms of samples in dB of full scale.</summary>
        public static float[] MeasureLoudness(short[] samples, int rateHz)
        {
            var db = new float[(long)samples.Length * 100 / Math.Max(rateHz, 1) + 2];
            uint values = (uint)db.Length;
            TessarinException.ThrowUnlessDone("samples",
                Native.tessarin_measure_loudness(samples, (uint)samples.Length, (uint)rateHz, db, ref values));
            Array.Resize(ref db, (int)values);
            return db;
        }

        public int RateHz { get { return (int)Native.tessarin_get_audio_rate_hz(Handle); } }

        public short[] GetSamples()
        {
            uint count;
            short* first = Native.tessarin_get_audio_samples(Handle, out count);
            var samples = new short[count];
            if (count > 0) Marshal.Copy((IntPtr)first, samples, 0, samples.Length);
            return samples;
        }

        public void Dispose() { Handle.Dispose(); }
    }

    /// <summary>How a search is made.</summary>
    public sealed class SearchOptions
    {
        public int FromMs;
        public int ToMs;       // 0: to the end
        public int BeamWidth;  // 0: 2000
        public bool Retry;
        public MatchMode Match = MatchMode.Auto;
        public ScriptOptions Script; // how the text is read; null: the defaults
        /// <summary>Called with what is done of how much, on the thread of the search; true cancels.</summary>
        public Func<uint, uint, bool> Progress;
    }

    /// <summary>A sentence of a text; its times are -1 when it was not found.</summary>
    public struct Sentence
    {
        public string Text;
        public double Score;
        public bool IsFound;
        public int StartMs;
        public int EndMs;
        public int TextOffset;
        public int TextLength;
    }

    public enum MatchMode { Auto = 0, Exact = 1, Loose = 2 }

    /// <summary>One model and one language. Several threads may search at once.</summary>
    public sealed class Engine : IDisposable
    {
        internal ModelHandle Model;
        private LanguageHandle language;

        internal LanguageHandle LanguageHandle { get { return language; } }

        /// <summary>Opens en-us.model and en-us.lexicon in a folder.</summary>
        public static Engine FromFolder(string folder)
        {
            return new Engine(Path.Combine(folder, "en-us.model"), Path.Combine(folder, "en-us.lexicon"));
        }

        /// <summary>For Recognize and Live: the model that hears best without a text, and the statistics of
        /// the language, where the folder has them.</summary>
        public static Engine ForHearing(string folder)
        {
            string hearing = Path.Combine(folder, "en-us-hearing.model");
            var engine = new Engine(File.Exists(hearing) ? hearing : Path.Combine(folder, "en-us.model"),
                                    Path.Combine(folder, "en-us.lexicon"));
            string statistics = Path.Combine(folder, "en-us.trigrams");
            if (File.Exists(statistics)) engine.ReadStatistics(statistics, true);
            return engine;
        }

        public Engine(string model, string lexicon)
        {
            TessarinException.ThrowUnlessDone(
                model, Native.tessarin_create_model_from_file(Texts.Bytes(model), out Model));
            string calibration = Path.ChangeExtension(model, ".calibration");
            if (File.Exists(calibration)) ReadCalibration(calibration);
            TessarinException.ThrowUnlessDone(
                lexicon, Native.tessarin_create_language_from_file(Texts.Bytes(lexicon), out language));
        }

        /// <summary>The same from the contents of files, such as those that Unity has packed.</summary>
        public Engine(byte[] model, byte[] lexicon, byte[] calibration = null)
        {
            TessarinException.ThrowUnlessDone(
                "model", Native.tessarin_create_model_from_memory(model, (uint)model.Length, out Model));
            if (calibration != null)
                TessarinException.ThrowUnlessDone("calibration", Native.tessarin_set_model_calibration(
                    Model, calibration, (uint)calibration.Length));
            TessarinException.ThrowUnlessDone("lexicon", Native.tessarin_create_language_from_memory(
                lexicon, (uint)lexicon.Length, out language));
        }

        /// <summary>The version of the library.</summary>
        public static string Version { get { return Texts.Read(Native.tessarin_get_version()); } }

        public string Language { get { return Texts.Read(Native.tessarin_get_language_name(language)); } }

        public void ReadCalibration(string path)
        {
            TessarinException.ThrowUnlessDone(
                path, Native.tessarin_read_model_calibration(Model, Texts.Bytes(path)));
        }

        /// <summary>Statistics of phoneme sequences, for Recognize.</summary>
        public void ReadStatistics(string path, bool areCounts)
        {
            TessarinException.ThrowUnlessDone(
                path, Native.tessarin_read_model_statistics(Model, Texts.Bytes(path), areCounts ? 1 : 0));
        }

        public void ReadLimits(string path)
        {
            TessarinException.ThrowUnlessDone(path, Native.tessarin_read_model_limits(Model, Texts.Bytes(path)));
        }

        /// <summary>Has a word of your own said as phonemes; alternatives are separated by bars.</summary>
        public void SetWord(string word, string phonemes)
        {
            TessarinException.ThrowUnlessDone(
                word, Native.tessarin_set_word(language, Texts.Bytes(word), Texts.Bytes(phonemes)));
        }

        /// <summary>Finds when each phoneme and word of the text is spoken. A result whose text was lost
        /// has the code RecognitionFailed and what was found before.</summary>
        public Result Align(Recording recording, string text, SearchOptions options = null)
        {
            return Search("text", options, (ref RawSearchOptions raw, ref RawProgress progress, out ResultHandle made) =>
                Native.tessarin_create_alignment(Model, language, recording.Handle, Texts.Bytes(text), ref raw,
                                                 ref progress, out made));
        }

        /// <summary>Hears the phonemes without a text.</summary>
        public Result Recognize(Recording recording, SearchOptions options = null)
        {
            return Search("recording", options, (ref RawSearchOptions raw, ref RawProgress progress, out ResultHandle made) =>
                Native.tessarin_create_recognition(Model, recording.Handle, ref raw, ref progress, out made));
        }

        /// <summary>Which sentences of a text were said, in the order of the text; 0 stands for the usual
        /// least score.</summary>
        public unsafe Sentence[] FindSentences(Recording recording, string text, float minScore = 0,
                                               SearchOptions options = null)
        {
            options = options ?? new SearchOptions();
            RawSearchOptions raw = RawOptions(options);
            SentencesHandle made = null;
            int code = Watched(options, ref raw, (ref RawSearchOptions lent, ref RawProgress progress) =>
                Native.tessarin_create_sentence_search(Model, language, recording.Handle, Texts.Bytes(text), minScore,
                                                       ref lent, ref progress, out made));
            TessarinException.ThrowUnlessDone("text", code);
            using (made)
            {
                uint count;
                RawSentence* first = Native.tessarin_get_sentences(made, out count);
                var sentences = new Sentence[count];
                for (int i = 0; i < count; ++i)
                    sentences[i] = new Sentence {
                        Score = first[i].Score, Text = Texts.Read(first[i].Text), IsFound = first[i].IsFound != 0,
                        StartMs = first[i].StartMs, EndMs = first[i].EndMs, TextOffset = first[i].TextOffset,
                        TextLength = first[i].TextLength
                    };
                return sentences;
            }
        }

        /// <summary>How a text is said.</summary>
        public unsafe Token[] Transcribe(string text, ScriptOptions options = null)
        {
            TranscriptHandle made = null;
            byte[] bytes = Texts.Bytes(text);
            TessarinException.ThrowUnlessDone("text", options == null
                ? Native.tessarin_create_transcript(language, bytes, out made)
                : ScriptOptions.Lend(options, lent =>
                    Native.tessarin_create_script_transcript(language, bytes, lent, out made)));
            using (made)
            {
                uint count;
                RawToken* first = Native.tessarin_get_transcript_tokens(made, out count);
                var tokens = new Token[count];
                for (int i = 0; i < count; ++i)
                    tokens[i] = new Token {
                        Kind = (SpanKind)first[i].Kind, Text = Texts.Read(first[i].Text),
                        Phonemes = Texts.Read(first[i].Phonemes), TextOffset = first[i].TextOffset,
                        TextLength = first[i].TextLength, CutMs = first[i].CutMs
                    };
                return tokens;
            }
        }

        /// <summary>Reads a text as people write it, without transcribing it.</summary>
        public Script ReadScript(string text, ScriptOptions options = null)
        {
            ScriptHandle made = null;
            TessarinException.ThrowUnlessDone("text", ScriptOptions.Lend(options, lent =>
                Native.tessarin_create_script(language, Texts.Bytes(text), lent, out made)));
            return new Script(made);
        }

        public unsafe ModelFacts Facts { get { return *Native.tessarin_get_model_facts(Model); } }

        /// <summary>The phonemes of the model.</summary>
        public unsafe string[] GetLabels()
        {
            ModelFacts facts = Facts;
            var labels = new string[facts.PhonemeCount];
            for (int i = 0; i < labels.Length; ++i) labels[i] = Texts.Read(((IntPtr*)facts.Labels)[i]);
            return labels;
        }

        /// <summary>What to say for a character that a code page lacks; null when nothing is near.</summary>
        public static string GetNearText(int character)
        {
            IntPtr text = Native.tessarin_get_near_text((uint)character);
            return text == IntPtr.Zero ? null : Texts.Read(text);
        }

        private delegate int SearchCall(ref RawSearchOptions options, ref RawProgress progress, out ResultHandle made);

        private static RawSearchOptions RawOptions(SearchOptions options)
        {
            return new RawSearchOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawSearchOptions)), BeamWidth = options.BeamWidth,
                FromMs = options.FromMs, ToMs = options.ToMs, Flags = options.Retry ? 1u : 0u,
                MatchMode = (uint)options.Match
            };
        }

        private static Result Search(string subject, SearchOptions options, SearchCall call)
        {
            options = options ?? new SearchOptions();
            RawSearchOptions raw = RawOptions(options);
            ResultHandle made = null;
            int code = Watched(options, ref raw, (ref RawSearchOptions lent, ref RawProgress progress) =>
                call(ref lent, ref progress, out made));
            if (code == 0 || code == TessarinException.RecognitionFailed) return new Result(made, code);
            made.Dispose();
            throw new TessarinException(subject, code);
        }

        private delegate int WatchedCall(ref RawSearchOptions options, ref RawProgress progress);

        /// <summary>Makes a call with the options for texts and the progress in the library's form; what the
        /// progress function throws is thrown again.</summary>
        private static int Watched(SearchOptions options, ref RawSearchOptions raw, WatchedCall call)
        {
            GCHandle watched = GCHandle.Alloc(new Watch { Progress = options.Progress });
            try
            {
                var progress = new RawProgress { User = GCHandle.ToIntPtr(watched) };
                if (options.Progress != null)
                    progress.OnProgress = Marshal.GetFunctionPointerForDelegate(OnProgressCallback);
                RawSearchOptions lent = raw;
                int code = ScriptOptions.Lend(options.Script, script =>
                {
                    lent.Script = script;
                    return call(ref lent, ref progress);
                });
                Exception raised = ((Watch)watched.Target).Raised;
                if (raised != null) throw raised;
                return code;
            }
            finally
            {
                watched.Free();
            }
        }

        private sealed class Watch
        {
            public Func<uint, uint, bool> Progress;
            public Exception Raised;
        }

        // Static and kept, as code that is compiled ahead of time needs it.
        private static readonly ProgressCallback OnProgressCallback = OnProgress;

        [MonoPInvokeCallback(typeof(ProgressCallback))]
        private static int OnProgress(IntPtr user, uint done, uint total)
        {
            var watch = (Watch)GCHandle.FromIntPtr(user).Target;
            try
            {
                return watch.Progress(done, total) ? 1 : 0;
            }
            catch (Exception error) // must not travel through the library
            {
                watch.Raised = error;
                return 1;
            }
        }

        public void Dispose()
        {
            Model.Dispose();
            if (language != null) language.Dispose();
        }
    }

    /// <summary>Marks what the library calls, for compilers that look for this name.</summary>
    [AttributeUsage(AttributeTargets.Method)]
    internal sealed class MonoPInvokeCallbackAttribute : Attribute
    {
        public MonoPInvokeCallbackAttribute(Type type) { Type = type; }

        public Type Type { get; private set; }
    }
}
