// Stands in for the Java run-time: reports what it was started with through a pipe beside itself, and ends only once
// somebody has read that.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <unistd.h>

int main(int count, char** values)
{
    std::ostringstream report;
    for (int i = 0; i < count; ++i) {
        report << "argument " << values[i] << '\n';
    }
    report << "session " << (getsid(0) == getpid() ? "of its own" : "of another process") << '\n';
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (int signal = 1; signal < NSIG; ++signal) {
        if (sigismember(&blocked, signal) == 1) {
            report << "blocked signal " << signal << '\n';
        }
    }
    std::set<std::string> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const std::string target = std::filesystem::read_symlink(entry).string();
        if (!target.ends_with("/fd")) { // the folder being read
            descriptors.insert("descriptor " + entry.path().filename().string() + " " + target + "\n");
        }
    }
    for (const std::string& descriptor : descriptors) {
        report << descriptor;
    }
    std::ofstream(std::string(values[0]) + ".pipe") << report.str();
}
