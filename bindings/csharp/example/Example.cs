using System;
using System.Text;
using System.Threading.Tasks;
using Tarn;

internal static class Example
{
    private static void Main() { Run().GetAwaiter().GetResult(); }

    private static async Task Run()
    {
        var client = new TarnClient();
        Console.WriteLine("daemon " + client.GetVersion());
        var request = new EncryptRequest
            { From = "alice@example.com", Password = "wonderland", To = { "bob@example.com" } };
        request.MimeMessage = Encoding.UTF8.GetBytes("Subject: Grüße 🔒\r\n\r\nOnly for Bob.\r\n");
        var envelope = client.Encrypt(request);
        var message = client.Decrypt(new DecryptRequest
            { Envelope = envelope.Text, Recipient = "bob@example.com", Password = "builder" });
        foreach (var item in message.Items)
            Console.WriteLine(item.ContentType + ": " + Encoding.UTF8.GetString(item.Data));
        client.CallTimeout = TimeSpan.FromSeconds(30);
        try
        {
            await client.AuthenticateAsync("alice@example.com", "guessed");
        }
        catch (TarnRefusedException refusal) when (refusal.Status == TarnStatus.WrongPassword)
        {
            Console.WriteLine(refusal.Message);
        }
        await client.StopDaemonAsync();
    }
}
