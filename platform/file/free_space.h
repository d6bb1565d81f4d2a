// free_space.h - finds out how many bytes still fit into a mounted folder.
#pragma once

#include "device_path.h"

#include <cstdint>

namespace platform::file {

struct FreeSpace {
    DWORD error = 0;  // the other fields are valid if it is 0
    std::uint64_t available = 0;
    std::uint64_t total = 0;
};

// Returns the free bytes and the size of the mounted folder that contains the path. If the folder has a capacity,
// neither number exceeds what the capacity allows.
[[nodiscard]] FreeSpace freeSpaceAt(const HostPath& path);

}  // namespace platform::file
