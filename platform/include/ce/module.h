// ce/module.h - looks up a platform entry point by name at run time.
//
// There is one library, "\WINDOWS\COREDLL.DLL" (compared without case): the platform itself. It is never unloaded, so
// its entry points stay valid.
#pragma once

#include "ce/types.h"

using FARPROC = void (*)();

// Returns the library, or null with 126 if `name` isn't the library's name.
HMODULE LoadLibraryW(const WCHAR* name);

// Returns the address of the function with this name. Names are compared with case. Cast the address to the type of the
// function before you call it.
// Returns null with 127 if the platform has no such function, and with 6 if `module` isn't the library.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);

// Has no effect. Returns nonzero on success, and 0 with 6 if `module` isn't the library.
BOOL FreeLibrary(HMODULE module);
