#include "failing_blocks.h"

#include "ce/error.h"
#include "ce/memory.h"

#include <cstdlib>

namespace {

unsigned long failFrom = 0;
unsigned long blocks = 0;

}  // namespace

void failBlocksFrom(unsigned long nth)
{
    failFrom = nth;
    blocks = 0;
}

HLOCAL LocalAlloc(UINT, std::size_t bytes)
{
    if (failFrom == 0 || ++blocks < failFrom)
        return std::calloc(1, bytes + 1);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HLOCAL LocalFree(HLOCAL block)
{
    std::free(block);
    return nullptr;
}
