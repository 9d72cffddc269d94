using System;
using System.Runtime.InteropServices;

namespace Tessarin
{
    /// <summary>Follows audio that is still coming in. One thread may push while another takes; neither
    /// makes garbage.</summary>
    public sealed unsafe class Live : IDisposable
    {
        private const uint kFloat = 2;

        private readonly LiveHandle handle;

        /// <summary>Interleaved channels, of which the first is heard; 4000 to 50000 Hz.</summary>
        public Live(Engine engine, int rateHz, int channels = 1, float frameRate = 30)
        {
            var options = new RawLiveOptions {
                Size = (uint)Marshal.SizeOf(typeof(RawLiveOptions)), RateHz = (uint)rateHz, Format = kFloat,
                Channels = (uint)channels, FrameRate = frameRate
            };
            TessarinException.ThrowUnlessDone(
                "live audio", Native.tessarin_create_live(engine.Model, ref options, out handle));
        }

        /// <summary>Takes a copy of samples from -1 to 1. Never waits.</summary>
        public void Push(float[] samples, int offset, int count)
        {
            if (offset < 0 || count < 0 || offset > samples.Length - count)
                throw new ArgumentOutOfRangeException("count");
            fixed (float* first = samples)
            {
                TessarinException.ThrowUnlessDone("live audio",
                    Native.tessarin_push_live_audio(handle, first + offset, (uint)count * sizeof(float)));
            }
        }

        /// <summary>What became final since the last call; its pointers are good until the next one.</summary>
        public void Take(out RawLiveStretch stretch)
        {
            TessarinException.ThrowUnlessDone("live audio", Native.tessarin_take_live(handle, out stretch));
        }

        /// <summary>Ends the audio, and waits until all of it was heard.</summary>
        public void Finish(out RawLiveStretch stretch)
        {
            TessarinException.ThrowUnlessDone("live audio", Native.tessarin_finish_live(handle, out stretch));
        }

        public void Dispose() { handle.Dispose(); }
    }
}
