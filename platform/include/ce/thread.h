// ce/thread.h - threads of the program.
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/types.h"

using LPTHREAD_START_ROUTINE = DWORD (*)(void* parameter);

// Starts `procedure(parameter)` on a new thread. `security` must be null and `flags` 0, and `id` may be null.
// `stackBytes` is not used. Closing the handle doesn't end the thread. Returns null on failure. The last error is 8 if
// the host can't start a thread, and 87 if `procedure` is null or `security` or `flags` is invalid.
HANDLE CreateThread(const void* security, DWORD stackBytes, LPTHREAD_START_ROUTINE procedure, void* parameter,
                    DWORD flags, DWORD* id);

void Sleep(DWORD milliseconds);
