using System;
using System.Collections.Concurrent;
using System.IO;
using System.Linq;
using System.Net;
using System.Net.Sockets;
using System.Runtime.InteropServices;
using System.Text;
using System.Text.RegularExpressions;
using System.Threading;
using Tarn;
using Xunit;

// A daemon that answers with the replies it is given, when it is given them, and shows the requests it got as texts.
public sealed class ScriptedDaemon : IDisposable
{
    public const string Text = "Grüße Ω 日本 𠮷🔒", Config = "/Päckchen/𠮷.xml";
    // In the place of a reply: ends the connection, as a daemon does that exits or that is killed.
    public static readonly byte[] Close = new byte[0], Reset = new byte[0];

    private readonly TcpListener listener = new TcpListener(IPAddress.Loopback, 53007);
    private readonly BlockingCollection<byte[]> replies = new BlockingCollection<byte[]>();
    private readonly BlockingCollection<string> requests = new BlockingCollection<string>();

    public ScriptedDaemon()
    {
        listener.Start();
        new Thread(Serve) { IsBackground = true }.Start();
        Requests(() => Client.VerifyConfig(""), Reply("ST", 0), Reply("VC", 0));
    }

    public TarnClient Client { get; } = new TarnClient { ConfigFile = Config, CallTimeout = TimeSpan.FromSeconds(30) };

    // The requests of a call, one per line. Each of the replies must be fetched.
    public string Requests(Action call, params byte[][] answers)
    {
        foreach (byte[] answer in answers)
            Answer(answer);
        TakeRequests();
        call();
        Assert.True(replies.Count == 0, "not all replies were fetched");
        return TakeRequests();
    }

    public void Answer(byte[] reply) => replies.Add(reply);

    public void WaitForRequest() => Assert.True(requests.TryTake(out _, 20000), "no request came");

    public string TakeRequests()
    {
        string taken = "";
        while (requests.TryTake(out string request))
            taken += (taken == "" ? "" : "\n") + request;
        return taken;
    }

    public void Dispose()
    {
        Requests(() => Client.StopDaemon(), Reply("SD", 0));
        listener.Stop();
    }

    // Values are texts, bytes or numbers as wide as their type.
    public static byte[] Reply(string code, short status, params object[] tagsAndValues)
    {
        byte[] body = Join(new byte[] { 0, 7 }, Encode(code), Parameters("st", status, "em", Text),
            Parameters(tagsAndValues), new byte[] { 0xCE, 0xDE });
        return Join(body, Encode(Crc(body)));
    }

    public static byte[] Damaged(byte[] reply) =>
        reply.Select((b, i) => i < reply.Length - 1 ? b : (byte)~b).ToArray();

    public static byte[] Parameters(params object[] tagsAndValues) =>
        Join(tagsAndValues.Select((value, i) => i % 2 == 0 ? Encode(value) : List(value)).ToArray());

    // The form of arrays, and of maps with key and value in turn.
    public static byte[] List(params object[] values) =>
        Join(values.Select(Encode).SelectMany(value => new[] { Encode(value.Length), value }).ToArray());

    private static byte[] Encode(object value) => value as byte[] ?? (value is string text
        ? Encoding.UTF8.GetBytes(text)
        : BitConverter.GetBytes(Convert.ToInt64(value)).Take(Marshal.SizeOf(value)).Reverse().ToArray());

    private static byte[] Join(params byte[][] parts)
    {
        var joined = new MemoryStream();
        foreach (byte[] part in parts)
            joined.Write(part, 0, part.Length);
        return joined.ToArray();
    }

    private static readonly uint[] CrcOfByte = Enumerable.Range(0, 256).Select(next => Enumerable.Range(0, 8)
        .Aggregate((uint)next, (crc, bit) => crc >> 1 ^ (0xEDB88320 & (0 - (crc & 1))))).ToArray();

    private static uint Crc(byte[] bytes) =>
        ~bytes.Aggregate(0xFFFFFFFF, (crc, next) => crc >> 8 ^ CrcOfByte[(byte)(crc ^ next)]);

    // Each connection lasts until the client stops the daemon.
    private void Serve()
    {
        try
        {
            for (;;)
                using (TcpClient connection = listener.AcceptTcpClient())
                    Serve(connection);
        }
        catch (Exception exception) when (exception is SocketException || exception is IOException ||
            exception is InvalidOperationException)
        {
            // The test, or its process, is at its end.
        }
    }

    private void Serve(TcpClient connection)
    {
        var reader = new BinaryReader(connection.GetStream());
        for (string request = ""; !request.StartsWith("SD");)
        {
            request = Show(reader);
            requests.Add(request);
            byte[] reply = replies.Take();
            if (reply == Reset)
                connection.LingerState = new LingerOption(true, 0);
            if (reply.Length == 0)
                return;
            connection.GetStream().Write(reply, 0, reply.Length);
        }
    }

    private static string Show(BinaryReader reader)
    {
        reader.ReadInt16();
        string shown = Tag(reader);
        for (string tag = Tag(reader); tag != "??"; tag = Tag(reader)) // 0xCEDE ends the parameters
        {
            byte[] value = reader.ReadBytes(IPAddress.NetworkToHostOrder(reader.ReadInt32()));
            // The client version text is the build's; it only must be there.
            shown += tag == "tc" && value.Length > 0 ? "" : $" {tag}={Show(value)}";
        }
        reader.ReadInt32();
        return shown;
    }

    private static string Tag(BinaryReader reader) => Encoding.ASCII.GetString(reader.ReadBytes(2));

    // Numbers are short and begin with a byte that begins no text; the sizes within lists and maps become dots.
    private static string Show(byte[] value) =>
        value.Length > 0 && value.Length <= 8 && (value[0] < 2 || value[0] == 0xFF)
            ? BitConverter.ToString(value)
            : Regex.Replace(Encoding.UTF8.GetString(value), "[\0-\x1f]+", "·");
}
