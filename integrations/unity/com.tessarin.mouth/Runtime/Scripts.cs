using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    public enum ScriptFormat { Auto = 0, Plain = 1, Fountain = 2, SubRip = 3, WebVtt = 4, TextGrid = 5 }

    /// <summary>How a text is read.</summary>
    public sealed class ScriptOptions
    {
        public bool IsLiteral;
        public bool UseCueTimes;
        public ScriptFormat Format;
        public string Speaker = "";
        public string Table = "";

        /// <summary>Calls with the options in memory of the library's form, which is null without options.</summary>
        internal static int Lend(ScriptOptions options, Func<IntPtr, int> call)
        {
            if (options == null) return call(IntPtr.Zero);
            GCHandle speaker = GCHandle.Alloc(Texts.Bytes(options.Speaker), GCHandleType.Pinned);
            GCHandle table = GCHandle.Alloc(Texts.Bytes(options.Table), GCHandleType.Pinned);
            var raw = new RawScriptOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawScriptOptions)),
                Flags = (options.IsLiteral ? 1u : 0u) | (options.UseCueTimes ? 2u : 0u),
                Format = (uint)options.Format, Speaker = speaker.AddrOfPinnedObject(),
                Table = options.Table.Length > 0 ? table.AddrOfPinnedObject() : IntPtr.Zero
            };
            GCHandle pinned = GCHandle.Alloc(raw, GCHandleType.Pinned);
            try
            {
                return call(pinned.AddrOfPinnedObject());
            }
            finally
            {
                pinned.Free();
                table.Free();
                speaker.Free();
            }
        }
    }

    /// <summary>A piece of a text with its pronunciation: stretches separated by blanks, alternatives by bars.</summary>
    public struct Token
    {
        public SpanKind Kind;
        public string Text;
        public string Phonemes;
        public int TextOffset;
        public int TextLength;
        public int CutMs;
    }

    /// <summary>A stretch of a script, and what is said for it.</summary>
    public struct ScriptPart
    {
        public SpanKind Kind; // 0 for the lines of subtitles, and for what is not said
        public int TextOffset;
        public int TextLength;
        public int StartMs;
        public int EndMs;
        public bool IsEmphasised;
        public bool IsDrawnOut;
        public string Spoken;

        internal ScriptPart(RawScriptPart raw)
        {
            Kind = (SpanKind)raw.Kind;
            TextOffset = raw.TextOffset;
            TextLength = raw.TextLength;
            StartMs = raw.StartMs;
            EndMs = raw.EndMs;
            IsEmphasised = (raw.Flags & 1) != 0;
            IsDrawnOut = (raw.Flags & 2) != 0;
            Spoken = Texts.Read(raw.Spoken);
        }
    }

    /// <summary>A text as people write it, read without a recording.</summary>
    public sealed unsafe class Script : IDisposable
    {
        private readonly ScriptHandle handle;

        internal Script(ScriptHandle made) { handle = made; }

        /// <summary>The words to be said, with pauses and tags.</summary>
        public string Text { get { return Texts.Read(Native.tessarin_get_script_text(handle)); } }

        public ScriptPart[] GetWords()
        {
            uint count;
            return Parts(Native.tessarin_get_script_words(handle, out count), count);
        }

        public ScriptPart[] GetEvents()
        {
            uint count;
            return Parts(Native.tessarin_get_script_events(handle, out count), count);
        }

        /// <summary>The lines of subtitles with their times.</summary>
        public ScriptPart[] GetCues()
        {
            uint count;
            return Parts(Native.tessarin_get_script_cues(handle, out count), count);
        }

        /// <summary>The characters that have no name and are not said.</summary>
        public ScriptPart[] GetUnsaid()
        {
            uint count;
            return Parts(Native.tessarin_get_script_unsaid(handle, out count), count);
        }

        /// <summary>What a stretch of Text, in bytes, stands for.</summary>
        public ScriptPart FindPart(int offset, int length)
        {
            RawScriptPart part;
            TessarinException.ThrowUnlessDone(
                "part", Native.tessarin_find_script_part(handle, offset, length, out part));
            return new ScriptPart(part);
        }

        private static ScriptPart[] Parts(RawScriptPart* first, uint count)
        {
            var parts = new ScriptPart[count];
            for (int i = 0; i < count; ++i) parts[i] = new ScriptPart(first[i]);
            return parts;
        }

        public void Dispose() { handle.Dispose(); }
    }

    /// <summary>What a lexicon file says of itself and holds.</summary>
    public sealed unsafe class LexiconFacts
    {
        public int Version { get; private set; }
        public uint EntryCount { get; private set; }
        public uint WordCount { get; private set; }
        public uint RuleCount { get; private set; }
        public uint LeafCount { get; private set; }
        public bool HasTree { get; private set; }
        public string Name { get; private set; }
        public string Locale { get; private set; }
        public string Comment { get; private set; }
        public string Information { get; private set; }

        public static LexiconFacts FromFile(string path)
        {
            LexiconHandle made;
            TessarinException.ThrowUnlessDone(
                path, Native.tessarin_create_lexicon_from_file(Texts.Bytes(path), out made));
            return new LexiconFacts(made);
        }

        public static LexiconFacts FromMemory(byte[] data)
        {
            LexiconHandle made;
            TessarinException.ThrowUnlessDone(
                "lexicon", Native.tessarin_create_lexicon_from_memory(data, (uint)data.Length, out made));
            return new LexiconFacts(made);
        }

        private LexiconFacts(LexiconHandle made)
        {
            using (made)
            {
                RawLexiconFacts* raw = Native.tessarin_get_lexicon_facts(made);
                Version = raw->Version;
                EntryCount = raw->EntryCount;
                WordCount = raw->WordCount;
                RuleCount = raw->RuleCount;
                LeafCount = raw->LeafCount;
                HasTree = raw->HasTree != 0;
                Name = Texts.Read(raw->Name);
                Locale = Texts.Read(raw->Locale);
                Comment = Texts.Read(raw->Comment);
                Information = Texts.Read(raw->Information);
            }
        }
    }
}
