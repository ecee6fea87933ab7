using System;
using System.Collections.Generic;

namespace Tarn
{
    /// <summary>The forms in which the library returns several texts as one.</summary>
    internal static class ListTexts
    {
        public static string[] Split(string text)
        {
            return text.Split(new[] { TarnRemoteClient.ListDelimiter }, StringSplitOptions.None);
        }

        /// <summary>
        /// The values by their keys, from "key: value; " for each entry. A piece without a key continues the value
        /// before it.
        /// </summary>
        public static IReadOnlyDictionary<string, string> Entries(string text)
        {
            var entries = new Dictionary<string, string>();
            string last = "";
            foreach (string piece in text.Split(new[] { "; " }, StringSplitOptions.None))
            {
                int keyEnd = piece.IndexOf(": ", StringComparison.Ordinal);
                if (keyEnd >= 0)
                    entries[last = piece.Substring(0, keyEnd)] = piece.Substring(keyEnd + 2);
                else if (entries.Count > 0 && piece.Length > 0)
                    entries[last] += "; " + piece;
            }
            return entries;
        }
    }
}
