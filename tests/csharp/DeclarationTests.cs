using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using Tarn;

// The declarations against the header's text.
internal static class DeclarationTests
{
    // What stands in C# for each type of the header.
    private static readonly Dictionary<string, string> Types = new Dictionary<string, string>
    {
        { "uint8_t", "Byte" }, { "int32_t", "Int32" }, { "uint32_t", "UInt32" }, { "int64_t", "Int64" },
        { "const char *", "Byte[]" }, { "char *", "IntPtr" }, { "const TarnWideChar *", "String LPWStr" },
        { "TarnWideChar *", "IntPtr" }, { "const char *const *", "IntPtr[]" },
        { "const TarnWideChar *const *", "IntPtr[]" }, { "const int32_t *", "Int32[]" },
        { "const int64_t *", "Int64[]" }, { "const uint32_t *", "UInt32&" }, { "uint32_t *", "UInt32&" },
        { "int32_t *", "Int32&" }, { "uint8_t *", "Byte&" }, { "TarnRecipientEntry **", "IntPtr&" }
    };

    // Bytes of known number and records in place are arrays; a record alone is a reference.
    private static readonly Dictionary<string, string> Exceptions = new Dictionary<string, string>
    {
        { "nameBuffer", "Byte[]" }, { "contentTypeBuffer", "Byte[]" }, { "dataBuffer", "Byte[]" },
        { "AddOrUpdateRemoteRecipientEntries entries", "TarnRecipientEntry[]" }, { "record", "TarnRecipientEntry&" }
    };

    public static void Run(string headerFile)
    {
        string header = Regex.Replace(File.ReadAllText(headerFile), @"/\*.*?\*/", "", RegexOptions.Singleline);
        Check.Test("record layout", () => Layout(header));
        Check.Test("signatures", () => Signatures(header));
    }

    private static void Layout(string header)
    {
        Match size = Regex.Match(header, @"TARN_ASSERT_LAYOUT\(sizeof\(TarnRecipientEntry\) == (\d+)\)");
        Check.Equal(int.Parse(size.Groups[1].Value), Marshal.SizeOf(typeof(TarnRecipientEntry)), "size of the record");
        var asserted = Regex.Matches(header, @"TARN_ASSERT_LAYOUT\(offsetof\(TarnRecipientEntry, (\w+)\) == (\d+)\)")
            .Cast<Match>().Select(match => match.Groups[1].Value + " " + match.Groups[2].Value);
        var declared = typeof(TarnRecipientEntry).GetFields()
            .Select(field => field.Name + " " + Marshal.OffsetOf(typeof(TarnRecipientEntry), field.Name));
        Check.Sequence(asserted, declared, "offsets of the record");
    }

    private static void Signatures(string header)
    {
        var expected = Regex.Matches(header, @"TARN_API (\w+) (\w+)\(([^)]*)\);").Cast<Match>().Select(export =>
        {
            string name = export.Groups[2].Value;
            var parameters = export.Groups[3].Value.Split(',').Select(parameter =>
            {
                Match parts = Regex.Match(Regex.Replace(parameter, @"\s+", " ").Trim(), @"^(.*?) ?(\w+)$");
                string named = parts.Groups[2].Value;
                return Exceptions.TryGetValue(named, out string type) ||
                       Exceptions.TryGetValue(name + " " + named, out type)
                    ? type
                    : Types[parts.Groups[1].Value];
            });
            return Types[export.Groups[1].Value] + " " + name + "(" + string.Join(", ", parameters) + ") Cdecl";
        }).ToList();
        var declared = typeof(TarnRemoteClient).GetMethods(BindingFlags.Public | BindingFlags.Static)
            .Where(method => method.Attributes.HasFlag(MethodAttributes.PinvokeImpl)).Select(method =>
                method.ReturnType.Name + " " + method.Name + "(" +
                string.Join(", ", method.GetParameters().Select(Describe)) + ") " +
                method.GetCustomAttribute<DllImportAttribute>().CallingConvention);
        Check.Equal(21, expected.Count, "exports in the header");
        foreach (var pair in expected.OrderBy(text => text).Zip(declared.OrderBy(text => text), Tuple.Create))
            Check.Equal(pair.Item1, pair.Item2, "declaration");
        Check.Equal(expected.Count, declared.Count(), "declarations");
    }

    private static string Describe(ParameterInfo parameter)
    {
        var marshal = parameter.GetCustomAttribute<MarshalAsAttribute>();
        return parameter.ParameterType.Name + (marshal == null ? "" : " " + marshal.Value);
    }
}
