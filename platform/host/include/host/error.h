// error.h - converts errors of the host (the Linux system) to the platform's error numbers.
#pragma once

#include "ce/types.h"

namespace platform::host {

// Returns the platform's error number for an errno. `error` may be positive or negative. 0 becomes ERROR_SUCCESS, and
// an errno without a counterpart becomes ERROR_GEN_FAILURE.
DWORD platformError(long error);

// Like platformError, but for a call on a file or folder that is open already. Some error numbers would mislead the
// program after such a call, so ERROR_GEN_FAILURE replaces them. These are the errors for a missing file or folder (2
// and 3), for a file that another program uses (32), and for an invalid handle or argument (6 and 87). An open file
// isn't missing or in use by another program, and the program's arguments are valid.
DWORD ioError(long error);

}  // namespace platform::host
