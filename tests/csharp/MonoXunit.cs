using System;
using System.Collections;
using System.Collections.Generic;
using System.Linq;
using System.Reflection;
using System.Threading.Tasks;

// For Mono, which has no xunit: as much of it as the tests use, and a runner.
namespace Xunit
{
    public sealed class FactAttribute : Attribute { }

    public interface IClassFixture<T> { }

    public sealed class CollectionBehaviorAttribute : Attribute { public bool DisableTestParallelization { get; set; } }

    public static class Assert
    {
        public static void Equal<T>(T expected, T actual) =>
            True(expected is IEnumerable list && !(expected is string)
                ? list.Cast<object>().SequenceEqual(((IEnumerable)actual).Cast<object>())
                : Equals(expected, actual), $"expected <{expected}>, got <{actual}>");

        public static void True(bool condition, string claim = "it is not true")
        {
            if (!condition)
                throw new Exception(claim);
        }

        public static void Contains(string part, string text) => True(text.Contains(part), $"no <{part}> in <{text}>");

        public static void DoesNotContain(string part, string text) =>
            True(!text.Contains(part), $"<{part}> is in <{text}>");
    }

    internal static class Runner
    {
        public static int Run(Assembly tests)
        {
            int passed = 0, failed = 0;
            foreach (Type type in tests.GetTypes().Where(type => Facts(type).Any()).OrderBy(type => type.Name))
            {
                object[] fixtures = type.GetConstructors()[0].GetParameters()
                    .Select(parameter => Activator.CreateInstance(parameter.ParameterType)).ToArray();
                foreach (MethodInfo fact in Facts(type))
                    try
                    {
                        (fact.Invoke(Activator.CreateInstance(type, fixtures), null) as Task)?.GetAwaiter().GetResult();
                        ++passed;
                    }
                    catch (Exception exception)
                    {
                        ++failed;
                        Console.WriteLine($"FAILED: {type.Name}.{fact.Name}: {exception.InnerException ?? exception}");
                    }
                foreach (IDisposable fixture in fixtures.OfType<IDisposable>())
                    fixture.Dispose();
            }
            Console.WriteLine($"Mono: {passed} passed, {failed} failed");
            return passed > 0 && failed == 0 ? 0 : 1;
        }

        private static IEnumerable<MethodInfo> Facts(Type type) =>
            type.GetMethods().Where(method => method.GetCustomAttribute<FactAttribute>() != null);
    }
}
