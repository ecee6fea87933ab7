using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Runtime.InteropServices;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        /// <summary>Reads lock, status message and expiry of each recipient of an envelope.</summary>
        /// <remarks>
        /// The library logs a line for each recipient in the reply, so the envelope's recipients are counted first with
        /// <see cref="GetRecipients"/>; more than about 380 are refused. Bcc recipients cannot be counted this way: a
        /// message with hundreds of them must not be asked for here but through <see cref="GetEntries"/>.
        /// </remarks>
        /// <exception cref="ArgumentException">The envelope has too many recipients.</exception>
        public MessageTracking GetTracking(string password, string envelope)
        {
            byte[] secret = Utf8.Encode(password), envelopeText = Utf8.Encode(envelope);
            using (var recipients = TextBuffer.List())
            using (var locks = TextBuffer.List())
            using (var messages = TextBuffer.WideList())
            using (var expiryDates = TextBuffer.List())
            using (var messageId = TextBuffer.Value())
            {
                uint count = 0;
                var logged = Enumerable.Repeat("", CountRecipients(envelope)).Concat(new[] { ConfigFile });
                Run("GetLockExpireStatus", logged, log => TarnRemoteClient.GetLockExpireStatus(secret, envelopeText,
                    Wide(ConfigFile), recipients.Memory, locks.Memory, messages.Memory, expiryDates.Memory,
                    messageId.Memory, ref count, log.Memory));
                string[][] lists = new[] { recipients, locks, messages, expiryDates }
                    .Select(list => count == 0 ? new string[0] : SplitList(list.Text)).ToArray();
                if (lists.Any(list => list.Length != count))
                    throw new TarnException("GetLockExpireStatus", 0, LastLog, true);
                return new MessageTracking
                {
                    MessageId = messageId.Text,
                    Recipients = Enumerable.Range(0, (int)count).Select(i => new RecipientTracking
                    {
                        Recipient = lists[0][i],
                        Locked = lists[1][i] == "1",
                        StatusMessage = lists[2][i],
                        ExpiryDate = long.Parse(lists[3][i], CultureInfo.InvariantCulture)
                    }).ToList()
                };
            }
        }

        /// <summary>
        /// Sets lock, status message and expiry of recipients of an envelope, one after the other. A failure leaves the
        /// recipients before it as they were set.
        /// </summary>
        public void SetTracking(string password, string envelope, IEnumerable<RecipientTracking> states)
        {
            byte[] secret = Utf8.Encode(password), envelopeText = Utf8.Encode(envelope);
            // A call for each recipient: its log stays small, and its status is that recipient's own.
            foreach (RecipientTracking state in states)
                using (var recipient = TextArray.OfUtf8(new[] { state.Recipient }))
                using (var message = TextArray.OfWide(Wide(state.StatusMessage)))
                    Run("SetLockExpireStatus", new[] { ConfigFile }, log => TarnRemoteClient.SetLockExpireStatus(secret,
                        envelopeText, Wide(ConfigFile), recipient.Pointers, new[] { state.Locked ? 1 : 0 },
                        message.Pointers, new[] { state.ExpiryDate }, 1, log.Memory));
        }

        /// <summary>Lists the tracking records of a user's sent messages, a page at a time.</summary>
        public EntryPage GetEntries(EntryQuery query)
        {
            byte[] user = Utf8.Encode(query.UserName), password = Utf8.Encode(query.Password);
            byte[] sortBy = Utf8.Encode(query.SortBy);
            uint maxResults = query.MaxResults, count = 0, total = 0;
            IntPtr entries = IntPtr.Zero;
            try
            {
                Run("GetRecipientEntries", new[] { ConfigFile }, log => TarnRemoteClient.GetRecipientEntries(user,
                    password, Wide(ConfigFile), out entries, query.StartAt, ref maxResults, out count, out total,
                    sortBy, (byte)(query.Ascending ? 1 : 0), log.Memory));
                return new EntryPage { Entries = ReadEntries(entries, count), TotalCount = total };
            }
            finally
            {
                TarnRemoteClient.ReleaseRecipientEntries(entries, count);
            }
        }

        /// <summary>
        /// Sets lock, status message and expiry of those tracking records that field values select, by names such as
        /// "msgId" and "to".
        /// </summary>
        public void SetEntries(string password, IReadOnlyDictionary<string, string> fields, bool locked,
            string statusMessage, long expiryDate)
        {
            byte[] secret = Utf8.Encode(password);
            using (var names = TextArray.OfUtf8(fields.Keys))
            using (var values = TextArray.OfUtf8(fields.Values))
                Run("SetRecipientEntries", new[] { ConfigFile }, log => TarnRemoteClient.SetRecipientEntries(secret,
                    Wide(ConfigFile), names.Pointers, values.Pointers, (uint)fields.Count, locked ? 1 : 0,
                    Wide(statusMessage), expiryDate, log.Memory));
        }

        private int CountRecipients(string envelope)
        {
            try
            {
                return GetRecipients(envelope).Addresses.Count;
            }
            catch (TarnException refusal) when (!refusal.ExchangeFailed)
            {
                return 0; // Then the answer to the question itself tells why.
            }
        }

        private static IReadOnlyList<RecipientEntry> ReadEntries(IntPtr entries, uint count)
        {
            int size = Marshal.SizeOf(typeof(TarnRecipientEntry));
            return Enumerable.Range(0, (int)count).Select(i =>
            {
                var entry = Marshal.PtrToStructure<TarnRecipientEntry>(new IntPtr(entries.ToInt64() + (long)i * size));
                return new RecipientEntry
                {
                    MessageId = ReadText(entry.messageId),
                    Recipient = ReadText(entry.recipient),
                    Subject = ReadText(entry.subject),
                    StatusMessage = ReadText(entry.statusMessage),
                    CreateDate = entry.createDate,
                    FirstOpenDate = entry.firstOpenDate,
                    LastModifiedDate = entry.lastModifiedDate,
                    ExpiryDate = entry.expiryDate,
                    NumTries = entry.numTries,
                    Flags = entry.flags
                };
            }).ToList();
        }

        private static string ReadText(IntPtr text)
        {
            return Marshal.PtrToStringUni(text) ?? "";
        }
    }
}
