using System;
using System.Net;
using System.Net.Sockets;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    /// <summary>
    /// The library's functions with managed texts and results. A method's task ends when the daemon has answered with
    /// status 0, and in an exception otherwise.
    /// </summary>
    /// <remarks>
    /// The connection and the native library are the process's: all clients share them, and one thread makes their
    /// calls one after the other.
    /// </remarks>
    public sealed partial class TarnClient : ITarnClient
    {
        private const int DaemonPort = 53007;
        private static readonly TimeSpan PollInterval = TimeSpan.FromMilliseconds(100);

        /// <summary>
        /// The full path of the native library. When it is empty, the library is looked for beside the binding, in
        /// runtimes/SYSTEM/native there, likewise in the program's folder, and where the system keeps its libraries;
        /// never in the current folder.
        /// </summary>
        /// <exception cref="InvalidOperationException">The library is loaded already.</exception>
        /// <exception cref="ArgumentException">The path set is not a full one.</exception>
        public static string LibraryPath
        {
            get { return NativeLibraryLoader.LibraryPath; }
            set { NativeLibraryLoader.LibraryPath = value; }
        }

        /// <summary>Path of the envelope configuration file that most calls name; empty for none.</summary>
        public string ConfigFile { get; set; } = "";

        /// <summary>
        /// How long a method waits for its call, other clients' calls before it included. For ever with
        /// <see cref="Timeout.InfiniteTimeSpan"/>.
        /// </summary>
        public TimeSpan CallTimeout { get; set; } = TimeSpan.FromMinutes(5);

        /// <summary>The operation log of this client's last call that has returned.</summary>
        public string LastLog { get; private set; } = "";

        /// <inheritdoc/>
        public Task StartDaemonAsync(string jarPath, CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "StartTarnDaemon";
            byte[] path = Arguments.SystemText(jarPath, nameof(jarPath));
            OperationLog.RequireRoom(call, nameof(jarPath), new[] { jarPath });
            return DaemonThread.Run(call, () =>
            {
                NativeLibraryLoader.Load();
                if (Logged(log => TarnRemoteClient.StartTarnDaemon(path, log)) == 0)
                    throw new TarnLaunchException(call, LaunchAnswer(LastLog), LastLog);
                return true;
            }, CallTimeout, cancellation);
        }

        // The jar's path is logged before the system's answer, which is on the last line.
        private static int LaunchAnswer(string log)
        {
            int lastLine = log.TrimEnd('\n').LastIndexOf('\n') + 1;
            return OperationLog.NumberAfter(log.Substring(lastLine), "ShellExecute returned: ") ?? 0;
        }

        /// <inheritdoc/>
        public async Task WaitForDaemonAsync(TimeSpan limit,
            CancellationToken cancellation = default(CancellationToken))
        {
            DateTime end = DateTime.UtcNow + limit;
            while (!await DaemonListens().ConfigureAwait(false))
            {
                if (DateTime.UtcNow >= end)
                    throw new TimeoutException("no daemon listens on port " + DaemonPort + " within " + limit);
                await Task.Delay(PollInterval, cancellation).ConfigureAwait(false);
            }
        }

        private static async Task<bool> DaemonListens()
        {
            using (var socket = new TcpClient(AddressFamily.InterNetwork))
                try
                {
                    await socket.ConnectAsync(IPAddress.Loopback, DaemonPort).ConfigureAwait(false);
                    return true;
                }
                catch (SocketException)
                {
                    return false;
                }
        }

        /// <inheritdoc/>
        public Task StopDaemonAsync(CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "StopTarnDaemon";
            return Call(call, () =>
            {
                byte stopped = Logged(TarnRemoteClient.StopTarnDaemon);
                // The log has no text of the daemon's before its status.
                int? status = stopped != 0 ? 0 : OperationLog.NumberAfter(LastLog, "Status code: ");
                if (status == null)
                    throw new TarnExchangeException(call, OperationLog.ErrorNumber(LastLog), LastLog);
                connected = false;
                Require(call, status.Value);
                return true;
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<string> GetVersionAsync(CancellationToken cancellation = default(CancellationToken))
        {
            return DaemonThread.Run("GetTarnVersion", () => ReadVersion(true), CallTimeout, cancellation);
        }

        /// <inheritdoc/>
        public Task AuthenticateAsync(string emailAddress, string password,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "AuthenticateUser";
            byte[] user = Arguments.RequiredUtf8(emailAddress, nameof(emailAddress));
            byte[] secret = Arguments.RequiredUtf8(password, nameof(password));
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(emailAddress), new[] { config, emailAddress });
            return Call(call, () =>
            {
                using (var result = TextBuffer.Value())
                {
                    int status = Logged(log =>
                        TarnRemoteClient.AuthenticateUser(user, secret, config, result.Memory, log));
                    Require(call, status, result.Text, result);
                    return true;
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task VerifyConfigAsync(string sender, CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "VerifyLarchConfig";
            byte[] address = Arguments.RequiredUtf8(sender, nameof(sender));
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(sender), new[] { config, sender });
            return Call(call, () =>
            {
                Require(call, Logged(log => TarnRemoteClient.VerifyLarchConfig(address, config, log)));
                return true;
            }, cancellation);
        }
    }
}
