using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;

namespace Tarn
{
    /// <summary>Lock, status message and expiry of one recipient of one message.</summary>
    public sealed class RecipientTracking
    {
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; set; } = "";
        /// <summary>Whether the message is locked for the recipient.</summary>
        public bool Locked { get; set; }
        /// <summary>The sender's status message for the recipient.</summary>
        public string StatusMessage { get; set; } = "";
        /// <summary>From when on the message cannot be opened, in the daemon's unit; 0 for never.</summary>
        public long ExpiryDate { get; set; }
        /// <summary>
        /// <see cref="ExpiryDate"/> as milliseconds since 1970 UTC; null for never, and for a number that is no such
        /// date.
        /// </summary>
        public DateTimeOffset? Expires
        {
            get { return DaemonDate.From(ExpiryDate); }
            set { ExpiryDate = value?.ToUnixTimeMilliseconds() ?? 0; }
        }
    }

    /// <summary>The tracking state of one message.</summary>
    public sealed class MessageTracking
    {
        /// <summary>The message's id.</summary>
        public string MessageId { get; set; } = "";
        /// <summary>The state for each recipient.</summary>
        public IReadOnlyList<RecipientTracking> Recipients { get; set; } = new RecipientTracking[0];
    }

    /// <summary>Which tracking records to list.</summary>
    public sealed class EntryQuery
    {
        /// <summary>The sender whose messages are listed.</summary>
        public string UserName { get; set; } = "";
        /// <summary>The sender's password.</summary>
        public string Password { get; set; } = "";
        /// <summary>The index of the first record wanted, from 0.</summary>
        public uint StartAt { get; set; }
        /// <summary>How many records are wanted.</summary>
        public uint MaxResults { get; set; } = 100;
        /// <summary>The name of the field to sort by, such as "createDate"; or null.</summary>
        [AllowNull, MaybeNull] public string SortBy { get; set; }
        /// <summary>Whether the smallest value comes first.</summary>
        public bool Ascending { get; set; }
    }

    /// <summary>A record's flags; the daemon has others.</summary>
    [Flags]
    public enum EntryFlags
    {
        /// <summary>No flag is set.</summary>
        None = 0,
        /// <summary>The message is locked for the recipient.</summary>
        Locked = TarnRemoteClient.FlagLocked
    }

    /// <summary>A page of tracking records.</summary>
    public sealed class EntryPage
    {
        /// <summary>The records, one for each distinct pair of message id and recipient.</summary>
        public IReadOnlyList<RecipientEntry> Entries { get; set; } = new RecipientEntry[0];
        /// <summary>How many records there are in all.</summary>
        public uint TotalCount { get; set; }
    }

    /// <summary>
    /// What the daemon knows about one recipient of one sent message. Dates are the daemon's own numbers;
    /// beside each is the same as milliseconds since 1970 UTC, null for 0 and for a number that is no such date.
    /// </summary>
    public sealed class RecipientEntry
    {
        /// <summary>The message's id.</summary>
        public string MessageId { get; set; } = "";
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; set; } = "";
        /// <summary>The message's subject.</summary>
        public string Subject { get; set; } = "";
        /// <summary>The sender's status message for this recipient.</summary>
        public string StatusMessage { get; set; } = "";
        /// <summary>When the message was sent.</summary>
        public long CreateDate { get; set; }
        /// <summary>When the message was sent.</summary>
        public DateTimeOffset? Created { get { return DaemonDate.From(CreateDate); } }
        /// <summary>When this recipient first opened it, 0 for never.</summary>
        public long FirstOpenDate { get; set; }
        /// <summary>When this recipient first opened it, null for never.</summary>
        public DateTimeOffset? FirstOpened { get { return DaemonDate.From(FirstOpenDate); } }
        /// <summary>When this record last changed.</summary>
        public long LastModifiedDate { get; set; }
        /// <summary>When this record last changed.</summary>
        public DateTimeOffset? LastModified { get { return DaemonDate.From(LastModifiedDate); } }
        /// <summary>From when on the message cannot be opened, 0 for never.</summary>
        public long ExpiryDate { get; set; }
        /// <summary>From when on the message cannot be opened, null for never.</summary>
        public DateTimeOffset? Expires { get { return DaemonDate.From(ExpiryDate); } }
        /// <summary>How often this recipient tried to open it.</summary>
        public int NumTries { get; set; }
        /// <summary>The daemon's flags.</summary>
        public EntryFlags Flags { get; set; }
        /// <summary>Whether the message is locked for this recipient.</summary>
        public bool Locked { get { return (Flags & EntryFlags.Locked) != 0; } }
    }

    internal static class DaemonDate
    {
        private static readonly long First = DateTimeOffset.MinValue.ToUnixTimeMilliseconds();
        private static readonly long Last = DateTimeOffset.MaxValue.ToUnixTimeMilliseconds();

        public static DateTimeOffset? From(long milliseconds)
        {
            return milliseconds == 0 || milliseconds < First || milliseconds > Last
                ? (DateTimeOffset?)null
                : DateTimeOffset.FromUnixTimeMilliseconds(milliseconds);
        }
    }
}
