using System;
using System.Collections;
using System.Linq;
using System.Reflection;
using System.Threading.Tasks;
using Tarn;

// What a call returned or threw, as one text.
internal static class Outcome
{
    public static TarnException Failure { get; private set; }

    public static string Of(Action call) => Of(() => { call(); return ""; });

    public static string Of(Func<object> call)
    {
        try
        {
            return Show(call());
        }
        catch (Exception exception)
        {
            Failure = exception as TarnException;
            if (exception is TarnRefusedException refused)
                return "status " + (int)refused.Status;
            if (exception is TarnBlockedException blocked)
                return blocked.Permanent ? "blocked for good" : "blocked";
            return exception.GetType().Name + (exception is ArgumentException argument ? " " + argument.ParamName : "");
        }
    }

    public static async Task<string> Of(Task call)
    {
        await Task.WhenAny(call);
        return Of(() => call.GetAwaiter().GetResult());
    }

    // All that a result holds.
    private static string Show(object value)
    {
        if (value == null)
            return "-";
        if (value is DateTimeOffset date)
            return date.ToString("yyyy-MM-dd");
        if (value is string || value.GetType().IsPrimitive || value.GetType().IsEnum)
            return value.ToString();
        if (value is IEnumerable list)
            return $"[{string.Join(" | ", list.Cast<object>().Select(Show))}]";
        return string.Join(" ", value.GetType().GetProperties().Select(property => Show(property.GetValue(value))));
    }
}
