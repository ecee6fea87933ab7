using System;
using System.Runtime.InteropServices;

// Not the current folder, on any run-time.
[assembly: DefaultDllImportSearchPaths(
    DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.SafeDirectories)]

namespace Tarn
{
    /// <summary>
    /// The exports of TarnRemoteClient as they are; the header TarnRemoteClient.h describes each of them.
    /// <see cref="TarnClient"/> is the comfortable way to the same functions.
    /// </summary>
    /// <remarks>
    /// 8-bit texts are zero-terminated UTF-8 arrays (<see cref="Utf8.Encode(string)"/>) and never strings, since
    /// strings would be converted to the ANSI code page. Wide texts are UTF-16 on every system. Flags are single bytes. An
    /// <see cref="IntPtr"/> named "...Out" or "log" is a buffer of the caller's that is written WITHOUT A BOUND; one
    /// named log holds <see cref="LogSize"/> bytes, and a log that does not fit it ends the process.
    /// One call at a time in the whole process.
    /// </remarks>
    public static partial class TarnRemoteClient
    {
        /// <summary>The size of a log buffer in bytes.</summary>
        public const int LogSize = 32766;
        /// <summary>What a log line that holds a text of the caller's takes at most, besides that text.</summary>
        public const int LogLineSize = 64;
        /// <summary>What an estimate should leave for the lines of every call and the daemon's message.</summary>
        public const int LogReserve = 8192;
        /// <summary>Stands between the texts of a list that is returned as one text.</summary>
        public const string ListDelimiter = "{plugin_delimiter}";
        /// <summary>The bit of <see cref="TarnRecipientEntry.flags"/> for a locked record.</summary>
        public const int FlagLocked = 2;

        internal const string Library = "TarnRemoteClient";
        private const CallingConvention C = CallingConvention.Cdecl;

        static TarnRemoteClient() { NativeLibraryLoader.Register(); }

#pragma warning disable 1591 // the header describes the functions
        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern byte StartTarnDaemon([In] byte[] jarDaemon, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern byte StopTarnDaemon(IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetTarnVersion(IntPtr versionOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int AuthenticateUser([In] byte[] emailAddress, [In] byte[] password, string configFile,
            IntPtr resultOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int VerifyLarchConfig([In] byte[] sender, string configFile, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int EncryptEnvelopeOnline([In] byte[] toList, [In] byte[] ccList, [In] byte[] bccList,
            [In] byte[] from, [In] byte[] password, [In] byte[] mimeMessage, string configFile, IntPtr envelopeOut,
            IntPtr textBodyOut, IntPtr htmlBodyOut, IntPtr attachmentNameOut, [In] byte[] encodedEnvelopeConfig,
            [In] byte[] loginFlag, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int DecryptEnvelope([In] byte[] password, [In] byte[] envelope, string configFile,
            [In] byte[] recipient, [In] byte[] sessionKey, IntPtr configOut, byte keepOpen, IntPtr kuOut,
            IntPtr fromOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern uint GetNextDecryptedItemInfo(out uint nameSize, ref uint contentTypeLength,
            out uint dataSize);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern uint GetNextDecryptedItem(ref uint flags, ref uint type, [In, Out] byte[] nameBuffer,
            [In, Out] byte[] contentTypeBuffer, [In, Out] byte[] dataBuffer);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetPayloadStatus([In] byte[] envelope, string configFile, [In] byte[] recipientList,
            IntPtr statusTextsOut, IntPtr enrollIdOut, IntPtr fromOut, IntPtr statusCodesOut, out int sensitivity);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetRecipients([In] byte[] envelope, IntPtr recipientsOut, ref uint sensitivity,
            IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetLockExpireStatus([In] byte[] password, [In] byte[] envelope, string configFile,
            IntPtr recipientsOut, IntPtr lockStatusesOut, IntPtr statusMessagesOut, IntPtr expiryDatesOut,
            IntPtr messageIdOut, ref uint recipientCount, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int SetLockExpireStatus([In] byte[] password, [In] byte[] envelope, string configFile,
            [In] IntPtr[] recipients, [In] int[] lockStatuses, [In] IntPtr[] statusMessages, [In] long[] expiryDates,
            uint count, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetRecipientEntries([In] byte[] userName, [In] byte[] password, string configFile,
            out IntPtr entries, uint startAt, ref uint maxResults, out uint entryCount, out uint totalCount,
            [In] byte[] sortBy, byte ascending, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int SetRecipientEntries([In] byte[] password, string configFile, [In] IntPtr[] fieldNames,
            [In] IntPtr[] fieldValues, uint fieldCount, int lockStatus, string statusMessage, long expiryDate,
            IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int AddOrUpdateRemoteRecipientEntries([In, Out] TarnRecipientEntry[] entries,
            ref uint count, ref TarnRecipientEntry record);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetKeyServerInfo(string configFile, ref byte readByEnabled,
            ref byte expirationSupported, ref byte localizedTextEnabled, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetSupportedLocales(string configFile, IntPtr localesOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetLocalizedMessageBody(string configFile, [In] byte[] locale, IntPtr textBodyOut,
            IntPtr htmlBodyOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int GetEnrollParameters([In] byte[] emailAddress, [In] byte[] keyServer, string locale,
            ref int samlUser, ref int isOneClickUser, ref int securityQuestionsNumber,
            ref int isSecurityQuestionsEditable, IntPtr localesOut, IntPtr securityQuestionsOut, IntPtr log);

        [DllImport(Library, CallingConvention = C, CharSet = CharSet.Unicode, ExactSpelling = true)]
        public static extern int UserEnroll([In] byte[] emailAddress, [In] byte[] keyServer, string firstName,
            string lastName, string password, string locale, [In] byte[] enrollUuid, [In] byte[] senderEmailAddress,
            int isSimpleRegistration, int enrollmentStage, string personalPassPhrase, string securityQuestion1,
            string securityQuestion2, string securityQuestion3, string securityAnswer1, string securityAnswer2,
            string securityAnswer3, int timeZone, [In] byte[] timeFormat, IntPtr resultOut, IntPtr log);
#pragma warning restore 1591

        /// <summary>
        /// Releases an array that <see cref="GetRecipientEntries"/> returned, with the texts of its records. To be
        /// called once for each array.
        /// </summary>
        public static void ReleaseRecipientEntries(IntPtr entries, uint entryCount)
        {
            for (uint i = 0; i < entryCount; ++i)
                ReleaseTexts(ReadEntry(entries, i));
            Marshal.FreeCoTaskMem(entries);
        }

        internal static TarnRecipientEntry ReadEntry(IntPtr entries, uint index)
        {
            long offset = (long)index * Marshal.SizeOf<TarnRecipientEntry>();
            return Marshal.PtrToStructure<TarnRecipientEntry>(new IntPtr(entries.ToInt64() + offset));
        }

        /// <summary>Releases the four texts of a record that the caller owns.</summary>
        public static void ReleaseTexts(TarnRecipientEntry record)
        {
            Marshal.FreeCoTaskMem(record.subject);
            Marshal.FreeCoTaskMem(record.recipient);
            Marshal.FreeCoTaskMem(record.statusMessage);
            Marshal.FreeCoTaskMem(record.messageId);
        }
    }
}
