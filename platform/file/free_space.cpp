#include "free_space.h"

#include "host/error.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>

namespace platform::file {

FreeSpace freeSpaceAt(const HostPath& path)
{
    if (path.error != 0)
        return {.error = path.error};
    struct statvfs status {};
    if (::fstatvfs(path.mount->folder(), &status) != 0)
        return {.error = host::platformError(-errno)};
    FreeSpace space{.available = std::uint64_t{status.f_bavail} * status.f_frsize,
                    .total = std::uint64_t{status.f_blocks} * status.f_frsize};
    if (const auto capacity = path.mount->capacity()) {
        space.available = std::min(space.available, *capacity - std::min(*capacity, path.mount->used()));
        space.total = std::min(space.total, *capacity);
    }
    return space;
}

}  // namespace platform::file
