#include "HeapTuning.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

void restartWithoutFreedBlockCache(char *argv[])
{
#ifdef __GLIBC__
    // glibc reads its tunables only as a program starts.
    static constexpr char tunable[] = "glibc.malloc.tcache_count";
    const char *current = std::getenv("GLIBC_TUNABLES");
    if (current && std::strstr(current, tunable))
        return; // restarted already, or the user chose a value
    const std::string tunables = (current && *current ? std::string(current) + ':' : std::string()) + tunable + "=0";
    if (setenv("GLIBC_TUNABLES", tunables.c_str(), 1) == 0)
        execv("/proc/self/exe", argv);
#else
    (void)argv;
#endif
}
