// error.h - the platform's error numbers for the host's errors.
#pragma once

#include "ce/types.h"

namespace platform::host {

// `error` is an errno, of either sign; 0 gives 0.
DWORD platformError(long error);

// The same for a call on a file or folder that is open already. Numbers which say that it is missing, in use or named
// wrongly can't be true then, so they become ERROR_GEN_FAILURE.
DWORD ioError(long error);

}  // namespace platform::host
