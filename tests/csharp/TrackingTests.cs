using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using Tarn;
using Xunit;
using static ScriptedDaemon;

public class TrackingTests : ScriptedTest
{
    public TrackingTests(ScriptedDaemon daemon) : base(daemon) { }

    private static byte[] Record(params string[] fields) => Parameters("da", List(fields));

    [Fact]
    public void States()
    {
        byte[] record = Record("to", Address, "FLAGS", "3", "statusMsg", Text, "expiryDate", "1300000000000");
        Func<object> get = () => Client.GetTracking("ß", Text);
        Expect($"DE en={Text} po=01\nMI ky=ß en={Text} ep={Config}", $"ïd [{Address} True {Text} 1300000000000 " +
            "2011-03-13 | b False  0 -]", get, Reply("DE", 0),
            Reply("MI", 0, "id", "ïd", "ri", List(record, Record("to", "b"))));
        Expect(null, "TarnReplyException", get, Reply("DE", 0), Reply("MI", 0, "ri", List(Record("statusMsg",
            "a" + Delimiter + "b"))));
        Expect(null, "status 7", get, Reply("DE", 7), Reply("MI", 7));
        // The answer to the question itself would overflow the log, and end the process.
        Expect(null, "ArgumentException envelope", get,
            Reply("DE", 0, "tr", List(Enumerable.Repeat("x", 400).ToArray())));

        var expires = new DateTimeOffset(2004, 11, 3, 19, 53, 47, 776, TimeSpan.Zero); // 2^40 milliseconds
        var states = new[] { new RecipientTracking { Recipient = Address, Locked = true, StatusMessage = Text,
            Expires = expires }, new RecipientTracking { Recipient = "b" }, new RecipientTracking() };
        string sent = $"SI ky=p en={Text} ep={Config} to=";
        Expect($"{sent}{Address} ls=01 sm={Text} ed=00-00-01-00-00-00-00-00\n{sent}b ls=00 sm= ed=00-00-00-00-00-00-" +
            "00-00", "status 9", () => Client.SetTracking("p", Text, states), Reply("SI", 0), Reply("SI", 9));
    }

    [Fact]
    public void Entries()
    {
        var records = List(Record("msgId", "mé", "to", Address, "subject", "old"),
            Record("msgId", "m2", "to", Address, "createDate", long.MaxValue.ToString()),
            Record("msgId", "mé", "to", Address, "subject", Text, "statusMsg", "🔒", "createDate", "1", "firstOpenDate",
                "2", "lastModifiedDate", "3", "expiryDate", "4000000000000", "numTries", "5", "FLAGS", "6"));
        var query = new EntryQuery { UserName = Address, Password = "ß", StartAt = 258, MaxResults = 3,
            SortBy = "größe", Ascending = true };
        Expect($"MI fm={Address} ky=ß ep={Config} sf=größe as=01 si=00-00-01-02 mx=00-00-00-03",
            $"[mé {Address} {Text} 🔒 1 1970-01-01 2 1970-01-01 3 1970-01-01 4000000000000 2096-10-02 5 6 True | " +
            $"m2 {Address}   9223372036854775807 - 0 - 0 - 0 - 0 None False] 77",
            () => Client.GetEntries(query), Reply("MI", 0, "mx", 77, "ri", records));
        Expect(null, "status 6", () => Client.GetEntries(query), Reply("MI", 6, "mx", 1));
        var fields = new Dictionary<string, string> { { "to", Address }, { "msgId", "é" } };
        Expect($"SI ky=p ep={Config} ri=·msgId·é·to·{Address} ls=01 sm={Text} ed=00-00-00-00-00-00-00-05", "",
            () => Client.SetEntries("p", fields, true, Text, 5), Reply("SI", 0));
    }

    [StructLayout(LayoutKind.Explicit, Size = 80)]
    private struct HeapFigures { [FieldOffset(56)] public long UsedBytes; }

    [DllImport("libc.so.6")]
    private static extern HeapFigures mallinfo2();

    private static long AddressSpace() =>
        long.Parse(File.ReadAllText("/proc/self/statm").Split(' ')[0]) * Environment.SystemPageSize;

    // Each kind of text would leave 25 MB behind, the array 2 MB, a buffer 2 GB of address space. What is freed
    // twice ends the process.
    [Fact]
    public void Releasing()
    {
        string text = new string('x', 1000);
        byte[] reply = Reply("MI", 0, "ri", List(Enumerable.Range(0, 1000).Select(i =>
            Record("msgId", text + i % 500, "to", text, "subject", text, "statusMsg", text)).ToArray()));
        long heap = 0, space = 0;
        for (int round = 0; round < 30; ++round)
        {
            if (round == 5)
            {
                heap = mallinfo2().UsedBytes;
                space = AddressSpace();
            }
            Expect(null, "500", () => Client.GetEntries(new EntryQuery()).Entries.Count, reply);
            Expect(null, "status 3", () => Client.Authenticate("a", "b"), Reply("LS", 3));
        }
        heap = mallinfo2().UsedBytes - heap;
        // .NET goes on compiling meanwhile, and keeps what it needs for that.
        Assert.True(heap < (Type.GetType("Mono.Runtime") == null ? 10000000 : 1000000), heap + " bytes were not released");
        Assert.True(AddressSpace() - space < 1L << 30, "buffers were not released");
    }
}
