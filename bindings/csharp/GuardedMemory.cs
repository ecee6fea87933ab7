using System;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

namespace Tarn
{
    /// <summary>
    /// Memory that ends at a page without access: who writes beyond it ends the process at once, instead of corrupting
    /// somebody else's memory. On Linux pages are taken when they are first touched; Windows commits all of them.
    /// </summary>
    internal sealed class GuardedMemory : SafeHandleZeroOrMinusOneIsInvalid
    {
        private const int ReadWrite = 3, PrivateAnonymousNoReserve = 0x4022;
        private const uint Commit = 0x1000, Reserve = 0x2000, Release = 0x8000, PageNoAccess = 1, PageReadWrite = 4;
        private static readonly bool Windows = NativeLibraryLoader.IsWindows;

        private readonly long reserved;

        private GuardedMemory(long reserved) : base(true) { this.reserved = reserved; }

        /// <summary>As many bytes, rounded up to whole pages.</summary>
        /// <exception cref="OutOfMemoryException">The system has no such memory.</exception>
        public static GuardedMemory Allocate(long bytes)
        {
            long page = Environment.SystemPageSize, usable = (bytes + page - 1) / page * page;
            var memory = new GuardedMemory(usable + page);
            if (!(Windows ? memory.AllocateOnWindows(usable) : memory.AllocateOnLinux(usable)))
            {
                memory.Dispose();
                throw new OutOfMemoryException("no " + bytes + " bytes for a text of the daemon; see " +
                    nameof(TarnBuffers));
            }
            return memory;
        }

        /// <summary>Where the memory is; valid until it is disposed of.</summary>
        public IntPtr Address { get { return handle; } }

        private bool AllocateOnLinux(long usable)
        {
            SetHandle(mmap(IntPtr.Zero, Size(reserved), ReadWrite, PrivateAnonymousNoReserve, -1, IntPtr.Zero));
            return !IsInvalid && mprotect(new IntPtr(handle.ToInt64() + usable), Size(reserved - usable), 0) == 0;
        }

        private bool AllocateOnWindows(long usable)
        {
            SetHandle(VirtualAlloc(IntPtr.Zero, Size(reserved), Reserve, PageNoAccess));
            return !IsInvalid && VirtualAlloc(handle, Size(usable), Commit, PageReadWrite) != IntPtr.Zero;
        }

        protected override bool ReleaseHandle()
        {
            return Windows ? VirtualFree(handle, UIntPtr.Zero, Release) != 0 : munmap(handle, Size(reserved)) == 0;
        }

        // Fails where a pointer cannot hold it, as the allocation would.
        private static UIntPtr Size(long bytes)
        {
            return UIntPtr.Size == 4 && bytes > uint.MaxValue ? new UIntPtr(uint.MaxValue) : new UIntPtr((ulong)bytes);
        }

        [DllImport("libc.so.6")]
        private static extern IntPtr mmap(IntPtr address, UIntPtr size, int access, int flags, int file, IntPtr offset);

        [DllImport("libc.so.6")]
        private static extern int mprotect(IntPtr address, UIntPtr size, int access);

        [DllImport("libc.so.6")]
        private static extern int munmap(IntPtr address, UIntPtr size);

        [DllImport("kernel32.dll"), DefaultDllImportSearchPaths(DllImportSearchPath.System32)]
        private static extern IntPtr VirtualAlloc(IntPtr address, UIntPtr size, uint kind, uint access);

        [DllImport("kernel32.dll"), DefaultDllImportSearchPaths(DllImportSearchPath.System32)]
        private static extern int VirtualFree(IntPtr address, UIntPtr size, uint kind);
    }
}
