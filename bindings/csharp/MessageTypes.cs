using System.Collections.Generic;

namespace Tarn
{
    /// <summary>A message to encrypt.</summary>
    public sealed class EncryptRequest
    {
        /// <summary>The To recipients.</summary>
        public IList<string> To { get; } = new List<string>();
        /// <summary>The Cc recipients.</summary>
        public IList<string> Cc { get; } = new List<string>();
        /// <summary>The Bcc recipients.</summary>
        public IList<string> Bcc { get; } = new List<string>();
        /// <summary>The sender's address, also the user name of the login.</summary>
        public string From { get; set; }
        /// <summary>The sender's password, used by the login alone.</summary>
        public string Password { get; set; }
        /// <summary>The whole MIME message, without zero bytes.</summary>
        public byte[] MimeMessage { get; set; }
        /// <summary>
        /// A configuration from <see cref="DecryptedMessage.EncodedConfig"/>, which stands for the login; or null.
        /// </summary>
        public string EncodedConfig { get; set; }
        /// <summary>Whether to log in first.</summary>
        public bool Login { get; set; } = true;
    }

    /// <summary>An encrypted message.</summary>
    public sealed class Envelope
    {
        /// <summary>The envelope itself, which is sent as an attachment.</summary>
        public string Text { get; internal set; }
        /// <summary>The plain text that stands around it.</summary>
        public string TextBody { get; internal set; }
        /// <summary>The HTML text that stands around it.</summary>
        public string HtmlBody { get; internal set; }
        /// <summary>The attachment's name.</summary>
        public string AttachmentName { get; internal set; }
    }

    /// <summary>An envelope to decrypt.</summary>
    public sealed class DecryptRequest
    {
        /// <summary>The envelope.</summary>
        public string Envelope { get; set; }
        /// <summary>The recipient's address, or null.</summary>
        public string Recipient { get; set; }
        /// <summary>The recipient's password; may be empty.</summary>
        public string Password { get; set; } = "";
        /// <summary>The key of a message that was kept open, or null. It is written to the log.</summary>
        public string SessionKey { get; set; }
        /// <summary>Whether the daemon is to keep the message open for its session key.</summary>
        public bool KeepOpen { get; set; }
    }

    /// <summary>A decrypted message.</summary>
    public sealed class DecryptedMessage
    {
        /// <summary>The envelope's configuration, for <see cref="EncryptRequest.EncodedConfig"/> of a reply.</summary>
        public string EncodedConfig { get; internal set; }
        /// <summary>The payload's key.</summary>
        public string Key { get; internal set; }
        /// <summary>The sender's address.</summary>
        public string Sender { get; internal set; }
        /// <summary>
        /// The items, handed out one by one and each of them once: enumerating again goes on behind the last one that
        /// was handed out. The library holds the items of one message; once another is decrypted, enumerating fails
        /// with an <see cref="System.InvalidOperationException"/>.
        /// </summary>
        public IEnumerable<DecryptedItem> Items { get; internal set; }
    }

    /// <summary>One item of a decrypted message: a body or an attachment.</summary>
    public sealed class DecryptedItem
    {
        /// <summary>The item's flags, the daemon's number.</summary>
        public uint Flags { get; internal set; }
        /// <summary>The item's type, the daemon's number.</summary>
        public uint Type { get; internal set; }
        /// <summary>The item's name.</summary>
        public string Name { get; internal set; }
        /// <summary>The item's content type.</summary>
        public string ContentType { get; internal set; }
        /// <summary>The item's bytes.</summary>
        public byte[] Data { get; internal set; }
    }

    /// <summary>What keeps an envelope from being opened, recipient by recipient.</summary>
    public sealed class PayloadStatus
    {
        /// <summary>
        /// One status for each recipient that was asked for. A status that ends the inquiry is the last one, so there
        /// can be fewer than recipients given.
        /// </summary>
        public IReadOnlyList<RecipientStatus> Recipients { get; internal set; }
        /// <summary>The enrollment id of the last recipient in status 11 or 25; else empty.</summary>
        public string EnrollmentId { get; internal set; }
        /// <summary>The sender's address, if there is a recipient in status 11 or 25; else empty.</summary>
        public string Sender { get; internal set; }
        /// <summary>The message's sensitivity, -1 for unknown.</summary>
        public int Sensitivity { get; internal set; }
    }

    /// <summary>The status of an envelope for one recipient.</summary>
    public sealed class RecipientStatus
    {
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; internal set; }
        /// <summary>The status code.</summary>
        public int Status { get; internal set; }
        /// <summary>For 11 and 25 a link, for 20 a message, for 18 the seconds to wait; else empty.</summary>
        public string Text { get; internal set; }
    }

    /// <summary>Whom an envelope is for.</summary>
    public sealed class EnvelopeRecipients
    {
        /// <summary>The To and then the Cc recipients.</summary>
        public IReadOnlyList<string> Addresses { get; internal set; }
        /// <summary>The message's sensitivity.</summary>
        public int Sensitivity { get; internal set; }
    }
}
