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
    // What stands in C# for each type of the header, unless a parameter's name tells more: bytes of known number and
    // records in place are arrays, a record alone is a reference.
    private static readonly Dictionary<string, string> Types = new Dictionary<string, string>
    {
        { "uint8_t", "Byte" }, { "int32_t", "Int32" }, { "uint32_t", "UInt32" }, { "int64_t", "Int64" },
        { "const char*", "Byte[]" }, { "char*", "IntPtr" }, { "const TarnWideChar*", "String" },
        { "TarnWideChar*", "IntPtr" }, { "const char*const*", "IntPtr[]" },
        { "const TarnWideChar*const*", "IntPtr[]" }, { "const int32_t*", "Int32[]" }, { "const int64_t*", "Int64[]" },
        { "const uint32_t*", "UInt32&" }, { "uint32_t*", "UInt32&" }, { "int32_t*", "Int32&" },
        { "uint8_t*", "Byte&" }, { "TarnRecipientEntry**", "IntPtr&" }, { "nameBuffer", "Byte[]" },
        { "contentTypeBuffer", "Byte[]" }, { "dataBuffer", "Byte[]" }, { "record", "TarnRecipientEntry&" },
        { "AddOrUpdateRemoteRecipientEntries entries", "TarnRecipientEntry[]" }
    };

    public static void Run(string headerFile)
    {
        string header = Regex.Replace(File.ReadAllText(headerFile), @"/\*.*?\*/", "", RegexOptions.Singleline);
        var asserted = Regex.Matches(header, @"TarnRecipientEntry(, \w+)?\) == \d+").Cast<Match>();
        var offsets = typeof(TarnRecipientEntry).GetFields().Select(field =>
            $"TarnRecipientEntry, {field.Name}) == " + Marshal.OffsetOf(typeof(TarnRecipientEntry), field.Name));
        Check.Equal(string.Concat(asserted), "TarnRecipientEntry) == " + Marshal.SizeOf(typeof(TarnRecipientEntry)) +
            string.Concat(offsets));
        Check.That(header.Contains($"TARN_LOG_SIZE {TarnRemoteClient.LogSize}\n") &&
            header.Contains($"TARN_LIST_DELIMITER \"{TarnRemoteClient.ListDelimiter}\"\n") &&
            header.Contains($"TARN_FLAG_LOCKED {TarnRemoteClient.FlagLocked}\n"), "the constants are the header's");

        var expected = Regex.Matches(header, @"TARN_API (\w+) (\w+)\(([^)]*)\);").Cast<Match>().Select(export =>
        {
            string name = export.Groups[2].Value;
            var parameters = export.Groups[3].Value.Split(',').Select(parameter =>
            {
                Match parts = Regex.Match(Regex.Replace(parameter.Trim(), @"\s*\*\s*", "*"), @"^(.*?)\s*(\w+)$");
                string named = parts.Groups[2].Value;
                return Types[new[] { named, name + " " + named, parts.Groups[1].Value }.First(Types.ContainsKey)];
            });
            return $"{Types[export.Groups[1].Value]} {name}({string.Join(", ", parameters)}) Cdecl Unicode";
        }).ToList();
        var declared = typeof(TarnRemoteClient).GetMethods()
            .Where(method => method.Attributes.HasFlag(MethodAttributes.PinvokeImpl)).Select(method =>
            {
                var import = method.GetCustomAttribute<DllImportAttribute>();
                var parameters = method.GetParameters().Select(parameter => parameter.ParameterType.Name);
                return $"{method.ReturnType.Name} {method.Name}({string.Join(", ", parameters)}) " +
                    $"{import.CallingConvention} {import.CharSet}";
            }).ToList();
        Check.Equal("", string.Join("\n", expected.Except(declared).Concat(declared.Except(expected))));
        Check.Equal("21 21", expected.Count + " " + declared.Count);
    }
}
