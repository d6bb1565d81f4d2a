// file_system.h - finds the kind and block size of the file system that holds a file, and remembers them for the
// last four st_dev numbers.
#pragma once

#include "host_calls.h"

#include <cstdint>
#include <optional>

namespace platform::file {

// Returns the file system of `file`, a descriptor of a file or folder whose st_dev is `device`. Empty if the host
// doesn't report it. Can be called on any thread.
std::optional<FileSystem> fileSystemOf(int file, std::uint64_t device);

}  // namespace platform::file
