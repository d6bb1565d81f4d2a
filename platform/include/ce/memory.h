// ce/memory.h - allocates and frees blocks of the process heap. Some calls of the platform return such a block, and the
// caller must free it.
#pragma once

#include "ce/types.h"

using HLOCAL = void*;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_ZEROINIT = 0x40;
inline constexpr UINT LPTR = 0x40;

// Allocates a block of `bytes` bytes, aligned for any type. A block of 0 bytes also has an address of its own. Free the
// block with LocalFree. On failure returns null and sets error 8.
HLOCAL LocalAlloc(UINT flags, std::size_t bytes);

// Frees the block. A null block is allowed. Always returns null.
HLOCAL LocalFree(HLOCAL block);
