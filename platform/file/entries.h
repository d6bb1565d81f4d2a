// entries.h - attributes, making and removing of files and folders, without opening them.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "open_files.h"

#include "ce/file_stamp.h"
#include "ce/types.h"

namespace platform::file {

struct Attributes {
    DWORD error = 0;
    DWORD bits = 0;
};

[[nodiscard]] Attributes attributesAt(const HostPath& path);

// Whether it is certain that there is no entry.
[[nodiscard]] bool isNothingAt(const HostPath& path);

// Whether the entry is certainly the file of the stamp, with the same bytes.
[[nodiscard]] bool isUnchangedAt(const HostPath& path, const FileStamp& stamp);

// 0 or the error.
[[nodiscard]] DWORD makeFolderAt(const HostPath& path);
[[nodiscard]] DWORD removeFolderAt(const HostPath& path);

struct Deleted {
    DWORD error = 0;
    bool isOpenHere = false;  // the error is that this process has the file open
};

// Deletes a file that isn't open in this process.
[[nodiscard]] Deleted deleteFileAt(const HostPath& path);

// Why the rules of the name space forbid the deletion of the entry; 0 if they don't. `folder` holds the entry. No file
// is opened meanwhile, so that the answer holds.
[[nodiscard]] DWORD deletionError(const HostPath& path, int folder, const HostStatus& status, const OpenFiles& table)
    REQUIRES(table.openings()) EXCLUDES(table.mutex());

}  // namespace platform::file
