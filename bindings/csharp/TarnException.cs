using System;
using System.Diagnostics.CodeAnalysis;

namespace Tarn
{
    /// <summary>A call that did not succeed. The derived classes tell what went wrong.</summary>
    public class TarnException : Exception
    {
        /// <summary>Names the call, what happened to it, and the operation log that it left.</summary>
        public TarnException(string call, string message, string log = "", [AllowNull] Exception cause = null)
            : base(call + ": " + message, cause)
        {
            Call = call;
            Log = log;
        }

        /// <summary>The function of the library that was called.</summary>
        public string Call { get; }

        /// <summary>The operation log of the call; empty for a call that leaves none.</summary>
        public string Log { get; }
    }

    /// <summary>The daemon answered with a status other than 0.</summary>
    public class TarnRefusedException : TarnException
    {
        /// <summary>Names the call, the status and the daemon's words.</summary>
        public TarnRefusedException(string call, TarnStatus status, string statusMessage, string detail = "",
            string log = "")
            : base(call, "answered with status " + (int)status + (Enum.IsDefined(typeof(TarnStatus), status)
                ? " (" + status + ")" : "") + (statusMessage.Length > 0 ? ": " + statusMessage : ""), log)
        {
            Status = status;
            StatusMessage = statusMessage;
            Detail = detail;
        }

        /// <summary>The daemon's status code.</summary>
        public TarnStatus Status { get; }

        /// <summary>The daemon's message for its status; may be empty.</summary>
        public string StatusMessage { get; }

        /// <summary>
        /// What came with the status: for a login with status 25 a text for the user, with status 18 the seconds to
        /// wait; for an enrollment its answers as one text, "key: value; " for each; else empty.
        /// </summary>
        public string Detail { get; }
    }

    /// <summary>No daemon could be connected to. The call can be repeated once one listens.</summary>
    public class TarnUnavailableException : TarnException
    {
        /// <summary>Names the call and the system's error number.</summary>
        public TarnUnavailableException(string call, int nativeErrorCode, string log = "")
            : base(call, "no connection to the daemon (error " + nativeErrorCode + ")", log)
        {
            NativeErrorCode = nativeErrorCode;
        }

        /// <summary>The system's error number; 0 when the log holds none.</summary>
        public int NativeErrorCode { get; }
    }

    /// <summary>
    /// The exchange with the daemon failed after it had begun: the connection broke or the reply was malformed. What is
    /// left of the reply would be taken for the next call's, so this process can make no further calls.
    /// </summary>
    public class TarnExchangeException : TarnException
    {
        /// <summary>Names the call and the system's error number.</summary>
        public TarnExchangeException(string call, int nativeErrorCode, string log = "")
            : base(call, "the exchange with the daemon failed (error " + nativeErrorCode + ")", log)
        {
            NativeErrorCode = nativeErrorCode;
        }

        /// <summary>The system's error number; 0 when the log holds none.</summary>
        public int NativeErrorCode { get; }
    }

    /// <summary>The daemon answered with success and with texts that cannot be told apart.</summary>
    public class TarnReplyException : TarnException
    {
        /// <summary>Names the call and what is wrong with its answer.</summary>
        public TarnReplyException(string call, string message, string log = "") : base(call, message, log) { }
    }

    /// <summary>The system did not launch the daemon.</summary>
    public class TarnLaunchException : TarnException
    {
        /// <summary>Names the call and the system's answer.</summary>
        public TarnLaunchException(string call, int nativeErrorCode, string log = "")
            : base(call, "the system did not launch the daemon (error " + nativeErrorCode + ")", log)
        {
            NativeErrorCode = nativeErrorCode;
        }

        /// <summary>The system's answer, such as 2 for "no such program".</summary>
        public int NativeErrorCode { get; }
    }

    /// <summary>
    /// The call was not made. Either an earlier one failed in the middle of its exchange, or one that was given up has
    /// not returned yet.
    /// </summary>
    public class TarnBlockedException : TarnException
    {
        /// <summary>Names the call that was not made, and the one that is the reason.</summary>
        public TarnBlockedException(string call, string blockingCall, bool permanent,
            [AllowNull] Exception cause = null)
            : base(call, permanent
                ? "not called: " + blockingCall + " failed in the middle of its exchange with the daemon, and the " +
                    "connection is out of step. Only a new process can go on"
                : "not called: " + blockingCall + " was given up and has not returned yet", "", cause)
        {
            BlockingCall = blockingCall;
            Permanent = permanent;
        }

        /// <summary>The function of the library that failed or has not returned.</summary>
        public string BlockingCall { get; }

        /// <summary>
        /// Whether this process can make no calls any more; else it can once <see cref="BlockingCall"/> has returned.
        /// </summary>
        public bool Permanent { get; }
    }
}
