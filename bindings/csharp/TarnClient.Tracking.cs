using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        /// <inheritdoc/>
        public Task<MessageTracking> GetTrackingAsync(string password, string envelope,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetLockExpireStatus";
            byte[] secret = Arguments.RequiredUtf8(password, nameof(password));
            byte[] envelopeText = Arguments.RequiredUtf8(envelope, nameof(envelope));
            string config = CheckedConfigFile();
            return Call(call, () =>
            {
                OperationLog.RequireRoom(call, nameof(envelope),
                    Enumerable.Repeat("", CountRecipients(envelopeText)).Concat(new[] { config }));
                using (var recipients = TextBuffer.List())
                using (var locks = TextBuffer.List())
                using (var messages = TextBuffer.WideList())
                using (var expiryDates = TextBuffer.List())
                using (var messageId = TextBuffer.Value())
                {
                    uint count = 0;
                    int status = Logged(log => TarnRemoteClient.GetLockExpireStatus(secret, envelopeText, config,
                        recipients.Memory, locks.Memory, messages.Memory, expiryDates.Memory, messageId.Memory,
                        ref count, log));
                    Require(call, status, "", recipients, locks, messages, expiryDates, messageId);
                    string[][] lists = new[] { recipients, locks, messages, expiryDates }
                        .Select(list => count == 0 ? new string[0] : ListTexts.Split(list.Text)).ToArray();
                    if (lists.Any(list => list.Length != count))
                        throw new TarnReplyException(call, "a text in the answer holds the list delimiter", LastLog);
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
            }, cancellation);
        }

        private int CountRecipients(byte[] envelope)
        {
            try
            {
                return ReadRecipients(envelope).Addresses.Count;
            }
            catch (TarnRefusedException)
            {
                return 0; // Then the answer to the question itself tells why.
            }
        }

        /// <inheritdoc/>
        public Task SetTrackingAsync(string password, string envelope, IEnumerable<RecipientTracking> states,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "SetLockExpireStatus";
            byte[] secret = Arguments.RequiredUtf8(password, nameof(password));
            byte[] envelopeText = Arguments.RequiredUtf8(envelope, nameof(envelope));
            var checkedStates = Arguments.Required(states, nameof(states)).Select(state => new
            {
                Recipient = Arguments.ListItem(Arguments.Required(state, nameof(states)).Recipient, nameof(states)),
                Message = Arguments.ListItem(state.StatusMessage, nameof(states)),
                Locked = state.Locked ? 1 : 0,
                state.ExpiryDate
            }).ToList();
            string config = CheckedConfigFile();
            foreach (var state in checkedStates)
                OperationLog.RequireRoom(call, nameof(states), new[] { config, state.Recipient, state.Message });
            return Call(call, () =>
            {
                // A call for each recipient: its log stays small, and its status is that recipient's own.
                foreach (var state in checkedStates)
                    using (var recipient = new TextArray(Encoding.UTF8, state.Recipient))
                    using (var message = new TextArray(Encoding.Unicode, state.Message))
                        Require(call, Logged(log => TarnRemoteClient.SetLockExpireStatus(secret, envelopeText, config,
                            recipient.Pointers, new[] { state.Locked }, message.Pointers, new[] { state.ExpiryDate }, 1,
                            log)));
                return true;
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<EntryPage> GetEntriesAsync(EntryQuery query,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetRecipientEntries";
            Arguments.Required(query, nameof(query));
            byte[] user = Arguments.RequiredUtf8(query.UserName, nameof(query.UserName));
            byte[] password = Arguments.RequiredUtf8(query.Password, nameof(query.Password));
            byte[] sortBy = Utf8.Encode(query.SortBy, nameof(query.SortBy));
            uint startAt = query.StartAt, maxResults = query.MaxResults;
            byte ascending = (byte)(query.Ascending ? 1 : 0);
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(query), new[] { config, query.UserName, query.SortBy ?? "" });
            return Call(call, () =>
            {
                IntPtr entries = IntPtr.Zero;
                uint count = 0, total = 0;
                try
                {
                    int status = Logged(log => TarnRemoteClient.GetRecipientEntries(user, password, config, out entries,
                        startAt, ref maxResults, out count, out total, sortBy, ascending, log));
                    Require(call, status == 0 && entries == IntPtr.Zero ? (int)TarnStatus.None : status);
                    return new EntryPage { Entries = ReadEntries(entries, count), TotalCount = total };
                }
                finally
                {
                    TarnRemoteClient.ReleaseRecipientEntries(entries, count);
                }
            }, cancellation);
        }

        private static IReadOnlyList<RecipientEntry> ReadEntries(IntPtr entries, uint count)
        {
            return Enumerable.Range(0, (int)count).Select(i =>
            {
                TarnRecipientEntry entry = TarnRemoteClient.ReadEntry(entries, (uint)i);
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
                    Flags = (EntryFlags)entry.flags
                };
            }).ToList();
        }

        private static string ReadText(IntPtr text) { return Marshal.PtrToStringUni(text) ?? ""; }

        /// <inheritdoc/>
        public Task SetEntriesAsync(string password, IReadOnlyDictionary<string, string> fields, bool locked,
            string statusMessage, long expiryDate, CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "SetRecipientEntries";
            byte[] secret = Arguments.RequiredUtf8(password, nameof(password));
            string[] keys = Arguments.Required(fields, nameof(fields)).Keys.ToArray();
            string[] texts = keys.Concat(keys.Select(key => fields[key]))
                .Select(text => Arguments.Wide(text, nameof(fields))).ToArray();
            string message = Arguments.ListItem(statusMessage, nameof(statusMessage)), config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(fields), texts.Concat(new[] { config, message }));
            return Call(call, () =>
            {
                using (var names = new TextArray(Encoding.UTF8, texts.Take(keys.Length).ToArray()))
                using (var values = new TextArray(Encoding.UTF8, texts.Skip(keys.Length).ToArray()))
                    Require(call, Logged(log => TarnRemoteClient.SetRecipientEntries(secret, config, names.Pointers,
                        values.Pointers, (uint)keys.Length, locked ? 1 : 0, message, expiryDate, log)));
                return true;
            }, cancellation);
        }
    }
}
