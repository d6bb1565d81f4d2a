// volume_flush.h - writes to the disk everything that this process has changed on the device.
#pragma once

#include "mounted_folder.h"

#include "ce/types.h"

#include <vector>

namespace platform::file {

struct FailedFlush {
    const MountedFolder* mount = nullptr;
    DWORD error = 0;
};

// Gives temporary files their names on the host, and writes out the buffered bytes of open files. Then flushes each
// file system that was changed since its last flush. If the flush of one file system fails, the others are still
// flushed. The file system whose flush failed stays marked as changed, unless its medium was removed. Returns the
// folders for which a step failed, with the errors. Can be called on any thread.
[[nodiscard]] std::vector<FailedFlush> flushChangedVolumes();

}  // namespace platform::file
