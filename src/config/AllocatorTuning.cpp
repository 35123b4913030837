#include "AllocatorTuning.h"

#include <cstdlib>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#include <unistd.h>
#endif

void AllocatorTuning::prepare(char *argv[])
{
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
    if (std::getenv("GLIBC_TUNABLES"))
        return;
    if (::setenv("GLIBC_TUNABLES", "glibc.malloc.hugetlb=1:glibc.malloc.top_pad=16777216", 0) != 0)
        return;
    ::execv("/proc/self/exe", argv);
    // Not started again (no /proc, say): go on with the defaults, and leave
    // the children the environment they would have had.
    ::unsetenv("GLIBC_TUNABLES");
#else
    (void)argv;
#endif
}
