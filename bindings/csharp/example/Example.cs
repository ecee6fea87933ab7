using System;
using System.Text;
using Tarn;

internal static class Example
{
    private static void Main()
    {
        // begin
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
        // end
    }
}
