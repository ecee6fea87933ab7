using System;
using System.Diagnostics;
using System.Linq;
using System.Text;
using Tarn;

// One story from end to end: a message goes out, is opened, tracked and locked, and the daemon stops.
internal static class StandInStory
{
    private const string Alice = "alice@example.com", Bob = "bob@example.com", Lock = "zurückgezogen 🔒";

    public static void Run(string standIn, string example)
    {
        using (Process daemon = Process.Start(new ProcessStartInfo(standIn)
            { UseShellExecute = false, RedirectStandardOutput = true }))
        {
            daemon.StandardOutput.ReadLine(); // It listens, or it has ended.
            Check.Test("story", Story);
            Check.Test("example", () => RunExample(example));
            Check.Test("stop", () =>
            {
                new TarnClient().StopDaemon();
                Check.That(daemon.WaitForExit(10000), "the daemon stops when asked");
            });
            if (!daemon.HasExited)
                daemon.Kill();
        }
    }

    private static void Story()
    {
        var client = new TarnClient();
        Check.That(client.GetVersion().Contains("-"), "version and build");
        client.Authenticate(Alice, "wonderland");
        byte[] attachment = Enumerable.Range(128, 128).Select(i => (byte)i).ToArray();
        byte[] mime = Encoding.UTF8.GetBytes("Subject: Grüße 🔒\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n" +
            "--b\r\n\r\nTreffen um acht, 𠮷田\r\n--b\r\nContent-Transfer-Encoding: 8bit\r\nContent-Disposition: " +
            "attachment; filename*=utf-8''%F0%A0%AE%B7.bin\r\n\r\n").Concat(attachment)
            .Concat(Encoding.ASCII.GetBytes("\r\n--b--\r\n")).ToArray();
        string envelope = client.Encrypt(new EncryptRequest { From = Alice, Password = "wonderland", To = { Bob },
            MimeMessage = mime }).Text;
        Check.Equal(Bob, client.GetRecipients(envelope).Addresses.Single());
        var request = new DecryptRequest { Envelope = envelope, Recipient = Bob, Password = "builder" };
        DecryptedMessage message = client.Decrypt(request);
        Check.Equal(Alice, message.Sender);
        var items = message.Items.ToList();
        Check.Equal("Treffen um acht, 𠮷田 𠮷.bin", Encoding.UTF8.GetString(items[0].Data) + " " + items[1].Name);
        Check.That(items.Count == 2 && items[1].Data.SequenceEqual(attachment), "the attachment's bytes");

        client.SetTracking("wonderland", envelope, new[] { new RecipientTracking { Recipient = Bob, Locked = true,
            StatusMessage = Lock } });
        RecipientEntry entry = client.GetEntries(new EntryQuery { UserName = Alice, Password = "wonderland" })
            .Entries.Single();
        Check.Equal($"{Bob} Grüße 🔒 {Lock} True",
            $"{entry.Recipient} {entry.Subject} {entry.StatusMessage} {entry.Locked}");
        Check.Equal("status 20", ScriptedTests.Outcome(() => client.Decrypt(request)));
        Check.That(ScriptedTests.Refusal.Message.Contains(Lock), "the lock's message is told");
    }

    private static void RunExample(string example)
    {
        string output = Process.Start(new ProcessStartInfo("mono", $"\"{example}\"") { UseShellExecute = false,
            RedirectStandardOutput = true, StandardOutputEncoding = Encoding.UTF8 }).StandardOutput.ReadToEnd();
        Check.That(output.StartsWith("daemon ") && output.Contains(": Only for Bob."), "its output: " + output);
    }
}
