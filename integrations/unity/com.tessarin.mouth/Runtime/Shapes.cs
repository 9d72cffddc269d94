using System;
using System.Text;

namespace Tessarin
{
    /// <summary>A map from phonemes to a set of mouth shapes.</summary>
    public sealed unsafe class Shapes : IDisposable
    {
        private const int ReasonBytes = 256;

        private readonly ShapesHandle handle;

        public string Set { get; private set; }
        public string[] Names { get; private set; }
        public bool[] AreClosed { get; private set; }
        public int Rest { get; private set; }

        /// <summary>A built-in set: visemes, arkit, vrm, switches or preston-blair.</summary>
        public Shapes(string set)
        {
            TessarinException.ThrowUnlessDone(
                "mouth shapes " + set, Native.tessarin_create_shapes(Texts.Bytes(set), out handle));
            Describe();
        }

        private Shapes(ShapesHandle made)
        {
            handle = made;
            Describe();
        }

        /// <summary>A map of your own.</summary>
        public static Shapes FromText(string text)
        {
            return Read("mouth shapes", Texts.Bytes(text), Native.tessarin_create_shapes_from_text);
        }

        /// <summary>The same from a file.</summary>
        public static Shapes FromFile(string path)
        {
            return Read(path, Texts.Bytes(path), Native.tessarin_create_shapes_from_file);
        }

        private delegate int ReadCall(byte[] source, byte[] reason, uint reasonSize, out ShapesHandle made);

        private static Shapes Read(string subject, byte[] source, ReadCall call)
        {
            var reason = new byte[ReasonBytes];
            ShapesHandle made;
            int code = call(source, reason, ReasonBytes, out made);
            if (code != 0)
                throw new TessarinException(subject, code,
                    Encoding.UTF8.GetString(reason, 0, Math.Max(0, Array.IndexOf(reason, (byte)0))));
            return new Shapes(made);
        }

        private void Describe()
        {
            Set = Texts.Read(Native.tessarin_get_shape_set(handle));
            Names = new string[Native.tessarin_get_shape_count(handle)];
            AreClosed = new bool[Names.Length];
            for (uint i = 0; i < Names.Length; ++i)
            {
                Names[i] = Texts.Read(Native.tessarin_get_shape_name(handle, i));
                AreClosed[i] = Native.tessarin_is_closed_shape(handle, i) != 0;
            }
            Rest = (int)Native.tessarin_get_rest_shape(handle);
        }

        /// <summary>The weight of each shape, a row for each frame. Makes no garbage: the room is yours.</summary>
        public void Mix(RawFrame[] frames, int count, double[] weights)
        {
            if (count < 0 || count > frames.Length || weights.Length < (long)count * Names.Length)
                throw new ArgumentException("not enough room for " + count + " frames");
            fixed (RawFrame* first = frames)
            fixed (double* room = weights)
            {
                TessarinException.ThrowUnlessDone(
                    "frames", Native.tessarin_mix_shapes(handle, first, (uint)count, room));
            }
        }

        /// <summary>One shape at a time; each stays until the next.</summary>
        public RawSwitch[] MakeSwitches(RawFrame[] frames, int holdMs = 0)
        {
            SwitchesHandle made;
            int code;
            fixed (RawFrame* first = frames)
            {
                code = Native.tessarin_create_switches(handle, first, (uint)frames.Length, holdMs, out made);
            }
            TessarinException.ThrowUnlessDone("switches", code);
            using (made)
            {
                uint count;
                RawSwitch* first = Native.tessarin_get_switches(made, out count);
                var switches = new RawSwitch[count];
                for (int i = 0; i < count; ++i) switches[i] = first[i];
                return switches;
            }
        }

        public void Dispose() { handle.Dispose(); }
    }
}
