using System;
using System.Diagnostics;
using System.IO;
using System.Reflection;
using System.Threading.Tasks;
using Xunit;

[assembly: CollectionBehavior(DisableTestParallelization = true)] // there is one port

// `Tests CASE` runs a case of ChildCases; on Mono `Tests` runs all tests.
internal static class Program
{
    private static int Main(string[] arguments)
    {
        if (arguments.Length == 1)
        {
            typeof(ChildCases).GetMethod(arguments[0]).Invoke(null, null);
            return 0;
        }
#if NET
        Console.Error.WriteLine("use dotnet test");
        return 2;
#else
        return Runner.Run(typeof(Program).Assembly);
#endif
    }

    // A path that the script which runs the tests has set.
    public static string PathFrom(string variable) => Environment.GetEnvironmentVariable(variable) ??
        throw new InvalidOperationException(variable + " is not set: use tests/csharp/run");
}

// A process of its own for what ends or blocks the process that does it.
internal static class Child
{
    public static (int ExitCode, string Output) Run(string childCase, string folder = null,
        string workingFolder = null, params string[] settings)
    {
        string program = typeof(Child).Assembly.Location;
        if (folder != null)
            program = Path.Combine(folder, Path.GetFileName(program));
        var start = new ProcessStartInfo(Type.GetType("Mono.Runtime") == null ? "dotnet" : "mono",
            $"\"{program}\" {childCase}") { UseShellExecute = false, RedirectStandardOutput = true,
            RedirectStandardError = true, WorkingDirectory = workingFolder ?? Path.GetTempPath() };
        foreach (string setting in settings)
            start.EnvironmentVariables[setting.Split('=')[0]] = setting.Split('=')[1];
        using (Process process = Process.Start(start))
        {
            Task<string> errors = process.StandardError.ReadToEndAsync();
            Task<string> output = process.StandardOutput.ReadToEndAsync();
            if (!process.WaitForExit(60000))
            {
                process.Kill();
                throw new TimeoutException(childCase + " does not end; it printed " + output.Result + errors.Result);
            }
            return (process.ExitCode, output.Result + errors.Result);
        }
    }
}
