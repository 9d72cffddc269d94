namespace Tessarin
{
    /// <summary>Reads and fills the weights of frames.</summary>
    public static unsafe class Frames
    {
        public static string GetLabel(ref RawFrame frame, int index)
        {
            fixed (uint* weights = frame.Weights) return Texts.Label((byte*)(weights + 2 * index), 4);
        }

        public static float GetWeight(ref RawFrame frame, int index)
        {
            fixed (uint* weights = frame.Weights) return *(float*)(weights + 2 * index + 1);
        }

        /// <summary>False when the frame is full, or the label too long to be one.</summary>
        public static bool TryAdd(ref RawFrame frame, string label, float weight)
        {
            if (frame.Count >= RawFrame.MaxWeights || label.Length > 3) return false;
            fixed (uint* weights = frame.Weights)
            {
                uint* entry = weights + 2 * frame.Count;
                byte* room = (byte*)entry;
                for (int i = 0; i < 4; ++i) room[i] = i < label.Length ? (byte)label[i] : (byte)0;
                *(float*)(entry + 1) = weight;
            }
            ++frame.Count;
            return true;
        }

        /// <summary>A frame of live audio whose times are of no interest.</summary>
        internal static void Copy(RawLiveFrame* from, ref RawFrame to)
        {
            to.Count = from->Count;
            fixed (uint* weights = to.Weights)
            {
                for (int i = 0; i < 2 * RawFrame.MaxWeights; ++i) weights[i] = from->Weights[i];
            }
        }
    }
}
