using System;
using System.Collections;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using Tarn;
using static ScriptedDaemon;

// The wrapper against a daemon whose replies are given, with texts beyond ASCII and beyond 16 bits in every direction.
internal static class ScriptedTests
{
    public const string Text = "Grüße Ω 日本 𠮷🔒";
    private const string Address = "jürgen🔒@example.com", Config = "/Päckchen/𠮷.xml";
    private static readonly TarnClient Client = new TarnClient { ConfigFile = Config };
    private static ScriptedDaemon daemon;
    public static TarnException Refusal { get; private set; }

    public static void Run()
    {
        Check.Test("NoDaemon", NoDaemon);
        daemon = new ScriptedDaemon();
        foreach (Action test in new Action[] { Login, Encrypt, Decrypt, Inquiries, Tracking, Entries,
                 ReleasedEntries, KeyServer, Enrollment, RefusedStop })
            Check.Test(test.Method.Name, test);
    }

    // One call: the requests that it sends, when they matter, and what it returns or throws.
    private static void Expect(string requests, string result, Func<object> call, params byte[][] replies)
    {
        string got = null, sent = daemon.Requests(() => got = Outcome(call), replies);
        Check.Equal(result, got);
        Check.Equal(requests ?? sent, sent);
    }

    private static void Expect(string requests, string result, Action call, params byte[][] replies) =>
        Expect(requests, result, () => { call(); return ""; }, replies);

    public static string Outcome(Func<object> call)
    {
        try
        {
            return Show(call());
        }
        catch (Exception exception)
        {
            Refusal = exception as TarnException;
            return Refusal == null ? exception.GetType().Name
                : (Refusal.ExchangeFailed ? "failed " : "status ") + Refusal.Status;
        }
    }

    // All that a result holds.
    private static string Show(object value) => value is string || value.GetType().IsPrimitive ? value.ToString()
        : value is IEnumerable list ? $"[{string.Join(" | ", list.Cast<object>().Select(Show))}]"
        : string.Join(" ", value.GetType().GetProperties().Select(property => Show(property.GetValue(value))));

    private static byte[] Damaged(byte[] reply) =>
        reply.Select((b, i) => i < reply.Length - 1 ? b : (byte)~b).ToArray();

    private static void NoDaemon()
    {
        Check.Equal("failed -1", Outcome(Client.GetVersion));
        Check.That(Refusal.Log.Contains("] Unexpected exception occured. GetLastError() : "), "the log tells of it");
        // A login has a failure line of its own.
        Check.Equal("failed -1", Outcome(() => { Client.Authenticate("a", "b"); return ""; }));
        Check.Equal("status 2", Outcome(() => { Client.StartDaemon("dämon.jar"); return ""; }));
        Check.That(Refusal.Log.Contains("jarDaemon: dämon.jar\n"), "the jar's path in the system's encoding");
    }

    private static void Login()
    {
        Expect($"LS to={Address} ky=pässword ep={Config}", "status 25", () => Client.Authenticate(Address, "pässword"),
            Reply("LS", 25, "lk", Text));
        Check.That(Refusal.Detail == Text && Refusal.Message.EndsWith(": " + Text), "the daemon's texts are told");
        Check.That(Refusal.Log.Contains("Status code: 25") && Refusal.Log == Client.LastLog, "and the log");
        Expect($"VC ep={Config} fm={Address}", "status -2", () => Client.VerifyConfig(Address), Reply("VC", -2));
        Expect("", "ArgumentException", () => Client.VerifyConfig("a\0b"));
        Expect("", "ArgumentNullException", () => Client.Authenticate(null, ""));
    }

    private static void Encrypt()
    {
        var message = new EncryptRequest { From = Address, Password = "p", To = { "a", Address }, Cc = { "ç" },
            Bcc = { "b" }, MimeMessage = Encoding.UTF8.GetBytes(Text) };
        byte[] login = Reply("LS", 0, "sl", List("token", Text));
        string large = string.Concat(Enumerable.Repeat(Text, 60000)),
            to = $"fm={Address} to=a to={Address} cc=ç bc=b", mail = $"ep={Config} mm={Text}";
        Expect($"LS to={Address} ky=p ep={Config}\nBE sl=·token·{Text} {to} {mail}", $"{large} {Text} <p>{Text} 🔒.html",
            () => Client.Encrypt(message), login, Reply("BE", 0, "en", large, "tb", Text, "th", "<p>" + Text, "an",
            "🔒.html"));
        Expect(null, "status 3", () => Client.Encrypt(message), Reply("LS", 3));
        Check.Equal("", Refusal.Log);
        // A failure after a login is no success, although the last status is the login's.
        Expect(null, "failed 0", () => Client.Encrypt(message), login, Damaged(Reply("BE", 0)));
        message.Login = false;
        message.EncodedConfig = "107&58&32&118&59&32&";
        Expect($"BE {to} ec=·k·v {mail}", "   ", () => Client.Encrypt(message), Reply("BE", 0));
        for (int i = 0; i < 400; ++i)
            message.Bcc.Add("recipient-" + i + "@example.com");
        Expect("", "ArgumentException", () => Client.Encrypt(message));
    }

    private static void Decrypt()
    {
        var items = List(Parameters("ty", 1, "fl", 2, "on", Text, "fc", "text/plain", "da", new byte[] { 0, 255, 0 }),
            Parameters("ty", 2, "fl", -1, "on", "", "fc", "", "da", ""),
            Parameters("ty", 3, "fl", 0, "on", "b", "fc", "x/" + Text, "da", "c"));
        var question = new DecryptRequest { Envelope = Text, Recipient = Address, Password = "ß", SessionKey = "🔒",
            KeepOpen = true };
        DecryptedMessage message = null;
        Expect($"DE ky=ß en={Text} ep={Config} to={Address} sk=🔒 po=01", $"2 1 {Text} text/plain [0 | 255 | 0]",
            () => (message = Client.Decrypt(question)).Items.First(),
            Reply("DE", 0, "ku", Text, "fm", Address, "ec", List("é", "𠮷"), "da", items));
        Check.Equal(Text + Address + "-61&-87&58&32&-16&-96&-82&-73&59&32&",
            message.Key + message.Sender + message.EncodedConfig);
        Expect(null, "status 2", () => Client.Decrypt(new DecryptRequest()), Reply("DE", 2));
        Expect("", $"[4294967295 2   [] | 0 3 b x/{Text} [99]]", () => message.Items);
        Expect(null, "[]", () => Client.Decrypt(question).Items, Reply("DE", 0));
        Expect("", "InvalidOperationException", () => message.Items);
    }

    private static void Inquiries()
    {
        Expect(null, $"[{Address} 11 {Text} | b 20 {Text} | c 18 90 | d 0 ] é1 {Address} 2",
            () => Client.GetPayloadStatus(Text, new[] { Address, "b", "c", "d", "e" }),
            Reply("DE", 11, "lk", Text, "uu", "é1", "fm", Address, "ms", 2), Reply("DE", 20),
            Reply("DE", 18, "se", 90L), Reply("DE", 0));
        Expect(null, "failed -1", () => Client.GetPayloadStatus("", new string[0]), Damaged(Reply("DE", 17)));
        Expect("", "ArgumentException", () => Client.GetPayloadStatus("", new[] { "a;b" }));
        Expect(null, $"[{Address} | b | ç] -1", () => Client.GetRecipients(Text),
            Reply("DE", 0, "tr", List(Address, "b"), "tc", List("ç"), "ms", -1));
    }

    private static byte[] Record(params string[] fields) => Parameters("da", List(fields));

    private static void Tracking()
    {
        byte[] record = Record("to", Address, "FLAGS", "3", "statusMsg", Text, "expiryDate", "1300000000000");
        Func<object> get = () => Client.GetTracking("ß", Text);
        Expect($"DE en={Text} po=01\nMI ky=ß en={Text} ep={Config}", $"ïd [{Address} True {Text} 1300000000000 | b " +
            "False  0]", get, Reply("DE", 0), Reply("MI", 0, "id", "ïd", "ri", List(record, Record("to", "b"))));
        Expect(null, "failed 0", get, Reply("DE", 0), Reply("MI", 0, "ri", List(Record("statusMsg",
            "a{plugin_delimiter}b"))));
        Expect(null, "status 7", get, Reply("DE", 7), Reply("MI", 7));
        Expect(null, "ArgumentException", get, Reply("DE", 0, "tr", List(Enumerable.Repeat("x", 400).ToArray())));

        var states = new[] { new RecipientTracking { Recipient = Address, Locked = true, StatusMessage = Text,
            ExpiryDate = 1L << 40 }, new RecipientTracking { Recipient = "b" }, new RecipientTracking() };
        string sent = $"SI ky=p en={Text} ep={Config} to=";
        Expect($"{sent}{Address} ls=01 sm={Text} ed=00-00-01-00-00-00-00-00\n{sent}b ls=00 sm= ed=00-00-00-00-00-00-" +
            "00-00", "status 9", () => Client.SetTracking("p", Text, states), Reply("SI", 0), Reply("SI", 9));
    }

    private static void Entries()
    {
        var records = List(Record("msgId", "mé", "to", Address, "subject", "old"), Record("msgId", "m2", "to", Address),
            Record("msgId", "mé", "to", Address, "subject", Text, "statusMsg", "🔒", "createDate", "1", "firstOpenDate",
                "2", "lastModifiedDate", "3", "expiryDate", "4000000000000", "numTries", "5", "FLAGS", "2"));
        var query = new EntryQuery { UserName = Address, Password = "ß", StartAt = 258, MaxResults = 3,
            SortBy = "größe", Ascending = true };
        Expect($"MI fm={Address} ky=ß ep={Config} sf=größe as=01 si=00-00-01-02 mx=00-00-00-03",
            $"[mé {Address} {Text} 🔒 1 2 3 4000000000000 5 2 True | m2 {Address}   0 0 0 0 0 0 False] 77",
            () => Client.GetEntries(query), Reply("MI", 0, "mx", 77, "ri", records));
        Expect(null, "status 6", () => Client.GetEntries(query), Reply("MI", 6, "mx", 1));
        var fields = new Dictionary<string, string> { { "to", Address }, { "msgId", "é" } };
        Expect($"SI ky=p ep={Config} ri=·msgId·é·to·{Address} ls=01 sm={Text} ed=00-00-00-00-00-00-00-05", "",
            () => Client.SetEntries("p", fields, true, Text, 5), Reply("SI", 0));
        Expect("", "ArgumentException", () => Client.SetEntries("", fields, true, "a\0b", 0));
    }

    [StructLayout(LayoutKind.Explicit, Size = 80)]
    private struct HeapFigures { [FieldOffset(56)] public long UsedBytes; }

    [DllImport("libc.so.6")]
    private static extern HeapFigures mallinfo2();

    // Each kind of text, and the array, would leave 3 MB and more behind. What is freed twice ends the process.
    private static void ReleasedEntries()
    {
        string text = new string('x', 100);
        byte[] reply = Reply("MI", 0, "ri", List(Enumerable.Range(0, 1000).Select(i =>
            Record("msgId", text + i % 500, "to", text, "subject", text, "statusMsg", text)).ToArray()));
        long before = 0;
        for (int round = 0; round < 60; ++round)
        {
            if (round == 10)
                before = mallinfo2().UsedBytes;
            Expect(null, "500", () => Client.GetEntries(new EntryQuery()).Entries.Count, reply);
        }
        long grown = mallinfo2().UsedBytes - before;
        Check.That(grown < 1000000, "all is released; " + grown + " bytes were not");
    }

    private static void KeyServer()
    {
        Expect($"KV ep={Config}", "True True False", Client.GetKeyServerFeatures,
            Reply("KV", 0, "kd", List("feature.readByEnabled", "true", "version", "")));
        Expect($"LT ep={Config}", "[de Deutsch (Ö) | ja 日本語; 𠮷 | zz ]", Client.GetLocales,
            Reply("LT", 0, "sl", List("de", "Deutsch (Ö)", "ja", "日本語; 𠮷", "zz", "")));
        Expect($"LT ep={Config}", $"{Text} <p>{Text}", () => Client.GetMessageBody("de"),
            Reply("LT", 0, "tb", List("de", Text), "th", List("de", "<p>" + Text)));
    }

    private static void Enrollment()
    {
        Expect($"EP ec=·external.secure.url·http://sérver ea={Address} ul=日",
            "False True 3 True [en English] [1 Wie heißt 𠮷?]",
            () => Client.GetEnrollmentForm(Address, "http://sérver", "日"), Reply("EP", 0, "su", 0, "ou", 1,
                "qn", 3, "qe", 1, "al", List("en", "English"), "sq", List("1", "Wie heißt 𠮷?")));
        var form = new Enrollment { EmailAddress = Address, KeyServer = "k", FirstName = "Ä", LastName = "𠮷",
            Password = "ß🔒", Locale = "de", EnrollmentId = "é", SenderEmailAddress = "s", Simple = true, Stage = 2,
            PassPhrase = "Losung Ω", TimeZone = -90, Questions = { "q1", "q²" }, Answers = { "a1", "a𠮷" } };
        Expect($"EU ec=·external.secure.url·k ea={Address} fn=Ä ln=𠮷 pw=ß🔒 pc=é es=s ul=de or=00-00-00-01 " +
            "el=00-00-00-02 zo=FF-FF-FF-A6 pp=Losung Ω pe=00-00-00-01 qa=·securityAnswer1·a1·securityAnswer2·a𠮷·" +
            "securityAnswer3·securityQuestion1·q1·securityQuestion2·q²·securityQuestion3·", $"[é {Text}]",
            () => Client.Enroll(form), Reply("EU", 0, "ve", List("é", Text)));
        Check.That(new[] { "ß🔒", "Losung", "a𠮷" }.All(secret => !Client.LastLog.Contains(secret)), "secrets stay out");
    }

    // It closes the connection all the same.
    private static void RefusedStop() => Expect("SD", "status 5", Client.StopDaemon, Reply("SD", 5));
}
