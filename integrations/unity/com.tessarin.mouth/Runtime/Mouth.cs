using System;
using System.IO;
using System.Threading;
using UnityEngine;

namespace Tessarin
{
    /// <summary>Moves the blend shapes of a face with an AudioSource: by a track that was imported, or, when
    /// there is none, by what is heard. The live mouth is about 100 ms late; a track is not.</summary>
    [RequireComponent(typeof(AudioSource))]
    public sealed unsafe class Mouth : MonoBehaviour
    {
        [Serializable]
        public struct Mapping
        {
            public string shape;
            public string blendShape;
            public float factor;
        }

        public SkinnedMeshRenderer face;
        [Tooltip("The track of the clip; none: the mouth follows what is heard")]
        public MouthTrack track;
        [Tooltip("The shapes of the live mouth: visemes, arkit, vrm, switches or preston-blair")]
        public string set = "visemes";
        [Tooltip("Folder with the files of Data~, in StreamingAssets")]
        public string dataFolder = "tessarin";
        [Range(0, 2)] public float strength = 1;
        public Mapping[] mapping = new Mapping[0];

        private AudioSource source;
        private Shapes shapes;
        private Engine engine;
        private volatile Live live;
        private readonly RawFrame[] newest = new RawFrame[1];
        private double[] mixed;
        private float[] weights;
        private int[] shapeNumbers;
        private int[] keyNumbers;
        private int readers;

        /// <summary>Maps each shape to the blend shape whose name ends in its name.</summary>
        public void GuessMapping()
        {
            var names = track != null ? track.shapes : new Shapes(set).Names;
            mapping = Array.FindAll(Array.ConvertAll(names, Guess), each => each.blendShape.Length > 0);
        }

        private Mapping Guess(string shape)
        {
            Mesh mesh = face.sharedMesh;
            for (int i = 0; i < mesh.blendShapeCount; ++i)
            {
                string name = mesh.GetBlendShapeName(i);
                string last = name.Substring(name.LastIndexOfAny(new[] { '_', '.', ' ' }) + 1);
                if (string.Equals(last, shape, StringComparison.OrdinalIgnoreCase))
                    return new Mapping { shape = shape, blendShape = name, factor = 1 };
            }
            return new Mapping { shape = shape, blendShape = "", factor = 1 };
        }

        private void OnEnable()
        {
            source = GetComponent<AudioSource>();
            if (face == null)
            {
                Debug.LogError(name + ": choose the face, a SkinnedMeshRenderer with blend shapes", this);
                enabled = false;
                return;
            }
            try
            {
                if (track == null) StartLive();
            }
            catch (Exception error) when (error is TessarinException || error is DllNotFoundException)
            {
                Debug.LogError(name + ": " + error.Message + "; put the library into Plugins and its data into " +
                               "StreamingAssets/" + dataFolder, this);
                enabled = false;
                return;
            }
            string[] names = track != null ? track.shapes : shapes.Names;
            if (mapping.Length == 0) GuessMapping();
            weights = new float[names.Length];
            shapeNumbers = Array.ConvertAll(mapping, each => Array.IndexOf(names, each.shape));
            keyNumbers = Array.ConvertAll(mapping, each => face.sharedMesh.GetBlendShapeIndex(each.blendShape));
        }

        private void StartLive()
        {
            shapes = new Shapes(set);
            mixed = new double[shapes.Names.Length];
            engine = Engine.ForHearing(Path.Combine(Application.streamingAssetsPath, dataFolder));
            live = new Live(engine, AudioSettings.outputSampleRate, 2);
            Frames.TryAdd(ref newest[0], "x", 1);
        }

        private void OnDisable()
        {
            Live ended = live;
            live = null;
            while (Volatile.Read(ref readers) != 0) Thread.Yield(); // the audio thread is in a push
            if (ended != null) ended.Dispose();
            if (engine != null) engine.Dispose();
            if (shapes != null) shapes.Dispose();
            engine = null;
            shapes = null;
            newest[0] = new RawFrame();
        }

        private void LateUpdate()
        {
            if (track != null) Sample();
            else TakeLive();
            Show();
        }

        private void Sample()
        {
            if (source.isPlaying && source.clip != null)
                track.Sample((float)source.timeSamples / source.clip.frequency, weights);
            else
                Array.Clear(weights, 0, weights.Length);
        }

        private void TakeLive()
        {
            RawLiveStretch stretch;
            live.Take(out stretch);
            if (stretch.FrameCount == 0) return; // the last one stays
            Frames.Copy(stretch.Frames + (stretch.FrameCount - 1), ref newest[0]);
            shapes.Mix(newest, 1, mixed);
            for (int i = 0; i < weights.Length; ++i) weights[i] = (float)mixed[i];
        }

        private void Show()
        {
            for (int i = 0; i < keyNumbers.Length; ++i)
            {
                if (keyNumbers[i] >= 0 && shapeNumbers[i] >= 0)
                    face.SetBlendShapeWeight(keyNumbers[i], 100 * strength * mapping[i].factor * weights[shapeNumbers[i]]);
            }
        }

        // On the audio thread, with what the source plays.
        private void OnAudioFilterRead(float[] data, int channels)
        {
            Interlocked.Increment(ref readers);
            try
            {
                Live open = live;
                if (open == null) return;
                if (channels == 2) open.Push(data, 0, data.Length);
                else PushAsTwo(open, data, channels);
            }
            finally
            {
                Interlocked.Decrement(ref readers);
            }
        }

        private readonly float[] two = new float[2 * 256];

        // The number of channels is known only here; the first one is heard.
        private void PushAsTwo(Live open, float[] data, int channels)
        {
            int filled = 0;
            for (int i = 0; i < data.Length; i += channels)
            {
                two[filled] = data[i];
                filled += 2;
                if (filled == two.Length)
                {
                    open.Push(two, 0, filled);
                    filled = 0;
                }
            }
            open.Push(two, 0, filled);
        }
    }
}
