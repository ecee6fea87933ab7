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

        // A line's prefix and the longest label that stands before a text, rounded up.
        private const int BytesPerLine = 64;

        // For the lines that each call writes anyway and for the daemon's own texts, unknown before the call.
        private const int Reserve = 8192;

        private const int Room = TarnRemoteClient.LogSize - Reserve;

        private static readonly string[] FailureLabels =
        {
            "] Unexpected exception occured. GetLastError() : ",
            "] Unknown exception occured, setting status to -1. GetLastError() : "
        };

        /// <summary>Refuses a call whose texts could fill the log: one that overflows ends the process.</summary>
        public static void RequireRoom(string export, IEnumerable<string> loggedTexts)
        {
            long bytes = loggedTexts.Sum(text => (long)BytesPerLine + Encoding.UTF8.GetByteCount(text ?? ""));
            if (bytes > Room)
                throw new ArgumentException(string.Format(CultureInfo.InvariantCulture,
                    "too much for one {0}: its recipients and other logged texts come to about {1} bytes, and the " +
                    "operation log has room for {2}", export, bytes, Room));
        }

        /// <summary>Whether the call ended in a failure of the exchange: its handler writes the last line.</summary>
        public static bool TellsFailure(string log)
        {
            int lastLine = log.LastIndexOf(LinePrefix, StringComparison.Ordinal);
            if (lastLine < 0)
                return false;
            int labelStart = log.IndexOf(']', lastLine);
            return FailureLabels.Any(label =>
                labelStart >= 0 && string.CompareOrdinal(log, labelStart, label, 0, label.Length) == 0);
        }

        /// <summary>The daemon's message for its status, behind its label or on the lines below it.</summary>
        public static string StatusMessage(string log)
        {
            return TextAfter(log, "] Status message:");
        }

        /// <summary>The last number behind a label, -1 when there is none.</summary>
        public static int NumberAfter(string log, string label)
        {
            string text = TextAfter(log, label);
            return int.TryParse(text, NumberStyles.Integer, CultureInfo.InvariantCulture, out int number) ? number : -1;
        }

        private static string TextAfter(string log, string label)
        {
            int start = log.LastIndexOf(label, StringComparison.Ordinal);
            if (start < 0)
                return "";
            start += label.Length;
            int end = log.IndexOf("\n" + LinePrefix, start, StringComparison.Ordinal);
            return (end < 0 ? log.Substring(start) : log.Substring(start, end - start)).Trim();
        }
    }
}
