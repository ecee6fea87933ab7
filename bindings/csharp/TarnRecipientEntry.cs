using System;
using System.Runtime.InteropServices;

namespace Tarn
{
    /// <summary>
    /// One tracking record as the library lays it out: 72 bytes in 32-bit and 64-bit processes alike, each text a
    /// pointer in a slot of 8 bytes. The texts are UTF-16 in task memory, to be released by whoever owns the record.
    /// </summary>
    [StructLayout(LayoutKind.Explicit, Size = 72)]
    public struct TarnRecipientEntry
    {
        /// <summary>When the message was sent.</summary>
        [FieldOffset(0)] public long createDate;
        /// <summary>When this recipient first opened it, 0 for never.</summary>
        [FieldOffset(8)] public long firstOpenDate;
        /// <summary>When this record last changed.</summary>
        [FieldOffset(16)] public long lastModifiedDate;
        /// <summary>From when on the message cannot be opened, 0 for never.</summary>
        [FieldOffset(24)] public long expiryDate;
        /// <summary>How often this recipient tried to open it.</summary>
        [FieldOffset(32)] public int numTries;
        /// <summary><see cref="TarnRemoteClient.FlagLocked"/> and others of the daemon's.</summary>
        [FieldOffset(36)] public int flags;
        /// <summary>The message's subject.</summary>
        [FieldOffset(40)] public IntPtr subject;
        /// <summary>The recipient's address.</summary>
        [FieldOffset(48)] public IntPtr recipient;
        /// <summary>The sender's status message for this recipient.</summary>
        [FieldOffset(56)] public IntPtr statusMessage;
        /// <summary>The message's id.</summary>
        [FieldOffset(64)] public IntPtr messageId;
    }
}
