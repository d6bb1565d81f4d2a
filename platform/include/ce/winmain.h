// ce/winmain.h - where the program begins.
#pragma once

#include "ce/types.h"

// The program's own function; the host calls it once, on a thread that is the program's main thread.
// `previous` is null and `commandLine` empty. The result is the program's exit code.
int WinMain(HINSTANCE instance, HINSTANCE previous, WCHAR* commandLine, int show);
