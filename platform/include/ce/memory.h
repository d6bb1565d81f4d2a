// ce/memory.h - blocks of the process heap that a service hands out and its caller frees.
#pragma once

#include "ce/types.h"

using HLOCAL = void*;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_ZEROINIT = 0x40;
inline constexpr UINT LPTR = 0x40;

// A block of `bytes` bytes, aligned for any type; 0 bytes still give a block of its own.
// Null on failure, with last error 8. Free with LocalFree.
HLOCAL LocalAlloc(UINT flags, std::size_t bytes);

// Null on success; a null block is no failure.
HLOCAL LocalFree(HLOCAL block);
