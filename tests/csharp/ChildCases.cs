using System;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using Tarn;
using static ScriptedDaemon;

// Run by name in a process of their own (see Child).
public static class ChildCases
{
    private static readonly EncryptRequest Message = new EncryptRequest { From = "a", Password = "", To = { "b" },
        MimeMessage = new byte[] { 10 } };

    public static void DamagedVersion() => FailedExchange(nameof(DamagedVersion),
        client => client.GetVersion(), Damaged(Reply("ST", 0)));

    // The status that the library returns is the login's 0.
    public static void DamagedEnvelope() => FailedExchange(nameof(DamagedEnvelope),
        client => client.Encrypt(Message), Reply("LS", 0), Damaged(Reply("BE", 0)));

    // The call leaves no log.
    public static void DamagedStatus() => FailedExchange(nameof(DamagedStatus),
        client => client.GetPayloadStatus("", new[] { "a", "b" }), Reply("DE", 5), Damaged(Reply("DE", 17)));

    // The connection is left open.
    public static void DamagedStop() => FailedExchange(nameof(DamagedStop),
        client => client.StopDaemon(), Damaged(Reply("SD", 0)));

    public static void ResetConnection() => FailedExchange(nameof(ResetConnection),
        client => client.Decrypt(new DecryptRequest { Envelope = "" }), Reset);

    private static void FailedExchange(string name, Action<TarnClient> call, params byte[][] replies)
    {
        var daemon = new ScriptedDaemon();
        string outcome = "";
        daemon.Requests(() => outcome = Outcome.Of(() => call(daemon.Client)), replies);
        string after = Outcome.Of(() => daemon.Client.VerifyConfig("a"));
        if (Outcome.Of(() => new TarnClient().StopDaemon()) != after)
            after = "not all calls are refused";
        string sent = daemon.TakeRequests();
        Console.WriteLine($"{name}: {outcome}, {after}, {(sent == "" ? "nothing" : sent)} sent");
    }

    // The call never returns, but it does not hold up its caller, nor the end of the process on .NET.
    public static void ClosedConnection()
    {
        var daemon = new ScriptedDaemon();
        daemon.Client.CallTimeout = TimeSpan.FromSeconds(1);
        daemon.Answer(Close);
        string outcome = Outcome.Of(() => daemon.Client.VerifyConfig("a"));
        Console.WriteLine($"{outcome} {Outcome.Of(() => daemon.Client.VerifyConfig("b"))}");
#if !NET
        Process.GetCurrentProcess().Kill(); // Mono waits for its threads to return from native code.
#endif
    }

    public static void Overrun()
    {
        TarnBuffers.ValueUnits = Environment.SystemPageSize;
        Overrun("-0".Length, client => client.GetVersion().Split('-')[0], text => Reply("ST", 0, "v ", text));
    }

    public static void WideOverrun()
    {
        TarnBuffers.TextUnits = Environment.SystemPageSize;
        Overrun("k: ; ".Length, client => client.GetLocales()["k"], text => Reply("LT", 0, "sl", List("k", text)));
    }

    // A text that fills the buffer with what is around it, and then one that is a unit longer.
    private static void Overrun(int around, Func<TarnClient, string> call, Func<string, byte[]> reply)
    {
        var daemon = new ScriptedDaemon();
        string fitting = new string('v', Environment.SystemPageSize - around - 1);
        daemon.Answer(reply(fitting));
        Console.WriteLine(call(daemon.Client) == fitting ? "fits" : "does not fit");
        daemon.Answer(reply(fitting + "v"));
        signal(11, IntPtr.Zero); // the system ends the process; the run-times' own reports of it can take long
        call(daemon.Client);
        Console.WriteLine("survived");
    }

    [DllImport("libc")]
    private static extern IntPtr signal(int number, IntPtr handler);

    public static void NoDaemon()
    {
        var client = new TarnClient();
        Console.WriteLine(Outcome.Of(() => client.VerifyConfig("a")) + " " +
            ((TarnUnavailableException)Outcome.Failure).NativeErrorCode);
        Console.WriteLine(Outcome.Of(() => client.StartDaemon("dämon.jar")) + " " +
            ((TarnLaunchException)Outcome.Failure).NativeErrorCode);
        // The jar's path in the system's encoding.
        string line = client.LastLog.Split('\n')[0];
        Console.WriteLine(line.Substring(line.IndexOf("jarDaemon")));
        Console.WriteLine(Outcome.Of(() => client.WaitForDaemon(TimeSpan.Zero)));
    }

    public static void Load()
    {
        TarnClient.LibraryPath = Environment.GetEnvironmentVariable("TARN_TEST_PATH") ?? "";
        try
        {
            new TarnClient().GetVersion();
        }
        catch (TarnUnavailableException)
        {
            string mapped = File.ReadAllLines("/proc/self/maps").First(line => line.Contains("libTarnRemoteClient.so"));
            Console.WriteLine(mapped.Substring(mapped.IndexOf('/')));
        }
        catch (DllNotFoundException exception)
        {
            Console.WriteLine("DllNotFoundException " + exception.Message);
        }
    }
}
