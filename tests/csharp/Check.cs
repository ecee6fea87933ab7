using System;
using System.Collections.Generic;
using System.Linq;

// Counts what holds and tells what does not.
internal static class Check
{
    public static int Passed { get; private set; }
    public static int Failed { get; private set; }

    public static void That(bool condition, string claim)
    {
        if (condition)
        {
            ++Passed;
            return;
        }
        ++Failed;
        Console.WriteLine("FAILED: " + claim);
    }

    public static void Equal<T>(T expected, T actual, string what)
    {
        That(Equals(expected, actual), what + ": expected <" + expected + ">, got <" + actual + ">");
    }

    public static void Sequence<T>(IEnumerable<T> expected, IEnumerable<T> actual, string what)
    {
        That(expected.SequenceEqual(actual), what + ": expected <" + string.Join("|", expected) + ">, got <" +
            string.Join("|", actual) + ">");
    }

    public static E Throws<E>(Action action, string what) where E : Exception
    {
        try
        {
            action();
        }
        catch (E exception)
        {
            ++Passed;
            return exception;
        }
        catch (Exception other)
        {
            throw new InvalidOperationException(what + " threw " + other.GetType().Name, other);
        }
        throw new InvalidOperationException(what + " did not throw " + typeof(E).Name);
    }

    // One test. An exception that leaves it counts as a failure and ends that test alone.
    public static void Test(string name, Action body)
    {
        try
        {
            body();
        }
        catch (Exception exception)
        {
            ++Failed;
            Console.WriteLine("FAILED: " + name + ": " + exception);
        }
    }
}
