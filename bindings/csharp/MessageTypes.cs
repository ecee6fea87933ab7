using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;

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
        [AllowNull, MaybeNull] public string From { get; set; }
        /// <summary>The sender's password; used by the login alone, and then not null.</summary>
        [AllowNull, MaybeNull] public string Password { get; set; }
        /// <summary>The whole MIME message, without zero bytes.</summary>
        [AllowNull, MaybeNull] public byte[] MimeMessage { get; set; }
        /// <summary>
        /// A configuration from <see cref="DecryptedMessage.EncodedConfig"/>, which makes a login unnecessary; or null.
        /// </summary>
        [AllowNull, MaybeNull] public string EncodedConfig { get; set; }
        /// <summary>Whether to log in first.</summary>
        public bool Login { get; set; } = true;
    }

    /// <summary>An encrypted message.</summary>
    public sealed class Envelope
    {
        /// <summary>The envelope itself, which is sent as an attachment.</summary>
        public string Text { get; set; } = "";
        /// <summary>The plain text of the mail that carries it.</summary>
        public string TextBody { get; set; } = "";
        /// <summary>The HTML text of that mail.</summary>
        public string HtmlBody { get; set; } = "";
        /// <summary>The attachment's name.</summary>
        public string AttachmentName { get; set; } = "";
    }

    /// <summary>An envelope to decrypt.</summary>
    public sealed class DecryptRequest
    {
        /// <summary>The envelope.</summary>
        [AllowNull, MaybeNull] public string Envelope { get; set; }
        /// <summary>The recipient's address, or null.</summary>
        [AllowNull, MaybeNull] public string Recipient { get; set; }
        /// <summary>The recipient's password; may be empty.</summary>
        public string Password { get; set; } = "";
        /// <summary>The key of a message that was kept open, or null. It is written to the log.</summary>
        [AllowNull, MaybeNull] public string SessionKey { get; set; }
        /// <summary>Whether the daemon is to keep the message open for its session key.</summary>
        public bool KeepOpen { get; set; }
    }

    /// <summary>A decrypted message.</summary>
    public sealed class DecryptedMessage
    {
        /// <summary>The envelope's configuration, for <see cref="EncryptRequest.EncodedConfig"/> of a reply.</summary>
        public string EncodedConfig { get; set; } = "";
        /// <summary>The payload's key.</summary>
        public string Key { get; set; } = "";
        /// <summary>The sender's address.</summary>
        public string Sender { get; set; } = "";
        /// <summary>Its bodies and attachments.</summary>
        public IReadOnlyList<DecryptedItem> Items { get; set; } = new DecryptedItem[0];
    }

    /// <summary>What an item is. The daemon gives the numbers their meaning; others can occur.</summary>
    public enum ItemType : uint
    {
        /// <summary>A body of the message.</summary>
        Body = 1,
        /// <summary>An attachment.</summary>
        Attachment = 2
    }

    /// <summary>An item's flags. The daemon gives them their meaning; others can occur.</summary>
    [Flags]
    public enum ItemFlags : uint
    {
        /// <summary>No flag is set.</summary>
        None = 0,
        /// <summary>It is shown within the message.</summary>
        Inline = 1,
        /// <summary>It had no name and was given one.</summary>
        NameMadeUp = 2
    }

    /// <summary>One item of a decrypted message: a body or an attachment.</summary>
    public sealed class DecryptedItem
    {
        /// <summary>The item's flags.</summary>
        public ItemFlags Flags { get; set; }
        /// <summary>The item's type.</summary>
        public ItemType Type { get; set; }
        /// <summary>The item's name.</summary>
        public string Name { get; set; } = "";
        /// <summary>The item's content type.</summary>
        public string ContentType { get; set; } = "";
        /// <summary>The item's bytes.</summary>
        public byte[] Data { get; set; } = new byte[0];
    }

    /// <summary>What keeps an envelope from being opened, recipient by recipient.</summary>
    public sealed class PayloadStatus
    {
        /// <summary>
        /// One status for each recipient that was asked for. A status that ends the inquiry is the last one, so there
        /// can be fewer than recipients given.
        /// </summary>
        public IReadOnlyList<RecipientStatus> Recipients { get; set; } = new RecipientStatus[0];
        /// <summary>The enrollment id of the last recipient in status 11 or 25; else empty.</summary>
        public string EnrollmentId { get; set; } = "";
        /// <summary>The sender's address, if there is a recipient in status 11 or 25; else empty.</summary>
        public string Sender { get; set; } = "";
        /// <summary>The message's sensitivity, -1 for unknown.</summary>
        public int Sensitivity { get; set; }
    }

    /// <summary>The status of an envelope for one recipient.</summary>
    public sealed class RecipientStatus
    {
        /// <summary>The recipient's address.</summary>
        public string Recipient { get; set; } = "";
        /// <summary>The status code.</summary>
        public TarnStatus Status { get; set; }
        /// <summary>A text for the user (11, 25), a message (20), the seconds to wait (18); else empty.</summary>
        public string Text { get; set; } = "";
    }

    /// <summary>Whom an envelope is for.</summary>
    public sealed class EnvelopeRecipients
    {
        /// <summary>The To and then the Cc recipients.</summary>
        public IReadOnlyList<string> Addresses { get; set; } = new string[0];
        /// <summary>The message's sensitivity.</summary>
        public int Sensitivity { get; set; }
    }
}
