using System;
using System.Linq;
using System.Text;
using Tarn;
using Xunit;
using static ScriptedDaemon;

public class MessageTests : ScriptedTest
{
    public MessageTests(ScriptedDaemon daemon) : base(daemon) { }

    [Fact]
    public void Login()
    {
        Expect($"LS to={Address} ky=pässword ep={Config}", "status 25", () => Client.Authenticate(Address, "pässword"),
            Reply("LS", 25, "lk", Text));
        var refusal = (TarnRefusedException)Outcome.Failure;
        Assert.Equal(Text + TarnStatus.EnrollmentUnfinished, refusal.Detail + refusal.Status);
        Assert.Contains("(EnrollmentUnfinished): " + Text, refusal.Message);
        Assert.Contains("Status code: 25", refusal.Log);
        Assert.Equal(Client.LastLog, refusal.Log);
        Expect($"VC ep={Config} fm={Address}", "status -2", () => Client.VerifyConfig(Address), Reply("VC", -2));
    }

    [Fact]
    public void Encrypt()
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
        Assert.Equal("", Outcome.Failure.Log);
        message.Login = false;
        message.EncodedConfig = "107&58&32&118&59&32&";
        Expect($"BE {to} ec=·k·v {mail}", "   ", () => Client.Encrypt(message), Reply("BE", 0));
        for (int i = 0; i < 400; ++i)
            message.Bcc.Add("recipient-" + i + "@example.com");
        Expect("", "ArgumentException To", () => Client.Encrypt(message));
    }

    [Fact]
    public void Decrypt()
    {
        var items = List(Parameters("ty", 1, "fl", 2, "on", Text, "fc", "text/plain", "da", new byte[] { 0, 255, 0 }),
            Parameters("ty", 9, "fl", -1, "on", "", "fc", "", "da", ""),
            Parameters("ty", 2, "fl", 3, "on", "b", "fc", "x/" + Text, "da", "c"));
        var question = new DecryptRequest { Envelope = Text, Recipient = Address, Password = "ß", SessionKey = "🔒",
            KeepOpen = true };
        Expect($"DE ky=ß en={Text} ep={Config} to={Address} sk=🔒 po=01", "-61&-87&58&32&-16&-96&-82&-73&59&32& " +
            $"{Text} {Address} [NameMadeUp Body {Text} text/plain [0 | 255 | 0] | 4294967295 9   [] | " +
            $"Inline, NameMadeUp Attachment b x/{Text} [99]]", () => Client.Decrypt(question),
            Reply("DE", 0, "ku", Text, "fm", Address, "ec", List("é", "𠮷"), "da", items));
        question.Password = "";
        Expect(null, "status 2", () => Client.Decrypt(question), Reply("DE", 2));
        Expect(null, "   []", () => Client.Decrypt(question), Reply("DE", 0));
    }

    [Fact]
    public void Inquiries()
    {
        var asked = new[] { Address, "b", "c", "d", "e" };
        Expect(null, $"[{Address} NotEnrolled {Text} | b LockedWithMessage {Text} | c TooManyTries 90 | d Ok ] é1 " +
            $"{Address} 2", () => Client.GetPayloadStatus(Text, asked),
            Reply("DE", 11, "lk", Text, "uu", "é1", "fm", Address, "ms", 2), Reply("DE", 20),
            Reply("DE", 18, "se", 90L), Reply("DE", 0));
        Expect(null, "TarnReplyException", () => Client.GetPayloadStatus(Text, new[] { "a", "b" }),
            Reply("DE", 20, "em", "x" + Delimiter + "y"), Reply("DE", 21));
        Expect(null, $"[{Address} | b | ç] -1", () => Client.GetRecipients(Text),
            Reply("DE", 0, "tr", List(Address, "b"), "tc", List("ç"), "ms", -1));
    }

    [Fact]
    public void KeyServer()
    {
        Expect($"KV ep={Config}", "True True False", () => Client.GetKeyServerFeatures(),
            Reply("KV", 0, "kd", List("feature.readByEnabled", "true", "version", "")));
        Expect($"LT ep={Config}", "[[de, Deutsch (Ö)] | [ja, 日本語; 𠮷] | [zz, ]]",
            () => Client.GetLocales().Select(locale => locale.ToString()),
            Reply("LT", 0, "sl", List("de", "Deutsch (Ö)", "ja", "日本語; 𠮷", "zz", "")));
        // More than there is room for where memory is not taken page by page.
        Expect(null, (20 << 20).ToString(), () => Client.GetLocales()["k"].Length,
            Reply("LT", 0, "sl", List("k", new string('v', 20 << 20))));
        Expect($"LT ep={Config}", $"{Text} <p>{Text}", () => Client.GetMessageBody("de"),
            Reply("LT", 0, "tb", List("de", Text), "th", List("de", "<p>" + Text)));
    }

    [Fact]
    public void Enrollment()
    {
        Expect($"EP ec=·external.secure.url·http://sérver ea={Address} ul=日",
            "False True 3 True [en English] [1 Wie heißt 𠮷?]",
            () => Client.GetEnrollmentForm(Address, "http://sérver", "日"), Reply("EP", 0, "su", 0, "ou", 1,
                "qn", 3, "qe", 1, "al", List("en", "English"), "sq", List("1", "Wie heißt 𠮷?")));
        var form = new Enrollment { EmailAddress = Address, KeyServer = "k", FirstName = "Ä", LastName = "𠮷",
            Password = "ß🔒", Locale = "de", EnrollmentId = "é", SenderEmailAddress = "s", Simple = true,
            Stage = EnrollmentStage.Confirm, PassPhrase = "Losung Ω", TimeZone = -90, Questions = { "q1", "q²" },
            Answers = { "a1", "a𠮷" } };
        Expect($"EU ec=·external.secure.url·k ea={Address} fn=Ä ln=𠮷 pw=ß🔒 pc=é es=s ul=de or=00-00-00-01 " +
            "el=00-00-00-01 zo=FF-FF-FF-A6 pp=Losung Ω pe=00-00-00-01 qa=·securityAnswer1·a1·securityAnswer2·a𠮷·" +
            "securityAnswer3·securityQuestion1·q1·securityQuestion2·q²·securityQuestion3·", $"[é {Text}]",
            () => Client.Enroll(form), Reply("EU", 0, "ve", List("é", Text)));
        foreach (string secret in new[] { "ß🔒", "Losung", "a𠮷" })
            Assert.DoesNotContain(secret, Client.LastLog);
        Expect(null, "status 107", () => Client.Enroll(form), Reply("EU", 107, "ve", List("lastName", Text)));
        Assert.Equal($"lastName: {Text}; ", ((TarnRefusedException)Outcome.Failure).Detail);
    }
}
