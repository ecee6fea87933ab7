using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    /// <summary>
    /// What the daemon can be asked for. <see cref="TarnClient"/> asks it; <see cref="TarnClientBlocking"/> has the
    /// same methods for callers that wait.
    /// </summary>
    /// <remarks>
    /// Arguments are checked before a method returns; a text with a zero character is an
    /// <see cref="ArgumentException"/>. Apart from what the methods name themselves, their tasks end with:
    /// <see cref="TarnUnavailableException"/>, no daemon listens;
    /// <see cref="TarnRefusedException"/>, the daemon answered with a status other than 0;
    /// <see cref="TarnExchangeException"/>, the exchange failed and no further calls can be made;
    /// <see cref="TarnBlockedException"/>, the call was not made because of an earlier one;
    /// <see cref="TimeoutException"/> and <see cref="OperationCanceledException"/>, the call was given up and no other
    /// one can be made until it returns.
    /// </remarks>
    public interface ITarnClient
    {
        /// <summary>Launches the daemon. Does not wait until it listens.</summary>
        /// <param name="jarPath">Path of its jar file, without spaces.</param>
        /// <param name="cancellation">Gives the call up.</param>
        /// <exception cref="TarnLaunchException">The system did not launch it.</exception>
        /// <exception cref="ArgumentException">The path cannot be written in the system's 8-bit encoding.</exception>
        /// <seealso cref="TarnRemoteClient.StartTarnDaemon"/>
        Task StartDaemonAsync(string jarPath, CancellationToken cancellation = default(CancellationToken));

        /// <summary>
        /// Returns once a daemon listens. Tries with connections of its own, since the library keeps the socket of each
        /// attempt that fails.
        /// </summary>
        /// <exception cref="TimeoutException">None listens within the limit.</exception>
        Task WaitForDaemonAsync(TimeSpan limit, CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks the daemon to stop and closes the connection.</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.StopTarnDaemon"/>
        Task StopDaemonAsync(CancellationToken cancellation = default(CancellationToken));

        /// <summary>The daemon's version and build.</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetTarnVersion"/>
        Task<string> GetVersionAsync(CancellationToken cancellation = default(CancellationToken));

        /// <summary>Logs a user in.</summary>
        /// <exception cref="ArgumentNullException">The address or the password is null.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.AuthenticateUser"/>
        Task AuthenticateAsync(string emailAddress, string password,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks the daemon to check the configuration that belongs to a sender.</summary>
        /// <exception cref="ArgumentNullException">The sender is null.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.VerifyLarchConfig"/>
        Task VerifyConfigAsync(string sender, CancellationToken cancellation = default(CancellationToken));

        /// <summary>Turns a MIME message into an encrypted envelope.</summary>
        /// <exception cref="ArgumentException">
        /// The request lacks something or has too many recipients; the parameter's name is that of its property.
        /// </exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.EncryptEnvelopeOnline"/>
        Task<Envelope> EncryptAsync(EncryptRequest request,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Decrypts an envelope.</summary>
        /// <exception cref="ArgumentException">The request lacks something.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.DecryptEnvelope"/>
        /// <seealso cref="TarnRemoteClient.GetNextDecryptedItemInfo"/>
        /// <seealso cref="TarnRemoteClient.GetNextDecryptedItem"/>
        Task<DecryptedMessage> DecryptAsync(DecryptRequest request,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks what keeps an envelope from being opened, without decrypting it.</summary>
        /// <remarks>A status is data here: none of a recipient's statuses means success.</remarks>
        /// <exception cref="ArgumentException">A recipient is null or holds a ";".</exception>
        /// <exception cref="TarnReplyException">A text in the answer holds the list delimiter.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetPayloadStatus"/>
        Task<PayloadStatus> GetPayloadStatusAsync(string envelope, IEnumerable<string> recipients,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks whom an envelope is for, without decrypting it.</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetRecipients"/>
        Task<EnvelopeRecipients> GetRecipientsAsync(string envelope,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Reads lock, status message and expiry of each recipient of an envelope.</summary>
        /// <remarks>
        /// The library logs a line for each recipient in the reply, so the envelope's recipients are counted first as
        /// by <see cref="GetRecipientsAsync"/>; more than about 380 are refused. Bcc recipients cannot be counted this
        /// way: ask for a message with hundreds of them through <see cref="GetEntriesAsync"/>.
        /// </remarks>
        /// <exception cref="ArgumentException">The envelope has too many recipients.</exception>
        /// <exception cref="TarnReplyException">A text in the answer holds the list delimiter.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetRecipients"/>
        /// <seealso cref="TarnRemoteClient.GetLockExpireStatus"/>
        Task<MessageTracking> GetTrackingAsync(string password, string envelope,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>
        /// Sets lock, status message and expiry of recipients of an envelope, one after the other. A failure leaves the
        /// recipients before it as they were set.
        /// </summary>
        /// <exception cref="ArgumentException">A status message holds the list delimiter.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.SetLockExpireStatus"/>
        Task SetTrackingAsync(string password, string envelope, IEnumerable<RecipientTracking> states,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Lists the tracking records of a user's sent messages, a page at a time.</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetRecipientEntries"/>
        Task<EntryPage> GetEntriesAsync(EntryQuery query, CancellationToken cancellation = default(CancellationToken));

        /// <summary>
        /// Sets lock, status message and expiry of those tracking records that field values select, by names such as
        /// "msgId" and "to". The expiry is the daemon's number, 0 for never.
        /// </summary>
        /// <exception cref="ArgumentException">The status message holds the list delimiter.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.SetRecipientEntries"/>
        Task SetEntriesAsync(string password, IReadOnlyDictionary<string, string> fields, bool locked,
            string statusMessage, long expiryDate, CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks what the key server can do.</summary>
        /// <remarks>
        /// The library logs the server's whole feature table; a table of 30,000 bytes and more ends the process.
        /// </remarks>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetKeyServerInfo"/>
        Task<KeyServerFeatures> GetKeyServerFeaturesAsync(CancellationToken cancellation = default(CancellationToken));

        /// <summary>The names of the locales that the key server has texts in, by locale.</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetSupportedLocales"/>
        Task<IReadOnlyDictionary<string, string>> GetLocalesAsync(
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>The texts of the mail that carries an envelope, in one locale; null is "en".</summary>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetLocalizedMessageBody"/>
        Task<MessageBody> GetMessageBodyAsync([AllowNull] string locale,
            CancellationToken cancellation = default(CancellationToken));

        /// <summary>Asks which enrollment form applies to an address.</summary>
        /// <exception cref="ArgumentNullException">The address or the key server is null.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.GetEnrollParameters"/>
        Task<EnrollmentForm> GetEnrollmentFormAsync(string emailAddress, string keyServer,
            [AllowNull] string locale = null, CancellationToken cancellation = default(CancellationToken));

        /// <summary>Sends a filled-in enrollment form.</summary>
        /// <returns>The daemon's answers, by name.</returns>
        /// <exception cref="ArgumentException">There are more than three questions or answers.</exception>
        /// <exception cref="TarnException">See the remarks on <see cref="ITarnClient"/>.</exception>
        /// <seealso cref="TarnRemoteClient.UserEnroll"/>
        Task<IReadOnlyDictionary<string, string>> EnrollAsync(Enrollment form,
            CancellationToken cancellation = default(CancellationToken));
    }

    /// <summary>
    /// The methods of <see cref="ITarnClient"/> for callers that wait. The client's time-out holds for them too.
    /// </summary>
    public static class TarnClientBlocking
    {
        /// <inheritdoc cref="ITarnClient.StartDaemonAsync"/>
        public static void StartDaemon(this ITarnClient client, string jarPath) =>
            client.StartDaemonAsync(jarPath).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.WaitForDaemonAsync"/>
        public static void WaitForDaemon(this ITarnClient client, TimeSpan limit) =>
            client.WaitForDaemonAsync(limit).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.StopDaemonAsync"/>
        public static void StopDaemon(this ITarnClient client) =>
            client.StopDaemonAsync().GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetVersionAsync"/>
        public static string GetVersion(this ITarnClient client) =>
            client.GetVersionAsync().GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.AuthenticateAsync"/>
        public static void Authenticate(this ITarnClient client, string emailAddress, string password) =>
            client.AuthenticateAsync(emailAddress, password).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.VerifyConfigAsync"/>
        public static void VerifyConfig(this ITarnClient client, string sender) =>
            client.VerifyConfigAsync(sender).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.EncryptAsync"/>
        public static Envelope Encrypt(this ITarnClient client, EncryptRequest request) =>
            client.EncryptAsync(request).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.DecryptAsync"/>
        public static DecryptedMessage Decrypt(this ITarnClient client, DecryptRequest request) =>
            client.DecryptAsync(request).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetPayloadStatusAsync"/>
        public static PayloadStatus GetPayloadStatus(this ITarnClient client, string envelope,
            IEnumerable<string> recipients) =>
            client.GetPayloadStatusAsync(envelope, recipients).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetRecipientsAsync"/>
        public static EnvelopeRecipients GetRecipients(this ITarnClient client, string envelope) =>
            client.GetRecipientsAsync(envelope).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetTrackingAsync"/>
        public static MessageTracking GetTracking(this ITarnClient client, string password, string envelope) =>
            client.GetTrackingAsync(password, envelope).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.SetTrackingAsync"/>
        public static void SetTracking(this ITarnClient client, string password, string envelope,
            IEnumerable<RecipientTracking> states) =>
            client.SetTrackingAsync(password, envelope, states).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetEntriesAsync"/>
        public static EntryPage GetEntries(this ITarnClient client, EntryQuery query) =>
            client.GetEntriesAsync(query).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.SetEntriesAsync"/>
        public static void SetEntries(this ITarnClient client, string password, IReadOnlyDictionary<string,
            string> fields, bool locked, string statusMessage, long expiryDate) =>
            client.SetEntriesAsync(password, fields, locked, statusMessage, expiryDate).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetKeyServerFeaturesAsync"/>
        public static KeyServerFeatures GetKeyServerFeatures(this ITarnClient client) =>
            client.GetKeyServerFeaturesAsync().GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetLocalesAsync"/>
        public static IReadOnlyDictionary<string, string> GetLocales(this ITarnClient client) =>
            client.GetLocalesAsync().GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetMessageBodyAsync"/>
        public static MessageBody GetMessageBody(this ITarnClient client, [AllowNull] string locale) =>
            client.GetMessageBodyAsync(locale).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.GetEnrollmentFormAsync"/>
        public static EnrollmentForm GetEnrollmentForm(this ITarnClient client, string emailAddress, string keyServer,
            [AllowNull] string locale = null) =>
            client.GetEnrollmentFormAsync(emailAddress, keyServer, locale).GetAwaiter().GetResult();

        /// <inheritdoc cref="ITarnClient.EnrollAsync"/>
        public static IReadOnlyDictionary<string, string> Enroll(this ITarnClient client, Enrollment form) =>
            client.EnrollAsync(form).GetAwaiter().GetResult();
    }
}
