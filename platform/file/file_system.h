// file_system.h - the kind and block size of the file system that holds a file. Asks the host once for each device.
#pragma once

#include "host_calls.h"

#include <cstdint>
#include <optional>

namespace platform::file {

// `file` is a descriptor on the device of that number. Empty if the host doesn't say. Any thread.
std::optional<FileSystem> fileSystemOf(int file, std::uint64_t device);

}  // namespace platform::file
