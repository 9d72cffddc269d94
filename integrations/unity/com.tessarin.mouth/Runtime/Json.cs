using System;
using System.Collections.Generic;
using System.Globalization;
using System.Text;

namespace Tessarin
{
    /// <summary>Reads JSON into dictionaries, lists, strings, doubles, booleans and null, because Unity's own
    /// reader knows no objects whose names are data.</summary>
    public sealed class Json
    {
        private const int MaxDepth = 64;

        private readonly string text;
        private int at;
        private int depth;

        private Json(string text) { this.text = text; }

        /// <summary>Throws FormatException, which names the place.</summary>
        public static object Parse(string text)
        {
            var json = new Json(text);
            object value = json.Value();
            json.SkipBlanks();
            if (json.at != text.Length) throw json.Wrong("more after the end");
            return value;
        }

        private object Value()
        {
            if (++depth > MaxDepth) throw Wrong("too deep");
            SkipBlanks();
            object value;
            switch (Peek())
            {
            case '{': value = Object(); break;
            case '[': value = List(); break;
            case '"': value = String(); break;
            case 't': value = Word("true", true); break;
            case 'f': value = Word("false", false); break;
            case 'n': value = Word("null", null); break;
            default: value = Number(); break;
            }
            --depth;
            return value;
        }

        private Dictionary<string, object> Object()
        {
            var members = new Dictionary<string, object>();
            ++at;
            if (Skip('}')) return members;
            do
            {
                SkipBlanks();
                string name = String();
                Expect(':');
                members[name] = Value();
            } while (Skip(','));
            Expect('}');
            return members;
        }

        private List<object> List()
        {
            var items = new List<object>();
            ++at;
            if (Skip(']')) return items;
            do
            {
                items.Add(Value());
            } while (Skip(','));
            Expect(']');
            return items;
        }

        private string String()
        {
            if (Peek() != '"') throw Wrong("a name or text is missing");
            var read = new StringBuilder();
            for (++at; Peek() != '"'; ++at)
            {
                if (text[at] != '\\') read.Append(text[at]);
                else read.Append(Escaped());
            }
            ++at;
            return read.ToString();
        }

        private char Escaped()
        {
            ++at;
            const string kMarks = "\"\\/bfnrt", kMeant = "\"\\/\b\f\n\r\t";
            int mark = kMarks.IndexOf(Peek());
            if (mark >= 0) return kMeant[mark];
            int code;
            if (text[at] != 'u' || at + 4 >= text.Length ||
                !int.TryParse(text.Substring(at + 1, 4), NumberStyles.AllowHexSpecifier, CultureInfo.InvariantCulture, out code))
                throw Wrong("an escape that does not exist");
            at += 4;
            return (char)code;
        }

        private object Number()
        {
            int first = at;
            while (at < text.Length && "+-.0123456789eE".IndexOf(text[at]) >= 0) ++at;
            double number;
            if (!double.TryParse(text.Substring(first, at - first), NumberStyles.Float, CultureInfo.InvariantCulture, out number))
                throw Wrong("not a value");
            return number;
        }

        private object Word(string word, object value)
        {
            if (string.CompareOrdinal(text, at, word, 0, word.Length) != 0) throw Wrong("not a value");
            at += word.Length;
            return value;
        }

        private char Peek()
        {
            if (at >= text.Length) throw Wrong("it ends too soon");
            return text[at];
        }

        private void SkipBlanks()
        {
            while (at < text.Length && " \t\r\n".IndexOf(text[at]) >= 0) ++at;
        }

        private bool Skip(char mark)
        {
            SkipBlanks();
            if (Peek() != mark) return false;
            ++at;
            return true;
        }

        private void Expect(char mark)
        {
            if (!Skip(mark)) throw Wrong(mark + " is missing");
        }

        private FormatException Wrong(string what)
        {
            return new FormatException(what + " at character " + (at + 1));
        }
    }
}
