// ce/handle.h - closes a handle of any kind: file, thread, database, enumeration.
#pragma once

#include "ce/types.h"

// Nonzero on success. Fails with 6 for a handle that is not open (already closed, or never valid), and for a search
// handle, which only FindClose closes. If another thread is in a call with this handle, the object lives until that
// call ends. Closing a thread's handle doesn't end the thread. If the host can't write the last bytes of a file, the
// handle is closed, but the call fails with 31 or 112.
BOOL CloseHandle(HANDLE handle);
