// The part of Unity's interface that the package uses, to compile it and to run its logic without Unity.
using System;
using System.Collections.Generic;

namespace UnityEngine
{
    public class Object
    {
        public string name = "";
    }

    public class ScriptableObject : Object
    {
        public static T CreateInstance<T>() where T : ScriptableObject, new() { return new T(); }
    }

    public class MonoBehaviour : Object
    {
        public bool enabled = true;
        public readonly List<object> Components = new List<object>();

        public T GetComponent<T>() where T : class { return Components.Find(each => each is T) as T; }
    }

    public class TextAsset : Object
    {
        public string text = "";
    }

    public class AudioClip : Object
    {
        public int frequency;
    }

    public class AudioSource : Object
    {
        public AudioClip clip;
        public int timeSamples;
        public bool isPlaying;
    }

    public class Mesh : Object
    {
        public readonly List<string> Keys = new List<string>();

        public int blendShapeCount { get { return Keys.Count; } }
        public string GetBlendShapeName(int index) { return Keys[index]; }
        public int GetBlendShapeIndex(string name) { return Keys.IndexOf(name); }
    }

    public class SkinnedMeshRenderer : Object
    {
        public Mesh sharedMesh;
        public readonly float[] Weights = new float[64];

        public void SetBlendShapeWeight(int index, float value) { Weights[index] = value; }
    }

    public static class AudioSettings
    {
        public static int outputSampleRate = 48000;
    }

    public static class Application
    {
        public static string streamingAssetsPath = "";
    }

    public static class Debug
    {
        public static readonly List<string> Errors = new List<string>();

        public static void LogError(object message, Object context) { Errors.Add(message.ToString()); }
    }

    [AttributeUsage(AttributeTargets.Class)]
    public sealed class RequireComponent : Attribute
    {
        public RequireComponent(Type type) {}
    }

    public sealed class TooltipAttribute : Attribute
    {
        public TooltipAttribute(string text) {}
    }

    public sealed class RangeAttribute : Attribute
    {
        public RangeAttribute(float least, float most) {}
    }
}

namespace UnityEditor.AssetImporters
{
    [AttributeUsage(AttributeTargets.Class)]
    public sealed class ScriptedImporterAttribute : Attribute
    {
        public ScriptedImporterAttribute(int version, string[] endings, string[] overrides) {}
    }

    public sealed class AssetImportContext
    {
        public string assetPath;
        public UnityEngine.Object Main;
        public readonly List<string> Errors = new List<string>();

        public void AddObjectToAsset(string id, UnityEngine.Object asset) {}
        public void SetMainObject(UnityEngine.Object asset) { Main = asset; }
        public void LogImportError(string message) { Errors.Add(message); }
    }

    public abstract class ScriptedImporter : UnityEngine.Object
    {
        public abstract void OnImportAsset(AssetImportContext context);
    }
}
