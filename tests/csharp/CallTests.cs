using System;
using System.Threading;
using System.Threading.Tasks;
using Tarn;
using Xunit;
using static ScriptedDaemon;

// How calls end that do not simply succeed, and what comes after them.
public class CallTests : ScriptedTest
{
    private const string FailureLine = "x\n[TarnRemoteClient:1] Unexpected exception occured. GetLastError() : 5";

    public CallTests(ScriptedDaemon daemon) : base(daemon) { }

    [Fact]
    public void TextsThatLookLikeTheLibrarys()
    {
        Expect(null, "True False False", () => Client.GetKeyServerFeatures(), Reply("KV", 0, "em", FailureLine, "kd",
            List("feature.readByEnabled", "true", "z", FailureLine)));
        Expect(null, "status 7", () => Client.VerifyConfig("a"), Reply("VC", 7, "em", FailureLine));
        Expect(null, "status 8", () => Client.GetVersion(), Reply("ST", 8, "em", FailureLine));
        Expect(null, "status 5", () => Client.StopDaemon(), Reply("SD", 5, "em", FailureLine));
        // The connection is closed all the same; the next call opens one and asks for the version.
        Expect($"ST\nVC ep={Config} fm=a", "", () => Client.VerifyConfig("a"), Reply("ST", 1), Reply("VC", 0));
    }

    [Fact]
    public async Task CallsThatAreGivenUp()
    {
        var hasty = new TarnClient { CallTimeout = TimeSpan.FromSeconds(1) };
        foreach (bool byTime in new[] { true, false })
        {
            var cancellation = new CancellationTokenSource();
            Daemon.TakeRequests();
            Task givenUp = byTime ? hasty.VerifyConfigAsync("a") : Client.VerifyConfigAsync("a", cancellation.Token);
            Daemon.WaitForRequest();
            Task waiting = Client.VerifyConfigAsync("never sent");
            if (!byTime)
                cancellation.Cancel();
            Assert.Equal(byTime ? "TimeoutException" : "TaskCanceledException", await Outcome.Of(givenUp));
            Assert.Equal("blocked", await Outcome.Of(waiting));
            Assert.Equal("blocked", Outcome.Of(() => Client.StopDaemon()));

            Daemon.Answer(Reply("VC", 4)); // of the call that was given up
            Daemon.Answer(Reply("VC", 6));
            string outcome = "blocked";
            for (var limit = DateTime.Now.AddSeconds(20); outcome == "blocked" && DateTime.Now < limit;)
                outcome = await Outcome.Of(Client.VerifyConfigAsync("b"));
            Assert.Equal("status 6", outcome);
            Assert.Equal($"VC ep={Config} fm=b", Daemon.TakeRequests());
        }
    }

    [Fact]
    public async Task CallsThatNeverBegin()
    {
        Daemon.TakeRequests();
        var cancellation = new CancellationTokenSource();
        Task first = Client.VerifyConfigAsync("first");
        Daemon.WaitForRequest();
        Task cancelled = Client.VerifyConfigAsync("cancelled", cancellation.Token);
        cancellation.Cancel();
        Assert.Equal("TaskCanceledException", await Outcome.Of(cancelled));
        Daemon.Answer(Reply("VC", 0));
        Assert.Equal("", await Outcome.Of(first));
        Assert.Equal("TaskCanceledException", await Outcome.Of(Client.VerifyConfigAsync("x", cancellation.Token)));
        Expect($"VC ep={Config} fm=next", "", () => Client.VerifyConfig("next"), Reply("VC", 0));
    }
}
