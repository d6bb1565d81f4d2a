// ce/winmain.h - the program's entry point.
#pragma once

#include "ce/types.h"

// Defined by the program. The host (the platform's process, which runs the program) calls it once, on the program's
// main thread. `previous` is null and `commandLine` empty. The result is the program's exit code.
int WinMain(HINSTANCE instance, HINSTANCE previous, WCHAR* commandLine, int show);
