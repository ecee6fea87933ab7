using System;
using System.Runtime.InteropServices;

namespace Tarn
{
    /// <summary>A buffer that the library writes one text into.</summary>
    internal sealed class TextBuffer : IDisposable
    {
        // What no text of the daemon begins with: half a character, which the library's conversion replaces, and a byte
        // that UTF-8 does not have.
        private const short UntouchedWide = unchecked((short)0xD800), UntouchedUtf8 = 0xFF;

        private readonly GuardedMemory memory;
        private readonly bool wide;

        private TextBuffer(long units, bool wide)
        {
            this.wide = wide;
            memory = GuardedMemory.Allocate(wide ? 2 * units : units);
            // Fresh memory is zero: the mark is a text of its own.
            Marshal.WriteInt16(Memory, wide ? UntouchedWide : UntouchedUtf8);
        }

        public static TextBuffer Log() { return new TextBuffer(TarnRemoteClient.LogSize, false); }
        public static TextBuffer Value() { return new TextBuffer(TarnBuffers.ValueUnits, false); }
        public static TextBuffer WideValue() { return new TextBuffer(TarnBuffers.ValueUnits, true); }
        public static TextBuffer List() { return new TextBuffer(TarnBuffers.TextUnits, false); }
        public static TextBuffer WideList() { return new TextBuffer(TarnBuffers.TextUnits, true); }
        public static TextBuffer OfBytes(long bytes) { return new TextBuffer(bytes, false); }

        /// <summary>The envelope of a message, or one of the texts that go with it.</summary>
        public static TextBuffer Envelope(long messageBytes)
        {
            return new TextBuffer(TarnBuffers.TextUnits + TarnBuffers.EnvelopeUnitsPerMessageByte * messageBytes, true);
        }

        public IntPtr Memory { get { return memory.Address; } }

        /// <summary>Whether the library wrote a text, an empty one included.</summary>
        public bool IsWritten
        {
            get
            {
                return wide
                    ? Marshal.ReadInt16(Memory) != UntouchedWide
                    : Marshal.ReadByte(Memory) != UntouchedUtf8 || Marshal.ReadByte(Memory, 1) != 0;
            }
        }

        /// <summary>What was written; an empty text when nothing was.</summary>
        public string Text
        {
            get { return !IsWritten ? "" : wide ? Marshal.PtrToStringUni(Memory) ?? "" : Utf8.Decode(Memory); }
        }

        public void Dispose() { memory.Dispose(); }
    }
}
