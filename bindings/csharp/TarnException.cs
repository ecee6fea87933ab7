using System;

namespace Tarn
{
    /// <summary>A call that the daemon did not answer with success.</summary>
    public class TarnException : Exception
    {
        internal TarnException(string export, int status, string log, bool exchangeFailed, string detail = "")
            : base(Describe(export, status, log, exchangeFailed))
        {
            Status = status;
            Log = log;
            ExchangeFailed = exchangeFailed;
            Detail = detail;
        }

        /// <summary>
        /// The last status code that was read, -1 for none. It can be 0 when the exchange failed after a login that
        /// succeeded.
        /// </summary>
        public int Status { get; }

        /// <summary>The operation log of the call; empty for a call that leaves none.</summary>
        public string Log { get; }

        /// <summary>
        /// What came with the status: for a login with status 25 a link, with status 18 the seconds to wait;
        /// else empty.
        /// </summary>
        public string Detail { get; }

        /// <summary>
        /// True when no valid answer came: no daemon listens, the connection broke, or the reply was malformed. False
        /// when the daemon answered with a status.
        /// </summary>
        public bool ExchangeFailed { get; }

        private static string Describe(string export, int status, string log, bool exchangeFailed)
        {
            if (exchangeFailed)
                return export + ": the exchange with the daemon failed (last status " + status + ")";
            string message = OperationLog.StatusMessage(log);
            return export + " was answered with status " + status + (message.Length > 0 ? ": " + message : "");
        }
    }
}
