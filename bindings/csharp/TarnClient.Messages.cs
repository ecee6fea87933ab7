using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        private const int LongestStatusCode = 7; // with its sign and the ";" after it

        /// <inheritdoc/>
        public Task<Envelope> EncryptAsync(EncryptRequest request,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "EncryptEnvelopeOnline";
            Arguments.Required(request, nameof(request));
            string[] to = Arguments.Addresses(request.To, nameof(request.To));
            string[] cc = Arguments.Addresses(request.Cc, nameof(request.Cc));
            string[] bcc = Arguments.Addresses(request.Bcc, nameof(request.Bcc));
            string config = CheckedConfigFile();
            byte[] from = Arguments.RequiredUtf8(request.From, nameof(request.From));
            bool login = request.Login && string.IsNullOrEmpty(request.EncodedConfig);
            byte[] password = login
                ? Arguments.RequiredUtf8(request.Password, nameof(request.Password))
                : Utf8.Encode("");
            byte[] mime = Utf8.Terminated(
                request.MimeMessage ?? throw new ArgumentNullException(nameof(request.MimeMessage)),
                nameof(request.MimeMessage));
            byte[] encodedConfig = Utf8.Encode(request.EncodedConfig, nameof(request.EncodedConfig));
            OperationLog.RequireRoom(call, nameof(request.To),
                to.Concat(cc).Concat(bcc).Concat(new[] { request.From ?? "", config, config }));
            return Call(call, () =>
            {
                using (var envelope = TextBuffer.Envelope(mime.Length))
                using (var textBody = TextBuffer.Envelope(mime.Length))
                using (var htmlBody = TextBuffer.Envelope(mime.Length))
                using (var attachmentName = TextBuffer.WideValue())
                {
                    int status = Logged(log => TarnRemoteClient.EncryptEnvelopeOnline(Arguments.Joined(to),
                        Arguments.Joined(cc), Arguments.Joined(bcc), from, password, mime, config, envelope.Memory,
                        textBody.Memory, htmlBody.Memory, attachmentName.Memory, encodedConfig,
                        Utf8.Encode(login ? "1" : "0"), log));
                    // A failure after a login leaves the login's status 0, and the outputs unwritten.
                    Require(call, status, "", envelope, textBody, htmlBody, attachmentName);
                    return new Envelope
                    {
                        Text = envelope.Text,
                        TextBody = textBody.Text,
                        HtmlBody = htmlBody.Text,
                        AttachmentName = attachmentName.Text
                    };
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<DecryptedMessage> DecryptAsync(DecryptRequest request,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "DecryptEnvelope";
            Arguments.Required(request, nameof(request));
            byte[] envelope = Arguments.RequiredUtf8(request.Envelope, nameof(request.Envelope));
            byte[] password = Arguments.RequiredUtf8(request.Password, nameof(request.Password));
            byte[] recipient = Utf8.Encode(request.Recipient, nameof(request.Recipient));
            byte[] sessionKey = Utf8.Encode(request.SessionKey, nameof(request.SessionKey));
            byte keepOpen = (byte)(request.KeepOpen ? 1 : 0);
            string configFile = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(request),
                new[] { configFile, request.Recipient ?? "", request.SessionKey ?? "" });
            return Call(call, () =>
            {
                using (var config = TextBuffer.Value())
                using (var key = TextBuffer.WideValue())
                using (var sender = TextBuffer.WideValue())
                {
                    int status = Logged(log => TarnRemoteClient.DecryptEnvelope(password, envelope, configFile,
                        recipient, sessionKey, config.Memory, keepOpen, key.Memory, sender.Memory, log));
                    Require(call, status, "", config, key, sender);
                    return new DecryptedMessage
                    {
                        EncodedConfig = config.Text,
                        Key = key.Text,
                        Sender = sender.Text,
                        Items = ReadItems().ToList()
                    };
                }
            }, cancellation);
        }

        private static IEnumerable<DecryptedItem> ReadItems()
        {
            uint contentTypeLength = 0, flags = 0, type = 0;
            while (TarnRemoteClient.GetNextDecryptedItemInfo(out uint nameSize, ref contentTypeLength,
                out uint dataSize) != 0)
            {
                var name = new byte[nameSize];
                var contentType = new byte[contentTypeLength + 1];
                var data = new byte[dataSize];
                TarnRemoteClient.GetNextDecryptedItem(ref flags, ref type, name, contentType, data);
                yield return new DecryptedItem
                {
                    Flags = (ItemFlags)flags,
                    Type = (ItemType)type,
                    Name = Utf8.Decode(name),
                    ContentType = Utf8.Decode(contentType),
                    Data = data
                };
            }
        }

        /// <inheritdoc/>
        public Task<PayloadStatus> GetPayloadStatusAsync(string envelope, IEnumerable<string> recipients,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetPayloadStatus";
            byte[] envelopeText = Arguments.RequiredUtf8(envelope, nameof(envelope));
            string[] asked = Arguments.Addresses(recipients, nameof(recipients));
            string config = CheckedConfigFile();
            return Call(call, () =>
            {
                using (var texts = TextBuffer.WideList())
                using (var enrollId = TextBuffer.Value())
                using (var sender = TextBuffer.Value())
                using (var codes = TextBuffer.OfBytes(LongestStatusCode * (asked.Length + 1L)))
                {
                    int status = TarnRemoteClient.GetPayloadStatus(envelopeText, config, Arguments.Joined(asked),
                        texts.Memory, enrollId.Memory, sender.Memory, codes.Memory, out int sensitivity);
                    LastLog = "";
                    if (status == (int)TarnStatus.None || !texts.IsWritten || !codes.IsWritten)
                        throw new TarnExchangeException(call, 0);
                    string[] statuses = codes.Text.Split(';'), statusTexts = ListTexts.Split(texts.Text);
                    if (statusTexts.Length != statuses.Length)
                        throw new TarnReplyException(call, "a text in the answer holds the list delimiter");
                    return new PayloadStatus
                    {
                        Recipients = statuses.Select((code, i) => new RecipientStatus
                        {
                            Recipient = i < asked.Length ? asked[i] : "",
                            Status = (TarnStatus)int.Parse(code, CultureInfo.InvariantCulture),
                            Text = statusTexts[i]
                        }).ToList(),
                        EnrollmentId = enrollId.Text,
                        Sender = sender.Text,
                        Sensitivity = sensitivity
                    };
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<EnvelopeRecipients> GetRecipientsAsync(string envelope,
            CancellationToken cancellation = default(CancellationToken))
        {
            byte[] envelopeText = Arguments.RequiredUtf8(envelope, nameof(envelope));
            return Call("GetRecipients", () => ReadRecipients(envelopeText), cancellation);
        }

        private EnvelopeRecipients ReadRecipients(byte[] envelope)
        {
            uint sensitivity = 0;
            using (var list = TextBuffer.WideList())
            {
                int status = Logged(log =>
                    TarnRemoteClient.GetRecipients(envelope, list.Memory, ref sensitivity, log));
                Require("GetRecipients", status, "", list);
                string[] addresses = list.Text.Split(';');
                return new EnvelopeRecipients
                {
                    // A ";" follows each address, also the last one.
                    Addresses = addresses.Take(addresses.Length - 1).ToList(),
                    Sensitivity = unchecked((int)sensitivity)
                };
            }
        }
    }
}
