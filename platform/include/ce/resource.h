// ce/resource.h - reads the program's resources from the compiled resource file that is built into the program.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

// Resources and their types can have numbers in place of names. This function converts such a number to a pointer that
// can be passed to a call as the name or the type. It keeps only the low 16 bits of the number.
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

// Finds a resource by its name and type, which are numbers or texts. Texts are compared without regard to the case of A
// to Z. "#123" is the number 123. Returns null on failure. The last error is 1812 if the program has no resources, 1813
// if there is no resource of this type, and 1814 if the type has no resource with this name.
HRSRC FindResourceW(HMODULE module, const WCHAR* name, const WCHAR* type);

// Returns the address of the resource's bytes, which is valid as long as the process runs. Nothing has to be freed. If
// `resource` isn't a handle that FindResourceW returned, returns null and sets error 6.
HGLOBAL LoadResource(HMODULE module, HRSRC resource);

// Returns the resource's length in bytes, without padding. If `resource` isn't a handle that FindResourceW returned,
// returns 0 and sets error 6.
DWORD SizeofResource(HMODULE module, HRSRC resource);

// Copies text `id` into `buffer`: at most characters - 1 characters, and a NUL. Returns the number of characters
// without the NUL. A surrogate pair stays whole. Returns 0 on failure. The last error is 1814 if there is no such text,
// or 122 if `characters` is below 1. With a null buffer the result is the address of the text inside the resource, as
// an integer. That text is not terminated. Its length in characters is in the WORD before it.
LONG_PTR LoadStringW(HINSTANCE instance, UINT id, WCHAR* buffer, int characters);
