// ce/module.h - looks up a platform entry point by name at run time.
//
// There is one library, "\WINDOWS\COREDLL.DLL" (compared without case): the platform itself. It is never unloaded, so
// its entry points stay valid.
#pragma once

#include "ce/types.h"

using FARPROC = void (*)();

// Null with last error 126 for any other name.
HMODULE LoadLibraryW(const WCHAR* name);

// Returns the address of the function with this name. Names are compared with case. Cast the address to the type of the
// function before you call it.
// Null with last error 127 if the platform doesn't have it, 6 for a module that isn't loaded.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);

// Nonzero on success, 0 with 6 for a module that isn't loaded.
BOOL FreeLibrary(HMODULE module);
