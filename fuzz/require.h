// require.h - the check of a fuzz target. A fuzzer reports an input that ends the process.
#pragma once

#include <cstdlib>

inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
