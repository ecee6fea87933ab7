#include <tarn/Secret.h>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <cstring>
#endif

void tarn::clearMemory(void* memory, std::size_t size)
{
#if defined(_WIN32)
    SecureZeroMemory(memory, size);
#else
    explicit_bzero(memory, size);
#endif
}
