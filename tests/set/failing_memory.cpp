#include "failing_memory.h"

#include "ce/error.h"
#include "ce/memory.h"

#include <cstdlib>
#include <new>

namespace {

unsigned long failFrom = 0;
unsigned long allocations = 0;

void* allocate(std::size_t bytes) noexcept
{
    if (failFrom != 0 && ++allocations >= failFrom)
        return nullptr;
    return std::calloc(1, bytes ? bytes : 1);
}

void* allocateOrThrow(std::size_t bytes)
{
    void* block = allocate(bytes);
    if (!block)
        throw std::bad_alloc();
    return block;
}

}  // namespace

void failAllocationsFrom(unsigned long nth)
{
    failFrom = nth;
    allocations = 0;
}

HLOCAL LocalAlloc(UINT, std::size_t bytes)
{
    void* const block = allocate(bytes);
    if (!block)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

HLOCAL LocalFree(HLOCAL block)
{
    std::free(block);
    return nullptr;
}

void* operator new(std::size_t bytes)
{
    return allocateOrThrow(bytes);
}

void* operator new[](std::size_t bytes)
{
    return allocateOrThrow(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return allocate(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    return allocate(bytes);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}
