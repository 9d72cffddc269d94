using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    // The records of tessarin_c.h, in its layout. Pointers in them belong to the library.

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawPhoneme
    {
        public int StartMs;
        public int EndMs;
        public float Score;
        public fixed byte Label[8];
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawSpan
    {
        public int Kind;
        public int StartMs;
        public int EndMs;
        public int TextOffset;
        public int TextLength;
        public IntPtr Text;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawMatch
    {
        public int Verdict;
        public float Score;
        public int IsLoose;
        public int UnscriptedMs;
        public float Margin;
        public float Fit;
        public float Duration;
        public float Spread;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawWordMatch
    {
        public int IsSaid;
        public uint Index;
        public float Confidence;
        public float Margin;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawWeight
    {
        public fixed byte Label[4];
        public float Weight;
    }

    /// <summary>A video frame: up to ten phonemes with their weights, the heaviest first.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawFrame
    {
        public const int MaxWeights = 10;

        public int StartMs;
        public int EndMs;
        public int Count;
        // Ten of RawWeight; C# has no fixed arrays of structs.
        public fixed uint Weights[2 * MaxWeights];
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawKey
    {
        public int TimeMs;
        public float Weight;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawCurve
    {
        public fixed byte Label[8];
        public int StartMs;
        public int EndMs;
        public uint KeyCount;
        public RawKey* Keys;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawSwitch
    {
        public int StartMs;
        public uint Shape;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct RawStrength
    {
        public uint Parts;
        public float Factor;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawLivePhoneme
    {
        public long StartMs;
        public long EndMs;
        public float Score;
        public fixed byte Label[8];
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawLiveFrame
    {
        public long StartMs;
        public long EndMs;
        public int Count;
        public fixed uint Weights[2 * RawFrame.MaxWeights];
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct RawLiveStretch
    {
        public long StartMs;
        public long EndMs;
        public long WaitingMs;
        public RawLivePhoneme* Phonemes;
        public RawLiveFrame* Frames;
        public uint PhonemeCount;
        public uint FrameCount;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawSearchOptions
    {
        public uint Size;
        public int BeamWidth;
        public int FromMs;
        public int ToMs;
        public uint Flags;
        public uint MatchMode;
        public IntPtr Script;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawProgress
    {
        public IntPtr User;
        public IntPtr OnStatus;
        public IntPtr OnProgress;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal unsafe struct RawTrackOptions
    {
        public uint Size;
        public uint Flags;
        public float FrameRate;
        public float Slope;
        public int MaxWeights;
        public int RulesLength;
        public IntPtr Rules;
        public IntPtr Gains;
        public uint GainCount;
        public RawStrength* Strengths;
        public uint StrengthCount;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal unsafe struct RawLiveOptions
    {
        public uint Size;
        public uint RateHz;
        public uint Format;
        public uint Channels;
        public int DelayMs;
        public int OverlapMs;
        public float FrameRate;
        public int LookAheadMs;
        public uint StrengthCount;
        public RawStrength* Strengths;
    }

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    internal delegate int ProgressCallback(IntPtr user, uint done, uint total);

    /// <summary>The functions of the library. Texts are bytes of UTF-8 that end in a zero.</summary>
    internal static unsafe partial class Native
    {
        private const string Library = "tessarin";
        private const CallingConvention C = CallingConvention.Cdecl;

        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_error_text(int code);
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_version();

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_model_from_file(byte[] path, out ModelHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_model_from_memory(byte[] data, uint size, out ModelHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_read_model_statistics(ModelHandle model, byte[] path, int areCounts);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_read_model_limits(ModelHandle model, byte[] path);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_read_model_calibration(ModelHandle model, byte[] path);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_set_model_calibration(ModelHandle model, byte[] data, uint size);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_model(IntPtr model);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_language_from_file(byte[] path, out LanguageHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_language_from_memory(byte[] data, uint size, out LanguageHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_set_word(LanguageHandle language, byte[] word, byte[] phonemes);
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_language_name(LanguageHandle language);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_language(IntPtr language);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_audio_from_file(byte[] path, uint channel, out AudioHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_audio_from_int16(short[] samples, uint count, uint rateHz, out AudioHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_audio_from_float(float[] samples, uint count, uint rateHz, out AudioHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern short* tessarin_get_audio_samples(AudioHandle audio, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern uint tessarin_get_audio_rate_hz(AudioHandle audio);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_audio(IntPtr audio);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_alignment(ModelHandle model, LanguageHandle language, AudioHandle audio,
            byte[] text, ref RawSearchOptions options, ref RawProgress progress, out ResultHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_recognition(ModelHandle model, AudioHandle audio,
            ref RawSearchOptions options, ref RawProgress progress, out ResultHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_result_from_phonemes(RawPhoneme[] phonemes, uint count, out ResultHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawPhoneme* tessarin_get_phonemes(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawSpan* tessarin_get_words(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern uint tessarin_get_word_flags(ResultHandle result, uint word);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawSpan* tessarin_get_events(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawMatch* tessarin_get_match(ResultHandle result);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawWordMatch* tessarin_get_word_matches(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawSpan* tessarin_get_unsaid_words(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern float* tessarin_get_phoneme_confidences(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern float* tessarin_get_loudness(ResultHandle result, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_set_loudness(ResultHandle result, float[] db, uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_result(IntPtr result);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_track(ResultHandle result, ref RawTrackOptions options, out TrackHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawFrame* tessarin_get_track_frames(TrackHandle track, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawCurve* tessarin_get_curves(TrackHandle track, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_quantize_track(TrackHandle track, int fromMs, int toMs, int maxWeights, out RawFrame found);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_track(IntPtr track);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_shapes(byte[] set, out ShapesHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_shapes_from_text(byte[] text, byte[] reason, uint reasonSize, out ShapesHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_shape_set(ShapesHandle shapes);
        [DllImport(Library, CallingConvention = C)]
        public static extern uint tessarin_get_shape_count(ShapesHandle shapes);
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_shape_name(ShapesHandle shapes, uint shape);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_is_closed_shape(ShapesHandle shapes, uint shape);
        [DllImport(Library, CallingConvention = C)]
        public static extern uint tessarin_get_rest_shape(ShapesHandle shapes);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_mix_shapes(ShapesHandle shapes, RawFrame* frames, uint count, double* weights);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_shapes(IntPtr shapes);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_switches(ShapesHandle shapes, RawFrame* frames, uint count, int holdMs, out SwitchesHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawSwitch* tessarin_get_switches(SwitchesHandle switches, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_switches(IntPtr switches);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_live(ModelHandle model, ref RawLiveOptions options, out LiveHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_push_live_audio(LiveHandle live, float* samples, uint size);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_take_live(LiveHandle live, out RawLiveStretch stretch);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_finish_live(LiveHandle live, out RawLiveStretch stretch);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_live(IntPtr live);
    }
}
