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

// A daemon that answers with the replies it was given and shows the requests it got as texts.
internal sealed class ScriptedDaemon
{
    private readonly TcpListener listener = new TcpListener(IPAddress.Loopback, 53007);
    private ConcurrentQueue<byte[]> replies;
    private ConcurrentQueue<string> requests;

    public ScriptedDaemon()
    {
        listener.Start();
        new Thread(Serve) { IsBackground = true }.Start();
    }

    // The requests of a call, one a line. Each of the replies must be fetched.
    public string Requests(Action call, byte[][] answers)
    {
        replies = new ConcurrentQueue<byte[]>(answers);
        requests = new ConcurrentQueue<string>();
        call();
        Check.Equal(0, replies.Count);
        return string.Join("\n", requests);
    }

    // Values are texts, bytes or numbers as wide as their type.
    public static byte[] Reply(string code, short status, params object[] tagsAndValues)
    {
        byte[] body = new byte[] { 0, 7 }.Concat(Encode(code))
            .Concat(Parameters("st", status, "em", ScriptedTests.Text)).Concat(Parameters(tagsAndValues))
            .Concat(new byte[] { 0xCE, 0xDE }).ToArray();
        return body.Concat(Encode(Crc(body))).ToArray();
    }

    public static byte[] Parameters(params object[] tagsAndValues) =>
        tagsAndValues.SelectMany((value, i) => i % 2 == 0 ? Encode(value) : List(value)).ToArray();

    // The form of arrays, and of maps with key and value in turn.
    public static byte[] List(params object[] values) =>
        values.Select(Encode).SelectMany(value => Encode(value.Length).Concat(value)).ToArray();

    private static byte[] Encode(object value) => value as byte[] ?? (value is string text
        ? Encoding.UTF8.GetBytes(text)
        : BitConverter.GetBytes(Convert.ToInt64(value)).Take(Marshal.SizeOf(value)).Reverse().ToArray());

    private static uint Crc(byte[] bytes) =>
        ~bytes.Aggregate(0xFFFFFFFF, (crc, next) => Enumerable.Range(0, 8).Aggregate(crc ^ next,
            (register, bit) => register >> 1 ^ (0xEDB88320 & (0 - (register & 1)))));

    // An exception ends the process: without an answer the library would wait for ever.
    private void Serve()
    {
        TcpClient connection = listener.AcceptTcpClient();
        listener.Stop();
        using (var reader = new BinaryReader(connection.GetStream()))
            for (string request = ""; !request.StartsWith("SD");)
            {
                request = Show(reader);
                requests.Enqueue(request);
                if (!replies.TryDequeue(out byte[] reply))
                    throw new InvalidDataException("no reply was given for " + request);
                reader.BaseStream.Write(reply, 0, reply.Length);
            }
    }

    private static string Show(BinaryReader reader)
    {
        reader.ReadInt16();
        string shown = Tag(reader);
        for (string tag = Tag(reader); tag != "??"; tag = Tag(reader)) // 0xCEDE ends the parameters
        {
            byte[] value = reader.ReadBytes(IPAddress.NetworkToHostOrder(reader.ReadInt32()));
            shown += tag == "tc" ? "" : $" {tag}={Show(value)}";
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
