using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Linq;
using System.Text;
using Tarn;

// One story from end to end: a message goes out, is opened, tracked and locked, and the daemon stops.
internal static class StandInStory
{
    private const string Alice = "alice@example.com", Bob = "bob@example.com";

    public static void Run(string standIn, string example)
    {
        using (Process daemon = Process.Start(new ProcessStartInfo(standIn)
            { UseShellExecute = false, RedirectStandardOutput = true }))
        {
            try
            {
                daemon.StandardOutput.ReadLine(); // It listens, or it has ended.
                Check.Test("story", Story);
                Check.Test("example", () => RunExample(example));
                Check.Test("stop", () => new TarnClient().StopDaemon());
                Check.That(daemon.WaitForExit(10000), "the daemon stops when asked");
            }
            finally
            {
                if (!daemon.HasExited)
                    daemon.Kill();
            }
        }
    }

    private static void Story()
    {
        var client = new TarnClient();
        Check.That(client.GetVersion().Contains("-"), "version and build");
        client.Authenticate(Alice, "wonderland");
        Check.Throws<TarnException>(() => client.Authenticate(Alice, "wrong"), "a wrong password");

        string body = "Treffen um acht 🔒, Jürgen & 𠮷田\r\n";
        byte[] attachment = Enumerable.Range(0, 256).Select(i => (byte)i).ToArray();
        string mime = "From: " + Alice + "\r\nTo: " + Bob + "\r\nSubject: =?utf-8?B?" + Base64("Grüße 🔒") + "?=\r\n" +
            "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n" +
            "--b\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n" + body +
            "\r\n--b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n" +
            "Content-Disposition: attachment; filename=\"=?utf-8?B?" + Base64("Plän 𠮷.bin") + "?=\"\r\n\r\n" +
            Convert.ToBase64String(attachment) + "\r\n--b--\r\n";
        Envelope envelope = client.Encrypt(new EncryptRequest { From = Alice, Password = "wonderland", To = { Bob },
            MimeMessage = Encoding.UTF8.GetBytes(mime) });
        Check.That(envelope.AttachmentName.Length > 0 && envelope.HtmlBody.Contains("<"), "the envelope's texts");
        Check.Sequence(new[] { Bob }, client.GetRecipients(envelope.Text).Addresses, "recipients of the envelope");

        DecryptedMessage message = client.Decrypt(new DecryptRequest { Envelope = envelope.Text, Recipient = Bob,
            Password = "builder" });
        Check.Equal(Alice, message.Sender, "sender");
        List<DecryptedItem> items = message.Items.ToList();
        Check.Equal(2, items.Count, "items");
        Check.Equal(body.TrimEnd(), Encoding.UTF8.GetString(items[0].Data).TrimEnd(), "body");
        Check.Equal("Plän 𠮷.bin", items[1].Name, "attachment's name");
        Check.Sequence(attachment, items[1].Data, "attachment's bytes");

        client.SetTracking("wonderland", envelope.Text, new[] { new RecipientTracking { Recipient = Bob, Locked = true,
            StatusMessage = "zurückgezogen 🔒", ExpiryDate = 4102444800000 } });
        MessageTracking tracking = client.GetTracking("wonderland", envelope.Text);
        RecipientTracking state = tracking.Recipients.Single();
        Check.Equal(Bob + " True zurückgezogen 🔒 4102444800000", state.Recipient + " " + state.Locked + " " +
            state.StatusMessage + " " + state.ExpiryDate, "tracking state");
        RecipientEntry entry = client.GetEntries(new EntryQuery { UserName = Alice, Password = "wonderland" }).Entries
            .Single();
        Check.Equal(tracking.MessageId + " " + Bob + " Grüße 🔒 True", entry.MessageId + " " + entry.Recipient + " " +
            entry.Subject + " " + entry.Locked, "tracking record");
        PayloadStatus status = client.GetPayloadStatus(envelope.Text, new[] { Bob });
        Check.Equal("20 zurückgezogen 🔒", status.Recipients.Single().Status + " " + status.Recipients.Single().Text,
            "locked with a message");
        var locked = Check.Throws<TarnException>(() => client.Decrypt(new DecryptRequest { Envelope = envelope.Text,
            Recipient = Bob, Password = "builder" }), "a locked message");
        Check.That(locked.Status == 20 && locked.Message.Contains("zurückgezogen 🔒"), "the lock's message");
    }

    private static void RunExample(string example)
    {
        using (Process run = Process.Start(new ProcessStartInfo("mono", "\"" + example + "\"")
            { UseShellExecute = false, RedirectStandardOutput = true, StandardOutputEncoding = Encoding.UTF8 }))
        {
            string output = run.StandardOutput.ReadToEnd();
            run.WaitForExit();
            Check.Equal(0, run.ExitCode, "exit code of the example");
            Check.That(output.StartsWith("daemon ") && output.Contains(": Only for Bob."), "its output: " + output);
        }
    }

    private static string Base64(string text) { return Convert.ToBase64String(Encoding.UTF8.GetBytes(text)); }
}
