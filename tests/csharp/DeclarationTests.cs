using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using Tarn;
using Xunit;

// The declarations against the header's text.
public class DeclarationTests
{
    // The C# type for each type of the header, unless a parameter's name tells more: bytes of known number and
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

    [Fact]
    public void FunctionsAndRecord()
    {
        string header = Header();
        var asserted = Regex.Matches(header, @"TarnRecipientEntry(, \w+)?\) == \d+").Cast<Match>();
        var offsets = typeof(TarnRecipientEntry).GetFields().Select(field =>
            $"TarnRecipientEntry, {field.Name}) == " + Marshal.OffsetOf(typeof(TarnRecipientEntry), field.Name));
        Assert.Equal(string.Concat(asserted), "TarnRecipientEntry) == " + Marshal.SizeOf(typeof(TarnRecipientEntry)) +
            string.Concat(offsets));

        var exports = Regex.Matches(header, @"TARN_API (\w+) TARN_CALL (\w+)\(([^)]*)\);").Cast<Match>();
        var expected = exports.Select(export =>
        {
            string name = export.Groups[2].Value;
            var parameters = export.Groups[3].Value.Split(',').Select(parameter =>
            {
                Match parts = Regex.Match(Regex.Replace(parameter.Trim(), @"\s*\*\s*", "*"), @"^(.*?)\s*(\w+)$");
                string named = parts.Groups[2].Value;
                return Types[new[] { named, name + " " + named, parts.Groups[1].Value }.First(Types.ContainsKey)];
            });
            return $"{Types[export.Groups[1].Value]} {name}({string.Join(", ", parameters)})";
        }).ToList();
        var declared = typeof(TarnRemoteClient).GetMethods().Where(IsCdecl).Select(method =>
            $"{method.ReturnType.Name} {method.Name}(" +
            string.Join(", ", method.GetParameters().Select(parameter => parameter.ParameterType.Name)) + ")").ToList();
        Assert.Equal("", string.Join("\n", expected.Except(declared).Concat(declared.Except(expected))));
        Assert.True(expected.Count > 0);
    }

    [Fact]
    public void Constants()
    {
        string header = Header();
        foreach (string constant in new[] { $"LOG_SIZE {TarnRemoteClient.LogSize}",
                 $"LOG_LINE_SIZE {TarnRemoteClient.LogLineSize}", $"LOG_RESERVE {TarnRemoteClient.LogReserve}",
                 $"LIST_DELIMITER \"{TarnRemoteClient.ListDelimiter}\"", $"FLAG_LOCKED {TarnRemoteClient.FlagLocked}" })
            Assert.Contains($"#define TARN_{constant}\n", header);
        var statuses = Regex.Matches(header, @"TARN_STATUS_(\w+) = (-?\d+)").Cast<Match>().Select(status =>
            status.Groups[1].Value.Replace("_", "") + " " + status.Groups[2].Value).ToList();
        var declared = Enum.GetValues(typeof(TarnStatus)).Cast<TarnStatus>()
            .Select(status => status.ToString().ToUpperInvariant() + " " + (int)status).ToList();
        Assert.Equal("", string.Join("\n", statuses.Except(declared).Concat(declared.Except(statuses))));
    }

    private static string Header() =>
        Regex.Replace(File.ReadAllText(Program.PathFrom("TARN_HEADER")), @"/\*.*?\*/", "", RegexOptions.Singleline);

#if NET
    private static bool IsCdecl(MethodInfo method) =>
        method.GetCustomAttribute<UnmanagedCallConvAttribute>()?.CallConvs.Single() ==
            typeof(System.Runtime.CompilerServices.CallConvCdecl);
#else
    private static bool IsCdecl(MethodInfo method)
    {
        var import = method.GetCustomAttribute<DllImportAttribute>();
        return import != null && import.CallingConvention == CallingConvention.Cdecl &&
            import.CharSet == CharSet.Unicode;
    }
#endif
}
