// ce/thread.h - threads of the program.
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/types.h"

using LPTHREAD_START_ROUTINE = DWORD (*)(void* parameter);

// Starts `procedure(parameter)` on a new thread. `security` must be null, `stackBytes` and `flags` 0; `id` may be null.
// Closing the handle doesn't end the thread. Null on failure: 8 the host can't start a thread, 87 a null `procedure`,
// or an invalid `security` or `flags`.
HANDLE CreateThread(const void* security, DWORD stackBytes, LPTHREAD_START_ROUTINE procedure, void* parameter,
                    DWORD flags, DWORD* id);

void Sleep(DWORD milliseconds);
