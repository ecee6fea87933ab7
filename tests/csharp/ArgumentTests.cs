using System;
using System.Collections.Generic;
using Tarn;
using Xunit;

// What is refused before the library is called.
public class ArgumentTests
{
    private static readonly TarnClient Client = new TarnClient();

    private static EncryptRequest Message(Action<EncryptRequest> change = null)
    {
        var message = new EncryptRequest { From = "a", Password = "p", To = { "b" }, MimeMessage = new byte[1] { 10 } };
        change?.Invoke(message);
        return message;
    }

    private static void Refused(string exception, string parameter, Action call) =>
        Assert.Equal($"Argument{exception} {parameter}", Outcome.Of(call));

    [Fact]
    public void Missing()
    {
        foreach (var missing in new (string Parameter, Action Call)[]
        {
            ("To", () => Client.Encrypt(Message(m => m.To.Add(null)))),
            ("Bcc", () => Client.Encrypt(Message(m => m.Bcc.Add(null)))),
            ("From", () => Client.Encrypt(Message(m => m.From = null))),
            ("Password", () => Client.Encrypt(Message(m => m.Password = null))),
            ("MimeMessage", () => Client.Encrypt(Message(m => m.MimeMessage = null))),
            ("request", () => Client.Encrypt(null)), ("request", () => Client.Decrypt(null)),
            ("Envelope", () => Client.Decrypt(new DecryptRequest())),
            ("Password", () => Client.Decrypt(new DecryptRequest { Envelope = "", Password = null })),
            ("emailAddress", () => Client.Authenticate(null, "")), ("password", () => Client.Authenticate("", null)),
            ("sender", () => Client.VerifyConfig(null)), ("jarPath", () => Client.StartDaemon(null)),
            ("recipients", () => Client.GetPayloadStatus("", null)), ("envelope", () => Client.GetRecipients(null)),
            ("states", () => Client.SetTracking("", "", new RecipientTracking[] { null })),
            ("query", () => Client.GetEntries(null)), ("fields", () => Client.SetEntries("", null, true, "", 0)),
            ("keyServer", () => Client.GetEnrollmentForm("", null)), ("form", () => Client.Enroll(null))
        })
            Refused("NullException", missing.Parameter, missing.Call);
    }

    [Fact]
    public void Harmful()
    {
        // A zero character cuts a text.
        Refused("Exception", "sender", () => Client.VerifyConfig("a\0b"));
        Refused("Exception", "MimeMessage", () => Client.Encrypt(Message(m => m.MimeMessage = new byte[2])));
        Refused("Exception", "PassPhrase", () => Client.Enroll(new Enrollment { PassPhrase = "\0" }));
        Refused("Exception", "ConfigFile", () => new TarnClient { ConfigFile = "a\0b" }.VerifyConfig(""));
        Refused("Exception", "fields", () =>
            Client.SetEntries("", new Dictionary<string, string> { { "to", "\0" } }, true, "", 0));
        // These separate the texts of lists.
        Refused("Exception", "Cc", () => Client.Encrypt(Message(m => m.Cc.Add("a;b"))));
        Refused("Exception", "recipients", () => Client.GetPayloadStatus("", new[] { "{plugin_delimiter}" }));
        foreach (RecipientTracking state in new[] { new RecipientTracking { Recipient = "{plugin_delimiter}" },
                 new RecipientTracking { StatusMessage = "a{plugin_delimiter}b" } })
            Refused("Exception", "states", () => Client.SetTracking("", "", new[] { state }));
        Refused("Exception", "statusMessage", () =>
            Client.SetEntries("", new Dictionary<string, string>(), true, "{plugin_delimiter}", 0));
        Refused("Exception", "Questions", () => Client.Enroll(new Enrollment { Questions = { "", "", "", "" } }));
        Refused("OutOfRangeException", "value", () => TarnBuffers.ValueUnits = 0);
        Refused("Exception", "value", () => TarnClient.LibraryPath = "libTarnRemoteClient.so");
    }

    // A log that overflows ends the process.
    [Fact]
    public void Large()
    {
        string large = new string('x', 30000);
        var named = new TarnClient { ConfigFile = large };
        foreach (Action call in new Action[] { () => Client.StartDaemon(large), () => Client.Authenticate(large, ""),
                 () => Client.VerifyConfig(large), () => named.GetKeyServerFeatures(), () => named.GetLocales(),
                 () => Client.GetMessageBody(large), () => Client.Encrypt(Message(m => m.Bcc.Add(large))),
                 () => Client.Decrypt(new DecryptRequest { Envelope = "", SessionKey = large }),
                 () => Client.SetTracking("", "", new[] { new RecipientTracking { StatusMessage = large } }),
                 () => Client.GetEntries(new EntryQuery { SortBy = large }),
                 () => Client.SetEntries("", new Dictionary<string, string> { { "to", large } }, true, "", 0),
                 () => Client.GetEnrollmentForm("", large), () => Client.Enroll(new Enrollment { FirstName = large }) })
            Assert.Contains("ArgumentException ", Outcome.Of(call));
    }
}
