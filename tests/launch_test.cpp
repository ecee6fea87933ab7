// Starting the daemon for real: a program at the Java path is launched.
#include "support/ExportTest.h"

#include <filesystem>
#include <fstream>

#ifdef _WIN32
#include <thread>

TEST(Start, LaunchesTheProgramAtTheJavaPathWithTheUnquotedPath)
{
    const std::filesystem::path bin = "c:\\Program Files\\Java\\jdk1.6.0_17\\bin";
    const std::filesystem::path witness = bin / "java.exe.txt";
    std::filesystem::create_directories(bin);
    std::filesystem::copy_file(LAUNCH_WITNESS, bin / "java.exe", std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(witness);

    Output<char> log(TARN_LOG_SIZE);
    EXPECT_EQ(StartTarnDaemon("c:\\daemon files\\tarn.jar", log), 1) << log.text();
    const std::string returned = "] ShellExecute returned: ";
    const std::string text = log.text();
    ASSERT_NE(text.find(returned), std::string::npos) << text;
    EXPECT_GT(std::stoi(text.substr(text.find(returned) + returned.size())), 32);

    std::string commandLine;
    while (commandLine.empty()) { // the test's time limit ends the waiting
        std::this_thread::yield();
        std::ifstream file(witness);
        commandLine.assign(std::istreambuf_iterator<char>(file), {});
    }
    EXPECT_TRUE(commandLine.ends_with(" -jar c:\\daemon files\\tarn.jar")) << commandLine;
    std::error_code inUse;
    do { // until the program has ended
        std::filesystem::remove_all("c:\\Program Files\\Java", inUse);
    } while (inUse);
}
#else
#include "platform/Platform.h"

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

// The witness writes its report into a pipe, where it waits for a reader: a launch that waited for the program's end
// would never return.
class Launch : public testing::Test
{
protected:
    Launch()
    {
        std::filesystem::remove(pipe_);
        mkfifo(pipe_.c_str(), S_IRUSR | S_IWUSR);
    }
    ~Launch() override { std::filesystem::remove(pipe_); }

    Lines report() const
    {
        Lines lines;
        std::ifstream pipe(pipe_);
        for (std::string line; std::getline(pipe, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    static Lines withArguments(const Lines& arguments)
    {
        Lines lines{"argument " LAUNCH_WITNESS};
        for (const std::string& argument : arguments) {
            lines.push_back("argument " + argument);
        }
        lines.insert(lines.end(), {"session of its own", "descriptor 0 /dev/null", "descriptor 1 /dev/null",
                                   "descriptor 2 /dev/null"});
        return lines;
    }

private:
    const std::string pipe_ = LAUNCH_WITNESS ".pipe";
};

} // namespace

TEST_F(Launch, StartsTheProgramAtTheJavaPathWithTheUnquotedPath)
{
    Output<char> log(TARN_LOG_SIZE);
    ASSERT_EQ(StartTarnDaemon("/daemon files/tarn.jar", log), 1) << log.text();
    EXPECT_TRUE(log.text().ends_with("] ShellExecute returned: 33\n")) << log.text();
    EXPECT_EQ(report(), withArguments({"-jar", "/daemon", "files/tarn.jar"}));
    ASSERT_EQ(StartTarnDaemon(nullptr, log), 1);
    EXPECT_EQ(report(), withArguments({"-jar"}));
}

TEST_F(Launch, TheProgramGetsNoDescriptorsAndNoBlockedSignalsAndIsNotAChild)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    const int low = open("/dev/zero", O_RDONLY);
    for (const int above : {low + 3, low + 5, 100}) { // with the launch's own descriptors in the gaps
        dup2(low, above);
    }
    ASSERT_EQ(Platform::launchHidden(LAUNCH_WITNESS, "  a   b "), 33);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "there is none to wait for";
    EXPECT_EQ(report(), withArguments({"a", "b"}));
    ASSERT_EQ(Platform::launchHidden("\"" LAUNCH_WITNESS "\"", ""), 33);
    EXPECT_EQ(report(), withArguments({}));
}

TEST_F(Launch, FailuresAreToldApart)
{
    EXPECT_EQ(Platform::launchHidden("\"/no/such/program\"", "x"), 2);
    std::filesystem::current_path("/bin");
    EXPECT_EQ(Platform::launchHidden("true", ""), 2) << "nothing is looked for in the current folder";
    std::filesystem::current_path("/");
    EXPECT_EQ(Platform::launchHidden("bin/true", ""), 2);
    EXPECT_EQ(Platform::launchHidden("/etc/passwd/program", ""), 2);
    EXPECT_EQ(Platform::launchHidden("/etc/passwd", ""), 5) << "it cannot be executed";
    EXPECT_EQ(Platform::launchHidden("\"/bin/truex", ""), 2) << "quotes come off as a pair";
    EXPECT_EQ(Platform::launchHidden("//bin/true\"", ""), 2);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    close(STDIN_FILENO);
    EXPECT_EQ(Platform::launchHidden("/no/such/program", ""), 2)
        << "reported even where standard descriptors are closed";
}
#endif
