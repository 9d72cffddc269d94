using System;
using UnityEngine;

namespace Tessarin
{
    /// <summary>The mouth of one recording: a weight for each shape in each frame.</summary>
    public sealed class MouthTrack : ScriptableObject
    {
        public string set;
        public string[] shapes;
        public int[] startMs;    // of each frame
        public float[] weights;  // a row for each frame

        /// <summary>Fills the track from the frames of a result.</summary>
        public void Fill(Shapes map, RawFrame[] frames)
        {
            set = map.Set;
            shapes = map.Names;
            startMs = new int[frames.Length];
            var mixed = new double[frames.Length * shapes.Length];
            map.Mix(frames, frames.Length, mixed);
            weights = Array.ConvertAll(mixed, each => (float)each);
            for (int i = 0; i < frames.Length; ++i) startMs[i] = frames[i].StartMs;
        }

        /// <summary>Writes the weight of each shape at a time, straight between the middles of frames; 0
        /// outside of the track. Makes no garbage.</summary>
        public void Sample(float seconds, float[] room)
        {
            int count = startMs.Length, width = shapes.Length;
            Array.Clear(room, 0, width);
            if (count == 0 || seconds < 0) return;
            float frameMs = count > 1 ? (float)(startMs[count - 1] - startMs[0]) / (count - 1) : 1;
            float place = (seconds * 1000 - startMs[0]) / Math.Max(frameMs, 1) - 0.5f;
            int first = (int)Math.Floor(place);
            float share = place - first;
            Add(first, 1 - share, room);
            Add(first + 1, share, room);
        }

        private void Add(int frame, float share, float[] room)
        {
            if (frame < 0 || frame >= startMs.Length) return;
            int row = frame * shapes.Length;
            for (int i = 0; i < shapes.Length; ++i) room[i] += share * weights[row + i];
        }
    }
}
