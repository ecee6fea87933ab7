using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;

namespace Tarn
{
    /// <summary>An array of zero-terminated texts for the library to read.</summary>
    internal sealed class TextArray : IDisposable
    {
        private GCHandle block;

        public TextArray(Encoding encoding, params string[] texts)
        {
            var encoded = texts.Select(text => encoding.GetBytes(text + "\0")).ToList();
            block = GCHandle.Alloc(encoded.SelectMany(bytes => bytes).ToArray(), GCHandleType.Pinned);
            long next = block.AddrOfPinnedObject().ToInt64();
            Pointers = new IntPtr[texts.Length];
            for (int i = 0; i < texts.Length; next += encoded[i++].Length)
                Pointers[i] = new IntPtr(next);
        }

        public IntPtr[] Pointers { get; }

        public void Dispose() { block.Free(); }
    }
}
