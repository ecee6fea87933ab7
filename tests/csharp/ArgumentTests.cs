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
        Refused("NullException", "request", () => Client.Encrypt(null));
        Refused("NullException", "To", () => Client.Encrypt(Message(m => m.To.Add(null))));
        Refused("NullException", "Bcc", () => Client.Encrypt(Message(m => m.Bcc.Add(null))));
        Refused("NullException", "From", () => Client.Encrypt(Message(m => m.From = null)));
        Refused("NullException", "Password", () => Client.Encrypt(Message(m => m.Password = null)));
        Refused("NullException", "MimeMessage", () => Client.Encrypt(Message(m => m.MimeMessage = null)));
        Refused("NullException", "request", () => Client.Decrypt(null));
        Refused("NullException", "Envelope", () => Client.Decrypt(new DecryptRequest()));
        Refused("NullException", "Password", () =>
            Client.Decrypt(new DecryptRequest { Envelope = "", Password = null }));
        Refused("NullException", "emailAddress", () => Client.Authenticate(null, ""));
        Refused("NullException", "password", () => Client.Authenticate("", null));
        Refused("NullException", "sender", () => Client.VerifyConfig(null));
        Refused("NullException", "jarPath", () => Client.StartDaemon(null));
        Refused("NullException", "recipients", () => Client.GetPayloadStatus("", null));
        Refused("NullException", "envelope", () => Client.GetRecipients(null));
        Refused("NullException", "states", () => Client.SetTracking("", "", new RecipientTracking[] { null }));
        Refused("NullException", "query", () => Client.GetEntries(null));
        Refused("NullException", "fields", () => Client.SetEntries("", null, true, "", 0));
        Refused("NullException", "keyServer", () => Client.GetEnrollmentForm("", null));
        Refused("NullException", "form", () => Client.Enroll(null));
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
        Refused("Exception", "states", () => Client.SetTracking("", "", new[] {
            new RecipientTracking { StatusMessage = "a{plugin_delimiter}b" } }));
        Refused("Exception", "states", () => Client.SetTracking("", "", new[] {
            new RecipientTracking { Recipient = "{plugin_delimiter}" } }));
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
