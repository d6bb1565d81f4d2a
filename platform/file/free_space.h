// free_space.h - how much a mounted folder still holds.
#pragma once

#include "device_path.h"

#include <cstdint>

namespace platform::file {

struct FreeSpace {
    DWORD error = 0;  // the other fields are valid if it is 0
    std::uint64_t available = 0;
    std::uint64_t total = 0;
};

// Of the folder that holds the path: what its file system and its capacity allow.
[[nodiscard]] FreeSpace freeSpaceAt(const HostPath& path);

}  // namespace platform::file
