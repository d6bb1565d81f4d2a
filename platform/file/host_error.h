// host_error.h - from the host's errors to the platform's, in one place.
#pragma once

#include "ce/types.h"

namespace platform::file {

// `error` is an errno, of either sign.
[[nodiscard]] DWORD platformError(long error);

}  // namespace platform::file
