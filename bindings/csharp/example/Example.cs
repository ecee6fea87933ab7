using System;
using System.Text;
using System.Threading.Tasks;
using Tarn;

internal static class Example
{
    private static void Main() { Run().GetAwaiter().GetResult(); }

    private static async Task Run()
    {
        // begin
        var client = new TarnClient { CallTimeout = TimeSpan.FromSeconds(30) };
        Console.WriteLine("daemon " + await client.GetVersionAsync());
        var request = new EncryptRequest
            { From = "alice@example.com", Password = "wonderland", To = { "bob@example.com" } };
        request.MimeMessage = Encoding.UTF8.GetBytes("Subject: Grüße 🔒\r\n\r\nOnly for Bob.\r\n");
        Envelope envelope = await client.EncryptAsync(request);
        var opening = new DecryptRequest { Envelope = envelope.Text, Recipient = "bob@example.com" };
        try
        {
            opening.Password = "guessed";
            await client.DecryptAsync(opening);
        }
        catch (TarnRefusedException refusal) when (refusal.Status == TarnStatus.WrongPassword)
        {
            opening.Password = "builder";
        }
        DecryptedMessage message = await client.DecryptAsync(opening);
        foreach (var item in message.Items)
            Console.WriteLine(item.ContentType + ": " + Encoding.UTF8.GetString(item.Data));
        await client.StopDaemonAsync();
        // end
    }
}
