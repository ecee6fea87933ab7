#include <stdint.h>
#include <stdio.h>
#include <windows.h>

int main(void)
{
    typedef int32_t (*GetTarnVersionFunction)(char* version, char* log);
    static char version[256], log[32766];
    const HMODULE library = LoadLibraryW(L"TarnRemoteClient.dll");
    const FARPROC address = library ? GetProcAddress(library, "GetTarnVersion") : NULL;
    if (!address) {
        fprintf(stderr, "TarnRemoteClient.dll: error %lu\n", GetLastError());
        return 2;
    }
    const int status = ((GetTarnVersionFunction)(void (*)(void))address)(version, log);
    printf("status %d, version \"%s\"\n%s", status, version, log);
    return status == 0 ? 0 : 1;
}
