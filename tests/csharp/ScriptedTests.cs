using System;
using System.Collections.Generic;
using System.Linq;
using System.Text;
using Tarn;

// The wrapper against a daemon whose replies are given, with texts beyond ASCII and beyond 16 bits in every direction.
internal static partial class ScriptedTests
{
    private const string Text = "Grüße Ω 日本 𠮷🔒";
    private const string Address = "jürgen🔒@example.com";
    private static readonly TarnClient Client = new TarnClient { ConfigFile = "/Päckchen/𠮷.xml" };
    private static ScriptedDaemon daemon;

    public static void Run()
    {
        Check.Test("no daemon", NoDaemon);
        Check.Test("refused arguments", RefusedArguments);
        using (daemon = new ScriptedDaemon())
        {
            Check.Test("login", Login);
            Check.Test("encrypt", Encrypt);
            Check.Test("decrypt", Decrypt);
            Check.Test("payload status", PayloadStatus);
            Check.Test("tracking", Tracking);
            Check.Test("entries", Entries);
            Check.Test("fold entries", FoldEntries);
            Check.Test("key server", KeyServer);
            Check.Test("enrollment", Enrollment);
            daemon.Answer(new Reply("SD", 5, Text));
            // Closes the connection all the same.
            Check.Equal(5, Check.Throws<TarnException>(Client.StopDaemon, "refused stop").Status, "status of a stop");
            daemon.NextRequest();
        }
    }

    private static void NoDaemon()
    {
        var failure = Check.Throws<TarnException>(() => Client.GetVersion(), "a call without a daemon");
        Check.That(failure.ExchangeFailed && failure.Status == -1, "without a daemon the exchange fails");
        Check.That(failure.Log.Contains("] Unexpected exception occured. GetLastError() : "), "the log tells of it");
        failure = Check.Throws<TarnException>(() => Client.Authenticate("a", "b"), "a login without a daemon");
        Check.That(failure.ExchangeFailed, "the login's own failure line is known");
        failure = Check.Throws<TarnException>(() => Client.StartDaemon("dämon.jar"), "a launch without Java");
        Check.Equal(2, failure.Status, "no such program");
        Check.That(failure.Log.Contains("jarDaemon: dämon.jar\n"), "the jar's path in the system's encoding");
    }

    private static void RefusedArguments()
    {
        var request = new EncryptRequest { From = "a" };
        for (int i = 0; i < 400; ++i)
            request.To.Add("recipient-" + i + "@example.com");
        Check.Throws<ArgumentException>(() => Client.Encrypt(request), "recipients that overflow the log");
        Check.Throws<ArgumentException>(() => Client.GetPayloadStatus("", new[] { "a;b" }), "two addresses in one");
        Check.Throws<ArgumentException>(() => Client.VerifyConfig("a\0b"), "a zero character in an 8-bit text");
        Check.Throws<ArgumentException>(() => Client.SetEntries("", new Dictionary<string, string>(), true, "a\0b", 0),
            "a zero character in a wide text");
        Check.Throws<ArgumentNullException>(() => Client.Authenticate(null, ""), "a null that is not allowed");
    }

    private static void Login()
    {
        daemon.Answer(new Reply("LS", 25, Text).Text("lk", Text));
        var refusal = Check.Throws<TarnException>(() => Client.Authenticate(Address, "pässword"), "status 25");
        Check.Equal("25 " + Text, refusal.Status + " " + refusal.Detail, "status and link");
        Check.That(!refusal.ExchangeFailed, "an answer is no failure of the exchange");
        Check.That(refusal.Message.EndsWith(": " + Text), "the exception has the daemon's message");
        Check.Equal(refusal.Log, Client.LastLog, "the client keeps the log");
        Request request = daemon.NextRequest();
        Check.Equal(Address + " pässword " + Client.ConfigFile,
            request.Text("to") + " " + request.Text("ky") + " " + request.Text("ep"), "login request");

        daemon.Answer(new Reply("VC", -2), new Reply("VC", 0));
        Check.Equal(-2, Check.Throws<TarnException>(() => Client.VerifyConfig(Address), "-2").Status, "negative");
        Client.VerifyConfig(Address);
        Check.Equal(Address, daemon.NextRequest().Text("fm"), "sender");
        daemon.NextRequest();
    }

    private static void Encrypt()
    {
        var message = new EncryptRequest { From = Address, Password = "p", To = { "a", Address }, Cc = { "ç" } };
        message.MimeMessage = Encoding.UTF8.GetBytes(Text).Concat(new byte[] { 0xFF, 0x80 }).ToArray();
        string large = string.Concat(Enumerable.Repeat(Text, 60000));
        daemon.Answer(new Reply("LS", 0).Map("sl", "token", Text),
            new Reply("BE", 0).Text("en", large).Text("tb", Text).Text("th", "<p>" + Text).Text("an", Text + ".html"));
        Envelope envelope = Client.Encrypt(message);
        Check.That(large == envelope.Text, "an envelope of a million bytes");
        Check.Sequence(new[] { Text, "<p>" + Text, Text + ".html" },
            new[] { envelope.TextBody, envelope.HtmlBody, envelope.AttachmentName }, "the texts around it");
        daemon.NextRequest();
        Request request = daemon.NextRequest();
        Check.Equal("tc sl fm to to cc bc ep mm", request.Tags, "parameters");
        Check.Sequence(new[] { "a", Address }, request.Texts("to"), "recipients");
        Check.Sequence(message.MimeMessage, request.Bytes("mm"), "the message goes byte for byte");

        daemon.Answer(new Reply("LS", 3));
        var refusal = Check.Throws<TarnException>(() => Client.Encrypt(message), "a refused login");
        Check.Equal("3 ", refusal.Status + " " + refusal.Log, "a refused login leaves no log");
        daemon.Answer(new Reply("LS", 0), new Reply("BE", 0, damaged: true));
        refusal = Check.Throws<TarnException>(() => Client.Encrypt(message), "a damaged envelope");
        Check.Equal("0 True", refusal.Status + " " + refusal.ExchangeFailed, "a failure after a login is no success");
        message.Login = false;
        message.EncodedConfig = "107&58&32&118&59&32&";
        daemon.Answer(new Reply("BE", 0));
        Client.Encrypt(message);
        for (int i = 0; i < 3; ++i)
            daemon.NextRequest();
        Check.Equal("v", daemon.NextRequest().Map("ec")["k"], "a configuration stands for the login");
    }

    private static byte[] Item(int type, int flags, string name, string contentType, byte[] data)
    {
        return Reply.Parameter("ty", Reply.Number(type, 4)).Concat(Reply.Parameter("fl", Reply.Number(flags, 4)))
            .Concat(Reply.Parameter("on", Encoding.UTF8.GetBytes(name)))
            .Concat(Reply.Parameter("fc", Encoding.UTF8.GetBytes(contentType))).Concat(Reply.Parameter("da", data))
            .ToArray();
    }

    private static void Decrypt()
    {
        byte[] binary = Enumerable.Range(0, 300000).Select(i => (byte)(i * 7)).ToArray();
        var items = new[] { Item(1, 2, Text, "text/plain", binary), Item(2, -1, "", "", new byte[0]),
            Item(3, 0, "b", "x/" + Text, new byte[] { 0 }) };
        daemon.Answer(new Reply("DE", 0).Text("ku", Text).Text("fm", Address).Map("ec", "é", "𠮷").Items("da", items),
            new Reply("DE", 2), new Reply("DE", 0));
        var question = new DecryptRequest { Envelope = Text, Recipient = Address, Password = "ß", SessionKey = "🔒",
            KeepOpen = true };
        DecryptedMessage message = Client.Decrypt(question);
        Check.Sequence(new[] { Text, Address }, new[] { message.Key, message.Sender }, "key and sender");
        Check.Equal("-61&-87&58&32&-16&-96&-82&-73&59&32&", message.EncodedConfig, "encoded configuration");
        DecryptedItem first = message.Items.First();
        Check.Equal("1 2 " + Text + " text/plain", first.Type + " " + first.Flags + " " + first.Name + " " +
            first.ContentType, "first item");
        Check.Sequence(binary, first.Data, "data with zero bytes");
        Check.Throws<TarnException>(() => Client.Decrypt(new DecryptRequest()), "wrong credentials");
        List<DecryptedItem> rest = message.Items.ToList();
        Check.Sequence(new[] { "2 4294967295   0", "3 0 b x/" + Text + " 1" }, rest.Select(item => item.Type + " " +
            item.Flags + " " + item.Name + " " + item.ContentType + " " + item.Data.Length), "the items behind it");
        Client.Decrypt(question);
        Check.Throws<InvalidOperationException>(() => message.Items.Count(), "items of a former message");
        Request request = daemon.NextRequest();
        Check.Equal("ky en ep to sk po", request.Tags, "parameters");
        Check.Sequence(new[] { "ß", Text, Client.ConfigFile, Address, "🔒" },
            new[] { "ky", "en", "ep", "to", "sk" }.Select(request.Text), "texts");
        daemon.NextRequest();
        daemon.NextRequest();
    }

    private static void PayloadStatus()
    {
        daemon.Answer(new Reply("DE", 11).Text("lk", Text).Text("uu", "é1").Text("fm", Address).Int("ms", 2),
            new Reply("DE", 20, Text), new Reply("DE", 18).Long("se", 90), new Reply("DE", 0));
        PayloadStatus status = Client.GetPayloadStatus(Text, new[] { Address, "b", "c", "d", "e" });
        Check.Sequence(new[] { Address + " 11 " + Text, "b 20 " + Text, "c 18 90", "d 0 " },
            status.Recipients.Select(one => one.Recipient + " " + one.Status + " " + one.Text), "statuses");
        Check.Equal("é1 " + Address + " 2", status.EnrollmentId + " " + status.Sender + " " + status.Sensitivity, "11");
        Check.Equal(Address, daemon.NextRequest().Text("to"), "recipient");
        for (int i = 0; i < 3; ++i)
            daemon.NextRequest();
        daemon.Answer(new Reply("DE", 17, damaged: true));
        var failure = Check.Throws<TarnException>(() => Client.GetPayloadStatus("", new string[0]), "damaged status");
        Check.That(failure.ExchangeFailed, "a call without a log fails, too");
        daemon.Answer(new Reply("DE", 0).Array("tr", Address, "b").Array("tc", "ç").Int("ms", -1));
        EnvelopeRecipients recipients = Client.GetRecipients(Text);
        Check.Sequence(new[] { Address, "b", "ç", "-1" },
            recipients.Addresses.Concat(new[] { recipients.Sensitivity.ToString() }), "recipients");
        daemon.NextRequest();
        daemon.NextRequest();
    }

    private static void KeyServer()
    {
        daemon.Answer(new Reply("KV", 0).Map("kd", "feature.readByEnabled", "true", "version", ""),
            new Reply("LT", 0).Map("sl", "de", "Deutsch (Ö)", "ja", "日本語; 𠮷", "zz", ""),
            new Reply("LT", 0).Map("tb", "de", Text).Map("th", "de", "<p>" + Text));
        KeyServerFeatures features = Client.GetKeyServerFeatures();
        Check.That(features.ReadBy && features.Expiration && !features.LocalizedText, "features");
        Check.Sequence(new[] { "de=Deutsch (Ö)", "ja=日本語; 𠮷", "zz=" },
            Client.GetLocales().Select(one => one.Key + "=" + one.Value), "locales");
        MessageBody body = Client.GetMessageBody("de");
        Check.Equal(Text + "<p>" + Text, body.Text + body.Html, "bodies");
        for (int i = 0; i < 3; ++i)
            Check.Equal(Client.ConfigFile, daemon.NextRequest().Text("ep"), "configuration file");
    }

    private static void Enrollment()
    {
        daemon.Answer(new Reply("EP", 0).Int("su", 0).Int("ou", 1).Int("qn", 3).Int("qe", 1).Map("al", "en", "English")
            .Map("sq", "1", "Wie heißt 𠮷?"), new Reply("EU", 0).Map("ve", "é", Text));
        EnrollmentForm form = Client.GetEnrollmentForm(Address, "http://sérver", "日");
        Check.Equal("False True 3 True English Wie heißt 𠮷?", form.SamlUser + " " + form.OneClickUser + " " +
            form.QuestionCount + " " + form.QuestionsEditable + " " + form.Locales["en"] + " " + form.Questions["1"],
            "form");
        var enrollment = new Enrollment { EmailAddress = Address, KeyServer = "k", FirstName = "Ä", LastName = "𠮷",
            Password = "ß🔒", Locale = "de", EnrollmentId = "é", SenderEmailAddress = Address, Simple = true, Stage = 2,
            PassPhrase = "Losung Ω", TimeZone = -90, TimeFormat = "h",
            Questions = { "q1", "q²" }, Answers = { "a1", "a𠮷" } };
        Check.Equal(Text, Client.Enroll(enrollment)["é"], "the daemon's answer");
        Check.That(new[] { "ß🔒", "Losung", "a𠮷" }.All(secret => !Client.LastLog.Contains(secret)), "secrets stay out");
        Check.Equal("日", daemon.NextRequest().Text("ul"), "locale");
        Request request = daemon.NextRequest();
        Check.Equal("tc ec ea fn ln pw pc es ul or el zo pp pe qa", request.Tags, "parameters");
        Check.Sequence(new[] { Address, "Ä", "𠮷", "ß🔒", "é", Address, "de", "Losung Ω" },
            new[] { "ea", "fn", "ln", "pw", "pc", "es", "ul", "pp" }.Select(request.Text), "texts");
        Check.Sequence(new byte[] { 0, 0, 0, 1, 0, 0, 0, 2, 0xFF, 0xFF, 0xFF, 0xA6 },
            new[] { "or", "el", "zo" }.SelectMany(request.Bytes), "numbers");
        var answers = request.Map("qa");
        Check.Equal("q² a𠮷 ", answers["securityQuestion2"] + " " + answers["securityAnswer2"] + " " +
            answers["securityAnswer3"], "questions and answers");
    }
}
