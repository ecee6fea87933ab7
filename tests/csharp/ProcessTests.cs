using System;
using System.IO;
using System.Linq;
using Tarn;
using Xunit;
using static ScriptedDaemon;

// What can happen to a process once; each case in one of its own.
public class ProcessTests
{
    [Fact]
    public void FailedExchanges()
    {
        foreach (string childCase in new[] { nameof(ChildCases.DamagedVersion), nameof(ChildCases.DamagedEnvelope),
                 nameof(ChildCases.DamagedStatus), nameof(ChildCases.ResetConnection), nameof(ChildCases.DamagedStop) })
            Assert.Equal($"{childCase}: TarnExchangeException, blocked for good, nothing sent\n",
                Child.Run(childCase).Output);
    }

    [Fact]
    public void ClosedConnection() =>
        Assert.Equal("TimeoutException blocked\n", Child.Run(nameof(ChildCases.ClosedConnection)).Output);

    // The page after a buffer ends the process before anything else is overwritten.
    [Fact]
    public void Overruns()
    {
        foreach (string childCase in new[] { nameof(ChildCases.Overrun), nameof(ChildCases.WideOverrun) })
            Assert.Equal((128 + 11, "fits\n"), Child.Run(childCase));
    }

    [Fact]
    public void NoDaemon() =>
        Assert.Equal("TarnUnavailableException 111\nTarnLaunchException 2\njarDaemon: dämon.jar\nTimeoutException\n",
            Child.Run(nameof(ChildCases.NoDaemon)).Output);

    [Fact]
    public void LibraryPlaces()
    {
        string here = Path.GetDirectoryName(typeof(ProcessTests).Assembly.Location);
        string file = "libTarnRemoteClient.so", library = Path.Combine(here, file);
        string scratch = Path.Combine(Path.GetTempPath(), Path.GetRandomFileName());
        string folder = Path.Combine(scratch, "binding"), other = Path.Combine(scratch, "other");
        string packaged = Path.Combine(folder, "runtimes", "linux-x64", "native");
        Directory.CreateDirectory(packaged);
        Directory.CreateDirectory(other);
        try
        {
            foreach (string copied in Directory.GetFiles(here).Where(name => name != library))
                File.Copy(copied, Path.Combine(folder, Path.GetFileName(copied)));
            File.Copy(library, Path.Combine(other, file));

            // Here the current folder has it, which must not be used.
            string output = Loaded(folder, other);
            Assert.Contains("DllNotFoundException the native library was not found for this 64-bit process", output);
            Assert.Contains($"\n  {Path.Combine(folder, file)}: no such file", output);
            Assert.Contains($"\n  {Path.Combine(packaged, file)}: no such file", output);

            string path = "TARN_TEST_PATH=", search = "LD_LIBRARY_PATH=" + other;
            string found = Path.Combine(other, file);
            Assert.Equal(found + "\n", Loaded(folder, other, path + found));
            Assert.Equal(found + "\n", Loaded(folder, other, search));
            File.Copy(library, Path.Combine(packaged, file));
            Assert.Equal(Path.Combine(packaged, file) + "\n", Loaded(folder, other, search));
            File.Copy(library, Path.Combine(folder, file));
            Assert.Equal(Path.Combine(folder, file) + "\n", Loaded(folder, other, search));
            Assert.Equal(found + "\n", Loaded(folder, other, path + found));
            // A path that was set is the only one.
            Assert.Contains("Tried:\n  /none: no such file\n", Loaded(folder, other, path + "/none"));
            File.WriteAllText(Path.Combine(folder, file), "no library");
            Assert.Contains(Path.Combine(packaged, file) + "\n", Loaded(folder, other));
        }
        finally
        {
            Directory.Delete(scratch, true);
        }
    }

    private static string Loaded(string folder, string workingFolder, params string[] settings) =>
        Child.Run(nameof(ChildCases.Load), folder, workingFolder, settings).Output;
}
