// ce/types.h - the basic types of the platform, in the widths that 64-bit hosts need.
//
// Handles, message parameters and integers that can contain a pointer have the size of a pointer. All other types have
// their documented 32 or 16 bits. LONG is never the host's `long`.
#pragma once

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using BOOL = std::int32_t;
using ATOM = std::uint16_t;
using LANGID = std::uint16_t;
using LCID = std::uint32_t;
using COLORREF = std::uint32_t;  // 0x00BBGGRR

using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

// One UTF-16 code unit. These headers call a code unit a character.
using WCHAR = char16_t;

// A handle is a number that the platform looks up in a table. Only HGLOBAL, HMODULE and HLOCAL (ce/memory.h) are
// addresses. A call refuses a closed handle, even if another object now has its place in the table. Most kinds of
// handles have a pointer type of their own, so that the compiler can distinguish them.
using HANDLE = void*;
using HWND = struct HWND_*;
using HINSTANCE = struct HINSTANCE_*;
using HMODULE = HINSTANCE;
using HMENU = struct HMENU_*;
using HKEY = struct HKEY_*;
using HRSRC = struct HRSRC_*;
using HGLOBAL = const void*;  // a loaded resource: the address of its bytes
using HICON = struct HICON_*;
using HCURSOR = struct HCURSOR_*;
using HBRUSH = struct HBRUSH_*;
using HBITMAP = struct HBITMAP_*;
using HIMAGELIST = struct HIMAGELIST_*;
using HTREEITEM = struct HTREEITEM_*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~UINT_PTR{0});

// Size of the fixed buffers for paths and texts, in characters with the NUL.
inline constexpr DWORD MAX_PATH = 260;

// The number of 100 ns steps since 1601-01-01 UTC, the low half first. Its alignment is 4, so never access it as a
// 64-bit integer.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct POINT {
    LONG x;
    LONG y;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

constexpr WORD LOWORD(std::uint64_t value)
{
    return static_cast<WORD>(value & 0xFFFF);
}

constexpr WORD HIWORD(std::uint64_t value)
{
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}

constexpr DWORD MAKELONG(WORD low, WORD high)
{
    return static_cast<DWORD>(low) | (static_cast<DWORD>(high) << 16);
}
