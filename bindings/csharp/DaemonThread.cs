using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    /// <summary>
    /// The one thread that calls the library: its functions are not guarded against each other, and block until the
    /// daemon answers. A call that is given up goes on here, and until it returns no other one can be made. An idle
    /// thread ends, since Mono can fail to end a process with a thread that waits for ever.
    /// </summary>
    internal static class DaemonThread
    {
        private sealed class Job
        {
            public Job(string name, Func<Action> run, Action<Exception> fail)
            {
                Name = name;
                Run = run;
                Fail = fail;
            }

            public string Name { get; }
            /// <summary>Makes the call and returns what ends the caller's task.</summary>
            public Func<Action> Run { get; }
            /// <summary>Ends the caller's task unless it has ended.</summary>
            public Action<Exception> Fail { get; }
        }

        private static readonly TimeSpan IdleLimit = TimeSpan.FromSeconds(1);
        private static readonly object Gate = new object();
        private static readonly List<Job> Waiting = new List<Job>();
        private static bool started;
        [AllowNull, MaybeNull] private static Job running;
        /// <summary>What a call is refused with by its name; null while calls can be made.</summary>
        [AllowNull, MaybeNull] private static Func<string, TarnBlockedException> refusal;

        /// <summary>
        /// Makes a call after those before it. When its time is over, or it is cancelled, the task ends; the call is
        /// not made if it still waits, else it is given up.
        /// </summary>
        public static Task<T> Run<T>(string name, Func<T> call, TimeSpan timeout, CancellationToken cancellation)
        {
            var completion = new TaskCompletionSource<T>(TaskCreationOptions.RunContinuationsAsynchronously);
            var job = new Job(name, () =>
            {
                T result = call();
                return () => completion.TrySetResult(result);
            }, failure => completion.TrySetException(failure));
            if (cancellation.IsCancellationRequested)
                return Task.FromCanceled<T>(cancellation);
            Add(job);

            var timer = CancellationTokenSource.CreateLinkedTokenSource(cancellation);
            timer.Token.Register(() =>
            {
                Leave(job);
                if (cancellation.IsCancellationRequested)
                    completion.TrySetCanceled(cancellation);
                else
                    job.Fail(new TimeoutException(name + ": no answer within " + timeout));
            });
            timer.CancelAfter(timeout);
            completion.Task.ContinueWith(_ => timer.Dispose(), TaskScheduler.Default);
            return completion.Task;
        }

        private static void Add(Job job)
        {
            lock (Gate)
            {
                if (refusal != null)
                {
                    job.Fail(refusal(job.Name));
                    return;
                }
                Waiting.Add(job);
                Monitor.Pulse(Gate);
                if (!started)
                    new Thread(Serve) { IsBackground = true, Name = "Tarn daemon calls" }.Start();
                started = true;
            }
        }

        private static void Leave(Job job)
        {
            lock (Gate)
                if (!Waiting.Remove(job) && running == job)
                    Refuse(name => new TarnBlockedException(name, job.Name, false));
        }

        private static void Refuse(Func<string, TarnBlockedException> reason)
        {
            refusal = reason;
            foreach (Job job in Waiting)
                job.Fail(reason(job.Name));
            Waiting.Clear();
        }

        private static void Serve()
        {
            while (Next() is Job job)
            {
                Action end;
                try
                {
                    end = job.Run();
                    Finish();
                }
                catch (TarnExchangeException failure)
                {
                    end = () => job.Fail(failure);
                    Finish(name => new TarnBlockedException(name, job.Name, true, failure));
                }
                catch (Exception failure)
                {
                    end = () => job.Fail(failure);
                    Finish();
                }
                end();
            }
        }

        [return: MaybeNull]
        private static Job Next()
        {
            lock (Gate)
            {
                if (Waiting.Count == 0)
                    Monitor.Wait(Gate, IdleLimit);
                started = Waiting.Count > 0;
                if (!started)
                    return null;
                Job job = Waiting[0];
                Waiting.RemoveAt(0);
                running = job;
                return job;
            }
        }

        private static void Finish([AllowNull] Func<string, TarnBlockedException> reason = null)
        {
            lock (Gate)
            {
                running = null;
                refusal = null;
                if (reason != null)
                    Refuse(reason);
            }
        }
    }
}
