using System;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    // What every call has in common. How one ended is decided by its status and by which outputs it wrote: the texts in
    // the log are the daemon's, and could say anything.
    public sealed partial class TarnClient
    {
        // Used by the calls' thread alone. The library then also has the client version text that most requests carry.
        private static bool connected;

        private Task<T> Call<T>(string name, Func<T> call, CancellationToken cancellation)
        {
            return DaemonThread.Run(name, () =>
            {
                if (!connected)
                    ReadVersion(false);
                return call();
            }, CallTimeout, cancellation);
        }

        private string ReadVersion(bool required)
        {
            const string call = "GetTarnVersion";
            NativeLibraryLoader.Load();
            using (var version = TextBuffer.Value())
            {
                int status = Logged(log => TarnRemoteClient.GetTarnVersion(version.Memory, log));
                connected = connected || OperationLog.NumberAfter(LastLog, "Got socket: ") != null;
                if (!connected)
                    throw new TarnUnavailableException(call, OperationLog.ErrorNumber(LastLog), LastLog);
                if (required || status == (int)TarnStatus.None)
                    Require(call, status, "", version);
                return version.Text;
            }
        }

        private T Logged<T>(Func<IntPtr, T> call)
        {
            using (var log = TextBuffer.Log())
            {
                T result = call(log.Memory);
                LastLog = log.Text;
                return result;
            }
        }

        /// <summary>Throws unless the status is 0 and the call wrote all outputs that it then writes.</summary>
        private void Require(string call, int status, string detail = "", params TextBuffer[] outputs)
        {
            if (status == (int)TarnStatus.None || status == 0 && !outputs.All(output => output.IsWritten))
                throw new TarnExchangeException(call, OperationLog.ErrorNumber(LastLog), LastLog);
            if (status != 0)
                throw new TarnRefusedException(call, (TarnStatus)status, OperationLog.StatusMessage(LastLog), detail,
                    LastLog);
        }

        private string CheckedConfigFile() { return Arguments.Wide(ConfigFile, nameof(ConfigFile)); }
    }
}
