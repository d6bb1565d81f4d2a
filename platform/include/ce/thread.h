// ce/thread.h - threads of the program.
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/types.h"

using LPTHREAD_START_ROUTINE = DWORD (*)(void* parameter);

// Starts `procedure(parameter)` on a new thread. `security` must be null, `stackBytes` and `flags` 0; `id` may be null.
// The thread continues to run after its handle was closed. Null on failure: 8, 87 for other arguments.
HANDLE CreateThread(const void* security, DWORD stackBytes, LPTHREAD_START_ROUTINE procedure, void* parameter,
                    DWORD flags, DWORD* id);

void Sleep(DWORD milliseconds);
