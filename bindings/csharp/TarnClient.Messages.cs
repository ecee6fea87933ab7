using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        // Tells which decryption the items that the library holds come from.
        private static int lastDecryption;

        /// <summary>Turns a MIME message into an encrypted envelope.</summary>
        public Envelope Encrypt(EncryptRequest request)
        {
            byte[] to = JoinAddresses(request.To), cc = JoinAddresses(request.Cc), bcc = JoinAddresses(request.Bcc);
            byte[] from = Required(request.From, nameof(request.From)), password = Utf8.Encode(request.Password);
            byte[] mime = Utf8.Terminated(request.MimeMessage ?? new byte[0]);
            byte[] config = Utf8.Encode(request.EncodedConfig), loginFlag = Utf8.Encode(request.Login ? "1" : "0");
            var logged = request.To.Concat(request.Cc).Concat(request.Bcc)
                .Concat(new[] { request.From, ConfigFile, ConfigFile });
            using (var envelope = TextBuffer.Envelope(mime.Length))
            using (var textBody = TextBuffer.Envelope(mime.Length))
            using (var htmlBody = TextBuffer.Envelope(mime.Length))
            using (var attachmentName = TextBuffer.WideValue())
            {
                Run("EncryptEnvelopeOnline", logged, log => TarnRemoteClient.EncryptEnvelopeOnline(to, cc, bcc, from,
                    password, mime, Wide(ConfigFile), envelope.Memory, textBody.Memory, htmlBody.Memory,
                    attachmentName.Memory, config, loginFlag, log.Memory));
                return new Envelope
                {
                    Text = envelope.Text,
                    TextBody = textBody.Text,
                    HtmlBody = htmlBody.Text,
                    AttachmentName = attachmentName.Text
                };
            }
        }

        /// <summary>Decrypts an envelope. A status of 2, 17 or 200 means wrong credentials.</summary>
        public DecryptedMessage Decrypt(DecryptRequest request)
        {
            byte[] password = Required(request.Password, nameof(request.Password));
            byte[] envelopeText = Utf8.Encode(request.Envelope);
            byte[] recipient = Utf8.Encode(request.Recipient), sessionKey = Utf8.Encode(request.SessionKey);
            var logged = new[] { ConfigFile, request.Recipient, request.SessionKey };
            using (var config = TextBuffer.Value())
            using (var key = TextBuffer.WideValue())
            using (var sender = TextBuffer.WideValue())
            {
                int decryption = 0;
                Run("DecryptEnvelope", logged, log =>
                {
                    int status = TarnRemoteClient.DecryptEnvelope(password, envelopeText, Wide(ConfigFile), recipient,
                        sessionKey, config.Memory, (byte)(request.KeepOpen ? 1 : 0), key.Memory, sender.Memory,
                        log.Memory);
                    if (status == 0)
                        decryption = ++lastDecryption;
                    return status;
                });
                return new DecryptedMessage
                {
                    EncodedConfig = config.Text,
                    Key = key.Text,
                    Sender = sender.Text,
                    Items = ItemsOf(decryption)
                };
            }
        }

        /// <summary>Asks what keeps an envelope from being opened, without decrypting it.</summary>
        /// <remarks>A status is data here, since success is none of the answers.</remarks>
        public PayloadStatus GetPayloadStatus(string envelope, IEnumerable<string> recipients)
        {
            string[] asked = recipients.ToArray();
            byte[] envelopeText = Utf8.Encode(envelope), list = JoinAddresses(asked);
            using (var texts = TextBuffer.WideList())
            using (var enrollId = TextBuffer.Value())
            using (var sender = TextBuffer.Value())
            using (var codes = TextBuffer.List())
            {
                int sensitivity, status;
                lock (Gate)
                {
                    status = TarnRemoteClient.GetPayloadStatus(envelopeText, Wide(ConfigFile), list, texts.Memory,
                        enrollId.Memory, sender.Memory, codes.Memory, out sensitivity);
                    LastLog = "";
                }
                string[] statuses = codes.Text.Split(';'), statusTexts = SplitList(texts.Text);
                if (statuses[0].Length == 0 || statusTexts.Length != statuses.Length)
                    throw new TarnException("GetPayloadStatus", status, "", true);
                return new PayloadStatus
                {
                    Recipients = statuses.Select((code, i) => new RecipientStatus
                    {
                        Recipient = i < asked.Length ? asked[i] : "",
                        Status = int.Parse(code, CultureInfo.InvariantCulture),
                        Text = statusTexts[i]
                    }).ToList(),
                    EnrollmentId = enrollId.Text,
                    Sender = sender.Text,
                    Sensitivity = sensitivity
                };
            }
        }

        /// <summary>Asks whom an envelope is for, without decrypting it.</summary>
        public EnvelopeRecipients GetRecipients(string envelope)
        {
            byte[] envelopeText = Utf8.Encode(envelope);
            uint sensitivity = 0;
            using (var list = TextBuffer.WideList())
            {
                Run("GetRecipients", new string[0],
                    log => TarnRemoteClient.GetRecipients(envelopeText, list.Memory, ref sensitivity, log.Memory));
                string[] addresses = list.Text.Split(';');
                return new EnvelopeRecipients
                {
                    // A ";" follows each address, also the last one.
                    Addresses = addresses.Take(addresses.Length - 1).ToList(),
                    Sensitivity = unchecked((int)sensitivity)
                };
            }
        }

        private static IEnumerable<DecryptedItem> ItemsOf(int decryption)
        {
            DecryptedItem item;
            while ((item = NextItem(decryption)) != null)
                yield return item;
        }

        private static DecryptedItem NextItem(int decryption)
        {
            lock (Gate)
            {
                if (decryption != lastDecryption)
                    throw new InvalidOperationException("the library holds the items of another envelope by now");
                uint nameSize, contentTypeLength = 0, dataSize;
                if (TarnRemoteClient.GetNextDecryptedItemInfo(out nameSize, ref contentTypeLength, out dataSize) == 0)
                    return null;
                uint flags = 0, type = 0;
                var name = new byte[nameSize];
                var contentType = new byte[contentTypeLength + 1];
                var data = new byte[dataSize];
                TarnRemoteClient.GetNextDecryptedItem(ref flags, ref type, name, contentType, data);
                return new DecryptedItem
                {
                    Flags = flags,
                    Type = type,
                    Name = Utf8.Decode(name),
                    ContentType = Utf8.Decode(contentType),
                    Data = data
                };
            }
        }

        private static string[] SplitList(string text)
        {
            return text.Split(new[] { TarnRemoteClient.ListDelimiter }, StringSplitOptions.None);
        }
    }
}
