// ce/module.h - looks up a platform entry point by name at run time.
//
// There is one library, "\WINDOWS\COREDLL.DLL" (compared without case): the platform itself. It is never unloaded, so
// its entry points stay valid.
#pragma once

#include "ce/types.h"

using FARPROC = void (*)();

// Null with last error 126 for any other name.
HMODULE LoadLibraryW(const WCHAR* name);

// The entry point of exactly that name. The comparison is case-sensitive. Cast it to its real type before calling it.
// Null with last error 127 if the platform doesn't have it, 6 for a module that isn't loaded.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);

// Nonzero on success; 6 for a module that isn't loaded.
BOOL FreeLibrary(HMODULE module);
