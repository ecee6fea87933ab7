#include <TarnRemoteClient.h>
#include <stdio.h>

int main(void)
{
    static char version[256], log[TARN_LOG_SIZE];
    const int status = GetTarnVersion(version, log);
    printf("status %d, version \"%s\"\n%s", status, version, log);
    return status == 0 ? 0 : 1;
}
