// ce/memory.h - blocks of the process heap, some of which a call allocates and its caller frees.
#pragma once

#include "ce/types.h"

using HLOCAL = void*;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_ZEROINIT = 0x40;
inline constexpr UINT LPTR = 0x40;

// A block of `bytes` bytes, aligned for any type; for 0 bytes, too, a separate block.
// Null on failure, with last error 8. Free with LocalFree.
HLOCAL LocalAlloc(UINT flags, std::size_t bytes);

// Null on success, also for a null block.
HLOCAL LocalFree(HLOCAL block);
