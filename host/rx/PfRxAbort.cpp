#include "PfRxAbort.h"

#include <cstdio>
#include <cstdlib>

void PfRxAbort(const char* message)
{
    std::fprintf(stderr, "PfRxAbort: %s\n", message);
    std::fflush(stderr);
    std::abort();
}
