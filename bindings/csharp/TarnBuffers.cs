using System;

namespace Tarn
{
    /// <summary>
    /// The sizes of the buffers that the library writes texts into. The library is told no sizes: a text that is larger
    /// than its buffer ends the process, at the inaccessible page after it.
    /// </summary>
    /// <remarks>
    /// Sizes count units: one byte of a UTF-8 text, two bytes of a UTF-16 text. A buffer exists while its call runs.
    /// On 64-bit Linux the defaults are what a reply can hold, since only the pages that a text fills are taken. On
    /// Windows a buffer is committed as a whole, so there the defaults are smaller, and smaller still in a 32-bit
    /// process.
    /// </remarks>
    public static class TarnBuffers
    {
        private static readonly bool Small = IntPtr.Size == 4, Lazy = !Small && !NativeLibraryLoader.IsWindows;
        private static long value = Lazy ? 1L << 31 : Small ? 128 << 10 : 1 << 20;
        private static long text = Lazy ? 1L << 31 : Small ? 2 << 20 : 16 << 20;
        private static long perMessageByte = Lazy ? 0 : Small ? 2 : 8;

        /// <summary>
        /// For one value: an address, an id, a link, a key, a version, an encoded configuration. Default: 1 Mi on
        /// Windows, 128 Ki in a 32-bit process.
        /// </summary>
        /// <exception cref="ArgumentOutOfRangeException">The number set is less than 1.</exception>
        public static long ValueUnits { get { return value; } set { TarnBuffers.value = AtLeast(1, value); } }

        /// <summary>
        /// For a list or a whole text: recipients, locales, questions, message bodies. Default: 16 Mi on Windows, 2 Mi
        /// in a 32-bit process.
        /// </summary>
        /// <exception cref="ArgumentOutOfRangeException">The number set is less than 1.</exception>
        public static long TextUnits { get { return text; } set { text = AtLeast(1, value); } }

        /// <summary>
        /// What each of the three texts of an envelope gets for each byte of its message, besides
        /// <see cref="TextUnits"/>. Default: 8 on Windows, 2 in a 32-bit process, 0 on 64-bit Linux.
        /// </summary>
        /// <exception cref="ArgumentOutOfRangeException">The number set is negative.</exception>
        public static long EnvelopeUnitsPerMessageByte
        {
            get { return perMessageByte; }
            set { perMessageByte = AtLeast(0, value); }
        }

        private static long AtLeast(long minimum, long value)
        {
            return value >= minimum ? value : throw new ArgumentOutOfRangeException(nameof(value));
        }
    }
}
