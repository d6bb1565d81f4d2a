// ce/registry.h - keys and values of the registry. The functions return the error number, or 0 for success, and don't
// set the last error. Names are compared without case and stored as written.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(static_cast<INT_PTR>(static_cast<LONG>(0x80000000)));
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<INT_PTR>(static_cast<LONG>(0x80000001)));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<INT_PTR>(static_cast<LONG>(0x80000002)));
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<INT_PTR>(static_cast<LONG>(0x80000003)));

inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;

inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// Opens `subKey` below `key`, and makes each level that is missing. `disposition` may be null. `reserved` and `options`
// must be 0, `security` null. The errors are:
//   6    `key` isn't open
//   87   a level's name is empty (also because of a leading backslash), is longer than 255 characters or has a lone
//        surrogate, there are more than 16 levels below the predefined key, or another argument is invalid
//   112  the disk is full
//   31   no device is open, or the store can't be read or written
//   8    memory ran out
LONG RegCreateKeyExW(HKEY key, const WCHAR* subKey, DWORD reserved, const WCHAR* className, DWORD options, DWORD access,
                     const void* security, HKEY* result, DWORD* disposition);

// Copies a value into the buffer `data` of `*bytes` bytes, and sets `*bytes` to the size of the value. With a null
// `data` it copies nothing. `type` may be null. A null or empty name is the key's default value. The errors are:
//   2    there is no such value; nothing is changed
//   234  the buffer is too small; `*bytes` and `*type` are set, and `data` is unchanged
//   6    `key` isn't open
//   87   `reserved` isn't null, or `data` is given without `bytes`
//   31   no device is open, or the store can't be read
//   8    memory ran out
LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes);

// Sets a value and its type. Both are on the disk when the call returns. A null or empty name is the key's default
// value. The errors are:
//   6    `key` isn't open
//   87   the name is longer than 255 characters or has a lone surrogate, the data is larger than 16 MiB, or another
//        argument is invalid
//   112  the disk is full
//   31   no device is open, or the store can't be written
//   8    memory ran out
LONG RegSetValueExW(HKEY key, const WCHAR* name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes);

// Returns error 6 if the key isn't open. Closing a predefined key succeeds and does nothing.
LONG RegCloseKey(HKEY key);
