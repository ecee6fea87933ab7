using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;

namespace Tarn
{
    /// <summary>Zero-terminated UTF-8 texts, the form of the library's 8-bit texts.</summary>
    public static class Utf8
    {
        /// <summary>The bytes of a text with their terminator; null for null.</summary>
        /// <exception cref="ArgumentException">The text holds a zero character, at which it would be cut.</exception>
        public static byte[] Encode(string text)
        {
            return text == null ? null : Terminated(Encoding.UTF8.GetBytes(text));
        }

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

        internal static byte[] BytesAt(IntPtr text)
        {
            int length = 0;
            while (Marshal.ReadByte(text, length) != 0)
                ++length;
            var bytes = new byte[length];
            Marshal.Copy(text, bytes, 0, length);
            return bytes;
        }

        internal static byte[] Terminated(byte[] text)
        {
            if (Array.IndexOf(text, (byte)0) >= 0)
                throw new ArgumentException("a text for the library holds a zero character, at which it would be cut");
            var terminated = new byte[text.Length + 1];
            text.CopyTo(terminated, 0);
            return terminated;
        }
    }

    /// <summary>
    /// A buffer that the library writes one text into. Its memory is not managed and not cleared, so what no text
    /// fills is never touched, however large the buffer is.
    /// </summary>
    /// <remarks>
    /// The library is told no sizes, so these are what keeps its writes inside the buffer. They are the largest texts
    /// that the daemon, a local program which is trusted with the user's mail, has reason to send, with plenty to
    /// spare. They count units: a text never has more UTF-16 units than UTF-8 bytes, so one size serves both forms.
    /// </remarks>
    internal sealed class TextBuffer : IDisposable
    {
        /// <summary>
        /// One value: an address, an id, a link, a key, a version. Also an encoded configuration, five bytes for each
        /// byte of a text that must fit the log.
        /// </summary>
        private const int ValueUnits = 1 << 20;
        /// <summary>A list or a whole text: recipients, locales, questions, message bodies.</summary>
        private const int TextUnits = 16 << 20;

        private readonly bool wide;

        private TextBuffer(long units, bool wide)
        {
            this.wide = wide;
            Memory = Marshal.AllocHGlobal(new IntPtr(wide ? 2 * units : units));
            Marshal.WriteInt16(Memory, 0);
        }

        public static TextBuffer Log() { return new TextBuffer(TarnRemoteClient.LogSize, false); }
        public static TextBuffer Value() { return new TextBuffer(ValueUnits, false); }
        public static TextBuffer WideValue() { return new TextBuffer(ValueUnits, true); }
        public static TextBuffer List() { return new TextBuffer(TextUnits, false); }
        public static TextBuffer WideList() { return new TextBuffer(TextUnits, true); }

        /// <summary>
        /// An envelope or a text around it: the message in base64 is 1.4 times as long, and in base64 within base64
        /// not yet twice.
        /// </summary>
        public static TextBuffer Envelope(long messageBytes)
        {
            return new TextBuffer(2 * messageBytes + ValueUnits, true);
        }

        public IntPtr Memory { get; private set; }

        /// <summary>What was written; an empty text when nothing was.</summary>
        public string Text { get { return wide ? Marshal.PtrToStringUni(Memory) : Utf8.Decode(Memory); } }

        public void Dispose()
        {
            Marshal.FreeHGlobal(Memory);
            Memory = IntPtr.Zero;
        }
    }

    /// <summary>An array of zero-terminated texts for the library to read.</summary>
    internal sealed class TextArray : IDisposable
    {
        private TextArray(IntPtr[] pointers) { Pointers = pointers; }

        public static TextArray OfUtf8(IEnumerable<string> texts)
        {
            // All conversions come first, since one may refuse its text.
            return new TextArray(texts.Select(text => Utf8.Encode(text ?? "")).ToList().Select(bytes =>
            {
                IntPtr copy = Marshal.AllocHGlobal(bytes.Length);
                Marshal.Copy(bytes, 0, copy, bytes.Length);
                return copy;
            }).ToArray());
        }

        public static TextArray OfWide(params string[] texts)
        {
            return new TextArray(Array.ConvertAll(texts, text => Marshal.StringToHGlobalUni(text ?? "")));
        }

        public IntPtr[] Pointers { get; }

        public void Dispose()
        {
            foreach (IntPtr text in Pointers)
                Marshal.FreeHGlobal(text);
        }
    }
}
