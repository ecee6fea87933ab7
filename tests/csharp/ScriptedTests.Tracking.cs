using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using Tarn;

internal static partial class ScriptedTests
{
    private static byte[] Record(params string[] fields) { return Reply.Parameter("da", Reply.Sized(fields)); }

    private static void Tracking()
    {
        var records = new[] { Record("to", Address, "FLAGS", "3", "statusMsg", Text, "expiryDate", "1300000000000"),
            Record("to", "b") };
        daemon.Answer(new Reply("DE", 0), new Reply("MI", 0).Text("id", "ïd").Items("ri", records));
        MessageTracking tracking = Client.GetTracking("ß", Text);
        Check.Sequence(new[] { Address + " True " + Text + " 1300000000000", "b False  0" }, tracking.Recipients.Select(
            one => one.Recipient + " " + one.Locked + " " + one.StatusMessage + " " + one.ExpiryDate), "tracking");
        Check.Equal("ïd", tracking.MessageId, "message id");
        records[1] = Record("statusMsg", "a{plugin_delimiter}b");
        daemon.Answer(new Reply("DE", 0), new Reply("MI", 0).Items("ri", records));
        Check.Throws<TarnException>(() => Client.GetTracking("", ""), "lists that do not match");
        daemon.Answer(new Reply("DE", 0).Array("tr", Enumerable.Repeat("x", 400).ToArray()));
        Check.Throws<ArgumentException>(() => Client.GetTracking("", ""), "a reply that would overflow the log");
        daemon.Answer(new Reply("DE", 7), new Reply("MI", 7));
        Check.Equal(7, Check.Throws<TarnException>(() => Client.GetTracking("", ""), "status 7").Status, "status");
        for (int i = 0; i < 7; ++i)
            daemon.NextRequest();

        daemon.Answer(new Reply("SI", 0), new Reply("SI", 9, Text));
        var states = new[] { new RecipientTracking { Recipient = Address, Locked = true, StatusMessage = Text,
            ExpiryDate = 1L << 40 }, new RecipientTracking { Recipient = "b" }, new RecipientTracking() };
        var refusal = Check.Throws<TarnException>(() => Client.SetTracking("p", Text, states), "the second's status");
        Check.Equal(9, refusal.Status, "status of the recipient that failed");
        Request first = daemon.NextRequest(), second = daemon.NextRequest();
        Check.Sequence(new[] { Address, Text, "b", "" },
            new[] { first.Text("to"), first.Text("sm"), second.Text("to"), second.Text("sm") }, "set");
        Check.Sequence(new byte[] { 1, 0, 0, 1, 0, 0, 0, 0, 0 }, first.Bytes("ls").Concat(first.Bytes("ed")),
            "lock and expiry");

        SetBoth();
    }

    // Two recipients in one call of the library itself.
    private static void SetBoth()
    {
        daemon.Answer(new Reply("SI", 4), new Reply("SI", 0));
        var addresses = new[] { Address, "b" }.Select(text => GCHandle.Alloc(Utf8.Encode(text), GCHandleType.Pinned))
            .ToArray();
        IntPtr wide = Marshal.StringToHGlobalUni(Text), log = Marshal.AllocHGlobal(TarnRemoteClient.LogSize);
        int status = TarnRemoteClient.SetLockExpireStatus(null, null, null, addresses.Select(pin =>
            pin.AddrOfPinnedObject()).ToArray(), new[] { 1, 0 }, new[] { wide, wide }, new[] { 1L, 2L }, 2, log);
        Array.ForEach(addresses, pin => pin.Free());
        Marshal.FreeHGlobal(wide);
        Marshal.FreeHGlobal(log);
        Request first = daemon.NextRequest(), second = daemon.NextRequest();
        Check.Sequence(new[] { "0", Address, Text, "1", "b", Text, "2" }, new[] { status.ToString(), first.Text("to"),
            first.Text("sm"), first.Bytes("ed")[7].ToString(), second.Text("to"), second.Text("sm"),
            second.Bytes("ed")[7].ToString() }, "arrays of two");
    }

    private static void Entries()
    {
        byte[] old = Record("msgId", "mé", "to", Address, "subject", "old");
        byte[] other = Record("msgId", "m2", "to", Address);
        byte[] full = Record("msgId", "mé", "to", Address, "subject", Text, "statusMsg", "🔒", "createDate", "1",
            "firstOpenDate", "2", "lastModifiedDate", "3", "expiryDate", "4000000000000", "numTries", "5",
            "FLAGS", "2");
        daemon.Answer(new Reply("MI", 0).Int("mx", 77).Items("ri", new[] { old, other, full }));
        EntryPage page = Client.GetEntries(new EntryQuery { UserName = Address, Password = "ß", StartAt = 258,
            MaxResults = 3, SortBy = "größe", Ascending = true });
        Check.Sequence(new[] { "mé|" + Address + "|" + Text + "|🔒|1|2|3|4000000000000|5|True",
            "m2|" + Address + "|||0|0|0|0|0|False" }, page.Entries.Select(one => string.Join("|", one.MessageId,
            one.Recipient, one.Subject, one.StatusMessage, one.CreateDate, one.FirstOpenDate, one.LastModifiedDate,
            one.ExpiryDate, one.NumTries, one.Locked)), "entries, the duplicate folded in");
        Check.Equal(77u, page.TotalCount, "total");
        Request request = daemon.NextRequest();
        Check.Equal("tc fm ky ep sf as si mx", request.Tags, "parameters");
        Check.Sequence(new byte[] { 1, 0, 0, 1, 2, 0, 0, 0, 3 },
            new[] { "as", "si", "mx" }.SelectMany(request.Bytes), "numbers of the query");
        daemon.Answer(new Reply("MI", 6).Int("mx", 1));
        Check.Throws<TarnException>(() => Client.GetEntries(new EntryQuery()), "a refused query");
        daemon.Answer(new Reply("SI", 0));
        Client.SetEntries("p", new Dictionary<string, string> { { "to", Address }, { "msgId", "é" } }, true, Text, 5);
        daemon.NextRequest();
        request = daemon.NextRequest();
        Check.Equal(Address + " é " + Text, request.Map("ri")["to"] + " " + request.Map("ri")["msgId"] + " " +
            request.Text("sm"), "selection");
        NoLeak();
    }

    [StructLayout(LayoutKind.Sequential)]
    private struct HeapFigures
    {
        public UIntPtr Arena, FreeChunks, FastChunks, MappedBlocks, MappedBytes, Unused, FastBytes, UsedBytes;
        public UIntPtr FreeBytes, Top;
    }

    [DllImport("libc.so.6")]
    private static extern HeapFigures mallinfo2();

    private static long NativeBytes()
    {
        HeapFigures heap = mallinfo2();
        return (long)(heap.UsedBytes.ToUInt64() + heap.MappedBytes.ToUInt64());
    }

    // Each kind of text, and the array, would leave 3 MB and more behind. What is freed twice ends the process.
    private static void NoLeak()
    {
        string longText = new string('x', 100);
        var records = Enumerable.Range(0, 1000).Select(i => Record("msgId", longText + i % 500, "to", longText,
            "subject", longText, "statusMsg", longText)).ToArray();
        long before = 0;
        for (int round = 0; round < 60; ++round)
        {
            if (round == 10)
                before = NativeBytes();
            daemon.Answer(new Reply("MI", 0).Int("mx", 1).Items("ri", records));
            if (Client.GetEntries(new EntryQuery()).Entries.Count != 500)
                throw new InvalidOperationException("the duplicates were not folded");
            daemon.NextRequest();
        }
        long grown = NativeBytes() - before;
        Check.That(grown < 1000000, "arrays and texts are freed; " + grown + " bytes were not");
    }

    private static void FoldEntries()
    {
        IntPtr a = Marshal.StringToCoTaskMemUni("a"), b = Marshal.StringToCoTaskMemUni("𠮷");
        var entries = new TarnRecipientEntry[2];
        entries[0] = new TarnRecipientEntry { messageId = a, recipient = a, numTries = 1 };
        uint count = 1;
        var record = new TarnRecipientEntry { messageId = a, recipient = b, numTries = 2 };
        Check.Equal(1, TarnRemoteClient.AddOrUpdateRemoteRecipientEntries(entries, ref count, ref record), "appended");
        Check.That(count == 2 && entries[1].recipient == b && entries[1].numTries == 2, "the array took it over");
        IntPtr sameAsB = Marshal.StringToCoTaskMemUni("𠮷");
        record = new TarnRecipientEntry { messageId = a, recipient = sameAsB, numTries = 3 };
        Check.Equal(0, TarnRemoteClient.AddOrUpdateRemoteRecipientEntries(entries, ref count, ref record), "updated");
        Check.That(count == 2 && entries[1].recipient == sameAsB && entries[1].numTries == 3, "the entry is new");
        Check.That(record.recipient == b && record.numTries == 2, "the former contents come back");
        foreach (IntPtr text in new[] { a, b, sameAsB })
            Marshal.FreeCoTaskMem(text);
    }
}
