using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Text;

namespace Tarn
{
    /// <summary>What the wrapper reads from an operation log, and what it keeps from growing too long.</summary>
    internal static class OperationLog
    {
        private const string LinePrefix = "[TarnRemoteClient:";
        private const int Room = TarnRemoteClient.LogSize - TarnRemoteClient.LogReserve;

        /// <summary>
        /// Refuses a call whose texts could fill the log: one that overflows ends the process. Besides those that the
        /// library logs, these are any that the daemon's message may quote.
        /// </summary>
        public static void RequireRoom(string call, string parameter, IEnumerable<string> texts)
        {
            long bytes = texts.Sum(text => TarnRemoteClient.LogLineSize + (long)Encoding.UTF8.GetByteCount(text));
            if (bytes > Room)
                throw new ArgumentException(string.Format(CultureInfo.InvariantCulture,
                    "too much for one {0}: recipients and other logged texts come to about {1} bytes, and the " +
                    "operation log has room for {2}", call, bytes, Room), parameter);
        }

        /// <summary>The daemon's message for its status, after its label or on the lines below it.</summary>
        public static string StatusMessage(string log)
        {
            int label = log.LastIndexOf("] Status message:", StringComparison.Ordinal);
            if (label < 0)
                return "";
            int start = log.IndexOf(':', label) + 1;
            int end = log.IndexOf("\n" + LinePrefix, start, StringComparison.Ordinal);
            return (end < 0 ? log.Substring(start) : log.Substring(start, end - start)).Trim();
        }

        /// <summary>The number after the label in the first line that begins with it; nothing when there is none.</summary>
        public static int? NumberAfter(string log, string label)
        {
            int start = log.IndexOf("] " + label, StringComparison.Ordinal);
            return start < 0 ? null : Number(log, start + 2 + label.Length);
        }

        /// <summary>The system's error number, with which the log of a failed call ends; 0 when it does not.</summary>
        public static int ErrorNumber(string log)
        {
            const string label = "GetLastError() : ";
            int start = log.LastIndexOf(label, StringComparison.Ordinal);
            return start < 0 ? 0 : Number(log, start + label.Length) ?? 0;
        }

        private static int? Number(string log, int start)
        {
            int end = log.IndexOf('\n', start);
            return int.TryParse(log.Substring(start, (end < 0 ? log.Length : end) - start), NumberStyles.Integer,
                CultureInfo.InvariantCulture, out int number) ? number : (int?)null;
        }
    }
}
