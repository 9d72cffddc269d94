using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Tessarin
{
    /// <summary>A call of the library that failed; the text names the subject and the reason.</summary>
    public class TessarinException : Exception
    {
        public const int RecognitionFailed = 8;
        public const int Cancelled = 5;

        public int Code { get; private set; }

        public TessarinException(string subject, int code, string remedy = "")
            : base(subject + ": " + Texts.Read(Native.tessarin_get_error_text(code)) + " (code " + code + ")" +
                   (remedy.Length > 0 ? "; " + remedy : ""))
        {
            Code = code;
        }

        internal static void ThrowUnlessDone(string subject, int code)
        {
            if (code != 0) throw new TessarinException(subject, code);
        }
    }

    /// <summary>Texts of the library: bytes of UTF-8 that end in a zero.</summary>
    internal static unsafe class Texts
    {
        public static byte[] Bytes(string text)
        {
            if (text == null) throw new ArgumentNullException("text");
            return Encoding.UTF8.GetBytes(text + "\0");
        }

        public static string Read(IntPtr text)
        {
            if (text == IntPtr.Zero) return "";
            byte* first = (byte*)text;
            int length = 0;
            while (first[length] != 0) ++length;
            return Encoding.UTF8.GetString(first, length);
        }

        /// <summary>A label, which ends in a zero or with its room.</summary>
        public static string Label(byte* label, int room)
        {
            int length = 0;
            while (length < room && label[length] != 0) ++length;
            return Encoding.ASCII.GetString(label, length);
        }
    }
}
