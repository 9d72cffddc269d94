using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    [StructLayout(LayoutKind.Sequential)]
    internal struct RawScriptOptions
    {
        public uint Size;
        public uint Flags;
        public uint Format;
        public IntPtr Speaker;
        public IntPtr Table;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawToken
    {
        public int Kind;
        public int TextOffset;
        public int TextLength;
        public int CutMs;
        public IntPtr Text;
        public IntPtr Phonemes;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawScriptPart
    {
        public int Kind;
        public int TextOffset;
        public int TextLength;
        public uint Flags;
        public int StartMs;
        public int EndMs;
        public IntPtr Spoken;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawSentence
    {
        public double Score;
        public IntPtr Text;
        public int IsFound;
        public int StartMs;
        public int EndMs;
        public int TextOffset;
        public int TextLength;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawGateOptions
    {
        public uint Size;
        public float ThresholdDb;
        public float Percentile;
        public int RampMs;
        public int MaxBlipMs;
        public int MinQuietMs;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawCommandOptions
    {
        public uint Size;
        public uint RateHz;
        public float FloorDb;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawCommandMatch
    {
        public double Score;
        public IntPtr Name;
    }

    /// <summary>What a model holds.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct ModelFacts
    {
        public int Version;
        public int PhonemeCount;
        public int StateCount;
        public int MixtureCount;
        public int FeatureCount;
        public int CepstrumCount;
        public int BandCount;
        public uint Flags;
        public int WindowSize;
        public int WindowOverlap;
        public float RateHz;
        public float PreEmphasis;
        internal IntPtr Labels;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct RawLexiconFacts
    {
        public int Version;
        public int RulesVersion;
        public uint Language;
        public uint CodePage;
        public uint Flags;
        public uint EntryCount;
        public uint WordCount;
        public uint RuleCount;
        public uint LeafCount;
        public int HasTree;
        public IntPtr Name;
        public IntPtr Locale;
        public IntPtr Comment;
        public IntPtr Information;
    }

    internal static unsafe partial class Native
    {
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_near_text(uint character);
        [DllImport(Library, CallingConvention = C)]
        public static extern ModelFacts* tessarin_get_model_facts(ModelHandle model);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_lexicon_from_file(byte[] path, out LexiconHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_lexicon_from_memory(byte[] data, uint size, out LexiconHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawLexiconFacts* tessarin_get_lexicon_facts(LexiconHandle lexicon);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_lexicon(IntPtr lexicon);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_gated_audio(AudioHandle audio, ref RawGateOptions options, out float levelDb, out AudioHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_measure_loudness(short[] samples, uint count, uint rateHz, float[] db, ref uint values);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_shapes_from_file(byte[] path, byte[] reason, uint reasonSize, out ShapesHandle made);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_transcript(LanguageHandle language, byte[] text, out TranscriptHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_script_transcript(LanguageHandle language, byte[] text, IntPtr options, out TranscriptHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawToken* tessarin_get_transcript_tokens(TranscriptHandle transcript, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_transcript(IntPtr transcript);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_script(LanguageHandle language, byte[] text, IntPtr options, out ScriptHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern IntPtr tessarin_get_script_text(ScriptHandle script);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawScriptPart* tessarin_get_script_words(ScriptHandle script, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawScriptPart* tessarin_get_script_events(ScriptHandle script, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawScriptPart* tessarin_get_script_cues(ScriptHandle script, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawScriptPart* tessarin_get_script_unsaid(ScriptHandle script, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_find_script_part(ScriptHandle script, int offset, int length, out RawScriptPart part);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_script(IntPtr script);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_sentence_search(ModelHandle model, LanguageHandle language, AudioHandle audio,
            byte[] text, float minScore, ref RawSearchOptions options, ref RawProgress progress, out SentencesHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawSentence* tessarin_get_sentences(SentencesHandle search, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_sentence_search(IntPtr search);

        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_create_commands(ModelHandle model, ref RawCommandOptions options, out CommandsHandle made);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_add_command_text(CommandsHandle commands, LanguageHandle language, byte[] name, byte[] text);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_add_command_phonemes(CommandsHandle commands, byte[] name, byte[] phonemes);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_add_command_sample(CommandsHandle commands, byte[] name, AudioHandle audio, ref RawSearchOptions options);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_add_packed_command_samples(CommandsHandle commands, byte[] data, ulong size);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_pack_command_samples(CommandsHandle commands, out ulong size, out IntPtr data);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_rank_commands(CommandsHandle commands, AudioHandle audio, ref RawSearchOptions options, ref RawProgress progress);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_push_command_audio(CommandsHandle commands, short* samples, uint count, out int hasEnded);
        [DllImport(Library, CallingConvention = C)]
        public static extern int tessarin_rank_utterance(CommandsHandle commands, ref RawProgress progress);
        [DllImport(Library, CallingConvention = C)]
        public static extern RawCommandMatch* tessarin_get_command_ranking(CommandsHandle commands, out uint count);
        [DllImport(Library, CallingConvention = C)]
        public static extern void tessarin_free_commands(IntPtr commands);
    }
}
