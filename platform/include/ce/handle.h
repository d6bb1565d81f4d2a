// ce/handle.h - giving back a handle of whatever kind: file, thread, database, enumeration.
#pragma once

#include "ce/types.h"

// Nonzero on success. Fails with 6 for a handle that is not open (closed already, made up, or a
// search handle, which goes back with FindClose alone). A handle in use on another thread stays
// alive until that call is over. Closing a thread's handle doesn't end the thread. If the host couldn't
// take the last bytes of a file, the handle is closed and the call fails with 31 or 112.
BOOL CloseHandle(HANDLE handle);
