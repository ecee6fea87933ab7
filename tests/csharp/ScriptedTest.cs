using System;
using Tarn;
using Xunit;

// Tests of the wrapper against a daemon whose replies are given, with texts beyond ASCII and beyond 16 bits in every
// direction.
public abstract class ScriptedTest : IClassFixture<ScriptedDaemon>
{
    protected const string Text = ScriptedDaemon.Text, Config = ScriptedDaemon.Config;
    protected const string Address = "jürgen🔒@example.com", Delimiter = "{plugin_delimiter}";

    protected ScriptedTest(ScriptedDaemon daemon) { Daemon = daemon; }

    protected ScriptedDaemon Daemon { get; }
    protected TarnClient Client => Daemon.Client;

    // One call: the requests that it sends, when they matter, and its outcome.
    protected void Expect(string requests, string outcome, Func<object> call, params byte[][] replies)
    {
        string got = "", sent = Daemon.Requests(() => got = Outcome.Of(call), replies);
        Assert.Equal(outcome, got);
        Assert.Equal(requests ?? sent, sent);
    }

    protected void Expect(string requests, string outcome, Action call, params byte[][] replies) =>
        Expect(requests, outcome, () => { call(); return ""; }, replies);
}
