using System;

internal static class Program
{
    private static int Main(string[] arguments)
    {
        if (arguments.Length != 3)
        {
            Console.Error.WriteLine("usage: Tests.exe HEADER STANDIN EXAMPLE");
            return 2;
        }
        DeclarationTests.Run(arguments[0]);
        Check.Test("scripted daemon", ScriptedTests.Run);
        Check.Test("stand-in daemon", () => StandInStory.Run(arguments[1], arguments[2]));
        Console.WriteLine(Check.Passed + " passed, " + Check.Failed + " failed");
        return Check.Failed == 0 ? 0 : 1;
    }
}
