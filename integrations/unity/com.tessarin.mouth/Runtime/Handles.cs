using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    /// <summary>An object of the library, freed once, whatever happens to its owner.</summary>
    public abstract class Handle : SafeHandle
    {
        protected Handle() : base(IntPtr.Zero, true) {}

        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }
    }

    public sealed class ModelHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_model(handle); return true; }
    }

    public sealed class LanguageHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_language(handle); return true; }
    }

    public sealed class AudioHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_audio(handle); return true; }
    }

    public sealed class ResultHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_result(handle); return true; }
    }

    public sealed class TrackHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_track(handle); return true; }
    }

    public sealed class ShapesHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_shapes(handle); return true; }
    }

    public sealed class SwitchesHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_switches(handle); return true; }
    }

    public sealed class LiveHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_live(handle); return true; }
    }

    public sealed class LexiconHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_lexicon(handle); return true; }
    }

    public sealed class TranscriptHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_transcript(handle); return true; }
    }

    public sealed class ScriptHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_script(handle); return true; }
    }

    public sealed class SentencesHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_sentence_search(handle); return true; }
    }

    public sealed class CommandsHandle : Handle
    {
        protected override bool ReleaseHandle() { Native.tessarin_free_commands(handle); return true; }
    }
}
