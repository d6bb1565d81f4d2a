// ce/module.h - looking up a platform entry point by name at run time.
//
// There is one library, "\WINDOWS\COREDLL.DLL" (compared without case): the platform itself. It stays
// loaded whatever is released, so pointers taken from it stay good.
#pragma once

#include "ce/types.h"

using FARPROC = void (*)();

// Null with last error 126 for any other name.
HMODULE LoadLibraryW(const WCHAR* name);

// The entry point of that exact name (case counts), to be cast to its own type before it is called.
// Null with last error 127 if the platform doesn't have it, 6 for a module that isn't loaded.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);

// Nonzero on success; 6 for a module that isn't loaded.
BOOL FreeLibrary(HMODULE module);
