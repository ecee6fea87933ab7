// Starting the daemon for real: a program at the fixed Java path is launched.
#include "support/ExportTest.h"

#include <filesystem>
#include <fstream>
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

    for (int i = 0; i < 200 && !std::filesystem::exists(witness); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    std::ifstream file(witness);
    const std::string commandLine(std::istreambuf_iterator<char>(file), {});
    EXPECT_TRUE(commandLine.ends_with(" -jar c:\\daemon files\\tarn.jar")) << commandLine;
    file.close();
    std::filesystem::remove_all("c:\\Program Files\\Java");
}
