#include <TarnRemoteClient.h>
#include <iostream>

int main()
{
    static char version[256], log[TARN_LOG_SIZE];
    const int status = GetTarnVersion(version, log);
    std::cout << "status " << status << ", version \"" << version << "\"\n" << log;
    return status == 0 ? 0 : 1;
}
