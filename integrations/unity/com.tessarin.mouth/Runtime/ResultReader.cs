using System;
using System.Collections.Generic;

namespace Tessarin
{
    /// <summary>Reads the JSON of `tessarin align`.</summary>
    public static class ResultReader
    {
        public const int Version = 1;

        /// <summary>The frames of a result. Throws FormatException, whose text says what to do.</summary>
        public static RawFrame[] ReadFrames(string json, string name)
        {
            Dictionary<string, object> result = Check(json, name);
            try
            {
                var list = (List<object>)result["frames"];
                var frames = new RawFrame[list.Count];
                for (int i = 0; i < frames.Length; ++i)
                    ReadFrame((Dictionary<string, object>)list[i], ref frames[i]);
                return frames;
            }
            catch (Exception error) when (error is InvalidCastException || error is KeyNotFoundException)
            {
                throw new FormatException(name + " has frames that do not read: make it again with tessarin align");
            }
        }

        private static Dictionary<string, object> Check(string json, string name)
        {
            Dictionary<string, object> result;
            try
            {
                result = Json.Parse(json) as Dictionary<string, object>;
            }
            catch (FormatException error)
            {
                throw new FormatException(name + " is not JSON: " + error.Message);
            }
            object version;
            if (result == null || !result.TryGetValue("version", out version) || !(version is double))
                throw new FormatException(name + " is not a result of tessarin: it has no version. Make one with " +
                                          "tessarin align RECORDING --text-file TEXT -o RESULT.json");
            if ((double)version > Version)
                throw new FormatException(name + " has version " + version + " and this package reads version " +
                                          Version + ": install the package that came with your tessarin");
            if ((double)version < Version)
                throw new FormatException(name + " has version " + version + ", older than " + Version +
                                          ": make it again with a newer tessarin");
            return result;
        }

        private static void ReadFrame(Dictionary<string, object> from, ref RawFrame frame)
        {
            frame.StartMs = Milliseconds(from["start_ms"]);
            frame.EndMs = Milliseconds(from["end_ms"]);
            foreach (KeyValuePair<string, object> weight in (Dictionary<string, object>)from["weights"])
            {
                if (!Frames.TryAdd(ref frame, weight.Key, (float)(double)weight.Value))
                    throw new InvalidCastException();
            }
        }

        private static int Milliseconds(object value)
        {
            double number = (double)value;
            if (!(number >= 0 && number <= int.MaxValue)) throw new InvalidCastException();
            return (int)number;
        }
    }
}
