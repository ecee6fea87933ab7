// Stands in for the Java run-time: writes the command line it was given to a file beside itself.
#include <fstream>
#include <string>
#include <windows.h>

int main()
{
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string temporary = std::string(path) + ".tmp";
    std::ofstream(temporary) << GetCommandLineA();
    MoveFileA(temporary.c_str(), (std::string(path) + ".txt").c_str());
}
