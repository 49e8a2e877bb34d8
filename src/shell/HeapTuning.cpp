#include "HeapTuning.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

void restartWithoutFreedBlockCache(char *argv[])
{
#ifdef __GLIBC__
    // glibc reads its tunables only as a program starts. The restarted image puts the
    // user's value back, so the programs Quorla starts (a browser, a terminal) keep
    // their own cache.
    static constexpr char tunable[] = "glibc.malloc.tcache_count";
    static constexpr char before[] = "QUORLA_GLIBC_TUNABLES_BEFORE"; // "=value", or empty when unset
    if (const char *saved = std::getenv(before)) {
        if (*saved == '=')
            setenv("GLIBC_TUNABLES", saved + 1, 1);
        else
            unsetenv("GLIBC_TUNABLES");
        unsetenv(before);
        return;
    }
    const char *current = std::getenv("GLIBC_TUNABLES");
    if (current && std::strstr(current, tunable))
        return; // the user chose a value
    const std::string tunables = (current && *current ? std::string(current) + ':' : std::string()) + tunable + "=0";
    if (setenv(before, current ? (std::string("=") + current).c_str() : "", 1) == 0
        && setenv("GLIBC_TUNABLES", tunables.c_str(), 1) == 0)
        execv("/proc/self/exe", argv);
    // The restart failed: Quorla runs as it is, in the environment it was given.
    if (current)
        setenv("GLIBC_TUNABLES", current, 1);
    else
        unsetenv("GLIBC_TUNABLES");
    unsetenv(before);
#else
    (void)argv;
#endif
}
