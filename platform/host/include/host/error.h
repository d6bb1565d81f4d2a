// error.h - the platform's error numbers for the host's errors.
#pragma once

#include "ce/types.h"

namespace platform::host {

// Returns the platform's error number for an errno. `error` may be positive or negative. 0 becomes ERROR_SUCCESS.
DWORD platformError(long error);

// Like platformError, but for a call on a file or folder that is open already. An open file can't be missing, in use by
// another program or wrongly named. So a number with such a meaning becomes ERROR_GEN_FAILURE.
DWORD ioError(long error);

}  // namespace platform::host
