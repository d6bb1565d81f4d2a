// require.h - the check of a fuzz target. If the condition is false, the process is aborted and the fuzzer reports the
// input.
#pragma once

#include <cstdlib>

inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
