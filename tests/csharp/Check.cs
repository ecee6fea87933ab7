using System;

// Runs the tests and counts them. What does not hold is an exception, whose trace tells the line.
internal static class Check
{
    private static int passed, failed;

    private static int Main(string[] arguments)
    {
        Test("declarations", () => DeclarationTests.Run(arguments[0]));
        ScriptedTests.Run();
        StandInStory.Run(arguments[1], arguments[2]);
        Console.WriteLine($"{passed} passed, {failed} failed");
        return failed == 0 ? 0 : 1;
    }

    public static void Test(string name, Action body)
    {
        try
        {
            body();
            ++passed;
        }
        catch (Exception exception)
        {
            ++failed;
            Console.WriteLine($"FAILED: {name}: {exception}");
        }
    }

    public static void That(bool condition, string claim)
    {
        if (!condition)
            throw new Exception("not so: " + claim);
    }

    public static void Equal(object expected, object actual) =>
        That(Equals(expected, actual), $"expected <{expected}>, got <{actual}>");
}
