#include "free_space.h"

#include "host/error.h"
#include "host_calls.h"

#include <algorithm>

namespace platform::file {

FreeSpace freeSpaceAt(const HostPath& path)
{
    if (path.error != 0)
        return {.error = path.error};
    struct statvfs status = {};
    if (const int result = readSpace(path.mount->folder(), status); result < 0)
        return {.error = host::platformError(result)};
    FreeSpace space{.available = std::uint64_t{status.f_bavail} * status.f_frsize,
                    .total = std::uint64_t{status.f_blocks} * status.f_frsize};
    if (const auto capacity = path.mount->capacity()) {
        space.available = std::min(space.available, *capacity - std::min(*capacity, path.mount->used()));
        space.total = std::min(space.total, *capacity);
    }
    return space;
}

}  // namespace platform::file
