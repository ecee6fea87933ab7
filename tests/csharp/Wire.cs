using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Text;

// A request as the daemon receives it.
internal sealed class Request
{
    public string Code;
    public readonly List<KeyValuePair<string, byte[]>> Parameters = new List<KeyValuePair<string, byte[]>>();

    public byte[] Bytes(string tag) { return Parameters.Single(parameter => parameter.Key == tag).Value; }
    public string Text(string tag) { return Encoding.UTF8.GetString(Bytes(tag)); }
    public string Tags { get { return string.Join(" ", Parameters.Select(parameter => parameter.Key)); } }

    public IEnumerable<string> Texts(string tag)
    {
        return Parameters.Where(parameter => parameter.Key == tag)
            .Select(parameter => Encoding.UTF8.GetString(parameter.Value));
    }

    public Dictionary<string, string> Map(string tag)
    {
        var map = new Dictionary<string, string>();
        var reader = new WireReader(new MemoryStream(Bytes(tag)));
        for (int left = Bytes(tag).Length; left > 0;)
        {
            byte[] key = reader.Take(reader.Number(4)), value = reader.Take(reader.Number(4));
            map[Encoding.UTF8.GetString(key)] = Encoding.UTF8.GetString(value);
            left -= 8 + key.Length + value.Length;
        }
        return map;
    }

    public static Request Read(Stream stream)
    {
        var reader = new WireReader(stream);
        if (reader.Number(2) != 7)
            throw new InvalidDataException("a request of another version");
        var request = new Request { Code = reader.Tag() };
        for (string tag = reader.Tag(); tag != "\u00CE\u00DE"; tag = reader.Tag())
            request.Parameters.Add(new KeyValuePair<string, byte[]>(tag, reader.Take(reader.Number(4))));
        uint expected = Crc.Of(reader.Seen.ToArray());
        if (unchecked((uint)reader.Number(4)) != expected)
            throw new InvalidDataException("a request with a wrong CRC");
        return request;
    }
}

// A reply, built parameter by parameter.
internal sealed class Reply
{
    private readonly MemoryStream bytes = new MemoryStream();
    private readonly bool damaged;

    public Reply(string code, short status, string message = "", bool damaged = false)
    {
        this.damaged = damaged;
        Put(Number(7, 2), Encoding.ASCII.GetBytes(code));
        Add("st", Number(status, 2)).Text("em", message);
    }

    public Reply Text(string tag, string text) { return Add(tag, Encoding.UTF8.GetBytes(text)); }
    public Reply Int(string tag, int number) { return Add(tag, Number(number, 4)); }
    public Reply Long(string tag, long number) { return Add(tag, Number(number, 8)); }
    public Reply Map(string tag, params string[] keysAndValues) { return Add(tag, Sized(keysAndValues)); }
    public Reply Array(string tag, params string[] texts) { return Add(tag, Sized(texts)); }

    public Reply Items(string tag, IEnumerable<byte[]> items)
    {
        return Add(tag, items.SelectMany(item => Number(item.Length, 4).Concat(item)).ToArray());
    }

    public Reply Add(string tag, byte[] value)
    {
        Put(Parameter(tag, value));
        return this;
    }

    public byte[] Finish()
    {
        Put(new byte[] { 0xCE, 0xDE });
        byte[] message = bytes.ToArray();
        return message.Concat(Number(Crc.Of(message) ^ (damaged ? 1 : 0), 4)).ToArray();
    }

    public static byte[] Parameter(string tag, byte[] value)
    {
        return Encoding.ASCII.GetBytes(tag).Concat(Number(value.Length, 4)).Concat(value).ToArray();
    }

    public static byte[] Sized(params string[] texts)
    {
        return texts.Select(Encoding.UTF8.GetBytes).SelectMany(text => Number(text.Length, 4).Concat(text)).ToArray();
    }

    public static byte[] Number(long number, int size)
    {
        return BitConverter.GetBytes(number).Take(size).Reverse().ToArray();
    }

    private void Put(params byte[][] pieces)
    {
        foreach (byte[] piece in pieces)
            bytes.Write(piece, 0, piece.Length);
    }
}

internal sealed class WireReader
{
    private readonly Stream stream;
    public readonly MemoryStream Seen = new MemoryStream();

    public WireReader(Stream stream) { this.stream = stream; }

    public byte[] Take(int count)
    {
        var bytes = new byte[count];
        for (int have = 0; have < count;)
        {
            int read = stream.Read(bytes, have, count - have);
            if (read == 0)
                throw new EndOfStreamException();
            have += read;
        }
        Seen.Write(bytes, 0, count);
        return bytes;
    }

    public int Number(int size) { return Take(size).Aggregate(0, (number, b) => number << 8 | b); }
    public string Tag() { return new string(Take(2).Select(b => (char)b).ToArray()); }
}

internal static class Crc
{
    public static uint Of(byte[] bytes)
    {
        uint register = 0xFFFFFFFF;
        foreach (byte b in bytes)
        {
            register ^= b;
            for (int bit = 0; bit < 8; ++bit)
                register = (register >> 1) ^ (0xEDB88320 & (0 - (register & 1)));
        }
        return ~register;
    }
}
