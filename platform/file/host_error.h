// host_error.h - from the host's errors to the platform's, in one place.
#pragma once

#include "ce/types.h"

namespace platform::file {

// `error` is an errno, of either sign.
[[nodiscard]] DWORD platformError(long error);

// The same for a call on a file or folder that is open: that one is neither missing nor badly asked for nor kept by
// others, so what would say so is a host that fails.
[[nodiscard]] DWORD ioError(long error);

}  // namespace platform::file
