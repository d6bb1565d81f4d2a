// volume_flush.h - writes all that this process changed on the device to the disk.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <vector>

namespace platform::file {

struct FailedFlush {
    const MountedFolder* mount = nullptr;
    DWORD error = 0;
};

// Writes out what is gathered for open files, then flushes each file system that was changed since its last flush. All
// are tried; a file system that failed still counts as changed. Any thread.
[[nodiscard]] std::vector<FailedFlush> flushChangedVolumes();

}  // namespace platform::file
