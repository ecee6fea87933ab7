using System;
using System.Diagnostics.CodeAnalysis;
using System.Runtime.InteropServices;
using System.Text;

namespace Tarn
{
    /// <summary>Zero-terminated UTF-8 texts, the form of the library's 8-bit texts.</summary>
    public static class Utf8
    {
        /// <summary>The bytes of a text with their terminator; null counts as an empty text.</summary>
        /// <exception cref="ArgumentException">The text holds a zero character, at which it would be cut.</exception>
        public static byte[] Encode([AllowNull] string text) { return Encode(text, nameof(text)); }

        /// <summary>The text up to its terminator.</summary>
        public static string Decode(IntPtr text)
        {
            return Encoding.UTF8.GetString(BytesAt(text));
        }

        /// <summary>The text up to its terminator or the end of the array.</summary>
        public static string Decode(byte[] text)
        {
            int end = Array.IndexOf(text, (byte)0);
            return Encoding.UTF8.GetString(text, 0, end < 0 ? text.Length : end);
        }

        internal static byte[] Encode([AllowNull] string text, string parameter)
        {
            return Terminated(Encoding.UTF8.GetBytes(text ?? ""), parameter);
        }

        internal static byte[] BytesAt(IntPtr text)
        {
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
                ++length;
            var bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return bytes;
        }

        internal static byte[] Terminated(byte[] text, string parameter)
        {
            if (Array.IndexOf(text, (byte)0) >= 0)
                throw new ArgumentException("it holds a zero character, at which the library would cut it", parameter);
            var terminated = new byte[text.Length + 1];
            text.CopyTo(terminated, 0);
            return terminated;
        }
    }
}
