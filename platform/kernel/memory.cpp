#include "ce/memory.h"

#include "ce/error.h"

#include <algorithm>
#include <cstdlib>

HLOCAL LocalAlloc(UINT flags, std::size_t bytes)
{
    // For 0 bytes malloc and calloc can return null, and callers would treat that as a failure.
    const std::size_t size = std::max<std::size_t>(bytes, 1);
    void* const block = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, size) : std::malloc(size);
    if (!block)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

HLOCAL LocalFree(HLOCAL block)
{
    std::free(block);
    return nullptr;
}
