// file_stamp.h - telling whether a file is still the one that was stamped (ce/file_deletion.h).
#pragma once

#include "host_calls.h"

#include "ce/file_deletion.h"

#include <ctime>

namespace platform::file {

// `asked` is from this machine's clock, from before the host was asked for `status`.
[[nodiscard]] FileStamp stampOf(const HostStatus& status, const timespec& asked);

// The same file with the same content, as far as its length and its time of writing tell.
[[nodiscard]] bool hasSameContent(const FileStamp& stamp, const HostStatus& status);

// And nothing of it changed at all: a time of writing can be set back, this one can't.
[[nodiscard]] bool isUnchanged(const FileStamp& stamp, const HostStatus& status);

}  // namespace platform::file
