using System;
using System.IO;
using UnityEditor.AssetImporters;
using UnityEngine;

namespace Tessarin.Editor
{
    /// <summary>Makes a MouthTrack of what `tessarin align -o line.tessarin --format json` has written. A file
    /// that ends in .json is imported so when its importer is set to this one.</summary>
    [ScriptedImporter(1, new[] { "tessarin" }, new[] { "json" })]
    public sealed class ResultImporter : ScriptedImporter
    {
        [Tooltip("visemes, arkit, vrm, switches or preston-blair")]
        public string set = "visemes";
        [Tooltip("A map of your own, in place of the set")]
        public TextAsset map;

        public override void OnImportAsset(AssetImportContext context)
        {
            try
            {
                RawFrame[] frames = ResultReader.ReadFrames(File.ReadAllText(context.assetPath),
                                                            Path.GetFileName(context.assetPath));
                var track = ScriptableObject.CreateInstance<MouthTrack>();
                using (Shapes shapes = map != null ? Shapes.FromText(map.text) : new Shapes(set))
                {
                    track.Fill(shapes, frames);
                }
                context.AddObjectToAsset("track", track);
                context.SetMainObject(track);
            }
            catch (Exception error) when (error is FormatException || error is TessarinException ||
                                          error is DllNotFoundException)
            {
                context.LogImportError(error.Message);
            }
        }
    }
}
