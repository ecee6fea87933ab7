using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

namespace Tarn
{
    /// <summary>
    /// Finds the native library beside the binding before anything else: for an add-in the program's folder is the mail
    /// client's. The current folder is never looked into.
    /// </summary>
    internal static class NativeLibraryLoader
    {
        public static readonly bool IsWindows = Path.DirectorySeparatorChar == '\\';

        private static readonly object Gate = new object();
        private static string path = "";
        private static bool loaded;
        private static IntPtr handle;

        /// <summary>The only place to look, unless it is empty.</summary>
        public static string LibraryPath
        {
            get { return path; }
            set
            {
                if (value == null || value.Length > 0 && !Path.IsPathRooted(value))
                    throw new ArgumentException("the native library's path must be a full one", nameof(value));
                lock (Gate)
                    path = loaded
                        ? throw new InvalidOperationException("the native library is loaded already")
                        : value;
            }
        }

        /// <summary>Loads the library, once.</summary>
        /// <exception cref="DllNotFoundException">No place has it; the message names those that were tried.</exception>
        public static IntPtr Load()
        {
            lock (Gate)
            {
                if (!loaded)
                    handle = LoadFrom(path.Length > 0 ? new[] { path } : Places().Distinct().ToArray());
                loaded = true;
                return handle;
            }
        }

        private static IntPtr LoadFrom(string[] places)
        {
            var tried = new List<string>();
            foreach (string place in places)
            {
                string reason = "no such file";
                if (Path.IsPathRooted(place) && !File.Exists(place) || !TryLoad(place, out IntPtr found, out reason))
                    tried.Add("\n  " + place + ": " + reason);
                else
                    return found;
            }
            throw new DllNotFoundException("the native library was not found for this " + 8 * IntPtr.Size +
                "-bit process. Tried:" + string.Concat(tried));
        }

        private static IEnumerable<string> Places()
        {
            string file = IsWindows ? "TarnRemoteClient.dll" : "libTarnRemoteClient.so";
            string system = (IsWindows ? "win-" : "linux-") + (IntPtr.Size == 8 ? "x64" : "x86");
            foreach (string folder in new[] { BindingFolder(), AppContext.BaseDirectory })
                if (folder.Length > 0)
                {
                    yield return Path.Combine(folder, file);
                    yield return Path.Combine(folder, "runtimes", system, "native", file);
                }
            yield return BareName(file);
        }

#if NET
        // Where the run-time and the system look by themselves: the folders that a published program names, and on
        // Windows none but the program's and the system's.
        private const DllImportSearchPath OtherFolders = DllImportSearchPath.SafeDirectories;

        /// <summary>Has the run-time ask here for the library, at the first call of one of its functions.</summary>
        public static void Register()
        {
            NativeLibrary.SetDllImportResolver(typeof(NativeLibraryLoader).Assembly,
                (name, assembly, search) => name == TarnRemoteClient.Library ? Load() : IntPtr.Zero);
        }

        private static string BareName(string file) => TarnRemoteClient.Library;

        [UnconditionalSuppressMessage("SingleFile", "IL3000", Justification = "No file, no such folder.")]
        private static string BindingFolder() =>
            Path.GetDirectoryName(typeof(NativeLibraryLoader).Assembly.Location) ?? "";

        private static bool TryLoad(string place, out IntPtr found, out string reason)
        {
            reason = "";
            try
            {
                found = Path.IsPathRooted(place)
                    ? NativeLibrary.Load(place)
                    : NativeLibrary.Load(place, typeof(NativeLibraryLoader).Assembly, OtherFolders);
                return true;
            }
            catch (Exception exception) when (exception is DllNotFoundException || exception is BadImageFormatException)
            {
                reason = exception.Message;
                found = IntPtr.Zero;
                return false;
            }
        }
#else
        private const uint WithItsOwnFolder = 0x8, DefaultFolders = 0x1000;
        private const int Now = 2;

        /// <summary>
        /// Loads the library if it is there, since these run-times ask nobody. Windows then finds it by its name.
        /// </summary>
        public static void Register()
        {
            try
            {
                Load();
            }
            catch (DllNotFoundException)
            {
                // Thrown again by the first call of TarnClient.
            }
        }

        private static string BareName(string file) { return file; }

        // Where the file was before .NET Framework copied it elsewhere to load it.
        private static string BindingFolder()
        {
            return Path.GetDirectoryName(new Uri(typeof(NativeLibraryLoader).Assembly.CodeBase).LocalPath) ?? "";
        }

        private static bool TryLoad(string place, out IntPtr found, out string reason)
        {
            reason = "";
            if (IsWindows)
            {
                uint folders = Path.IsPathRooted(place) ? WithItsOwnFolder : DefaultFolders;
                found = LoadLibraryExW(place, IntPtr.Zero, folders);
                if (found == IntPtr.Zero)
                    reason = "error " + Marshal.GetLastWin32Error();
                return found != IntPtr.Zero;
            }
            found = dlopen(place, Now);
            if (found == IntPtr.Zero)
                reason = Marshal.PtrToStringAnsi(dlerror()) ?? "";
            else if (Type.GetType("Mono.Runtime") != null)
                mono_dllmap_insert(IntPtr.Zero, TarnRemoteClient.Library, IntPtr.Zero, place, IntPtr.Zero);
            return found != IntPtr.Zero;
        }

        [DllImport("kernel32.dll", CharSet = CharSet.Unicode, SetLastError = true)]
        private static extern IntPtr LoadLibraryExW(string path, IntPtr reserved, uint flags);

        [DllImport("libdl.so.2")]
        private static extern IntPtr dlopen(string path, int mode);

        [DllImport("libdl.so.2")]
        private static extern IntPtr dlerror();

        [DllImport("__Internal")]
        private static extern void mono_dllmap_insert(IntPtr assembly, string library, IntPtr function, string place,
            IntPtr targetFunction);
#endif
    }
}
