using System;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Text;
using System.Threading.Tasks;
using Tarn;
using Xunit;

public class StandInTests
{
    private const string Alice = "alice@example.com", Bob = "bob@example.com", Lock = "zurückgezogen 🔒";

    // One story from end to end: the daemon comes up, a message goes out, is opened, tracked and locked, and the daemon
    // stops.
    [Fact]
    public async Task Story()
    {
        var client = new TarnClient { CallTimeout = TimeSpan.FromSeconds(30) };
        int before = OpenFiles();
        for (int i = 0; i < 100; ++i)
            Assert.Equal("TimeoutException", await Outcome.Of(client.WaitForDaemonAsync(TimeSpan.Zero)));
        Assert.True(OpenFiles() < before + 50, "an attempt that fails leaves no socket open"); // the run-time opens some

        using (Process daemon = Process.Start(new ProcessStartInfo(Program.PathFrom("TARN_STANDIN"))
            { UseShellExecute = false, RedirectStandardOutput = true }))
            try
            {
                await client.WaitForDaemonAsync(TimeSpan.FromSeconds(30));
                await Mail(client);
                await client.StopDaemonAsync();
                Assert.True(daemon.WaitForExit(10000), "the daemon stops when asked");
            }
            finally
            {
                if (!daemon.HasExited)
                    daemon.Kill();
            }
    }

    private static async Task Mail(TarnClient client)
    {
        Assert.Contains("-", await client.GetVersionAsync());
        await client.AuthenticateAsync(Alice, "wonderland");
        byte[] attachment = Enumerable.Range(128, 128).Select(i => (byte)i).ToArray();
        byte[] mime = Encoding.UTF8.GetBytes("Subject: Grüße 🔒\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n" +
            "--b\r\n\r\nTreffen um acht, 𠮷田\r\n--b\r\nContent-Transfer-Encoding: 8bit\r\nContent-Disposition: " +
            "attachment; filename*=utf-8''%F0%A0%AE%B7.bin\r\n\r\n").Concat(attachment)
            .Concat(Encoding.ASCII.GetBytes("\r\n--b--\r\n")).ToArray();
        string envelope = (await client.EncryptAsync(new EncryptRequest { From = Alice, Password = "wonderland",
            To = { Bob }, MimeMessage = mime })).Text;
        Assert.Equal(new[] { Bob }, (await client.GetRecipientsAsync(envelope)).Addresses);
        var request = new DecryptRequest { Envelope = envelope, Recipient = Bob, Password = "builder" };
        DecryptedMessage message = await client.DecryptAsync(request);
        Assert.Equal(Alice, message.Sender);
        Assert.Equal("Body Treffen um acht, 𠮷田 Attachment 𠮷.bin", string.Join(" ", message.Items.Select(item =>
            item.Type + " " + (item.Type == ItemType.Body ? Encoding.UTF8.GetString(item.Data) : item.Name))));
        Assert.Equal(attachment, message.Items[1].Data);

        await client.SetTrackingAsync("wonderland", envelope, new[] { new RecipientTracking { Recipient = Bob,
            Locked = true, StatusMessage = Lock } });
        var query = new EntryQuery { UserName = Alice, Password = "wonderland" };
        RecipientEntry entry = (await client.GetEntriesAsync(query)).Entries[0];
        Assert.Equal($"{Bob} Grüße 🔒 {Lock} True",
            $"{entry.Recipient} {entry.Subject} {entry.StatusMessage} {entry.Locked}");
        Assert.True(Math.Abs((entry.Created.Value - DateTimeOffset.Now).TotalHours) < 1, "its dates are dates");
        Assert.Equal("status 20", await Outcome.Of(client.DecryptAsync(request)));
        Assert.Contains(Lock, Outcome.Failure.Message);
    }

    private static int OpenFiles() => Directory.GetFiles("/proc/self/fd").Length;
}
