// file_system.h - what the host tells about the file system that holds a file, asked once for each device.
#pragma once

#include "host_calls.h"

#include <cstdint>
#include <optional>

namespace platform::file {

// `file` is a descriptor on the device of that number. Nothing if the host doesn't tell. Any thread.
[[nodiscard]] std::optional<FileSystem> fileSystemOf(int file, std::uint64_t device);

}  // namespace platform::file
