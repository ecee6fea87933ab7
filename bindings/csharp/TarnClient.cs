using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;

namespace Tarn
{
    /// <summary>
    /// The library's functions with managed texts and results that own themselves. A method returns when the daemon
    /// answered with status 0 and throws a <see cref="TarnException"/> otherwise.
    /// </summary>
    /// <remarks>
    /// Connection, decrypted items and operation log are the library's and so the process's: all clients share them,
    /// and their calls wait for each other. There is no time limit for the daemon's answer. A method throws an
    /// <see cref="ArgumentException"/> before it calls the library when its recipients and other texts could overflow
    /// the operation log, which would end the process: that is at about 270 addresses of 25 characters.
    /// </remarks>
    public sealed partial class TarnClient
    {
        private static readonly object Gate = new object();

        /// <summary>Path of the envelope configuration file that most calls name to the daemon; or null.</summary>
        public string ConfigFile { get; set; }

        /// <summary>The operation log of this client's last call.</summary>
        public string LastLog { get; private set; } = "";

        /// <summary>Launches the daemon. Does not wait until it listens.</summary>
        /// <param name="jarPath">Path of its jar file, without spaces.</param>
        /// <exception cref="TarnException">
        /// The system did not launch it; the status is the system's answer, such as 2 for "no such program".
        /// </exception>
        /// <exception cref="ArgumentException">The path cannot be written in the system's 8-bit encoding.</exception>
        public void StartDaemon(string jarPath)
        {
            byte[] path = SystemText(jarPath);
            Run("StartTarnDaemon", new[] { jarPath }, log =>
            {
                if (TarnRemoteClient.StartTarnDaemon(path, log.Memory) != 0)
                    return 0;
                int answer = OperationLog.NumberAfter(log.Text, "] ShellExecute returned: ");
                return answer == 0 ? -1 : answer;
            });
        }

        /// <summary>Asks the daemon to stop and closes the connection.</summary>
        public void StopDaemon()
        {
            Run("StopTarnDaemon", new string[0], log => TarnRemoteClient.StopTarnDaemon(log.Memory) != 0
                ? 0
                : OperationLog.NumberAfter(log.Text, "] Status code: "));
        }

        /// <summary>
        /// The daemon's version. To be called first: it also builds the client version text that other calls send.
        /// </summary>
        public string GetVersion()
        {
            using (var version = TextBuffer.Value())
            {
                Run("GetTarnVersion", new string[0],
                    log => TarnRemoteClient.GetTarnVersion(version.Memory, log.Memory));
                return version.Text;
            }
        }

        /// <summary>Logs a user in.</summary>
        public void Authenticate(string emailAddress, string password)
        {
            byte[] user = Required(emailAddress, nameof(emailAddress));
            byte[] secret = Required(password, nameof(password));
            using (var result = TextBuffer.Value())
                Run("AuthenticateUser", new[] { ConfigFile },
                    log => TarnRemoteClient.AuthenticateUser(user, secret, Wide(ConfigFile), result.Memory, log.Memory),
                    result);
        }

        /// <summary>Asks the daemon to check the configuration that belongs to a sender.</summary>
        public void VerifyConfig(string sender)
        {
            byte[] address = Required(sender, nameof(sender));
            Run("VerifyLarchConfig", new[] { ConfigFile, sender },
                log => TarnRemoteClient.VerifyLarchConfig(address, Wide(ConfigFile), log.Memory));
        }

        private void Run(string export, IEnumerable<string> loggedTexts, Func<TextBuffer, int> call,
            TextBuffer detail = null)
        {
            OperationLog.RequireRoom(export, loggedTexts);
            lock (Gate)
                using (var log = TextBuffer.Log())
                {
                    int status = call(log);
                    LastLog = log.Text;
                    bool failed = OperationLog.TellsFailure(LastLog);
                    if (failed || status != 0)
                        throw new TarnException(export, status, LastLog, failed, detail?.Text ?? "");
                }
        }

        private static byte[] Required(string text, string parameter)
        {
            return Utf8.Encode(text ?? throw new ArgumentNullException(parameter));
        }

        private static string Wide(string text)
        {
            if (text != null && text.IndexOf('\0') >= 0)
                throw new ArgumentException("a text for the library holds a zero character, at which it would be cut");
            return text;
        }

        private static byte[] SystemText(string text)
        {
            Wide(text ?? throw new ArgumentNullException(nameof(text)));
            IntPtr converted = Marshal.StringToHGlobalAnsi(text);
            try
            {
                if (Marshal.PtrToStringAnsi(converted) != text)
                    throw new ArgumentException("the system's 8-bit encoding does not have all characters of " + text);
                return Utf8.Terminated(Utf8.BytesAt(converted));
            }
            finally
            {
                Marshal.FreeHGlobal(converted);
            }
        }

        private static byte[] JoinAddresses(IEnumerable<string> addresses)
        {
            string[] list = addresses.ToArray();
            if (list.Any(address => address.IndexOf(';') >= 0))
                throw new ArgumentException("an address holds the character \";\", which separates addresses");
            return Utf8.Encode(string.Join(";", list));
        }

        // "key: value; " for each entry. A piece without a key continues the value before it.
        private static IReadOnlyDictionary<string, string> ParseEntries(string text)
        {
            var entries = new Dictionary<string, string>();
            string last = null;
            foreach (string piece in text.Split(new[] { "; " }, StringSplitOptions.None))
            {
                int keyEnd = piece.IndexOf(": ", StringComparison.Ordinal);
                if (keyEnd >= 0)
                    entries[last = piece.Substring(0, keyEnd)] = piece.Substring(keyEnd + 2);
                else if (last != null && piece.Length > 0)
                    entries[last] += "; " + piece;
            }
            return entries;
        }
    }
}
