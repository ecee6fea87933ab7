using System.Collections.Generic;

namespace Tarn
{
    /// <summary>Lock, status message and expiry of one recipient of one message.</summary>
    public sealed class RecipientTracking
    {
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; set; }
        /// <summary>Whether the message is locked for the recipient.</summary>
        public bool Locked { get; set; }
        /// <summary>The sender's status message for the recipient.</summary>
        public string StatusMessage { get; set; }
        /// <summary>From when on the message cannot be opened, in the daemon's unit; 0 for never.</summary>
        public long ExpiryDate { get; set; }
    }

    /// <summary>The tracking state of one message.</summary>
    public sealed class MessageTracking
    {
        /// <summary>The message's id.</summary>
        public string MessageId { get; internal set; }
        /// <summary>The state for each recipient.</summary>
        public IReadOnlyList<RecipientTracking> Recipients { get; internal set; }
    }

    /// <summary>Which tracking records to list.</summary>
    public sealed class EntryQuery
    {
        /// <summary>The sender whose messages are listed.</summary>
        public string UserName { get; set; }
        /// <summary>The sender's password.</summary>
        public string Password { get; set; }
        /// <summary>The index of the first record wanted, from 0.</summary>
        public uint StartAt { get; set; }
        /// <summary>How many records are wanted.</summary>
        public uint MaxResults { get; set; } = 100;
        /// <summary>The name of the field to sort by, such as "createDate"; or null.</summary>
        public string SortBy { get; set; }
        /// <summary>Whether the smallest value comes first.</summary>
        public bool Ascending { get; set; }
    }

    /// <summary>A page of tracking records.</summary>
    public sealed class EntryPage
    {
        /// <summary>The records, one for each distinct pair of message id and recipient.</summary>
        public IReadOnlyList<RecipientEntry> Entries { get; internal set; }
        /// <summary>How many records there are in all.</summary>
        public uint TotalCount { get; internal set; }
    }

    /// <summary>
    /// What the daemon knows about one recipient of one sent message. Dates are the daemon's own numbers.
    /// </summary>
    public sealed class RecipientEntry
    {
        /// <summary>The message's id.</summary>
        public string MessageId { get; internal set; }
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; internal set; }
        /// <summary>The message's subject.</summary>
        public string Subject { get; internal set; }
        /// <summary>The sender's status message for this recipient.</summary>
        public string StatusMessage { get; internal set; }
        /// <summary>When the message was sent.</summary>
        public long CreateDate { get; internal set; }
        /// <summary>When this recipient first opened it, 0 for never.</summary>
        public long FirstOpenDate { get; internal set; }
        /// <summary>When this record last changed.</summary>
        public long LastModifiedDate { get; internal set; }
        /// <summary>From when on the message cannot be opened, 0 for never.</summary>
        public long ExpiryDate { get; internal set; }
        /// <summary>How often this recipient tried to open it.</summary>
        public int NumTries { get; internal set; }
        /// <summary>The daemon's flags.</summary>
        public int Flags { get; internal set; }
        /// <summary>Whether the message is locked for this recipient.</summary>
        public bool Locked { get { return (Flags & TarnRemoteClient.FlagLocked) != 0; } }
    }
}
