// volume_flush.h - all that this process changed on the device, brought to the disk.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <memory>
#include <vector>

namespace platform::file {

struct FailedFlush {
    std::shared_ptr<MountedFolder> mount;
    DWORD error = 0;
};

// Writes out what is gathered of open files, then flushes each file system that has changed since its last flush. All
// are tried; those that failed count as changed still. Any thread.
[[nodiscard]] std::vector<FailedFlush> flushChangedVolumes();

}  // namespace platform::file
