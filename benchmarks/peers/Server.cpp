#include "Server.h"

#include "Floor.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace Bench {

void startServer(const std::function<void()>& serve)
{
    const pid_t process = fork();
    if (process < 0) {
        die("benchmarks: a server cannot be started");
    }
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        serve();
        die("benchmarks: a server has ended");
    }
}

} // namespace Bench
