// ce/handle.h - closes the handle of a file, a thread, a database or an enumeration of databases.
#pragma once

#include "ce/types.h"

// Nonzero on success. Fails with error 6 if the handle is not open (already closed, or never valid), or if it is of a
// kind that this call doesn't close. For example, FindClose closes the handle of a search, and RegCloseKey the handle
// of a key. If another thread is in a call with this handle, the object lives until that call ends. Closing a thread's
// handle doesn't end the thread. If the last changes of a file or a database can't be written, the handle is closed,
// but the call fails with the error of the write, such as 31 or 112.
BOOL CloseHandle(HANDLE handle);
