// ce/resource.h - the program's resources, read from the compiled resource file that is built into it.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

// Converts the number of a resource or of a resource type to the pointer that calls take as its name. Keeps only the
// low 16 bits.
inline const WCHAR* MAKEINTRESOURCEW(UINT_PTR number)
{
    return reinterpret_cast<const WCHAR*>(number & 0xFFFF);
}

inline constexpr WORD RT_BITMAP_ID = 2;
inline constexpr WORD RT_ICON_ID = 3;
inline constexpr WORD RT_MENU_ID = 4;
inline constexpr WORD RT_DIALOG_ID = 5;
inline constexpr WORD RT_STRING_ID = 6;
inline constexpr WORD RT_GROUP_ICON_ID = 14;

inline const WCHAR* const RT_DIALOG = MAKEINTRESOURCEW(RT_DIALOG_ID);

// Name and type are numbers or texts. Texts are compared without regard to the case of A to Z. "#123" is the number
// 123. Returns null on failure. The last error is 1812 if the program has no resources, 1813 if there is no resource of
// this type, and 1814 if the type has no resource with this name.
HRSRC FindResourceW(HMODULE module, const WCHAR* name, const WCHAR* type);

// The address of the resource's bytes, valid as long as the process runs. Nothing has to be freed.
// Returns null with 6 if FindResourceW didn't return `resource`.
HGLOBAL LoadResource(HMODULE module, HRSRC resource);

// Returns the resource's length in bytes, without padding, or 0 with 6 if FindResourceW didn't return `resource`.
DWORD SizeofResource(HMODULE module, HRSRC resource);

// Copies text `id` into `buffer`: at most characters - 1 characters, and a NUL. Returns the number of characters
// without the NUL. Returns 0 with 1814 if there is no such text, and with 122 if `characters` is below 1. A surrogate
// pair stays whole. With a null buffer the result is the address of the text inside the resource, as an integer. That
// text is not terminated. Its length in characters is in the WORD before it.
LONG_PTR LoadStringW(HINSTANCE instance, UINT id, WCHAR* buffer, int characters);
