using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace Tessarin
{
    /// <summary>A sound; "x" is silence. The score is its strength, 0 to 100; the confidence is -1 where
    /// it is not known.</summary>
    public struct Phoneme
    {
        public string Label;
        public int StartMs;
        public int EndMs;
        public float Score;
        public float Confidence;
    }

    public enum SpanKind
    {
        Word = 1, Tag = 2, Cut = 3, Punctuation = 4, Unscripted = 5, Speaker = 6, Direction = 7, Action = 8,
        Heading = 9
    }

    /// <summary>A word or an event. Places are bytes of the text in UTF-8; times are -1 for a word that was
    /// not said; the confidence is -1 where it is not known.</summary>
    public struct Span
    {
        public SpanKind Kind;
        public string Text;
        public int StartMs;
        public int EndMs;
        public int TextOffset;
        public int TextLength;
        public float Confidence;
        public bool IsEmphasised;
        public bool IsDrawnOut;
    }

    public enum Verdict { Unknown = 0, Good = 1, Doubtful = 2, Poor = 3 }

    /// <summary>What a search found.</summary>
    public sealed unsafe class Result : IDisposable
    {
        internal ResultHandle Handle;

        /// <summary>0, or RecognitionFailed when the search lost the text.</summary>
        public int Code { get; private set; }

        internal Result(ResultHandle made, int code)
        {
            Handle = made;
            Code = code;
        }

        /// <summary>A result of timings from elsewhere, with the loudness of each 10 ms in dB of full scale,
        /// which may be none.</summary>
        public static Result FromPhonemes(IList<Phoneme> phonemes, float[] loudness = null)
        {
            var raw = new RawPhoneme[phonemes.Count];
            for (int i = 0; i < raw.Length; ++i)
            {
                raw[i].StartMs = phonemes[i].StartMs;
                raw[i].EndMs = phonemes[i].EndMs;
                raw[i].Score = phonemes[i].Score;
                string label = phonemes[i].Label;
                if (label.Length > 7) throw new ArgumentException(label + " is not a phoneme");
                fixed (byte* room = raw[i].Label)
                {
                    for (int j = 0; j < label.Length; ++j) room[j] = (byte)label[j];
                }
            }
            ResultHandle made;
            TessarinException.ThrowUnlessDone(
                "phonemes", Native.tessarin_create_result_from_phonemes(raw, (uint)raw.Length, out made));
            var result = new Result(made, 0);
            if (loudness != null)
                TessarinException.ThrowUnlessDone(
                    "loudness", Native.tessarin_set_loudness(made, loudness, (uint)loudness.Length));
            return result;
        }

        public Phoneme[] GetPhonemes()
        {
            uint count, known;
            RawPhoneme* first = Native.tessarin_get_phonemes(Handle, out count);
            float* confidences = Native.tessarin_get_phoneme_confidences(Handle, out known);
            var phonemes = new Phoneme[count];
            for (int i = 0; i < count; ++i)
                phonemes[i] = new Phoneme {
                    Label = Texts.Label(first[i].Label, 8), StartMs = first[i].StartMs, EndMs = first[i].EndMs,
                    Score = first[i].Score, Confidence = i < known ? confidences[i] : -1
                };
            return phonemes;
        }

        public Span[] GetWords()
        {
            uint count;
            RawSpan* first = Native.tessarin_get_words(Handle, out count);
            Span[] words = Spans(first, count, true);
            for (uint i = 0; i < count; ++i)
            {
                uint flags = Native.tessarin_get_word_flags(Handle, i);
                words[i].IsEmphasised = (flags & 1) != 0;
                words[i].IsDrawnOut = (flags & 2) != 0;
            }
            return words;
        }

        /// <summary>Words of the text that were not said.</summary>
        public Span[] GetUnsaidWords()
        {
            uint count;
            RawSpan* first = Native.tessarin_get_unsaid_words(Handle, out count);
            return Spans(first, count, false);
        }

        /// <summary>Punctuation, tags, and speech that is not in the text.</summary>
        public Span[] GetEvents()
        {
            uint count;
            RawSpan* first = Native.tessarin_get_events(Handle, out count);
            return Spans(first, count, null);
        }

        private Span[] Spans(RawSpan* first, uint count, bool? areSaid)
        {
            var spans = new Span[count];
            for (int i = 0; i < count; ++i)
                spans[i] = new Span {
                    Kind = (SpanKind)first[i].Kind, Text = Texts.Read(first[i].Text), StartMs = first[i].StartMs,
                    EndMs = first[i].EndMs, TextOffset = first[i].TextOffset, TextLength = first[i].TextLength,
                    Confidence = -1
                };
            if (areSaid == null) return spans;
            uint matchCount;
            RawWordMatch* matches = Native.tessarin_get_word_matches(Handle, out matchCount);
            for (int i = 0; i < matchCount; ++i)
            {
                if (matches[i].IsSaid != 0 == areSaid && matches[i].Index < count)
                    spans[matches[i].Index].Confidence = matches[i].Confidence;
            }
            return spans;
        }

        /// <summary>How well text and recording fit; null where that was not looked for.</summary>
        public RawMatch? GetMatch()
        {
            RawMatch* match = Native.tessarin_get_match(Handle);
            return match == null ? (RawMatch?)null : *match;
        }

        public float[] GetLoudness()
        {
            uint count;
            float* first = Native.tessarin_get_loudness(Handle, out count);
            var loudness = new float[count];
            if (count > 0) Marshal.Copy((IntPtr)first, loudness, 0, loudness.Length);
            return loudness;
        }

        /// <summary>Makes the mouth track; a strength of 1 is as it is spoken.</summary>
        public Track MakeTrack(float frameRate, float strength = 1, bool curves = false)
        {
            const uint kCurves = 256, kVowels = 1, kConsonants = 2;
            var strengths = new RawStrength { Parts = kVowels, Factor = strength };
            RawStrength* both = stackalloc RawStrength[2];
            both[0] = strengths;
            strengths.Parts = kConsonants;
            both[1] = strengths;
            var options = new RawTrackOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawTrackOptions)), Flags = curves ? kCurves : 0,
                FrameRate = frameRate, Strengths = both, StrengthCount = 2
            };
            TrackHandle made;
            TessarinException.ThrowUnlessDone("track", Native.tessarin_create_track(Handle, ref options, out made));
            return new Track(made);
        }

        public void Dispose() { Handle.Dispose(); }
    }

    /// <summary>The weight of one occurrence of a phoneme, straight between its keys.</summary>
    public struct Curve
    {
        public string Label;
        public int StartMs;
        public int EndMs;
        public RawKey[] Keys;
    }

    /// <summary>The mouth, frame by frame.</summary>
    public sealed unsafe class Track : IDisposable
    {
        private readonly TrackHandle handle;

        internal Track(TrackHandle made) { handle = made; }

        public RawFrame[] GetFrames()
        {
            uint count;
            RawFrame* first = Native.tessarin_get_track_frames(handle, out count);
            var frames = new RawFrame[count];
            for (int i = 0; i < count; ++i) frames[i] = first[i];
            return frames;
        }

        public Curve[] GetCurves()
        {
            uint count;
            RawCurve* first = Native.tessarin_get_curves(handle, out count);
            var curves = new Curve[count];
            for (int i = 0; i < count; ++i)
            {
                curves[i] = new Curve {
                    Label = Texts.Label(first[i].Label, 8), StartMs = first[i].StartMs, EndMs = first[i].EndMs,
                    Keys = new RawKey[first[i].KeyCount]
                };
                for (int j = 0; j < curves[i].Keys.Length; ++j) curves[i].Keys[j] = first[i].Keys[j];
            }
            return curves;
        }

        /// <summary>The one mixture that stands best for a stretch; -1 is the first or the last frame.</summary>
        public RawFrame Quantize(int fromMs, int toMs, int maxWeights = 0)
        {
            RawFrame found;
            TessarinException.ThrowUnlessDone(
                "stretch", Native.tessarin_quantize_track(handle, fromMs, toMs, maxWeights, out found));
            return found;
        }

        public void Dispose() { handle.Dispose(); }
    }
}
