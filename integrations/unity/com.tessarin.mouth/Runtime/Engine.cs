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
        /// <summary>Called with what is done of how much, on the thread of the search; true cancels.</summary>
        public Func<uint, uint, bool> Progress;
    }

    public enum MatchMode { Auto = 0, Exact = 1, Loose = 2 }

    /// <summary>One model and one language. Several threads may search at once.</summary>
    public sealed class Engine : IDisposable
    {
        internal ModelHandle Model;
        private LanguageHandle language;

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

        private delegate int SearchCall(ref RawSearchOptions options, ref RawProgress progress, out ResultHandle made);

        private static Result Search(string subject, SearchOptions options, SearchCall call)
        {
            options = options ?? new SearchOptions();
            var raw = new RawSearchOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawSearchOptions)), BeamWidth = options.BeamWidth,
                FromMs = options.FromMs, ToMs = options.ToMs, Flags = options.Retry ? 1u : 0u,
                MatchMode = (uint)options.Match
            };
            GCHandle watched = GCHandle.Alloc(new Watch { Progress = options.Progress });
            try
            {
                var progress = new RawProgress { User = GCHandle.ToIntPtr(watched) };
                if (options.Progress != null)
                    progress.OnProgress = Marshal.GetFunctionPointerForDelegate(OnProgressCallback);
                ResultHandle made;
                int code = call(ref raw, ref progress, out made);
                Exception raised = ((Watch)watched.Target).Raised;
                if (raised != null || (code != 0 && code != TessarinException.RecognitionFailed))
                {
                    made.Dispose();
                    throw raised ?? new TessarinException(subject, code);
                }
                return new Result(made, code);
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
