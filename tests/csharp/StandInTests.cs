using System;
using System.Diagnostics;
using System.IO;
using System.Threading.Tasks;
using Tarn;
using Xunit;

public class StandInTests
{
    [Fact]
    public async Task WaitingForTheDaemonAndStoppingIt()
    {
        var client = new TarnClient { CallTimeout = TimeSpan.FromSeconds(30) };
        int before = OpenFiles();
        for (int i = 0; i < 100; ++i)
            Assert.Equal("TimeoutException", await Outcome.Of(client.WaitForDaemonAsync(TimeSpan.Zero)));
        Assert.True(OpenFiles() < before + 50, "an attempt that fails leaves no socket open"); // the run-time opens some

        using (Process daemon = Process.Start(new ProcessStartInfo(Program.PathFrom("TARN_STANDIN"))
            { UseShellExecute = false, RedirectStandardOutput = true }))
            try
            {
                await client.WaitForDaemonAsync(TimeSpan.FromSeconds(30));
                Assert.Contains("-", await client.GetVersionAsync());
                await client.StopDaemonAsync();
                Assert.True(daemon.WaitForExit(10000), "the daemon stops when asked");
            }
            finally
            {
                if (!daemon.HasExited)
                    daemon.Kill();
            }
    }

    private static int OpenFiles() => Directory.GetFiles("/proc/self/fd").Length;
}
