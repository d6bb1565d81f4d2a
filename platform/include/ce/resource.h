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
// 123. Null on failure: 1812 no resources, 1813 no such type, 1814 no such name.
HRSRC FindResourceW(HMODULE module, const WCHAR* name, const WCHAR* type);

// The address of the resource's bytes, valid as long as the process runs. Nothing has to be freed.
// Null with 6 for a handle that FindResourceW didn't return.
HGLOBAL LoadResource(HMODULE module, HRSRC resource);

// The length of the resource in bytes, without padding; 0 with 6.
DWORD SizeofResource(HMODULE module, HRSRC resource);

// Copies text `id` into `buffer`: at most characters - 1 characters, and a NUL. Returns the number of characters
// without the NUL, 0 if there is no such text (1814) or no space (122). A surrogate pair stays whole. With a null
// buffer the result is the address of the text inside the resource, as an integer. That text is not terminated. Its
// length in characters is in the WORD before it.
LONG_PTR LoadStringW(HINSTANCE instance, UINT id, WCHAR* buffer, int characters);
