// unchanged_deletion.h - deletes a file only if the file hasn't changed since its stamp was taken (ce/file_stamp.h).
#pragma once

#include "device_path.h"

#include "ce/file_stamp.h"

namespace platform::file {

// Deletes the file at `path`. Returns 0 or the error of DeleteUnchangedFile.
[[nodiscard]] DWORD deleteUnchangedAt(const HostPath& path, const FileStamp& stamp);

}  // namespace platform::file
