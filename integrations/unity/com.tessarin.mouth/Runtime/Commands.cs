using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    /// <summary>A command and how well it fits: of texts the higher the better, of samples the lower.</summary>
    public struct CommandMatch
    {
        public string Name;
        public double Score;
    }

    /// <summary>Spoken commands: which one of a few phrases was said. One thread at a time.</summary>
    public sealed unsafe class Commands : IDisposable
    {
        private readonly Engine engine;
        private readonly CommandsHandle handle;

        /// <summary>What is not louder than `floorDb` is ignored; live audio wants the noise of its room.</summary>
        public Commands(Engine engine, int rateHz = 16000, float floorDb = 0)
        {
            this.engine = engine;
            var options = new RawCommandOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawCommandOptions)), RateHz = (uint)rateHz, FloorDb = floorDb
            };
            TessarinException.ThrowUnlessDone(
                "commands", Native.tessarin_create_commands(engine.Model, ref options, out handle));
        }

        public void AddText(string name, string text)
        {
            TessarinException.ThrowUnlessDone(name, Native.tessarin_add_command_text(
                handle, engine.LanguageHandle, Texts.Bytes(name), Texts.Bytes(text)));
        }

        public void AddPhonemes(string name, string phonemes)
        {
            TessarinException.ThrowUnlessDone(
                name, Native.tessarin_add_command_phonemes(handle, Texts.Bytes(name), Texts.Bytes(phonemes)));
        }

        public void AddSample(string name, Recording sample, int fromMs = 0, int toMs = 0)
        {
            RawSearchOptions options = Stretch(fromMs, toMs);
            TessarinException.ThrowUnlessDone(
                name, Native.tessarin_add_command_sample(handle, Texts.Bytes(name), sample.Handle, ref options));
        }

        public void AddPackedSamples(byte[] data)
        {
            TessarinException.ThrowUnlessDone(
                "samples", Native.tessarin_add_packed_command_samples(handle, data, (ulong)data.LongLength));
        }

        /// <summary>All samples with their names, to keep them in a file.</summary>
        public byte[] PackSamples()
        {
            ulong size;
            IntPtr data;
            TessarinException.ThrowUnlessDone(
                "samples", Native.tessarin_pack_command_samples(handle, out size, out data));
            var packed = new byte[size];
            Marshal.Copy(data, packed, 0, packed.Length);
            return packed;
        }

        /// <summary>The commands, the nearest first, for a recording of one of them.</summary>
        public CommandMatch[] Rank(Recording recording, int fromMs = 0, int toMs = 0)
        {
            RawSearchOptions options = Stretch(fromMs, toMs);
            var progress = new RawProgress();
            TessarinException.ThrowUnlessDone(
                "recording", Native.tessarin_rank_commands(handle, recording.Handle, ref options, ref progress));
            return Ranking();
        }

        /// <summary>Takes samples of live audio; true when the utterance has ended, for RankUtterance. Makes
        /// no garbage.</summary>
        public bool Push(short[] samples, int offset, int count)
        {
            if (offset < 0 || count < 0 || offset > samples.Length - count)
                throw new ArgumentOutOfRangeException("count");
            int hasEnded;
            fixed (short* first = samples)
            {
                TessarinException.ThrowUnlessDone("commands",
                    Native.tessarin_push_command_audio(handle, first + offset, (uint)count, out hasEnded));
            }
            return hasEnded != 0;
        }

        /// <summary>Ends the utterance that was pushed; the next one begins.</summary>
        public CommandMatch[] RankUtterance()
        {
            var progress = new RawProgress();
            TessarinException.ThrowUnlessDone("commands", Native.tessarin_rank_utterance(handle, ref progress));
            return Ranking();
        }

        private CommandMatch[] Ranking()
        {
            uint count;
            RawCommandMatch* first = Native.tessarin_get_command_ranking(handle, out count);
            var ranking = new CommandMatch[count];
            for (int i = 0; i < count; ++i)
                ranking[i] = new CommandMatch { Name = Texts.Read(first[i].Name), Score = first[i].Score };
            return ranking;
        }

        private static RawSearchOptions Stretch(int fromMs, int toMs)
        {
            return new RawSearchOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawSearchOptions)), FromMs = fromMs, ToMs = toMs
            };
        }

        public void Dispose() { handle.Dispose(); }
    }
}
