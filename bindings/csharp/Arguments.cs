using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;
using System.Linq;
using System.Runtime.InteropServices;

namespace Tarn
{
    /// <summary>What the library must not be given, and the forms that it takes arguments in.</summary>
    internal static class Arguments
    {
        public static T Required<T>(T value, string parameter) where T : class
        {
            return value ?? throw new ArgumentNullException(parameter);
        }

        public static byte[] RequiredUtf8([AllowNull] string text, string parameter)
        {
            return Utf8.Encode(text ?? throw new ArgumentNullException(parameter), parameter);
        }

        /// <summary>A UTF-16 text; empty for null.</summary>
        public static string Wide([AllowNull] string text, string parameter)
        {
            if (text != null && text.IndexOf('\0') >= 0)
                throw new ArgumentException("it holds a zero character, at which the library would cut it", parameter);
            return text ?? "";
        }

        /// <summary>A text that can become an item of a list: one with the delimiter would come back as two.</summary>
        public static string ListItem([AllowNull] string text, string parameter)
        {
            if (text != null && text.Contains(TarnRemoteClient.ListDelimiter))
                throw new ArgumentException("it holds \"" + TarnRemoteClient.ListDelimiter + "\", which separates " +
                    "the texts of a list", parameter);
            return Wide(text, parameter);
        }

        public static string[] Addresses(IEnumerable<string> addresses, string parameter)
        {
            string[] list = Required(addresses, parameter).ToArray();
            foreach (string address in list)
                if (ListItem(Required(address, parameter), parameter).IndexOf(';') >= 0)
                    throw new ArgumentException("an address holds \";\", which separates addresses", parameter);
            return list;
        }

        public static byte[] Joined(string[] addresses) { return Utf8.Encode(string.Join(";", addresses)); }

        /// <summary>A text in the system's 8-bit encoding.</summary>
        public static byte[] SystemText(string text, string parameter)
        {
            IntPtr converted = Marshal.StringToHGlobalAnsi(Wide(Required(text, parameter), parameter));
            try
            {
                if (Marshal.PtrToStringAnsi(converted) != text)
                    throw new ArgumentException("it has characters that the system's 8-bit encoding lacks", parameter);
                return Utf8.Terminated(Utf8.BytesAt(converted), parameter);
            }
            finally
            {
                Marshal.FreeHGlobal(converted);
            }
        }
    }
}
