using System;
using System.Collections.Concurrent;
using System.Collections.Generic;
using System.IO;
using System.Net;
using System.Net.Sockets;
using System.Threading;

// A daemon that keeps the requests it gets and answers them with the replies it was given beforehand.
internal sealed class ScriptedDaemon : IDisposable
{
    private readonly TcpListener listener = new TcpListener(IPAddress.Loopback, 53007);
    private readonly ConcurrentQueue<byte[]> replies = new ConcurrentQueue<byte[]>();
    private readonly ConcurrentQueue<Request> requests = new ConcurrentQueue<Request>();
    private readonly Thread thread;

    public ScriptedDaemon()
    {
        listener.Server.SetSocketOption(SocketOptionLevel.Socket, SocketOptionName.ReuseAddress, true);
        listener.Start();
        thread = new Thread(Serve) { IsBackground = true };
        thread.Start();
    }

    public void Answer(params Reply[] next)
    {
        foreach (Reply reply in next)
            replies.Enqueue(reply.Finish());
    }

    // The oldest request not asked for yet.
    public Request NextRequest()
    {
        return requests.TryDequeue(out Request request)
            ? request
            : throw new InvalidOperationException("no request came");
    }

    public void Dispose()
    {
        listener.Stop();
        if (!thread.Join(5000))
            throw new TimeoutException("the connection was not closed");
        Check.That(replies.IsEmpty && requests.IsEmpty, "each reply was fetched and each request looked at");
    }

    private void Serve()
    {
        try
        {
            using (TcpClient connection = listener.AcceptTcpClient())
            using (NetworkStream stream = connection.GetStream())
                while (true)
                {
                    requests.Enqueue(Request.Read(stream));
                    if (!replies.TryDequeue(out byte[] reply))
                        throw new InvalidDataException("a request that no reply was given for");
                    stream.Write(reply, 0, reply.Length);
                }
        }
        catch (EndOfStreamException)
        {
            // The library closed the connection.
        }
        catch (Exception exception)
        {
            // Without an answer the library would wait for ever.
            Console.WriteLine("FAILED: the scripted daemon: " + exception);
            Environment.Exit(1);
        }
    }
}
