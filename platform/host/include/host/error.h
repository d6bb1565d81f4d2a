// error.h - the platform's error numbers for the host's errors.
#pragma once

#include "ce/types.h"

namespace platform::host {

// Returns the platform's error number for an errno. `error` may be positive or negative. 0 becomes ERROR_SUCCESS, and
// an errno without a counterpart becomes ERROR_GEN_FAILURE.
DWORD platformError(long error);

// Like platformError, but for a call on a file or folder that is open already. An open file can't be missing (2, 3) or
// in use by another program (32), and the program's arguments are valid (6, 87). So these five errors would mislead the
// program, and ERROR_GEN_FAILURE replaces them.
DWORD ioError(long error);

}  // namespace platform::host
