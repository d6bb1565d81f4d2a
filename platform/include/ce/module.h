// ce/module.h - looks up a platform entry point by name at run time.
//
// There is one library, "\WINDOWS\COREDLL.DLL" (compared without case): the platform itself. It is never unloaded, so
// its entry points stay valid.
#pragma once

#include "ce/types.h"

using FARPROC = void (*)();

// Returns the handle of the library. If `name` isn't "\WINDOWS\COREDLL.DLL", returns null and sets error 126.
HMODULE LoadLibraryW(const WCHAR* name);

// Returns the address of the platform's function `name`. Names are compared with case. Cast the address to the type of
// the function before you call it. Returns null on failure. The last error is 127 if the platform has no such function,
// or 6 if `module` isn't the handle that LoadLibraryW returns.
FARPROC GetProcAddressW(HMODULE module, const WCHAR* name);

// Has no effect, because the library is never unloaded. Returns nonzero if `module` is the handle that LoadLibraryW
// returns. Otherwise returns 0 and sets error 6.
BOOL FreeLibrary(HMODULE module);
