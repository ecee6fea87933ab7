using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;

namespace Tarn
{
    /// <summary>
    /// The methods of <see cref="ITarnClient"/> for callers that wait. The client's time-out holds for them too.
    /// </summary>
    public static class TarnClientBlocking
    {
        /// <inheritdoc cref="ITarnClient.StartDaemonAsync"/>
        public static void StartDaemon(this ITarnClient client, string jarPath)
        {
            client.StartDaemonAsync(jarPath).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.WaitForDaemonAsync"/>
        public static void WaitForDaemon(this ITarnClient client, TimeSpan limit)
        {
            client.WaitForDaemonAsync(limit).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.StopDaemonAsync"/>
        public static void StopDaemon(this ITarnClient client)
        {
            client.StopDaemonAsync().GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetVersionAsync"/>
        public static string GetVersion(this ITarnClient client)
        {
            return client.GetVersionAsync().GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.AuthenticateAsync"/>
        public static void Authenticate(this ITarnClient client, string emailAddress, string password)
        {
            client.AuthenticateAsync(emailAddress, password).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.VerifyConfigAsync"/>
        public static void VerifyConfig(this ITarnClient client, string sender)
        {
            client.VerifyConfigAsync(sender).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.EncryptAsync"/>
        public static Envelope Encrypt(this ITarnClient client, EncryptRequest request)
        {
            return client.EncryptAsync(request).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.DecryptAsync"/>
        public static DecryptedMessage Decrypt(this ITarnClient client, DecryptRequest request)
        {
            return client.DecryptAsync(request).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetPayloadStatusAsync"/>
        public static PayloadStatus GetPayloadStatus(this ITarnClient client, string envelope,
            IEnumerable<string> recipients)
        {
            return client.GetPayloadStatusAsync(envelope, recipients).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetRecipientsAsync"/>
        public static EnvelopeRecipients GetRecipients(this ITarnClient client, string envelope)
        {
            return client.GetRecipientsAsync(envelope).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetTrackingAsync"/>
        public static MessageTracking GetTracking(this ITarnClient client, string password, string envelope)
        {
            return client.GetTrackingAsync(password, envelope).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.SetTrackingAsync"/>
        public static void SetTracking(this ITarnClient client, string password, string envelope,
            IEnumerable<RecipientTracking> states)
        {
            client.SetTrackingAsync(password, envelope, states).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetEntriesAsync"/>
        public static EntryPage GetEntries(this ITarnClient client, EntryQuery query)
        {
            return client.GetEntriesAsync(query).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.SetEntriesAsync"/>
        public static void SetEntries(this ITarnClient client, string password, IReadOnlyDictionary<string,
            string> fields, bool locked, string statusMessage, long expiryDate)
        {
            client.SetEntriesAsync(password, fields, locked, statusMessage, expiryDate).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetKeyServerFeaturesAsync"/>
        public static KeyServerFeatures GetKeyServerFeatures(this ITarnClient client)
        {
            return client.GetKeyServerFeaturesAsync().GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetLocalesAsync"/>
        public static IReadOnlyDictionary<string, string> GetLocales(this ITarnClient client)
        {
            return client.GetLocalesAsync().GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetMessageBodyAsync"/>
        public static MessageBody GetMessageBody(this ITarnClient client, [AllowNull] string locale)
        {
            return client.GetMessageBodyAsync(locale).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.GetEnrollmentFormAsync"/>
        public static EnrollmentForm GetEnrollmentForm(this ITarnClient client, string emailAddress, string keyServer,
            [AllowNull] string locale = null)
        {
            return client.GetEnrollmentFormAsync(emailAddress, keyServer, locale).GetAwaiter().GetResult();
        }

        /// <inheritdoc cref="ITarnClient.EnrollAsync"/>
        public static IReadOnlyDictionary<string, string> Enroll(this ITarnClient client, Enrollment form)
        {
            return client.EnrollAsync(form).GetAwaiter().GetResult();
        }
    }
}
